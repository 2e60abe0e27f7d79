// The end of the inhibit: what the saved record does to the panel, and what a failure leaves.
#include "device/commands/led_pattern.h"
#include "device/led_panel_words.h"

namespace
{

const PanelWords kBefore{0x1F8A, 0xF3A5, 0x0ED5, 0xFFFF};

Course restore_course(const PanelWords& words, const Bytes& record)
{
    const PanelWords after = restored(record, words);
    const auto word03 = static_cast<uint16_t>(words.word03 & ~0x0080);
    Course course{{"stat /tmp/led_rewrite_inh", kElsewhere},
                  {"open /tmp/led_rewrite_inh O_RDONLY", -1},
                  {"read /tmp/led_rewrite_inh 44", -1},
                  {"close /tmp/led_rewrite_inh", kIgnored},
                  opens_to_write(-1),
                  word_read(0x6B03, -2),
                  value_write(0x6B04, word03, -4),
                  closes(),
                  opens_to_write(-1),
                  word_read(0x6B0F, -2),
                  value_write(0x6B10, after.a, -4),
                  closes(),
                  opens_to_write(-1),
                  word_read(0x6B11, -2)};
    if (record[8] == 3) {
        course = course + Course{opens_to_write(-1), word_read(0x6B03, -2),
                                 value_write(0x6B04, word03 | 0x40U, -4), closes()};
    }
    return course + Course{value_write(0x6B12, after.b, -4),
                           closes(),
                           opens_to_write(-1),
                           word_read(0x6B4F, -2),
                           value_write(0x6B50, after.c, -4),
                           closes(),
                           {"unlink /tmp/led_rewrite_inh", kIgnored}};
}

class LedRestore : public LedTest
{
  protected:
    void file_put(const Bytes& record) const { board.file_put(kLedFile, record); }

    // The handler itself, once, on a record that is untouched.
    int32_t restore()
    {
        return write_led_restore(static_cast<LedStateRecord*>(put(untouched(44))));
    }

    PanelWords panel_restored(const Bytes& held, const PanelWords& words)
    {
        file_put(held);
        panel_put(board, words);
        EXPECT_EQ(restore(), 0);
        EXPECT_FALSE(board.file_exists(kLedFile));
        return panel_get(board);
    }
};

// A record whose indicators are `value` and everything else 0.
Bytes indicators_record(uint8_t value)
{
    Bytes record = zeros(44);
    for (size_t byte = 8; byte <= 13; ++byte) {
        record[byte] = static_cast<char>(value);
    }
    return record;
}

// Course and failures -----------------------------------------------------------------------

TEST_F(LedRestore, AppliesEachRegisterOnADescriptorOfItsOwnAndReportsEachFailure)
{
    for (const char ledA : {'\0', '\1', '\2', '\3', '\4'}) {
        SCOPED_TRACE(static_cast<int>(ledA));
        Bytes held = hex("07 00 00 00 07 00 00 00 00 01 02 01 02 01 FF 01 00 01 FF 00 01 01 AA BB "
                         "01 01 00 00 02 00 01 00 04 00 00 01 FF 01 01 01 00 01 02 00");
        held[8] = ledA;
        const Course course = restore_course(kBefore, held);
        const PanelWords after = restored(held, kBefore);
        const auto last = course.size() + 1; // of the work's calls, behind fopen and flock
        prove_locked(
            [&] {
                file_put(held);
                panel_put(board, kBefore);
            },
            [this] { return restore(); }, {course, {}, 0, {"fclose /tmp/Saveing"}, 0},
            [&](size_t failing, const std::string&) {
                const bool inWork = failing >= 2 && failing <= last;
                const int32_t failure = inWork ? course[failing - 2].failure : kIgnored;
                const bool ended = failure != kIgnored; // no further than here
                // The file goes with the last step alone, and the record comes with the file.
                EXPECT_EQ(board.file_exists(kLedFile), ended || failing == last);
                EXPECT_EQ(record(), failing >= 2 && failing <= 4 ? untouched(44) : held);
                // What was written before the failure stays written.
                PanelWords expected = ended ? kBefore : after;
                for (size_t i = 0; ended && i < failing - 2; ++i) {
                    const std::string& call = course[i].call;
                    if (call.rfind("ioctl 6B04", 0) == 0) {
                        expected.word03 =
                            i > 8 ? after.word03 : static_cast<uint16_t>(kBefore.word03 & ~0x80);
                    } else if (call.rfind("ioctl 6B10", 0) == 0) {
                        expected.a = after.a;
                    } else if (call.rfind("ioctl 6B12", 0) == 0) {
                        expected.b = after.b;
                    } else if (call.rfind("ioctl 6B50", 0) == 0) {
                        expected.c = after.c;
                    }
                }
                EXPECT_EQ(panel_get(board), expected);
            });
    }
}

TEST_F(LedRestore, HasNothingToDoWithoutAFile)
{
    panel_put(board, kBefore);
    for (int round = 0; round < 2; ++round) {
        board.restart();
        EXPECT_EQ(restore(), 0);
        EXPECT_EQ(board.calls, kNotInhibited);
        EXPECT_EQ(record(), untouched(44));
        EXPECT_EQ(panel_get(board), kBefore);
    }
    EXPECT_EQ(Fpga_Register_Set(WR_LED_RESTORE, nullptr), 0);
}

TEST_F(LedRestore, RefusesAShortFileAndLeavesIt)
{
    panel_put(board, kBefore);
    for (const size_t size : {0U, 1U, 43U}) {
        file_put(Bytes(size, '\1'));
        board.restart();
        EXPECT_EQ(restore(), -1) << size;
        EXPECT_EQ(board.calls,
                  locked({kMerge[0], "open /tmp/led_rewrite_inh O_RDONLY", kMerge[2], kMerge[5]}));
        EXPECT_EQ(record(), untouched(44));
        EXPECT_EQ(panel_get(board), kBefore);
        EXPECT_EQ(board.file_get(kLedFile), Bytes(size, '\1'));
    }
}

TEST_F(LedRestore, TakesTheFirst44BytesOfALongFile)
{
    file_put(Bytes(45, '\1'));
    EXPECT_EQ(restore(), 0);
    EXPECT_EQ(record(), Bytes(44, '\1'));
    EXPECT_FALSE(board.file_exists(kLedFile));
}

TEST_F(LedRestore, IsTriedTwiceAndAgainByTheNextCommand)
{
    const Bytes held = indicators_record(1);
    const size_t second = 17; // the write of register B
    const size_t closes = 2;  // of the device and of the lock
    file_put(held);
    panel_put(board, kBefore);
    board.restart();
    board.fail_calls({second, second + closes + 1 + second});
    EXPECT_EQ(run(WR_LED_RESTORE, zeros(44)), -4);
    EXPECT_EQ(board.calls[second - 1].substr(0, 10), "ioctl 6B12");
    EXPECT_EQ(board.file_get(kLedFile), held);
    EXPECT_EQ(panel_get(board).b, kBefore.b);

    board.restart();
    board.fail_call(second);
    expect_run(WR_LED_RESTORE, zeros(44), 0, held);
    EXPECT_EQ(panel_get(board), restored(held, kBefore));
    EXPECT_FALSE(board.file_exists(kLedFile));
}

TEST_F(LedRestore, HoldsTheLockFromFirstToLast)
{
    file_put(indicators_record(3));
    board.before_call = [&](const std::string& call) {
        if (call.find(kSaveLock) == std::string::npos) {
            EXPECT_EQ(board.held_locks(), 1U) << call;
        }
    };
    EXPECT_EQ(restore(), 0);
    board.before_call = nullptr;
}

// The rules ---------------------------------------------------------------------------------

TEST_F(LedRestore, RestoresAThreeStateIndicatorByItsValue)
{
    for (const Indicator& place : kIndicators) {
        if (place.command == WR_LINE_MODE) {
            continue; // ledF is not restored
        }
        for (unsigned value = 0; value <= 255; ++value) {
            for (unsigned bits = 0; bits < 4; ++bits) {
                PanelWords words;
                uint16_t& word = words.*place.panel.word;
                word = static_cast<uint16_t>(((bits & 1) != 0 ? place.low : 0) |
                                             ((bits & 2) != 0 ? place.high : 0));
                Bytes held = indicators_record(0xFF); // the others stay as they are
                held[place.byte] = static_cast<char>(value);
                const uint32_t low = word & place.low;
                const uint32_t expected = value == 0   ? 0U
                                          : value == 1 ? place.low
                                          : value == 2 ? low | place.high
                                                       : word;
                const PanelWords after = panel_restored(held, words);
                EXPECT_EQ(after.*place.panel.word, expected)
                    << "byte " << place.byte << " value " << value << " bits " << bits;
            }
        }
    }
}

TEST_F(LedRestore, LeavesTheBitsOfAnOddValueWhichTheSetterClears)
{
    const PanelWords words{0, 0x0C00, 0, 0};
    Bytes held = indicators_record(0);
    held[9] = 5;
    EXPECT_EQ(panel_restored(held, words).b, 0x0C00);
    panel_put(board, words);
    EXPECT_EQ(run(WR_LED_B, held), 0);
    EXPECT_EQ(panel_get(board).b, 0x0000);
}

TEST_F(LedRestore, RestoresLedAByItsValueAndBit6OfWord03WithAnAlert)
{
    for (unsigned value = 0; value <= 255; ++value) {
        for (const unsigned bits : {0x0000U, 0x1000U, 0x2000U, 0x3000U, 0x3080U, 0x0080U}) {
            for (const unsigned word03 : {0x00C0U, 0x0000U, 0xFFFFU, 0xFFBFU}) {
                Bytes held = indicators_record(0xFF);
                held[8] = static_cast<char>(value);
                const PanelWords words{0, static_cast<uint16_t>(bits), 0,
                                       static_cast<uint16_t>(word03)};
                const uint32_t alert = bits & 0x0080U;
                const uint32_t expected[] = {alert, alert | 0x1000, alert | 0x3000, alert | 0x2000};
                const PanelWords after = panel_restored(held, words);
                EXPECT_EQ(after.b, value <= 3 ? expected[value] : bits) << value;
                EXPECT_EQ(after.word03, (word03 & 0xFF7FU) | (value == 3 ? 0x40U : 0U)) << value;
            }
        }
    }
}

TEST_F(LedRestore, RestoresEachElementByItsByteAndNoOther)
{
    for (const Group& group : kGroups) {
        for (const Element& element : group.elements) {
            for (unsigned value = 0; value <= 255; ++value) {
                Bytes held = indicators_record(0xFF);
                held[element.byte] = static_cast<char>(value);
                PanelWords expected;
                expected.*group.panel.word = value == 1 ? element.bit : uint16_t{0};
                ASSERT_EQ(panel_restored(held, {}), expected) << element.byte << " " << value;
            }
        }
    }
}

TEST_F(LedRestore, IgnoresMasksReservedBytesIdentifiersAndLedF)
{
    std::mt19937 random(47);
    const Bytes held = record_random(random, 4);
    const PanelWords expected = panel_restored(held, kBefore);
    for (const size_t byte :
         {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 13U, 14U, 18U, 22U, 23U, 24U, 28U, 32U, 36U, 40U}) {
        for (const int value : {0, 1, 2, 4, 7, 8, 255}) {
            Bytes other = held;
            other[byte] = static_cast<char>(value);
            EXPECT_EQ(panel_restored(other, kBefore), expected) << byte << " " << value;
            EXPECT_EQ(record(), other);
        }
    }
}

TEST_F(LedRestore, ChangesItsOwnBitsInEveryWord)
{
    std::mt19937 random(53);
    // The unlink is made to fail, so that the file need not be made anew each time.
    for (const char ledA : {'\0', '\3', '\x9'}) {
        Bytes held = record_random(random, 4);
        held[8] = ledA;
        file_put(held);
        const size_t unlink = 2 + restore_course({}, held).size();
        for_every_word([&](uint16_t word) {
            const PanelWords before{word, static_cast<uint16_t>(word ^ 0xC3C3),
                                    static_cast<uint16_t>(~word),
                                    static_cast<uint16_t>(word ^ 0x0FF0)};
            panel_put(board, before);
            board.fail_call(unlink);
            EXPECT_EQ(restore(), 0);
            const PanelWords after = panel_get(board);
            EXPECT_EQ(after, restored(held, before));
            // Bits that no rule owns.
            EXPECT_EQ(after.a & 0x8888, before.a & 0x8888);
            EXPECT_EQ(after.b & 0xC088, before.b & 0xC088);
            EXPECT_EQ(after.c & 0xFC38, before.c & 0xFC38);
            EXPECT_EQ(after.word03 & 0xFF3F, before.word03 & 0xFF3F);
        });
        EXPECT_TRUE(board.file_exists(kLedFile));
    }
}

TEST_F(LedRestore, FollowsRandomRecords)
{
    std::mt19937 random(59);
    for (int round = 0; round < 2000; ++round) {
        const Bytes held = record_random(random, round % 2 == 0 ? 4 : 256);
        const PanelWords before = panel_random(random);
        ASSERT_EQ(panel_restored(held, before), restored(held, before));
        ASSERT_EQ(record(), held);
    }
}

} // namespace
