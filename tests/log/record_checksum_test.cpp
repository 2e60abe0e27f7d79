// The checksum of the record area of the flash log image.
#include "log/record_checksum.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>

#include "log/log_bytes.h"

namespace
{

uint16_t checksum_of(const Bytes& data, int32_t length)
{
    return recordChecksum_compute(reinterpret_cast<const uint8_t*>(data.data()), length);
}

uint16_t checksum_of(const Bytes& data)
{
    return checksum_of(data, static_cast<int32_t>(data.size()));
}

// A record of the given first bytes and zeros behind them.
Bytes record_of(const char* first)
{
    Bytes record = hex(first);
    record.resize(kRecordSize, '\0');
    return record;
}

struct Example {
    const char* name;
    Bytes data;
    uint16_t field;     // the header field `checksum`
    const char* stored; // its two bytes in the file
};

TEST(RecordChecksum, GivesTheWorkedExamples)
{
    const Example examples[] = {
        {"a record of zeros", record_of("00"), 0xFFFF, "FF FF"},
        {"sum 1", record_of("01 00"), 0xFEFF, "FF FE"},
        {"sum 0x0100", record_of("00 01"), 0xFFFE, "FE FF"},
        {"sum 0x1234", record_of("34 12"), 0xCBED, "ED CB"},
        {"sum 0x3235 of two words", record_of("34 12 01 20"), 0xCACD, "CD CA"},
        {"a record of ones", Bytes(kRecordSize, '\xFF'), 0x0000, "00 00"},
        {"1000 records of ones", Bytes(1000 * kRecordSize, '\xFF'), 0x0000, "00 00"},
        {"1000 records of zeros", Bytes(1000 * kRecordSize, '\0'), 0xFFFF, "FF FF"},
        // 50 words of 0x2020: 0x64640, folded 0x4646.
        {"a record of blanks", Bytes(kRecordSize, ' '), 0xB9B9, "B9 B9"},
    };
    for (const Example& example : examples) {
        SCOPED_TRACE(example.name);
        EXPECT_EQ(checksum_of(example.data), example.field);
        EXPECT_EQ(le16(checksum_of(example.data)), hex(example.stored));
    }
}

TEST(RecordChecksum, TakesTheWordsLittleEndian)
{
    // 0x00FF + 0x0001 = 0x0100: the carry goes from the first byte into the second.
    EXPECT_EQ(checksum_of(hex("FF 00 01 00")), 0xFFFE);
    // 0xFF00 + 0x0100 = 0x10000: the carry goes from the second byte round into the first.
    EXPECT_EQ(checksum_of(hex("00 FF 00 01")), 0xFEFF);
}

TEST(RecordChecksum, FoldsTheCarriesBackIn)
{
    // No carry: 0xFFFE + 0x0001 = 0xFFFF.
    EXPECT_EQ(checksum_of(hex("FE FF 01 00")), 0x0000);
    // One: 0xFFFF + 0x0001 = 0x10000, folded 0x0001.
    EXPECT_EQ(checksum_of(hex("FF FF 01 00")), 0xFEFF);
    // Several at once: 5 * 0xFFFF = 0x4FFFB, folded 0xFFFF.
    EXPECT_EQ(checksum_of(Bytes(10, '\xFF')), 0x0000);
    // 0xFFFF + 0xFFFF + 0x0001 = 0x1FFFF, folded 0x10000: the fold itself carries, 0x0001.
    EXPECT_EQ(checksum_of(hex("FF FF FF FF 01 00")), 0xFEFF);
    // 0xFFFF + 0xFFFF + 0xFFFF + 0x0005 = 0x30002, folded 0x0005.
    EXPECT_EQ(checksum_of(hex("FF FF FF FF FF FF 05 00")), 0xFAFF);
    // 3 * 0xFFFF + 0xFFFF + 0x0003 = 0x3FFFF, folded 0x10002, folded 0x0003.
    EXPECT_EQ(checksum_of(hex("FF FF FF FF FF FF FF FF 03 00")), 0xFCFF);
}

TEST(RecordChecksum, CountsTheByteBehindAnOddLength)
{
    // The word of the last byte and the byte behind it counts with its high byte, the byte behind.
    EXPECT_EQ(checksum_of(hex("AB CD"), 1), 0xFF32);       // sum 0xCD00
    EXPECT_EQ(checksum_of(hex("AB 00"), 1), 0xFFFF);       // the last byte itself does not count
    EXPECT_EQ(checksum_of(hex("01 00 AB CD"), 3), 0xFE32); // sum 0xCD01
    const Bytes zeros(100, '\0');
    EXPECT_EQ(checksum_of(zeros + hex("AB CD"), 101), 0xFF32);
    EXPECT_EQ(checksum_of(zeros + hex("AB CD"), 100), 0xFFFF);
    EXPECT_EQ(checksum_of(record_of("34 12") + hex("AB 20"), 101), 0xCBCD); // sum 0x3234
    // Its carry is folded like any other: 0xFFFF + 0x0100 = 0x100FF, folded 0x0100.
    EXPECT_EQ(checksum_of(hex("FF FF AB 01"), 3), 0xFFFE);
}

TEST(RecordChecksum, OfNothingIsAllOnes)
{
    const Bytes untouched = hex("12 34 56 78");
    for (const int32_t length : {0, -1, -2, -3, -100, INT_MIN + 1, INT_MIN}) {
        EXPECT_EQ(checksum_of(untouched, length), 0xFFFF) << "length " << length;
    }
}

TEST(RecordChecksum, ReadsNothingBehindAnEvenLength)
{
    const Bytes data = hex("34 12 01 20");
    EXPECT_EQ(checksum_of(data + hex("FF FF"), 4), checksum_of(data + hex("00 00"), 4));
    EXPECT_EQ(checksum_of(data + hex("FF FF"), 4), 0xCACD);
}

TEST(RecordChecksum, NoticesEveryChangedBit)
{
    const Bytes good = records_make(2);
    const uint16_t checksum = checksum_of(good);
    for (size_t bit = 0; bit < 8 * good.size(); ++bit) {
        Bytes bad = good;
        bad[bit / 8] = static_cast<char>(bad[bit / 8] ^ (1 << (bit % 8)));
        ASSERT_NE(checksum_of(bad), checksum) << "bit " << bit;
    }
}

TEST(RecordChecksum, AgreesWithTheModelOnRandomRecords)
{
    std::mt19937 random(20060301);
    for (int round = 0; round < 2000; ++round) {
        // Mostly short, now and then the full ring; some with long runs of ones, which carry.
        const size_t words = round % 100 == 0 ? 50000 : 1 + random() % 200;
        const unsigned ones = random() % 4;
        Bytes data;
        for (size_t byte = 0; byte < 2 * words; ++byte) {
            data += static_cast<char>(random() % 4 < ones ? 0xFF : random() & 0xFF);
        }
        ASSERT_EQ(checksum_of(data), checksum_model(data)) << "round " << round;
    }
}

TEST(RecordChecksum, AgreesWithTheModelOnEveryPairOfEdgeWords)
{
    const uint16_t edges[] = {0x0000, 0x0001, 0x00FF, 0x0100, 0x7FFF,
                              0x8000, 0xFEFF, 0xFF00, 0xFFFE, 0xFFFF};
    for (const uint16_t first : edges) {
        for (const uint16_t second : edges) {
            for (const uint16_t third : edges) {
                const Bytes data = le16(first) + le16(second) + le16(third);
                ASSERT_EQ(checksum_of(data), checksum_model(data))
                    << first << " " << second << " " << third;
            }
        }
    }
}

} // namespace
