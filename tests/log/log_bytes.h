// The bytes of the two logs and the calls of an append, as the tests of the writers expect them.
#pragma once

#include "board/board_test.h"

constexpr const char* kSystemLog = "/conf/system.log";
constexpr const char* kUserLog = "/conf/user.log";
constexpr const char* kFlashSave = "/tmp/flashsave";

// What the board's clock says unless a test sets it.
constexpr const char* kStamp = "2006/03/01 09:05:07";

inline Bytes word_bytes(unsigned value)
{
    return {static_cast<char>(value & 0xFFU), static_cast<char>(value >> 8 & 0xFFU)};
}

// Sequence number, version and checksum are such that a lost or moved byte shows.
inline Bytes systemHeader_bytes(unsigned number, unsigned location)
{
    return hex("EF BE AD DE") + word_bytes(number) + word_bytes(location) + hex("07 00 5A A5");
}

inline Bytes userHeader_bytes(unsigned number, unsigned location)
{
    return hex("A1 A2 A3 A4") + word_bytes(number) + word_bytes(location) +
           hex("B1 B2 B3 B4 B5 B6 B7 B8");
}

inline Bytes systemRecord_bytes(const std::string& stamp, const std::string& text)
{
    Bytes message = text.substr(0, 79);
    message.resize(79, ' ');
    return stamp + " " + message + "\n";
}

// The bytes of the hex pairs, with so many of the filler before and after them.
inline Bytes framed_bytes(char filler, size_t before, const char* pairs, size_t after)
{
    return Bytes(before, filler) + hex(pairs) + Bytes(after, filler);
}

// The calls of an append to the system log that succeeds.
inline Trace systemAppend_trace(long offset)
{
    return {"time now",
            "fopen /conf/system.log r+",
            "flock /conf/system.log LOCK_EX",
            "fread /conf/system.log 12",
            "fseek /conf/system.log " + std::to_string(offset),
            "fprintf /conf/system.log 100",
            "fseek /conf/system.log 0",
            "fwrite /conf/system.log 12",
            "fclose /conf/system.log"};
}

inline Trace operator+(Trace left, const Trace& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// Whether the file can be locked by somebody else at this moment.
bool lock_isFree(const Board& board, const std::string& path);
