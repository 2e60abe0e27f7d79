// The inhibit and all commands that meet it, against a model of them: random lives, step by step.
#include "device/led_inhibit_fixture.h"

namespace
{

struct Model {
    PanelWords words;
    bool inhibited = false;
    Bytes held;
    std::array<bool, 3> mirror{}; // bytes 4, 3, 2 of the switch port
    std::vector<int> events;

    bool record(DeviceCommandCode code, const Bytes& from)
    {
        if (!inhibited || is_line(code)) {
            return false;
        }
        held = with_recorded(held, code, from);
        return true;
    }

    // Word B without the group's elements, and ledA's new value or 0.
    uint8_t alert_set(const Bytes& from)
    {
        const unsigned shown = (words.b >> 12) & 3U; // 3: both bits, 2: the high one
        const bool on = (words.b & 0x80) != 0;
        const bool complete = from[16] == 1 && from[17] == 1;
        uint8_t ledA = 0;
        if (from[15] == 0 || (complete && on)) {
            if (from[15] != 0) {
                events.push_back(256);
            }
            words.b &= 0xFF7F;
            ledA = shown >= 2 ? 2 : 0;
        } else if (!complete && !on) {
            events.push_back(257);
            words.b |= 0x0080;
            ledA = shown != 0 ? 3 : 0;
        }
        if (ledA != 0 && !record(WR_LED_A, record_of({{8, ledA}}))) {
            words.b = ledA_word(words.b, ledA);
        }
        return ledA;
    }

    int32_t set(const Command& command)
    {
        const Bytes& from = command.record;
        const bool recorded = record(command.code, from);
        if (command.code == WR_LED_GROUP_1) {
            const uint16_t before = words.b;
            const uint8_t ledA = alert_set(from);
            if (recorded) {
                words.b = before;
                return 1;
            }
            if (ledA != 0) {
                words.word03 =
                    static_cast<uint16_t>((words.word03 & ~0x40) | (ledA == 3 ? 0x40 : 0));
            }
        }
        if (recorded) {
            return 1;
        }
        if (command.code == WR_LED_A) {
            words.b = ledA_word(words.b, static_cast<uint8_t>(from[8]));
            words.b = static_cast<uint16_t>(from[8] == 2 ? words.b & ~0x80 : words.b);
        }
        for (const Indicator& indicator : kIndicators) {
            if (indicator.command == command.code) {
                uint16_t& word = words.*indicator.panel.word;
                word = indicator_word(indicator, word, static_cast<uint8_t>(from[indicator.byte]));
            }
        }
        for (const Group& group : kGroups) {
            if (group.command == command.code) {
                uint16_t& word = words.*group.panel.word;
                word = group_word(group, word, from);
            }
        }
        for (unsigned n = 0; command.code == WR_LED_GROUP_7 && n < 3; ++n) {
            if (selects(static_cast<uint8_t>(from[40]), n)) {
                mirror.at(n) = from[41 + n] == 1;
            }
        }
        return 0;
    }

    void show(const PatternBits& pattern)
    {
        if (!inhibited) {
            inhibited = true;
            held = snapshot_of(kOwn, words);
        }
        words = shown(pattern, words);
    }

    void restore()
    {
        words = inhibited ? restored(held, words) : words;
        inhibited = false;
    }

    [[nodiscard]] Bytes port() const
    {
        return hex("04 00") +
               Bytes{static_cast<char>(mirror[2]), static_cast<char>(mirror[1]),
                     static_cast<char>(mirror[0])} +
               zeros(3);
    }
};

Command any_command(std::mt19937& random)
{
    constexpr std::array<DeviceCommandCode, 13> kCodes{
        WR_LED_A,       WR_LED_B,       WR_LED_C,       WR_LED_D,       WR_LED_E,
        WR_LINE_MODE,   WR_LINE_FLAGS,  WR_LED_GROUP_1, WR_LED_GROUP_3, WR_LED_GROUP_4,
        WR_LED_GROUP_5, WR_LED_GROUP_6, WR_LED_GROUP_7};
    Command command{kCodes.at(random() % kCodes.size()), zeros(44)};
    for (char& byte : command.record) {
        byte = static_cast<char>(random() % 5 == 0 ? random() : random() % 4);
    }
    return command;
}

class InhibitModel : public InhibitTest
{
};

TEST_F(InhibitModel, IsFollowedThroughRandomLives)
{
    std::mt19937 random(73);
    for (int life = 0; life < 60 && !HasFailure(); ++life) {
        board.file_put(kUserLog, zeros(16));
        board.file_remove(kLedFile);
        Model model;
        model.words = panel_random(random);
        panel_put(board, model.words);
        board.fpga.switch_ports[kMirrorPort] = model.port();
        for (int step = 0; step < 60; ++step) {
            SCOPED_TRACE("life " + std::to_string(life) + " step " + std::to_string(step));
            const auto kind = random() % 10;
            if (kind == 0) {
                const PatternBits& pattern = kPatterns.at(random() % 3);
                ASSERT_EQ(run(pattern.command, ""), 0);
                model.show(pattern);
            } else if (kind == 1) {
                const Bytes before(44, '\x5A');
                expect_run(WR_LED_RESTORE, before, 0, model.inhibited ? model.held : before);
                model.restore();
            } else {
                const Command command = any_command(random);
                expect_run(command.code, command.record, model.set(command), command.record);
            }
            ASSERT_FALSE(HasFailure());
            ASSERT_EQ(panel_get(board), model.words);
            ASSERT_EQ(board.file_exists(kLedFile), model.inhibited);
            if (model.inhibited) {
                ASSERT_EQ(board.file_get(kLedFile), model.held);
            }
            ASSERT_EQ(board.fpga.switch_ports[kMirrorPort], model.port());
            ASSERT_EQ(events(), model.events);
        }
    }
}

} // namespace
