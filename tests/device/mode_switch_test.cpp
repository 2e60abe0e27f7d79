// The mode switch, whose bits stand in three places.
#include <ostream>

#include "device/command_test.h"

namespace
{

struct Places {
    uint16_t word;
    uint16_t reg114;
    uint16_t reg158;
    bool operator==(const Places& other) const = default;
};

std::ostream& operator<<(std::ostream& out, const Places& places)
{
    return out << hex_number(places.word) << " " << hex_number(places.reg114) << " "
               << hex_number(places.reg158);
}

// The mode's bits in their three places, all others clear.
constexpr Places kOn{0x0000, 0x0007, 0x0005};
constexpr Places kOff{0x0003, 0x0000, 0x0000};

class ModeSwitch : public CommandTest
{
  protected:
    void place(Places places)
    {
        board.fpga.words[0x6B2D] = places.word;
        board.fpga.registers[0x114] = places.reg114;
        board.fpga.registers[0x158] = places.reg158;
    }

    Places places()
    {
        return {static_cast<uint16_t>(board.fpga.words[0x6B2D]), board.fpga.registers[0x114],
                board.fpga.registers[0x158]};
    }

    void expect_mode(uint32_t mode)
    {
        EXPECT_EQ(run(RD_MODE_SWITCH, untouched(2)), 0) << places();
        EXPECT_EQ(record(), le16(mode)) << places();
    }

    void mode_write(uint32_t mode, int32_t result = 0)
    {
        expect_run(WR_MODE_SWITCH, le16(mode), result, le16(mode));
    }
};

TEST_F(ModeSwitch, ReadsWordAndRegistersInOrder)
{
    board.fpga.register_high = 0xCAFE;
    place(kOn);
    prove_record(
        RD_MODE_SWITCH, untouched(2),
        {opens_to_read(), word_read(0x6B2D), register_read(0x114), register_read(0x158), closes()},
        le16(1));
    expect_kept(RD_MODE_SWITCH, untouched(2));
}

TEST_F(ModeSwitch, OneOnlyWhenAllSevenBitsAgree)
{
    for (const uint16_t high : {uint16_t{0}, uint16_t{0xFFFF}}) {
        board.fpga.register_high = high;
        for (const bool others : {false, true}) {
            for (unsigned bits = 0; bits < 128; ++bits) {
                // Bits 0, 1 of the word, 0, 1, 2 of register 0x114, 0 and 2 of register 0x158.
                const unsigned word = bits & 3U;
                const unsigned reg114 = bits >> 2 & 7U;
                const unsigned reg158 = (bits >> 5 & 1U) | (bits >> 6 & 1U) << 2;
                place({static_cast<uint16_t>((others ? 0xFFFCU : 0) | word),
                       static_cast<uint16_t>((others ? 0xFFF8U : 0) | reg114),
                       static_cast<uint16_t>((others ? 0xFFFAU : 0) | reg158)});
                expect_mode(bits == 0b1111100 ? 1U : 0U);
            }
        }
    }
}

TEST_F(ModeSwitch, ReportsEveryValueOfTheWordAndOfEachRegister)
{
    for_every_word([this](uint16_t value) {
        place({value, kOn.reg114, kOn.reg158});
        expect_mode((value & 0x0003) == 0 ? 1U : 0U);
        place({kOn.word, value, kOn.reg158});
        expect_mode((value & 0x0007) == 0x0007 ? 1U : 0U);
        place({kOn.word, kOn.reg114, value});
        expect_mode((value & 0x0005) == 0x0005 ? 1U : 0U);
    });
}

TEST_F(ModeSwitch, WritesWordAndRegistersInOrder)
{
    board.fpga.register_high = 0xCAFE;
    const struct {
        uint32_t mode;
        Places before;
        Places after;
    } cases[] = {{1, {0xFFFF, 0x1230, 0x5678}, {0xFFFC, 0x1237, 0x567D}},
                 {0, {0x4500, 0xFFFF, 0xFFFF}, {0x4503, 0xFFF8, 0xFFFA}}};
    for (const auto& [mode, before, after] : cases) {
        device_put = [this, before = before] { place(before); };
        prove_record(WR_MODE_SWITCH, le16(mode),
                     {opens_to_write(), word_read(0x6B2D), register_read(0x114),
                      register_read(0x158), value_write(0x6B2E, after.word),
                      register_write(0x114, 0xCAFE0000U | after.reg114),
                      register_write(0x158, 0xCAFE0000U | after.reg158), closes()},
                     le16(mode));
    }
}

TEST_F(ModeSwitch, WritesItsBitsAloneForEveryValueOfTheWordAndOfEachRegister)
{
    for_every_word([this](uint16_t value) {
        const auto other = static_cast<uint16_t>(value * 40503U); // another in each place
        const auto third = static_cast<uint16_t>(~value);
        place({value, other, third});
        mode_write(1);
        EXPECT_EQ(places(), (Places{static_cast<uint16_t>(value & 0xFFFC),
                                    static_cast<uint16_t>(other | 0x0007),
                                    static_cast<uint16_t>(third | 0x0005)}))
            << hex_number(value);
        place({value, other, third});
        mode_write(0);
        EXPECT_EQ(places(), (Places{static_cast<uint16_t>(value | 0x0003),
                                    static_cast<uint16_t>(other & 0xFFF8),
                                    static_cast<uint16_t>(third & 0xFFFA)}))
            << hex_number(value);
    });
}

TEST_F(ModeSwitch, OneAloneSwitchesOnAndIsReadBack)
{
    for_every_word([this](uint16_t mode) {
        place(kOff);
        mode_write(mode);
        expect_mode(mode == 1 ? 1U : 0U);
        place(kOn);
        mode_write(mode);
        expect_mode(mode == 1 ? 1U : 0U);
    });
}

TEST_F(ModeSwitch, FailedWriteKeepsTheEarlierOnes)
{
    const struct {
        size_t call; // open 1, reads 2..4, writes 5..7
        int32_t result;
        Places after;
    } cases[] = {{1, -1, kOff},
                 {2, -2, kOff},
                 {3, -2, kOff},
                 {4, -2, kOff},
                 {5, -4, kOff},
                 {6, -4, {0x0000, 0x0000, 0x0000}},
                 {7, -4, {0x0000, 0x0007, 0x0000}}};
    for (const auto& [call, result, after] : cases) {
        SCOPED_TRACE(call);
        place(kOff);
        board.restart();
        fail_in_both_runs(call, call == 1 ? 0 : 1);
        mode_write(1, result);
        EXPECT_EQ(places(), after);
    }
}

} // namespace
