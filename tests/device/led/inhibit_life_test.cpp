// The inhibit as a life: a pattern, LED commands, more patterns, the restore. The panel must show
// in the end what the same commands would have left without a pattern; where the system says
// otherwise, a test of its own below says why.
#include "device/led/panel_words.h"

namespace
{

constexpr const char* kUserLog = "/conf/user.log";
constexpr uint8_t kMirrorPort = 4;
constexpr DeviceCommandCode kRestore = WR_LED_RESTORE;

struct Command {
    DeviceCommandCode code;
    Bytes record;
};

class InhibitLife : public LedTest
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
Bytes record_of(std::initializer_list<std::pair<size_t, int>> bytes)
{
    Bytes record(44, '\0');
    for (const auto& [byte, value] : bytes) {
        record[byte] = static_cast<char>(value);
    }
    return record;
}

// The rule ----------------------------------------------------------------------------------

// Commands of every kind whose values are in range, masks that select everything, and neither
// WR_LED_GROUP_1 nor WR_LINE_FLAGS.
Command plain_command(std::mt19937& random)
{
    constexpr std::array<DeviceCommandCode, 11> kCodes{
        WR_LED_A,       WR_LED_B,       WR_LED_C,       WR_LED_D,       WR_LED_E,      WR_LINE_MODE,
        WR_LED_GROUP_3, WR_LED_GROUP_4, WR_LED_GROUP_5, WR_LED_GROUP_6, WR_LED_GROUP_7};
    Command command{kCodes.at(random() % kCodes.size()), Bytes(44, '\0')};
    command.record[8] = static_cast<char>(random() % 4);
    for (size_t byte = 9; byte <= 13; ++byte) {
        command.record[byte] = static_cast<char>(random() % 3);
    }
    for (size_t byte = 14; byte < 44; ++byte) {
        command.record[byte] = static_cast<char>(random() % 2 == 0 ? 1 : random());
    }
    constexpr std::array<int, 4> kMasks{0, 7, 0x0F, 255};
    for (const size_t mask : {24, 28, 32, 36, 40}) {
        command.record[mask] = static_cast<char>(kMasks.at(random() % kMasks.size()));
    }
    return command;
}

TEST_F(InhibitLife, LeavesThePanelThatTheCommandsAloneWouldHaveLeft)
{
    std::mt19937 random(67);
    for (int round = 0; round < 400; ++round) {
        const PanelWords words = panel_random(random);
        std::vector<Command> plain;
        std::vector<Command> nested; // with further patterns in between
        for (size_t i = random() % 12; i > 0; --i) {
            plain.push_back(plain_command(random));
            nested.push_back(plain.back());
            if (random() % 3 == 0) {
                nested.push_back({kPatterns.at(random() % 3).command, ""});
            }
        }
        const PanelWords expected = without_pattern(words, plain);
        const PanelWords after = with_pattern(words, nested, kPatterns.at(random() % 3));
        ASSERT_EQ(snapshot_of(12, after), snapshot_of(12, expected)) << words;
        ASSERT_EQ(after.a, expected.a);
        ASSERT_EQ(after.b & 0x4088, words.b & 0x4088) << "bits of no indicator, and the alert bit";
        ASSERT_EQ(after.word03 & 0xFFBF, words.word03 & 0xFF3F);
    }
}

TEST_F(InhibitLife, ShowsThePatternUntilItsEndWhateverIsSet)
{
    std::mt19937 random(71);
    for (int round = 0; round < 100; ++round) {
        const PanelWords words = panel_random(random);
        const PatternBits& pattern = kPatterns.at(random() % 3);
        panel_put(board, words);
        run({{pattern.command, ""}});
        PanelWords expected = shown(pattern, words);
        for (int i = 0; i < 10; ++i) {
            Command command = plain_command(random);
            if (command.code != WR_LINE_MODE) {
                EXPECT_EQ(command_run(command.code, command.record), 1);
            }
        }
        ASSERT_EQ(panel_get(board), expected);
        run({{kRestore, ""}});
    }
}

// The exceptions ----------------------------------------------------------------------------

// The file takes a group whole and knows no mask.
TEST_F(InhibitLife, ExceptThatADeferredGroupLosesItsMask)
{
    const std::vector<Command> commands{{WR_LED_GROUP_3, record_of({{24, 0x01}, {25, 1}})}};
    const PanelWords words{0x0003, 0, 0, 0}; // second and third element on
    EXPECT_EQ(without_pattern(words, commands).a, 0x0007);
    EXPECT_EQ(with_pattern(words, commands).a, 0x0004);
}

// The restore leaves an indicator alone whose saved value is none, and so what the pattern drew.
TEST_F(InhibitLife, ExceptThatADeferredOddValueKeepsThePattern)
{
    const std::vector<Command> commands{{WR_LED_B, record_of({{9, 5}})},
                                        {WR_LED_A, record_of({{8, 4}})}};
    const PanelWords words{0, 0x2800, 0, 0};
    EXPECT_EQ(without_pattern(words, commands).b, 0x0000);
    EXPECT_EQ(with_pattern(words, commands).b, 0x1400); // ledA and ledB as pattern 1 has them
}

// WR_LINE_FLAGS is not deferred, but the restore brings back group 2 as it was saved.
TEST_F(InhibitLife, ExceptThatLineFlagsSetMeanwhileAreLost)
{
    const std::vector<Command> commands{{WR_LINE_FLAGS, record_of({{19, 1}, {20, 1}, {21, 1}})}};
    EXPECT_EQ(without_pattern({}, commands).c, 0x0007);
    EXPECT_EQ(with_pattern({}, commands).c, 0x0000);

    panel_put(board, {});
    run({{WR_LED_PATTERN_1, ""}});
    const uint16_t before = panel_get(board).c;
    EXPECT_EQ(command_run(commands[0].code, Bytes(commands[0].record)), 0);
    EXPECT_EQ(panel_get(board).c, before | 0x0007);
}

// WR_LINE_MODE is not deferred either, and ledF is not restored: nothing is lost.
TEST_F(InhibitLife, AndTheLineModeSetMeanwhileStays)
{
    const std::vector<Command> commands{{WR_LINE_MODE, record_of({{13, 1}})}};
    EXPECT_EQ(without_pattern({0, 0, 0x20, 0}, commands).c, 0x0010);
    EXPECT_EQ(with_pattern({0, 0, 0x20, 0}, commands).c, 0x0010);
}

// WR_LED_GROUP_1 only turns its third element on; the restore also turns it off.
TEST_F(InhibitLife, ExceptThatTheThirdElementOfGroup1CanBeTurnedOff)
{
    const std::vector<Command> commands{{WR_LED_GROUP_1, record_of({{14, 7}})}};
    EXPECT_EQ(without_pattern({0, 0x0020, 0, 0}, commands).b, 0x0020);
    EXPECT_EQ(with_pattern({0, 0x0020, 0, 0}, commands).b, 0x0000);
}

// A deferred WR_LED_GROUP_1 does not write the register, so that the alert bit stays off and each
// further command raises the alert anew; the restore does not touch that bit.
TEST_F(InhibitLife, ExceptThatADeferredAlertIsLoggedEachTimeAndItsBitNeverSet)
{
    const Command alert{WR_LED_GROUP_1, record_of({{15, 1}})};
    EXPECT_EQ(without_pattern({}, {alert, alert}).b, 0x00E0);
    EXPECT_EQ(events(), (std::vector<int>{257}));
    EXPECT_EQ(with_pattern({}, {alert, alert}).b & 0x0FFF, 0x0040);
    EXPECT_EQ(events(), (std::vector<int>{257, 257, 257}));
}

// WR_LED_GROUP_1 looks at the panel for ledA, which shows the pattern's and not the saved one.
TEST_F(InhibitLife, ExceptThatADeferredAlertTakesThePatternsLedA)
{
    const std::vector<Command> commands{{WR_LED_GROUP_1, record_of({{15, 1}})}};
    EXPECT_EQ(without_pattern({}, commands).b & 0x3000, 0x0000); // ledA off: no alert
    EXPECT_EQ(with_pattern({}, commands).b & 0x3000, 0x2000);    // ledA 1 in the pattern
}

// A ledA of 2 ends an alert where it is set, not where it is restored.
TEST_F(InhibitLife, ExceptThatADeferredLedAKeepsTheAlertBit)
{
    const std::vector<Command> commands{{WR_LED_A, record_of({{8, 2}})}};
    EXPECT_EQ(without_pattern({0, 0x0080, 0, 0}, commands).b, 0x3000);
    EXPECT_EQ(with_pattern({0, 0x0080, 0, 0}, commands).b, 0x3080);
}

// Bit 6 of device word 03 follows a restored ledA of 3, but not one that is set; and only
// WR_LED_GROUP_1 clears it, which a deferred one does not.
TEST_F(InhibitLife, ExceptForBit6OfDeviceWord03)
{
    const std::vector<Command> alert{{WR_LED_A, record_of({{8, 3}})}};
    EXPECT_EQ(without_pattern({}, alert).word03, 0x0000);
    EXPECT_EQ(with_pattern({}, alert).word03, 0x0040);

    const std::vector<Command> calm{{WR_LED_GROUP_1, record_of({{16, 1}})}};
    const PanelWords words{0, 0x2000, 0, 0x0040};
    EXPECT_EQ(without_pattern(words, calm).word03, 0x0000);
    EXPECT_EQ(with_pattern(words, calm, kPattern3).word03, 0x0040);
}

// WR_LED_GROUP_7 copies its elements to switch port 4; the restore does not.
TEST_F(InhibitLife, ExceptThatADeferredGroup7DoesNotReachTheSwitchPort)
{
    const std::vector<Command> commands{{WR_LED_GROUP_7, record_of({{41, 1}, {42, 1}, {43, 1}})}};
    const Bytes port = hex("04 00 00 00 00 00 00 00");
    board.fpga.switch_ports[kMirrorPort] = port;
    EXPECT_EQ(with_pattern({}, commands).b, 0x0007);
    EXPECT_EQ(board.fpga.switch_ports[kMirrorPort], port);
    EXPECT_EQ(without_pattern({}, commands).b, 0x0007);
    EXPECT_EQ(board.fpga.switch_ports[kMirrorPort], hex("04 00 01 01 01 00 00 00"));
}

// A value of 2 keeps the pair's low bit, so the pattern's stays where another one was.
TEST_F(InhibitLife, ExceptForTheLowBitUnderAHighOne)
{
    EXPECT_EQ(with_pattern({0, 0x0800, 0, 0}, {}).b, 0x0C00);
    EXPECT_EQ(with_pattern({0, 0x0000, 0, 0}, {}).b, 0x0000);
}

// A model of it all -------------------------------------------------------------------------

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

TEST_F(InhibitLife, FollowsItsModelThroughRandomLives)
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
