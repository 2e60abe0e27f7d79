// The two address and prefix sets.
#include "device/prefix_masks.h"
#include "device/register_fixture.h"

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
const Bytes kCallersPrefix = untouched(16);

// Both sets, their neighbours and the commit register.
const Registers kHeld = {{0x00FE, 0x1111}, {0x0100, 0x0A0B}, {0x0102, 0x0C0D}, {0x0104, 0xFFFF},
                         {0x0106, 0xF000}, {0x0108, 0xAC10}, {0x010A, 0x2122}, {0x010C, 0xFF00},
                         {0x010E, 0xFF00}, {0x0110, 0x2222}, {0x0112, 0x3333}, {0x0114, 0x8A50}};

class Prefix : public RegisterTest
{
  protected:
    Prefix() { held_put(); }
    void held_put() { board.fpga.registers = kHeld; }

    static Bytes record_of(const Set& set, uint32_t valid, const Bytes& address, uint32_t length)
    {
        Bytes record = kCallersPrefix;
        bytes_put(record, set.offset, byte(valid));
        bytes_put(record, set.offset + 2, address + le16(length));
        return record;
    }

    // The caller's record after a report of set 0, and of set 1.
    static Bytes report_0(uint32_t length) { return untouched(6) + le16(length) + untouched(8); }
    static Bytes report_1(const Bytes& address, uint32_t length)
    {
        return untouched(10) + address + le16(length);
    }

    // The course of a write of C0 A8 07 FE with the prefix 19.
    static Course write_course(const Set& set, uint32_t valid)
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
            course.push_back(register_read(0x0114));
            course.push_back(register_write(0x0114, kHigh | 0x8A50U | set.commit));
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

// FF 00 FF 00 is 8 ones before a zero.
TEST_F(Prefix, AReportReadsItsSet)
{
    prove_registers({RD_PREFIX0_LENGTH, kCallersPrefix, kHeld, kRead0, report_0(20)});
    prove_registers({RD_PREFIX1, kCallersPrefix, kHeld, kRead1, report_1(hex("AC 10 21 22"), 8)});
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
        ASSERT_EQ(record_after(RD_PREFIX0_LENGTH, kCallersPrefix),
                  report_0(ones_before_zero(mask)));
        ASSERT_EQ(record_after(RD_PREFIX1, kCallersPrefix),
                  report_1(big16(word) + big16(other), ones_before_zero(mask)));
    });
}

// Writes ------------------------------------------------------------------------------------

// Whichever call fails, the parts before it stay written.
TEST_F(Prefix, AWriteReadsTheSetWritesItsPartsAndCommitsThem)
{
    for (const Set& set : kSets) {
        for (const uint32_t valid : {0U, 1U, 2U, 3U, 4U, 0xFCU, 0xFFU}) {
            SCOPED_TRACE(hex_number(valid));
            const Bytes record = record_of(set, valid, kAddress, 19);
            prove_registers({set.write, record, kHeld, write_course(set, valid), record});
            // What is held already is written and committed again.
            expect_calls(set.write, record, write_course(set, valid), record);
        }
    }
}

TEST_F(Prefix, EveryMaskWritesItsPartsAndNothingElse)
{
    for (const Set& set : kSets) {
        for (uint32_t valid = 0; valid <= 0xFF; ++valid) {
            SCOPED_TRACE(hex_number(valid));
            const Bytes record = record_of(set, valid, kAddress, 19);
            held_put();
            expect_calls(set.write, record, write_course(set, valid), record);
        }
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
                held_put();
                const Bytes record = record_of(set, valid, kAddress, length);
                expect_calls(set.write, record, once + pause + once + pause, record, -3);
                EXPECT_EQ(board.fpga.registers, kHeld);
            }
        }
        // Where the length is not selected it does not matter.
        for (const auto& [valid, length] : {std::pair{1U, 33U}, {4U, 65535U}}) {
            held_put();
            const Bytes record = record_of(set, valid, kAddress, length);
            expect_calls(set.write, record, write_course(set, valid), record);
        }
    }
}

TEST_F(Prefix, ADeviceThatFailsCountsBeforeATooLongPrefix)
{
    const struct {
        size_t call; // two opens, four reads
        size_t open; // descriptors when it fails
        int32_t result;
    } runs[] = {{1, 0, -1}, {2, 1, -1}, {3, 2, -2}, {4, 2, -2}, {5, 2, -2}, {6, 2, -2}};
    for (const Set& set : kSets) {
        const Bytes record = record_of(set, 2, kAddress, 33);
        for (const auto& [call, open, result] : runs) {
            board.restart();
            fail_in_both_runs(call, open);
            expect_run(set.write, record, result, record);
            EXPECT_EQ(board.fpga.registers, kHeld);
        }
    }
}

TEST_F(Prefix, EveryLengthIsWrittenAsItsMaskOrRefused)
{
    for (const Set& set : kSets) {
        for_every_word([&](uint16_t length) {
            held_put();
            auto expected = board.fpga.registers;
            if (length <= 32) {
                expected[set.mask[0]] = static_cast<uint16_t>(kMasks[length] >> 16);
                expected[set.mask[1]] = static_cast<uint16_t>(kMasks[length]);
                expected[0x0114] = static_cast<uint16_t>(0x8A50 | set.commit);
            }
            ASSERT_EQ(run(set.write, record_of(set, 2, kAddress, length)), length <= 32 ? 0 : -3);
            ASSERT_EQ(board.fpga.registers, expected);
        });
    }
}

TEST_F(Prefix, EveryAddressByteFindsItsRegister)
{
    for (const Set& set : kSets) {
        for_every_word([&](uint16_t word) {
            const auto other = static_cast<uint16_t>(word * 40503U + 1);
            held_put();
            auto expected = board.fpga.registers;
            expected[set.address[0]] = word;
            expected[set.address[1]] = other;
            expected[0x0114] = static_cast<uint16_t>(0x8A50 | set.commit);
            ASSERT_EQ(run(set.write, record_of(set, 1, big16(word) + big16(other), 65535)), 0);
            ASSERT_EQ(board.fpga.registers, expected);
        });
    }
}

TEST_F(Prefix, TheCommitBitLeavesTheOthersOfItsRegister)
{
    for (const Set& set : kSets) {
        for (const uint32_t valid : {0U, 1U, 2U, 4U}) {
            for_every_word([&](uint16_t word) {
                at(0x0114) = word;
                ASSERT_EQ(run(set.write, record_of(set, valid, kAddress, 24)), 0);
                ASSERT_EQ(at(0x0114), valid == 4 ? word : word | set.commit);
            });
        }
    }
}

TEST_F(Prefix, WhatWasWrittenIsReported)
{
    Draws draw;
    for (unsigned length = 0; length <= 32; ++length) {
        const Bytes address = draw.bytes(4);
        for (const Set& set : kSets) {
            EXPECT_EQ(run(set.write, record_of(set, 0, address, length)), 0);
        }
        expect_run(RD_PREFIX0_LENGTH, kCallersPrefix, 0, report_0(length));
        expect_run(RD_PREFIX1, kCallersPrefix, 0, report_1(address, length));
    }
}

} // namespace
