// How much of a long loop the tests go through: all of it on the machine that they were built on,
// and a share under an emulator, which takes some 20 times as long. The share is for what depends on
// the processor and the C library; the rest is the same source with other numbers.
#pragma once

#include <cstdint>

#ifdef MAINT_TESTS_EMULATED
// Odd and below 256: both bytes of a word take all their values.
constexpr uint32_t kWordStep = 61;
constexpr uint32_t kRoundsPerRound = 20;
#else
constexpr uint32_t kWordStep = 1;
constexpr uint32_t kRoundsPerRound = 1;
#endif

// Of so many rounds with drawn values.
constexpr uint32_t share_of(uint32_t rounds)
{
    return rounds / kRoundsPerRound;
}

// Words of 16 bits, kWordStep apart, and the last.
constexpr uint32_t kWordsTried = UINT16_MAX / kWordStep + (UINT16_MAX % kWordStep == 0 ? 1 : 2);
constexpr uint32_t wordTried_after(uint32_t word)
{
    return word < UINT16_MAX && word + kWordStep > UINT16_MAX ? UINT16_MAX : word + kWordStep;
}
