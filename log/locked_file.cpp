#include "log/locked_file.h"

#include <sys/file.h>

#include "log/report.h"

LockedFile lockedFile_open(const char* path, const char* mode, LogSink sink, const char* openError,
                           const char* lockError)
{
    LockedFile file{fopen(path, mode), path, sink};
    if (file.stream == nullptr) {
        report_format(sink, openError, path);
    } else if (flock(fileno(file.stream), LOCK_EX) != 0) {
        lockedFile_fail(file, lockError);
        file.stream = nullptr;
    }
    return file;
}

int32_t lockedFile_fail(const LockedFile& file, const char* error)
{
    fclose(file.stream);
    report_format(file.sink, error, file.path);
    return -1;
}

bool lockedFile_read(const LockedFile& file, void* data, size_t size)
{
    return fread(data, size, 1, file.stream) == 1;
}

bool lockedFile_write(const LockedFile& file, const void* data, size_t size)
{
    return fwrite(data, size, 1, file.stream) == 1;
}

bool lockedFile_seek(const LockedFile& file, long offset)
{
    return fseek(file.stream, offset, SEEK_SET) == 0;
}
