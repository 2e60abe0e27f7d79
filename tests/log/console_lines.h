// What the boot restore and the routines below it print.
#pragma once

#include <gtest/gtest.h>

#include <string>

constexpr const char* kBegin = "maintlogfile --> FROM Read Sart!!\n";
constexpr const char* kEnd = "maintlogfile --> FROM Read End!!\n";

// The program's exit status: what the board's puts answers to the second banner, its 32 characters
// and the newline. (To the first it is 34.)
constexpr int kExit = 33;

constexpr const char* kWarm = "zev_maintlog_init : 001 : Warm Start!!\n";
constexpr const char* kUnreadable = "zev_maintlog_init : 002 : maintlog header read error\n";
constexpr const char* kNotSane = "zev_maintlog_init : 003 : maintlog header read error\n";
constexpr const char* kCold = "zev_maintlog_init : 004 : Cold Start!!\n";
constexpr const char* kNoFlash = "zev_maintlog_init : 005 : read_systemlog_header error\n";
constexpr const char* kErased = "zev_maintlog_init : 006 : syslog init\n";
constexpr const char* kRefused = "zev_maintlog_init : 007 : systemlog init\n";

// With the log writer's own message behind it: there is no working file to append to.
constexpr const char* kNoFlashUnlogged = "zev_maintlog_init : 005 : read_systemlog_header error\n"
                                         "systemLog_put : 002 : /conf/system.log file open error\n";
constexpr const char* kErasedUnlogged = "zev_maintlog_init : 006 : syslog init\n"
                                        "systemLog_put : 002 : /conf/system.log file open error\n";
constexpr const char* kRefusedUnlogged = "zev_maintlog_init : 007 : systemlog init\n"
                                         "systemLog_put : 002 : /conf/system.log file open error\n";

// The working file has no complete header; 002 follows.
constexpr const char* kShortHeader =
    "zev_maintlog_head_read : 003 : /conf/system.log file header write error\n";

// What the rebuild prints of the sample image.
constexpr const char* kSampleHeaderLines = "head.seq_num  : 7\n"
                                           "head.number   : 3\n"
                                           "head.location : 5\n"
                                           "head.version  : 1\n"
                                           "head.checksum : 51917\n";
constexpr const char* kSampleChecksumLines = "FROM header   checksum : 51917\n"
                                             "FROM sytemlog checksum : 51917\n";

// The log writer's own message when there is no working file to append to, and when it has no
// complete header.
constexpr const char* kLogAbsent = "systemLog_put : 002 : /conf/system.log file open error\n";
constexpr const char* kLogEmpty = "systemLog_put : 004 : /conf/system.log file header read error\n";
inline const std::string kSampleListing = kSampleHeaderLines + std::string(kSampleChecksumLines);

// What is printed when one of the lines cannot be.
inline std::string console_without(const std::string& line, std::string console)
{
    const size_t at = console.find(line);
    EXPECT_NE(at, std::string::npos) << line;
    return console.erase(at, line.size());
}
