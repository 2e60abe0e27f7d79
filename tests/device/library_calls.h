// The calls of the library's own routines that run within a command, and the system log as these
// routines leave it.
#pragma once

#include "device/device_test.h"

constexpr const char* kConfig = "/conf/config";
constexpr const char* kSystemLog = "/conf/system.log";
constexpr const char* kLedFile = "/tmp/led_rewrite_inh";

// A lookup in a file that reads so many lines.
inline Trace lookup_calls(const std::string& path, size_t lines)
{
    return Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX", "fopen " + path + " r"} +
           Trace(lines, "fgets " + path + " 1024") + Trace{"fclose " + path, "fclose /tmp/Saveing"};
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

// Calls that a course passes through.
inline Course course_of(const Trace& calls)
{
    Course course;
    for (const std::string& call : calls) {
        course.push_back({call, kElsewhere});
    }
    return course;
}

// An empty system log.
inline void log_clear(const Board& board)
{
    board.file_put(kSystemLog, hex("00 00 00 00 00 00 00 00 01 00 00 00"));
}

// The messages in the system log, in order, without their time and padding.
inline std::vector<std::string> log_messages(const Board& board)
{
    const Bytes log = board.file_get(kSystemLog);
    std::vector<std::string> messages;
    for (size_t at = 12; at + 100 <= log.size(); at += 100) {
        const std::string text = log.substr(at + 20, 79);
        messages.push_back(text.substr(0, text.find_last_not_of(' ') + 1));
    }
    return messages;
}
