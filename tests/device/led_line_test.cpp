// The line mode and the line flags, which stand in the line control word.
#include "device/command_test.h"

namespace
{

constexpr const char* kStateFile = "/tmp/led_rewrite_inh";

class LedLine : public CommandTest
{
  protected:
    // A setter's record, in which all that must not count is the same.
    static Bytes mode_of(unsigned mode, char others = '\xA5')
    {
        Bytes record(44, others);
        record[13] = static_cast<char>(mode);
        return record;
    }

    static Bytes flags_of(unsigned mask, unsigned first, unsigned second, unsigned third,
                          char others = '\1')
    {
        return Bytes(18, others) + byte(mask) + byte(first) + byte(second) + byte(third) +
               Bytes(22, others);
    }

    // Runs a setter over a word; the record stays.
    void expect_set(DeviceCommandCode command, const Bytes& start, uint32_t before, uint32_t after)
    {
        word = before;
        expect_run(command, start, 0, start);
        EXPECT_EQ(word, after) << command_name(command) << " into " << hex_number(before) << " of "
                               << testing::PrintToString(start);
    }

    uint32_t& word = board.fpga.words[0x6B4F];
};

TEST_F(LedLine, IsWrittenByReadingItsWordFirstAndNeverDeferred)
{
    board.file_put(kStateFile, zeros(44));
    const struct {
        DeviceCommandCode command;
        Bytes record;
        uint32_t before;
        uint32_t after;
    } rows[] = {{WR_LINE_MODE, mode_of(1), 0xFFFF, 0xFFDF},
                {WR_LINE_MODE, mode_of(2), 0x0000, 0x0020},
                {WR_LINE_FLAGS, flags_of(0x06, 0, 1, 0), 0xFFFA, 0xFFF9},
                {WR_LINE_FLAGS, Bytes(44, '\1'), 0x0020, 0x0024}};
    for (const auto& [command, start, before, after] : rows) {
        device_put = [this, before = before] { word = before; };
        prove_record(command, start,
                     {opens_to_write(), word_read(0x6B4F), value_write(0x6B50, after), closes()},
                     start);
    }
    EXPECT_EQ(board.file_get(kStateFile), zeros(44));
}

TEST_F(LedLine, ModeIsSetInEveryWord)
{
    for_every_word([this](uint16_t held) {
        const uint32_t neither = held & 0xFFCFU;
        expect_set(WR_LINE_MODE, mode_of(0), held, neither);
        expect_set(WR_LINE_MODE, mode_of(1), held, neither | 0x10U);
        expect_set(WR_LINE_MODE, mode_of(2), held, held | 0x20U); // bit 4 stays
        expect_set(WR_LINE_MODE, mode_of(3), held, neither);
        expect_set(WR_LINE_MODE, mode_of(255), held, neither);
    });
}

TEST_F(LedLine, EveryOtherModeClearsBothBits)
{
    for (unsigned mode = 0; mode < 256; ++mode) {
        if (mode != 1 && mode != 2) {
            expect_set(WR_LINE_MODE, mode_of(mode), 0xFFFF, 0xFFCF);
        }
    }
}

TEST_F(LedLine, ModeIsByte13Alone)
{
    for (const char others : {'\0', '\1', '\2'}) {
        expect_set(WR_LINE_MODE, mode_of(1, others), 0, 0x0010);
    }
}

// A flag's bit in the word, by its bit in the mask.
constexpr uint32_t kFlagBits[] = {0x0004, 0x0001, 0x0002};

uint32_t word_after(uint32_t word, unsigned mask, const std::array<unsigned, 3>& flags)
{
    for (unsigned field = 0; field < 3; ++field) {
        if (mask == 0 || ((mask >> field) & 1U) == 1U) {
            word = flags[field] == 1 ? word | kFlagBits[field] : word & ~kFlagBits[field];
        }
    }
    return word;
}

TEST_F(LedLine, FlagsFollowEveryMask)
{
    constexpr unsigned kValues[] = {0, 1, 2, 255};
    board.recording = false;
    for (unsigned mask = 0; mask < 256; ++mask) {
        for (unsigned choice = 0; choice < 64; ++choice) {
            const std::array<unsigned, 3> flags{kValues[choice & 3U], kValues[(choice >> 2) & 3U],
                                                kValues[choice >> 4]};
            for (const uint32_t held : {0x0000U, 0xFFFFU, 0x1235U}) {
                expect_set(WR_LINE_FLAGS, flags_of(mask, flags[0], flags[1], flags[2]), held,
                           word_after(held, mask, flags));
            }
        }
    }
    board.recording = true;
}

TEST_F(LedLine, FlagsKeepTheOtherBitsOfEveryWord)
{
    for_every_word([this](uint16_t held) {
        for (const unsigned mask : {0U, 1U, 2U, 4U, 7U}) {
            for (const unsigned flag : {0U, 1U}) {
                expect_set(WR_LINE_FLAGS, flags_of(mask, flag, flag, flag, static_cast<char>(flag)),
                           held, word_after(held, mask, {flag, flag, flag}));
            }
        }
    });
}

} // namespace
