// The two address and prefix sets.
#pragma once

#include <cstdint>

#include "maint/commands/prefix.h"

int32_t read_prefix0_length(PrefixMap* map);
int32_t read_prefix1(PrefixMap* map);
int32_t write_prefix0(const PrefixMap* map);
int32_t write_prefix1(const PrefixMap* map);

using PrefixBytes = uint8_t[4];

// Counts the leading ones, most significant bit of byte 0 first. Returns 0; -1 for a count above
// 32, which no mask has.
int32_t prefixLength_fromMask(const PrefixBytes& mask, uint16_t& length);

// Returns 0; -1 for a length above 32, with the mask untouched.
int32_t prefixMask_fromLength(uint16_t length, PrefixBytes& mask);

// Reads set 0 or 1: 0, -1, -2; -3 the mask has no length; -5 another set.
int32_t prefixSet_read(unsigned set, PrefixBytes& address, uint16_t& length);
