// The setters of single indicators: WR_LED_A to WR_LED_E and the line mode, which is indicator F.
#include "device/led_setter_fixture.h"

namespace
{

constexpr uint16_t kWords[] = {0x0000, 0xFFFF, 0x1234, 0x5555, 0xAAAA};

// Three-state indicators --------------------------------------------------------------------

struct Indicator {
    const char* name;
    DeviceCommandCode command;
    size_t byte;
    uint32_t read;
    uint32_t write;
    uint16_t low;
    uint16_t high;
    int32_t write_failure;
    bool asks_for_inhibit;
};

constexpr Indicator kIndicators[] = {
    {"LedE", 19, 12, 0x6B4F, 0x6B50, 0x0040, 0x0080, -4, true},
    {"LedB", 21, 9, 0x6B11, 0x6B12, 0x0400, 0x0800, -4, true},
    {"LedD", 23, 11, 0x6B4F, 0x6B50, 0x0100, 0x0200, -4, true},
    {"LedC", 25, 10, 0x6B11, 0x6B12, 0x0100, 0x0200, -1, true},
    {"LineMode", 27, 13, 0x6B4F, 0x6B50, 0x0010, 0x0020, -4, false},
};

uint32_t word_after(const Indicator& indicator, uint32_t word, unsigned value)
{
    if (value == 2) {
        return word | indicator.high;
    }
    const uint32_t rest = word & ~(uint32_t{indicator.low} | indicator.high);
    return value == 1 ? rest | indicator.low : rest;
}

class ThreeState : public LedSetterTest, public testing::WithParamInterface<Indicator>
{
  protected:
    void expect_word(uint16_t word, unsigned value)
    {
        board.fpga.words[indicator.read] = word;
        record.put(indicator.byte, value);
        EXPECT_EQ(run(indicator.command), 0);
        EXPECT_EQ(board.fpga.words[indicator.read], word_after(indicator, word, value))
            << std::hex << word << " value " << value;
    }

    const Indicator& indicator = GetParam();
};

INSTANTIATE_TEST_SUITE_P(Led, ThreeState, testing::ValuesIn(kIndicators),
                         [](const auto& row) { return row.param.name; });

TEST_P(ThreeState, ReadsTheRegisterChangesItsPairAndWritesItBack)
{
    const struct {
        unsigned value;
        uint16_t before;
        uint32_t after;
    } runs[] = {{1, 0xFFFF, 0xFFFFU & ~uint32_t{indicator.high}},
                {2, 0x0000, indicator.high},
                {0, 0xFFFF, 0xFFFFU & ~(uint32_t{indicator.low} | indicator.high)}};
    for (const auto& [value, before, after] : runs) {
        const Course panel =
            changes_word(indicator.read, indicator.write, after, indicator.write_failure);
        prove(
            indicator.command,
            [this, value = value, before = before] {
                board.fpga.words[indicator.read] = before;
                record.put(indicator.byte, value);
                return record.pointer();
            },
            indicator.asks_for_inhibit ? without_inhibit(panel) : panel);
    }
    EXPECT_FALSE(board.file_exists(kLedFile));
}

TEST_P(ThreeState, SetsItsPairAloneInEveryRegisterValue)
{
    for_every_word([this](uint16_t word) {
        for (const unsigned value : {0U, 1U, 2U, 3U, 255U}) {
            if (indicator.asks_for_inhibit) {
                files_fail();
            }
            expect_word(word, value);
        }
    });
}

TEST_P(ThreeState, TakesEveryOtherValueForOff)
{
    board.recording = false;
    for (const uint16_t word : kWords) {
        for (unsigned value = 0; value < 256; ++value) {
            expect_word(word, value);
        }
    }
    board.recording = true;
}

TEST_P(ThreeState, ReadsItsOwnByteAloneAndChangesNothingOfTheRecord)
{
    for (const unsigned others : {0U, 1U, 2U, 0xA5U}) {
        for (const unsigned value : {0U, 1U, 2U}) {
            record_fill(others);
            record.put(indicator.byte, value);
            const Bytes before = record.bytes();
            expect_word(0x5A5A, value);
            EXPECT_EQ(record.bytes(), before);
        }
    }
}

TEST_P(ThreeState, KeepsTheRegisterWhenADeviceCallFails)
{
    const size_t first = indicator.asks_for_inhibit ? kNotInhibited.size() : 0;
    const int32_t failures[] = {-1, -2, indicator.write_failure};
    for (size_t failing = 0; failing < 3; ++failing) {
        board.fpga.words[indicator.read] = 0xFFFF;
        record.put(indicator.byte, 0);
        board.restart();
        fail_in_both_runs(first + failing + 1, failing == 0 ? 0 : 1);
        EXPECT_EQ(run(indicator.command), failures[failing]);
        EXPECT_EQ(board.fpga.words[indicator.read], 0xFFFFU);
    }
}

TEST_F(LedSetterTest, LedETwoKeepsTheLowBitAndSevenClearsBoth)
{
    board.fpga.words[0x6B4F] = 0x0040;
    record.put(12, 2);
    EXPECT_EQ(run(WR_LED_E), 0);
    EXPECT_EQ(board.fpga.words[0x6B4F], 0x00C0U);
    record.put(12, 7);
    EXPECT_EQ(run(WR_LED_E), 0);
    EXPECT_EQ(board.fpga.words[0x6B4F], 0x0000U);
}

// The four-state indicator ledA -------------------------------------------------------------

uint32_t ledA_after(uint32_t word, unsigned value)
{
    switch (value) {
    case 1:
        return (word & 0xCFFFU) | 0x1000U;
    case 2:
        return (word & 0xCF7FU) | 0x3000U; // and the alert bit
    case 3:
        return (word & 0xCFFFU) | 0x2000U;
    default:
        return word & 0xCFFFU;
    }
}

class LedA : public LedSetterTest
{
  protected:
    void expect_word(uint16_t word, unsigned value)
    {
        board.fpga.words[0x6B11] = word;
        record.put(8, value);
        EXPECT_EQ(run(17), 0);
        EXPECT_EQ(board.fpga.words[0x6B11], ledA_after(word, value))
            << std::hex << word << " value " << value;
    }
};

TEST_F(LedA, ReadsTheRegisterChangesItsPairAndWritesItBack)
{
    const struct {
        unsigned value;
        uint16_t before;
        uint32_t after;
    } runs[] = {
        {0, 0xFFFF, 0xCFFF}, {1, 0xFFFF, 0xDFFF}, {1, 0x0000, 0x1000},
        {2, 0xFFFF, 0xFF7F}, {2, 0x0000, 0x3000}, {3, 0xFFFF, 0xEFFF},
        {3, 0x0000, 0x2000}, {4, 0xFFFF, 0xCFFF}, {255, 0xFFFF, 0xCFFF},
    };
    for (const auto& [value, before, after] : runs) {
        prove(
            WR_LED_A,
            [this, value = value, before = before] {
                board.fpga.words[0x6B11] = before;
                record.put(8, value);
                return record.pointer();
            },
            without_inhibit(changes_word(0x6B11, 0x6B12, after)));
    }
    EXPECT_FALSE(board.file_exists(kLedFile));
}

TEST_F(LedA, SetsItsPairAloneInEveryRegisterValueButForTheAlertBitThatTwoClears)
{
    for_every_word([this](uint16_t word) {
        for (const unsigned value : {0U, 1U, 2U, 3U, 255U}) {
            files_fail();
            expect_word(word, value);
        }
    });
}

TEST_F(LedA, TakesEveryOtherValueForOff)
{
    board.recording = false;
    for (const uint16_t word : kWords) {
        for (unsigned value = 0; value < 256; ++value) {
            expect_word(word, value);
        }
    }
    board.recording = true;
}

TEST_F(LedA, ClearsTheAlertBitWithTwoAndNotWithThree)
{
    board.fpga.words[0x6B11] = 0x0080;
    record.put(8, 3);
    EXPECT_EQ(run(WR_LED_A), 0);
    EXPECT_EQ(board.fpga.words[0x6B11], 0x2080U);
    record.put(8, 2);
    EXPECT_EQ(run(WR_LED_A), 0);
    EXPECT_EQ(board.fpga.words[0x6B11], 0x3000U);
}

TEST_F(LedA, ReadsItsOwnByteAloneAndChangesNothingOfTheRecord)
{
    for (const unsigned others : {0U, 1U, 2U, 3U, 0xA5U}) {
        for (const unsigned value : {0U, 1U, 2U, 3U}) {
            record_fill(others);
            record.put(8, value);
            const Bytes before = record.bytes();
            expect_word(0x5A5A, value);
            EXPECT_EQ(record.bytes(), before);
        }
    }
}

} // namespace
