// What each failing call of the whole program leads to.
#include "log/console_lines.h"
#include "log/log_bytes.h"
#include "log/log_sweep.h"

namespace
{

using namespace std::string_literals;

using ProgramFailures = BoardTest;

std::string run_text(const std::string& between)
{
    return kBegin + between + kEnd;
}

TEST_F(ProgramFailures, OfAKeptWorkingFile)
{
    const Bytes kept = hex("02 00 00 00 03 00 03 00 01 00 00 00") + records_make(3);
    const std::string good = run_text(kWarm);
    sweep_expect(
        board,
        [&] {
            board.file_put(kSystemLog, kept);
            board.file_put(kFlashImage, sample_image());
        },
        maintlogfile_main,
        {{"puts maintlogfile --> FROM Read Sart!!", kExit, console_without(kBegin, good), kept},
         {"stat /conf/system.log", kExit, run_text(kCold + kSampleListing), sample_image()},
         {"puts zev_maintlog_init : 001 : Warm Start!!", kExit, console_without(kWarm, good), kept},
         {"fopen /conf/system.log rb", kExit,
          run_text(kWarm + "zev_maintlog_head_read : 001 : /conf/system.log file open error\n"s +
                   kUnreadable + kSampleListing),
          sample_image()},
         {"flock /conf/system.log LOCK_EX", kExit,
          run_text(kWarm + "zev_maintlog_head_read : 002 : /conf/system.log file lock error\n"s +
                   kUnreadable + kSampleListing),
          sample_image()},
         {"fread /conf/system.log 12", kExit,
          run_text(kWarm +
                   "zev_maintlog_head_read : 003 : /conf/system.log file header write error\n"s +
                   kUnreadable + kSampleListing),
          sample_image()},
         {"fclose /conf/system.log", kExit, good, kept},
         {"puts maintlogfile --> FROM Read End!!", -1, console_without(kEnd, good), kept}});
}

TEST_F(ProgramFailures, OfARebuild)
{
    const std::string good = run_text(kCold + kSampleListing);
    sweep_expect(
        board,
        [&] {
            board.file_remove(kSystemLog);
            board.file_put(kFlashImage, sample_image());
        },
        maintlogfile_main,
        {{"puts maintlogfile --> FROM Read Sart!!", kExit, console_without(kBegin, good),
          sample_image()},
         {"stat /conf/system.log", kExit, good, sample_image()},
         {"puts zev_maintlog_init : 004 : Cold Start!!", kExit, console_without(kCold, good),
          sample_image()},
         {"unlink /conf/system.log", kExit, good, sample_image()},
         {"open /dev/mtd_systemlog O_RDONLY", kExit,
          run_text(kCold + "read_systemlog_header : 001 : /dev/mtd_systemlog file open error\n"s +
                   kLogAbsent + kNoFlashUnlogged),
          fresh_log()},
         {"read /dev/mtd_systemlog 12", kExit,
          run_text(kCold +
                   "read_systemlog_header : 002 : /dev/mtd_systemlog file header read error\n"s +
                   kLogAbsent + kNoFlashUnlogged),
          fresh_log()},
         {"close /dev/mtd_systemlog", kExit, good, sample_image()},
         {"fopen /dev/mtd_systemlog rb", kExit,
          run_text(kCold + "systemLogFileMake : 001 : /dev/mtd_systemlog file open error\n"s +
                   kLogAbsent + kRefusedUnlogged),
          fresh_log()},
         {"flock /dev/mtd_systemlog LOCK_EX", kExit,
          run_text(kCold + "systemLogFileMake : 002 : /dev/mtd_systemlog file lock error\n"s +
                   kLogAbsent + kRefusedUnlogged),
          fresh_log()},
         {"fread /dev/mtd_systemlog 12", kExit,
          run_text(kCold +
                   "systemLogFileMake : 003 : /dev/mtd_systemlog file header read error\n"s +
                   kLogAbsent + kRefusedUnlogged),
          fresh_log()},
         {"printf head.seq_num  : 7", kExit, console_without("head.seq_num  : 7\n", good),
          sample_image()},
         {"printf head.number   : 3", kExit, console_without("head.number   : 3\n", good),
          sample_image()},
         {"printf head.location : 5", kExit, console_without("head.location : 5\n", good),
          sample_image()},
         {"printf head.version  : 1", kExit, console_without("head.version  : 1\n", good),
          sample_image()},
         {"printf head.checksum : 51917", kExit, console_without("head.checksum : 51917\n", good),
          sample_image()},
         {"fread /dev/mtd_systemlog 300", kExit,
          run_text(kCold + std::string(kSampleHeaderLines) +
                   "systemLogFileMake : 005 : /dev/mtd_systemlog file log data error\n" +
                   kLogAbsent + kRefusedUnlogged),
          fresh_log()},
         {"printf FROM header   checksum : 51917", kExit,
          console_without("FROM header   checksum : 51917\n", good), sample_image()},
         {"printf FROM sytemlog checksum : 51917", kExit,
          console_without("FROM sytemlog checksum : 51917\n", good), sample_image()},
         {"fclose /dev/mtd_systemlog", kExit, good, sample_image()},
         {"fopen /conf/system.log w+b", kExit,
          run_text(kCold + kSampleListing +
                   "systemLogFileMake : 007 : /conf/system.log file create error\n" + kLogAbsent +
                   kRefusedUnlogged),
          fresh_log()},
         {"flock /conf/system.log LOCK_EX", kExit,
          run_text(kCold + kSampleListing +
                   "systemLogFileMake : 008 : /conf/system.log file lock error\n" + kLogEmpty +
                   kRefused + kLogEmpty),
          fresh_log()},
         {"fwrite /conf/system.log 12", kExit,
          run_text(kCold + kSampleListing +
                   "systemLogFileMake : 009 : /conf/system.log file header write error\n" +
                   kLogEmpty + kRefused + kLogEmpty),
          fresh_log()},
         {"fwrite /conf/system.log 300", kExit,
          run_text(kCold + kSampleListing +
                   "systemLogFileMake : 010 : /conf/system.log file write error\n" + kRefused),
          fresh_log()},
         {"fclose /conf/system.log", kExit, good, sample_image()},
         {"puts maintlogfile --> FROM Read End!!", -1, console_without(kEnd, good),
          sample_image()}});
}

TEST_F(ProgramFailures, OfAnEmptyLogInPlaceOfABadOne)
{
    const std::string good = run_text(kWarm + std::string(kNotSane) + kErasedUnlogged);
    sweep_expect(
        board,
        [&] {
            board.file_put(kSystemLog, hex("00 00 00 00 01 00 E9 03 01 00 00 00"));
            board.file_put(kFlashImage, Bytes(kHeaderSize, '\xFF'));
        },
        maintlogfile_main,
        {{"puts maintlogfile --> FROM Read Sart!!", kExit, console_without(kBegin, good),
          fresh_log()},
         {"stat /conf/system.log", kExit, run_text(kCold + std::string(kErasedUnlogged)),
          fresh_log()},
         {"puts zev_maintlog_init : 001 : Warm Start!!", kExit, console_without(kWarm, good),
          fresh_log()},
         {"fopen /conf/system.log rb", kExit,
          run_text(kWarm + "zev_maintlog_head_read : 001 : /conf/system.log file open error\n"s +
                   kUnreadable + kErasedUnlogged),
          fresh_log()},
         {"flock /conf/system.log LOCK_EX", kExit,
          run_text(kWarm + "zev_maintlog_head_read : 002 : /conf/system.log file lock error\n"s +
                   kUnreadable + kErasedUnlogged),
          fresh_log()},
         {"fread /conf/system.log 12", kExit,
          run_text(kWarm +
                   "zev_maintlog_head_read : 003 : /conf/system.log file header write error\n"s +
                   kUnreadable + kErasedUnlogged),
          fresh_log()},
         {"fclose /conf/system.log", kExit, good, fresh_log()},
         {"puts zev_maintlog_init : 003 : maintlog header read error", kExit,
          console_without(kNotSane, good), fresh_log()},
         // The file that stays takes message 006 until it is truncated.
         {"unlink /conf/system.log", kExit, console_without(kLogAbsent, good), fresh_log()},
         {"open /dev/mtd_systemlog O_RDONLY", kExit,
          run_text(kWarm + std::string(kNotSane) +
                   "read_systemlog_header : 001 : /dev/mtd_systemlog file open error\n" +
                   kLogAbsent + kNoFlashUnlogged),
          fresh_log()},
         {"read /dev/mtd_systemlog 12", kExit,
          run_text(kWarm + std::string(kNotSane) +
                   "read_systemlog_header : 002 : /dev/mtd_systemlog file header read error\n" +
                   kLogAbsent + kNoFlashUnlogged),
          fresh_log()},
         {"close /dev/mtd_systemlog", kExit, good, fresh_log()},
         {"puts zev_maintlog_init : 006 : syslog init", kExit, console_without(kErased, good),
          fresh_log()},
         {"time now", kExit,
          run_text(kWarm + std::string(kNotSane) + kErased +
                   "systemLog_put : 001 : time() error\n"),
          fresh_log()},
         {"fopen /conf/system.log r+", kExit, good, fresh_log()},
         {"puts systemLog_put : 002 : /conf/system.log file open error", kExit,
          console_without(kLogAbsent, good), fresh_log()},
         {"fopen /conf/system.log w+b", kExit,
          run_text(kWarm + std::string(kNotSane) + kErasedUnlogged +
                   "systemLogFileInit : 001 : /conf/system.log file open error\n" + kLogAbsent),
          std::nullopt},
         {"flock /conf/system.log LOCK_EX", kExit,
          run_text(kWarm + std::string(kNotSane) + kErasedUnlogged +
                   "systemLogFileInit : 002 : /conf/system.log file lock error\n" + kLogEmpty),
          ""},
         {"fwrite /conf/system.log 12", kExit,
          run_text(kWarm + std::string(kNotSane) + kErasedUnlogged +
                   "systemLogFileInit : 003 : /conf/system.log file header write error\n" +
                   kLogEmpty),
          ""},
         {"fclose /conf/system.log", kExit, good, fresh_log()},
         {"puts maintlogfile --> FROM Read End!!", -1, console_without(kEnd, good), fresh_log()}});
}

// When everything fails from some call on, the program still comes to its end and leaves nothing
// open; what it does not get to replace stays as it was.
TEST_F(ProgramFailures, LeaveNothingOpenWhenCallsFailForGood)
{
    const Bytes kept = hex("02 00 00 00 03 00 03 00 01 00 00 00") + records_make(3);
    const Bytes rejected = hex("02 00 00 00 03 00 E9 03 01 00 00 00") + records_make(3);
    for (const Bytes& working : {kept, rejected}) {
        size_t calls = 1;
        for (size_t failing = 1; failing <= calls; ++failing) {
            SCOPED_TRACE(failing);
            board.file_put(kSystemLog, working);
            board.file_put(kFlashImage, sample_image());
            board.restart();
            ASSERT_EQ(maintlogfile_main(), kExit);
            calls = board.calls.size();
            board.file_put(kSystemLog, working);
            board.restart();
            board.fail_from(failing);
            EXPECT_EQ(maintlogfile_main(), -1);
            EXPECT_EQ(board.calls.back(), "puts maintlogfile --> FROM Read End!! -> failed");
            EXPECT_EQ(board.open_descriptors(), 0U);
            EXPECT_EQ(board.held_locks(), 0U);
            if (failing <= 7) {
                EXPECT_EQ(board.file_get(kSystemLog), working) << "nothing was deleted yet";
            }
        }
    }
}

} // namespace
