// Commands of several fields or registers in one record.
#include "device/register_fixture.h"

namespace
{

class RegisterRecord : public RegisterTest
{
};

// The bytes of 0x110 and 0x112 ---------------------------------------------------------------

TEST_F(RegisterRecord, TheBytesOf110AreItsHighAndLowByteThenThoseOf112)
{
    for_every_word([&](uint16_t word) {
        const auto other = static_cast<uint16_t>(~word);
        at(0x110) = word;
        at(0x112) = other;
        ASSERT_EQ(record_after(RD_REG110_BYTES, untouched(4)), big16(word) + big16(other));
    });
    EXPECT_EQ(board.fpga.registers.size(), 2U);
}

TEST_F(RegisterRecord, TheBytesOf110AreWrittenWholeAndCommitted)
{
    for_every_word([&](uint16_t word) {
        const auto other = static_cast<uint16_t>(~word);
        at(0x110) = 0x0F0F;
        at(0x112) = 0x0F0F;
        at(0x114) = word;
        ASSERT_EQ(run(WR_REG110_BYTES, big16(word) + big16(other)), 0);
        ASSERT_EQ(at(0x110), word);
        ASSERT_EQ(at(0x112), other);
        ASSERT_EQ(at(0x114), word | 0x0004);
    });
    EXPECT_EQ(board.fpga.registers.size(), 3U);
}

// The fields of 0x15A -----------------------------------------------------------------------

Bytes fields(unsigned valid, unsigned a, unsigned b)
{
    return byte(valid) + byte(0xEE) + byte(a) + byte(b);
}

uint16_t with_fields(uint16_t word, unsigned mask, unsigned a, unsigned b)
{
    uint32_t value = word;
    if (mask == 0 || mask % 2 == 1) {
        value = (value & 0x00FF) | (a % 8) * 0x2000;
    }
    if (mask == 0 || mask / 2 % 2 == 1) {
        value = (value & 0xFF00) | (b % 8) * 0x20;
    }
    return static_cast<uint16_t>(value);
}

TEST_F(RegisterRecord, TheFieldsOf15AAreBits13To15AndBits5To12)
{
    read_every_value(RD_REG15A_FIELDS, 0x15A, fields(0xA5, 0xA5, 0xA5), [](uint16_t word) {
        return fields(0xA5, word / 0x2000U, word / 0x20U % 0x100U);
    });
}

TEST_F(RegisterRecord, AFieldOf15AClearsTheRestOfItsByte)
{
    for (const unsigned mask : {0U, 1U, 2U, 3U, 4U}) {
        for (const auto& [a, b] : {std::pair{0U, 0U}, {7U, 0xFFU}, {0xFFU, 7U}, {0x0DU, 0xAAU}}) {
            write_over_every_value(
                WR_REG15A_FIELDS, 0x15A, fields(mask, a, b),
                [mask, a = a, b = b](uint16_t word) { return with_fields(word, mask, a, b); });
        }
    }
}

TEST_F(RegisterRecord, TheMaskSelectsTheFieldsOf15A)
{
    for (unsigned mask = 0; mask < 256; ++mask) {
        SCOPED_TRACE(hex_number(mask));
        at(0x15A) = 0xBFFF;
        const bool writes = mask == 0 || (mask & 3) != 0;
        expect_calls(WR_REG15A_FIELDS, fields(mask, 2, 5),
                     writes ? changes_register(0x15A, with_fields(0xBFFF, mask, 2, 5))
                            : Course{opens_to_write(), register_read(0x15A), closes()},
                     fields(mask, 2, 5));
        EXPECT_EQ(at(0x15A), with_fields(0xBFFF, mask, 2, 5));
        for (const uint16_t word : kSomeWords) {
            for (const unsigned value : {0U, 1U, 2U, 255U}) {
                at(0x15A) = word;
                ASSERT_EQ(run(WR_REG15A_FIELDS, fields(mask, value, 255 - value)), 0);
                ASSERT_EQ(at(0x15A), with_fields(word, mask, value, 255 - value));
            }
        }
    }
}

TEST_F(RegisterRecord, AMaskOfNoFieldOf15AStillReads)
{
    prove_registers({WR_REG15A_FIELDS,
                     fields(0xFC, 7, 7),
                     {{0x15A, 0xBFFF}},
                     {opens_to_write(), register_read(0x15A), closes()},
                     fields(0xFC, 7, 7)});
}

TEST_F(RegisterRecord, LiteralValuesOf15A)
{
    struct Row {
        unsigned mask;
        uint16_t after;
    };
    for (const Row& row : {Row{1, 0x40FF}, Row{2, 0xFFA0}, Row{0, 0x40A0}, Row{3, 0x40A0}}) {
        at(0x15A) = 0xFFFF;
        EXPECT_EQ(run(WR_REG15A_FIELDS, fields(row.mask, 2, 5)), 0);
        EXPECT_EQ(at(0x15A), row.after);
    }
}

TEST_F(RegisterRecord, EveryFieldValueOf15A)
{
    board.recording = false;
    for (const unsigned mask : {0U, 1U, 2U}) {
        for (unsigned value = 0; value < 256; ++value) {
            for (const uint16_t word : kSomeWords) {
                at(0x15A) = word;
                ASSERT_EQ(run(WR_REG15A_FIELDS, fields(mask, value, value ^ 0x5AU)), 0);
                ASSERT_EQ(at(0x15A), with_fields(word, mask, value, value ^ 0x5AU));
            }
        }
    }
}

// What the setter keeps of a and b; the report of b has the cleared bits 8 to 12 above it.
TEST_F(RegisterRecord, TheFieldsOf15AReadBackWithWhatTheSetterKeepsOfThem)
{
    at(0x15A) = 0xFFFF;
    for (unsigned value = 0; value < 256; ++value) {
        EXPECT_EQ(run(WR_REG15A_FIELDS, fields(0, value, value)), 0);
        expect_run(RD_REG15A_FIELDS, fields(0, 0xA5, 0xA5), 0, fields(0, value & 7, value & 7));
    }
}

// The pair 0x15C and 0x15E --------------------------------------------------------------------

Bytes pair(unsigned valid, uint32_t a, uint32_t b)
{
    return byte(valid) + byte(0xEE) + le16(a) + le16(b);
}

TEST_F(RegisterRecord, ThePairIsRegister15EAndThen15C)
{
    for_every_word([&](uint16_t word) {
        const auto other = static_cast<uint16_t>(~word);
        at(0x15C) = word;
        at(0x15E) = other;
        ASSERT_EQ(record_after(RD_REG15C_PAIR, pair(0xA5, 0xA5A5, 0xA5A5)),
                  pair(0xA5, other, word));
        at(0x15C) = 0x0F0F;
        at(0x15E) = 0x0F0F;
        ASSERT_EQ(run(WR_REG15C_PAIR, pair(0, other, word)), 0);
        ASSERT_EQ(at(0x15C), word);
        ASSERT_EQ(at(0x15E), other);
    });
    EXPECT_EQ(board.fpga.registers.size(), 2U);
}

TEST_F(RegisterRecord, TheMaskSelectsTheRegistersOfThePair)
{
    for (unsigned mask = 0; mask < 256; ++mask) {
        SCOPED_TRACE(hex_number(mask));
        Course course{opens_to_write()};
        Registers after{{0x15C, 0x0C0C}, {0x15E, 0x0E0E}};
        board.fpga.registers = after;
        if (mask == 0 || (mask & 1) != 0) {
            course.push_back(register_write(0x15E, 0x1234));
            after[0x15E] = 0x1234;
        }
        if (mask == 0 || (mask & 2) != 0) {
            course.push_back(register_write(0x15C, 0x5678));
            after[0x15C] = 0x5678;
        }
        course.push_back(closes());
        expect_calls(WR_REG15C_PAIR, pair(mask, 0x1234, 0x5678), course,
                     pair(mask, 0x1234, 0x5678));
        EXPECT_EQ(board.fpga.registers, after);
    }
}

TEST_F(RegisterRecord, AMaskOfOneRegisterOrOfNeitherTakesItsCourse)
{
    const Registers held{{0x15C, 0x0C0C}, {0x15E, 0x0E0E}};
    prove_registers({WR_REG15C_PAIR,
                     pair(2, 0x1234, 0x5678),
                     held,
                     {opens_to_write(), register_write(0x15C, 0x5678), closes()},
                     pair(2, 0x1234, 0x5678)});
    prove_registers(
        {WR_REG15C_PAIR, pair(0x10, 1, 2), held, {opens_to_write(), closes()}, pair(0x10, 1, 2)});
}

} // namespace
