// Where the logs, the configuration and the save lock lie, and the calls of an append and of a
// lookup.
#pragma once

#include "board/board_test.h"

constexpr const char* kSystemLog = "/conf/system.log";
constexpr const char* kUserLog = "/conf/user.log";
constexpr const char* kSaveLock = "/tmp/Saveing";
constexpr const char* kConfig = "/conf/config";

// An empty system log.
inline Bytes fresh_log()
{
    return hex("00 00 00 00 00 00 00 00 01 00 00 00");
}

// An append to the system log that goes into the given slot.
inline Trace append_calls(size_t slot)
{
    return {"time now",
            "fopen /conf/system.log r+",
            "flock /conf/system.log LOCK_EX",
            "fread /conf/system.log 12",
            "fseek /conf/system.log " + std::to_string(12 + 100 * slot),
            "fprintf /conf/system.log 100",
            "fseek /conf/system.log 0",
            "fwrite /conf/system.log 12",
            "fclose /conf/system.log"};
}

// An append that finds no system log.
inline const Trace kUnlogged{"time now", "fopen /conf/system.log r+",
                             "puts systemLog_put : 002 : /conf/system.log file open error"};

// An event of the user log: the marker, and the append into the given slot.
inline const Trace kMarkerCalls{"fopen /tmp/flashsave w+", "flock /tmp/flashsave LOCK_EX",
                                "fwrite /tmp/flashsave 1", "fclose /tmp/flashsave"};
inline Trace userAppend_calls(size_t slot)
{
    return {"time now",
            "fopen /conf/user.log r+b",
            "flock /conf/user.log LOCK_EX",
            "fread /conf/user.log 16",
            "fseek /conf/user.log " + std::to_string(16 + 16 * slot),
            "fwrite /conf/user.log 16",
            "fseek /conf/user.log 0",
            "fwrite /conf/user.log 16",
            "fclose /conf/user.log"};
}
inline Trace event_calls(size_t slot)
{
    return kMarkerCalls + userAppend_calls(slot);
}

// A lookup in a file that reads so many lines.
inline Trace lookup_calls(const std::string& path, size_t lines)
{
    return Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX", "fopen " + path + " r"} +
           Trace(lines, "fgets " + path + " 1024") + Trace{"fclose " + path, "fclose /tmp/Saveing"};
}
