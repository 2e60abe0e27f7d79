// Records of one-byte flags, one for each of a few hardware bits, and their valid masks: bit n of
// the mask selects field n, a mask of 0 selects every field. A flag of 1 sets its bit, any other
// value clears it.
#pragma once

#include <cstdint>
#include <span>

#include "device/access/fpga.h"

// The parts that a valid mask selects.
constexpr unsigned validMask_of(unsigned valid)
{
    return valid == 0 ? ~0U : valid;
}

struct FlagField {
    uint8_t flag; // place of the field's byte among the record's flags
    uint16_t bit; // of the word or register
};

// The selected fields' change, from the record's flags.
BitChange flagFields_change(std::span<const FlagField> fields, unsigned mask, const uint8_t* flags);

// Every field's flag, 0 or 1, from the word.
void flagFields_extract(std::span<const FlagField> fields, uint16_t word, uint8_t* flags);
