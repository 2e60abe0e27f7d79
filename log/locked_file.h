// The way in which every log file is used, but for the first look at the image: open the stream,
// lock it, work, close. The first failure stands: the file is closed at once (which releases the
// lock), the failure's message is reported, nothing after it touches the file, and the closing
// returns -1.
//
// The messages are formats with one %s for the path; they stand whole where the call is, so that
// they can be searched for.
#pragma once

#include <cstdint>
#include <cstdio>

#include "maint/system_log.h"

struct LockedFile {
    FILE* stream; // null: it has failed
    const char* path;
    LogSink sink; // of the messages about this file
};

// Opens and locks (exclusive, blocking).
LockedFile lockedFile_open(const char* path, const char* mode, LogSink sink, const char* openError,
                           const char* lockError);

constexpr bool lockedFile_good(const LockedFile& file)
{
    return file.stream != nullptr;
}

// A failure that is no call's, such as a value that must not be.
void lockedFile_fail(LockedFile& file, const char* error);

// What cannot be read is left as it was: clear it before.
void lockedFile_read(LockedFile& file, void* data, size_t size, const char* error);
void lockedFile_write(LockedFile& file, const void* data, size_t size, const char* error);
void lockedFile_seek(LockedFile& file, size_t offset, const char* error);

// 0, or -1 after a failure.
int32_t lockedFile_close(const LockedFile& file);
