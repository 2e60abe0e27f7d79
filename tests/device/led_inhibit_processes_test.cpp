// Several processes and one panel: the end of the inhibit and LED commands at the same time. No
// update may be lost, whoever comes first.
#include <sched.h>
#include <sys/mman.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "board/lock_holder.h"
#include "device/led_inhibit_fixture.h"

namespace
{

// The words of the one device that several processes drive, each through a model of its own: what a
// process has written comes here before its next call, and what is here goes to its model.
class SharedPanel
{
  public:
    SharedPanel()
    {
        void* memory =
            mmap(nullptr, sizeof(Words), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            perror("shared memory");
            abort();
        }
        words_ = new (memory) Words;
    }
    ~SharedPanel() { munmap(words_, sizeof(Words)); }
    SharedPanel(const SharedPanel&) = delete;
    SharedPanel& operator=(const SharedPanel&) = delete;

    void put(Board& board, const PanelWords& words)
    {
        panel_put(board, words);
        for (size_t i = 0; i < kRequests.size(); ++i) {
            words_->at(i) = known_.at(i) = static_cast<uint16_t>(board.fpga.words[kRequests.at(i)]);
        }
    }

    void exchange(Board& board)
    {
        for (size_t i = 0; i < kRequests.size(); ++i) {
            uint32_t& own = board.fpga.words[kRequests.at(i)];
            if (own != known_.at(i)) {
                words_->at(i) = static_cast<uint16_t>(own);
            }
            own = known_.at(i) = words_->at(i);
        }
    }

  private:
    static constexpr std::array<uint32_t, 4> kRequests{kRegisterA.read, kRegisterB.read,
                                                       kRegisterC.read, kDeviceWord03};
    // Each is read and written whole, and the commands' locks keep the order. An atomic would be
    // more, but where the processor has none of this size, it is behind a lock of its process.
    using Words = std::array<volatile uint16_t, 4>;

    Words* words_;
    std::array<uint16_t, 4> known_{}; // by this process
};

// Changes in each of the registers, none of them what the panel or a pattern shows.
const Command kSetLedD{WR_LED_D, record_of({{11, 1}})};
const Command kSetGroup4{WR_LED_GROUP_4, record_of({{29, 1}, {31, 1}})};
const Command kSetGroup1{WR_LED_GROUP_1, record_of({{15, 1}, {16, 1}, {17, 1}})};
const Command kRestorePanel{WR_LED_RESTORE, zeros(44)};
const PanelWords kStart{0x0010, 0x0412, 0x0044, 0x0001};

// The start with some of the changes.
PanelWords changed(bool ledD, bool group4, bool group1 = false)
{
    PanelWords words = kStart;
    words.b = static_cast<uint16_t>(words.b | (group1 ? 0x0070 : 0));
    words.c = static_cast<uint16_t>(words.c | (ledD ? 0x0100 : 0));
    words.a = static_cast<uint16_t>(group4 ? 0x0060 : words.a);
    return words;
}

class InhibitProcesses : public LedTest
{
  protected:
    void SetUp() override { board.fpga.words[kOwnIdentifier] = kOwn; }

    // A panel that shows a pattern over the start.
    void inhibit()
    {
        panel.put(board, kStart);
        ASSERT_EQ(run(WR_LED_PATTERN_1, ""), 0);
        panel.exchange(board);
    }

    // Runs a command in this process. `before` sees the number of each call to come, from 0.
    int run_seen(const Command& command, const std::function<void(size_t)>& before)
    {
        size_t call = 0;
        board.before_call = [&](const std::string&) {
            panel.exchange(board);
            before(call++);
            panel.exchange(board);
        };
        const int32_t result = run(command.code, command.record);
        board.before_call = nullptr;
        panel.exchange(board);
        return result;
    }

    // The same in a child, which has to do without the files that this process has open: a lock
    // would be its own, too.
    pid_t start(
        const Command& command, const std::function<void()>& first = [] {})
    {
        return child_start([&] {
            for (const auto& [descriptor, path] : board.descriptors()) {
                if (!board.is_device(descriptor)) {
                    close(descriptor);
                }
            }
            alarm(100); // a child that waits for ever fails the test and is gone
            first();
            const int result = run_seen(command, [](size_t call) {
                if (call % 5 == 0) {
                    sched_yield();
                }
            });
            return result < 0 ? 100 - result : result;
        });
    }

    // Runs `mine` here and starts `other` in a child before call number `meeting`, going on once
    // the child has ended or waits. Returns how many calls `mine` made and both results.
    struct Met {
        size_t calls;
        int mine;
        int other;
    };
    Met meet(const Command& mine, const Command& other, size_t meeting)
    {
        pid_t child = 0;
        Met met{0, 0, -1};
        met.mine = run_seen(mine, [&](size_t call) {
            met.calls = call + 1;
            if (call == meeting) {
                child = start(other);
                child_sleeps(child);
            }
        });
        met.other = child == 0 ? -1 : child_wait(child);
        panel.exchange(board);
        return met;
    }

    SharedPanel panel;
};

// Before the restore's flock a command still finds the inhibit, from then on it waits and finds the
// inhibit gone.
TEST_F(InhibitProcesses, ACommandAtAnyPointOfARestoreIsNotLost)
{
    constexpr size_t kFlock = 1;
    for (const Command& command : {kSetLedD, kSetGroup1}) {
        size_t calls = 1;
        for (size_t meeting = 0; meeting < calls; ++meeting) {
            SCOPED_TRACE(meeting);
            inhibit();
            const Met met = meet(kRestorePanel, command, meeting);
            calls = met.calls;
            EXPECT_EQ(met.mine, 0);
            EXPECT_EQ(met.other, meeting <= kFlock ? 1 : 0);
            EXPECT_FALSE(board.file_exists(kLedFile));
            EXPECT_EQ(panel_get(board),
                      changed(command.code == WR_LED_D, false, command.code == WR_LED_GROUP_1));
        }
        EXPECT_EQ(calls, 24U);
    }
}

// Before the restore's flock it is one more pattern over the saved panel; from then on it waits and
// finds the whole panel restored, which it saves.
TEST_F(InhibitProcesses, APatternAtAnyPointOfARestoreSavesNoHalfRestoredPanel)
{
    constexpr size_t kFlock = 1;
    const Command pattern{WR_LED_PATTERN_2, zeros(44)};
    size_t calls = 1;
    for (size_t meeting = 0; meeting < calls; ++meeting) {
        SCOPED_TRACE(meeting);
        board.file_remove(kLedFile);
        inhibit();
        const Met met = meet(kRestorePanel, pattern, meeting);
        calls = met.calls;
        EXPECT_EQ(met.mine, 0);
        EXPECT_EQ(met.other, 0);
        if (meeting <= kFlock) {
            EXPECT_FALSE(board.file_exists(kLedFile));
            EXPECT_EQ(panel_get(board), kStart);
        } else {
            EXPECT_EQ(board.file_get(kLedFile), snapshot_of(kOwn, kStart));
            EXPECT_EQ(panel_get(board), shown(kPattern2, kStart));
        }
    }
    EXPECT_EQ(calls, 24U);
}

TEST_F(InhibitProcesses, ARestoreAtAnyPointOfACommandLosesNothing)
{
    constexpr size_t kFlock = 1;
    for (const Command& command : {kSetLedD, kSetGroup4, kSetGroup1}) {
        const bool looks = command.code == WR_LED_GROUP_1; // at the panel, deferred as it is
        size_t calls = 1;
        for (size_t meeting = 0; meeting < calls; ++meeting) {
            SCOPED_TRACE(meeting);
            inhibit();
            const Met met = meet(command, kRestorePanel, meeting);
            calls = met.calls;
            EXPECT_EQ(met.mine, meeting <= kFlock ? 0 : 1);
            EXPECT_EQ(met.other, 0);
            EXPECT_FALSE(board.file_exists(kLedFile));
            EXPECT_EQ(panel_get(board),
                      changed(command.code == WR_LED_D, command.code == WR_LED_GROUP_4, looks));
        }
        EXPECT_EQ(calls, looks ? 12U : 9U);
    }
}

TEST_F(InhibitProcesses, TwoCommandsAtAnyPointOfEachOtherAreBothRecorded)
{
    size_t calls = 1;
    for (size_t meeting = 0; meeting < calls; ++meeting) {
        SCOPED_TRACE(meeting);
        inhibit();
        const Met met = meet(kSetGroup4, kSetLedD, meeting);
        calls = met.calls;
        EXPECT_EQ(met.mine, 1);
        EXPECT_EQ(met.other, 1);
        Bytes expected = snapshot_of(kOwn, kStart);
        expected[11] = 1;
        expected.replace(29, 3, hex("01 00 01"));
        EXPECT_EQ(board.file_get(kLedFile), expected);
        EXPECT_EQ(panel_get(board), shown(kPattern1, kStart));
        EXPECT_EQ(run_seen(kRestorePanel, [](size_t) {}), 0);
        EXPECT_EQ(panel_get(board), changed(true, true));
    }
    EXPECT_EQ(calls, 9U);
}

TEST_F(InhibitProcesses, TwoPatternsAtAnyPointOfEachOtherSaveThePanelOnce)
{
    // A pattern that comes first draws after the lock, over which the other one would have saved.
    const Command mine{WR_LED_PATTERN_3, zeros(44)};
    const Command other{WR_LED_PATTERN_2, zeros(44)};
    size_t calls = 1;
    for (size_t meeting = 0; meeting < calls; ++meeting) {
        SCOPED_TRACE(meeting);
        board.file_remove(kLedFile);
        panel.put(board, kStart);
        const Met met = meet(mine, other, meeting);
        calls = std::max(calls, met.calls);
        EXPECT_EQ(met.mine, 0);
        EXPECT_EQ(met.other, meeting < met.calls ? 0 : -1);
        EXPECT_EQ(board.file_get(kLedFile), snapshot_of(kOwn, kStart));
    }
    EXPECT_EQ(calls, 24U);
}

TEST_F(InhibitProcesses, CommandsAndARestoreAllAtOnceLoseNothing)
{
    for (int round = 0; round < 60 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        inhibit();
        std::array<int, 2> gate{};
        ASSERT_EQ(pipe(gate.data()), 0);
        const auto wait = [&gate] {
            char byte = 0;
            close(gate[1]);
            (void)!read(gate[0], &byte, 1); // until the gate is closed everywhere
        };
        std::vector<pid_t> children;
        for (const Command* command : {&kRestorePanel, &kSetLedD, &kSetGroup4}) {
            children.push_back(start(*command, wait));
            ASSERT_GT(children.back(), 0);
        }
        close(gate[0]);
        close(gate[1]);
        EXPECT_EQ(child_wait(children[0]), 0);
        for (const size_t setter : {1U, 2U}) {
            const int result = child_wait(children[setter]);
            EXPECT_TRUE(result == 0 || result == 1) << result;
        }
        panel.exchange(board);
        EXPECT_FALSE(board.file_exists(kLedFile));
        EXPECT_EQ(panel_get(board), changed(true, true));
    }
}

} // namespace
