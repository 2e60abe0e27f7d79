// The register block 0x16E..0x176.
#include "device/register_block_fixture.h"

namespace
{

const Course kReads16E = Course{opens_to_read()} + registers_read(0x016E, 5) + Course{closes()};

Bytes record_16e(uint32_t valid, uint32_t flag_a, uint32_t flag_b)
{
    return byte(valid) + hex("5A") + byte(flag_a) + byte(flag_b) + hex("C0 A8 01 FE 0A 8B 0C 8D");
}

// The course of a write with flag A 1 and flag B 0; held: B4 C2.
Course write_course_16e(uint32_t valid)
{
    constexpr uint32_t kFlags[] = {0, 0xB4C3, 0xB4C0, 0xB4C1};
    const uint32_t selected = valid == 0 ? 15 : valid % 16;
    Course course = kReads16E + Course{opens_to_write()};
    if (selected % 4 != 0) {
        course.push_back(register_write(0x016E, kFlags[selected % 4]));
    }
    if (selected / 4 % 2 != 0) {
        course.push_back(register_write(0x0170, 0xC0A8));
        course.push_back(register_write(0x0172, 0x01FE));
    }
    if (selected / 8 != 0) {
        course.push_back(register_write(0x0174, 0x0A8B));
        course.push_back(register_write(0x0176, 0x0C8D));
    }
    course.push_back(closes());
    return course;
}

class RegisterBlock16E : public RegisterBlockTest
{
};

TEST_F(RegisterBlock16E, TheReportOfBlock16EGivesItsRegisters)
{
    prove_registers({RD_REG16E_BLOCK, untouched(12), kHeldBlocks, kReads16E,
                     hex("A5 A5 00 01 21 32 43 54 65 76 87 98")});
}

TEST_F(RegisterBlock16E, EveryRegisterValueOfBlock16EIsReported)
{
    for_every_word([&](uint16_t word) {
        Bytes expected = untouched(2) + byte(word % 2) + byte(word / 2 % 2);
        at(0x016E) = word;
        for (unsigned i = 0; i < 4; ++i) { // each register takes every value
            const auto held = static_cast<uint16_t>((word + i) * (40503U + 2 * i));
            board.fpga.registers[0x0170 + 2 * i] = held;
            expected += big16(held);
        }
        ASSERT_EQ(record_after(RD_REG16E_BLOCK, untouched(12)), expected);
    });
}

TEST_F(RegisterBlock16E, EveryMaskWritesItsPartsOfBlock16E)
{
    for (uint32_t valid = 0; valid <= 0xFF; ++valid) {
        SCOPED_TRACE(hex_number(valid));
        expect_written(WR_REG16E_BLOCK, record_16e(valid, 1, 0), write_course_16e(valid));
    }
}

TEST_F(RegisterBlock16E, AFailedCallEndsTheWriteOfBlock16EAndThePartsBeforeItStayWritten)
{
    for (const uint32_t valid : {0U, 1U, 2U, 3U, 4U, 5U, 8U, 10U, 12U, 15U, 16U, 0xFFU}) {
        prove_block(WR_REG16E_BLOCK, record_16e(valid, 1, 0), write_course_16e(valid));
    }
}

TEST_F(RegisterBlock16E, TheFlagsOf16ELeaveItsOtherBits)
{
    constexpr uint32_t kFlags[][2] = {{0, 1}, {1, 0}, {1, 1}, {2, 255}, {255, 1}, {1, 2}};
    for_every_word([&](uint16_t word) {
        const auto& [a, b] = kFlags[word % 6 == 5 ? word / 6 % 6 : word % 6];
        for (const uint32_t valid : {0U, 1U, 2U, 3U, 0x0CU}) {
            held_put();
            at(0x016E) = word;
            uint32_t expected = word;
            if (valid == 0 || valid == 1 || valid == 3) {
                expected = expected / 2 * 2 + (a == 1 ? 1 : 0);
            }
            if (valid == 0 || valid == 2 || valid == 3) {
                expected = (expected & ~2U) + (b == 1 ? 2 : 0);
            }
            ASSERT_EQ(run(WR_REG16E_BLOCK, record_16e(valid, a, b)), 0);
            ASSERT_EQ(at(0x016E), expected);
        }
    });
}

TEST_F(RegisterBlock16E, EveryFlagByteOf16EIsOneOrNot)
{
    for_every_word([&](uint16_t flags) {
        const uint32_t a = flags >> 8;
        const uint32_t b = flags & 0xFFU;
        ASSERT_EQ(run(WR_REG16E_BLOCK, record_16e(3, a, b)), 0);
        ASSERT_EQ(at(0x016E), 0xB4C0 + (a == 1 ? 1 : 0) + (b == 1 ? 2 : 0));
    });
}

TEST_F(RegisterBlock16E, WhatWasWrittenToBlock16EIsReported)
{
    Draws draw;
    for (uint32_t round = 0; round < share_of(5000); ++round) {
        const Bytes addresses = draw.bytes(8);
        const uint32_t flags = draw() % 4;
        const Bytes parts = byte(flags % 2) + byte(flags / 2) + addresses;
        ASSERT_EQ(run(WR_REG16E_BLOCK, hex("00 5A") + parts), 0);
        ASSERT_EQ(record_after(RD_REG16E_BLOCK, untouched(12)), untouched(2) + parts);
        board.restart();
    }
}

} // namespace
