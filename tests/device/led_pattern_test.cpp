// The fixed display patterns: what they show, what they save first, and what a failure leaves.
#include "device/commands/led_pattern.h"

#include "device/led_panel_words.h"

namespace
{

constexpr uint16_t kOwn = 5;

struct PatternRow {
    PatternBits bits;
    CommandCall<void*> call;
    Bytes shows; // ledA to ledE
};

const PatternRow kRows[] = {
    {kPattern1, write_led_pattern_1, hex("01 01 01 02 01")},
    {kPattern2, write_led_pattern_2, hex("01 02 01 01 02")},
    {kPattern3, write_led_pattern_3, hex("02 02 02 01 02")},
};

Course drawing(const PanelWords& after)
{
    return {opens_to_write(-1),
            word_read(0x6B11, -2),
            value_write(0x6B12, after.b, -4),
            word_read(0x6B4F, -2),
            value_write(0x6B50, after.c, -4),
            word_read(0x6B03, -2),
            value_write(0x6B04, after.word03, -4),
            closes()};
}

// Behind the lock's fopen and flock.
Trace rest_of(const Course& work, const Course& after)
{
    return calls_of(work, 1) + Trace{"fclose /tmp/Saveing"} + calls_of(after);
}

class LedPatterns : public LedTest
{
  protected:
    void SetUp() override { board.fpga.words[kOwnIdentifier] = kOwn; }
};

TEST_F(LedPatterns, SaveThePanelAndThenDrawOnIt)
{
    for (const PatternRow& row : kRows) {
        SCOPED_TRACE(command_name(row.bits.command));
        const PanelWords before{0x1234, 0xE6A5, 0xFE3F, 0x1234};
        const PanelWords after = shown(row.bits, before);
        const Course draw = drawing(after);
        const size_t lastWrites[] = {2, 4, 6}; // of the drawing's calls
        const size_t drawn = 2 + kSnapshot.size() + 1;
        prove_locked(
            [&] {
                board.file_remove(kLedFile);
                panel_put(board, before);
            },
            [&] { return row.call.handler(nullptr, row.call.member); },
            {kSnapshot, draw, 0, rest_of(kSnapshot, draw), 0},
            [&](size_t failing, const std::string&) {
                const bool failed = failing >= drawn && draw[failing - drawn].failure != kIgnored;
                const bool unsaved = failing > 2 && failing < drawn - 1 &&
                                     kSnapshot[failing - 2].failure != kIgnored;
                // A word is changed if its write came before the failing call.
                const auto written = [&](size_t word) {
                    return !unsaved && (!failed || lastWrites[word] < failing - drawn);
                };
                EXPECT_EQ(panel_get(board),
                          (PanelWords{before.a, written(0) ? after.b : before.b,
                                      written(1) ? after.c : before.c,
                                      written(2) ? after.word03 : before.word03}));
                if (!unsaved) {
                    EXPECT_EQ(board.file_get(kLedFile), snapshot_of(kOwn, before));
                }
            });
    }
}

TEST_F(LedPatterns, KeepTheFirstStateWhenTheyAreNested)
{
    const Bytes saved = "any bytes that stand there";
    const Course kept{{"stat /tmp/led_rewrite_inh", kElsewhere}};
    for (const PatternRow& row : kRows) {
        SCOPED_TRACE(command_name(row.bits.command));
        const PanelWords before{0x1234, 0x195A, 0x01C0, 0xFF7F};
        const PanelWords after = shown(row.bits, before);
        const Course draw = drawing(after);
        prove_locked(
            [&] {
                board.file_put(kLedFile, saved);
                panel_put(board, before);
            },
            [&] { return row.call.handler(nullptr, row.call.member); },
            {kept, draw, 0, rest_of(kSnapshot, draw), 0},
            [&](size_t failing, const std::string&) {
                // A file that cannot be seen is made once more.
                EXPECT_EQ(board.file_get(kLedFile),
                          failing == 2 ? snapshot_of(kOwn, before) : saved);
            });
    }
}

TEST_F(LedPatterns, AreDrawnByTheirCommandsWhateverTheArgument)
{
    for (const PatternRow& row : kRows) {
        for (void* argument : {static_cast<void*>(nullptr), put(untouched(44))}) {
            const PanelWords before{0x5A5A, 0xFFFF, 0x0000, 0x0100};
            panel_put(board, before);
            EXPECT_EQ(Fpga_Register_Set(row.bits.command, argument), 0);
            EXPECT_EQ(panel_get(board), shown(row.bits, before));
            EXPECT_EQ(record(), untouched(44));
            EXPECT_EQ(board.file_get(kLedFile), snapshot_of(kOwn, before));
            board.file_remove(kLedFile);
        }
    }
}

TEST_F(LedPatterns, AreTriedTwiceByTheDispatcher)
{
    const Trace snapshot = rest_of(kSnapshot, {});
    const size_t saves = 3 + snapshot.size();
    for (const PatternRow& row : kRows) {
        const PanelWords before{1, 2, 3, 4};
        // The drawing's last write fails once: the second run finds the file.
        panel_put(board, before);
        board.restart();
        board.fail_call(saves + 7);
        EXPECT_EQ(Fpga_Register_Set(row.bits.command, nullptr), 0);
        EXPECT_EQ(panel_get(board), shown(row.bits, before));
        EXPECT_EQ(board.file_get(kLedFile), snapshot_of(kOwn, before));
        // And twice.
        panel_put(board, before);
        board.restart();
        const size_t second = 4 + 7; // lock, stat, unlock, and the drawing up to its last write
        board.fail_calls({second, second + 2 + second});
        EXPECT_EQ(Fpga_Register_Set(row.bits.command, nullptr), -4);
        EXPECT_EQ(panel_get(board).b, shown(row.bits, before).b);
        EXPECT_EQ(panel_get(board).word03, 4);
        board.file_remove(kLedFile);
    }
}

// The file counts as saved as soon as it is there: the second run draws. What the panel showed
// before is lost then, and there is nothing to restore.
TEST_F(LedPatterns, AreDrawnWhenTheFileWasMadeButNotWritten)
{
    constexpr size_t kWrite = 14; // of the state
    for (const PatternRow& row : kRows) {
        SCOPED_TRACE(command_name(row.bits.command));
        const PanelWords before{0x1234, 0xE6A5, 0xFE3F, 0x1234};
        panel_put(board, before);
        board.restart();
        board.fail_call(kWrite);
        EXPECT_EQ(Fpga_Register_Set(row.bits.command, nullptr), 0);
        EXPECT_EQ(board.calls[kWrite - 1], "write /tmp/led_rewrite_inh 44 -> failed");
        PanelWords after = shown(row.bits, before);
        EXPECT_EQ(panel_get(board), after);
        EXPECT_EQ(board.file_get(kLedFile), "");

        EXPECT_EQ(run(WR_LED_RESTORE, zeros(44)), -1);
        EXPECT_EQ(panel_get(board), after);
        EXPECT_EQ(run(WR_LED_B, zeros(44)), 0);
        after.b &= 0xF3FF;
        EXPECT_EQ(panel_get(board), after);
        EXPECT_EQ(board.file_get(kLedFile), "");

        board.file_remove(kLedFile);
        EXPECT_EQ(run(WR_LED_RESTORE, zeros(44)), 0);
        EXPECT_EQ(panel_get(board), after);
    }
}

TEST_F(LedPatterns, TouchNothingWhenThePanelCannotBeSaved)
{
    const PanelWords before{0x1234, 0x5678, 0x9ABC, 0xDEF0};
    panel_put(board, before);
    for (const PatternRow& row : kRows) {
        for (const uint32_t own : {0U, 31U}) {
            board.fpga.words[kOwnIdentifier] = own;
            EXPECT_EQ(row.call.handler(nullptr, row.call.member), -1);
            EXPECT_EQ(panel_get(board), before);
            EXPECT_FALSE(board.file_exists(kLedFile));
        }
        board.fpga.words[kOwnIdentifier] = kOwn;
        for (const uint32_t request : {0x6B29U, 0x6B0FU, 0x6B11U, 0x6B4FU, 0x6B51U}) {
            board.fpga.results[request] = -1;
            EXPECT_EQ(Fpga_Register_Set(row.bits.command, nullptr), -1);
            EXPECT_EQ(panel_get(board), before);
            EXPECT_FALSE(board.file_exists(kLedFile));
            board.fpga.results.clear();
        }
    }
}

TEST_F(LedPatterns, ChangeTheirOwnBitsInEveryWord)
{
    board.file_put(kLedFile, "");
    for (const PatternRow& row : kRows) {
        for_every_word([&](uint16_t word) {
            const PanelWords before{0xA5A5, word, static_cast<uint16_t>(word ^ 0x5A5A),
                                    static_cast<uint16_t>(~word)};
            panel_put(board, before);
            EXPECT_EQ(row.call.handler(nullptr, row.call.member), 0);
            EXPECT_EQ(panel_get(board), shown(row.bits, before));
        });
    }
}

TEST_F(LedPatterns, ShowTheirIndicatorsAndLeaveTheRest)
{
    board.file_put(kLedFile, "");
    std::mt19937 random(43);
    for (const PatternRow& row : kRows) {
        for (int round = 0; round < 300; ++round) {
            const PanelWords before = panel_random(random);
            panel_put(board, before);
            ASSERT_EQ(row.call.handler(nullptr, row.call.member), 0);
            const PanelWords after = panel_get(board);
            // ledA to ledE are the pattern's, everything else is as it was.
            Bytes expected = snapshot_of(kOwn, before);
            expected.replace(8, row.shows.size(), row.shows);
            ASSERT_EQ(snapshot_of(kOwn, after), expected) << before;
            ASSERT_EQ(after.b & 0x80, before.b & 0x80) << "the alert bit";
            ASSERT_EQ(after.a, before.a);
        }
    }
}

TEST_F(LedPatterns, DrawAfterTheLockIsReleased)
{
    for (const PatternRow& row : kRows) {
        bool drawn = false;
        board.before_call = [&](const std::string& call) {
            if (call == "open /dev/fpga O_RDWR|O_NONBLOCK") {
                drawn = true;
                EXPECT_EQ(board.held_locks(), 0U);
            }
        };
        EXPECT_EQ(row.call.handler(nullptr, row.call.member), 0);
        EXPECT_TRUE(drawn);
        board.before_call = nullptr;
    }
}

} // namespace
