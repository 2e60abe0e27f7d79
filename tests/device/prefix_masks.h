// Prefix masks as bytes and as numbers.
#pragma once

#include <string>

#include "device/commands/prefix.h"

// The value of four mask bytes, byte 0 first.
inline uint32_t value_of(const PrefixBytes& bytes)
{
    return static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
           static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
}

// The mask of each length.
constexpr uint32_t kMasks[33] = {
    0x00000000, 0x80000000, 0xC0000000, 0xE0000000, 0xF0000000, 0xF8000000, 0xFC000000,
    0xFE000000, 0xFF000000, 0xFF800000, 0xFFC00000, 0xFFE00000, 0xFFF00000, 0xFFF80000,
    0xFFFC0000, 0xFFFE0000, 0xFFFF0000, 0xFFFF8000, 0xFFFFC000, 0xFFFFE000, 0xFFFFF000,
    0xFFFFF800, 0xFFFFFC00, 0xFFFFFE00, 0xFFFFFF00, 0xFFFFFF80, 0xFFFFFFC0, 0xFFFFFFE0,
    0xFFFFFFF0, 0xFFFFFFF8, 0xFFFFFFFC, 0xFFFFFFFE, 0xFFFFFFFF};

// The ones before the first zero, counted on the mask as text.
inline uint16_t ones_before_zero(uint32_t value)
{
    std::string digits;
    for (uint32_t weight = 0x80000000U; weight != 0; weight /= 2) {
        digits += value >= weight ? '1' : '0';
        value -= value >= weight ? weight : 0;
    }
    const size_t zero = digits.find('0');
    return static_cast<uint16_t>(zero == std::string::npos ? digits.size() : zero);
}
