// The commands of the block that index register 0x16A selects.
#include "device/register_test.h"

namespace
{

class RegisterIndexed : public RegisterTest
{
};

constexpr uint16_t kSomeWords[] = {0x0000, 0xFFFF, 0xA5C3, 0x5A3C};

Bytes block(uint32_t index, unsigned valid, unsigned flag_a, unsigned flag_b,
            const char* data = "10 32 54 76 98 BA")
{
    return le16(index) + byte(valid) + byte(flag_a) + byte(flag_b) + byte(0xEE) + hex(data);
}

const Registers kBlock{
    {0x16A, 0x8003}, {0x160, 0x0102}, {0x162, 0x0304}, {0x164, 0x0506}, {0x166, 0xFFF1}};

TEST_F(RegisterIndexed, TheIndexReplacesBits0And1Of16A)
{
    for (uint32_t index = 0; index < 4; ++index) {
        // A mask of neither flags nor data leaves only the selection.
        write_over_every_value(0x0071, 0x16A, block(index, 0x08, 1, 1), [=](uint16_t word) {
            return static_cast<uint16_t>((word & 0xFFFC) | index);
        });
    }
}

TEST_F(RegisterIndexed, AReportOfABlockSelectsItAndLeavesTheRestOf16A)
{
    for (uint32_t index = 0; index < 4; ++index) {
        for_every_word([&](uint16_t word) {
            at(0x16A) = word;
            put(block(index, 0xA5, 0xA5, 0xA5));
            ASSERT_EQ(run(0x0070), 0);
            ASSERT_EQ(at(0x16A), (word & 0xFFFC) | index);
        });
    }
}

TEST_F(RegisterIndexed, TheFlagsOfABlockAreBits1And0Of166)
{
    for_every_word([&](uint16_t word) {
        at(0x166) = word;
        at(0x160) = word;
        at(0x162) = static_cast<uint16_t>(word * 3);
        at(0x164) = static_cast<uint16_t>(~word);
        put(block(2, 0xA5, 0xA5, 0xA5));
        ASSERT_EQ(run(0x0070), 0);
        ASSERT_EQ(get(), le16(2) + byte(0xA5) + byte(word >> 1 & 1) + byte(word & 1) + byte(0xEE) +
                             big16(word) + big16(word * 3U & 0xFFFF) + big16(0xFFFFU - word));
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

TEST_F(RegisterIndexed, TheMaskSelectsFlagsAndDataOfABlock)
{
    for (unsigned mask = 0; mask < 256; ++mask) {
        SCOPED_TRACE(mask);
        Course course{opens_to_write(), register_read(0x16A), register_write(0x16A, 0xCAFE8001)};
        if (mask == 0 || (mask & 4) != 0) {
            course = course + Course{register_write(0x160, 0x1032), register_write(0x162, 0x5476),
                                     register_write(0x164, 0x98BA)};
        }
        if (mask == 0 || (mask & 3) != 0) {
            course = course + Course{register_read(0x166),
                                     register_write(0x166, kHigh | with_flags(0xFFF1, mask, 1, 0))};
        }
        board.fpga.registers = kBlock;
        expect_course(0x0071, put(block(1, mask, 1, 0)), course + Course{closes()});
        EXPECT_EQ(get(), block(1, mask, 1, 0));
    }
}

TEST_F(RegisterIndexed, EveryFlagOfABlockUnderEveryMask)
{
    board.recording = false;
    for (unsigned mask = 0; mask < 256; ++mask) {
        for (const unsigned flag_a : {0U, 1U, 2U, 255U}) {
            for (const unsigned flag_b : {0U, 1U, 2U, 255U}) {
                for (const uint16_t word : kSomeWords) {
                    at(0x166) = word;
                    put(block(0, mask, flag_a, flag_b));
                    ASSERT_EQ(run(0x0071), 0);
                    ASSERT_EQ(at(0x166), with_flags(word, mask, flag_a, flag_b)) << mask;
                }
            }
        }
    }
}

TEST_F(RegisterIndexed, AFlagOfABlockKeepsAllOtherBits)
{
    for (const unsigned mask : {0U, 1U, 2U, 3U}) {
        for (const auto& [flag_a, flag_b] : {std::pair{0U, 1U}, {1U, 0U}, {2U, 255U}}) {
            for_every_word([&, a = flag_a, b = flag_b](uint16_t word) {
                at(0x166) = word;
                put(block(0, mask, a, b));
                ASSERT_EQ(run(0x0071), 0);
                ASSERT_EQ(at(0x166), with_flags(word, mask, a, b));
            });
        }
    }
}

TEST_F(RegisterIndexed, TheDataOfABlockAreWrittenWhole)
{
    for_every_word([&](uint16_t word) {
        const auto third = static_cast<uint16_t>(word * 7);
        put(le16(3) + hex("04 01 01 EE") + big16(word) + big16(0xFFFFU - word) + big16(third));
        ASSERT_EQ(run(0x0071), 0);
        ASSERT_EQ(at(0x160), word);
        ASSERT_EQ(at(0x162), 0xFFFF - word);
        ASSERT_EQ(at(0x164), third);
    });
    EXPECT_EQ(board.fpga.registers.count(0x166), 0U);
}

TEST_F(RegisterIndexed, AnIndexAbove3OfABlockIsRefused)
{
    for (const DeviceCommandCode command : {0x0070U, 0x0071U}) {
        refuse_all_but(
            command, [](uint16_t index) { return block(index, 0, 1, 1); },
            [](uint16_t index) { return index <= 3; });
        for (const uint32_t index : {4U, 0x0100U, 0xFFFFU}) {
            board.fpga.registers = kBlock;
            expect_refused(command, put(block(index, 0, 1, 1)));
            EXPECT_EQ(board.fpga.registers, kBlock);
        }
    }
}

TEST_F(RegisterIndexed, WhatWasWrittenOfABlockStaysWhenALaterStepFails)
{
    // The report leaves its selection.
    Registers after = kBlock;
    expect_left(0x0070, block(2, 9, 9, 9), kBlock, 2, -2, after);
    expect_left(0x0070, block(2, 9, 9, 9), kBlock, 3, -4, after);
    after[0x16A] = 0x8002;
    for (const size_t n : {4U, 5U, 6U, 7U}) {
        expect_left(0x0070, block(2, 9, 9, 9), kBlock, n, -2, after);
    }

    const Bytes record = block(2, 0, 1, 0);
    expect_left(0x0071, record, kBlock, 2, -2, kBlock);
    expect_left(0x0071, record, kBlock, 3, -4, kBlock);
    expect_left(0x0071, record, kBlock, 4, -4, after);
    after[0x160] = 0x1032;
    expect_left(0x0071, record, kBlock, 5, -4, after);
    after[0x162] = 0x5476;
    expect_left(0x0071, record, kBlock, 6, -4, after);
    after[0x164] = 0x98BA;
    expect_left(0x0071, record, kBlock, 7, -2, after);
    expect_left(0x0071, record, kBlock, 8, -4, after);
    // Flags alone.
    after = kBlock;
    after[0x16A] = 0x8002;
    expect_left(0x0071, block(2, 3, 1, 0), kBlock, 4, -2, after);
    expect_left(0x0071, block(2, 3, 1, 0), kBlock, 5, -4, after);
}

TEST_F(RegisterIndexed, ABlockReadsBackAsWritten)
{
    for (const auto& [a, b] : {std::pair{0U, 1U}, {1U, 0U}, {1U, 1U}, {0U, 0U}}) {
        put(block(1, 0, a, b));
        EXPECT_EQ(run(0x0071), 0);
        put(block(1, 0xA5, 0xA5, 0xA5, "A5 A5 A5 A5 A5 A5"));
        EXPECT_EQ(run(0x0070), 0);
        EXPECT_EQ(get(), block(1, 0xA5, a, b));
    }
}

TEST_F(RegisterIndexed, EachCommandTakesItsCourse)
{
    prove_all(indexed_proofs());
}

} // namespace

CommandProofs indexed_proofs()
{
    return {
        {0x0070,
         block(1, 9, 9, 9),
         kBlock,
         {opens_to_write(), register_read(0x16A), register_write(0x16A, 0xCAFE8001),
          register_read(0x160), register_read(0x162), register_read(0x164), register_read(0x166),
          closes()},
         block(1, 9, 0, 1, "01 02 03 04 05 06")},
        {0x0071,
         block(0, 0, 1, 2),
         kBlock,
         {opens_to_write(), register_read(0x16A), register_write(0x16A, 0xCAFE8000),
          register_write(0x160, 0x1032), register_write(0x162, 0x5476),
          register_write(0x164, 0x98BA), register_read(0x166), register_write(0x166, 0xCAFEFFF2),
          closes()},
         block(0, 0, 1, 2)},
    };
}
