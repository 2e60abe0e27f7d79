// The system log writer.
#include <cstdio>
#include <cstring>
#include <ctime>

#include "log/locked_file.h"
#include "log/system_log_layout.h"

namespace
{

constexpr int kStampSize = 20; // "2006/03/01 09:05:07" and its terminating zero

// What the record's format below adds up to.
static_assert(SYSTEM_LOG_MESSAGE_LENGTH == 79);
static_assert(kStampSize - 1 + 1 + SYSTEM_LOG_MESSAGE_LENGTH + 1 == SYSTEM_LOG_RECORD_SIZE);

void stamp_format(time_t now, char (&stamp)[kStampSize])
{
    // Into a record of our own: device commands, which any thread may call, log as well.
    tm local;
    tzset();
    if (localtime_r(&now, &local) == nullptr ||
        strftime(stamp, sizeof stamp, "%Y/%m/%d %H:%M:%S", &local) == 0) {
        // Keeps the record at its 100 bytes when the year has more than four digits.
        memset(stamp, '*', kStampSize - 1);
        stamp[kStampSize - 1] = '\0';
    }
}

} // namespace

// Reports to the console only: a failing log must not recurse into itself.
int32_t systemLog_put(const char* text)
{
    const time_t now = time(nullptr);
    if (now < 0) {
        report_message(LOG_SINK_CONSOLE, "systemLog_put : 001 : time() error");
        return -1;
    }
    char stamp[kStampSize];
    stamp_format(now, stamp);

    LockedFile file = lockedFile_open(kSystemLogPath, "r+", LOG_SINK_CONSOLE,
                                      "systemLog_put : 002 : %s file open error",
                                      "systemLog_put : 003 : %s file lock error");
    SystemLogHeader header{};
    lockedFile_read(file, &header, sizeof header,
                    "systemLog_put : 004 : %s file header read error");
    // Only a full ring wraps; any other location is used as it stands.
    if (header.number == SYSTEM_LOG_SLOTS && header.location >= SYSTEM_LOG_SLOTS) {
        header.location = 0;
    }
    lockedFile_seek(file, sizeof header + size_t{SYSTEM_LOG_RECORD_SIZE} * header.location,
                    "systemLog_put : 005 : %s file seek error");
    if (lockedFile_good(file)) {
        fprintf(file.stream, "%s %-79.79s\n", stamp, text);
    }
    // There is no message 006.
    lockedFile_seek(file, 0, "systemLog_put : 007 : %s file seek error");
    if (!lockedFile_good(file)) {
        return -1;
    }
    if (header.number < SYSTEM_LOG_SLOTS) {
        ++header.number;
    }
    ++header.location;
    lockedFile_write(file, &header, sizeof header,
                     "systemLog_put : 008 : %s file header write error");
    lockedFile_close(file);
    return 0; // the record is in place: the caller sees the append as done
}
