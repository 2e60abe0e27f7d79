#include "tools/maintsim/files.h"

#include <fcntl.h>
#include <signal.h> // NOLINT(modernize-deprecated-headers): sigtimedwait is POSIX's
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>

namespace
{

int (*clock_read)(clockid_t clock, timespec* time) = [](clockid_t clock, timespec* time) {
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
};

// A limit of the program's own on the size of files would end it by a signal, while this thread has
// the signals blocked: what waits is taken away again.
void size_signal_drop()
{
    const int error = errno;
    if (error == EFBIG) {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGXFSZ);
        const timespec at_once{};
        sigtimedwait(&signals, nullptr, &at_once);
    }
    errno = error;
}

bool all_write(int file, std::string_view text)
{
    while (!text.empty()) {
        const long count = syscall(SYS_write, file, text.data(), text.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            size_signal_drop();
            return false;
        }
        text.remove_prefix(static_cast<size_t>(count));
    }
    return true;
}

std::string path_beside(const std::string& path)
{
    return path + ".new";
}

// False, with errno as it was.
bool file_drop(const std::string& path)
{
    const int error = errno;
    syscall(SYS_unlinkat, AT_FDCWD, path.c_str(), 0);
    errno = error;
    return false;
}

} // namespace

void machineClock_use(int (*read)(clockid_t clock, timespec* time))
{
    clock_read = read;
}

int64_t machine_time()
{
    timespec now{};
    clock_read(CLOCK_REALTIME, &now);
    return int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

int process_id()
{
    return static_cast<int>(syscall(SYS_getpid));
}

int file_open(const char* path, int flags, unsigned mode)
{
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags | O_CLOEXEC, mode));
}

void file_close(int file)
{
    const int error = errno;
    syscall(SYS_close, file);
    errno = error;
}

bool file_read(const std::string& path, std::string& text)
{
    const int file = file_open(path.c_str(), O_RDONLY | O_NONBLOCK); // not to wait on a pipe
    if (file < 0) {
        return false;
    }
    text.clear();
    char buffer[16384];
    long count = 0;
    do {
        count = syscall(SYS_read, file, buffer, sizeof buffer);
        text.append(buffer, count > 0 ? static_cast<size_t>(count) : 0);
    } while (count > 0 || (count < 0 && errno == EINTR));
    file_close(file);
    return count == 0;
}

bool file_prepare(const std::string& path, std::string_view text)
{
    const std::string beside = path_beside(path);
    const int file = file_open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (file < 0) {
        return false;
    }
    const bool written = all_write(file, text);
    file_close(file);
    return written || file_drop(beside);
}

bool file_takePrepared(const std::string& path)
{
    const std::string beside = path_beside(path);
    return syscall(SYS_renameat, AT_FDCWD, beside.c_str(), AT_FDCWD, path.c_str()) == 0 ||
           file_drop(beside);
}

bool file_replace(const std::string& path, std::string_view text)
{
    return file_prepare(path, text) && file_takePrepared(path);
}

std::string path_shown(std::string path)
{
    for (char& letter : path) {
        const auto byte = static_cast<unsigned char>(letter);
        letter = byte < ' ' || byte == 0x7F ? '?' : letter;
    }
    return path;
}

void standardError_write(std::string_view text)
{
    all_write(STDERR_FILENO, text);
}
