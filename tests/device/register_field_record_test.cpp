// Commands of several fields or registers in one record.
#include "device/register_test.h"

namespace
{

class RegisterRecord : public RegisterTest
{
};

constexpr uint16_t kSomeWords[] = {0x0000, 0xFFFF, 0xA5C3, 0x5A3C};

// The bytes of 0x110 and 0x112 ---------------------------------------------------------------

TEST_F(RegisterRecord, TheBytesOf110AreItsHighAndLowByteThenThoseOf112)
{
    for_every_word([&](uint16_t word) {
        const auto other = static_cast<uint16_t>(~word);
        at(0x110) = word;
        at(0x112) = other;
        put(hex("A5 A5 A5 A5"));
        ASSERT_EQ(run(0x0062), 0);
        ASSERT_EQ(get(), big16(word) + big16(other));
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
        put(big16(word) + big16(other));
        ASSERT_EQ(run(0x0063), 0);
        ASSERT_EQ(at(0x110), word);
        ASSERT_EQ(at(0x112), other);
        ASSERT_EQ(at(0x114), word | 0x0004);
    });
    EXPECT_EQ(board.fpga.registers.size(), 3U);
}

TEST_F(RegisterRecord, WhatWasWrittenOf110StaysWhenALaterStepFails)
{
    const Bytes record = hex("11 22 33 44");
    const Registers before{{0x110, 1}, {0x112, 2}, {0x114, 3}};
    expect_left(0x0063, record, before, 2, -4, before);
    expect_left(0x0063, record, before, 3, -4, {{0x110, 0x1122}, {0x112, 2}, {0x114, 3}});
    expect_left(0x0063, record, before, 4, -2, {{0x110, 0x1122}, {0x112, 0x3344}, {0x114, 3}});
    expect_left(0x0063, record, before, 5, -4, {{0x110, 0x1122}, {0x112, 0x3344}, {0x114, 3}});
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
    read_every_value(0x0088, 0x15A, fields(0xA5, 0xA5, 0xA5), [](uint16_t word) {
        return fields(0xA5, word / 0x2000U, word / 0x20U % 0x100U);
    });
}

TEST_F(RegisterRecord, AFieldOf15AClearsTheRestOfItsByte)
{
    for (const unsigned mask : {0U, 1U, 2U, 3U, 4U}) {
        for (const auto& [a, b] : {std::pair{0U, 0U}, {7U, 0xFFU}, {0xFFU, 7U}, {0x0DU, 0xAAU}}) {
            write_over_every_value(
                0x0089, 0x15A, fields(mask, a, b),
                [mask, a = a, b = b](uint16_t word) { return with_fields(word, mask, a, b); });
        }
    }
}

TEST_F(RegisterRecord, TheMaskSelectsTheFieldsOf15A)
{
    for (unsigned mask = 0; mask < 256; ++mask) {
        SCOPED_TRACE(mask);
        at(0x15A) = 0xBFFF;
        const bool writes = mask == 0 || (mask & 3) != 0;
        expect_course(0x0089, put(fields(mask, 2, 5)),
                      writes ? changes_register(0x15A, with_fields(0xBFFF, mask, 2, 5))
                             : Course{opens_to_write(), register_read(0x15A), closes()});
        EXPECT_EQ(at(0x15A), with_fields(0xBFFF, mask, 2, 5));
        for (const uint16_t word : kSomeWords) {
            for (const unsigned value : {0U, 1U, 2U, 255U}) {
                at(0x15A) = word;
                put(fields(mask, value, 255 - value));
                ASSERT_EQ(run(0x0089), 0);
                ASSERT_EQ(at(0x15A), with_fields(word, mask, value, 255 - value));
            }
        }
    }
}

TEST_F(RegisterRecord, AMaskOfNoFieldOf15AStillReads)
{
    prove(0x0089, [this] { return put(fields(0xFC, 7, 7)); },
          {opens_to_write(), register_read(0x15A), closes()});
}

TEST_F(RegisterRecord, LiteralValuesOf15A)
{
    struct Row {
        unsigned mask;
        uint16_t after;
    };
    for (const Row& row : {Row{1, 0x40FF}, Row{2, 0xFFA0}, Row{0, 0x40A0}, Row{3, 0x40A0}}) {
        at(0x15A) = 0xFFFF;
        put(fields(row.mask, 2, 5));
        EXPECT_EQ(run(0x0089), 0);
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
                put(fields(mask, value, value ^ 0x5AU));
                ASSERT_EQ(run(0x0089), 0);
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
        put(fields(0, value, value));
        EXPECT_EQ(run(0x0089), 0);
        put(fields(0, 0xA5, 0xA5));
        EXPECT_EQ(run(0x0088), 0);
        EXPECT_EQ(get(), fields(0, value & 7, value & 7));
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
        put(pair(0xA5, 0xA5A5, 0xA5A5));
        ASSERT_EQ(run(0x008A), 0);
        ASSERT_EQ(get(), pair(0xA5, other, word));
        at(0x15C) = 0x0F0F;
        at(0x15E) = 0x0F0F;
        put(pair(0, other, word));
        ASSERT_EQ(run(0x008B), 0);
        ASSERT_EQ(at(0x15C), word);
        ASSERT_EQ(at(0x15E), other);
    });
    EXPECT_EQ(board.fpga.registers.size(), 2U);
}

TEST_F(RegisterRecord, TheMaskSelectsTheRegistersOfThePair)
{
    for (unsigned mask = 0; mask < 256; ++mask) {
        SCOPED_TRACE(mask);
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
        expect_course(0x008B, put(pair(mask, 0x1234, 0x5678)), course);
        EXPECT_EQ(board.fpga.registers, after);
    }
}

TEST_F(RegisterRecord, AMaskOfNeitherRegisterStillOpens)
{
    prove(0x008B, [this] { return put(pair(0x10, 1, 2)); }, {opens_to_write(), closes()});
}

TEST_F(RegisterRecord, WhatWasWrittenOfThePairStaysWhenTheSecondWriteFails)
{
    const Registers before{{0x15C, 0x0C0C}, {0x15E, 0x0E0E}};
    expect_left(0x008B, pair(0, 0x1234, 0x5678), before, 2, -4, before);
    expect_left(0x008B, pair(0, 0x1234, 0x5678), before, 3, -4, {{0x15C, 0x0C0C}, {0x15E, 0x1234}});
    expect_left(0x008B, pair(2, 0x1234, 0x5678), before, 2, -4, before);
}

// A bit for each port -----------------------------------------------------------------------

struct PortRow {
    uint32_t port;
    uint32_t address;
    uint16_t bit;
};

constexpr PortRow kPorts[] = {
    {1, 0x5E, 0x0002},  {2, 0x5E, 0x0004},  {3, 0x5E, 0x0008},  {4, 0x5E, 0x0010},
    {5, 0x5E, 0x0020},  {6, 0x5E, 0x0040},  {7, 0x5E, 0x0080},  {8, 0x5E, 0x0100},
    {9, 0x5E, 0x0200},  {10, 0x5E, 0x0400}, {11, 0x5E, 0x0800}, {12, 0x5E, 0x1000},
    {13, 0x5E, 0x2000}, {14, 0x5E, 0x4000}, {15, 0x5E, 0x8000}, {16, 0x5C, 0x0001},
    {17, 0x5C, 0x0002}, {18, 0x5C, 0x0004}, {19, 0x5C, 0x0008}, {20, 0x5C, 0x0010},
    {21, 0x5C, 0x0020}, {22, 0x5C, 0x0040}, {23, 0x5C, 0x0080}, {24, 0x5C, 0x0100},
    {25, 0x5C, 0x0200}, {26, 0x5C, 0x0400}, {27, 0x5C, 0x0800}, {28, 0x5C, 0x1000},
    {29, 0x5C, 0x2000},
};

Bytes port(uint32_t port)
{
    return le16(5) + le16(6) + le16(port);
}

TEST_F(RegisterRecord, APortsBitIsSetAndTheOthersKept)
{
    for (const PortRow& row : kPorts) {
        write_over_every_value(0x00A4, row.address, port(row.port), [&](uint16_t word) {
            return static_cast<uint16_t>(word | row.bit);
        });
    }
}

TEST_F(RegisterRecord, APortsBitIsClearedAndTheOthersKept)
{
    for (const PortRow& row : kPorts) {
        write_over_every_value(0x00A5, row.address, port(row.port), [&](uint16_t word) {
            return static_cast<uint16_t>(word & ~row.bit);
        });
    }
}

TEST_F(RegisterRecord, APortOutside1To29FailsAfterTheOpen)
{
    const Trace once{"open /dev/fpga O_RDWR|O_NONBLOCK", "close /dev/fpga", "usleep 1"};
    Trace twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    for (const DeviceCommandCode command : {0x00A4U, 0x00A5U}) {
        for (const uint32_t value : {0U, 30U, 31U, 32U, 0x0101U, 0xFFFFU}) {
            board.restart();
            put(port(value));
            EXPECT_EQ(run(command), -2);
            EXPECT_EQ(board.calls, twice);
        }
        for_every_word([&](uint16_t value) {
            put(port(value));
            ASSERT_EQ(run(command), value >= 1 && value <= 29 ? 0 : -2);
        });
        board.fpga_present = false;
        put(port(0));
        EXPECT_EQ(run(command), -1);
        board.fpga_present = true;
    }
}

// Any register ------------------------------------------------------------------------------

Bytes value_of(uint32_t address, uint32_t value)
{
    return le32(address) + le16(value);
}

TEST_F(RegisterRecord, AnyRegisterIsReadAndWrittenWhole)
{
    for (const uint32_t address : {0U, 1U, 0x158U, 0xFFFFU, 0x12345678U, 0xFFFFFFFFU}) {
        read_every_value(0x0122, address, value_of(address, 0xA5A5),
                         [=](uint16_t word) { return value_of(address, word); });
        uint16_t& held = at(address);
        for_every_word([&](uint16_t word) {
            held = static_cast<uint16_t>(~word);
            put(value_of(address, word));
            ASSERT_EQ(run(0x0123), 0);
            ASSERT_EQ(held, word);
        });
        EXPECT_EQ(board.fpga.registers.size(), 1U);
    }
}

TEST_F(RegisterRecord, EachCommandTakesItsCourse)
{
    prove_all(record_proofs());
}

} // namespace

CommandProofs record_proofs()
{
    CommandProofs proofs = {
        {0x0062,
         hex("A5 A5 A5 A5"),
         {{0x110, 0x1234}, {0x112, 0x5678}},
         {opens_to_read(), register_read(0x110), register_read(0x112), closes()},
         hex("12 34 56 78")},
        {0x0063,
         hex("12 34 56 78"),
         {{0x114, 0x8001}},
         {opens_to_write(), register_write(0x110, 0x1234), register_write(0x112, 0x5678),
          register_read(0x114), register_write(0x114, 0xCAFE8005), closes()},
         hex("12 34 56 78")},
        {0x0088, fields(9, 9, 9), {{0x15A, 0xB67F}}, reads_register(0x15A), fields(9, 5, 0xB3)},
        {0x0089,
         fields(0, 6, 3),
         {{0x15A, 0xFFFF}},
         changes_register(0x15A, 0xC060),
         fields(0, 6, 3)},
        {0x008A,
         pair(9, 9, 9),
         {{0x15C, 0x1234}, {0x15E, 0x5678}},
         {opens_to_read(), register_read(0x15C), register_read(0x15E), closes()},
         pair(9, 0x5678, 0x1234)},
        {0x008B,
         pair(0, 0x1234, 0x5678),
         {},
         {opens_to_write(), register_write(0x15E, 0x1234), register_write(0x15C, 0x5678), closes()},
         pair(0, 0x1234, 0x5678)},
        {0x0122,
         value_of(0x89ABCDEF, 9),
         {{0x89ABCDEF, 0x4321}},
         reads_register(0x89ABCDEF),
         value_of(0x89ABCDEF, 0x4321)},
        {0x0123,
         value_of(0x89ABCDEF, 0x4321),
         {},
         {opens_to_write(), register_write(0x89ABCDEF, 0x4321, -2), closes()},
         value_of(0x89ABCDEF, 0x4321)},
    };
    for (const PortRow& row : kPorts) {
        const auto others = static_cast<uint16_t>(~row.bit);
        proofs.push_back({0x00A4,
                          port(row.port),
                          {{row.address, 0x0000}},
                          changes_register(row.address, row.bit, -3),
                          port(row.port)});
        proofs.push_back({0x00A5,
                          port(row.port),
                          {{row.address, 0xFFFF}},
                          changes_register(row.address, others, -3),
                          port(row.port)});
    }
    return proofs;
}
