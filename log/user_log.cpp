// The user log writer.
#include "maint/user_log.h"

#include <cstddef>
#include <cstdio>
#include <ctime>

#include <sys/file.h>

#include "log/locked_file.h"
#include "log/report.h"

static_assert(sizeof(UserLogHeader) == 16);
static_assert(offsetof(UserLogHeader, number) == 4);
static_assert(offsetof(UserLogHeader, location) == 6);
static_assert(sizeof(UserLogRecord) == 16);
static_assert(offsetof(UserLogRecord, code) == 8);
static_assert(offsetof(UserLogRecord, val1) == 10);
static_assert(offsetof(UserLogRecord, val2) == 11);

namespace
{

constexpr const char* kUserLogPath = "/conf/user.log";
constexpr const char* kFlashSavePath = "/tmp/flashsave";

// Tells the process that saves /conf to flash that there is something to save. A marker that
// cannot be locked is written all the same; no failure here stops the caller.
void marker_raise()
{
    FILE* marker = fopen(kFlashSavePath, "w+");
    if (marker == nullptr) {
        report_format(LOG_SINK_BOTH, "userLog_put : 001 : %s file create error", kFlashSavePath);
        return;
    }
    if (flock(fileno(marker), LOCK_EX) != 0) {
        report_format(LOG_SINK_BOTH, "userLog_put : 002 : %s file lock error", kFlashSavePath);
    }
    constexpr uint8_t kRaised = 1;
    if (fwrite(&kRaised, sizeof kRaised, 1, marker) != 1) {
        report_format(LOG_SINK_BOTH, "userLog_put : 003 : %s file write error", kFlashSavePath);
    }
    fclose(marker);
}

int32_t record_append(const UserLogRecord& record)
{
    LockedFile file = lockedFile_open(kUserLogPath, "r+b", LOG_SINK_BOTH,
                                      "userLog_put : 007 : %s file open error",
                                      "userLog_put : 008 : %s file lock error");
    UserLogHeader header{};
    lockedFile_read(file, &header, sizeof header, "userLog_put : 009 : %s file header read error");
    // Unlike the system log's, this ring wraps whatever `number` holds.
    if (header.location >= USER_LOG_SLOTS) {
        header.location = 0;
    }
    lockedFile_seek(file, sizeof header + sizeof record * header.location,
                    "userLog_put : 010 : %s file seek error");
    lockedFile_write(file, &record, sizeof record, "userLog_put : 011 : %s file write error");
    if (header.number < USER_LOG_SLOTS) {
        ++header.number;
    }
    ++header.location;
    lockedFile_seek(file, 0, "userLog_put : 012 : %s file seek error");
    lockedFile_write(file, &header, sizeof header,
                     "userLog_put : 013 : %s file header write error");
    return lockedFile_close(file);
}

} // namespace

int32_t userLog_put(UserLogRecord* record)
{
    marker_raise(); // for a record that is refused below, too

    if (record->code == 0 || record->code > USER_LOG_CODE_MAX) {
        report_format(LOG_SINK_BOTH, "userLog_put : 004 : invalid code(= %d)", record->code);
        return -1;
    }
    if (record->val1 > USER_LOG_VALUE_MAX || record->val2 > USER_LOG_VALUE_MAX) {
        report_format(LOG_SINK_BOTH, "userLog_put : 005 : invalid val1[%d] val2[%d]", record->val1,
                      record->val2);
        return -1;
    }
    const time_t now = time(nullptr);
    if (now < 0) {
        report_message(LOG_SINK_BOTH, "userLog_put : 006 : invalid time()");
        return -1;
    }
    record->time = static_cast<uint32_t>(now);
    return record_append(*record);
}
