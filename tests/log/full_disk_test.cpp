// The log routines on a disk that is really full: a file can be overwritten as far as it goes, but
// does not grow.
//
// All of them write through a buffered stream, so the failure does not show where the routine looks
// for it. Up to a buffer's worth it shows when the stream is closed, whose result no routine looks
// at: the creation of the empty log and the rebuild from a small image return 0, say nothing, and
// leave what fitted. A record shows at the seek behind it, and is reported as a failing seek. Only
// a rebuild of more than a buffer shows where it happens.
//
// Messages for the system log meet the same disk: they show on the console, and the writer adds its
// own to say that they are in no log.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <csignal>
#include <optional>

#include "log/console_lines.h"
#include "log/log_bytes.h"
#include "maint/system_log.h"
#include "maint/user_log.h"

namespace
{

// What a child made of it, as it was printed; the last line is the routine's result.
using Report = std::string;

// Lets no file of this process reach beyond `size` bytes. A write that crosses the limit stops at
// it, one that begins there fails.
bool disk_fill(rlim_t size)
{
    const rlimit limit{size, size};
    return signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

class FullDisk : public BoardTest
{
  protected:
    Report run(rlim_t size, const std::function<int32_t()>& routine)
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe(ends.data()), 0);
        const pid_t child = child_start([&] {
            if (!disk_fill(size)) {
                return 1;
            }
            const int32_t result = routine();
            const Report report = board.console + std::to_string(result);
            const bool sent =
                write(ends[1], report.data(), report.size()) == static_cast<ssize_t>(report.size());
            return sent && board.open_descriptors() == 0 && board.held_locks() == 0 ? 0 : 2;
        });
        close(ends[1]);
        Report report;
        char byte = 0;
        while (read(ends[0], &byte, 1) == 1) {
            report += byte;
        }
        close(ends[0]);
        EXPECT_EQ(child_wait(child), 0);
        return report;
    }
};

TEST_F(FullDisk, EmptyLogIsSaidToBeCreatedAndIsCutShort)
{
    for (const rlim_t room : {0U, 5U, 11U}) {
        SCOPED_TRACE(room);
        board.file_put(kSystemLog, sample_image());
        EXPECT_EQ(run(room, systemLogFileInit), "0");
        EXPECT_EQ(board.file_get(kSystemLog), fresh_log().substr(0, room));
    }
    EXPECT_EQ(run(12, systemLogFileInit), "0");
    EXPECT_EQ(board.file_get(kSystemLog), fresh_log()) << "room enough";
}

TEST_F(FullDisk, SmallImageIsSaidToBeRebuiltAndIsCutShort)
{
    board.file_put(kFlashImage, sample_image());
    for (const rlim_t room : {0U, 11U, 12U, 200U, 311U}) {
        SCOPED_TRACE(room);
        EXPECT_EQ(run(room, systemLogFileMake), kSampleHeaderLines + kSampleChecksumLines + "0");
        EXPECT_EQ(board.file_get(kSystemLog), sample_image().substr(0, room));
    }
}

TEST_F(FullDisk, LargeImageIsRefusedAndItsBeginningStays)
{
    const Bytes image = image_make({7, 1000, 300, 1, 0}, records_make(1000));
    board.file_put(kFlashImage, image);
    struct Row {
        rlim_t room;
        std::string writer; // what the log writer makes of message 010
    };
    const Row rows[] = {
        {0, kLogEmpty},
        {11, kLogEmpty},
        {12, "systemLog_put : 007 : /conf/system.log file seek error\n"},
        {5000, "systemLog_put : 007 : /conf/system.log file seek error\n"},
        // The slot of the message, at 30012, lies within what fitted.
        {40000, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.room);
        const Report report = run(row.room, systemLogFileMake);
        EXPECT_EQ(report.substr(report.find("systemLogFileMake")), kMake010 + row.writer + "-1");
        Bytes left = image.substr(0, row.room);
        if (row.room == 40000) {
            left.replace(6, 2, hex("2D 01")); // location 301
            left.replace(
                30012, kRecordSize,
                record_line("systemLogFileMake : 010 : /conf/system.log file write error"));
        }
        EXPECT_TRUE(board.file_get(kSystemLog) == left);
    }
}

TEST_F(FullDisk, RecordOfTheSystemLogIsLostWithAFailingSeek)
{
    const Bytes log = systemHeader_bytes(2, 2) + records_make(2);
    const Bytes record = record_line("lost");
    for (const size_t room : {size_t{0}, size_t{30}, size_t{99}}) {
        SCOPED_TRACE(room);
        board.file_put(kSystemLog, log);
        EXPECT_EQ(run(log.size() + room, [] { return systemLog_put("lost"); }),
                  "systemLog_put : 007 : /conf/system.log file seek error\n-1");
        EXPECT_EQ(board.file_get(kSystemLog), log + record.substr(0, room))
            << "what fitted of the record, which the header does not count";
    }
}

TEST_F(FullDisk, FullRingOfTheSystemLogGoesOn)
{
    const Bytes records = records_make(1000);
    board.file_put(kSystemLog, systemHeader_bytes(1000, 1000) + records);
    EXPECT_EQ(run(100012, [] { return systemLog_put("kept"); }), "0");
    EXPECT_TRUE(board.file_get(kSystemLog) ==
                systemHeader_bytes(1000, 1) + record_line("kept") + records.substr(kRecordSize));
}

// The user log. Its message finds the system log longer than the limit, and full as well.

TEST_F(FullDisk, RecordOfTheUserLogIsLostWithAFailingSeek)
{
    const Bytes log = userHeader_bytes(2, 2) + Bytes(32, 'r');
    const Bytes systemLog = systemHeader_bytes(3, 3) + records_make(3);
    for (const size_t room : {size_t{0}, size_t{7}, size_t{15}}) {
        SCOPED_TRACE(room);
        board.file_put(kUserLog, log);
        board.file_put(kSystemLog, systemLog);
        EXPECT_EQ(run(log.size() + room, event_put),
                  "userLog_put : 012 : /conf/user.log file seek error\n"
                  "systemLog_put : 007 : /conf/system.log file seek error\n-1");
        EXPECT_EQ(board.file_get(kUserLog), log + kEvent.substr(0, room));
        EXPECT_EQ(board.file_get(kSystemLog), systemLog);
        EXPECT_EQ(board.file_get(kFlashSave), hex("01")) << "raised for a record that is lost";
    }
}

// Nothing is said of the marker: its one byte is lost in the close.
TEST_F(FullDisk, MarkerIsLeftEmptyInSilence)
{
    const Bytes log = userHeader_bytes(2, 2) + Bytes(32, 'r');
    const Bytes systemLog = systemHeader_bytes(3, 3) + records_make(3);
    board.file_put(kFlashSave, hex("01"));
    board.file_put(kUserLog, log);
    board.file_put(kSystemLog, systemLog);
    EXPECT_EQ(run(0, event_put), "userLog_put : 012 : /conf/user.log file seek error\n"
                                 "systemLog_put : 007 : /conf/system.log file seek error\n-1");
    EXPECT_EQ(board.file_get(kFlashSave), "");
    EXPECT_EQ(board.file_get(kUserLog), log);
    EXPECT_EQ(board.file_get(kSystemLog), systemLog);
}

} // namespace
