// The save lock.
#include "maint/save_lock.h"

#include <sys/file.h>

#include "maint/system_log.h"

namespace
{

constexpr const char* kSaveLockPath = "/tmp/Saveing";

} // namespace

int32_t fileAccess_lock(FILE** handle, SaveLockMode mode)
{
    *handle = fopen(kSaveLockPath, "w");
    if (*handle == nullptr) {
        report_message(LOG_SINK_CONSOLE, "fileAccess_lock : 001 : /tmp/Saveing file open error");
        return -1;
    }
    const bool wait = mode == SAVE_LOCK_WAIT;
    if (flock(fileno(*handle), wait ? LOCK_EX : LOCK_EX | LOCK_NB) == 0) {
        return 0;
    }
    fclose(*handle);
    *handle = nullptr;
    report_message(LOG_SINK_CONSOLE,
                   wait ? "fileAccess_lock : 002 : /tmp/Saveing file lock (blocking) error"
                        : "fileAccess_lock : 003 : /tmp/Saveing file lock (non-blocking) error");
    return -1;
}

int32_t fileAccess_unlock(FILE* handle)
{
    if (handle == nullptr) {
        report_message(LOG_SINK_CONSOLE,
                       "fileAccess_unlock : 001 : /tmp/Saveing file pointer (==0) error");
        return -1;
    }
    if (fclose(handle) != 0) {
        report_message(LOG_SINK_CONSOLE, "fileAccess_unlock : 002 : /tmp/Saveing file close error");
        return -1;
    }
    return 0;
}
