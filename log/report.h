// Messages with a value in them.
#pragma once

#include "maint/system_log.h"

#include <climits>

// Longest formatted message: the longest path that can be opened, with its terminating zero, and
// the words around it. Longer text is cut.
constexpr int kReportWords = 80;
constexpr int kReportSize = PATH_MAX + kReportWords;

// report_message with a printf format; the formats are the system's message texts.
__attribute__((format(printf, 2, 3))) void report_format(LogSink mask, const char* format, ...);
