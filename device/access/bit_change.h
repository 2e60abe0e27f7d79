// What a setter does to a word or a register: bits to clear, then bits to set.
#pragma once

#include <cstdint>

// Both in one number, which the processor passes in a register: bits to set in the high half, bits
// to clear in the low one.
struct BitChange {
    uint32_t halves;
};

constexpr BitChange kNoChange{0};

constexpr BitChange bitChange_of(unsigned clear, unsigned set)
{
    return {set << 16 | (clear & 0xFFFFU)};
}

constexpr uint16_t bitChange_apply(BitChange change, unsigned word)
{
    return static_cast<uint16_t>((word & ~change.halves) | change.halves >> 16);
}

// `first`, and then `second`.
constexpr BitChange bitChange_join(BitChange first, BitChange second)
{
    const uint32_t kept = first.halves & ~(second.halves << 16); // what second clears is not set
    return {kept | second.halves};
}

// Sets all bits of the mask, or clears them.
constexpr BitChange bits_assign(unsigned mask, bool on)
{
    return bitChange_of(mask, on ? mask : 0);
}

// Replaces the field of the mask by the value's bits.
constexpr BitChange field_assign(unsigned mask, unsigned value)
{
    return bitChange_of(mask, value & mask);
}
