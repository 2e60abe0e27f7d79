// Parts of a record of bytes, and bytes drawn at random.
#pragma once

#include <random>

#include "device/device_test.h"

inline void bytes_put(Bytes& record, size_t offset, const Bytes& bytes)
{
    record.replace(offset, bytes.size(), bytes);
}

inline uint8_t byte_at(const Bytes& record, size_t offset)
{
    return static_cast<uint8_t>(record[offset]);
}

inline uint16_t word_at(const Bytes& record, size_t offset)
{
    return static_cast<uint16_t>(byte_at(record, offset) | byte_at(record, offset + 1) << 8);
}

// The high byte first.
inline Bytes big16(uint32_t word)
{
    return byte(word >> 8) + byte(word);
}

// Every run draws the same values.
class Draws
{
  public:
    uint32_t operator()() { return static_cast<uint32_t>(random_()); }
    Bytes bytes(size_t count)
    {
        Bytes bytes;
        while (bytes.size() < count) {
            bytes += byte((*this)());
        }
        return bytes;
    }

  private:
    std::mt19937 random_{20060302};
};
