// The two address and prefix sets.
#pragma once

#include <cstdint>

#include "device/access/command_call.h"
#include "maint/commands/prefix.h"

int32_t read_prefix0_length(PrefixMap* map);
int32_t read_prefix1(PrefixMap* map);

enum class PrefixPlace : uint16_t { kSet0, kSet1 };
int32_t prefixSet_write(const PrefixMap* map, PrefixPlace place);
constexpr CommandCall write_prefix0 = call_of<prefixSet_write>(PrefixPlace::kSet0);
constexpr CommandCall write_prefix1 = call_of<prefixSet_write>(PrefixPlace::kSet1);

using PrefixBytes = uint8_t[4];

// Counts the leading ones, most significant bit of byte 0 first. Returns 0; -1 for a count above
// 32, which no mask has.
int32_t prefixLength_fromMask(const PrefixBytes& mask, uint16_t& length);

// Returns 0; -1 for a length above 32, with the mask untouched.
int32_t prefixMask_fromLength(uint16_t length, PrefixBytes& mask);

// Reads set 0 or 1: 0, -1, -2; -3 the mask has no length; -5 another set.
int32_t prefixSet_read(unsigned set, PrefixBytes& address, uint16_t& length);
