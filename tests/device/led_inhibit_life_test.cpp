// The inhibit as a life: a pattern, LED commands, more patterns, the restore. The panel must show
// in the end what the same commands would have left without a pattern; where the system says
// otherwise, a test of its own below says why.
#include "device/led_inhibit_fixture.h"

namespace
{

class InhibitLife : public InhibitTest
{
};

// The rule ----------------------------------------------------------------------------------

// Commands of every kind whose values are in range, masks that select everything, and neither
// WR_LED_GROUP_1 nor WR_LINE_FLAGS.
Command plain_command(std::mt19937& random)
{
    constexpr std::array<DeviceCommandCode, 11> kCodes{
        WR_LED_A,       WR_LED_B,       WR_LED_C,       WR_LED_D,       WR_LED_E,      WR_LINE_MODE,
        WR_LED_GROUP_3, WR_LED_GROUP_4, WR_LED_GROUP_5, WR_LED_GROUP_6, WR_LED_GROUP_7};
    Command command{kCodes.at(random() % kCodes.size()), zeros(44)};
    command.record[8] = static_cast<char>(random() % 4);
    for (size_t byte = 9; byte <= 13; ++byte) {
        command.record[byte] = static_cast<char>(random() % 3);
    }
    for (size_t byte = 14; byte < 44; ++byte) {
        command.record[byte] = static_cast<char>(random() % 2 == 0 ? 1 : random());
    }
    constexpr std::array<int, 4> kMasks{0, 7, 0x0F, 255};
    for (const size_t mask : {24U, 28U, 32U, 36U, 40U}) {
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
        ASSERT_EQ(snapshot_of(kOwn, after), snapshot_of(kOwn, expected)) << words;
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
        run(pattern.command, "");
        const PanelWords expected = shown(pattern, words);
        for (int i = 0; i < 10; ++i) {
            const Command command = plain_command(random);
            if (command.code != WR_LINE_MODE) {
                EXPECT_EQ(run(command.code, command.record), 1);
            }
        }
        ASSERT_EQ(panel_get(board), expected);
        run(WR_LED_RESTORE, zeros(44));
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
    run(WR_LED_PATTERN_1, "");
    const uint16_t before = panel_get(board).c;
    EXPECT_EQ(run(commands[0].code, commands[0].record), 0);
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

} // namespace
