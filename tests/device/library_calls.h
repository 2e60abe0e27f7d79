// The calls of the library's own routines that run within a command, and the system log as these
// routines leave it.
#pragma once

#include "device/device_test.h"
#include "log/log_calls.h"

constexpr const char* kLedFile = "/tmp/led_rewrite_inh";

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
    board.file_put(kSystemLog, fresh_log());
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
