// Opening, and what works on a descriptor that may be a device's.
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include "tools/maintsim/preload.h"
#include "tools/maintsim/preload_device.h"
#include "tools/maintsim/preload_open.h"

namespace
{

constexpr bool mode_given(int flags)
{
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

// Reading and writing are not among a device's operations: EINVAL, where its file says EBADF.
template <typename Size> Size transferred(int descriptor, Size result)
{
    if (result == -1 && errno == EBADF && device_ofDescriptor(descriptor)) {
        errno = EINVAL;
    }
    return result;
}

int descriptor_control(int descriptor, int command, void* argument)
{
    int result = NEXT(fcntl)(descriptor, command, argument);
    if (command == F_GETFL && result >= 0 && (result & O_ACCMODE) == kNoAccess &&
        device_ofDescriptor(descriptor)) {
        result = (result & ~O_ACCMODE) | O_RDWR;
    }
    return result;
}

// A stream of a device, on a descriptor of its own. Null with errno.
FILE* device_stream(const Way& way, const char* mode)
{
    const bool both = strchr(mode, '+') != nullptr;
    const int access = both ? O_RDWR : (mode[0] == 'r' ? O_RDONLY : O_WRONLY);
    const int descriptor =
        device_open(way, access | (strchr(mode, 'e') != nullptr ? O_CLOEXEC : 0));
    if (descriptor < 0) {
        return nullptr;
    }
    FILE* stream = fdopen(descriptor, mode);
    if (stream == nullptr) {
        const ErrnoKept kept;
        NEXT(close)(descriptor);
    }
    return stream;
}

FILE* stream_open(const char* given, const char* mode)
{
    const Way way(given);
    return way.device() ? device_stream(way, mode) : NEXT(fopen)(way.path, mode);
}

FILE* stream_reopen(const char* given, const char* mode, FILE* stream)
{
    const Way way(given);
    if (!way.device()) {
        return NEXT(freopen)(way.path, mode, stream);
    }
    // The device takes the place of the stream's own descriptor.
    const int descriptor = device_open(way, O_RDWR);
    if (descriptor < 0) {
        return nullptr;
    }
    FILE* reopened = NEXT(freopen)("/dev/null", mode, stream);
    if (reopened != nullptr && NEXT(dup2)(descriptor, fileno(reopened)) < 0) {
        reopened = nullptr;
    }
    const ErrnoKept kept;
    NEXT(close)(descriptor);
    return reopened;
}

} // namespace

int path_open(int folder, const char* given, int flags, mode_t mode)
{
    const Way way(folder, given);
    return way.device() ? device_open(way, flags) : NEXT(openat)(way.folder, way.path, flags, mode);
}

// A mode comes only with a new file; the C library itself reads it only then.
#define OPENED(folder, flags, more)                                                                \
    va_list rest;                                                                                  \
    va_start(rest, flags);                                                                         \
    const mode_t mode = mode_given(flags) ? va_arg(rest, mode_t) : 0;                              \
    va_end(rest);                                                                                  \
    return path_open(folder, path, (flags) | (more), mode)

TAKES_OVER(int, open, const char* path, int flags, ...)
{
    OPENED(AT_FDCWD, flags, 0);
}

TAKES_OVER(int, open64, const char* path, int flags, ...)
{
    OPENED(AT_FDCWD, flags, O_LARGEFILE);
}

TAKES_OVER(int, __open, const char* path, int flags, ...)
{
    OPENED(AT_FDCWD, flags, 0);
}

TAKES_OVER(int, __open64, const char* path, int flags, ...)
{
    OPENED(AT_FDCWD, flags, O_LARGEFILE);
}

TAKES_OVER(int, openat, int folder, const char* path, int flags, ...)
{
    OPENED(folder, flags, 0);
}

TAKES_OVER(int, openat64, int folder, const char* path, int flags, ...)
{
    OPENED(folder, flags, O_LARGEFILE);
}

TAKES_OVER(int, __open_2, const char* path, int flags)
{
    return path_open(AT_FDCWD, path, flags, 0);
}

TAKES_OVER(int, __open64_2, const char* path, int flags)
{
    return path_open(AT_FDCWD, path, flags | O_LARGEFILE, 0);
}

TAKES_OVER(int, __openat_2, int folder, const char* path, int flags)
{
    return path_open(folder, path, flags, 0);
}

TAKES_OVER(int, __openat64_2, int folder, const char* path, int flags)
{
    return path_open(folder, path, flags | O_LARGEFILE, 0);
}

TAKES_OVER(int, creat, const char* path, mode_t mode)
{
    return path_open(AT_FDCWD, path, O_CREAT | O_WRONLY | O_TRUNC, mode);
}

TAKES_OVER(int, creat64, const char* path, mode_t mode)
{
    return path_open(AT_FDCWD, path, O_CREAT | O_WRONLY | O_TRUNC | O_LARGEFILE, mode);
}

TAKES_OVER(FILE*, fopen, const char* path, const char* mode)
{
    return stream_open(path, mode);
}

TAKES_OVER(FILE*, fopen64, const char* path, const char* mode)
{
    return stream_open(path, mode);
}

TAKES_OVER(FILE*, _IO_fopen, const char* path, const char* mode)
{
    return stream_open(path, mode);
}

TAKES_OVER(FILE*, freopen, const char* path, const char* mode, FILE* stream)
{
    return stream_reopen(path, mode, stream);
}

TAKES_OVER(FILE*, freopen64, const char* path, const char* mode, FILE* stream)
{
    return stream_reopen(path, mode, stream);
}

// Closing: the unit keeps it in its list of calls.

TAKES_OVER(int, close, int descriptor)
{
    device_closing(descriptor);
    return NEXT(close)(descriptor);
}

TAKES_OVER(int, __close, int descriptor)
{
    device_closing(descriptor);
    return NEXT(close)(descriptor);
}

TAKES_OVER(int, fclose, FILE* stream)
{
    {
        const ErrnoKept kept;
        device_closing(fileno(stream));
    }
    return NEXT(fclose)(stream);
}

TAKES_OVER(int, dup2, int descriptor, int place)
{
    if (descriptor != place) {
        device_closing(place);
    }
    return NEXT(dup2)(descriptor, place);
}

TAKES_OVER(int, __dup2, int descriptor, int place)
{
    return sim_dup2(descriptor, place);
}

TAKES_OVER(int, dup3, int descriptor, int place, int flags)
{
    device_closing(place);
    return NEXT(dup3)(descriptor, place, flags);
}

// Requests

TAKES_OVER(int, ioctl, int descriptor, unsigned long request, ...)
{
    va_list rest;
    va_start(rest, request);
    void* const argument = va_arg(rest, void*); // with every request, as the C library does
    va_end(rest);
    const auto device = device_ofDescriptor(descriptor);
    return device ? device_request(*device, request, reinterpret_cast<unsigned long>(argument))
                  : NEXT(ioctl)(descriptor, request, argument);
}

TAKES_OVER(int, fcntl, int descriptor, int command, ...)
{
    va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return descriptor_control(descriptor, command, argument);
}

TAKES_OVER(int, fcntl64, int descriptor, int command, ...)
{
    va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return descriptor_control(descriptor, command, argument);
}

TAKES_OVER(int, __fcntl, int descriptor, int command, ...)
{
    va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return descriptor_control(descriptor, command, argument);
}

// Reading and writing

TAKES_OVER(ssize_t, read, int descriptor, void* bytes, size_t size)
{
    return transferred(descriptor, NEXT(read)(descriptor, bytes, size));
}

TAKES_OVER(ssize_t, __read, int descriptor, void* bytes, size_t size)
{
    return transferred(descriptor, NEXT(read)(descriptor, bytes, size));
}

TAKES_OVER(ssize_t, __read_chk, int descriptor, void* bytes, size_t size, size_t room)
{
    using Call = ssize_t (*)(int, void*, size_t, size_t);
    return transferred(descriptor, NEXT_AS(Call, __read_chk)(descriptor, bytes, size, room));
}

TAKES_OVER(ssize_t, pread, int descriptor, void* bytes, size_t size, off_t offset)
{
    return transferred(descriptor, NEXT(pread)(descriptor, bytes, size, offset));
}

TAKES_OVER(ssize_t, pread64, int descriptor, void* bytes, size_t size, off64_t offset)
{
    return transferred(descriptor, NEXT(pread64)(descriptor, bytes, size, offset));
}

TAKES_OVER(ssize_t, __pread64, int descriptor, void* bytes, size_t size, off64_t offset)
{
    return transferred(descriptor, NEXT(pread64)(descriptor, bytes, size, offset));
}

TAKES_OVER(ssize_t, __pread_chk, int descriptor, void* bytes, size_t size, off_t offset,
           size_t room)
{
    using Call = ssize_t (*)(int, void*, size_t, off_t, size_t);
    return transferred(descriptor,
                       NEXT_AS(Call, __pread_chk)(descriptor, bytes, size, offset, room));
}

TAKES_OVER(ssize_t, __pread64_chk, int descriptor, void* bytes, size_t size, off64_t offset,
           size_t room)
{
    using Call = ssize_t (*)(int, void*, size_t, off64_t, size_t);
    return transferred(descriptor,
                       NEXT_AS(Call, __pread64_chk)(descriptor, bytes, size, offset, room));
}

TAKES_OVER(ssize_t, readv, int descriptor, const iovec* parts, int count)
{
    return transferred(descriptor, NEXT(readv)(descriptor, parts, count));
}

TAKES_OVER(ssize_t, write, int descriptor, const void* bytes, size_t size)
{
    return transferred(descriptor, NEXT(write)(descriptor, bytes, size));
}

TAKES_OVER(ssize_t, __write, int descriptor, const void* bytes, size_t size)
{
    return transferred(descriptor, NEXT(write)(descriptor, bytes, size));
}

TAKES_OVER(ssize_t, pwrite, int descriptor, const void* bytes, size_t size, off_t offset)
{
    return transferred(descriptor, NEXT(pwrite)(descriptor, bytes, size, offset));
}

TAKES_OVER(ssize_t, pwrite64, int descriptor, const void* bytes, size_t size, off64_t offset)
{
    return transferred(descriptor, NEXT(pwrite64)(descriptor, bytes, size, offset));
}

TAKES_OVER(ssize_t, __pwrite64, int descriptor, const void* bytes, size_t size, off64_t offset)
{
    return transferred(descriptor, NEXT(pwrite64)(descriptor, bytes, size, offset));
}

TAKES_OVER(ssize_t, writev, int descriptor, const iovec* parts, int count)
{
    return transferred(descriptor, NEXT(writev)(descriptor, parts, count));
}

TAKES_OVER(ssize_t, preadv, int descriptor, const iovec* parts, int count, off_t offset)
{
    return transferred(descriptor, NEXT(preadv)(descriptor, parts, count, offset));
}

TAKES_OVER(ssize_t, preadv64, int descriptor, const iovec* parts, int count, off64_t offset)
{
    return transferred(descriptor, NEXT(preadv64)(descriptor, parts, count, offset));
}

TAKES_OVER(ssize_t, pwritev, int descriptor, const iovec* parts, int count, off_t offset)
{
    return transferred(descriptor, NEXT(pwritev)(descriptor, parts, count, offset));
}

TAKES_OVER(ssize_t, pwritev64, int descriptor, const iovec* parts, int count, off64_t offset)
{
    return transferred(descriptor, NEXT(pwritev64)(descriptor, parts, count, offset));
}

TAKES_OVER(ssize_t, preadv2, int descriptor, const iovec* parts, int count, off_t offset, int flags)
{
    return transferred(descriptor, NEXT(preadv2)(descriptor, parts, count, offset, flags));
}

TAKES_OVER(ssize_t, preadv64v2, int descriptor, const iovec* parts, int count, off64_t offset,
           int flags)
{
    return transferred(descriptor, NEXT(preadv64v2)(descriptor, parts, count, offset, flags));
}

TAKES_OVER(ssize_t, pwritev2, int descriptor, const iovec* parts, int count, off_t offset,
           int flags)
{
    return transferred(descriptor, NEXT(pwritev2)(descriptor, parts, count, offset, flags));
}

TAKES_OVER(ssize_t, pwritev64v2, int descriptor, const iovec* parts, int count, off64_t offset,
           int flags)
{
    return transferred(descriptor, NEXT(pwritev64v2)(descriptor, parts, count, offset, flags));
}

// What a descriptor is

TAKES_OVER(int, fstat, int descriptor, struct stat* status)
{
    const int result = NEXT(fstat)(descriptor, status);
    if (result == 0) {
        device_show(status);
    }
    return result;
}

TAKES_OVER(int, fstat64, int descriptor, struct stat64* status)
{
    const int result = NEXT(fstat64)(descriptor, status);
    if (result == 0) {
        device_show(status);
    }
    return result;
}

TAKES_OVER(int, __fxstat, int version, int descriptor, struct stat* status)
{
    const int result =
        NEXT_AS(int (*)(int, int, struct stat*), __fxstat)(version, descriptor, status);
    if (result == 0) {
        device_show(status);
    }
    return result;
}

TAKES_OVER(int, __fxstat64, int version, int descriptor, struct stat64* status)
{
    const int result =
        NEXT_AS(int (*)(int, int, struct stat64*), __fxstat64)(version, descriptor, status);
    if (result == 0) {
        device_show(status);
    }
    return result;
}

// The file that stands for a device keeps its rights.

TAKES_OVER(int, fchmod, int descriptor, mode_t mode)
{
    return device_ofDescriptor(descriptor) ? failed(EPERM) : NEXT(fchmod)(descriptor, mode);
}

TAKES_OVER(int, fchown, int descriptor, uid_t user, gid_t group)
{
    return device_ofDescriptor(descriptor) ? failed(EPERM) : NEXT(fchown)(descriptor, user, group);
}
