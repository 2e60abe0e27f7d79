// syscall(): what the C library has a function for goes the function's way.
#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/timex.h>
#include <sys/uio.h>
#include <unistd.h>

#include "tools/maintsim/preload.h"
#include "tools/maintsim/preload_device.h"
#include "tools/maintsim/preload_files.h"
#include "tools/maintsim/preload_open.h"

// The object's own functions, by their names for the linker.
extern "C" {
int sim_close(int descriptor) __asm__("close");
int sim_ioctl(int descriptor, unsigned long request, ...) __asm__("ioctl");
ssize_t sim_read(int descriptor, void* bytes, size_t size) __asm__("read");
ssize_t sim_write(int descriptor, const void* bytes, size_t size) __asm__("write");
int sim_fcntl(int descriptor, int command, ...) __asm__("fcntl");
int sim_fstat(int descriptor, struct stat* status) __asm__("fstat");
int sim_fstatat(int folder, const char* path, struct stat* status, int flags) __asm__("fstatat");
int sim_statx(int folder, const char* path, int flags, unsigned mask,
              struct statx* status) __asm__("statx");
ssize_t sim_readlinkat(int folder, const char* path, char* text, size_t size) __asm__("readlinkat");
int sim_execve(const char* path, char* const* arguments,
               char* const* environment) __asm__("execve");
int sim_execveat(int folder, const char* path, char* const* arguments, char* const* environment,
                 int flags) __asm__("execveat");
int sim_clock_gettime(clockid_t clock, timespec* time) __asm__("clock_gettime");
int sim_clock_settime(clockid_t clock, const timespec* time) __asm__("clock_settime");
int sim_gettimeofday(timeval* time, void* zone) __asm__("gettimeofday");
int sim_settimeofday(const timeval* time, const struct timezone* zone) __asm__("settimeofday");
time_t sim_time(time_t* stored) __asm__("time");
int sim_clock_adjtime(clockid_t clock, timex* state) __asm__("clock_adjtime");
int sim_chroot(const char* path) __asm__("chroot");
int sim_dup2(int descriptor, int place) __asm__("dup2");
int sim_dup3(int descriptor, int place, int flags) __asm__("dup3");
}

namespace
{

// Calls with a path as their first argument, and with a folder and a path.
constexpr long kPathFirst[] = {
    SYS_truncate,     SYS_chdir,      SYS_statfs,   SYS_getxattr,  SYS_lgetxattr,
    SYS_listxattr,    SYS_llistxattr, SYS_setxattr, SYS_lsetxattr, SYS_removexattr,
    SYS_lremovexattr, SYS_acct,       SYS_swapon,   SYS_swapoff,   SYS_umount2,
#ifdef SYS_access
    SYS_access,       SYS_unlink,     SYS_rmdir,    SYS_mkdir,     SYS_mknod,
    SYS_chmod,        SYS_chown,      SYS_lchown,   SYS_utime,     SYS_utimes,
#endif
};
constexpr long kPathInFolder[] = {
    SYS_faccessat,  SYS_unlinkat, SYS_mkdirat,   SYS_mknodat,
    SYS_fchmodat,   SYS_fchownat, SYS_utimensat, SYS_name_to_handle_at,
#ifdef SYS_futimesat
    SYS_futimesat,
#endif
#ifdef SYS_faccessat2
    SYS_faccessat2,
#endif
};
// They read only; any other of them would change the file that stands for a device.
constexpr long kReading[] = {
    SYS_statfs,     SYS_getxattr, SYS_lgetxattr, SYS_listxattr,
    SYS_llistxattr, SYS_chdir,    SYS_faccessat, SYS_name_to_handle_at,
#ifdef SYS_access
    SYS_access,
#endif
#ifdef SYS_faccessat2
    SYS_faccessat2,
#endif
};
// They would put something of the machine in the unit's place, or the other way round.
constexpr long kMounting[] = {SYS_acct, SYS_swapon, SYS_swapoff, SYS_umount2};

template <size_t kCount> bool among(const long (&numbers)[kCount], long number)
{
    return std::find(numbers, numbers + kCount, number) != numbers + kCount;
}

struct Call {
    long number;
    long arguments[6];

    [[nodiscard]] int number_of(int index) const { return static_cast<int>(arguments[index]); }
    template <typename Type> [[nodiscard]] Type* address_of(int index) const
    {
        return reinterpret_cast<Type*>(arguments[index]); // NOLINT(performance-no-int-to-ptr)
    }
    [[nodiscard]] const char* text_of(int index) const { return address_of<const char>(index); }
    [[nodiscard]] long made() const
    {
        return NEXT(syscall)(number, arguments[0], arguments[1], arguments[2], arguments[3],
                             arguments[4], arguments[5]);
    }
};

// The path at this place of the arguments as it leads, and the folder before it, if there is one.
long made_with(Call call, const Way& way, int place, bool in_folder)
{
    if (way.device() && !among(kReading, call.number)) {
        return failed(EPERM);
    }
    if (way.unit() && among(kMounting, call.number)) {
        return failed(EPERM);
    }
    call.arguments[place] = reinterpret_cast<long>(way.path);
    if (in_folder) {
        call.arguments[place - 1] = way.folder;
    }
    return call.made();
}

long opened2(Call call)
{
    const Way way(call.number_of(0), call.text_of(1));
    if (!way.device()) {
        return made_with(call, way, 1, true);
    }
    const auto* how = call.address_of<const open_how>(2);
    return device_open(way, static_cast<int>(how->flags));
}

long served(const Call& call)
{
    switch (call.number) {
#ifdef SYS_open
    case SYS_open:
        return path_open(AT_FDCWD, call.text_of(0), call.number_of(1),
                         static_cast<mode_t>(call.arguments[2]));
    case SYS_creat:
        return path_open(AT_FDCWD, call.text_of(0), O_CREAT | O_WRONLY | O_TRUNC,
                         static_cast<mode_t>(call.arguments[1]));
    case SYS_stat:
        return sim_fstatat(AT_FDCWD, call.text_of(0), call.address_of<struct stat>(1), 0);
    case SYS_lstat:
        return sim_fstatat(AT_FDCWD, call.text_of(0), call.address_of<struct stat>(1),
                           AT_SYMLINK_NOFOLLOW);
    case SYS_rename:
        return path_rename(AT_FDCWD, call.text_of(0), AT_FDCWD, call.text_of(1), 0);
    case SYS_symlink:
        return path_symlink(call.text_of(0), AT_FDCWD, call.text_of(1));
    case SYS_link:
        return path_link(AT_FDCWD, call.text_of(0), AT_FDCWD, call.text_of(1), 0);
    case SYS_readlink:
        return sim_readlinkat(AT_FDCWD, call.text_of(0), call.address_of<char>(1),
                              static_cast<size_t>(call.arguments[2]));
    case SYS_time:
        return sim_time(call.address_of<time_t>(0));
    case SYS_dup2:
        return sim_dup2(call.number_of(0), call.number_of(1));
#endif
    case SYS_openat:
        return path_open(call.number_of(0), call.text_of(1), call.number_of(2),
                         static_cast<mode_t>(call.arguments[3]));
    case SYS_openat2:
        return opened2(call);
    case SYS_newfstatat:
        return sim_fstatat(call.number_of(0), call.text_of(1), call.address_of<struct stat>(2),
                           call.number_of(3));
    case SYS_statx:
        return sim_statx(call.number_of(0), call.text_of(1), call.number_of(2),
                         static_cast<unsigned>(call.arguments[3]),
                         call.address_of<struct statx>(4));
    case SYS_fstat:
        return sim_fstat(call.number_of(0), call.address_of<struct stat>(1));
    case SYS_renameat2:
        return path_rename(call.number_of(0), call.text_of(1), call.number_of(2), call.text_of(3),
                           static_cast<unsigned>(call.arguments[4]));
#ifdef SYS_renameat
    case SYS_renameat:
        return path_rename(call.number_of(0), call.text_of(1), call.number_of(2), call.text_of(3),
                           0);
#endif
    case SYS_symlinkat:
        return path_symlink(call.text_of(0), call.number_of(1), call.text_of(2));
    case SYS_linkat:
        return path_link(call.number_of(0), call.text_of(1), call.number_of(2), call.text_of(3),
                         call.number_of(4));
    case SYS_readlinkat:
        return sim_readlinkat(call.number_of(0), call.text_of(1), call.address_of<char>(2),
                              static_cast<size_t>(call.arguments[3]));
    case SYS_inotify_add_watch:
        return made_with(call, Way(call.text_of(1)), 1, false);
    case SYS_execve:
        return sim_execve(call.text_of(0), call.address_of<char*>(1), call.address_of<char*>(2));
    case SYS_execveat:
        return sim_execveat(call.number_of(0), call.text_of(1), call.address_of<char*>(2),
                            call.address_of<char*>(3), call.number_of(4));
    case SYS_chroot:
        return sim_chroot(call.text_of(0));
    case SYS_mount: {
        const Way way(call.text_of(1), Look::kClose);
        return way.unit() ? failed(EPERM) : made_with(call, way, 1, false);
    }
    case SYS_close:
        return sim_close(call.number_of(0));
    case SYS_dup3:
        return sim_dup3(call.number_of(0), call.number_of(1), call.number_of(2));
    case SYS_ioctl:
        return sim_ioctl(call.number_of(0), static_cast<unsigned long>(call.arguments[1]),
                         call.address_of<void>(2));
    case SYS_fcntl:
        return sim_fcntl(call.number_of(0), call.number_of(1), call.address_of<void>(2));
    case SYS_read:
        return sim_read(call.number_of(0), call.address_of<void>(1),
                        static_cast<size_t>(call.arguments[2]));
    case SYS_write:
        return sim_write(call.number_of(0), call.address_of<void>(1),
                         static_cast<size_t>(call.arguments[2]));
    case SYS_clock_gettime:
        return sim_clock_gettime(call.number_of(0), call.address_of<timespec>(1));
    case SYS_clock_settime:
        return sim_clock_settime(call.number_of(0), call.address_of<timespec>(1));
    case SYS_gettimeofday:
        return sim_gettimeofday(call.address_of<timeval>(0), call.address_of<void>(1));
    case SYS_settimeofday:
        return sim_settimeofday(call.address_of<timeval>(0), nullptr);
    case SYS_adjtimex:
        return sim_clock_adjtime(CLOCK_REALTIME, call.address_of<timex>(0));
    case SYS_clock_adjtime:
        return sim_clock_adjtime(call.number_of(0), call.address_of<timex>(1));
    default:
        if (among(kPathFirst, call.number)) {
            const Look look = among(kMounting, call.number) ? Look::kClose : Look::kPlain;
            return made_with(call, Way(call.text_of(0), look), 0, false);
        }
        if (among(kPathInFolder, call.number)) {
            return made_with(call, Way(call.number_of(0), call.text_of(1)), 1, true);
        }
        return call.made();
    }
}

} // namespace

TAKES_OVER(long, syscall, long number, ...)
{
    Call call{number, {}};
    va_list rest;
    va_start(rest, number);
    for (long& argument : call.arguments) {
        argument = va_arg(rest, long);
    }
    va_end(rest);
    return sim_inside ? call.made() : served(call);
}
