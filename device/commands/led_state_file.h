// The LED state file and the rewrite inhibit that its existence stands for.
#pragma once

#include <cstdint>

#include "maint/led_state.h"
#include "maint/save_lock.h"

constexpr const char* kLedStatePath = "/tmp/led_rewrite_inh";

// Runs `work` under the save lock, blocking, and returns its status. A lock that cannot be had
// stops nothing: the unlock then reports its null handle.
template <class Work> int32_t saveLock_run(Work work)
{
    FILE* lock = nullptr;
    fileAccess_lock(&lock, SAVE_LOCK_WAIT);
    const int32_t status = work();
    fileAccess_unlock(lock);
    return status;
}

// Whether the inhibit is on; a file of any size counts.
bool ledState_isInhibited();

// Saves the live panel to the file, unless the file is there already: the first of several nested
// patterns counts. Returns 0; -1 the panel cannot be read, or the file not be made or not be
// written whole. A file that was made stays, and the next call takes it for saved.
int32_t ledState_save();

// Merges the bytes of one LED command into the file. Returns 0 recorded (the caller leaves the
// panel alone and returns 1); -2 no inhibit; -1 the file cannot be updated, or no LED command. On
// -2 and -1 the caller drives the panel.
int32_t ledState_put(int32_t command, const LedStateRecord* record);

// The file's record. Returns 0; -1 the file cannot be opened or is too short.
int32_t ledState_load(LedStateRecord* record);
