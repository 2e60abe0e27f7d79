#include "device/commands/led_state_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "device/access/work_record.h"
#include "device/commands/device_word.h"
#include "device/commands/led_read.h"

namespace
{

constexpr mode_t kLedStateMode = 0666;
constexpr ssize_t kLedStateSize = sizeof(LedStateRecord);

constexpr int32_t kDone = 0;
constexpr int32_t kFailed = -1;
constexpr int32_t kNotInhibited = -2;

// The bytes that a command records. A group's elements are recorded whole and its valid mask not
// at all. WR_LINE_FLAGS stands here although its handler never defers; WR_LINE_MODE does not.
struct RecordedBytes {
    int32_t command;
    uint8_t offset;
    uint8_t count;
};

constexpr RecordedBytes recorded_group(int32_t command, size_t group)
{
    return {command, static_cast<uint8_t>(group + offsetof(LedGroup, element)),
            sizeof(LedGroup::element)};
}

constexpr RecordedBytes kRecordedBytes[] = {
    {WR_LED_A, offsetof(LedStateRecord, ledA), 1},
    {WR_LED_E, offsetof(LedStateRecord, ledE), 1},
    {WR_LED_B, offsetof(LedStateRecord, ledB), 1},
    {WR_LED_D, offsetof(LedStateRecord, ledD), 1},
    {WR_LED_C, offsetof(LedStateRecord, ledC), 1},
    recorded_group(WR_LED_GROUP_1, offsetof(LedStateRecord, group1)),
    recorded_group(WR_LINE_FLAGS, offsetof(LedStateRecord, group2)),
    recorded_group(WR_LED_GROUP_3, offsetof(LedStateRecord, group3)),
    recorded_group(WR_LED_GROUP_4, offsetof(LedStateRecord, group4)),
    recorded_group(WR_LED_GROUP_5, offsetof(LedStateRecord, group5)),
    recorded_group(WR_LED_GROUP_6, offsetof(LedStateRecord, group6)),
    recorded_group(WR_LED_GROUP_7, offsetof(LedStateRecord, group7)),
};

bool record_merge(int32_t command, const LedStateRecord& from, LedStateRecord& into)
{
    const auto* bytes =
        std::find_if(std::begin(kRecordedBytes), std::end(kRecordedBytes),
                     [command](const RecordedBytes& row) { return row.command == command; });
    if (bytes == std::end(kRecordedBytes)) {
        return false;
    }
    memcpy(reinterpret_cast<uint8_t*>(&into) + bytes->offset,
           reinterpret_cast<const uint8_t*>(&from) + bytes->offset, bytes->count);
    return true;
}

int32_t file_create(const LedStateRecord& record)
{
    const int file = open(kLedStatePath, O_RDWR | O_CREAT | O_TRUNC, kLedStateMode);
    if (file < 0) {
        return kFailed;
    }
    const bool written = write(file, &record, sizeof record) == kLedStateSize;
    close(file);
    return written ? kDone : kFailed;
}

bool file_merge(int file, int32_t command, const LedStateRecord& record)
{
    LedStateRecord held{};
    return read(file, &held, sizeof held) == kLedStateSize && record_merge(command, record, held) &&
           lseek(file, 0, SEEK_SET) >= 0 && write(file, &held, sizeof held) == kLedStateSize;
}

} // namespace

bool ledState_inhibited()
{
    struct stat status;
    return stat(kLedStatePath, &status) == 0;
}

int32_t ledState_save()
{
    return saveLock_run([]() -> int32_t {
        if (ledState_inhibited()) {
            return kDone;
        }
        WorkRecord<uint16_t> own{};
        if (read_device_word_29(own.data()) < 0) {
            return kFailed;
        }
        LedStateRecord record{};
        record.ownId = own[0];
        record.targetId = own[0];
        if (read_led_state(&record) < 0) {
            return kFailed;
        }
        return file_create(record);
    });
}

int32_t ledState_put(int32_t command, const LedStateRecord* record)
{
    return saveLock_run([=]() -> int32_t {
        if (!ledState_inhibited()) {
            return kNotInhibited;
        }
        const int file = open(kLedStatePath, O_RDWR);
        if (file < 0) {
            return kFailed;
        }
        const bool merged = file_merge(file, command, *record);
        close(file);
        return merged ? kDone : kFailed;
    });
}

int32_t ledState_load(LedStateRecord* record)
{
    const int file = open(kLedStatePath, O_RDONLY);
    if (file < 0) {
        return kFailed;
    }
    LedStateRecord held;
    const bool whole = read(file, &held, sizeof held) == kLedStateSize;
    close(file);
    if (!whole) {
        return kFailed;
    }
    *record = held;
    return kDone;
}
