// The access helpers that every command on /dev/fpga is made of.
#include "device/access/fpga.h"

#include <random>

#include "device/access/families.h"
#include "device/access/flag_fields.h"
#include "device/device_test.h"

namespace
{

constexpr uint32_t kSeed = 20060301; // every run draws the same values
const uint32_t kRounds = share_of(200000);

using Words = std::initializer_list<uint16_t>;

class FpgaDevice : public DeviceTest
{
  protected:
    uint16_t draw() { return static_cast<uint16_t>(random_()); }

    // Runs a helper that opens the device by itself, on a device prepared anew: its course first,
    // then each call of it failing. No run leaves a descriptor.
    void prove_helper(const std::function<void()>& prepare, const std::function<int32_t()>& helper,
                      const Course& course)
    {
        Trace calls;
        for (const Step& step : course) {
            calls.push_back(step.call);
        }
        prepare();
        board.restart();
        EXPECT_EQ(helper(), 0);
        EXPECT_EQ(board.calls, calls);
        failure_sweep(board, prepare, helper, [&](size_t call, const std::string&, int32_t result) {
            const int32_t failure = course[call].failure;
            EXPECT_EQ(result, failure == kIgnored ? 0 : failure);
            // Nothing but the close follows a failed request.
            const size_t expected = failure == kIgnored ? calls.size() : call == 0 ? 1 : call + 2;
            EXPECT_EQ(board.calls.size(), expected);
            if (call != 0) {
                EXPECT_EQ(board.calls.back().rfind("close /dev/fpga", 0), 0U);
            }
        });
    }

  private:
    std::mt19937 random_{kSeed};
};

// Changes of bits ---------------------------------------------------------------------------

struct ModelChange {
    uint16_t clear;
    uint16_t set;
};

BitChange change_of(const ModelChange& change)
{
    return bitChange_of(change.clear, change.set);
}

// One bit at a time: cleared, then set.
uint16_t model_apply(const ModelChange& change, uint16_t word)
{
    unsigned result = 0;
    for (unsigned bit = 0; bit < 16; ++bit) {
        bool on = (word >> bit) % 2 == 1;
        if ((change.clear >> bit) % 2 == 1) {
            on = false;
        }
        if ((change.set >> bit) % 2 == 1) {
            on = true;
        }
        result += on ? 1U << bit : 0U;
    }
    return static_cast<uint16_t>(result);
}

TEST_F(FpgaDevice, AChangeClearsAndThenSets)
{
    for (uint32_t round = 0; round < kRounds; ++round) {
        const ModelChange change{draw(), draw()};
        const uint16_t word = draw();
        ASSERT_EQ(bitChange_apply(change_of(change), word), model_apply(change, word))
            << std::hex << change.clear << ' ' << change.set << ' ' << word;
    }
}

TEST_F(FpgaDevice, AJoinedChangeIsTheFirstAndThenTheSecond)
{
    for (uint32_t round = 0; round < kRounds; ++round) {
        const ModelChange first{draw(), draw()};
        const ModelChange second{draw(), draw()};
        const uint16_t word = draw();
        ASSERT_EQ(bitChange_apply(bitChange_join(change_of(first), change_of(second)), word),
                  model_apply(second, model_apply(first, word)));
    }
    const BitChange joined = bitChange_join(bits_assign(0x00F0, true), bits_assign(0x0030, false));
    EXPECT_EQ(bitChange_apply(joined, 0x0000), 0x00C0);
    EXPECT_EQ(bitChange_apply(joined, 0xFFFF), 0xFFCF);
}

TEST_F(FpgaDevice, BitsAreSetOrClearedAllTogether)
{
    for_every_word([](uint16_t word) {
        ASSERT_EQ(bitChange_apply(bits_assign(0x8142, true), word), word | 0x8142);
        ASSERT_EQ(bitChange_apply(bits_assign(0x8142, false), word), word & 0x7EBD);
    });
}

TEST_F(FpgaDevice, AFieldIsReplacedByTheBitsThatFitIt)
{
    for (const uint16_t value : Words{0x0000, 0x1000, 0x2000, 0x3000, 0xFFFF, 0x4FFF}) {
        for_every_word([value](uint16_t word) {
            ASSERT_EQ(bitChange_apply(field_assign(0x3000, value), word),
                      (word & 0xCFFF) + (value & 0x3000));
        });
    }
}

// Flags -------------------------------------------------------------------------------------

constexpr uint16_t kFlagBits[] = {0x0040, 0x8000, 0x0001};

TEST_F(FpgaDevice, FlagsChangeTheBitsThatTheMaskSelects)
{
    for (unsigned mask = 0; mask <= 0xFF; ++mask) {
        for (const uint8_t value : std::initializer_list<uint8_t>{0, 1, 2, 255}) {
            for (unsigned odd = 0; odd < 3; ++odd) { // the field whose flag differs
                uint8_t flags[3] = {1, 1, 1};
                flags[odd] = value;
                unsigned expected_set = 0;
                unsigned expected_clear = 0;
                for (unsigned field = 0; field < 3; ++field) {
                    if (mask == 0 || (mask >> field & 1) == 1) {
                        expected_clear |= kFlagBits[field];
                        expected_set |= field != odd || value == 1 ? kFlagBits[field] : 0U;
                    }
                }
                const BitChange change = flagFields_change(kFlagBits, mask, flags);
                for (const uint16_t word : Words{0x0000, 0xFFFF, 0x5A5A}) {
                    ASSERT_EQ(bitChange_apply(change, word),
                              (word & ~expected_clear) | expected_set)
                        << mask << ' ' << value << ' ' << odd;
                }
            }
        }
    }
}

// Eight and sixteen-bit masks with bits beyond the last field select what they name, no more.
TEST_F(FpgaDevice, AMaskWithoutAnyFieldChangesNothing)
{
    const uint8_t flags[3] = {1, 1, 1};
    for (const unsigned mask : {0x08U, 0x80U, 0xF8U, 0x8000U, 0xFFF8U}) {
        const BitChange change = flagFields_change(kFlagBits, mask, flags);
        EXPECT_EQ(bitChange_apply(change, 0x0000), 0x0000);
        EXPECT_EQ(bitChange_apply(change, 0xFFFF), 0xFFFF);
    }
}

TEST_F(FpgaDevice, FlagsAreReportedAsZeroOrOne)
{
    for_every_word([](uint16_t word) {
        uint8_t flags[5] = {77, 77, 77, 77, 77};
        flagFields_extract(kFlagBits, 3, word, flags + 1);
        ASSERT_EQ(flags[1], word >> 6 & 1);
        ASSERT_EQ(flags[2], word >> 15);
        ASSERT_EQ(flags[3], word % 2);
        ASSERT_EQ(flags[0], 77);
        ASSERT_EQ(flags[4], 77);
    });
}

// Open, requests, close ---------------------------------------------------------------------

TEST_F(FpgaDevice, OpensAndCloses)
{
    EXPECT_EQ(fpga_close(fpga_open(FpgaAccess::kRead)), 0);
    EXPECT_EQ(fpga_close(fpga_open(FpgaAccess::kWrite)), 0);
    EXPECT_EQ(board.calls, (Trace{"open /dev/fpga O_RDONLY|O_NONBLOCK", "close /dev/fpga",
                                  "open /dev/fpga O_RDWR|O_NONBLOCK", "close /dev/fpga"}));
}

// Every request there is, as one sequence.
void requests_all(Fpga& fpga)
{
    uint16_t values[2];
    const uint8_t bytes[4] = {};
    record_read(fpga, kWord27Read, values);
    record_write(fpga, kWord22Write, values);
    value_write(fpga, kWord28Write, 1);
    word_write(fpga, kEnableWord, word_read(fpga, kEnableWord));
    word_change(fpga, kEnableWord, kNoChange);
    register_write(fpga, 0x0044, register_read(fpga, 0x0044));
    register_change(fpga, 0x0044, kNoChange);
    registers_read(fpga, 0x0044, values);
    registerBytes_write(fpga, 0x0044, bytes);
}

TEST_F(FpgaDevice, AFirstFailureStandsAndNoRequestFollowsIt)
{
    for (const int32_t failure : {-1, -2, -3, -4, -5, 1, INT32_MIN}) {
        board.restart();
        Fpga fpga = fpga_open(FpgaAccess::kWrite);
        EXPECT_TRUE(fpga_good(fpga));
        fpga_fail(fpga, failure);
        EXPECT_FALSE(fpga_good(fpga));
        fpga_fail(fpga, -77);
        requests_all(fpga);
        EXPECT_EQ(fpga_close(fpga), failure);
        EXPECT_EQ(board.calls, (Trace{"open /dev/fpga O_RDWR|O_NONBLOCK", "close /dev/fpga"}));
    }
}

TEST_F(FpgaDevice, NoFailureIsNone)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    fpga_fail(fpga, DEVICE_OK);
    EXPECT_TRUE(fpga_good(fpga));
    EXPECT_EQ(fpga_close(fpga), 0);
}

TEST_F(FpgaDevice, ADeviceThatCannotBeOpenedIsNotUsedAndNotClosed)
{
    board.fpga_present = false;
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    EXPECT_FALSE(fpga_good(fpga));
    requests_all(fpga);
    EXPECT_EQ(fpga_close(fpga), -1);
    EXPECT_EQ(board.calls, (Trace{"open /dev/fpga O_RDWR|O_NONBLOCK"}));
}

// Whichever request of the sequence fails: nothing follows but the close, which tells the code.
TEST_F(FpgaDevice, EachRequestHasItsFailure)
{
    const std::vector<int32_t> failures{-2, -4, -4, -2, -4, -2, -4, -2, -4, -2, -4, -2, -2, -4, -4};
    for (size_t n = 0; n < failures.size(); ++n) {
        SCOPED_TRACE(n);
        board.restart();
        board.fail_call(n + 2);
        Fpga fpga = fpga_open(FpgaAccess::kWrite);
        requests_all(fpga);
        EXPECT_EQ(fpga_close(fpga), failures[n]);
        EXPECT_EQ(board.calls.size(), n + 3);
    }
    board.restart();
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    requests_all(fpga);
    EXPECT_EQ(fpga_close(fpga), 0);
    EXPECT_EQ(board.calls.size(), failures.size() + 2);
}

// The driver fills its record although it fails; nobody gets to see it.
TEST_F(FpgaDevice, WhatCannotBeReadIsZero)
{
    board.fpga.fills_when_failing = true;
    board.fpga.words[0x6B0B] = 0x1234;
    board.fpga.registers[0x0044] = 0x1234;
    for (const uint32_t request : {0x6B0BU, 0x6B42U}) {
        board.fpga.results = {{request, -1}};
        Fpga fpga = fpga_open(FpgaAccess::kRead);
        EXPECT_EQ(request == 0x6B0B ? word_read(fpga, kEnableWord) : register_read(fpga, 0x0044),
                  0);
        EXPECT_EQ(fpga_close(fpga), -2);
    }
}

TEST_F(FpgaDevice, AFailureCanBeIgnoredAndTheDriversResultIsHandedOn)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    uint16_t word = 0;
    for (const int result : {0, 3, -1, -7}) {
        board.fpga.results = {{0x6B40, result}, {0x6BA2, result}};
        EXPECT_EQ(record_issue(fpga, kWord40Read, &word, DEVICE_OK), result);
        EXPECT_EQ(value_issue(fpga, kDriverStateRead, 0, DEVICE_OK), result);
        EXPECT_TRUE(fpga_good(fpga));
    }
    EXPECT_EQ(value_issue(fpga, kDriverStateRead, 0, -44), -7);
    EXPECT_EQ(value_issue(fpga, kDriverStateRead, 0, -44), 0); // not issued
    EXPECT_EQ(fpga_close(fpga), -44);
}

TEST_F(FpgaDevice, RegistersAreConsecutiveAndTheirHighByteComesFirst)
{
    board.fpga.registers = {{0x0110, 0x1122}, {0x0112, 0x3344}, {0x0114, 0x5566}};
    uint16_t values[4] = {1, 1, 1, 0x7777};
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    registers_read(fpga, 0x0110, values, 3);
    EXPECT_EQ(values[0], 0x1122);
    EXPECT_EQ(values[1], 0x3344);
    EXPECT_EQ(values[2], 0x5566);
    EXPECT_EQ(values[3], 0x7777);
    uint8_t bytes[4];
    registerBytes_unpack(values + 1, bytes);
    EXPECT_EQ(bytes_of(bytes), hex("33 44 55 66"));
    registerBytes_write(fpga, 0x0200, bytes);
    EXPECT_EQ(board.fpga.registers[0x0200], 0x3344);
    EXPECT_EQ(board.fpga.registers[0x0202], 0x5566);
    EXPECT_EQ(fpga_close(fpga), 0);
}

TEST_F(FpgaDevice, AValueGoesToTheDriverAsItIs)
{
    for (const uint32_t value : {0U, 1U, 0x8000U, 0xFFFFU, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(command_writeValue(kPortMaskWrite, value), 0);
        EXPECT_EQ(board.fpga.words[0x6B8D], value);
    }
    EXPECT_EQ(board.calls[board.calls.size() - 2], "ioctl 6B8E =FFFFFFFF");
}

// Each whole command's course and failures --------------------------------------------------

TEST_F(FpgaDevice, RecordsAreReadAndWritten)
{
    uint16_t word = 0;
    const auto prepare = [&] { word = 0x2211; };
    prove_helper(prepare, [&] { return command_readRecord(kWord27Read, &word); },
                 {opens_to_read(), record_read(0x6B27, hex("11 22")), closes()});
    prove_helper(prepare,
                 [&] { return command_readRecord(kWord4ERead, &word, FpgaAccess::kWrite); },
                 {opens_to_write(), record_read(0x6B4E, hex("11 22")), closes()});
    prove_helper(prepare, [&] { return command_writeRecord(kWord22Write, &word); },
                 {opens_to_write(), record_write(0x6B22, hex("11 22")), closes()});
    prove_helper(prepare,
                 [&] { return command_writeRecord(kWord22Write, &word, DEVICE_READ_FAILED); },
                 {opens_to_write(), record_write(0x6B22, hex("11 22"), -2), closes()});
    prove_helper([] {}, [] { return command_writeValue(kWord28Write, 0xABCD); },
                 {opens_to_write(), value_write(0x6B28, 0xABCD), closes()});
}

TEST_F(FpgaDevice, WordsAndRegistersAreReadIntoAClearedWord)
{
    board.fpga.words[0x6B2D] = 0xF234;
    board.fpga.registers[0x0158] = 0xF234;
    board.fpga.register_high = 0xBEEF;
    // The value read counts as a failure's opposite.
    const auto status_of = [](int32_t value) { return value == 0xF234 ? 0 : value; };
    prove_helper([] {}, [&] { return status_of(command_readWord(kGroupWord)); },
                 {opens_to_read(), word_read(0x6B2D), closes()});
    prove_helper([] {}, [&] { return status_of(command_readRegister(0x0158)); },
                 {opens_to_read(), register_read(0x0158), closes()});
    prove_helper([] {}, [&] { return status_of(command_readWord(kGroupWord, FpgaAccess::kWrite)); },
                 {opens_to_write(), word_read(0x6B2D), closes()});
    prove_helper([] {}, [&] { return status_of(command_readRegister(0x0158, FpgaAccess::kWrite)); },
                 {opens_to_write(), register_read(0x0158), closes()});
}

TEST_F(FpgaDevice, AChangedWordIsReadAndWrittenOnOneDescriptor)
{
    prove_helper([this] { board.fpga.words[0x6B2D] = 0x0FF0; },
                 [] { return command_changeWord(kGroupWord, bitChange_of(0x00FF, 0x0005)); },
                 {opens_to_write(), word_read(0x6B2D), value_write(0x6B2E, 0x0F05), closes()});
}

TEST_F(FpgaDevice, AWrittenRegisterLeavesTheHighHalfZero)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    register_write(fpga, 0x89ABCDEF, 0xFEDC);
    EXPECT_EQ(fpga_close(fpga), 0);
    EXPECT_EQ(board.calls[1], register_write(0x89ABCDEF, 0x0000FEDC).call);
    EXPECT_EQ(board.fpga.registers[0x89ABCDEF], 0xFEDC);
}

TEST_F(FpgaDevice, AChangedRegisterIsWrittenWithTheHighHalfThatWasRead)
{
    prove_helper(
        [this] {
            board.fpga.registers[0x0044] = 0x8001;
            board.fpga.register_high = 0xCAFE;
        },
        [] { return command_changeRegister(0x0044, bitChange_of(0x0001, 0x0010)); },
        {opens_to_write(), register_read(0x0044), register_write(0x0044, 0xCAFE8010), closes()});
}

TEST_F(FpgaDevice, EveryHighHalfOfARegisterIsKept)
{
    for (uint32_t high = 0; high <= UINT16_MAX; high = wordTried_after(high)) {
        board.fpga.registers[0x0044] = static_cast<uint16_t>(~high);
        board.fpga.register_high = static_cast<uint16_t>(high);
        board.restart();
        ASSERT_EQ(command_changeRegister(0x0044, bits_assign(0x0180, true)), 0);
        ASSERT_EQ(board.calls.size(), 4U);
        ASSERT_EQ(board.calls[2],
                  register_write(0x0044, high << 16 | (~high & 0xFFFF) | 0x0180).call);
    }
}

TEST_F(FpgaDevice, NothingIsStoredWhenTheReadFails)
{
    for (const int32_t failure : {-2, -1}) {
        board.fpga.results = {{0x6B42, -1}, {0x6B2D, -1}};
        board.fpga_present = failure == -2;
        uint16_t value = 0x5A5A;
        uint8_t flag = 0x5A;
        EXPECT_EQ(value_store(command_readRegister(0x0044), &value), failure);
        EXPECT_EQ(value_store(command_readWord(kGroupWord), &value), failure);
        EXPECT_EQ(value_store(command_readRegisterFlag(0x0044, 0xFFFF), &value), failure);
        EXPECT_EQ(value_store(command_readWordFlag(request_reading(kGroupWord), 0xFFFF), &flag),
                  failure);
        EXPECT_EQ(value, 0x5A5A);
        EXPECT_EQ(flag, 0x5A);
    }
}

TEST_F(FpgaDevice, AFlagIsOneWhenAnyOfItsBitsIsSet)
{
    for_every_word([this](uint16_t word) {
        board.fpga.words[0x6B2D] = word;
        board.fpga.registers[0x0044] = word;
        uint8_t byte = 0x5A;
        uint16_t wide = 0x5A5A;
        ASSERT_EQ(value_store(command_readWordFlag(request_reading(kGroupWord), 0x8100), &byte), 0);
        ASSERT_EQ(value_store(command_readRegisterFlag(0x0044, 0x0018), &wide), 0);
        ASSERT_EQ(byte, (word >> 15) + (word >> 8 & 1) > 0 ? 1 : 0);
        ASSERT_EQ(wide, word % 32 >= 8 ? 1 : 0);
    });
}

TEST_F(FpgaDevice, DescriptorZeroIsAnOpenDevice)
{
    uint16_t word = 0;
    board.fpga.words[0x6B27] = 0x1234;
    board.next_device = 0;
    EXPECT_EQ(Fpga_Register_Set(RD_DEVICE_WORD_27, &word), 0);
    EXPECT_EQ(word, 0x1234);
    EXPECT_EQ(board.call_count(), 3U);
    board.next_device = 0;
    EXPECT_EQ(Fpga_Register_Set(RD_DEVICE_WORD_21, &word), 0);
    EXPECT_EQ(board.call_count(), 6U);
}

} // namespace
