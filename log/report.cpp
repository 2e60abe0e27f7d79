#include "log/report.h"

#include <cstdarg>
#include <cstdio>

void report_message(LogSink mask, const char* text)
{
    if ((mask & LOG_SINK_CONSOLE) != 0) {
        puts(text);
    }
    if ((mask & LOG_SINK_SYSTEM_LOG) != 0) {
        systemLog_put(text);
    }
}

void report_format(LogSink mask, const char* format, ...)
{
    char text[kReportSize];
    va_list values;
    va_start(values, format);
    vsnprintf(text, sizeof text, format, values);
    va_end(values);
    report_message(mask, text);
}
