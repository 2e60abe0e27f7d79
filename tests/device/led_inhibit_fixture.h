// What the tests of the inhibit as a life start from.
#pragma once

#include "device/led_panel_words.h"

constexpr uint16_t kOwn = 12; // the own unit's identifier

// A command as a test plans it.
struct Command {
    DeviceCommandCode code;
    Bytes record;
};

// A record that is 0 but for some bytes.
inline Bytes record_of(std::initializer_list<std::pair<size_t, int>> bytes)
{
    Bytes record = zeros(44);
    for (const auto& [byte, value] : bytes) {
        record[byte] = static_cast<char>(value);
    }
    return record;
}

class InhibitTest : public LedTest
{
  protected:
    void SetUp() override
    {
        board.fpga.words[kOwnIdentifier] = kOwn;
        board.file_put(kUserLog, zeros(16));
    }

    void run_all(const std::vector<Command>& commands)
    {
        for (const auto& [code, record] : commands) {
            const int32_t result = run(code, record);
            EXPECT_TRUE(result == 0 || result == 1) << command_name(code) << ": " << result;
        }
    }

    // The panel after the commands alone, and after a pattern, the commands and the restore.
    PanelWords without_pattern(const PanelWords& words, const std::vector<Command>& commands)
    {
        panel_put(board, words);
        run_all(commands);
        return panel_get(board);
    }
    PanelWords with_pattern(const PanelWords& words, const std::vector<Command>& commands,
                            const PatternBits& pattern = kPattern1)
    {
        panel_put(board, words);
        run_all({{pattern.command, ""}});
        run_all(commands);
        run_all({{WR_LED_RESTORE, zeros(44)}});
        EXPECT_FALSE(board.file_exists(kLedFile));
        return panel_get(board);
    }

    // The codes in the user log, in order.
    [[nodiscard]] std::vector<int> events() const
    {
        const Bytes log = board.file_get(kUserLog);
        std::vector<int> codes;
        for (size_t at = 16; at + 16 <= log.size(); at += 16) {
            codes.push_back(static_cast<uint8_t>(log[at + 8]) +
                            256 * static_cast<uint8_t>(log[at + 9]));
        }
        return codes;
    }
};
