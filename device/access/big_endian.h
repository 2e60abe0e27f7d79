// 32-bit numbers in records that hold them as bytes, most significant first.
#pragma once

#include <cstdint>

constexpr uint32_t bigEndian_load(const uint8_t* bytes)
{
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

constexpr void bigEndian_store(uint32_t number, uint8_t* bytes)
{
    bytes[0] = static_cast<uint8_t>(number >> 24);
    bytes[1] = static_cast<uint8_t>(number >> 16);
    bytes[2] = static_cast<uint8_t>(number >> 8);
    bytes[3] = static_cast<uint8_t>(number);
}
