// The access helpers that every command on /dev/fpga is made of.
#include "device/access/fpga.h"

#include <random>

#include "device/access/bit_flag.h"
#include "device/access/flag_fields.h"
#include "device/device_test.h"

namespace
{

constexpr uint32_t kSeed = 20060301; // every run draws the same values
constexpr uint32_t kRounds = share_of(200000);

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

// One bit at a time: cleared, then set.
uint16_t model_apply(BitChange change, uint16_t word)
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
        const BitChange change{draw(), draw()};
        const uint16_t word = draw();
        ASSERT_EQ(bitChange_apply(change, word), model_apply(change, word))
            << std::hex << change.clear << ' ' << change.set << ' ' << word;
    }
}

TEST_F(FpgaDevice, AJoinedChangeIsTheFirstAndThenTheSecond)
{
    for (uint32_t round = 0; round < kRounds; ++round) {
        const BitChange first{draw(), draw()};
        const BitChange second{draw(), draw()};
        const uint16_t word = draw();
        ASSERT_EQ(bitChange_apply(bitChange_join(first, second), word),
                  model_apply(second, model_apply(first, word)));
    }
    const BitChange joined = bitChange_join(bits_set(0x00F0, true), bits_set(0x0030, false));
    EXPECT_EQ(bitChange_apply(joined, 0x0000), 0x00C0);
    EXPECT_EQ(bitChange_apply(joined, 0xFFFF), 0xFFCF);
}

TEST_F(FpgaDevice, BitsAreSetOrClearedAllTogether)
{
    for_every_word([](uint16_t word) {
        ASSERT_EQ(bitChange_apply(bits_set(0x8142, true), word), word | 0x8142);
        ASSERT_EQ(bitChange_apply(bits_set(0x8142, false), word), word & 0x7EBD);
    });
}

TEST_F(FpgaDevice, AFieldIsReplacedByTheBitsThatFitIt)
{
    for (const uint16_t value : Words{0x0000, 0x1000, 0x2000, 0x3000, 0xFFFF, 0x4FFF}) {
        for_every_word([value](uint16_t word) {
            ASSERT_EQ(bitChange_apply(field_set(0x3000, value), word),
                      (word & 0xCFFF) + (value & 0x3000));
        });
    }
}

// Flags -------------------------------------------------------------------------------------

constexpr FlagField kFields[] = {{3, 0x0040}, {0, 0x8000}, {2, 0x0001}};

TEST_F(FpgaDevice, FlagsChangeTheBitsThatTheMaskSelects)
{
    constexpr uint16_t kBits[] = {0x0040, 0x8000, 0x0001}; // of field 0, 1, 2
    constexpr size_t kPlaces[] = {3, 0, 2};
    for (unsigned mask = 0; mask <= 0xFF; ++mask) {
        for (const uint8_t value : std::initializer_list<uint8_t>{0, 1, 2, 255}) {
            for (unsigned odd = 0; odd < 3; ++odd) { // the field whose flag differs
                uint8_t flags[5] = {77, 77, 77, 77, 77};
                for (unsigned field = 0; field < 3; ++field) {
                    flags[kPlaces[field]] = field == odd ? value : 1;
                }
                uint16_t expected_set = 0;
                uint16_t expected_clear = 0;
                for (unsigned field = 0; field < 3; ++field) {
                    if (mask == 0 || (mask >> field & 1) == 1) {
                        expected_clear = expected_clear | kBits[field];
                        if (field != odd || value == 1) {
                            expected_set = expected_set | kBits[field];
                        }
                    }
                }
                const BitChange change = flagFields_change(kFields, mask, flags);
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
    const uint8_t flags[4] = {1, 1, 1, 1};
    for (const unsigned mask : {0x08U, 0x80U, 0xF8U, 0x8000U, 0xFFF8U}) {
        const BitChange change = flagFields_change(kFields, mask, flags);
        EXPECT_EQ(change.clear, 0);
        EXPECT_EQ(change.set, 0);
    }
}

TEST_F(FpgaDevice, FlagsAreReportedAsZeroOrOne)
{
    for_every_word([](uint16_t word) {
        uint8_t flags[5] = {77, 77, 77, 77, 77};
        flagFields_extract(kFields, word, flags);
        ASSERT_EQ(flags[3], word >> 6 & 1);
        ASSERT_EQ(flags[0], word >> 15);
        ASSERT_EQ(flags[2], word % 2);
        ASSERT_EQ(flags[1], 77);
        ASSERT_EQ(flags[4], 77);
    });
}

// Open, work, close -------------------------------------------------------------------------

TEST_F(FpgaDevice, ReturnsTheWorksStatusAndCloses)
{
    for (const int32_t status : {0, 1, 255, -1, -2, -5, INT32_MIN, INT32_MAX}) {
        board.restart();
        EXPECT_EQ(fpga_run(FpgaAccess::kRead,
                           [&](Fpga fpga) {
                               EXPECT_GE(fpga.descriptor, 0);
                               EXPECT_EQ(board.open_descriptors(), 1U);
                               return status;
                           }),
                  status);
        EXPECT_EQ(board.calls, (Trace{"open /dev/fpga O_RDONLY|O_NONBLOCK", "close /dev/fpga"}));
    }
    board.restart();
    EXPECT_EQ(fpga_run(FpgaAccess::kWrite, [](Fpga) { return int32_t{-4}; }), -4);
    EXPECT_EQ(board.calls, (Trace{"open /dev/fpga O_RDWR|O_NONBLOCK", "close /dev/fpga"}));
}

TEST_F(FpgaDevice, DoesNoWorkOnADeviceThatCannotBeOpened)
{
    board.fpga_present = false;
    bool worked = false;
    EXPECT_EQ(fpga_run(FpgaAccess::kWrite,
                       [&](Fpga) {
                           worked = true;
                           return int32_t{0};
                       }),
              -1);
    EXPECT_FALSE(worked);
    EXPECT_EQ(board.calls, (Trace{"open /dev/fpga O_RDWR|O_NONBLOCK"}));
}

TEST_F(FpgaDevice, AValueGoesToTheDriverAsItIs)
{
    for (const uint32_t value : {0U, 1U, 0x8000U, 0xFFFFU, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(command_writeValue(0x6B8E, value), 0);
        EXPECT_EQ(board.fpga.words[0x6B8D], value);
    }
    EXPECT_EQ(board.calls[board.calls.size() - 2], "ioctl 6B8E =FFFFFFFF");
}

// Each helper's course and failures ---------------------------------------------------------

TEST_F(FpgaDevice, RecordsAreReadAndWritten)
{
    uint16_t word = 0;
    prove_helper([&] { word = 0x2211; }, [&] { return command_readRecord(0x6B27, &word); },
                 {opens_to_read(), record_read(0x6B27, hex("11 22")), closes()});
    prove_helper([&] { word = 0x2211; }, [&] { return command_writeRecord(0x6B22, &word); },
                 {opens_to_write(), record_write(0x6B22, hex("11 22")), closes()});
    prove_helper([] {}, [] { return command_writeValue(0x6B04, 0xABCD); },
                 {opens_to_write(), value_write(0x6B04, 0xABCD), closes()});
}

TEST_F(FpgaDevice, WordsAreReadIntoAClearedWord)
{
    uint16_t word = 0;
    const auto prepare = [&] {
        board.fpga.words[0x6B2D] = 0x1234;
        word = 0xFFFF;
    };
    prove_helper(prepare, [&] { return command_readWord(0x6B2D, word); },
                 {opens_to_read(), word_read(0x6B2D), closes()});
    prove_helper(prepare,
                 [&] {
                     return fpga_run(FpgaAccess::kRead,
                                     [&](Fpga fpga) { return word_read(fpga, 0x6B2D, word); });
                 },
                 {opens_to_read(), word_read(0x6B2D), closes()});
    EXPECT_EQ(word, 0x1234);
}

TEST_F(FpgaDevice, AChangedWordIsReadAndWrittenOnOneDescriptor)
{
    prove_helper([this] { board.fpga.words[0x6B2D] = 0x0FF0; },
                 [] {
                     return command_changeWord(kGroupFlagWord, {0x00FF, 0x0005});
                 },
                 {opens_to_write(), word_read(0x6B2D), value_write(0x6B2E, 0x0F05), closes()});
}

TEST_F(FpgaDevice, RegistersAreReadWithAClearedValue)
{
    uint16_t value = 0;
    const auto prepare = [&] {
        board.fpga.registers[0x0158] = 0x1234;
        board.fpga.register_high = 0xBEEF;
        value = 0xFFFF;
    };
    prove_helper(prepare, [&] { return command_readRegister(0x0158, value); },
                 {opens_to_read(), register_read(0x0158), closes()});
    EXPECT_EQ(value, 0x1234);
}

TEST_F(FpgaDevice, AWrittenRegisterLeavesTheHighHalfZero)
{
    prove_helper([] {}, [] { return command_writeRegister(0x89ABCDEF, 0xFEDC); },
                 {opens_to_write(), register_write(0x89ABCDEF, 0x0000FEDC), closes()});
    EXPECT_EQ(board.fpga.registers[0x89ABCDEF], 0xFEDC);
}

TEST_F(FpgaDevice, AChangedRegisterIsWrittenWithTheHighHalfThatWasRead)
{
    prove_helper(
        [this] {
            board.fpga.registers[0x0044] = 0x8001;
            board.fpga.register_high = 0xCAFE;
        },
        [] {
            return command_changeRegister(0x0044, {0x0001, 0x0010});
        },
        {opens_to_write(), register_read(0x0044), register_write(0x0044, 0xCAFE8010), closes()});
}

TEST_F(FpgaDevice, EveryHighHalfOfARegisterIsKept)
{
    for (uint32_t high = 0; high <= UINT16_MAX; high = wordTried_after(high)) {
        board.fpga.registers[0x0044] = static_cast<uint16_t>(~high);
        board.fpga.register_high = static_cast<uint16_t>(high);
        board.restart();
        ASSERT_EQ(command_changeRegister(0x0044, bits_set(0x0180, true)), 0);
        ASSERT_EQ(board.calls.size(), 4U);
        ASSERT_EQ(board.calls[2],
                  register_write(0x0044, high << 16 | (~high & 0xFFFF) | 0x0180).call);
    }
}

TEST_F(FpgaDevice, NothingIsStoredWhenTheReadFails)
{
    board.fpga.results[0x6B42] = -1;
    board.fpga.results[0x6B2D] = -1;
    uint16_t value = 0x5A5A;
    uint8_t flag = 0x5A;
    EXPECT_EQ(command_readRegister(0x0044, value), -2);
    EXPECT_EQ(command_readWord(0x6B2D, value), -2);
    EXPECT_EQ(registerFlag_read(0x0044, 0xFFFF, &value), -2);
    EXPECT_EQ(wordFlag_read(0x6B2D, 0xFFFF, &flag), -2);
    EXPECT_EQ(value, 0x5A5A);
    EXPECT_EQ(flag, 0x5A);
    board.fpga_present = false;
    EXPECT_EQ(command_readRegister(0x0044, value), -1);
    EXPECT_EQ(command_readWord(0x6B2D, value), -1);
    EXPECT_EQ(registerFlag_read(0x0044, 0xFFFF, &value), -1);
    EXPECT_EQ(wordFlag_read(0x6B2D, 0xFFFF, &flag), -1);
    EXPECT_EQ(value, 0x5A5A);
    EXPECT_EQ(flag, 0x5A);
}

TEST_F(FpgaDevice, ABitFlagIsOneWhenAnyOfItsBitsIsSet)
{
    for_every_word([this](uint16_t word) {
        board.fpga.words[0x6B2D] = word;
        board.fpga.registers[0x0044] = word;
        uint8_t byte = 0x5A;
        uint16_t wide = 0x5A5A;
        ASSERT_EQ(wordFlag_read(0x6B2D, 0x8100, &byte), 0);
        ASSERT_EQ(registerFlag_read(0x0044, 0x0018, &wide), 0);
        ASSERT_EQ(byte, (word >> 15) + (word >> 8 & 1) > 0 ? 1 : 0);
        ASSERT_EQ(wide, word % 32 >= 8 ? 1 : 0);
    });
}

// Results of the driver that are not negative are successes.
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

TEST_F(FpgaDevice, APositiveResultOfTheDriverIsSuccess)
{
    for (const uint32_t request : {0x6B42U, 0x6B43U, 0x6B2DU, 0x6B2EU, 0x6B22U}) {
        board.fpga.results[request] = 1;
    }
    uint16_t word = 0;
    EXPECT_EQ(command_changeRegister(0x0044, bits_set(1, true)), 0);
    EXPECT_EQ(command_changeWord(kGroupFlagWord, bits_set(1, true)), 0);
    EXPECT_EQ(command_writeRecord(0x6B22, &word), 0);
    EXPECT_EQ(command_readWord(0x6B2D, word), 0);
    EXPECT_EQ(word, 1);
}

} // namespace
