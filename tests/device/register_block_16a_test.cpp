// The register block that index register 0x16A selects.
#include "device/register_fixture.h"

namespace
{

class RegisterBlock16A : public RegisterTest
{
};

Bytes block(uint32_t index, unsigned valid, unsigned flag_a, unsigned flag_b,
            const char* data = "10 32 54 76 98 BA")
{
    return le16(index) + byte(valid) + byte(flag_a) + byte(flag_b) + byte(0xEE) + hex(data);
}

const Registers kBlock{
    {0x16A, 0x8003}, {0x160, 0x0102}, {0x162, 0x0304}, {0x164, 0x0506}, {0x166, 0xFFF1}};

// The index goes to bits 0 and 1 of 0x16A; held: 8003.
Course selects(uint32_t index)
{
    return {opens_to_write(), register_read(0x16A), register_write(0x16A, kHigh | 0x8000 | index)};
}

const Course kWritesData = {register_write(0x160, 0x1032), register_write(0x162, 0x5476),
                            register_write(0x164, 0x98BA)};

TEST_F(RegisterBlock16A, TheIndexReplacesBits0And1Of16A)
{
    for (uint32_t index = 0; index < 4; ++index) {
        // A mask of neither flags nor data leaves only the selection.
        write_over_every_value(
            WR_REG16A_BLOCK, 0x16A, block(index, 0x08, 1, 1),
            [=](uint16_t word) { return static_cast<uint16_t>((word & 0xFFFC) | index); });
    }
}

TEST_F(RegisterBlock16A, AReportOfABlockSelectsItAndLeavesTheRestOf16A)
{
    for (uint32_t index = 0; index < 4; ++index) {
        for_every_word([&](uint16_t word) {
            at(0x16A) = word;
            ASSERT_EQ(run(RD_REG16A_BLOCK, block(index, 0xA5, 0xA5, 0xA5)), 0);
            ASSERT_EQ(at(0x16A), (word & 0xFFFC) | index);
        });
    }
}

TEST_F(RegisterBlock16A, TheFlagsOfABlockAreBits1And0Of166)
{
    for_every_word([&](uint16_t word) {
        at(0x166) = word;
        at(0x160) = word;
        at(0x162) = static_cast<uint16_t>(word * 3);
        at(0x164) = static_cast<uint16_t>(~word);
        ASSERT_EQ(run(RD_REG16A_BLOCK, block(2, 0xA5, 0xA5, 0xA5)), 0);
        ASSERT_EQ(record(), le16(2) + byte(0xA5) + byte(word >> 1 & 1) + byte(word & 1) +
                                byte(0xEE) + big16(word) + big16(word * 3U & 0xFFFF) +
                                big16(0xFFFFU - word));
        ASSERT_EQ(at(0x166), word);
    });
}

// What the setter does to 0x166, by mask and flags.
uint16_t with_flags(uint16_t word, unsigned mask, unsigned flag_a, unsigned flag_b)
{
    uint32_t value = word;
    if (mask == 0 || mask % 2 == 1) {
        value = flag_a == 1 ? value | 2 : value & 0xFFFD;
    }
    if (mask == 0 || mask / 2 % 2 == 1) {
        value = flag_b == 1 ? value | 1 : value & 0xFFFE;
    }
    return static_cast<uint16_t>(value);
}

TEST_F(RegisterBlock16A, TheMaskSelectsFlagsAndDataOfABlock)
{
    for (unsigned mask = 0; mask < 256; ++mask) {
        SCOPED_TRACE(hex_number(mask));
        Course course = selects(1);
        if (mask == 0 || (mask & 4) != 0) {
            course = course + kWritesData;
        }
        if (mask == 0 || (mask & 3) != 0) {
            course = course + Course{register_read(0x166),
                                     register_write(0x166, kHigh | with_flags(0xFFF1, mask, 1, 0))};
        }
        board.fpga.registers = kBlock;
        expect_calls(WR_REG16A_BLOCK, block(1, mask, 1, 0), course + Course{closes()},
                     block(1, mask, 1, 0));
    }
}

TEST_F(RegisterBlock16A, EveryFlagOfABlockUnderEveryMask)
{
    board.recording = false;
    for (unsigned mask = 0; mask < 256; ++mask) {
        for (const unsigned flag_a : {0U, 1U, 2U, 255U}) {
            for (const unsigned flag_b : {0U, 1U, 2U, 255U}) {
                for (const uint16_t word : kSomeWords) {
                    at(0x166) = word;
                    ASSERT_EQ(run(WR_REG16A_BLOCK, block(0, mask, flag_a, flag_b)), 0);
                    ASSERT_EQ(at(0x166), with_flags(word, mask, flag_a, flag_b)) << mask;
                }
            }
        }
    }
}

TEST_F(RegisterBlock16A, AFlagOfABlockKeepsAllOtherBits)
{
    for (const unsigned mask : {0U, 1U, 2U, 3U}) {
        for (const auto& [flag_a, flag_b] : {std::pair{0U, 1U}, {1U, 0U}, {2U, 255U}}) {
            for_every_word([&, a = flag_a, b = flag_b](uint16_t word) {
                at(0x166) = word;
                ASSERT_EQ(run(WR_REG16A_BLOCK, block(0, mask, a, b)), 0);
                ASSERT_EQ(at(0x166), with_flags(word, mask, a, b));
            });
        }
    }
}

TEST_F(RegisterBlock16A, TheDataOfABlockAreWrittenWhole)
{
    for_every_word([&](uint16_t word) {
        const auto third = static_cast<uint16_t>(word * 7);
        ASSERT_EQ(run(WR_REG16A_BLOCK, le16(3) + hex("04 01 01 EE") + big16(word) +
                                           big16(0xFFFFU - word) + big16(third)),
                  0);
        ASSERT_EQ(at(0x160), word);
        ASSERT_EQ(at(0x162), 0xFFFF - word);
        ASSERT_EQ(at(0x164), third);
    });
    EXPECT_EQ(board.fpga.registers.count(0x166), 0U);
}

TEST_F(RegisterBlock16A, AnIndexAbove3OfABlockIsRefused)
{
    for (const DeviceCommandCode command : {RD_REG16A_BLOCK, WR_REG16A_BLOCK}) {
        refuse_all_but(
            command, [](uint16_t index) { return block(index, 0, 1, 1); },
            [](uint16_t index) { return index <= 3; });
        for (const uint32_t index : {4U, 0x0100U, 0xFFFFU}) {
            board.fpga.registers = kBlock;
            expect_refused(command, block(index, 0, 1, 1));
            EXPECT_EQ(board.fpga.registers, kBlock);
        }
    }
}

TEST_F(RegisterBlock16A, ABlockReadsBackAsWritten)
{
    for (const auto& [a, b] : {std::pair{0U, 1U}, {1U, 0U}, {1U, 1U}, {0U, 0U}}) {
        EXPECT_EQ(run(WR_REG16A_BLOCK, block(1, 0, a, b)), 0);
        EXPECT_EQ(run(RD_REG16A_BLOCK, block(1, 0xA5, 0xA5, 0xA5, "A5 A5 A5 A5 A5 A5")), 0);
        EXPECT_EQ(record(), block(1, 0xA5, a, b));
    }
}

TEST_F(RegisterBlock16A, EachCommandTakesItsCourseAndLeavesWhatItHasWrittenWhenItFails)
{
    // Also where a block is selected already.
    for (const uint32_t index : {1U, 2U, 3U}) {
        const uint32_t flags = index == 1 ? 0xFFF1 : 0xFFF3;
        Registers held = kBlock;
        held[0x166] = static_cast<uint16_t>(flags);
        prove_registers({RD_REG16A_BLOCK, block(index, 9, 9, 9), held,
                         selects(index) + registers_read(0x160, 4) + Course{closes()},
                         block(index, 9, index == 1 ? 0 : 1, 1, "01 02 03 04 05 06")});
        prove_registers(
            {WR_REG16A_BLOCK, block(index, 0, 1, 2), held,
             selects(index) + kWritesData +
                 Course{register_read(0x166), register_write(0x166, kHigh | 0xFFF2), closes()},
             block(index, 0, 1, 2)});
        prove_registers({WR_REG16A_BLOCK, block(index, 3, 1, 1), held,
                         selects(index) + Course{register_read(0x166),
                                                 register_write(0x166, kHigh | 0xFFF3), closes()},
                         block(index, 3, 1, 1)});
    }
}

} // namespace
