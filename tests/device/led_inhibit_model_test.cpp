// The inhibit and all commands that meet it, against a model of them: random lives, step by step.
#include "device/led_inhibit_test.h"

namespace
{

void bit_put(uint16_t& word, unsigned bit, bool on)
{
    word = static_cast<uint16_t>(on ? word | bit : word & ~bit);
}

// The element that each bit of a group's mask picks, by the group's mask byte.
struct GroupRow {
    DeviceCommandCode code;
    size_t mask;
    std::array<size_t, 3> bytes;
};
constexpr GroupRow kGroupRows[] = {
    {WR_LED_GROUP_1, 14, {15, 16, 17}}, {WR_LINE_FLAGS, 18, {19, 20, 21}},
    {WR_LED_GROUP_3, 24, {25, 26, 27}}, {WR_LED_GROUP_4, 28, {29, 31, 30}},
    {WR_LED_GROUP_5, 32, {33, 35, 34}}, {WR_LED_GROUP_6, 36, {37, 39, 38}},
    {WR_LED_GROUP_7, 40, {41, 42, 43}}};

constexpr std::pair<DeviceCommandCode, size_t> kIndicatorRows[] = {
    {WR_LED_B, 9}, {WR_LED_C, 10}, {WR_LED_D, 11}, {WR_LED_E, 12}, {WR_LINE_MODE, 13}};

struct Model {
    PanelWords words;
    bool inhibited = false;
    Bytes held;
    std::array<bool, 3> mirror{}; // bytes 4, 3, 2 of the switch port
    std::vector<int> events;

    bool record(DeviceCommandCode code, const Bytes& from)
    {
        if (!inhibited || code == WR_LINE_MODE || code == WR_LINE_FLAGS) {
            return false;
        }
        if (code == WR_LED_A) {
            held[8] = from[8];
        }
        for (const auto& [command, byte] : kIndicatorRows) {
            held[byte] = command == code ? from[byte] : held[byte];
        }
        for (const GroupRow& row : kGroupRows) {
            if (row.code == code) {
                held.replace(row.mask + 1, 3, from, row.mask + 1, 3);
            }
        }
        return true;
    }

    void indicator_set(size_t byte, char value)
    {
        for (const IndicatorPlace& place : kIndicators) {
            if (place.byte == byte) {
                uint16_t& word = words.*place.word;
                bit_put(word, place.high, value == 2);
                if (value != 2) {
                    bit_put(word, place.low, value == 1);
                }
            }
        }
    }

    void element_set(size_t byte, bool on)
    {
        for (const ElementPlace& place : kElements) {
            if (place.byte == byte) {
                bit_put(words.*place.word, place.bit, on);
            }
        }
    }

    void ledA_set(uint8_t value)
    {
        bit_put(words.b, 0x2000, value == 2 || value == 3);
        bit_put(words.b, 0x1000, value == 1 || value == 2);
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
            bit_put(words.b, 0x80, false);
            ledA = shown >= 2 ? 2 : 0;
        } else if (!complete && !on) {
            events.push_back(257);
            bit_put(words.b, 0x80, true);
            ledA = shown != 0 ? 3 : 0;
        }
        if (ledA != 0 && !record(WR_LED_A, record_of({{8, ledA}}))) {
            ledA_set(ledA);
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
                bit_put(words.word03, 0x40, ledA == 3);
            }
        }
        if (recorded) {
            return 1;
        }
        if (command.code == WR_LED_A) {
            ledA_set(static_cast<uint8_t>(from[8]));
            words.b = static_cast<uint16_t>(from[8] == 2 ? words.b & ~0x80 : words.b);
        }
        for (const auto& [code, byte] : kIndicatorRows) {
            if (code == command.code) {
                indicator_set(byte, from[byte]);
            }
        }
        for (const GroupRow& row : kGroupRows) {
            for (size_t n = 0; row.code == command.code && n < 3; ++n) {
                const auto mask = static_cast<uint8_t>(from[row.mask]);
                if (mask != 0 && (mask >> n & 1) == 0) {
                    continue;
                }
                const size_t byte = row.bytes.at(n);
                element_set(byte, from[byte] == 1 || byte == 17);
                if (row.code == WR_LED_GROUP_7) {
                    mirror.at(n) = from[byte] == 1;
                }
            }
        }
        return 0;
    }

    void show(const PatternBits& pattern)
    {
        if (!inhibited) {
            inhibited = true;
            held = snapshot_of(12, words);
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
               Bytes(3, '\0');
    }
};

Command any_command(std::mt19937& random)
{
    constexpr std::array<DeviceCommandCode, 13> kCodes{
        WR_LED_A,       WR_LED_B,       WR_LED_C,       WR_LED_D,       WR_LED_E,
        WR_LINE_MODE,   WR_LINE_FLAGS,  WR_LED_GROUP_1, WR_LED_GROUP_3, WR_LED_GROUP_4,
        WR_LED_GROUP_5, WR_LED_GROUP_6, WR_LED_GROUP_7};
    Command command{kCodes.at(random() % kCodes.size()), Bytes(44, '\0')};
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
        board.file_put(kUserLog, Bytes(16, '\0'));
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
                ASSERT_EQ(command_run(pattern.command, Bytes()), 0);
                model.show(pattern);
            } else if (kind == 1) {
                Bytes record(44, '\x5A');
                const Bytes held = model.inhibited ? model.held : record;
                ASSERT_EQ(command_run(kRestore, record), 0);
                ASSERT_EQ(record, held);
                model.restore();
            } else {
                const Command command = any_command(random);
                const int32_t expected = model.set(command);
                Bytes record = command.record;
                ASSERT_EQ(command_run(command.code, record), expected) << command.code;
                ASSERT_EQ(record, command.record);
            }
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
