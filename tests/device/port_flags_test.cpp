// The port flags word.
#include "device/command_test.h"

namespace
{

// A flag of the record and its bit in the word.
struct FlagRow {
    unsigned field;
    size_t byte;
    uint16_t bit;
};

constexpr FlagRow kRows[] = {{0, 2, 0x0100},  {1, 3, 0x0002}, {2, 4, 0x0004}, {3, 5, 0x0001},
                             {4, 6, 0x0008},  {5, 7, 0x0010}, {6, 8, 0x0020}, {7, 9, 0x0040},
                             {8, 10, 0x0080}, {9, 11, 0x1000}};

uint32_t word_after(uint32_t word, unsigned mask, const Bytes& record)
{
    for (const FlagRow& row : kRows) {
        const bool selected = mask == 0 || ((mask >> row.field) & 1U) == 1U;
        if (selected) {
            word = record[row.byte] == 1 ? word | row.bit : word & ~uint32_t{row.bit};
        }
    }
    return word;
}

class PortFlags : public CommandTest
{
  protected:
    // Writes flags under a mask into a word; the record stays.
    void expect_written(const Bytes& flags, uint32_t before, uint32_t after)
    {
        word = before;
        expect_run(WR_PORT_FLAGS, flags, 0, flags);
        EXPECT_EQ(word, after) << testing::PrintToString(flags) << " into " << hex_number(before);
    }

    uint32_t& status = board.fpga.words[0x6B02];
    uint32_t& word = board.fpga.words[0x6B09];
};

TEST_F(PortFlags, AreReadInOneRequest)
{
    word = 0x1101;
    prove_record(RD_PORT_FLAGS, untouched(12), {opens_to_read(), word_read(0x6B09), closes()},
                 untouched(2) + hex("01 00 00 01 00 00 00 00 00 01"));
    expect_kept(RD_PORT_FLAGS, untouched(12));
}

TEST_F(PortFlags, OfEveryWordAreReportedWithoutTheMask)
{
    for_every_word([this](uint16_t held) {
        word = held;
        Bytes expected = untouched(12);
        for (const FlagRow& row : kRows) {
            expected[row.byte] = (held & row.bit) != 0 ? '\1' : '\0';
        }
        expect_run(RD_PORT_FLAGS, untouched(12), 0, expected);
    });
}

TEST_F(PortFlags, AreWrittenByReadingStatusAndFlagsFirst)
{
    device_put = [this] {
        status = 0xFEFF;
        word = 0xE0A0;
    };
    const Bytes flags = hex("11 00 01 01 01 01 01 01 01 01 01 01");
    prove_record(WR_PORT_FLAGS, flags,
                 {opens_to_write(), word_read(0x6B02), word_read(0x6B09),
                  value_write(0x6B0A, 0xE1A8), closes()},
                 flags);
}

TEST_F(PortFlags, AreForcedWithoutBeingRead)
{
    status = 0x0100;
    word = 0xFFFF;
    prove_record(WR_PORT_FLAGS, zeros(12),
                 {opens_to_write(), word_read(0x6B02), value_write(0x6B0A, 0x10F0), closes()},
                 zeros(12));
}

TEST_F(PortFlags, AreForcedUnderEveryStatusWordWithBit8)
{
    for_every_word([this](uint16_t held) {
        status = held;
        expect_written(hex("00 00 01 01 01 01 01 01 01 01 01 01"), 0x2000,
                       (held & 0x0100) != 0 ? 0x10F0U : 0x31FFU);
    });
}

TEST_F(PortFlags, AreForcedWhateverTheMask)
{
    status = 0x0100;
    for_every_word([this](uint16_t mask) {
        expect_written(le16(mask) + hex("00 01 00 01 00 00 00 00 01 00"), 0x0F0F, 0x10F0);
    });
}

TEST_F(PortFlags, ChangeOnlyBit8UnderMask1)
{
    for (const uint32_t held : {0x0000U, 0xFFFFU, 0x5A5AU, 0xA5A5U}) {
        expect_written(hex("01 00 01 00 01 00 01 00 01 00 01 00"), held, held | 0x0100U);
        expect_written(hex("01 00 00 01 01 01 01 01 01 01 01 01"), held, held & 0xFEFFU);
    }
}

TEST_F(PortFlags, FollowEveryMask)
{
    const Bytes flag_sets[] = {hex("01 01 01 01 01 01 01 01 01 01"),
                               hex("00 02 FF 00 02 FF 00 02 FF 00"),
                               hex("01 00 01 02 01 FF 01 00 01 02")};
    for_every_word([&](uint16_t mask) {
        for (const Bytes& flags : flag_sets) {
            const Bytes start = le16(mask) + flags;
            for (const uint32_t held : {0x0000U, 0xFFFFU, 0x6996U}) {
                expect_written(start, held, word_after(held, mask, start));
            }
        }
    });
}

TEST_F(PortFlags, KeepTheOtherBitsOfEveryWord)
{
    for_every_word([&](uint16_t held) {
        for (const unsigned mask : {0U, 1U, 2U, 4U, 8U, 16U, 32U, 64U, 128U, 256U, 512U}) {
            const Bytes start = le16(mask) + hex("01 00 01 00 02 01 FF 01 00 01");
            expect_written(start, held, word_after(held, mask, start));
        }
    });
}

TEST_F(PortFlags, AreSetByOneAlone)
{
    for (const FlagRow& row : kRows) {
        for (const uint32_t flag : {0U, 1U, 2U, 255U}) {
            Bytes start = le16(1U << row.field) + untouched(10);
            start[row.byte] = static_cast<char>(flag);
            const bool set = flag == 1;
            expect_written(start, set ? 0x0000 : 0xFFFF, set ? row.bit : 0xFFFFU - row.bit);
        }
    }
}

TEST_F(PortFlags, AreReadBackAsWritten)
{
    for (unsigned flags = 0; flags < 1024; ++flags) {
        Bytes start = le16(0);
        for (unsigned field = 0; field < 10; ++field) {
            start += byte((flags >> field) & 1U);
        }
        EXPECT_EQ(run(WR_PORT_FLAGS, start), 0);
        expect_run(RD_PORT_FLAGS, le16(0) + untouched(10), 0, start);
    }
}

} // namespace
