// The simulated board's own tests: what it promises, before anything is tested with it.
#include <gtest/gtest-spi.h>

#include <fstream>

#include "board/board_test.h"
#include "maint/save_lock.h"
#include "maint/system_log.h"

namespace
{

using BoardSelf = BoardTest;

TEST_F(BoardSelf, KeepsTheProductInsideThePrivateDirectory)
{
    board.file_put("/conf/system.log", hex("00 00 00 00 00 00 00 00 01 00 00 00"));
    ASSERT_EQ(systemLog_put("hello"), 0);
    std::ifstream file(board.host("/conf/system.log"), std::ios::binary);
    std::string head(12, '\0');
    ASSERT_TRUE(file.read(head.data(), 12));
    EXPECT_EQ(head, hex("00 00 00 00 01 00 01 00 01 00 00 00"));
    EXPECT_NE(board.host("/conf/system.log"), "/conf/system.log");
}

TEST_F(BoardSelf, RecordsEveryCallInOrder)
{
    FILE* lock = nullptr;
    ASSERT_EQ(fileAccess_lock(&lock, SAVE_LOCK_TRY), 0);
    EXPECT_EQ(board.open_descriptors(), 1U);
    EXPECT_EQ(board.held_locks(), 1U);
    ASSERT_EQ(fileAccess_unlock(lock), 0);
    EXPECT_EQ(board.calls, (Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX|LOCK_NB",
                                  "fclose /tmp/Saveing"}));
}

TEST_F(BoardSelf, FailsThePlannedCallAndNoOther)
{
    FILE* lock = nullptr;
    board.fail_call(2);
    EXPECT_EQ(fileAccess_lock(&lock, SAVE_LOCK_WAIT), -1);
    EXPECT_EQ(lock, nullptr);
    EXPECT_EQ(board.calls,
              (Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX -> failed",
                     "fclose /tmp/Saveing",
                     "puts fileAccess_lock : 002 : /tmp/Saveing file lock (blocking) error"}));
    ASSERT_EQ(fileAccess_lock(&lock, SAVE_LOCK_WAIT), 0);
    ASSERT_EQ(fileAccess_unlock(lock), 0);
}

TEST_F(BoardSelf, FailsEveryCallFromThePlannedOne)
{
    FILE* lock = nullptr;
    board.fail_from(1);
    EXPECT_EQ(fileAccess_lock(&lock, SAVE_LOCK_WAIT), -1);
    EXPECT_EQ(fileAccess_lock(&lock, SAVE_LOCK_WAIT), -1);
    EXPECT_EQ(board.console, "") << "the console calls fail, too";
}

TEST_F(BoardSelf, AnswersTheClockAsSet)
{
    board.file_put("/conf/system.log", hex("00 00 00 00 00 00 00 00 01 00 00 00"));
    board.now = 951782400;
    ASSERT_EQ(systemLog_put("x"), 0);
    EXPECT_EQ(board.file_get("/conf/system.log").substr(12, 19), "2000/02/29 00:00:00");
}

TEST_F(BoardSelf, ReportsALeftDescriptorAndLock)
{
    FILE* lock = nullptr;
    ASSERT_EQ(fileAccess_lock(&lock, SAVE_LOCK_WAIT), 0);
    EXPECT_EQ(board.open_descriptors(), 1U);
    EXPECT_EQ(board.held_locks(), 1U);
    ASSERT_EQ(fileAccess_unlock(lock), 0);
    EXPECT_EQ(board.open_descriptors(), 0U);
    EXPECT_EQ(board.held_locks(), 0U);
}

TEST_F(BoardSelf, RefusesToWaitForItsOwnLockLoudly)
{
    FILE* first = nullptr;
    FILE* second = nullptr;
    ASSERT_EQ(fileAccess_lock(&first, SAVE_LOCK_WAIT), 0);
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(fileAccess_lock(&second, SAVE_LOCK_WAIT), -1),
                            "waits for its own lock on /tmp/Saveing");
    EXPECT_EQ(fileAccess_lock(&second, SAVE_LOCK_TRY), -1) << "to try is no wait";
    ASSERT_EQ(fileAccess_unlock(first), 0);
}

TEST_F(BoardSelf, RefusesAPathOutsideTheBoardLoudly)
{
    EXPECT_NONFATAL_FAILURE((void)board.host("/etc/passwd"), "outside the board: /etc/passwd");
    EXPECT_NONFATAL_FAILURE((void)board.host("/tmp/../etc/passwd"), "outside the board");
}

TEST_F(BoardSelf, RefusesTheCloseOfAClosedDescriptorLoudly)
{
    EXPECT_NONFATAL_FAILURE(board.closing(99), "which is not open");
}

TEST_F(BoardSelf, StepsInBeforeACall)
{
    std::string seen;
    board.before_call = [&](const std::string& call) { seen += call + "\n"; };
    FILE* lock = nullptr;
    ASSERT_EQ(fileAccess_lock(&lock, SAVE_LOCK_WAIT), 0);
    EXPECT_EQ(seen, "fopen /tmp/Saveing w\nflock /tmp/Saveing LOCK_EX\n");
    ASSERT_EQ(fileAccess_unlock(lock), 0);
}

TEST_F(BoardSelf, SweepFailsEachCallOnce)
{
    std::vector<std::string> failed;
    failure_sweep(
        board, [] {},
        [] {
            FILE* lock = nullptr;
            return fileAccess_lock(&lock, SAVE_LOCK_WAIT) == 0 ? fileAccess_unlock(lock) : -1;
        },
        [&](size_t, const std::string& text, int32_t result) {
            failed.push_back(text);
            EXPECT_EQ(result, -1);
        });
    EXPECT_EQ(failed,
              (Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX", "fclose /tmp/Saveing"}));
}

} // namespace
