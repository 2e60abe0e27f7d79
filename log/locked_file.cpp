#include "log/locked_file.h"

#include <sys/file.h>

#include "log/report.h"

LockedFile lockedFile_open(const char* path, const char* mode, LogSink sink, const char* openError,
                           const char* lockError)
{
    LockedFile file{fopen(path, mode), path, sink};
    if (!lockedFile_good(file)) {
        report_format(sink, openError, path);
    } else if (flock(fileno(file.stream), LOCK_EX) != 0) {
        lockedFile_fail(file, lockError);
    }
    return file;
}

void lockedFile_fail(LockedFile& file, const char* error)
{
    if (lockedFile_good(file)) {
        fclose(file.stream);
        file.stream = nullptr;
        report_format(file.sink, error, file.path);
    }
}

void lockedFile_read(LockedFile& file, void* data, size_t size, const char* error)
{
    if (lockedFile_good(file) && fread(data, size, 1, file.stream) != 1) {
        lockedFile_fail(file, error);
    }
}

void lockedFile_write(LockedFile& file, const void* data, size_t size, const char* error)
{
    if (lockedFile_good(file) && fwrite(data, size, 1, file.stream) != 1) {
        lockedFile_fail(file, error);
    }
}

void lockedFile_seek(LockedFile& file, size_t offset, const char* error)
{
    if (lockedFile_good(file) && fseek(file.stream, static_cast<long>(offset), SEEK_SET) != 0) {
        lockedFile_fail(file, error);
    }
}

int32_t lockedFile_close(const LockedFile& file)
{
    if (!lockedFile_good(file)) {
        return -1;
    }
    fclose(file.stream);
    return 0;
}
