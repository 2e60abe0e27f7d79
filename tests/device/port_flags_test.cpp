// The port flags word and the line control word.
#include "device/caller_record.h"
#include "device/device_test.h"

namespace
{

constexpr uint8_t kFlagValues[] = {0, 1, 2, 255};

// A flag of the record and its bit in the word.
struct FlagRow {
    unsigned field;
    size_t byte;
    uint16_t bit;
};

constexpr FlagRow kPortFlagRows[] = {
    {0, 2, 0x0100}, {1, 3, 0x0002}, {2, 4, 0x0004}, {3, 5, 0x0001},  {4, 6, 0x0008},
    {5, 7, 0x0010}, {6, 8, 0x0020}, {7, 9, 0x0040}, {8, 10, 0x0080}, {9, 11, 0x1000}};
constexpr FlagRow kLineFlagRows[] = {{0, 19, 0x0004}, {1, 20, 0x0001}, {2, 21, 0x0002}};

template <size_t kRows>
uint32_t word_after(uint32_t word, const FlagRow (&rows)[kRows], unsigned mask, const Bytes& record)
{
    for (const FlagRow& row : rows) {
        const bool selected = mask == 0 || ((mask >> row.field) & 1U) == 1U;
        if (selected && record[row.byte] == 1) {
            word |= row.bit;
        } else if (selected) {
            word &= ~static_cast<uint32_t>(row.bit);
        }
    }
    return word;
}

class PortFlagWords : public DeviceTest
{
  protected:
    int32_t run(DeviceCommandCode command) { return Fpga_Register_Set(command, record.pointer()); }

    CallerRecord record;
};

// Port flags -------------------------------------------------------------------------------

TEST_F(PortFlagWords, ReadsThePortFlagsInOneRequest)
{
    prove(RD_PORT_FLAGS, [this] { return record.pointer(); },
          {opens_to_read(), word_read(0x6B09), closes()});
}

TEST_F(PortFlagWords, KeepsTheRecordWhenThePortFlagsCannotBeRead)
{
    for (const size_t failing : {1U, 2U}) {
        record = CallerRecord();
        board.restart();
        fail_in_both_runs(failing, failing - 1);
        EXPECT_EQ(run(RD_PORT_FLAGS), failing == 1 ? -1 : -2);
        EXPECT_EQ(record.bytes(), untouched_after(""));
    }
}

TEST_F(PortFlagWords, ReportsEveryPortFlagsWordAndLeavesTheMask)
{
    for_every_word([this](uint16_t word) {
        board.fpga.words[0x6B09] = word;
        EXPECT_EQ(run(RD_PORT_FLAGS), 0);
        Bytes expected(12, static_cast<char>(kUntouched));
        for (const FlagRow& row : kPortFlagRows) {
            expected[row.byte] = (word & row.bit) != 0 ? '\1' : '\0';
        }
        EXPECT_EQ(record.bytes(), untouched_after(expected));
    });
}

TEST_F(PortFlagWords, WritesThePortFlagsByReadingStatusAndFlagsFirst)
{
    prove(WR_PORT_FLAGS,
          [this] {
              board.fpga.words[0x6B02] = 0xFEFF;
              board.fpga.words[0x6B09] = 0xE0A0;
              record = CallerRecord(hex("11 00 01 01 01 01 01 01 01 01 01 01"));
              return record.pointer();
          },
          {opens_to_write(), word_read(0x6B02), word_read(0x6B09), value_write(0x6B0A, 0xE1A8),
           closes()});
}

TEST_F(PortFlagWords, ForcesThePortFlagsWithoutReadingThem)
{
    prove(WR_PORT_FLAGS,
          [this] {
              board.fpga.words[0x6B02] = 0x0100;
              board.fpga.words[0x6B09] = 0xFFFF;
              record = CallerRecord(hex("00 00 00 00 00 00 00 00 00 00 00 00"));
              return record.pointer();
          },
          {opens_to_write(), word_read(0x6B02), value_write(0x6B0A, 0x10F0), closes()});
}

TEST_F(PortFlagWords, ForcesThePortFlagsUnderEveryStatusWordWithBit8)
{
    record = CallerRecord(hex("00 00 01 01 01 01 01 01 01 01 01 01"));
    for_every_word([this](uint16_t status) {
        board.fpga.words[0x6B02] = status;
        board.fpga.words[0x6B09] = 0x2000;
        EXPECT_EQ(run(WR_PORT_FLAGS), 0);
        EXPECT_EQ(board.fpga.words[0x6B09], (status & 0x0100) != 0 ? 0x10F0U : 0x31FFU);
    });
}

TEST_F(PortFlagWords, ForcesThePortFlagsWhateverTheMask)
{
    board.fpga.words[0x6B02] = 0x0100;
    for_every_word([this](uint16_t mask) {
        record = CallerRecord(le16(mask) + hex("00 01 00 01 00 00 00 00 01 00"));
        board.fpga.words[0x6B09] = 0x0F0F;
        EXPECT_EQ(run(WR_PORT_FLAGS), 0);
        EXPECT_EQ(board.fpga.words[0x6B09], 0x10F0U);
    });
}

TEST_F(PortFlagWords, ChangesOnlyBit8UnderMask1)
{
    for (const uint32_t word : {0x0000U, 0xFFFFU, 0x5A5AU, 0xA5A5U}) {
        board.fpga.words[0x6B09] = word;
        record = CallerRecord(hex("01 00 01 00 01 00 01 00 01 00 01 00"));
        EXPECT_EQ(run(WR_PORT_FLAGS), 0);
        EXPECT_EQ(board.fpga.words[0x6B09], word | 0x0100U);
        record = CallerRecord(hex("01 00 00 01 01 01 01 01 01 01 01 01"));
        EXPECT_EQ(run(WR_PORT_FLAGS), 0);
        EXPECT_EQ(board.fpga.words[0x6B09], word & 0xFEFFU);
    }
}

TEST_F(PortFlagWords, AppliesEveryMaskOfThePortFlags)
{
    const Bytes flag_sets[] = {hex("01 01 01 01 01 01 01 01 01 01"),
                               hex("00 02 FF 00 02 FF 00 02 FF 00"),
                               hex("01 00 01 02 01 FF 01 00 01 02")};
    for_every_word([&](uint16_t mask) {
        for (const Bytes& flags : flag_sets) {
            for (const uint32_t word : {0x0000U, 0xFFFFU, 0x6996U}) {
                const Bytes start = le16(mask) + flags;
                record = CallerRecord(start);
                board.fpga.words[0x6B09] = word;
                EXPECT_EQ(run(WR_PORT_FLAGS), 0);
                EXPECT_EQ(board.fpga.words[0x6B09], word_after(word, kPortFlagRows, mask, start));
            }
        }
        EXPECT_EQ(record.bytes(), untouched_after(le16(mask) + flag_sets[2]));
    });
}

TEST_F(PortFlagWords, KeepsTheOtherBitsOfEveryPortFlagsWord)
{
    const Bytes flags = hex("01 00 01 00 02 01 FF 01 00 01");
    for_every_word([&](uint16_t word) {
        for (const unsigned mask : {0U, 1U, 2U, 4U, 8U, 16U, 32U, 64U, 128U, 256U, 512U}) {
            const Bytes start = le16(mask) + flags;
            record = CallerRecord(start);
            board.fpga.words[0x6B09] = word;
            EXPECT_EQ(run(WR_PORT_FLAGS), 0);
            EXPECT_EQ(board.fpga.words[0x6B09], word_after(word, kPortFlagRows, mask, start));
        }
    });
}

TEST_F(PortFlagWords, TakesOnlyOneAsASetPortFlag)
{
    for (const FlagRow& row : kPortFlagRows) {
        for (const uint8_t flag : kFlagValues) {
            record = CallerRecord(le16(1U << row.field));
            record.put(row.byte, flag);
            board.fpga.words[0x6B09] = flag == 1 ? 0x0000 : 0xFFFF;
            EXPECT_EQ(run(WR_PORT_FLAGS), 0);
            EXPECT_EQ(board.fpga.words[0x6B09], flag == 1 ? row.bit : 0xFFFFU - row.bit);
        }
    }
}

TEST_F(PortFlagWords, ReadsBackThePortFlagsThatItWrote)
{
    for (unsigned flags = 0; flags < 1024; ++flags) {
        Bytes start = le16(0);
        for (unsigned field = 0; field < 10; ++field) {
            start += static_cast<char>((flags >> field) & 1U);
        }
        record = CallerRecord(start);
        EXPECT_EQ(run(WR_PORT_FLAGS), 0);
        CallerRecord read(le16(0));
        EXPECT_EQ(Fpga_Register_Set(RD_PORT_FLAGS, read.pointer()), 0);
        EXPECT_EQ(read.bytes(), record.bytes());
    }
}

// Line control word ------------------------------------------------------------------------

TEST_F(PortFlagWords, WritesTheLineModeByReadingFirst)
{
    prove(WR_LINE_MODE,
          [this] {
              board.fpga.words[0x6B4F] = 0xFFFF;
              record.put(13, 1);
              return record.pointer();
          },
          {opens_to_write(), word_read(0x6B4F), value_write(0x6B50, 0xFFDF), closes()});
}

TEST_F(PortFlagWords, SetsTheLineModeInEveryLineControlWord)
{
    for_every_word([this](uint16_t word) {
        const std::pair<unsigned, unsigned> modes[] = {{0, word & 0xFFCFU},
                                                       {1, (word & 0xFFCFU) | 0x10U},
                                                       {2, word | 0x20U},
                                                       {3, word & 0xFFCFU},
                                                       {255, word & 0xFFCFU}};
        for (const auto& [mode, expected] : modes) {
            board.fpga.words[0x6B4F] = word;
            record.put(13, mode);
            EXPECT_EQ(run(WR_LINE_MODE), 0);
            EXPECT_EQ(board.fpga.words[0x6B4F], expected);
        }
    });
}

TEST_F(PortFlagWords, ClearsBothLineModeBitsForEveryOtherMode)
{
    for (unsigned mode = 0; mode < 256; ++mode) {
        if (mode != 1 && mode != 2) {
            board.fpga.words[0x6B4F] = 0xFFFF;
            record.put(13, mode);
            EXPECT_EQ(run(WR_LINE_MODE), 0);
            EXPECT_EQ(board.fpga.words[0x6B4F], 0xFFCFU);
        }
    }
}

TEST_F(PortFlagWords, KeepsBit4InLineMode2)
{
    for (const uint32_t word : {0x0000U, 0x0010U}) {
        board.fpga.words[0x6B4F] = word;
        record.put(13, 2);
        EXPECT_EQ(run(WR_LINE_MODE), 0);
        EXPECT_EQ(board.fpga.words[0x6B4F], word + 0x20U);
    }
}

TEST_F(PortFlagWords, TakesTheLineModeFromByte13Alone)
{
    for (const char others : {'\0', '\1', '\2'}) {
        record = CallerRecord(Bytes(44, others));
        record.put(13, 1);
        board.fpga.words[0x6B4F] = 0;
        const Bytes before = record.bytes();
        EXPECT_EQ(run(WR_LINE_MODE), 0);
        EXPECT_EQ(board.fpga.words[0x6B4F], 0x0010U);
        EXPECT_EQ(record.bytes(), before);
    }
}

TEST_F(PortFlagWords, WritesTheLineFlagsByReadingFirst)
{
    prove(WR_LINE_FLAGS,
          [this] {
              board.fpga.words[0x6B4F] = 0xFFFA;
              record.put(18, 0x06);
              record.put(19, 0);
              record.put(20, 1);
              record.put(21, 0);
              return record.pointer();
          },
          {opens_to_write(), word_read(0x6B4F), value_write(0x6B50, 0xFFF9), closes()});
}

TEST_F(PortFlagWords, AppliesEveryMaskAndFlagOfTheLineFlags)
{
    board.recording = false;
    for (unsigned mask = 0; mask < 256; ++mask) {
        for (unsigned choice = 0; choice < 64; ++choice) {
            Bytes start(44, '\1'); // neighbours that must not count
            start[18] = static_cast<char>(mask);
            start[19] = static_cast<char>(kFlagValues[choice & 3U]);
            start[20] = static_cast<char>(kFlagValues[(choice >> 2) & 3U]);
            start[21] = static_cast<char>(kFlagValues[choice >> 4]);
            for (const uint32_t word : {0x0000U, 0xFFFFU, 0x1235U}) {
                record = CallerRecord(start);
                board.fpga.words[0x6B4F] = word;
                EXPECT_EQ(run(WR_LINE_FLAGS), 0);
                ASSERT_EQ(board.fpga.words[0x6B4F], word_after(word, kLineFlagRows, mask, start));
                ASSERT_EQ(record.bytes(), untouched_after(start));
            }
        }
    }
    board.recording = true;
}

TEST_F(PortFlagWords, KeepsTheOtherBitsOfEveryLineControlWord)
{
    for_every_word([this](uint16_t word) {
        for (const char mask : {'\0', '\1', '\2', '\4', '\7'}) {
            for (const char flag : {'\0', '\1'}) {
                Bytes start(44, flag);
                start[18] = mask;
                record = CallerRecord(start);
                board.fpga.words[0x6B4F] = word;
                EXPECT_EQ(run(WR_LINE_FLAGS), 0);
                EXPECT_EQ(board.fpga.words[0x6B4F],
                          word_after(word, kLineFlagRows, static_cast<uint8_t>(mask), start));
            }
        }
    });
}

TEST_F(PortFlagWords, NeverDefersTheLineControlBits)
{
    board.file_put("/tmp/led_rewrite_inh", Bytes(44, '\0'));
    record.put(13, 2);
    expect_course(WR_LINE_MODE, record.pointer(),
                  {opens_to_write(), word_read(0x6B4F), value_write(0x6B50, 0x0020), closes()});
    record = CallerRecord(Bytes(44, '\1'));
    expect_course(WR_LINE_FLAGS, record.pointer(),
                  {opens_to_write(), word_read(0x6B4F), value_write(0x6B50, 0x0024), closes()});
    EXPECT_EQ(board.file_get("/tmp/led_rewrite_inh"), Bytes(44, '\0'));
}

} // namespace
