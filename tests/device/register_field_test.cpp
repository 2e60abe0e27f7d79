// Commands of one bit and of one number of a register, and the courses of all register fields.
#include "device/commands/register_field.h"

#include "device/register_fixture.h"

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

struct BitRow {
    DeviceCommandCode get;
    DeviceCommandCode set; // 0: none
    uint32_t address;
    uint16_t mask;
    size_t size; // of the caller's flag
};

constexpr BitRow kBits[] = {
    {RD_REG11E_BIT0, WR_REG11E_BIT0, 0x11E, 0x0001, 2},
    {RD_REG158_BIT5, WR_REG158_BIT5, 0x158, 0x0020, 1},
    {RD_REG158_BIT6, WR_REG158_BIT6, 0x158, 0x0040, 1},
    {RD_REG158_BIT7, WR_REG158_BIT7, 0x158, 0x0080, 1},
    {RD_REG158_BIT15, WR_REG158_BIT15, 0x158, 0x8000, 1},
    {RD_REG158_BIT14, WR_REG158_BIT14, 0x158, 0x4000, 1},
    {RD_REG158_BIT8, 0, 0x158, 0x0100, 1},
    {RD_REG158_BIT4, WR_REG158_BIT4, 0x158, 0x0010, 1},
    {RD_REG158_BIT3, WR_REG158_BIT3, 0x158, 0x0008, 1},
    {RD_REG158_BIT2, WR_REG158_BIT2, 0x158, 0x0004, 1},
    {RD_REG158_BIT1, WR_REG158_BIT1, 0x158, 0x0002, 1},
    {RD_REG158_BIT0, WR_REG158_BIT0, 0x158, 0x0001, 1},
    {RD_REG158_BIT10, WR_REG158_BIT10, 0x158, 0x0400, 1},
    {RD_REG44_FLAG, WR_REG44_FLAG, 0x044, 0x0001, 2},
    {RD_REG1B4_BIT0, WR_REG1B4_BIT0, 0x1B4, 0x0001, 2},
};

uint16_t with_bit(uint16_t word, uint16_t mask, bool on)
{
    return static_cast<uint16_t>(on ? word | mask : word & ~mask);
}

struct NumberRow {
    DeviceCommandCode get;
    DeviceCommandCode set;
    uint32_t address;
    uint16_t keep;
    uint32_t limit; // the highest number that is not refused
};

constexpr NumberRow kNumbers[] = {
    {RD_REG132_VALUE, WR_REG132_VALUE, 0x132, 0xFF80, 127},
    {RD_REG168_VALUE, WR_REG168_VALUE, 0x168, 0xFF00, 255},
    {RD_REGFE_NIBBLE, WR_REGFE_NIBBLE, 0x0FE, 0xFFF0, 0xFFFF},
};

// Courses -----------------------------------------------------------------------------------

struct Report {
    DeviceCommandCode command;
    const char* record;
    uint32_t address;
    uint16_t held;
    const char* after;
};

constexpr Report kReports[] = {
    {RD_REG132_VALUE, "A5 A5", 0x132, 0xFFFF, "7F 00"},
    {RD_REG15A_FIELDS, "09 EE 09 09", 0x15A, 0xB67F, "09 EE 05 B3"},
    {RD_REG158_STATE, "A5", 0x158, 0x2000, "02"},
    {RD_REG168_MODE, "A5 A5", 0x168, 0xCFFF, "04 00"},
    {RD_REG168_MODE, "A5 A5", 0x168, 0x3000, "03 00"},
    {RD_REG168_SELECT, "02 00 07 00", 0x168, 0x0400, "02 00 01 00"},
    {RD_REG168_SELECT, "03 00 07 00", 0x168, 0xF7FF, "03 00 00 00"},
    {RD_REG168_VALUE, "A5 A5", 0x168, 0xFFFF, "FF 00"},
    {RD_REG16C_ENABLE, "A5", 0x16C, 0xFFFC, "01"},
    {RD_REGF4_FLAGS, "A5 A5 A5 A5 A5 A5 A5 A5", 0xF4, 0x5A81, "01 00 00 00 00 00 00 01"},
    {RD_REGFE_MODE, "A5 A5", 0xFE, 0xFFF8, "01 00"},
    {RD_REGFE_NIBBLE, "A5 A5", 0xFE, 0xFFFF, "0F 00"},
};

struct Change {
    DeviceCommandCode command;
    const char* record;
    uint32_t address;
    uint16_t held;
    uint16_t written; // also where it is held already
};

constexpr Change kChanges[] = {
    {WR_REG132_VALUE, "7F 00", 0x132, 0x0000, 0x007F},
    {WR_REG132_VALUE, "00 00", 0x132, 0xFFFF, 0xFF80},
    {WR_REG132_VALUE, "05 00", 0x132, 0xFF85, 0xFF85},
    {WR_REG158_STATE, "02", 0x158, 0x1081, 0x2081},
    {WR_REG158_STATE, "01", 0x158, 0xFFFF, 0xDFFF},
    {WR_REG158_STATE, "09", 0x158, 0xFFFF, 0xCFFF},
    {WR_REG158_STATE, "02", 0x158, 0x2000, 0x2000},
    {WR_REG15A_FIELDS, "00 EE 06 03", 0x15A, 0xFFFF, 0xC060},
    {WR_REG15A_FIELDS, "03 00 02 03", 0x15A, 0x4060, 0x4060},
    {WR_REG168_MODE, "01 00 00 00", 0x168, 0xFFFF, 0xDFFF},
    {WR_REG168_MODE, "02 00 00 00", 0x168, 0x0000, 0x2000},
    {WR_REG168_MODE, "03 00 00 00", 0x168, 0x3C55, 0x3C55},
    {WR_REG168_SELECT, "01 00 01 00", 0x168, 0x0000, 0x0200},
    {WR_REG168_SELECT, "00 00 02 00", 0x168, 0xFFFF, 0xFEFF},
    {WR_REG168_SELECT, "02 00 01 00", 0x168, 0x3C55, 0x3C55},
    {WR_REG168_VALUE, "FF 00", 0x168, 0x0000, 0x00FF},
    {WR_REG168_VALUE, "00 00", 0x168, 0xFFFF, 0xFF00},
    {WR_REG168_VALUE, "55 00", 0x168, 0x3C55, 0x3C55},
    {WR_REG16C_ENABLE, "01", 0x16C, 0xFFFF, 0xFFFC},
    {WR_REG16C_ENABLE, "00", 0x16C, 0x8000, 0x8003},
    {WR_REG16C_ENABLE, "00", 0x16C, 0x0003, 0x0003},
    {WR_REGFE_MODE, "01 00", 0xFE, 0x1234, 0x1238},
    {WR_REGFE_MODE, "02 00", 0xFE, 0x1234, 0x1230},
    {WR_REGFE_MODE, "03 00", 0xFE, 0x1234, 0x123F},
    {WR_REGFE_MODE, "01 00", 0xFE, 0x1238, 0x1238},
    {WR_REGFE_NIBBLE, "0F 00", 0xFE, 0x0000, 0x000F},
    {WR_REGFE_NIBBLE, "00 00", 0xFE, 0xFFFF, 0xFFF0},
    {WR_REGFE_NIBBLE, "08 00", 0xFE, 0x1238, 0x1238},
};

void add_proofs(std::vector<RegisterProof>& proofs, const BitRow& row)
{
    const auto& [get, set, address, mask, size] = row;
    const auto others = static_cast<uint16_t>(~mask);
    for (const bool on : {false, true}) {
        const Bytes flag = number(size, on ? 1 : 0);
        const uint16_t held = with_bit(others, mask, on);
        const uint16_t written = with_bit(on ? 0x0000 : 0xFFFF, mask, on);
        proofs.push_back(
            {get, untouched(size), {{address, on ? mask : others}}, reads_register(address), flag});
        if (set != 0) {
            proofs.push_back({set,
                              flag,
                              {{address, on ? uint16_t{0} : uint16_t{0xFFFF}}},
                              changes_register(address, written),
                              flag});
            proofs.push_back({set, flag, {{address, held}}, changes_register(address, held), flag});
        }
    }
}

std::vector<RegisterProof> proofs_get()
{
    std::vector<RegisterProof> proofs = {
        {RD_REG110_BYTES,
         untouched(4),
         {{0x110, 0x1234}, {0x112, 0x5678}},
         Course{opens_to_read()} + registers_read(0x110, 2) + Course{closes()},
         hex("12 34 56 78")},
        {WR_REG110_BYTES,
         hex("12 34 56 78"),
         {{0x110, 1}, {0x112, 2}, {0x114, 0x8001}},
         {opens_to_write(), register_write(0x110, 0x1234), register_write(0x112, 0x5678),
          register_read(0x114), register_write(0x114, kHigh | 0x8005), closes()},
         hex("12 34 56 78")},
        {RD_REG15C_PAIR,
         hex("09 EE 09 00 09 00"),
         {{0x15C, 0x1234}, {0x15E, 0x5678}},
         Course{opens_to_read()} + registers_read(0x15C, 2) + Course{closes()},
         hex("09 EE 78 56 34 12")},
        {WR_REG15C_PAIR,
         hex("00 EE 34 12 78 56"),
         {{0x15C, 0x0C0C}, {0x15E, 0x0E0E}},
         {opens_to_write(), register_write(0x15E, 0x1234), register_write(0x15C, 0x5678), closes()},
         hex("00 EE 34 12 78 56")},
    };
    for (const BitRow& row : kBits) {
        add_proofs(proofs, row);
    }
    for (const auto& [command, record, address, held, after] : kReports) {
        proofs.push_back(
            {command, hex(record), {{address, held}}, reads_register(address), hex(after)});
    }
    for (const auto& [command, record, address, held, written] : kChanges) {
        proofs.push_back({command,
                          hex(record),
                          {{address, held}},
                          changes_register(address, written),
                          hex(record)});
    }
    return proofs;
}

TEST_F(RegisterFields, EachCommandTakesItsCourse)
{
    for (const RegisterProof& proof : proofs_get()) {
        prove_registers(proof);
    }
}

// By its name, RD_REG158_BIT5; blocks have files of their own.
bool is_field(const std::string& name)
{
    constexpr size_t kDigits = 6; // behind RD_REG
    const size_t end = name.find_first_not_of("0123456789ABCDEF", kDigits);
    return name.compare(2, 4, "_REG") == 0 && end != std::string::npos && end > kDigits &&
           name[end] == '_' && name.compare(end, 6, "_BLOCK") != 0;
}

TEST_F(RegisterFields, EachCommandIsProven)
{
    std::set<uint32_t> commands;
    for (const CommandFacts& command : commandFacts_get()) {
        if (is_field(command.name)) {
            commands.insert(command.number);
        }
    }
    std::set<uint32_t> proven;
    for (const RegisterProof& proof : proofs_get()) {
        proven.insert(proof.command);
    }
    EXPECT_EQ(difference_of(commands, proven), "");
}

// One bit -----------------------------------------------------------------------------------

TEST_F(RegisterFields, ABitIsReportedAsOneOrZero)
{
    for (const BitRow& row : kBits) {
        read_every_value(row.get, row.address, untouched(row.size), [&](uint16_t word) {
            return number(row.size, (word & row.mask) != 0 ? 1 : 0);
        });
    }
}

TEST_F(RegisterFields, OneSetsABitAndOthersClearItAndTheRestIsKept)
{
    for (const BitRow& row : kBits) {
        for (const uint32_t flag : {0U, 1U, 2U, 0xFFFFU}) {
            if (row.set != 0) {
                write_over_every_value(
                    row.set, row.address, number(row.size, flag),
                    [&](uint16_t word) { return with_bit(word, row.mask, flag == 1); });
            }
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
                ASSERT_EQ(run(row.set, number(row.size, flag)), 0);
                const bool on = (row.size == 1 ? flag % 256 : flag) == 1;
                ASSERT_EQ(at(row.address), with_bit(word, row.mask, on))
                    << command_name(row.set) << " " << hex_number(flag);
            }
        }
    }
}

TEST_F(RegisterFields, NoSixteenBitFlagButOneSetsABit)
{
    for (const BitRow& row : kBits) {
        if (row.size == 2) {
            for_every_word([&](uint16_t flag) {
                at(row.address) = 0xA5C3;
                ASSERT_EQ(run(row.set, le16(flag)), 0);
                ASSERT_EQ(at(row.address), with_bit(0xA5C3, row.mask, flag == 1))
                    << command_name(row.set) << " " << hex_number(flag);
            });
        }
    }
}

TEST_F(RegisterFields, ABitReadsBackAsWritten)
{
    for (const BitRow& row : kBits) {
        for (const uint32_t flag : {1U, 0U, 1U, 2U}) {
            if (row.set != 0) {
                EXPECT_EQ(run(row.set, number(row.size, flag)), 0);
                expect_run(row.get, untouched(row.size), 0, number(row.size, flag == 1 ? 1 : 0));
            }
        }
    }
}

// The setter of bit 8 -----------------------------------------------------------------------

TEST_F(RegisterFields, TheSetterOfBit8HasNoCommand)
{
    at(0x158) = 0xFEFF;
    expect_run(RD_REG158_BIT8 + 1, byte(1), -1, byte(1));
    EXPECT_EQ(board.calls, Trace{});
    EXPECT_EQ(at(0x158), 0xFEFF);
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

TEST_F(RegisterFields, ANumberIsTheLowBitsOfItsRegister)
{
    for (const NumberRow& row : kNumbers) {
        read_every_value(row.get, row.address, untouched(2),
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

TEST_F(RegisterFields, ANumberAboveItsLimitIsRefusedAndTouchesNothing)
{
    for (const NumberRow& row : kNumbers) {
        at(row.address) = 0xBEEF;
        for (const uint32_t value : {row.limit + 1, 0x0101U}) {
            if (value > row.limit && value <= 0xFFFF) {
                expect_refused(row.set, le16(value));
                EXPECT_EQ(at(row.address), 0xBEEF);
            }
        }
        refuse_all_but(row.set, le16, [&](uint16_t value) { return value <= row.limit; });
    }
}

TEST_F(RegisterFields, TheNibbleTakesTheLowBitsOfEveryNumber)
{
    for (const uint16_t word : {uint16_t{0}, uint16_t{0xFFFF}, uint16_t{0xA5C3}}) {
        uint16_t& held = at(0x0FE);
        for_every_word([&](uint16_t value) {
            held = word;
            ASSERT_EQ(run(WR_REGFE_NIBBLE, le16(value)), 0);
            ASSERT_EQ(held, (word & 0xFFF0) | value % 16);
        });
    }
}

TEST_F(RegisterFields, ANumberReadsBackAsWritten)
{
    for (const NumberRow& row : kNumbers) {
        at(row.address) = 0xFFFF;
        for (uint32_t value = 0; value <= 0xFFFFU - row.keep; ++value) {
            EXPECT_EQ(run(row.set, le16(value)), 0);
            expect_run(row.get, untouched(2), 0, le16(value));
        }
    }
}

} // namespace
