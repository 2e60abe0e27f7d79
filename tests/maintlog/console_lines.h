// What the boot restore prints.
#pragma once

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
