// System log files as the tests put them on the board: built byte by byte, without the product's
// own record and checksum.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "board/board_test.h"

constexpr const char* kWorkingFile = "/conf/system.log";
constexpr const char* kFlashImage = "/dev/mtd_systemlog";
constexpr size_t kHeaderSize = 12;
constexpr size_t kRecordSize = 100;

// The fields in the order of the file.
struct HeaderFields {
    uint32_t seq_num;
    uint16_t number;
    uint16_t location;
    uint16_t version;
    uint16_t checksum;
};

inline Bytes littleEndian_put(uint32_t value, int width)
{
    Bytes bytes;
    for (int at = 0; at < width; ++at) {
        bytes += static_cast<char>((value >> (8 * at)) & 0xFFU);
    }
    return bytes;
}

inline Bytes header_bytes(const HeaderFields& fields)
{
    return littleEndian_put(fields.seq_num, 4) + littleEndian_put(fields.number, 2) +
           littleEndian_put(fields.location, 2) + littleEndian_put(fields.version, 2) +
           littleEndian_put(fields.checksum, 2);
}

inline uint32_t littleEndian_get(const Bytes& bytes, size_t at, int width)
{
    uint32_t value = 0;
    for (int byte = width - 1; byte >= 0; --byte) {
        value = value << 8 | static_cast<uint8_t>(bytes.at(at + static_cast<size_t>(byte)));
    }
    return value;
}

// The first 12 bytes of a file.
inline HeaderFields header_get(const Bytes& file)
{
    return {littleEndian_get(file, 0, 4), static_cast<uint16_t>(littleEndian_get(file, 4, 2)),
            static_cast<uint16_t>(littleEndian_get(file, 6, 2)),
            static_cast<uint16_t>(littleEndian_get(file, 8, 2)),
            static_cast<uint16_t>(littleEndian_get(file, 10, 2))};
}

// An empty log.
inline Bytes fresh_log()
{
    return hex("00 00 00 00 00 00 00 00 01 00 00 00");
}

// One record of the log as written at the board's usual time.
inline Bytes record_line(std::string message)
{
    message.resize(79, ' ');
    return "2006/03/01 09:05:07 " + message + "\n";
}

// `count` records that all differ.
inline Bytes records_make(size_t count)
{
    Bytes records;
    for (size_t record = 0; record < count; ++record) {
        records += record_line("record " + std::to_string(record));
    }
    return records;
}

// What the header field `checksum` must be for these records: the ones' complement sum of the
// big-endian words with the carry taken round at each addition, complemented. (The product adds
// little-endian words, folds once at the end and exchanges the bytes: the same value.)
inline uint16_t checksum_model(const Bytes& records)
{
    uint32_t sum = 0;
    for (size_t at = 0; at + 1 < records.size(); at += 2) {
        sum += 256U * static_cast<uint8_t>(records[at]) + static_cast<uint8_t>(records[at + 1]);
        if (sum > 0xFFFFU) {
            sum -= 0xFFFFU;
        }
    }
    return static_cast<uint16_t>(0xFFFFU - sum);
}

// A whole image with a checksum that is right.
inline Bytes image_make(HeaderFields fields, const Bytes& records)
{
    fields.checksum = checksum_model(records);
    return header_bytes(fields) + records;
}

// An image whose checksum one can follow by hand. 3 records of zeros with two words in them:
// 0x1234 at the very beginning, 0x2001 at the very end. Sum 0x3235, complement 0xCDCA, stored high
// byte first; the field reads 0xCACD = 51917. `location` differs from `number` so that no test
// takes one for the other.
inline Bytes sample_records()
{
    Bytes records(3 * kRecordSize, '\0');
    records.replace(0, 2, hex("34 12"));
    records.replace(298, 2, hex("01 20"));
    return records;
}

inline Bytes sample_header()
{
    return hex("07 00 00 00 03 00 05 00 01 00 CD CA");
}

inline Bytes sample_image()
{
    return sample_header() + sample_records();
}

// What the rebuild prints of it.
constexpr const char* kSampleHeaderLines = "head.seq_num  : 7\n"
                                           "head.number   : 3\n"
                                           "head.location : 5\n"
                                           "head.version  : 1\n"
                                           "head.checksum : 51917\n";
constexpr const char* kSampleChecksumLines = "FROM header   checksum : 51917\n"
                                             "FROM sytemlog checksum : 51917\n";

// The log writer's own message when there is no working file to append to, and when it has no
// complete header.
constexpr const char* kLogAbsent = "systemLog_put : 002 : /conf/system.log file open error\n";
constexpr const char* kLogEmpty = "systemLog_put : 004 : /conf/system.log file header read error\n";
