// What the tests of the inhibit as a life start from.
#pragma once

#include "device/led_panel_words.h"

constexpr const char* kUserLog = "/conf/user.log";
constexpr uint8_t kMirrorPort = 4;
constexpr DeviceCommandCode kRestore = WR_LED_RESTORE;

struct Command {
    DeviceCommandCode code;
    Bytes record;
};

class InhibitTest : public LedTest
{
  protected:
    void SetUp() override
    {
        board.fpga.words[kOwnIdentifier] = 12;
        board.file_put(kUserLog, Bytes(16, '\0'));
    }

    void run(const std::vector<Command>& commands)
    {
        for (const Command& command : commands) {
            const int32_t result = command_run(command.code, Bytes(command.record));
            EXPECT_TRUE(result == 0 || result == 1) << command.code << ": " << result;
        }
    }

    // The panel after the commands alone, and after a pattern, the commands and the restore.
    PanelWords without_pattern(const PanelWords& words, const std::vector<Command>& commands)
    {
        panel_put(board, words);
        run(commands);
        return panel_get(board);
    }
    PanelWords with_pattern(const PanelWords& words, const std::vector<Command>& commands,
                            const PatternBits& pattern = kPattern1)
    {
        panel_put(board, words);
        run({{pattern.command, ""}});
        run(commands);
        run({{kRestore, ""}});
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

// A record that is 0 but for some bytes.
inline Bytes record_of(std::initializer_list<std::pair<size_t, int>> bytes)
{
    Bytes record(44, '\0');
    for (const auto& [byte, value] : bytes) {
        record[byte] = static_cast<char>(value);
    }
    return record;
}
