// The setters of single indicators: WR_LED_A to WR_LED_E and the line mode, which is indicator F.
#include "device/led_setter_fixture.h"

namespace
{

class OneIndicator : public LedSetterTest, public testing::WithParamInterface<Indicator>
{
  protected:
    [[nodiscard]] bool is_ledA() const { return indicator.command == WR_LED_A; }

    // Of all indicators' values ledA's 2 alone changes a bit of another: it ends the alert.
    [[nodiscard]] uint32_t word_after(uint16_t word, unsigned value) const
    {
        const auto state = static_cast<uint8_t>(value);
        return !is_ledA()   ? indicator_word(indicator, word, state)
               : value == 2 ? ledA_word(word, state) & 0xFF7FU
                            : ledA_word(word, state);
    }

    void expect_word(uint16_t word, unsigned value)
    {
        board.fpga.words[indicator.panel.read] = word;
        put_byte(indicator.byte, value);
        EXPECT_EQ(run(indicator.command), 0);
        const uint32_t after = board.fpga.words[indicator.panel.read];
        EXPECT_TRUE(after == word_after(word, value))
            << hex_number(word) << " value " << value << ": " << hex_number(after);
    }

    const Indicator& indicator = GetParam();
    const int32_t write_failure = indicator.command == WR_LED_C ? -1 : -4;
};

INSTANTIATE_TEST_SUITE_P(Led, OneIndicator, testing::ValuesIn(kIndicators), setter_name<Indicator>);
INSTANTIATE_TEST_SUITE_P(FourStates, OneIndicator, testing::Values(kLedA), setter_name<Indicator>);

// A change by a setter that is typed out.
struct Change {
    unsigned value;
    uint16_t before;
    uint32_t after;
};

TEST_P(OneIndicator, ReadsTheRegisterChangesItsPairAndWritesItBack)
{
    const uint32_t low = indicator.low;
    const uint32_t high = indicator.high;
    const std::vector<Change> three{
        {1, 0xFFFF, 0xFFFF & ~high}, {2, 0x0000, high}, {0, 0xFFFF, 0xFFFF & ~(low | high)}};
    const std::vector<Change> four{{0, 0xFFFF, 0xCFFF}, {1, 0xFFFF, 0xDFFF}, {1, 0x0000, 0x1000},
                                   {2, 0xFFFF, 0xFF7F}, {2, 0x0000, 0x3000}, {3, 0xFFFF, 0xEFFF},
                                   {3, 0x0000, 0x2000}, {4, 0xFFFF, 0xCFFF}, {255, 0xFFFF, 0xCFFF}};
    for (const Change& change : is_ledA() ? four : three) {
        prove(
            indicator.command,
            [&] {
                board.fpga.words[indicator.panel.read] = change.before;
                Bytes record = zeros(44);
                record[indicator.byte] = static_cast<char>(change.value);
                return put(record);
            },
            course_of_setter(indicator.command,
                             changes_word(indicator.panel.read, indicator.panel.write, change.after,
                                          write_failure)));
    }
    EXPECT_FALSE(board.file_exists(kLedFile));
}

TEST_P(OneIndicator, SetsItsPairAloneInEveryRegisterValue)
{
    for_every_word([this](uint16_t word) {
        for (const unsigned value : {0U, 1U, 2U, 3U, 255U}) {
            files_fail(indicator.command);
            expect_word(word, value);
        }
    });
}

TEST_P(OneIndicator, TakesEveryOtherValueForOff)
{
    board.recording = false;
    for (const unsigned word : {0x0000U, 0xFFFFU, 0x1234U, 0x5555U, 0xAAAAU}) {
        for (unsigned value = 0; value < 256; ++value) {
            expect_word(static_cast<uint16_t>(word), value);
        }
    }
    board.recording = true;
}

TEST_P(OneIndicator, ReadsItsOwnByteAloneAndChangesNothingOfTheRecord)
{
    for (const unsigned others : {0U, 1U, 2U, 3U, 0xA5U}) {
        for (const unsigned value : {0U, 1U, 2U, 3U}) {
            record_fill(others);
            put_byte(indicator.byte, value);
            const Bytes before = record();
            expect_word(0x5A5A, value);
            EXPECT_EQ(record(), before);
        }
    }
}

TEST_P(OneIndicator, KeepsTheRegisterWhenADeviceCallFails)
{
    const size_t first = is_line(indicator.command) ? 0 : kNotInhibited.size();
    const int32_t failures[] = {-1, -2, write_failure};
    for (size_t failing = 0; failing < 3; ++failing) {
        board.fpga.words[indicator.panel.read] = 0xFFFF;
        board.restart();
        fail_in_both_runs(first + failing + 1, failing == 0 ? 0 : 1);
        EXPECT_EQ(run(indicator.command, zeros(44)), failures[failing]);
        EXPECT_EQ(board.fpga.words[indicator.panel.read], 0xFFFFU);
    }
}

TEST_F(LedSetterTest, LedETwoKeepsTheLowBitAndSevenClearsBoth)
{
    board.fpga.words[0x6B4F] = 0x0040;
    put_byte(12, 2);
    EXPECT_EQ(run(WR_LED_E), 0);
    EXPECT_EQ(board.fpga.words[0x6B4F], 0x00C0U);
    put_byte(12, 7);
    EXPECT_EQ(run(WR_LED_E), 0);
    EXPECT_EQ(board.fpga.words[0x6B4F], 0x0000U);
}

TEST_F(LedSetterTest, LedAClearsTheAlertBitWithTwoAndNotWithThree)
{
    board.fpga.words[0x6B11] = 0x0080;
    put_byte(8, 3);
    EXPECT_EQ(run(WR_LED_A), 0);
    EXPECT_EQ(board.fpga.words[0x6B11], 0x2080U);
    put_byte(8, 2);
    EXPECT_EQ(run(WR_LED_A), 0);
    EXPECT_EQ(board.fpga.words[0x6B11], 0x3000U);
}

} // namespace
