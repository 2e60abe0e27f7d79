// What the boot restore, the log routines and the log writer print.
#pragma once

#include <gtest/gtest.h>

#include <string>

inline const std::string kBegin = "maintlogfile --> FROM Read Sart!!\n";
inline const std::string kEnd = "maintlogfile --> FROM Read End!!\n";

// The program's exit status: what the board's puts answers to the second banner, its 32 characters
// and the newline. (To the first it is 34.)
constexpr int kExit = 33;

inline const std::string kWarm = "zev_maintlog_init : 001 : Warm Start!!\n";
inline const std::string kUnreadable = "zev_maintlog_init : 002 : maintlog header read error\n";
inline const std::string kNotSane = "zev_maintlog_init : 003 : maintlog header read error\n";
inline const std::string kCold = "zev_maintlog_init : 004 : Cold Start!!\n";
inline const std::string kNoFlash = "zev_maintlog_init : 005 : read_systemlog_header error\n";
inline const std::string kErased = "zev_maintlog_init : 006 : syslog init\n";
inline const std::string kRefused = "zev_maintlog_init : 007 : systemlog init\n";

// The header of the working file; 002 follows.
inline const std::string kHeadUnopened =
    "zev_maintlog_head_read : 001 : /conf/system.log file open error\n";
inline const std::string kHeadUnlocked =
    "zev_maintlog_head_read : 002 : /conf/system.log file lock error\n";
inline const std::string kHeadShort =
    "zev_maintlog_head_read : 003 : /conf/system.log file header write error\n";

// The header of the flash image; 005 follows.
inline const std::string kFlashUnopened =
    "read_systemlog_header : 001 : /dev/mtd_systemlog file open error\n";
inline const std::string kFlashShort =
    "read_systemlog_header : 002 : /dev/mtd_systemlog file header read error\n";

// The rebuild; 007 follows. Two of them have the same number.
inline const std::string kMake001 =
    "systemLogFileMake : 001 : /dev/mtd_systemlog file open error\n";
inline const std::string kMake002 =
    "systemLogFileMake : 002 : /dev/mtd_systemlog file lock error\n";
inline const std::string kMake003 =
    "systemLogFileMake : 003 : /dev/mtd_systemlog file header read error\n";
inline const std::string kMake004 =
    "systemLogFileMake : 004 : /dev/mtd_systemlog file header data error\n";
inline const std::string kMake005Version =
    "systemLogFileMake : 005 : /dev/mtd_systemlog file header version error\n";
inline const std::string kMake005Data =
    "systemLogFileMake : 005 : /dev/mtd_systemlog file log data error\n";
inline const std::string kMake006 =
    "systemLogFileMake : 006 : /dev/mtd_systemlog file checksum error\n";
inline const std::string kMake007 =
    "systemLogFileMake : 007 : /conf/system.log file create error\n";
inline const std::string kMake008 = "systemLogFileMake : 008 : /conf/system.log file lock error\n";
inline const std::string kMake009 =
    "systemLogFileMake : 009 : /conf/system.log file header write error\n";
inline const std::string kMake010 = "systemLogFileMake : 010 : /conf/system.log file write error\n";

inline const std::string kInit001 = "systemLogFileInit : 001 : /conf/system.log file open error\n";
inline const std::string kInit002 = "systemLogFileInit : 002 : /conf/system.log file lock error\n";
inline const std::string kInit003 =
    "systemLogFileInit : 003 : /conf/system.log file header write error\n";

// The log writer's own message when there is no working file to append to, and when it has no
// complete header.
inline const std::string kLogAbsent = "systemLog_put : 002 : /conf/system.log file open error\n";
inline const std::string kLogEmpty =
    "systemLog_put : 004 : /conf/system.log file header read error\n";
inline const std::string kNoFlashUnlogged = kNoFlash + kLogAbsent;
inline const std::string kErasedUnlogged = kErased + kLogAbsent;
inline const std::string kRefusedUnlogged = kRefused + kLogAbsent;

// The save lock, its two modes and its unlock.
inline const std::string kLockUnopened = "fileAccess_lock : 001 : /tmp/Saveing file open error\n";
inline const std::string kLockUntaken =
    "fileAccess_lock : 002 : /tmp/Saveing file lock (blocking) error\n";
inline const std::string kLockBusy =
    "fileAccess_lock : 003 : /tmp/Saveing file lock (non-blocking) error\n";
inline const std::string kLockAbsent =
    "fileAccess_unlock : 001 : /tmp/Saveing file pointer (==0) error\n";
inline const std::string kLockUnclosed =
    "fileAccess_unlock : 002 : /tmp/Saveing file close error\n";

// What the rebuild prints of the sample image.
inline const std::string kSampleHeaderLines = "head.seq_num  : 7\n"
                                              "head.number   : 3\n"
                                              "head.location : 5\n"
                                              "head.version  : 1\n"
                                              "head.checksum : 51917\n";
inline const std::string kSampleChecksumLines = "FROM header   checksum : 51917\n"
                                                "FROM sytemlog checksum : 51917\n";
inline const std::string kSampleListing = kSampleHeaderLines + kSampleChecksumLines;

// What is printed when one of the lines cannot be.
inline std::string console_without(const std::string& line, std::string console)
{
    const size_t at = console.find(line);
    EXPECT_NE(at, std::string::npos) << line;
    return console.erase(at, line.size());
}

// A line as the call that prints it.
inline std::string puts_of(const std::string& line)
{
    return "puts " + line.substr(0, line.size() - 1);
}
