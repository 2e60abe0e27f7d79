// The register block 0xE0..0xF2.
#include "device/register_block_fixture.h"

namespace
{

const Course kReadsE0 = Course{opens_to_read()} + registers_read(0x00E0, 10) + Course{closes()};

// A value to write to a part of the block, and to its registers.
struct BlockE0 {
    uint32_t valid = 0;
    uint32_t enable = 1;
    uint32_t field_3 = 5;
    uint32_t field_5 = 0x12;

    // The caller's record; what lies behind its 22 bytes is a guard.
    [[nodiscard]] Bytes record() const
    {
        return byte(valid) + byte(enable) + hex("A0 A1 A2 A3 A4 A5 68 C7 5A 5A") +
               hex("04 03 02 81 08 07 06 85") + byte(field_3) + byte(field_5);
    }
};

// The writes of the first five parts, in their order.
const Course kPartsE0[] = {
    {register_write(0x00F0, 0xA5A7)},
    {register_write(0x00E0, 0xA0A1), register_write(0x00E2, 0xA2A3),
     register_write(0x00E4, 0xA4A5)},
    {register_write(0x00E6, 0xC768)},
    {register_write(0x00E8, 0x8102), register_write(0x00EA, 0x0304)},
    {register_write(0x00EC, 0x8506), register_write(0x00EE, 0x0708)},
};

class RegisterBlockE0 : public RegisterBlockTest
{
  protected:
    // A read of the whole block, then the selected parts; the driver's high halves are not
    // written back, the block having been read on a descriptor of its own.
    static Course write_course_e0(const BlockE0& block)
    {
        const uint32_t valid = block.valid == 0 ? 0xFF : block.valid;
        Course course = kReadsE0 + Course{opens_to_write()};
        for (unsigned part = 0; part < 5; ++part) {
            if ((valid >> part) % 2 == 1) {
                course = course + kPartsE0[part];
            }
        }
        switch ((valid >> 5) % 4) { // held: FA ED
        case 1:
            course.push_back(register_write(0x00F2, 0xFDED));
            break;
        case 2:
            course.push_back(register_write(0x00F2, 0xFAF2));
            break;
        case 3:
            course.push_back(register_write(0x00F2, 0xFDF2));
            break;
        default:
            break;
        }
        course.push_back(closes());
        return course;
    }
};

TEST_F(RegisterBlockE0, TheReportOfBlockE0GivesItsRegisters)
{
    prove_registers({RD_REGE0_BLOCK, untouched(22), kHeldBlocks, kReadsE0,
                     hex("A5 00 11 22 33 44 55 66 88 77 A5 A5 CC BB AA 99 10 FF EE DD 02 0D")});
}

TEST_F(RegisterBlockE0, EveryRegisterValueOfBlockE0IsReported)
{
    for_every_word([&](uint16_t word) {
        uint16_t held[10];
        for (unsigned i = 0; i < 10; ++i) { // each register takes every value
            held[i] = static_cast<uint16_t>((word + i) * (40503U + 2 * i));
            board.fpga.registers[0x00E0 + 2 * i] = held[i];
        }
        Bytes expected = untouched(22);
        bytes_put(expected, 1, byte(held[8] % 2));
        for (unsigned i = 0; i < 3; ++i) {
            bytes_put(expected, 2 + 2 * i, big16(held[i]));
        }
        bytes_put(expected, 8, le16(held[3]));
        bytes_put(expected, 12, le32(held[4] * 65536U + held[5]));
        bytes_put(expected, 16, le32(held[6] * 65536U + held[7]));
        bytes_put(expected, 20, byte(held[9] / 256 % 8) + byte(held[9] % 32));
        ASSERT_EQ(record_after(RD_REGE0_BLOCK, untouched(22)), expected);
    });
}

TEST_F(RegisterBlockE0, EveryMaskWritesItsPartsOfBlockE0)
{
    for (uint32_t valid = 0; valid <= 0xFF; ++valid) {
        SCOPED_TRACE(hex_number(valid));
        const BlockE0 block{valid};
        expect_written(WR_REGE0_BLOCK, block.record(), write_course_e0(block));
    }
}

TEST_F(RegisterBlockE0, AFailedCallEndsTheWriteOfBlockE0AndThePartsBeforeItStayWritten)
{
    for (const uint32_t valid : {0U, 0xFFU, 0x01U, 0x02U, 0x04U, 0x08U, 0x10U, 0x20U, 0x40U, 0x80U,
                                 0x55U, 0x2AU, 0x7FU, 0x22U, 0x5DU}) {
        const BlockE0 block{valid};
        prove_block(WR_REGE0_BLOCK, block.record(), write_course_e0(block));
    }
}

// Three bits are driven, one is reported.
TEST_F(RegisterBlockE0, TheEnableFlagDrivesThreeBits)
{
    for_every_word([&](uint16_t word) {
        for (const uint32_t enable : {0U, 1U, 2U, 3U, 255U}) {
            held_put();
            at(0x00F0) = word;
            auto expected = board.fpga.registers;
            expected[0x00F0] = static_cast<uint16_t>(word / 8 * 8 + (enable == 1 ? 7 : 0));
            ASSERT_EQ(run(WR_REGE0_BLOCK, BlockE0{0x01, enable}.record()), 0);
            ASSERT_EQ(board.fpga.registers, expected);
            ASSERT_EQ(byte_at(record_after(RD_REGE0_BLOCK, zeros(22)), 1), enable == 1 ? 1 : 0);
        }
    });
}

TEST_F(RegisterBlockE0, TheFieldsOfF2LeaveItsOtherBits)
{
    for_every_word([&](uint16_t word) {
        const uint32_t field_3 = (word / 7) % 8;
        const uint32_t field_5 = (word / 3) % 32;
        const uint32_t with_3 = (word & ~0x0700U) + field_3 * 0x100;
        for (const uint32_t valid : {0x20U, 0x40U, 0x60U, 0x80U}) {
            const uint32_t base = (valid & 0x20U) != 0 ? with_3 : word;
            at(0x00F2) = word;
            ASSERT_EQ(run(WR_REGE0_BLOCK, BlockE0{valid, 1, field_3, field_5}.record()), 0);
            ASSERT_EQ(at(0x00F2), (valid & 0x40U) != 0 ? (base & ~0x001FU) + field_5 : base);
        }
    });
}

TEST_F(RegisterBlockE0, EveryPairOfFieldsIsWrittenOrRefused)
{
    for_every_word([&](uint16_t fields) {
        const uint32_t field_3 = fields >> 8;
        const uint32_t field_5 = fields & 0xFFU;
        for (const uint32_t valid : {0x20U, 0x40U, 0x60U, 0x9FU}) {
            const bool refused =
                ((valid & 0x20U) != 0 && field_3 > 7) || ((valid & 0x40U) != 0 && field_5 > 31);
            held_put();
            const Bytes record = BlockE0{valid, 1, field_3, field_5}.record();
            ASSERT_EQ(run(WR_REGE0_BLOCK, record), refused ? -5 : 0);
            uint32_t expected = 0xFAED;
            if (!refused && (valid & 0x20U) != 0) {
                expected = (expected & 0xF8FFU) | field_3 << 8;
            }
            if (!refused && (valid & 0x40U) != 0) {
                expected = (expected & 0xFFE0U) | field_5;
            }
            ASSERT_EQ(at(0x00F2), expected);
        }
    });
}

// A field out of range is found last, when the other parts have been written; then nothing is run
// again.
TEST_F(RegisterBlockE0, AFieldOutOfRangeLeavesThePartsBeforeItWritten)
{
    const BlockE0 bad[] = {{0, 1, 8, 0x12},    {0xFF, 1, 255, 0x12},  {0x3F, 1, 8, 0x12},
                           {0, 1, 5, 32},      {0x5F, 1, 5, 255},     {0x25, 1, 8, 32},
                           {0x20, 1, 8, 0x12}, {0x40, 1, 5, 32},      {0x60, 1, 7, 32},
                           {0x4A, 1, 8, 32},   {0xE0, 1, 0x80, 0x80}, {0x60, 1, 8, 31}};
    for (const BlockE0& block : bad) {
        SCOPED_TRACE(hex_number(block.valid));
        Course course = write_course_e0(block);
        course.erase(course.end() - 2); // the write of 0xF2
        ASSERT_EQ(course.back().call, "close /dev/fpga");
        prove_registers({WR_REGE0_BLOCK, block.record(), kHeldBlocks, course, block.record(), -5});
        EXPECT_EQ(at(0x00F2), 0xFAED);
        if (block.valid == 0) {
            EXPECT_EQ(at(0x00F0), 0xA5A7);
            EXPECT_EQ(at(0x00EE), 0x0708);
        }
    }
}

TEST_F(RegisterBlockE0, WhatWasWrittenToBlockE0IsReported)
{
    Draws draw;
    for (uint32_t round = 0; round < share_of(5000); ++round) {
        Bytes record = draw.bytes(22);
        bytes_put(record, 0, byte(0));
        bytes_put(record, 20, byte(draw() % 8) + byte(draw() % 32));
        ASSERT_EQ(run(WR_REGE0_BLOCK, record), 0);
        Bytes expected = record;
        bytes_put(expected, 1, byte(byte_at(record, 1) == 1 ? 1 : 0));
        const Bytes asked = byte(0) + Bytes(9, '\x33') + record.substr(10, 2) + Bytes(10, '\x33');
        ASSERT_EQ(record_after(RD_REGE0_BLOCK, asked), expected);
        board.restart();
    }
}

} // namespace
