// The log routines wait for whoever holds the lock on their file, and work on what they then find.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <functional>
#include <ostream>

#include "board/board_test.h"
#include "board/lock_holder.h"
#include "log/log_bytes.h"
#include "maint/system_log.h"
#include "maint/user_log.h"

namespace
{

int32_t system_log_put()
{
    return systemLog_put("waited");
}

int32_t report_to_log()
{
    report_message(LOG_SINK_SYSTEM_LOG, "waited");
    return 0;
}

int32_t working_header_read()
{
    SystemLogHeader header{};
    const int32_t result = zev_maintlog_head_read(&header);
    EXPECT_EQ(bytes_of(header), systemHeader_bytes(7, 8));
    return result;
}

struct Wait {
    const char* name;
    const char* locked;           // the file that the other process holds
    std::function<void()> change; // what happens to the files before it lets go
    int32_t (*routine)();
    const char* changed; // the file looked at afterwards, and what it must hold
    Bytes content;
};

void PrintTo(const Wait& wait, std::ostream* out)
{
    *out << wait.name;
}

class LogFiles : public BoardTest
{
  protected:
    void SetUp() override
    {
        board.file_put(kSystemLog, systemHeader_bytes(0, 0));
        board.file_put(kFlashImage, systemHeader_bytes(0, 0));
        board.file_put(kUserLog, userHeader_bytes(0, 0));
    }
};

class LockWait : public LogFiles, public testing::WithParamInterface<Wait>
{
};

TEST_P(LockWait, WaitsForTheOtherProcessAndThenSucceeds)
{
    const Wait& wait = GetParam();
    LockHolder holder(board, wait.locked);
    holder.release_when_awaited(wait.change);
    EXPECT_EQ(wait.routine(), 0);
    EXPECT_TRUE(holder.released());
    EXPECT_EQ(board.file_get(wait.changed), wait.content);
    EXPECT_EQ(board.console.find(" error"), std::string::npos) << board.console;
    EXPECT_EQ(board.open_descriptors(), 0U);
    EXPECT_EQ(board.held_locks(), 0U);
    EXPECT_TRUE(lock_is_free(board, wait.locked));
}

void put(const char* path, const Bytes& content)
{
    Board::current().file_put(path, content);
}

// Creation and rebuild truncate the file when they open it, before they have the lock. A writer
// that has it goes on at its place in what is now an empty file: here with the second record and
// the header over it.
const Bytes kHole(100, '\0');
const Bytes kSecondRecord = record_line("in the middle");

void holder_writes()
{
    put(kSystemLog, systemHeader_bytes(2, 2) + kHole + kSecondRecord);
}

INSTANTIATE_TEST_SUITE_P(
    EachLock, LockWait,
    testing::Values(
        Wait{"systemLog_put", kSystemLog, [] { put(kSystemLog, systemHeader_bytes(1, 0)); },
             system_log_put, kSystemLog, systemHeader_bytes(2, 1) + record_line("waited")},
        Wait{"report_message", kSystemLog, [] { put(kSystemLog, systemHeader_bytes(1, 0)); },
             report_to_log, kSystemLog, systemHeader_bytes(2, 1) + record_line("waited")},
        Wait{"zev_maintlog_head_read", kSystemLog,
             [] { put(kSystemLog, systemHeader_bytes(7, 8)); }, working_header_read, kSystemLog,
             systemHeader_bytes(7, 8)},
        Wait{"systemLogFileInit", kSystemLog, {}, systemLogFileInit, kSystemLog, fresh_log()},
        // The header is replaced; what the other process wrote behind it stays, uncounted.
        Wait{"systemLogFileInit_written", kSystemLog, holder_writes, systemLogFileInit, kSystemLog,
             fresh_log() + kHole + kSecondRecord},
        Wait{"systemLogFileMake_image", kFlashImage,
             [] { put(kFlashImage, systemHeader_bytes(0, 9)); }, systemLogFileMake, kSystemLog,
             systemHeader_bytes(0, 9)},
        Wait{"systemLogFileMake_log",
             kSystemLog,
             {},
             systemLogFileMake,
             kSystemLog,
             systemHeader_bytes(0, 0)},
        Wait{"systemLogFileMake_log_written", kSystemLog, holder_writes, systemLogFileMake,
             kSystemLog, systemHeader_bytes(0, 0) + kHole + kSecondRecord},
        Wait{"userLog_put_marker", kFlashSave, {}, event_put, kFlashSave, hex("01")},
        Wait{"userLog_put_log", kUserLog, [] { put(kUserLog, userHeader_bytes(1, 0)); }, event_put,
             kUserLog, userHeader_bytes(2, 1) + kEvent}),
    [](const auto& each) { return each.param.name; });

using LockWaitRebuild = LogFiles;

// The image goes over what the other process wrote as far as the image reaches: its one record
// (zeros, whose checksum is all ones) fills the first slot, the second one stays, uncounted.
TEST_F(LockWaitRebuild, LeavesWhatLiesBehindTheImage)
{
    const Bytes image = hex("07 00 00 00 01 00 01 00 01 00 FF FF") + Bytes(100, '\0');
    board.file_put(kFlashImage, image);
    LockHolder holder(board, kSystemLog);
    holder.release_when_awaited(
        [] { put(kSystemLog, systemHeader_bytes(2, 2) + kSecondRecord + kSecondRecord); });
    EXPECT_EQ(systemLogFileMake(), 0);
    EXPECT_TRUE(holder.released());
    EXPECT_EQ(board.file_get(kSystemLog), image + kSecondRecord);
}

using LockWaitReader = LogFiles;

// A header that another process has half written when the reader comes is read whole.
TEST_F(LockWaitReader, SeesNoHalfWrittenHeader)
{
    const Bytes header = hex("AA AA AA AA 07 00 08 00 09 00 BB BB");
    const int log = open(board.host(kSystemLog).c_str(), O_WRONLY);
    ASSERT_GE(log, 0);
    ASSERT_EQ(flock(log, LOCK_EX), 0);
    EXPECT_EQ(pwrite(log, header.data(), 6, 0), 6);
    const pid_t reader = child_start([&] {
        alarm(100); // one that waits for ever fails the test and is gone
        SystemLogHeader seen{};
        return zev_maintlog_head_read(&seen) == 0 && bytes_of(seen) == header ? 0 : 1;
    });
    EXPECT_TRUE(child_sleeps(reader)) << "has read without waiting";
    EXPECT_EQ(pwrite(log, header.data() + 6, 6, 6), 6);
    EXPECT_EQ(flock(log, LOCK_UN), 0); // to close is not enough: the child has it open, too
    EXPECT_EQ(close(log), 0);
    EXPECT_EQ(child_wait(reader), 0) << "what it saw was another header";
}

using LockNoWait = LogFiles;

TEST_F(LockNoWait, FlashHeaderIsReadWithoutTheLock)
{
    LockHolder holder(board, kFlashImage);
    holder.release_when_awaited();
    SystemLogHeader header{};
    EXPECT_EQ(read_systemlog_header(&header), 0);
    EXPECT_FALSE(holder.released());
    EXPECT_EQ(bytes_of(header), systemHeader_bytes(0, 0));
    EXPECT_EQ(board.calls, (Trace{"open /dev/mtd_systemlog O_RDONLY", "read /dev/mtd_systemlog 12",
                                  "close /dev/mtd_systemlog"}));
}

TEST_F(LockNoWait, LogRoutinesLeaveTheSaveLockAlone)
{
    LockHolder holder(board, kSaveLock);
    holder.release_when_awaited();
    EXPECT_EQ(system_log_put(), 0);
    EXPECT_EQ(event_put(), 0);
    EXPECT_EQ(systemLogFileMake(), 0);
    EXPECT_EQ(systemLogFileInit(), 0);
    SystemLogHeader header{};
    EXPECT_EQ(zev_maintlog_head_read(&header), 0);
    EXPECT_FALSE(holder.released());
}

} // namespace
