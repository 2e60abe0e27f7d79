// The way in which every log file is used: open the stream, lock it, work, close; on a failure
// close first (which releases the lock), then report, then return -1.
#pragma once

#include <cstdint>
#include <cstdio>

#include "maint/system_log.h"

struct LockedFile {
    FILE* stream; // null: not open
    const char* path;
    LogSink sink; // of the messages about this file
};

// Opens and locks (exclusive, blocking). On failure nothing stays open, the message in question
// (a format with one %s for the path) is reported, and the stream is null.
LockedFile lockedFile_open(const char* path, const char* mode, LogSink sink, const char* openError,
                           const char* lockError);

// Closes, reports the message (a format with one %s for the path) and returns -1.
int32_t lockedFile_fail(const LockedFile& file, const char* error);

bool lockedFile_read(const LockedFile& file, void* data, size_t size);
bool lockedFile_write(const LockedFile& file, const void* data, size_t size);
bool lockedFile_seek(const LockedFile& file, long offset);
