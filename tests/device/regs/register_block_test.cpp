// The register blocks 0xE0..0xF2 and 0x16E..0x176.
#include "device/regs/register_map_test.h"

namespace
{

// Block 0xE0 --------------------------------------------------------------------------------

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

class RegisterBlock : public RegisterMapTest
{
  protected:
    void SetUp() override { device_put(); }

    // Both blocks and their neighbours.
    void device_put()
    {
        board.fpga.registers = {
            {0x00DE, 0x0101}, {0x00E0, 0x1122}, {0x00E2, 0x3344}, {0x00E4, 0x5566},
            {0x00E6, 0x7788}, {0x00E8, 0x99AA}, {0x00EA, 0xBBCC}, {0x00EC, 0xDDEE},
            {0x00EE, 0xFF10}, {0x00F0, 0xA5A2}, {0x00F2, 0xFAED}, {0x00F4, 0x0202},
            {0x016C, 0x0303}, {0x016E, 0xB4C2}, {0x0170, 0x2132}, {0x0172, 0x4354},
            {0x0174, 0x6576}, {0x0176, 0x8798}, {0x0178, 0x0404}};
    }

    std::function<void*()> fresh(const Bytes& record)
    {
        return [this, record] {
            device_put();
            return caller.put(record);
        };
    }

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

TEST_F(RegisterBlock, TheReportOfBlockE0GivesItsRegisters)
{
    board.fpga.register_high = 0xBEEF;
    const Bytes callers(22, '\x5A');
    prove(RD_REGE0_BLOCK, fresh(callers), kReadsE0);
    EXPECT_EQ(run(RD_REGE0_BLOCK, callers),
              hex("5A 00 11 22 33 44 55 66 88 77 5A 5A CC BB AA 99 10 FF EE DD 02 0D"));
    expect_untouched_on_failure(RD_REGE0_BLOCK, callers, kReadsE0);
}

TEST_F(RegisterBlock, EveryRegisterValueOfBlockE0IsReported)
{
    for_every_word([&](uint16_t word) {
        uint16_t held[10];
        for (unsigned i = 0; i < 10; ++i) { // each register takes every value
            held[i] = static_cast<uint16_t>((word + i) * (40503U + 2 * i));
            board.fpga.registers[0x00E0 + 2 * i] = held[i];
        }
        Bytes expected(22, '\x5A');
        bytes_put(expected, 1, byte(held[8] % 2));
        for (unsigned i = 0; i < 3; ++i) {
            bytes_put(expected, 2 + 2 * i, byte(held[i] / 256) + byte(held[i] % 256));
        }
        bytes_put(expected, 8, le16(held[3]));
        bytes_put(expected, 12, le32(held[4] * 65536U + held[5]));
        bytes_put(expected, 16, le32(held[6] * 65536U + held[7]));
        bytes_put(expected, 20, byte(held[9] / 256 % 8) + byte(held[9] % 32));
        ASSERT_EQ(run(RD_REGE0_BLOCK, Bytes(22, '\x5A')), expected);
    });
}

TEST_F(RegisterBlock, EveryMaskWritesItsPartsOfBlockE0)
{
    board.fpga.register_high = 0xBEEF;
    for (uint32_t valid = 0; valid <= 0xFF; ++valid) {
        SCOPED_TRACE(valid);
        const BlockE0 block{valid};
        device_put();
        expect_sets(WR_REGE0_BLOCK, block.record(), write_course_e0(block));
    }
}

TEST_F(RegisterBlock, AFailedCallEndsTheWriteOfBlockE0)
{
    for (const uint32_t valid :
         {0U, 0xFFU, 0x01U, 0x02U, 0x04U, 0x08U, 0x10U, 0x20U, 0x40U, 0x80U, 0x55U, 0x2AU}) {
        const BlockE0 block{valid};
        prove(WR_REGE0_BLOCK, fresh(block.record()), write_course_e0(block));
    }
}

TEST_F(RegisterBlock, ThePartsOfBlockE0BeforeAFailedWriteStayWritten)
{
    for (const uint32_t valid : {0U, 0x7FU, 0x22U, 0x5DU}) {
        const BlockE0 block{valid};
        expect_earlier_writes_stay(WR_REGE0_BLOCK, fresh(block.record()), write_course_e0(block));
    }
}

// Three bits are driven, one is reported.
TEST_F(RegisterBlock, TheEnableFlagDrivesThreeBits)
{
    for_every_word([&](uint16_t word) {
        for (const uint32_t enable : {0U, 1U, 2U, 3U, 255U}) {
            device_put();
            board.fpga.registers[0x00F0] = word;
            auto expected = board.fpga.registers;
            expected[0x00F0] = static_cast<uint16_t>(word / 8 * 8 + (enable == 1 ? 7 : 0));
            run(WR_REGE0_BLOCK, BlockE0{0x01, enable}.record());
            ASSERT_EQ(board.fpga.registers, expected);
            Bytes reported(22, '\0');
            ASSERT_EQ(byte_at(run(RD_REGE0_BLOCK, reported), 1), enable == 1 ? 1 : 0);
        }
    });
}

TEST_F(RegisterBlock, TheFieldsOfF2LeaveItsOtherBits)
{
    for_every_word([&](uint16_t word) {
        const uint32_t field_3 = (word / 7) % 8;
        const uint32_t field_5 = (word / 3) % 32;
        const uint32_t with_3 = (word & ~0x0700U) + field_3 * 0x100;
        for (const uint32_t valid : {0x20U, 0x40U, 0x60U, 0x80U}) {
            const uint32_t base = (valid & 0x20U) != 0 ? with_3 : word;
            board.fpga.registers[0x00F2] = word;
            run(WR_REGE0_BLOCK, BlockE0{valid, 1, field_3, field_5}.record());
            ASSERT_EQ(board.fpga.registers[0x00F2],
                      (valid & 0x40U) != 0 ? (base & ~0x001FU) + field_5 : base);
        }
    });
}

TEST_F(RegisterBlock, EveryPairOfFieldsIsWrittenOrRefused)
{
    for_every_word([&](uint16_t fields) {
        const uint32_t field_3 = fields >> 8;
        const uint32_t field_5 = fields & 0xFFU;
        for (const uint32_t valid : {0x20U, 0x40U, 0x60U, 0x9FU}) {
            const bool refused =
                ((valid & 0x20U) != 0 && field_3 > 7) || ((valid & 0x40U) != 0 && field_5 > 31);
            device_put();
            run(WR_REGE0_BLOCK, BlockE0{valid, 1, field_3, field_5}.record(), refused ? -5 : 0);
            uint32_t expected = 0xFAED;
            if (!refused && (valid & 0x20U) != 0) {
                expected = (expected & 0xF8FFU) | field_3 << 8;
            }
            if (!refused && (valid & 0x40U) != 0) {
                expected = (expected & 0xFFE0U) | field_5;
            }
            ASSERT_EQ(board.fpga.registers[0x00F2], expected);
        }
    });
}

// A field out of range is found last, when the other parts have been written; then nothing is run
// again.
TEST_F(RegisterBlock, AFieldOutOfRangeLeavesThePartsBeforeItWritten)
{
    const BlockE0 bad[] = {{0, 1, 8, 0x12},    {0xFF, 1, 255, 0x12},  {0x3F, 1, 8, 0x12},
                           {0, 1, 5, 32},      {0x5F, 1, 5, 255},     {0x25, 1, 8, 32},
                           {0x20, 1, 8, 0x12}, {0x40, 1, 5, 32},      {0x60, 1, 7, 32},
                           {0x4A, 1, 8, 32},   {0xE0, 1, 0x80, 0x80}, {0x60, 1, 8, 31}};
    for (const BlockE0& block : bad) {
        SCOPED_TRACE(block.valid);
        Course course = write_course_e0(block);
        course.erase(course.end() - 2); // the write of 0xF2
        ASSERT_EQ(course.back().call, "close /dev/fpga");
        prove(WR_REGE0_BLOCK, fresh(block.record()), course, -5);
        device_put();
        expect_sets(WR_REGE0_BLOCK, block.record(), course, -5);
        EXPECT_EQ(board.fpga.registers[0x00F2], 0xFAED);
        if (block.valid == 0) {
            EXPECT_EQ(board.fpga.registers[0x00F0], 0xA5A7);
            EXPECT_EQ(board.fpga.registers[0x00EE], 0x0708);
        }
    }
}

TEST_F(RegisterBlock, WhatBlockE0HoldsAlreadyIsWrittenAgain)
{
    const BlockE0 block{};
    run(WR_REGE0_BLOCK, block.record());
    expect_sets(WR_REGE0_BLOCK, block.record(), write_course_e0(block));
}

TEST_F(RegisterBlock, WhatWasWrittenToBlockE0IsReported)
{
    for (uint32_t round = 0; round < share_of(5000); ++round) {
        Bytes record = draw_bytes(22);
        bytes_put(record, 0, byte(0));
        bytes_put(record, 20, byte(draw() % 8) + byte(draw() % 32));
        run(WR_REGE0_BLOCK, record);
        Bytes expected = record;
        bytes_put(expected, 1, byte(byte_at(record, 1) == 1 ? 1 : 0));
        const Bytes asked = byte(0) + Bytes(9, '\x33') + record.substr(10, 2) + Bytes(10, '\x33');
        ASSERT_EQ(run(RD_REGE0_BLOCK, asked), expected);
        board.restart();
    }
}

// Block 0x16E -------------------------------------------------------------------------------

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

TEST_F(RegisterBlock, TheReportOfBlock16EGivesItsRegisters)
{
    board.fpga.register_high = 0xBEEF;
    const Bytes callers(12, '\x5A');
    prove(RD_REG16E_BLOCK, fresh(callers), kReads16E);
    EXPECT_EQ(run(RD_REG16E_BLOCK, callers), hex("5A 5A 00 01 21 32 43 54 65 76 87 98"));
    expect_untouched_on_failure(RD_REG16E_BLOCK, callers, kReads16E);
}

TEST_F(RegisterBlock, EveryRegisterValueOfBlock16EIsReported)
{
    for_every_word([&](uint16_t word) {
        Bytes expected = hex("5A 5A") + byte(word % 2) + byte(word / 2 % 2);
        board.fpga.registers[0x016E] = word;
        for (unsigned i = 0; i < 4; ++i) { // each register takes every value
            const auto held = static_cast<uint16_t>((word + i) * (40503U + 2 * i));
            board.fpga.registers[0x0170 + 2 * i] = held;
            expected += byte(held / 256) + byte(held % 256);
        }
        ASSERT_EQ(run(RD_REG16E_BLOCK, Bytes(12, '\x5A')), expected);
    });
}

TEST_F(RegisterBlock, EveryMaskWritesItsPartsOfBlock16E)
{
    board.fpga.register_high = 0xBEEF;
    for (uint32_t valid = 0; valid <= 0xFF; ++valid) {
        SCOPED_TRACE(valid);
        device_put();
        expect_sets(WR_REG16E_BLOCK, record_16e(valid, 1, 0), write_course_16e(valid));
    }
}

TEST_F(RegisterBlock, AFailedCallEndsTheWriteOfBlock16E)
{
    for (const uint32_t valid : {0U, 1U, 2U, 3U, 4U, 8U, 12U, 16U, 0xFFU}) {
        prove(WR_REG16E_BLOCK, fresh(record_16e(valid, 1, 0)), write_course_16e(valid));
    }
}

TEST_F(RegisterBlock, ThePartsOfBlock16EBeforeAFailedWriteStayWritten)
{
    for (const uint32_t valid : {0U, 0x0FU, 0x05U, 0x0AU}) {
        expect_earlier_writes_stay(WR_REG16E_BLOCK, fresh(record_16e(valid, 1, 0)),
                                   write_course_16e(valid));
    }
}

TEST_F(RegisterBlock, TheFlagsOf16ELeaveItsOtherBits)
{
    constexpr uint32_t kFlags[][2] = {{0, 1}, {1, 0}, {1, 1}, {2, 255}, {255, 1}, {1, 2}};
    for_every_word([&](uint16_t word) {
        const auto& [a, b] = kFlags[word % 6 == 5 ? word / 6 % 6 : word % 6];
        for (const uint32_t valid : {0U, 1U, 2U, 3U, 0x0CU}) {
            device_put();
            board.fpga.registers[0x016E] = word;
            uint32_t expected = word;
            if (valid == 0 || valid == 1 || valid == 3) {
                expected = expected / 2 * 2 + (a == 1 ? 1 : 0);
            }
            if (valid == 0 || valid == 2 || valid == 3) {
                expected = (expected & ~2U) + (b == 1 ? 2 : 0);
            }
            run(WR_REG16E_BLOCK, record_16e(valid, a, b));
            ASSERT_EQ(board.fpga.registers[0x016E], expected);
        }
    });
}

TEST_F(RegisterBlock, EveryFlagByteOf16EIsOneOrNot)
{
    for_every_word([&](uint16_t flags) {
        const uint32_t a = flags >> 8;
        const uint32_t b = flags & 0xFFU;
        run(WR_REG16E_BLOCK, record_16e(3, a, b));
        ASSERT_EQ(board.fpga.registers[0x016E], 0xB4C0 + (a == 1 ? 1 : 0) + (b == 1 ? 2 : 0));
    });
}

TEST_F(RegisterBlock, WhatBlock16EHoldsAlreadyIsWrittenAgain)
{
    run(WR_REG16E_BLOCK, record_16e(0, 1, 0));
    expect_sets(WR_REG16E_BLOCK, record_16e(0, 1, 0), write_course_16e(0));
}

TEST_F(RegisterBlock, WhatWasWrittenToBlock16EIsReported)
{
    for (uint32_t round = 0; round < share_of(5000); ++round) {
        const Bytes addresses = draw_bytes(8);
        const uint32_t flags = draw() % 4;
        run(WR_REG16E_BLOCK, hex("00 5A") + byte(flags % 2) + byte(flags / 2) + addresses);
        ASSERT_EQ(run(RD_REG16E_BLOCK, Bytes(12, '\x33')),
                  hex("33 33") + byte(flags % 2) + byte(flags / 2) + addresses);
        board.restart();
    }
}

} // namespace
