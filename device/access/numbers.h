// The numbers that several commands take or carry: units, peers, ports, big-endian numbers.
#pragma once

#include <cstdint>

// The identifiers of peers, which are the numbers of the units.
constexpr uint32_t kPeerIdMin = 1;
constexpr uint32_t kPeerIdMax = 30;

constexpr bool peerId_isValid(uint32_t id)
{
    return id >= kPeerIdMin && id <= kPeerIdMax;
}

// The ports that the commands on a port's bit, mask bit and ranged entry accept.
constexpr uint16_t kPortFirst = 1;
constexpr uint16_t kPortLast = 29;

constexpr bool port_isValid(uint16_t port)
{
    return port >= kPortFirst && port <= kPortLast;
}

// Bitmaps of units, ports and identifiers, whose numbers are the same: bit n of 32 stands for
// number n; 0 for a number that has no bit.
constexpr uint32_t unit_bit(uint32_t number)
{
    return number < 32 ? uint32_t{1} << number : 0;
}

// 32-bit numbers in records that hold them as bytes, most significant first.
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
