// How much of a long loop the tests go through. MAINT_TESTS_ALL in the environment, which the preset
// "all" sets, asks for all of it; otherwise it is a share, and a smaller one under an emulator or a
// sanitizer, which take many times as long.
#pragma once

#include <cstdint>
#include <cstdlib>

struct LoopShare {
    // Between two words of 16 bits. Odd and below 256: both bytes of a word take all their values.
    uint32_t wordStep;
    uint32_t roundsPerRound;
};

inline LoopShare loopShare_asked()
{
    if (getenv("MAINT_TESTS_ALL") != nullptr) {
        return {1, 1};
    }
#if defined(MAINT_TESTS_EMULATED) || defined(__SANITIZE_ADDRESS__)
    return {61, 20};
#else
    return {13, 4};
#endif
}

inline const LoopShare kLoopShare = loopShare_asked();

// Of so many rounds with drawn values.
inline uint32_t share_of(uint32_t rounds)
{
    return rounds / kLoopShare.roundsPerRound;
}

// Words of 16 bits, a step apart, and the last.
inline uint32_t wordTried_after(uint32_t word)
{
    const uint32_t step = kLoopShare.wordStep;
    return word < UINT16_MAX && word + step > UINT16_MAX ? UINT16_MAX : word + step;
}
