// The save lock: its calls, its messages, and what another process sees of it.
#include "maint/save_lock.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <vector>

#include "board/failure_table.h"
#include "board/lock_holder.h"
#include "log/console_lines.h"
#include "log/log_calls.h"

namespace
{

// Something that is no null pointer and no stream, to see that lock has written its handle.
FILE* stale_handle()
{
    alignas(std::max_align_t) static int nothing;
    return static_cast<FILE*>(static_cast<void*>(&nothing));
}

class SaveLock : public BoardTest
{
  protected:
    FILE* handle = stale_handle();
};

TEST_F(SaveLock, BlockingModeLocksExclusively)
{
    ASSERT_EQ(fileAccess_lock(&handle, 0), 0);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(board.path_of(fileno(handle)), "/tmp/Saveing");
    EXPECT_EQ(board.calls, (Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX"}));
    EXPECT_EQ(board.open_descriptors(), 1U);
    EXPECT_EQ(board.held_locks(), 1U);
    EXPECT_EQ(fileAccess_unlock(handle), 0);
    EXPECT_EQ(board.calls,
              (Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX", "fclose /tmp/Saveing"}));
    EXPECT_EQ(board.console, "");
}

class SaveLockTryMode : public SaveLock, public testing::WithParamInterface<SaveLockMode>
{
};

TEST_P(SaveLockTryMode, LocksWithoutWaiting)
{
    ASSERT_EQ(fileAccess_lock(&handle, GetParam()), 0);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(board.calls, (Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX|LOCK_NB"}));
    EXPECT_EQ(board.open_descriptors(), 1U);
    EXPECT_EQ(board.held_locks(), 1U);
    EXPECT_EQ(fileAccess_unlock(handle), 0);
    EXPECT_EQ(board.calls.back(), "fclose /tmp/Saveing");
    EXPECT_EQ(board.calls.size(), 3U);
    EXPECT_EQ(board.console, "");
}

INSTANTIATE_TEST_SUITE_P(AnyModeButZero, SaveLockTryMode,
                         testing::Values(1U, 2U, 0x100U, 0x10000U, 0x7FFFFFFFU, 0x80000000U,
                                         0xFFFFFFFFU));

TEST_F(SaveLock, FileStaysAndIsEmptyAfterwards)
{
    ASSERT_FALSE(board.file_exists(kSaveLock));
    ASSERT_EQ(fileAccess_lock(&handle, 0), 0);
    EXPECT_TRUE(board.file_exists(kSaveLock));
    ASSERT_EQ(fileAccess_unlock(handle), 0);
    ASSERT_TRUE(board.file_exists(kSaveLock));
    EXPECT_EQ(board.file_get(kSaveLock), "");
}

TEST_F(SaveLock, TruncatesWhatTheFileHeld)
{
    for (const SaveLockMode mode : {0U, 1U}) {
        board.file_put(kSaveLock, "left behind");
        ASSERT_EQ(fileAccess_lock(&handle, mode), 0);
        EXPECT_EQ(board.file_get(kSaveLock), "");
        ASSERT_EQ(fileAccess_unlock(handle), 0);
        EXPECT_EQ(board.file_get(kSaveLock), "");
    }
}

TEST_F(SaveLock, CanBeTakenAgainAfterUnlock)
{
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(fileAccess_lock(&handle, 1), 0);
        ASSERT_EQ(fileAccess_unlock(handle), 0);
    }
}

// Messages and failures -----------------------------------------------------------------------

TEST_F(SaveLock, UnlockRefusesANullHandle)
{
    EXPECT_EQ(fileAccess_unlock(nullptr), -1);
    EXPECT_EQ(board.calls, (Trace{puts_of(kLockAbsent)}));
    EXPECT_EQ(board.console, kLockAbsent);
}

TEST_F(SaveLock, UnlockReportsAFailedClose)
{
    ASSERT_EQ(fileAccess_lock(&handle, 0), 0);
    board.restart();
    board.fail_call(1);
    EXPECT_EQ(fileAccess_unlock(handle), -1);
    EXPECT_EQ(board.calls, (Trace{"fclose /tmp/Saveing -> failed", puts_of(kLockUnclosed)}));
    EXPECT_EQ(board.console, kLockUnclosed);
}

TEST_F(SaveLock, FileThatCannotBeOpened)
{
    std::filesystem::create_directory(board.host(kSaveLock)); // in the way, even of root
    for (const SaveLockMode mode : {0U, 1U}) {
        board.restart();
        handle = stale_handle();
        EXPECT_EQ(fileAccess_lock(&handle, mode), -1);
        EXPECT_EQ(handle, nullptr);
        EXPECT_EQ(board.calls, (Trace{"fopen /tmp/Saveing w", puts_of(kLockUnopened)}));
        EXPECT_EQ(board.console, kLockUnopened);
    }
}

TEST_F(SaveLock, BlockingLockThatFails)
{
    board.fail_call(2);
    EXPECT_EQ(fileAccess_lock(&handle, 0), -1);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(board.calls, (Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX -> failed",
                                  "fclose /tmp/Saveing", puts_of(kLockUntaken)}));
    EXPECT_EQ(board.console, kLockUntaken);
}

TEST_F(SaveLock, NonBlockingLockThatFails)
{
    board.fail_call(2);
    EXPECT_EQ(fileAccess_lock(&handle, 1), -1);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(board.calls,
              (Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX|LOCK_NB -> failed",
                     "fclose /tmp/Saveing", puts_of(kLockBusy)}));
    EXPECT_EQ(board.console, kLockBusy);
}

TEST_F(SaveLock, MessagesStayOffTheSystemLog)
{
    board.file_put(kSystemLog, fresh_log());
    for (const SaveLockMode mode : {0U, 1U}) {
        for (const size_t failing : {1U, 2U}) {
            board.restart();
            board.fail_call(failing);
            EXPECT_EQ(fileAccess_lock(&handle, mode), -1);
        }
    }
    EXPECT_EQ(fileAccess_unlock(nullptr), -1);
    board.restart();
    board.fail_call(3);
    ASSERT_EQ(fileAccess_lock(&handle, 0), 0);
    EXPECT_EQ(fileAccess_unlock(handle), -1);
    EXPECT_EQ(board.file_get(kSystemLog), fresh_log());
}

// What one call of lock and unlock leaves behind when a call below it fails.
struct Failure {
    std::string call;
    int32_t result;        // of the lock
    int32_t unlock_result; // 1: not reached
    bool handle_null;
    std::string console;
};

class SaveLockSweep : public SaveLock
{
  protected:
    void sweep(SaveLockMode mode, const std::vector<Failure>& failures)
    {
        int32_t unlock_result = 1;
        FILE* locked = nullptr;
        failureTable_expect(
            board, [] {},
            [&] {
                locked = stale_handle();
                unlock_result = 1;
                const int32_t lock_result = fileAccess_lock(&locked, mode);
                if (lock_result == 0) {
                    unlock_result = fileAccess_unlock(locked);
                }
                return lock_result;
            },
            failures,
            [&](const Failure& row, size_t) {
                EXPECT_EQ(unlock_result, row.unlock_result);
                EXPECT_EQ(locked == nullptr, row.handle_null);
            });
    }
};

TEST_F(SaveLockSweep, Blocking)
{
    sweep(0, {{"fopen /tmp/Saveing w", -1, 1, true, kLockUnopened},
              {"flock /tmp/Saveing LOCK_EX", -1, 1, true, kLockUntaken},
              {"fclose /tmp/Saveing", 0, -1, false, kLockUnclosed}});
}

TEST_F(SaveLockSweep, NonBlocking)
{
    sweep(1, {{"fopen /tmp/Saveing w", -1, 1, true, kLockUnopened},
              {"flock /tmp/Saveing LOCK_EX|LOCK_NB", -1, 1, true, kLockBusy},
              {"fclose /tmp/Saveing", 0, -1, false, kLockUnclosed}});
}

TEST_F(SaveLockSweep, NonBlockingAndHeldByAnotherProcess)
{
    LockHolder holder(board, kSaveLock);
    holder.release_when_awaited(); // never: lets a lock that waits succeed, and the test fail
    sweep(1, {{"fopen /tmp/Saveing w", -1, 1, true, kLockUnopened},
              {"flock /tmp/Saveing LOCK_EX|LOCK_NB", -1, 1, true, kLockBusy},
              {"fclose /tmp/Saveing", -1, 1, true, kLockBusy},
              {puts_of(kLockBusy), -1, 1, true, ""}});
}

// With other holders --------------------------------------------------------------------------

TEST_F(SaveLock, KeepsOtherProcessesOutUntilUnlock)
{
    for (const SaveLockMode mode : {0U, 1U}) {
        ASSERT_EQ(fileAccess_lock(&handle, mode), 0);
        EXPECT_FALSE(lock_is_free(board, kSaveLock));
        ASSERT_EQ(fileAccess_unlock(handle), 0);
        EXPECT_TRUE(lock_is_free(board, kSaveLock));
    }
}

TEST_F(SaveLock, IsFreeAfterAFailedClose)
{
    ASSERT_EQ(fileAccess_lock(&handle, 0), 0);
    board.fail_call(1);
    ASSERT_EQ(fileAccess_unlock(handle), -1);
    EXPECT_TRUE(lock_is_free(board, kSaveLock));
}

TEST_F(SaveLock, BlockingModeWaitsForAnotherProcess)
{
    LockHolder holder(board, kSaveLock);
    holder.release_when_awaited();
    EXPECT_FALSE(holder.released());
    EXPECT_EQ(fileAccess_lock(&handle, 0), 0);
    EXPECT_TRUE(holder.released());
    EXPECT_EQ(board.console, "");
    EXPECT_FALSE(lock_is_free(board, kSaveLock));
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(fileAccess_unlock(handle), 0);
}

TEST_F(SaveLock, NonBlockingModeFailsAtOnceWhileAnotherProcessHoldsIt)
{
    {
        LockHolder holder(board, kSaveLock);
        holder.release_when_awaited(); // never, as above
        ASSERT_EQ(fileAccess_lock(&handle, 1), -1);
        EXPECT_EQ(handle, nullptr);
        EXPECT_EQ(board.calls, (Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX|LOCK_NB",
                                      "fclose /tmp/Saveing", puts_of(kLockBusy)}));
    }
    EXPECT_EQ(fileAccess_lock(&handle, 1), 0) << "the other process is gone";
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(fileAccess_unlock(handle), 0);
}

TEST_F(SaveLock, SecondLockInTheSameProcessMeetsTheFirst)
{
    for (const SaveLockMode mode : {0U, 1U}) {
        ASSERT_EQ(fileAccess_lock(&handle, mode), 0);
        board.restart();
        board.before_call = [this](const std::string& call) {
            if (call == "flock /tmp/Saveing LOCK_EX") {
                ADD_FAILURE() << "would wait for ever";
                board.fail_call(1);
            }
        };
        FILE* second = stale_handle();
        EXPECT_EQ(fileAccess_lock(&second, 1), -1);
        board.before_call = nullptr;
        EXPECT_EQ(second, nullptr);
        EXPECT_EQ(board.console, kLockBusy);
        EXPECT_FALSE(lock_is_free(board, kSaveLock)) << "the first lock is still held";
        EXPECT_EQ(fileAccess_unlock(handle), 0);
    }
}

TEST_F(SaveLock, SecondBlockingLockInTheSameProcessWaitsForTheFirst)
{
    std::array<int, 2> events{};
    ASSERT_EQ(pipe(events.data()), 0);
    const pid_t child = child_start([&] {
        FILE* first = nullptr;
        FILE* second = nullptr;
        board.own_wait_fails = false;
        if (fileAccess_lock(&first, 0) != 0) {
            return 1;
        }
        board.before_call = [&](const std::string&) {
            if (write(events[1], "b", 1) != 1) { // "b": begins to lock a second time
                _exit(2);
            }
        };
        fileAccess_lock(&second, 0);
        return 3; // has not waited
    });
    close(events[1]);
    // The second lock's two calls, then nothing more: neither an end nor a message of the child.
    std::array<char, 2> begun{};
    for (char& event : begun) {
        EXPECT_EQ(read(events[0], &event, 1), 1);
    }
    EXPECT_TRUE(child_sleeps(child));
    EXPECT_FALSE(lock_is_free(board, kSaveLock));
    EXPECT_EQ(kill(child, SIGKILL), 0);
    EXPECT_EQ(child_wait(child), -1) << "ended by the kill alone";
    close(events[0]);
}

} // namespace
