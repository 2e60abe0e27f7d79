// Driver words and records.
#include <climits>

#include "device/caller_memory_fixture.h"

namespace
{

class DriverWords : public CallerMemoryTest
{
};

struct Word {
    DeviceCommandCode command;
    uint32_t request;
    uint32_t shows; // the request under which a written word shows
};

constexpr Word kStatusWords[] = {{RD_EXT_STATUS_A, 0x6BA3, 0x6BA3},
                                 {RD_EXT_STATUS_B, 0x6BA5, 0x6BA5},
                                 {RD_CONTROL_WORD, 0x6B6E, 0x6B6E}};
constexpr Word kControlWords[] = {{WR_EXT_CONTROL_A, 0x6BA4, 0x6BA3},
                                  {WR_EXT_CONTROL_B, 0x6BA6, 0x6BA5}};

const Bytes kCallers = hex("C3 A5");

TEST_F(DriverWords, StatusWordsAreFilledInTheCallersMemory)
{
    for (const Word& row : kStatusWords) {
        board.fpga.words[row.shows] = 0x89AB;
        prove_filled(row.command, row.request, kCallers, hex("AB 89"));
    }
}

TEST_F(DriverWords, TheControlBlockIsReadFromTheCallersMemory)
{
    const Bytes block = hex("00 11 22 33 44 55 66 77 88 99 AA BB CC DD EE FF");
    prove_record(WR_CONTROL_BLOCK, block, {opens_to_write(), record_write(0x6B70, block), closes()},
                 block);
    EXPECT_EQ(board.fpga.written[0x6B70], block);
    const Bytes other = hex("F0 E0 D0 C0 B0 A0 90 80 70 60 50 40 30 20 10 00");
    EXPECT_EQ(run_changing(WR_CONTROL_BLOCK, block, 0x6B70, other), 0);
    EXPECT_EQ(board.fpga.written[0x6B70], other);
}

TEST_F(DriverWords, KeyBytesFollowTheirNumber)
{
    const Bytes key = hex("81 92 A3 B4 C5");
    const Bytes sent = hex("81 92 A3 B4 C5 00 00 00 00 00 00 00");
    prove_record(WR_KEY_BYTES, key, {opens_to_write(), record_write(0x6B71, sent), closes()}, key);
    EXPECT_EQ(board.fpga.written[0x6B71], sent);
}

TEST_F(DriverWords, BitSevenOfTheControlWordIsClearedInTheCallersWord)
{
    device_put = [&] { board.fpga.words[0x6B6E] = 0x81FF; };
    prove_changed(WR_CONTROL_BIT7_CLEAR, kCallers, record_read(0x6B6E, kCallers),
                  record_write(0x6B6F, hex("7F 81"), kElsewhere), record_read(0x6B6E, hex("7F 81")),
                  hex("7F 81"));
    EXPECT_EQ(run(WR_CONTROL_BIT7_CLEAR, kCallers), 0);
    EXPECT_EQ(board.fpga.words[0x6B6E], 0x817FU);
    // The driver reads the caller's own word.
    EXPECT_EQ(run_changing(WR_CONTROL_BIT7_CLEAR, kCallers, 0x6B6F, hex("34 12")), 0);
    EXPECT_EQ(board.fpga.words[0x6B6E], 0x1234U);
}

TEST_F(DriverWords, NoOtherBitOfTheControlWordChanges)
{
    for_every_word([&](uint16_t word) {
        board.fpga.words[0x6B6E] = word;
        const uint32_t expected = word % 256U >= 128 ? word - 128U : word;
        ASSERT_EQ(record_after(WR_CONTROL_BIT7_CLEAR, kCallers), le16(expected));
        ASSERT_EQ(board.fpga.words[0x6B6E], expected);
        ASSERT_EQ(record_after(RD_CONTROL_WORD, kCallers), le16(expected));
    });
}

TEST_F(DriverWords, TheByteActionIsTheCallersByte)
{
    for (unsigned value = 0; value <= 255; ++value) {
        // Of the bytes at the caller's pointer, the first.
        prove_record(WR_BYTE_ACTION, byte(value) + hex("C3 A5 5A"),
                     {opens_to_write(), value_write(0x6B74, value), closes()},
                     byte(value) + hex("C3 A5 5A"));
    }
}

TEST_F(DriverWords, TheWordActionIsTheCallersWord)
{
    for (const uint32_t value : {0x0000U, 0x0001U, 0x7FFFU, 0x8000U, 0xA5C3U, 0xFFFFU}) {
        prove_record(WR_WORD_ACTION, le16(value) + hex("5A 96"),
                     {opens_to_write(), value_write(0x6B7A, value), closes()},
                     le16(value) + hex("5A 96"));
    }
    for_every_word([&](uint16_t word) {
        ASSERT_EQ(run(WR_WORD_ACTION, le16(word) + hex("5A 96")), 0);
        ASSERT_EQ(board.fpga.words[0x6B7A], word);
    });
}

TEST_F(DriverWords, PairWordsGoToTheDriverAsACopy)
{
    const Bytes words = hex("81 92 A3 B4 C5 D6 E7 F8");
    prove_record(WR_PAIR_WORDS, words, {opens_to_write(), record_write(0x6B77, words), closes()},
                 words);
    EXPECT_EQ(board.fpga.written[0x6B77], words);
    EXPECT_EQ(run_changing(WR_PAIR_WORDS, words, 0x6B77, Bytes(8, '\xFF')), 0);
    EXPECT_EQ(board.fpga.written[0x6B77], words);
}

// The driver's state ------------------------------------------------------------------------

TEST_F(DriverWords, DriverStateIsWhateverTheRequestReturns)
{
    struct Result {
        int returned;
        const char* stored;
    };
    constexpr Result kResults[] = {
        {0, "00 00"},      {1, "01 00"},      {-1, "FF FF"},      {-2, "FE FF"},
        {0x1234, "34 12"}, {32767, "FF 7F"},  {-32768, "00 80"},  {65535, "FF FF"},
        {65536, "00 00"},  {-65537, "FF FF"}, {INT_MAX, "FF FF"}, {INT_MIN, "00 00"},
        {-100, "9C FF"},   {70000, "70 11"},  {-70000, "90 EE"},
    };
    const Course course = {opens_to_write(), {"ioctl 6BA2", kIgnored}, closes()};
    for (const Result& result : kResults) {
        device_put = [&] { board.fpga.results[0x6BA2] = result.returned; };
        prove_record(RD_DRIVER_STATE, kCallers, course, hex(result.stored));
    }
}

TEST_F(DriverWords, DriverStateThatCannotBeAskedForIsLeft)
{
    expect_kept(RD_DRIVER_STATE, kCallers);
}

TEST_F(DriverWords, ControlWordsAreReadFromTheCallersMemory)
{
    for (const Word& row : kControlWords) {
        prove_record(row.command, kCallers,
                     {opens_to_write(), record_write(row.request, kCallers, -2), closes()},
                     kCallers);
        EXPECT_EQ(board.fpga.words[row.shows], 0xA5C3U);
        EXPECT_EQ(run_changing(row.command, kCallers, row.request, hex("34 12")), 0);
        EXPECT_EQ(board.fpga.words[row.shows], 0x1234U);
    }
}

TEST_F(DriverWords, EveryControlWordIsReadBackAsStatus)
{
    for_every_word([&](uint16_t word) {
        for (size_t i = 0; i < std::size(kControlWords); ++i) {
            ASSERT_EQ(run(kControlWords[i].command, le16(word)), 0);
            ASSERT_EQ(record_after(kStatusWords[i].command, kCallers), le16(word));
        }
    });
}

} // namespace
