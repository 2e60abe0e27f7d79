// Messages with a value in them.
#pragma once

#include "maint/system_log.h"

// Longest formatted message with its terminating zero: the longest path that can be opened, and
// the words around it. Longer text is cut.
constexpr int kReportSize = 4096 + 80;

// report_message with a printf format; the formats are the system's message texts.
__attribute__((format(printf, 2, 3))) void report_format(LogSink mask, const char* format, ...);
