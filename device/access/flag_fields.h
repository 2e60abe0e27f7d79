// Records of one-byte flags, one for each of a few hardware bits, and their valid masks: bit n of
// the mask selects field n, a mask of 0 selects every field. A flag of 1 sets its bit, any other
// value clears it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "device/access/bit_change.h"

// The parts that a valid mask selects.
constexpr unsigned validMask_of(unsigned valid)
{
    return valid == 0 ? ~0U : valid;
}

// The bits of the record's flags, in order: flags[n] stands for bits[n].
BitChange flagFields_change(const uint16_t* bits, size_t count, unsigned mask,
                            const uint8_t* flags);
void flagFields_extract(const uint16_t* bits, size_t count, uint16_t word, uint8_t* flags);

// The selected fields' change, from the record's flags.
template <size_t kCount>
BitChange flagFields_change(const uint16_t (&bits)[kCount], unsigned mask,
                            const uint8_t (&flags)[kCount])
{
    return flagFields_change(bits, kCount, mask, flags);
}

// Every field's flag, 0 or 1, from the word.
template <size_t kCount>
void flagFields_extract(const uint16_t (&bits)[kCount], uint16_t word, uint8_t (&flags)[kCount])
{
    flagFields_extract(bits, kCount, word, flags);
}

// The same for a word that was read, unless it is a negative status, which is returned.
int32_t flags_store(int32_t wordOrStatus, const uint16_t* bits, size_t count, uint8_t* flags);
template <size_t kCount>
int32_t flags_store(int32_t wordOrStatus, const uint16_t (&bits)[kCount], uint8_t (&flags)[kCount])
{
    return flags_store(wordOrStatus, bits, kCount, flags);
}
