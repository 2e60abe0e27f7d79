#include "device/commands/led_state_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "device/commands/device_word.h"
#include "device/commands/led_panel.h"
#include "device/commands/led_read.h"

namespace
{

constexpr mode_t kLedStateMode = 0666;
constexpr ssize_t kLedStateSize = sizeof(LedStateRecord);

constexpr int32_t kDone = 0;
constexpr int32_t kFailed = -1;
constexpr int32_t kNotInhibited = -2;

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
    return read(file, &held, sizeof held) == kLedStateSize &&
           recorded_copy(command, record, held) && lseek(file, 0, SEEK_SET) >= 0 &&
           write(file, &held, sizeof held) == kLedStateSize;
}

} // namespace

bool ledState_isInhibited()
{
    struct stat status;
    return stat(kLedStatePath, &status) == 0;
}

int32_t ledState_save()
{
    return saveLock_run([]() -> int32_t {
        if (ledState_isInhibited()) {
            return kDone;
        }
        uint16_t own = 0;
        if (ownId_read(own) < 0) {
            return kFailed;
        }
        LedStateRecord record{};
        record.ownId = own;
        record.targetId = own;
        if (read_led_state(&record) < 0) {
            return kFailed;
        }
        return file_create(record);
    });
}

int32_t ledState_put(int32_t command, const LedStateRecord* record)
{
    return saveLock_run([=]() -> int32_t {
        if (!ledState_isInhibited()) {
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
