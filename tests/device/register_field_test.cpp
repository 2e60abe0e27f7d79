// Commands of one bit and of one number of a register.
#include "device/commands/register_field.h"

#include "device/register_test.h"

namespace
{

class RegisterFields : public RegisterTest
{
};

// A number of the caller's, as long as the command takes it.
Bytes number(size_t size, uint32_t value)
{
    return le32(value).substr(0, size);
}

// One bit -----------------------------------------------------------------------------------

struct BitRow {
    DeviceCommandCode get;
    DeviceCommandCode set; // 0: none
    uint32_t address;
    uint16_t mask;
    size_t size; // of the caller's flag
};

constexpr BitRow kBits[] = {
    {0x0092, 0x0093, 0x11E, 0x0001, 2}, {0x0090, 0x0091, 0x158, 0x0020, 1},
    {0x0072, 0x0073, 0x158, 0x0040, 1}, {0x0074, 0x0075, 0x158, 0x0080, 1},
    {0x0076, 0x0077, 0x158, 0x8000, 1}, {0x0078, 0x0079, 0x158, 0x4000, 1},
    {0x007C, 0x0000, 0x158, 0x0100, 1}, {0x007E, 0x007F, 0x158, 0x0010, 1},
    {0x0080, 0x0081, 0x158, 0x0008, 1}, {0x0082, 0x0083, 0x158, 0x0004, 1},
    {0x0084, 0x0085, 0x158, 0x0002, 1}, {0x0086, 0x0087, 0x158, 0x0001, 1},
    {0x00AA, 0x00AB, 0x158, 0x0400, 1}, {0x0606, 0x0607, 0x1B4, 0x0001, 2},
};

uint16_t with_bit(uint16_t word, uint16_t mask, bool on)
{
    return static_cast<uint16_t>(on ? word | mask : word & ~mask);
}

void add_proofs(CommandProofs& proofs, const BitRow& row)
{
    const auto others = static_cast<uint16_t>(~row.mask);
    const Bytes fill(row.size, '\xA5');
    const Bytes off = number(row.size, 0);
    const Bytes on = number(row.size, 1);
    proofs.push_back({row.get, fill, {{row.address, row.mask}}, reads_register(row.address), on});
    proofs.push_back({row.get, fill, {{row.address, others}}, reads_register(row.address), off});
    if (row.set != 0) {
        proofs.push_back(
            {row.set, on, {{row.address, 0x0000}}, changes_register(row.address, row.mask), on});
        proofs.push_back(
            {row.set, off, {{row.address, 0xFFFF}}, changes_register(row.address, others), off});
    }
}

TEST_F(RegisterFields, ABitIsReportedAsOneOrZero)
{
    for (const BitRow& row : kBits) {
        read_every_value(row.get, row.address, Bytes(row.size, '\xA5'), [&](uint16_t word) {
            return number(row.size, (word & row.mask) != 0 ? 1 : 0);
        });
    }
}

TEST_F(RegisterFields, OneSetsABitAndKeepsTheOthers)
{
    for (const BitRow& row : kBits) {
        if (row.set != 0) {
            write_over_every_value(row.set, row.address, number(row.size, 1),
                                   [&](uint16_t word) { return with_bit(word, row.mask, true); });
        }
    }
}

TEST_F(RegisterFields, ZeroAndTwoClearABitAndKeepTheOthers)
{
    for (const BitRow& row : kBits) {
        for (const uint32_t flag : {0U, 2U}) {
            if (row.set != 0) {
                write_over_every_value(
                    row.set, row.address, number(row.size, flag),
                    [&](uint16_t word) { return with_bit(word, row.mask, false); });
            }
        }
    }
}

TEST_F(RegisterFields, TheHighestFlagClearsABitAndKeepsTheOthers)
{
    for (const BitRow& row : kBits) {
        if (row.set != 0) {
            write_over_every_value(row.set, row.address, Bytes(row.size, '\xFF'),
                                   [&](uint16_t word) { return with_bit(word, row.mask, false); });
        }
    }
}

// All flags of one byte, and what of 16-bit flags has a 1 in one of its bytes.
TEST_F(RegisterFields, NoFlagButOneSetsABit)
{
    for (const BitRow& row : kBits) {
        for (uint32_t flag = 0; flag <= 0x0301 && row.set != 0; ++flag) {
            for (const uint16_t word : {uint16_t{0}, uint16_t{0xFFFF}, uint16_t{0xA5C3}}) {
                at(row.address) = word;
                put(number(row.size, flag));
                ASSERT_EQ(run(row.set), 0);
                const bool on = (row.size == 1 ? flag % 256 : flag) == 1;
                ASSERT_EQ(at(row.address), with_bit(word, row.mask, on)) << row.set << " " << flag;
            }
        }
    }
}

TEST_F(RegisterFields, NoSixteenBitFlagButOneSetsABit)
{
    for (const BitRow& row : kBits) {
        if (row.size == 2 && row.set != 0) {
            for_every_word([&](uint16_t flag) {
                at(row.address) = 0xA5C3;
                put(number(row.size, flag));
                ASSERT_EQ(run(row.set), 0);
                ASSERT_EQ(at(row.address), with_bit(0xA5C3, row.mask, flag == 1)) << flag;
            });
        }
    }
}

TEST_F(RegisterFields, WhatARegisterHoldsAlreadyIsWrittenAgain)
{
    for (const BitRow& row : kBits) {
        for (const unsigned flag : {0U, 1U}) {
            if (row.set != 0) {
                const uint16_t held = with_bit(0xA5C3, row.mask, flag == 1);
                at(row.address) = held;
                expect_course(row.set, put(number(row.size, flag)),
                              changes_register(row.address, held));
            }
        }
    }
    at(0x132) = 0xFF85;
    expect_course(WR_REG132_VALUE, put(le16(5)), changes_register(0x132, 0xFF85));
    at(0x168) = 0x3C55;
    expect_course(WR_REG168_VALUE, put(le16(0x55)), changes_register(0x168, 0x3C55));
    expect_course(WR_REG168_SELECT, put(le16(2) + le16(1)), changes_register(0x168, 0x3C55));
    expect_course(WR_REG168_MODE, put(le16(3) + le16(0)), changes_register(0x168, 0x3C55));
    at(0xFE) = 0x1238;
    expect_course(WR_REGFE_NIBBLE, put(le16(8)), changes_register(0xFE, 0x1238));
    expect_course(WR_REGFE_MODE, put(le16(1)), changes_register(0xFE, 0x1238));
    at(0x158) = 0x2000;
    expect_course(WR_REG158_STATE, put(byte(2)), changes_register(0x158, 0x2000));
    at(0x16C) = 0x0003;
    expect_course(WR_REG16C_ENABLE, put(byte(0)), changes_register(0x16C, 0x0003));
    at(0x15A) = 0x4060;
    expect_course(WR_REG15A_FIELDS, put(byte(3) + byte(0) + byte(2) + byte(3)),
                  changes_register(0x15A, 0x4060));
    at(0x5E) = 0x0008;
    expect_course(WR_PORT_BIT_SET, put(le16(0) + le16(0) + le16(3)),
                  changes_register(0x5E, 0x0008, -3));
}

TEST_F(RegisterFields, ABlockThatIsSelectedAlreadyIsSelectedAgain)
{
    at(0x16A) = 0x0F03;
    at(0x166) = 0x0003;
    const Bytes record = le16(3) + byte(3) + byte(1) + byte(1) + byte(0) + Bytes(6, '\0');
    expect_course(WR_REG16A_BLOCK, put(record),
                  {opens_to_write(), register_read(0x16A), register_write(0x16A, kHigh | 0x0F03),
                   register_read(0x166), register_write(0x166, kHigh | 0x0003), closes()});
    expect_course(RD_REG16A_BLOCK, put(record),
                  {opens_to_write(), register_read(0x16A), register_write(0x16A, kHigh | 0x0F03),
                   register_read(0x160), register_read(0x162), register_read(0x164),
                   register_read(0x166), closes()});
}

TEST_F(RegisterFields, ABitReadsBackAsWritten)
{
    for (const BitRow& row : kBits) {
        for (const uint32_t flag : {1U, 0U, 1U, 2U}) {
            if (row.set != 0) {
                put(number(row.size, flag));
                EXPECT_EQ(run(row.set), 0);
                put(Bytes(row.size, '\xA5'));
                EXPECT_EQ(run(row.get), 0);
                EXPECT_EQ(get(), number(row.size, flag == 1 ? 1 : 0));
            }
        }
    }
}

// The setter of bit 8 ------------------------------------------------------------------------

TEST_F(RegisterFields, TheSetterOfBit8HasNoCommand)
{
    at(0x158) = 0xFEFF;
    put(byte(1));
    EXPECT_EQ(run(0x007D), -1);
    EXPECT_EQ(board.calls, Trace{});
    EXPECT_EQ(at(0x158), 0xFEFF);
    EXPECT_EQ(get(), byte(1));
}

// No command: only this test calls it.
int32_t bit8_write(uint8_t flag)
{
    return write_reg158_bit8.handler(&flag, write_reg158_bit8.member);
}

TEST_F(RegisterFields, TheSetterOfBit8SetsForOneAndClearsForOthers)
{
    for (const uint8_t flag : {uint8_t{0}, uint8_t{1}, uint8_t{2}, uint8_t{255}}) {
        uint16_t& held = at(0x158);
        for_every_word([&](uint16_t word) {
            held = word;
            ASSERT_EQ(bit8_write(flag), 0);
            ASSERT_EQ(held, flag == 1 ? word | 0x0100 : word & 0xFEFF);
        });
    }
}

TEST_F(RegisterFields, TheSetterOfBit8FailsAsTheOthers)
{
    constexpr int32_t kFailures[] = {-1, -2, -4, 0};
    const Course course = changes_register(0x158, 0x1101);
    for (size_t failing = 0; failing < course.size(); ++failing) {
        at(0x158) = 0x1001;
        board.restart();
        board.fail_call(failing + 1);
        EXPECT_EQ(bit8_write(1), kFailures[failing]);
        EXPECT_EQ(board.calls[failing], course[failing].call + " -> failed");
        EXPECT_EQ(board.call_count(), failing == 0 ? 1 : std::min<size_t>(failing + 2, 4));
        EXPECT_EQ(board.open_descriptors(), 0U);
        EXPECT_EQ(at(0x158), failing == 3 ? 0x1101 : 0x1001);
    }
}

// A number ----------------------------------------------------------------------------------

struct NumberRow {
    DeviceCommandCode get;
    DeviceCommandCode set;
    uint32_t address;
    uint16_t keep;
    uint32_t limit; // the highest number that is not refused
};

constexpr NumberRow kNumbers[] = {
    {0x0058, 0x0059, 0x132, 0xFF80, 127},
    {0x006E, 0x006F, 0x168, 0xFF00, 255},
    {0x009A, 0x009B, 0x0FE, 0xFFF0, 0xFFFF},
};

void add_proofs(CommandProofs& proofs, const NumberRow& row)
{
    const auto field = static_cast<uint16_t>(~row.keep);
    proofs.push_back(
        {row.get, le16(0xA5A5), {{row.address, 0xFFFF}}, reads_register(row.address), le16(field)});
    proofs.push_back({row.set,
                      le16(field),
                      {{row.address, 0x0000}},
                      changes_register(row.address, field),
                      le16(field)});
    proofs.push_back({row.set,
                      le16(0),
                      {{row.address, 0xFFFF}},
                      changes_register(row.address, row.keep),
                      le16(0)});
}

TEST_F(RegisterFields, ANumberIsTheLowBitsOfItsRegister)
{
    for (const NumberRow& row : kNumbers) {
        read_every_value(row.get, row.address, le16(0xA5A5),
                         [&](uint16_t word) { return le16(word % (0x10000U - row.keep)); });
    }
}

TEST_F(RegisterFields, ANumberReplacesTheLowBitsOfItsRegister)
{
    for (const NumberRow& row : kNumbers) {
        const uint32_t field = 0xFFFFU - row.keep;
        for (const uint32_t value : {0U, 1U, 2U, 5U, field - 1, field}) {
            write_over_every_value(row.set, row.address, le16(value), [&](uint16_t word) {
                return static_cast<uint16_t>((word & row.keep) + value);
            });
        }
    }
}

TEST_F(RegisterFields, ANumberAboveItsLimitIsRefused)
{
    expect_refused(0x0059, put(le16(128)));
    expect_refused(0x006F, put(le16(256)));
    for (const NumberRow& row : kNumbers) {
        at(row.address) = 0x1234;
        refuse_all_but(row.set, le16, [&](uint16_t value) { return value <= row.limit; });
    }
}

TEST_F(RegisterFields, ARefusedNumberTouchesNothing)
{
    for (const auto& [command, address, value] :
         {std::tuple{0x0059U, 0x132U, 128U}, {0x006FU, 0x168U, 256U}, {0x006FU, 0x168U, 0x0101U}}) {
        at(address) = 0xBEEF;
        expect_refused(command, put(le16(value)));
        EXPECT_EQ(at(address), 0xBEEF);
        EXPECT_EQ(get(), le16(value));
    }
}

TEST_F(RegisterFields, TheNibbleTakesTheLowBitsOfEveryNumber)
{
    for (const uint16_t word : {uint16_t{0}, uint16_t{0xFFFF}, uint16_t{0xA5C3}}) {
        uint16_t& held = at(0x0FE);
        for_every_word([&](uint16_t value) {
            held = word;
            put(le16(value));
            ASSERT_EQ(run(0x009B), 0);
            ASSERT_EQ(held, (word & 0xFFF0) | value % 16);
        });
    }
}

TEST_F(RegisterFields, ANumberReadsBackAsWritten)
{
    for (const NumberRow& row : kNumbers) {
        at(row.address) = 0xFFFF;
        for (uint32_t value = 0; value <= 0xFFFFU - row.keep; ++value) {
            put(le16(value));
            EXPECT_EQ(run(row.set), 0);
            put(le16(0xA5A5));
            EXPECT_EQ(run(row.get), 0);
            EXPECT_EQ(get(), le16(value));
        }
    }
}

TEST_F(RegisterFields, EachCommandTakesItsCourse)
{
    prove_all(field_proofs());
}

} // namespace

CommandProofs field_proofs()
{
    CommandProofs proofs;
    for (const BitRow& row : kBits) {
        add_proofs(proofs, row);
    }
    for (const NumberRow& row : kNumbers) {
        add_proofs(proofs, row);
    }
    return proofs;
}
