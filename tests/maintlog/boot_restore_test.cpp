// The decision at boot: keep, rebuild or recreate the working log; and the program around it.
#include "log/console_lines.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>

#include "log/log_bytes.h"
#include "maint/maintlog.h"
#include "maint/system_log.h"

namespace
{

using BootRestore = BoardTest;
using Program = BoardTest;

// The calls that look at the working file, and those that create the empty one.
const Trace kLooked{"stat /conf/system.log",     "puts zev_maintlog_init : 001 : Warm Start!!",
                    "fopen /conf/system.log rb", "flock /conf/system.log LOCK_EX",
                    "fread /conf/system.log 12", "fclose /conf/system.log"};
const Trace kCreated{"fopen /conf/system.log w+b", "flock /conf/system.log LOCK_EX",
                     "fwrite /conf/system.log 12", "fclose /conf/system.log"};

// --- Keeping ---

TEST_F(BootRestore, KeepsASaneWorkingFileUntouched)
{
    board.file_put(kSystemLog, sane_log());
    board.file_put(kFlashImage, sample_image());
    EXPECT_EQ(zev_maintlog_init(), 0);
    EXPECT_EQ(board.calls, kLooked);
    EXPECT_EQ(board.file_get(kSystemLog), sane_log());
}

TEST_F(BootRestore, LooksAtNumberAndLocationAlone)
{
    // seq_num, version, checksum and the records behind the header do not matter here.
    for (const char* header : {"00 00 00 00 00 00 00 00 01 00 00 00", // an empty log
                               "00 00 00 00 E8 03 E8 03 01 00 00 00", // 1000 and 1000
                               "00 00 00 00 E8 03 00 00 01 00 00 00", // 1000 and 0
                               "00 00 00 00 00 00 E8 03 01 00 00 00", // 0 and 1000
                               "FF FF FF FF 01 00 02 00 00 00 FF FF"}) {
        SCOPED_TRACE(header);
        board.file_put(kSystemLog, hex(header));
        board.restart();
        EXPECT_EQ(zev_maintlog_init(), 0);
        EXPECT_EQ(board.console, kWarm);
        EXPECT_EQ(board.file_get(kSystemLog), hex(header));
    }
}

TEST_F(BootRestore, RejectsAHeaderBeyondTheRing)
{
    for (const char* header : {"00 00 00 00 E9 03 00 00 01 00 00 00", // number 1001
                               "00 00 00 00 00 00 E9 03 01 00 00 00", // location 1001
                               "00 00 00 00 E8 03 E9 03 01 00 00 00", // 1000 and 1001
                               "00 00 00 00 E9 03 E8 03 01 00 00 00", // 1001 and 1000
                               "00 00 00 00 00 00 00 80 01 00 00 00", // location 32768
                               "00 00 00 00 00 80 00 00 01 00 00 00", // number 32768
                               "00 00 00 00 FF FF 00 00 01 00 00 00", // number 65535
                               "00 00 00 00 00 00 FF FF 01 00 00 00", // location 65535
                               "FF FF FF FF FF FF FF FF FF FF FF FF"}) {
        SCOPED_TRACE(header);
        board.file_put(kSystemLog, hex(header) + records_make(4));
        board.file_put(kFlashImage, sample_image());
        board.restart();
        EXPECT_EQ(zev_maintlog_init(), 0);
        EXPECT_EQ(board.console, kWarm + kNotSane + kSampleListing);
        EXPECT_EQ(board.file_get(kSystemLog), sample_image());
    }
}

TEST_F(BootRestore, WaitsForTheWriterThatHoldsTheLog)
{
    board.file_put(kSystemLog, sane_log());
    board.file_put(kFlashImage, sample_image());
    const int log = open(board.host(kSystemLog).c_str(), O_RDWR);
    ASSERT_GE(log, 0);
    ASSERT_EQ(flock(log, LOCK_EX), 0);
    int about_to_lock[2];
    ASSERT_EQ(pipe(about_to_lock), 0);
    const pid_t child = child_start([&] {
        bool signalled = false;
        board.before_call = [&](const std::string& call) {
            if (call == "flock /conf/system.log LOCK_EX") {
                signalled = write(about_to_lock[1], "x", 1) == 1;
            }
        };
        const int32_t result = zev_maintlog_init();
        return signalled && result == 0 && board.console.find(kNotSane) != std::string::npos ? 0
                                                                                             : 1;
    });
    close(about_to_lock[1]);
    char signal = 0;
    EXPECT_EQ(read(about_to_lock[0], &signal, 1), 1);
    // What the child then reads is what the holder of the lock wrote: location 1001.
    EXPECT_EQ(pwrite(log, "\xE9\x03", 2, 6), 2);
    EXPECT_EQ(flock(log, LOCK_UN), 0);
    EXPECT_EQ(child_wait(child), 0);
    close(log);
    close(about_to_lock[0]);
    EXPECT_EQ(board.file_get(kSystemLog), sample_image());
}

// --- Deleting ---

TEST_F(BootRestore, RebuildsAfterAColdStart)
{
    board.file_put(kFlashImage, sample_image());
    EXPECT_EQ(zev_maintlog_init(), 0);
    EXPECT_EQ(board.file_get(kSystemLog), sample_image());
    EXPECT_EQ(board.calls, (Trace{"stat /conf/system.log",
                                  "puts zev_maintlog_init : 004 : Cold Start!!",
                                  "unlink /conf/system.log",
                                  "open /dev/mtd_systemlog O_RDONLY",
                                  "read /dev/mtd_systemlog 12",
                                  "close /dev/mtd_systemlog",
                                  "fopen /dev/mtd_systemlog rb",
                                  "flock /dev/mtd_systemlog LOCK_EX",
                                  "fread /dev/mtd_systemlog 12",
                                  "printf head.seq_num  : 7",
                                  "printf head.number   : 3",
                                  "printf head.location : 5",
                                  "printf head.version  : 1",
                                  "printf head.checksum : 51917",
                                  "fread /dev/mtd_systemlog 300",
                                  "printf FROM header   checksum : 51917",
                                  "printf FROM sytemlog checksum : 51917",
                                  "fclose /dev/mtd_systemlog",
                                  "fopen /conf/system.log w+b",
                                  "flock /conf/system.log LOCK_EX",
                                  "fwrite /conf/system.log 12",
                                  "fwrite /conf/system.log 300",
                                  "fclose /conf/system.log"}));
}

TEST_F(BootRestore, DeletesABadWorkingFileBeforeItReadsTheFlash)
{
    board.file_put(kSystemLog, sane_log().substr(0, 11));
    board.file_put(kFlashImage, sample_image());
    bool deleted = false;
    board.before_call = [&](const std::string& call) {
        if (call == "open /dev/mtd_systemlog O_RDONLY") {
            deleted = !board.file_exists(kSystemLog);
        }
    };
    EXPECT_EQ(zev_maintlog_init(), 0);
    EXPECT_TRUE(deleted);
    EXPECT_EQ(board.console, kWarm + kHeadShort + kUnreadable + kSampleListing);
    ASSERT_GE(board.calls.size(), 10U);
    EXPECT_EQ(Trace(board.calls.begin() + 5, board.calls.begin() + 10),
              (Trace{"fclose /conf/system.log", puts_of(kHeadShort), puts_of(kUnreadable),
                     "unlink /conf/system.log", "open /dev/mtd_systemlog O_RDONLY"}))
        << "after stat, Warm Start, fopen, flock, fread";
    EXPECT_EQ(board.file_get(kSystemLog), sample_image());
}

// A file that cannot be deleted takes the message meanwhile, and is truncated then.
TEST_F(BootRestore, GoesOnWhenTheWorkingFileCannotBeDeleted)
{
    board.file_put(kSystemLog, hex("00 00 00 00 02 00 E9 03 01 00 00 00"));
    board.file_put(kFlashImage, Bytes(kHeaderSize, '\xFF'));
    Bytes before_init;
    board.before_call = [&](const std::string& call) {
        if (call == "fopen /conf/system.log w+b") {
            before_init = board.file_get(kSystemLog);
        }
    };
    board.fail_call(8); // stat, puts 001, fopen, flock, fread, fclose, puts 003, unlink
    EXPECT_EQ(zev_maintlog_init(), 0);
    EXPECT_EQ(board.calls[7], "unlink /conf/system.log -> failed");
    EXPECT_EQ(board.console, kWarm + kNotSane + kErased);
    EXPECT_EQ(before_init, hex("00 00 00 00 03 00 EA 03 01 00 00 00") +
                               Bytes(1001 * kRecordSize, '\0') +
                               record_line("zev_maintlog_init : 006 : syslog init"));
    EXPECT_EQ(board.file_get(kSystemLog), fresh_log());
}

TEST_F(BootRestore, FailsWhenADirectoryStandsInTheWay)
{
    std::filesystem::create_directory(board.host(kSystemLog));
    board.file_put(kFlashImage, sample_image());
    EXPECT_EQ(zev_maintlog_init(), -1);
    EXPECT_EQ(board.console, kWarm + kHeadShort + kUnreadable + kSampleListing + kMake007 +
                                 kLogAbsent + kRefusedUnlogged + kInit001 + kLogAbsent);
}

// --- The empty log: reported first, created then ---

TEST_F(BootRestore, ReportsAMissingFlashBeforeItCreatesTheEmptyLog)
{
    EXPECT_EQ(zev_maintlog_init(), 0);
    const Trace looked{"stat /conf/system.log", puts_of(kCold), "unlink /conf/system.log",
                       "open /dev/mtd_systemlog O_RDONLY"};
    EXPECT_EQ(board.calls, (looked + Trace{puts_of(kFlashUnopened)} + kUnlogged +
                            Trace{puts_of(kNoFlash)} + kUnlogged + kCreated));
    EXPECT_EQ(board.file_get(kSystemLog), hex("00 00 00 00 00 00 00 00 01 00 00 00"));
}

TEST_F(BootRestore, ReportsErasedFlashBeforeItCreatesTheEmptyLog)
{
    board.file_put(kSystemLog, hex("00 00 00 00 01 00 E9 03 01 00 00 00"));
    // Only seq_num counts: the rest is a valid image.
    board.file_put(kFlashImage, sample_image().replace(0, 4, hex("FF FF FF FF")));
    EXPECT_EQ(zev_maintlog_init(), 0);
    EXPECT_EQ(board.calls, (kLooked +
                            Trace{puts_of(kNotSane), "unlink /conf/system.log",
                                  "open /dev/mtd_systemlog O_RDONLY", "read /dev/mtd_systemlog 12",
                                  "close /dev/mtd_systemlog", puts_of(kErased)} +
                            kUnlogged + kCreated));
    EXPECT_EQ(board.file_get(kSystemLog), hex("00 00 00 00 00 00 00 00 01 00 00 00"));
}

TEST_F(BootRestore, TakesASequenceNumberShortOfAllOnesForALog)
{
    for (const char* seq_num : {"FE FF FF FF", "FF FF FF 7F", "FF FF FE FF", "FF FF 00 00"}) {
        SCOPED_TRACE(seq_num);
        const Bytes image = sample_image().replace(0, 4, hex(seq_num));
        board.file_put(kFlashImage, image);
        board.file_remove(kSystemLog);
        EXPECT_EQ(zev_maintlog_init(), 0);
        EXPECT_EQ(board.file_get(kSystemLog), image);
    }
}

TEST_F(BootRestore, ReportsARefusedImageBeforeItCreatesTheEmptyLog)
{
    board.file_put(kFlashImage, sample_image().replace(10, 2, hex("CD CB")));
    EXPECT_EQ(zev_maintlog_init(), 0);
    const auto refused = std::find(board.calls.begin(), board.calls.end(), puts_of(kMake006));
    ASSERT_NE(refused, board.calls.end());
    EXPECT_EQ(*(refused - 1), "fclose /dev/mtd_systemlog");
    EXPECT_EQ(Trace(refused + 1, board.calls.end()),
              kUnlogged + Trace{puts_of(kRefused)} + kUnlogged + kCreated);
    EXPECT_EQ(board.file_get(kSystemLog), hex("00 00 00 00 00 00 00 00 01 00 00 00"));
}

TEST_F(BootRestore, LosesTheMessagesAppendedToAHalfBuiltFile)
{
    board.file_put(kFlashImage, sample_image());
    int creations = 0;
    Bytes before_init;
    board.before_call = [&](const std::string& call) {
        if (call == "fopen /conf/system.log w+b" && ++creations == 2) {
            before_init = board.file_get(kSystemLog);
        }
    };
    board.fail_call(22); // the write of the records
    EXPECT_EQ(zev_maintlog_init(), 0);
    EXPECT_EQ(board.calls[21], "fwrite /conf/system.log 300 -> failed");
    EXPECT_EQ(creations, 2);
    EXPECT_EQ(board.console, kCold + kSampleListing + kMake010 + kRefused);
    EXPECT_EQ(before_init,
              hex("07 00 00 00 05 00 07 00 01 00 CD CA") + Bytes(5 * kRecordSize, '\0') +
                  record_line("systemLogFileMake : 010 : /conf/system.log file write error") +
                  record_line("zev_maintlog_init : 007 : systemlog init"));
    EXPECT_EQ(board.file_get(kSystemLog), fresh_log());
}

TEST_F(BootRestore, ReturnsTheResultOfTheInitialiser)
{
    board.file_put(kFlashImage, Bytes(kHeaderSize, '\xFF'));
    EXPECT_EQ(zev_maintlog_init(), 0);
    board.file_remove(kSystemLog);
    board.restart();
    board.fail_from(10); // stat .. close, puts 006, time, fopen, puts, then the creation
    EXPECT_EQ(zev_maintlog_init(), -1);
    EXPECT_EQ(board.calls[9],
              "puts systemLog_put : 002 : /conf/system.log file open error -> failed");
    EXPECT_EQ(board.calls[10], "fopen /conf/system.log w+b -> failed");
    EXPECT_FALSE(board.file_exists(kSystemLog));
}

TEST_F(BootRestore, KeepsItsOwnResultAtTheNextBoot)
{
    board.file_put(kFlashImage, sample_image());
    ASSERT_EQ(zev_maintlog_init(), 0);
    board.file_remove(kFlashImage);
    board.restart();
    ASSERT_EQ(zev_maintlog_init(), 0);
    EXPECT_EQ(board.console, kWarm);
    EXPECT_EQ(board.file_get(kSystemLog), sample_image());
}

// --- The program ---

TEST_F(Program, PrintsItsBannersAroundTheRestore)
{
    board.file_put(kSystemLog, sane_log());
    EXPECT_EQ(maintlogfile_main(), 33) << "what puts answered to the second banner";
    EXPECT_EQ(board.console, "maintlogfile --> FROM Read Sart!!\n"
                             "zev_maintlog_init : 001 : Warm Start!!\n"
                             "maintlogfile --> FROM Read End!!\n");
    EXPECT_EQ(board.calls.front(), "puts maintlogfile --> FROM Read Sart!!");
    EXPECT_EQ(board.calls.back(), "puts maintlogfile --> FROM Read End!!");
}

TEST_F(Program, ExitsWithWhatItsLastWriteAnswered)
{
    board.file_put(kSystemLog, sane_log());
    board.fail_call(1);
    EXPECT_EQ(maintlogfile_main(), kExit) << "the first banner does not count";
    board.restart();
    board.fail_call(8);
    EXPECT_EQ(maintlogfile_main(), -1);
    EXPECT_EQ(board.calls.back(), "puts maintlogfile --> FROM Read End!! -> failed");
}

TEST_F(Program, ExitsTheSameWhenTheRestoreFails)
{
    std::filesystem::create_directory(board.host(kSystemLog));
    EXPECT_EQ(zev_maintlog_init(), -1);
    EXPECT_EQ(maintlogfile_main(), kExit);
}

} // namespace
