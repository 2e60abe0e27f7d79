// The table of rule entries.
#include <memory>

#include "device/command_test.h"
#include "device/record_bytes.h"
#include "device/rule_model.h"

namespace
{

const uint32_t kRounds = share_of(50000);

// Records as texts of hex pairs, with the offsets of their lines.
const Bytes kCallers = hex("2A EE "             // 0: index, enabled
                           "C0 A8 01 FE "       // 2: address A
                           "0A 00 00 81 "       // 6: address B
                           "00 00 00 00 00 01 " // 10: six-byte address A
                           "02 AB CD EF 01 23 " // 16: six-byte address B
                           "34 12 "             // 22: value
                           "03 "                // 24: class code
                           "9E "                // 25: byte E
                           "18 20 "             // 26: prefixes A and B
                           "BB 81 "             // 28: word C
                           "50 00 "             // 30: word D
                           "C1 D1 "             // 32: companions of C and D
                           "00 01 02 FF ") +    // 34: switches
                       untouched(kCallersSize - 38);

// What the driver is sent for it.
const Bytes kDrivers = hex("2A 00 3F 02 "             // 0: index, presence
                           "34 12 00 00 "             // 4: value
                           "FE 01 A8 C0 18 00 00 00 " // 8: address A, prefix A
                           "81 00 00 0A 20 00 "       // 16: address B, prefix B
                           "BB 81 50 00 9E 00 "       // 22: word C, word D, byte E
                           "00 00 00 00 00 04 00 00 " // 28: class bits at 33
                           "00 01 01 01 "             // 36: switches
                           "00 00 00 00 00 00 00 00 " // 40
                           "00 00 00 00 00 01 "       // 48: six-byte address A
                           "02 AB CD EF 01 23 "       // 54: six-byte address B
                           "00 00 C1 D1 00 00 01 01 " // 60: companions at 62, present at 66
                           "00 00 00 00 00 00 00 00 01 00 00 00 "); // 68: enabled at 76

// The record that asks for an entry, and the one that deletes it.
Bytes index_alone(uint32_t index)
{
    return le16(index) + zeros(78);
}

const Course kReads{opens_to_write(), record_read(0x6B6A, index_alone(0x2A)), closes()};
const Course kWrites{opens_to_write(), record_write(0x6B6B, kDrivers), closes()};
const Course kDeletes{opens_to_write(), record_write(0x6B6B, index_alone(0x2A)), closes()};

class Rule : public CommandTest
{
  protected:
    // What the driver holds for a caller's record with one part replaced.
    Bytes written(size_t offset, const Bytes& part)
    {
        Bytes record = kCallers;
        bytes_put(record, offset, part);
        EXPECT_EQ(run(WR_RULE_ENTRY, record), 0);
        board.restart();
        EXPECT_EQ(board.fpga.rules[0x2A], sent_for(record));
        return board.fpga.rules[0x2A];
    }

    // What the caller gets for a driver's record with one part replaced.
    Bytes reported(size_t offset, const Bytes& part)
    {
        Bytes held = kDrivers;
        bytes_put(held, offset, part);
        board.fpga.rules[0x2A] = held;
        Bytes record = record_after(RD_RULE_ENTRY, kCallers);
        board.restart();
        EXPECT_EQ(record, reported_for(held));
        return record;
    }

    // Random bytes, every other record with many zeros.
    Bytes draw_record(size_t size)
    {
        Bytes record = draw.bytes(size);
        if (draw() % 2 == 0) {
            for (char& each : record) {
                each = draw() % 3 == 0 ? each : '\0';
            }
        }
        return record;
    }

    Draws draw;
};

TEST_F(Rule, AWriteSendsTheWholeEntry)
{
    ASSERT_EQ(kDrivers.size(), 80U);
    ASSERT_EQ(kCallers.size(), kCallersSize);
    EXPECT_EQ(sent_for(kCallers), kDrivers);
    prove_record(WR_RULE_ENTRY, kCallers, kWrites, kCallers);
}

TEST_F(Rule, AnEmptyWriteSendsAnEnabledEntryWithNothingInIt)
{
    Bytes sent = index_alone(0x2A);
    sent[76] = 1;
    const Bytes empty = byte(0x2A) + zeros(kCallersSize - 1);
    expect_calls(WR_RULE_ENTRY, empty, {opens_to_write(), record_write(0x6B6B, sent), closes()},
                 empty);
}

TEST_F(Rule, AReportGivesTheWholeEntry)
{
    board.fpga.rules = {{0x2A, kDrivers}};
    Bytes expected = kCallers.substr(0, 38) + zeros(kCallersSize - 38);
    expected[1] = 1;
    bytes_put(expected, 34, hex("00 01 01 01"));
    prove_record(RD_RULE_ENTRY, kCallers, kReads, expected);
    EXPECT_EQ(board.fpga.rules[0x2A], kDrivers);
    expect_kept(RD_RULE_ENTRY, kCallers);
}

TEST_F(Rule, AFailedWriteLeavesTheEntry)
{
    board.fpga.rules[0x2A] = kDrivers;
    board.fpga.results[0x6B6B] = -1;
    const Bytes record = byte(0x2A) + Bytes(kCallersSize - 1, '\x77');
    expect_run(WR_RULE_ENTRY, record, -4, record);
    expect_run(WR_RULE_DELETE, byte(0x2A), -4, byte(0x2A));
    EXPECT_EQ(board.fpga.rules[0x2A], kDrivers);
}

// The setters need no more than the 38 bytes and the one byte that they read.
TEST_F(Rule, TheSettersReadNothingBeyondTheirFields)
{
    const auto fields = std::make_unique<uint16_t[]>(19);
    memcpy(fields.get(), kCallers.data(), 38);
    expect_course(WR_RULE_ENTRY, fields.get(), kWrites);
    const auto index = std::make_unique<uint8_t>(0x2A);
    expect_course(WR_RULE_DELETE, index.get(), kDeletes);
}

TEST_F(Rule, ADeleteSendsTheIndexAlone)
{
    board.fpga.rules[0x2A] = kDrivers;
    prove_record(WR_RULE_DELETE, byte(0x2A), kDeletes, byte(0x2A));
    expect_calls(WR_RULE_DELETE, kCallers, kDeletes, kCallers);
    EXPECT_EQ(board.fpga.rules[0x2A], index_alone(0x2A));
    expect_run(RD_RULE_ENTRY, kCallers, 0, byte(0x2A) + zeros(kCallersSize - 1));
}

TEST_F(Rule, AnIndexAbove127IsRefused)
{
    for (uint32_t index = 0; index <= 0xFF; ++index) {
        SCOPED_TRACE(hex_number(index));
        const Bytes before = byte(index) + kCallers.substr(1);
        for (const DeviceCommandCode command : {RD_RULE_ENTRY, WR_RULE_ENTRY, WR_RULE_DELETE}) {
            board.fpga.rules.clear();
            if (index > 127) {
                expect_refused(command, before);
                continue;
            }
            EXPECT_EQ(run(command, before), 0);
            // Reading makes no entry.
            const size_t entries = command == RD_RULE_ENTRY ? 0 : 1;
            EXPECT_EQ(board.fpga.rules.size(), entries);
            EXPECT_EQ(board.fpga.rules.count(static_cast<uint16_t>(index)), entries);
            EXPECT_EQ(byte_at(record(), 0), index);
        }
    }
}

TEST_F(Rule, TheReportedIndexIsTheDrivers)
{
    board.fpga.rules[0x2A] = kDrivers;
    board.fpga.answered = [](uint32_t, char* record) {
        record[0] = '\x9B';
        record[1] = '\x12';
    };
    EXPECT_EQ(byte_at(record_after(RD_RULE_ENTRY, kCallers), 0), 0x9B);
}

TEST_F(Rule, AnEntryThatIsNotEnabledReportsItsIndexAlone)
{
    EXPECT_EQ(reported(76, byte(0)), byte(0x2A) + zeros(kCallersSize - 1));
    for (uint32_t enabled = 1; enabled <= 0xFF; ++enabled) {
        const Bytes record = reported(76, byte(enabled));
        EXPECT_EQ(byte_at(record, 1), enabled);
        EXPECT_EQ(byte_at(record, 2), 0xC0);
    }
}

TEST_F(Rule, EveryPresenceWordSelectsWhatIsReported)
{
    for_every_word([&](uint16_t present) { reported(2, le16(present)); });
    // Without any: six-byte addresses and switches, which have no bit there.
    EXPECT_EQ(reported(2, le16(0)),
              hex("2A 01 00 00 00 00 00 00 00 00 00 00 00 00 00 01 02 AB CD EF 01 23") + zeros(12) +
                  hex("00 01 01 01") + zeros(kCallersSize - 38));
}

TEST_F(Rule, SixByteAddressesAreReportedWhereMarked)
{
    for (uint32_t mark = 0; mark <= 0xFF; ++mark) {
        EXPECT_EQ(reported(66, byte(mark)).substr(10, 6),
                  mark == 0 ? zeros(6) : hex("00 00 00 00 00 01"));
        EXPECT_EQ(reported(67, byte(mark)).substr(16, 6),
                  mark == 0 ? zeros(6) : hex("02 AB CD EF 01 23"));
    }
}

TEST_F(Rule, TheLowestClassBitIsReported)
{
    for (uint32_t bits = 0; bits <= 0xFF; ++bits) {
        const int code = bits % 2 == 1       ? 1
                         : bits / 2 % 2 == 1 ? 2
                         : bits / 4 % 2 == 1 ? 3
                         : bits / 8 % 2 == 1 ? 4
                                             : 0;
        EXPECT_EQ(byte_at(reported(33, byte(bits)), 24), code);
    }
    EXPECT_EQ(byte_at(reported(33, byte(6)), 24), 2);
}

TEST_F(Rule, EverySwitchIsOnOrOff)
{
    for (size_t i = 0; i < 4; ++i) {
        for (uint32_t value = 0; value <= 0xFF; ++value) {
            EXPECT_EQ(byte_at(reported(36 + i, byte(value)), 34 + i), value == 0 ? 0 : 1);
            EXPECT_EQ(byte_at(written(34 + i, byte(value)), 36 + i), value == 0 ? 0 : 1);
        }
    }
}

TEST_F(Rule, ClassCodes1To4AreWritten)
{
    for (uint32_t code = 0; code <= 0xFF; ++code) {
        const Bytes held = written(24, byte(code));
        const bool known = code >= 1 && code <= 4;
        EXPECT_EQ(word_at(held, 2), known ? 0x023F : 0x003F);
        EXPECT_EQ(byte_at(held, 33), known ? 1 << (code - 1) : 0);
    }
}

// 0.10.20.30 is no address, and has no prefix.
TEST_F(Rule, AnAddressWhoseFirstByteIsZeroIsAbsent)
{
    struct Row {
        size_t address; // of the caller's record
        size_t prefix;
        size_t held;
        uint16_t present; // all but this address
    };
    for (const auto& [address, prefix, held_at, present] :
         {Row{2, 26, 8, 0x023D}, Row{6, 27, 16, 0x023B}}) {
        const Bytes held = written(address, hex("00 0A 14 1E"));
        EXPECT_EQ(word_at(held, 2), present);
        EXPECT_EQ(held.substr(held_at, 5), zeros(5));
        const Bytes report = record_after(RD_RULE_ENTRY, kCallers);
        EXPECT_EQ(report.substr(address, 4), zeros(4));
        EXPECT_EQ(byte_at(report, prefix), 0);
    }
    for (uint32_t first = 1; first <= 0xFF; ++first) {
        EXPECT_EQ(written(2, byte(first) + hex("00 00 00")).substr(8, 5),
                  hex("00 00 00") + byte(first) + hex("18"));
        EXPECT_EQ(written(6, byte(first) + hex("00 00 00")).substr(16, 5),
                  hex("00 00 00") + byte(first) + hex("20"));
    }
}

TEST_F(Rule, ASixByteAddressIsPresentWithAnyByte)
{
    for (const size_t which : {0U, 1U}) {
        EXPECT_EQ(byte_at(written(10 + 6 * which, zeros(6)), 66 + which), 0);
        for (size_t i = 0; i < 6; ++i) {
            for (const uint32_t value : {1U, 0x80U, 0xFFU}) {
                Bytes address = zeros(6);
                bytes_put(address, i, byte(value));
                const Bytes held = written(10 + 6 * which, address);
                EXPECT_EQ(byte_at(held, 66 + which), 1);
                EXPECT_EQ(held.substr(48 + 6 * which, 6), address);
                EXPECT_EQ(word_at(held, 2), 0x023F);
            }
        }
    }
}

TEST_F(Rule, AWordIsPresentUnlessItIsZeroAndTakesItsCompanionWithIt)
{
    for_every_word([&](uint16_t word) {
        const Bytes held = written(28, le16(word));
        ASSERT_EQ(word_at(held, 2), word == 0 ? 0x0237 : 0x023F);
        ASSERT_EQ(word_at(held, 22), word);
        ASSERT_EQ(byte_at(held, 62), word == 0 ? 0 : 0xC1);
        const Bytes other = written(30, le16(word));
        ASSERT_EQ(word_at(other, 2), word == 0 ? 0x022F : 0x023F);
        ASSERT_EQ(word_at(other, 24), word);
        ASSERT_EQ(byte_at(other, 63), word == 0 ? 0 : 0xD1);
        const Bytes value = written(22, le16(word));
        ASSERT_EQ(word_at(value, 2), word == 0 ? 0x023E : 0x023F);
        ASSERT_EQ(word_at(value, 4), word);
    });
}

TEST_F(Rule, ByteEIsPresentUnlessItIsZero)
{
    for (uint32_t value = 0; value <= 0xFF; ++value) {
        const Bytes held = written(25, byte(value));
        EXPECT_EQ(word_at(held, 2), value == 0 ? 0x021F : 0x023F);
        EXPECT_EQ(byte_at(held, 26), value);
    }
}

// Random records ----------------------------------------------------------------------------

TEST_F(Rule, WhatWasWrittenIsReportedInItsNormalForm)
{
    for (uint32_t round = 0; round < kRounds && !HasFailure(); ++round) {
        Bytes record = draw_record(kCallersSize);
        record[0] = static_cast<char>(draw() % 128);
        const uint16_t index = byte_at(record, 0);
        ASSERT_EQ(run(WR_RULE_ENTRY, record), 0);
        const Bytes& held = board.fpga.rules[index];
        ASSERT_EQ(held, sent_for(record));
        ASSERT_EQ(word_at(held, 2) & ~0x033F, 0);
        const Bytes report = record_after(RD_RULE_ENTRY, record.substr(0, 1) + draw.bytes(495));
        ASSERT_EQ(report, normal_form(record));
        // Written again, a report changes nothing.
        const Bytes before = held;
        ASSERT_EQ(run(WR_RULE_ENTRY, report), 0);
        ASSERT_EQ(board.fpga.rules[index], before);
        board.restart();
    }
}

TEST_F(Rule, AnyDriversRecordIsReportedByItsPresence)
{
    for (uint32_t round = 0; round < kRounds && !HasFailure(); ++round) {
        Bytes held = draw_record(80);
        bytes_put(held, 0, le16(draw() % 128));
        board.fpga.rules[word_at(held, 0)] = held;
        const Bytes asked = held.substr(0, 1) + draw.bytes(495);
        ASSERT_EQ(record_after(RD_RULE_ENTRY, asked), reported_for(held));
        board.restart();
    }
}

} // namespace
