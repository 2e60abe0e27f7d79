// The bytes of the two logs as the tests expect them: built byte by byte, without the product's own
// records and checksum.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "log/log_calls.h"
#include "maint/user_log.h"

constexpr const char* kFlashImage = "/dev/mtd_systemlog";
constexpr const char* kFlashSave = "/tmp/flashsave";

// What the board's clock says unless a test sets it.
constexpr const char* kStamp = "2006/03/01 09:05:07";

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

inline Bytes header_bytes(const HeaderFields& fields)
{
    return le32(fields.seq_num) + le16(fields.number) + le16(fields.location) +
           le16(fields.version) + le16(fields.checksum);
}

// The first 12 bytes of a file.
inline HeaderFields header_get(const Bytes& file)
{
    const auto word = [&file](size_t at) {
        return static_cast<uint16_t>(static_cast<uint8_t>(file.at(at)) +
                                     256 * static_cast<uint8_t>(file.at(at + 1)));
    };
    return {word(0) + 65536U * word(2), word(4), word(6), word(8), word(10)};
}

// A record of the system log: 19 bytes of time stamp, a blank, 79 of message, a newline.
inline Bytes record_line(std::string message, const std::string& stamp = kStamp)
{
    message.resize(79, ' ');
    return stamp + " " + message + "\n";
}

// `count` records that all differ.
inline Bytes records_make(size_t count, const std::string& message = "record")
{
    Bytes records;
    for (size_t record = 0; record < count; ++record) {
        records += record_line(message + " " + std::to_string(record));
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

// A working file that the boot keeps.
inline Bytes sane_log()
{
    return hex("02 00 00 00 03 00 03 00 01 00 00 00") + records_make(3);
}

// Sequence number, version and checksum are such that a lost or moved byte shows.
inline Bytes systemHeader_bytes(unsigned number, unsigned location)
{
    return hex("EF BE AD DE") + le16(number) + le16(location) + hex("07 00 5A A5");
}

inline Bytes userHeader_bytes(unsigned number, unsigned location)
{
    return hex("A1 A2 A3 A4") + le16(number) + le16(location) + hex("B1 B2 B3 B4 B5 B6 B7 B8");
}

// An event that the user log takes, put at the board's time, and as the log then holds it.
inline int32_t event_put()
{
    UserLogRecord record{0, {1, 2, 3, 4}, 300, 30, 29, {5, 6, 7, 8}};
    return userLog_put(&record);
}
inline const Bytes kEvent = hex("C3 63 05 44 01 02 03 04 2C 01 1E 1D 05 06 07 08");

// The bytes of the hex pairs, with so many of the filler before and after them.
inline Bytes framed_bytes(char filler, size_t before, const char* pairs, size_t after)
{
    return Bytes(before, filler) + hex(pairs) + Bytes(after, filler);
}
