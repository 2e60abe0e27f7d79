// Bitmaps of units, ports and identifiers: bit n of 32 stands for number n.
#pragma once

#include <cstdint>

// 0 for a number that has no bit.
constexpr uint32_t unit_bit(uint32_t number)
{
    return number < 32 ? uint32_t{1} << number : 0;
}
