// The tracer's own tests: where it kills, and that a table that does not fit the calls fails.
#include <fcntl.h>
#include <gtest/gtest-spi.h>
#include <sys/stat.h>

#include "board/traced_child.h"

namespace
{

constexpr const char* kTracedFile = "/tmp/traced";

struct TracedChild : TracedTest {
    // Writes "abc", a letter a system call; the console write and the memory are not the board's.
    [[nodiscard]] std::function<int()> letters() const
    {
        return [this] {
            const int file =
                open(board.host(kTracedFile).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            for (const char letter : {'a', 'b', 'c'}) {
                if (write(file, &letter, 1) != 1 || write(STDOUT_FILENO, "", 0) != 0) {
                    return 1;
                }
            }
            return close(file);
        };
    }
};

TEST_F(TracedChild, IsTracedToItsEndUnharmed)
{
    const TracedRun run = child_traceAll(board, letters());
    EXPECT_EQ(run.calls, (Trace{"create /tmp/traced", "write /tmp/traced", "write /tmp/traced",
                                "write /tmp/traced", "close /tmp/traced", "exit"}));
    EXPECT_FALSE(run.killed);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(board.file_get(kTracedFile), "abc");
}

TEST_F(TracedChild, IsKilledBeforeTheCallTakesEffect)
{
    EXPECT_TRUE(child_killBefore(board, 0, letters()).killed);
    EXPECT_FALSE(board.file_exists(kTracedFile));
    constexpr const char* kLeft[] = {"", "a", "ab", "abc", "abc"};
    for (size_t call = 1; call <= 5; ++call) {
        const TracedRun run = child_killBefore(board, call, letters());
        EXPECT_TRUE(run.killed);
        EXPECT_EQ(run.calls.size(), call + 1);
        EXPECT_EQ(board.file_get(kTracedFile), kLeft[call - 1]) << "killed before call " << call;
    }
}

TEST_F(TracedChild, IsNotKilledBehindItsLastCall)
{
    const TracedRun run = child_killBefore(board, 6, letters());
    EXPECT_FALSE(run.killed);
    EXPECT_EQ(run.status, 0);
}

TEST_F(TracedChild, TellsExitStatusAndSignal)
{
    EXPECT_EQ(child_traceAll(board, [] { return 7; }).status, 7);
    EXPECT_EQ(child_traceAll(board, [] { return raise(SIGKILL); }).status, -1);
}

TEST_F(TracedChild, ShowsACallThatItDoesNotKnow)
{
    const TracedRun run = child_traceAll(board, [] { return umask(0) == 0 ? 1 : 0; });
    ASSERT_EQ(run.calls.size(), 2U);
    EXPECT_EQ(run.calls[0].rfind("system call ", 0), 0U) << run.calls[0];
}

constexpr KillPoint kLetters[] = {
    {"create /tmp/traced", Often::kOnce, "absent", ""},
    {"write /tmp/traced", Often::kOnce, "", ""},
    {"write /tmp/traced", Often::kFurther, "a", ""},
    {"read /tmp/traced", Often::kFurther, "never", ""},
    {"close /tmp/traced", Often::kEach, "abc", ""},
    {"exit", Often::kOnce, "abc", ""},
};

TEST_F(TracedChild, SweepHandsOutARowForEachCall)
{
    Trace rows;
    kill_sweep(
        board, [this] { board.file_remove(kTracedFile); }, letters(), kLetters,
        [&](const KillPoint& point) { rows.emplace_back(point.left); });
    EXPECT_EQ(rows, (Trace{"absent", "", "a", "a", "abc", "abc"}));
}

TEST_F(TracedChild, SweepRefusesATableThatDoesNotFit)
{
    const auto sweep = [&](const std::vector<KillPoint>& table, const std::function<int()>& work) {
        testing::TestPartResultArray failures;
        {
            const testing::ScopedFakeTestPartResultReporter caught(
                testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD,
                &failures);
            kill_sweep(
                board, [] {}, work, table, [](const KillPoint&) { ADD_FAILURE() << "swept"; });
        }
        return failures.size() == 1 ? failures.GetTestPartResult(0).message()
                                    : std::to_string(failures.size()) + " failures";
    };
    std::vector<KillPoint> table(std::begin(kLetters), std::end(kLetters));

    table.pop_back();
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "call 5: exit, but the table has no more rows",
                        sweep(table, letters()));

    table.assign(std::begin(kLetters), std::end(kLetters));
    table[2].often = Often::kOnce;
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "call 3: write /tmp/traced, but the table has",
                        sweep(table, letters()));

    table.assign(std::begin(kLetters), std::end(kLetters));
    table.push_back({"unlink /tmp/traced", Often::kEach, "", ""});
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "never came: unlink /tmp/traced",
                        sweep(table, letters()));

    EXPECT_PRED_FORMAT2(testing::IsSubstring, "the child by itself, not killed",
                        sweep(table, [] { return 1; }));
}

} // namespace
