// Contents of log files for the crash tests.
#pragma once

#include <cstdint>
#include <string>

#include "board/board.h"

constexpr size_t kHeaderSize = 12;
constexpr size_t kLineSize = 100;

// A record as the writer makes it: 19 bytes of time stamp, a blank, 79 of message, a newline.
inline Bytes sample_line(Bytes message, const Bytes& stamp = "2006/02/28 23:59:58")
{
    message.resize(79, ' ');
    return stamp + " " + message + "\n";
}

inline Bytes sample_lines(size_t count, const Bytes& message)
{
    Bytes lines;
    for (size_t i = 0; i < count; ++i) {
        lines += sample_line(message + " " + std::to_string(i));
    }
    return lines;
}

inline Bytes little_endian(uint32_t value, int size)
{
    Bytes bytes;
    for (; size > 0; --size, value >>= 8) {
        bytes += static_cast<char>(value & 0xFF);
    }
    return bytes;
}

// What stands at bytes 10 and 11: the complement of the ones' complement sum of the words, its
// high byte first. Text never adds up to a multiple of 65535 that is 0.
inline Bytes sample_checksum(const Bytes& records)
{
    uint64_t sum = 0;
    for (size_t i = 0; i < records.size(); i += 2) {
        sum += static_cast<uint8_t>(records[i]) + 256U * static_cast<uint8_t>(records[i + 1]);
    }
    const uint64_t stored = 65535 - sum % 65535;
    return {static_cast<char>(stored >> 8), static_cast<char>(stored & 0xFF)};
}

// Sequence number 7, version 1.
inline Bytes sample_header(uint16_t number, uint16_t location, const Bytes& checksum)
{
    return little_endian(7, 4) + little_endian(number, 2) + little_endian(location, 2) +
           little_endian(1, 2) + checksum;
}

inline Bytes sample_log(uint16_t number, uint16_t location, const Bytes& message)
{
    const Bytes lines = sample_lines(number, message);
    return sample_header(number, location, sample_checksum(lines)) + lines;
}
