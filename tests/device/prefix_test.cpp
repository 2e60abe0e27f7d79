// The two address and prefix sets.
#include "device/prefix_masks.h"
#include "device/register_map_test.h"

namespace
{

struct Set {
    DeviceCommandCode write;
    unsigned number;
    uint32_t address[2]; // registers
    uint32_t mask[2];
    uint16_t commit;
    size_t offset; // of its half in the record
};

constexpr Set kSets[] = {
    {WR_PREFIX0, 0, {0x0100, 0x0102}, {0x0104, 0x0106}, 0x0001, 0},
    {WR_PREFIX1, 1, {0x0108, 0x010A}, {0x010C, 0x010E}, 0x0002, 8},
};

const Course kRead0 = Course{opens_to_read()} + registers_read(0x0100, 4) + Course{closes()};
const Course kRead1 = Course{opens_to_read()} + registers_read(0x0108, 4) + Course{closes()};
const Bytes kCallers(16, '\x5A');

class Prefix : public RegisterMapTest
{
  protected:
    void SetUp() override { device_put(); }

    // Both sets, their neighbours and the commit register.
    void device_put()
    {
        board.fpga.registers = {{0x00FE, 0x1111}, {0x0100, 0x0A0B}, {0x0102, 0x0C0D},
                                {0x0104, 0xFFFF}, {0x0106, 0xF000}, {0x0108, 0xAC10},
                                {0x010A, 0x2122}, {0x010C, 0xFF00}, {0x010E, 0xFF00},
                                {0x0110, 0x2222}, {0x0112, 0x3333}, {0x0114, 0x8A50}};
    }

    static Bytes record(const Set& set, uint32_t valid, const Bytes& address, uint32_t length)
    {
        Bytes record = kCallers;
        bytes_put(record, set.offset, byte(valid));
        bytes_put(record, set.offset + 2, address + le16(length));
        return record;
    }

    // The course of a write of C0 A8 07 FE with the prefix 19.
    Course write_course(const Set& set, uint32_t valid)
    {
        const bool address = valid == 0 || valid % 2 == 1;
        const bool mask = valid == 0 || valid / 2 % 2 == 1;
        Course course = Course{opens_to_write(), opens_to_read()} +
                        registers_read(set.address[0], 4) + Course{closes()};
        if (address) {
            course.push_back(register_write(set.address[0], 0xC0A8));
            course.push_back(register_write(set.address[1], 0x07FE));
        }
        if (mask) {
            course.push_back(register_write(set.mask[0], 0xFFFF));
            course.push_back(register_write(set.mask[1], 0xE000));
        }
        if (address || mask) {
            const uint32_t high = static_cast<uint32_t>(board.fpga.register_high) << 16;
            course.push_back(register_read(0x0114));
            course.push_back(register_write(0x0114, high | 0x8A50U | set.commit));
        }
        course.push_back(closes());
        return course;
    }

    const Bytes kAddress = hex("C0 A8 07 FE");
};

// Reads -------------------------------------------------------------------------------------

TEST_F(Prefix, ASetOtherThan0And1IsRefused)
{
    for (const unsigned set : {2U, 3U, 8U, 255U, 256U, 0x80000000U, UINT_MAX}) {
        PrefixBytes address = {1, 2, 3, 4};
        uint16_t length = 0x5678;
        EXPECT_EQ(prefixSet_read(set, address, length), -5);
        EXPECT_EQ(value_of(address), 0x01020304U);
        EXPECT_EQ(length, 0x5678);
    }
    EXPECT_EQ(board.call_count(), 0U);
}

TEST_F(Prefix, ReadingASetTellsWhyItFailed)
{
    for (const Set& set : kSets) {
        PrefixBytes address = {};
        uint16_t length = 0;
        const auto action = [&] { return prefixSet_read(set.number, address, length); };
        EXPECT_EQ(action(), 0);
        EXPECT_EQ(value_of(address), set.number == 0 ? 0x0A0B0C0DU : 0xAC102122U);
        EXPECT_EQ(length, set.number == 0 ? 20 : 8);
        failure_sweep(
            board, [] {}, action,
            [](size_t call, const std::string& text, int32_t result) {
                const bool closing = text == "close /dev/fpga";
                EXPECT_EQ(result, closing ? 0 : call == 0 ? -1 : -2);
            });
    }
}

TEST_F(Prefix, TheReportOfSet0ReadsItAllAndGivesTheLengthAlone)
{
    board.fpga.register_high = 0xBEEF;
    prove(
        RD_PREFIX0_LENGTH, [&] { return caller.put(kCallers); }, kRead0);
    Bytes expected = kCallers;
    bytes_put(expected, 6, le16(20));
    EXPECT_EQ(run(RD_PREFIX0_LENGTH, kCallers), expected);
    expect_untouched_on_failure(RD_PREFIX0_LENGTH, kCallers, kRead0);
}

TEST_F(Prefix, TheReportOfSet1GivesAddressAndLength)
{
    board.fpga.register_high = 0xBEEF;
    prove(
        RD_PREFIX1, [&] { return caller.put(kCallers); }, kRead1);
    Bytes expected = kCallers;
    bytes_put(expected, 10, hex("AC 10 21 22") + le16(8)); // FF 00 FF 00: 8 ones before a zero
    EXPECT_EQ(run(RD_PREFIX1, kCallers), expected);
    expect_untouched_on_failure(RD_PREFIX1, kCallers, kRead1);
}

TEST_F(Prefix, EveryRegisterValueIsReported)
{
    for_every_word([&](uint16_t word) {
        const auto other = static_cast<uint16_t>(word * 40503U + 1);
        const uint16_t first = word % 2 == 0 ? word : 0xFFFF;
        for (const Set& set : kSets) {
            board.fpga.registers[set.address[0]] = word;
            board.fpga.registers[set.address[1]] = other;
            board.fpga.registers[set.mask[0]] = first;
            board.fpga.registers[set.mask[1]] = word;
        }
        const uint32_t mask = first * 0x10000U + word;
        Bytes expected = kCallers;
        bytes_put(expected, 6, le16(ones_before_zero(mask)));
        ASSERT_EQ(run(RD_PREFIX0_LENGTH, kCallers), expected);
        expected = kCallers;
        bytes_put(expected, 10,
                  byte(word / 256) + byte(word % 256) + byte(other / 256) + byte(other % 256) +
                      le16(ones_before_zero(mask)));
        ASSERT_EQ(run(RD_PREFIX1, kCallers), expected);
    });
}

// Writes ------------------------------------------------------------------------------------

TEST_F(Prefix, AWriteReadsTheSetWritesItsPartsAndCommitsThem)
{
    board.fpga.register_high = 0xBEEF; // goes back with the commit bit only
    for (const Set& set : kSets) {
        for (const uint32_t valid : {0U, 1U, 2U, 3U, 4U, 0xFCU, 0xFFU}) {
            SCOPED_TRACE(valid);
            prove(
                set.write,
                [&] {
                    device_put();
                    return caller.put(record(set, valid, kAddress, 19));
                },
                write_course(set, valid));
        }
    }
}

TEST_F(Prefix, EveryMaskWritesItsPartsAndNothingElse)
{
    for (const Set& set : kSets) {
        for (uint32_t valid = 0; valid <= 0xFF; ++valid) {
            SCOPED_TRACE(valid);
            device_put();
            expect_sets(set.write, record(set, valid, kAddress, 19), write_course(set, valid));
        }
    }
}

TEST_F(Prefix, ThePartsBeforeAFailedWriteStayWritten)
{
    for (const Set& set : kSets) {
        expect_earlier_writes_stay(
            set.write,
            [&] {
                device_put();
                return caller.put(record(set, 0, kAddress, 19));
            },
            write_course(set, 0));
    }
}

TEST_F(Prefix, ATooLongPrefixIsFoundBeforeAnythingIsWritten)
{
    for (const Set& set : kSets) {
        const Course once = Course{opens_to_write(), opens_to_read()} +
                            registers_read(set.address[0], 4) + Course{closes(), closes()};
        const Course pause{{"usleep 1", kIgnored}};
        for (const uint32_t valid : {0U, 2U, 3U, 0x7EU, 0xFFU}) {
            for (const uint32_t length : {33U, 0x0100U, 0x8000U, 65535U}) {
                const auto before = board.fpga.registers;
                expect_sets(set.write, record(set, valid, kAddress, length),
                            once + pause + once + pause, -3);
                EXPECT_EQ(board.fpga.registers, before);
            }
        }
        // Where the length is not selected it does not matter.
        device_put();
        expect_sets(set.write, record(set, 1, kAddress, 33), write_course(set, 1));
        device_put();
        expect_sets(set.write, record(set, 4, kAddress, 65535), write_course(set, 4));
    }
}

TEST_F(Prefix, EveryLengthIsWrittenAsItsMaskOrRefused)
{
    for (const Set& set : kSets) {
        for_every_word([&](uint16_t length) {
            device_put();
            auto expected = board.fpga.registers;
            if (length <= 32) {
                expected[set.mask[0]] = static_cast<uint16_t>(kMasks[length] >> 16);
                expected[set.mask[1]] = static_cast<uint16_t>(kMasks[length]);
                expected[0x0114] = static_cast<uint16_t>(0x8A50 | set.commit);
            }
            run(set.write, record(set, 2, kAddress, length), length <= 32 ? 0 : -3);
            ASSERT_EQ(board.fpga.registers, expected);
        });
    }
}

TEST_F(Prefix, EveryAddressByteFindsItsRegister)
{
    for (const Set& set : kSets) {
        for_every_word([&](uint16_t word) {
            const auto other = static_cast<uint16_t>(word * 40503U + 1);
            device_put();
            auto expected = board.fpga.registers;
            expected[set.address[0]] = word;
            expected[set.address[1]] = other;
            expected[0x0114] = static_cast<uint16_t>(0x8A50 | set.commit);
            run(set.write,
                record(set, 1,
                       byte(word / 256) + byte(word % 256) + byte(other / 256) + byte(other % 256),
                       65535));
            ASSERT_EQ(board.fpga.registers, expected);
        });
    }
}

TEST_F(Prefix, TheCommitBitLeavesTheOthersOfItsRegister)
{
    for (const Set& set : kSets) {
        for (const uint32_t valid : {0U, 1U, 2U, 4U}) {
            for_every_word([&](uint16_t word) {
                board.fpga.registers[0x0114] = word;
                run(set.write, record(set, valid, kAddress, 24));
                ASSERT_EQ(board.fpga.registers[0x0114], valid == 4 ? word : word | set.commit);
            });
        }
    }
}

TEST_F(Prefix, WhatIsHeldAlreadyIsWrittenAndCommittedAgain)
{
    for (const Set& set : kSets) {
        device_put();
        run(set.write, record(set, 0, kAddress, 19));
        expect_sets(set.write, record(set, 0, kAddress, 19), write_course(set, 0));
    }
}

TEST_F(Prefix, WhatWasWrittenIsReported)
{
    for (unsigned length = 0; length <= 32; ++length) {
        const Bytes address = draw_bytes(4);
        for (const Set& set : kSets) {
            run(set.write, record(set, 0, address, length));
        }
        Bytes expected = kCallers;
        bytes_put(expected, 6, le16(length));
        EXPECT_EQ(run(RD_PREFIX0_LENGTH, kCallers), expected);
        expected = kCallers;
        bytes_put(expected, 10, address + le16(length));
        EXPECT_EQ(run(RD_PREFIX1, kCallers), expected);
    }
}

} // namespace
