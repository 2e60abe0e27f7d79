// Functions that take a path and do something else with it than to open it.
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/fanotify.h>
#include <sys/inotify.h>
#include <sys/ipc.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/swap.h>
#include <sys/sysmacros.h>
#include <sys/time.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utime.h>

#include "tools/maintsim/preload.h"
#include "tools/maintsim/preload_device.h"
#include "tools/maintsim/preload_files.h"

namespace
{

// Nobody changes a device's file in the unit: it stands for the device.
template <typename Call> auto changed(const Way& way, Call call) -> decltype(call())
{
    return way.device() ? failed(EPERM) : call();
}

template <typename Status> int shown(int result, Status* status)
{
    if (result == 0) {
        device_show(status);
    }
    return result;
}

} // namespace

// What a file is

TAKES_OVER(int, stat, const char* path, struct stat* status)
{
    return shown(NEXT(stat)(Way(path).path, status), status);
}

TAKES_OVER(int, stat64, const char* path, struct stat64* status)
{
    return shown(NEXT(stat64)(Way(path).path, status), status);
}

TAKES_OVER(int, lstat, const char* path, struct stat* status)
{
    return shown(NEXT(lstat)(Way(path).path, status), status);
}

TAKES_OVER(int, lstat64, const char* path, struct stat64* status)
{
    return shown(NEXT(lstat64)(Way(path).path, status), status);
}

TAKES_OVER(int, fstatat, int folder, const char* path, struct stat* status, int flags)
{
    const Way way(folder, path);
    return shown(NEXT(fstatat)(way.folder, way.path, status, flags), status);
}

TAKES_OVER(int, fstatat64, int folder, const char* path, struct stat64* status, int flags)
{
    const Way way(folder, path);
    return shown(NEXT(fstatat64)(way.folder, way.path, status, flags), status);
}

TAKES_OVER(int, __xstat, int version, const char* path, struct stat* status)
{
    using Call = int (*)(int, const char*, struct stat*);
    return shown(NEXT_AS(Call, __xstat)(version, Way(path).path, status), status);
}

TAKES_OVER(int, __xstat64, int version, const char* path, struct stat64* status)
{
    using Call = int (*)(int, const char*, struct stat64*);
    return shown(NEXT_AS(Call, __xstat64)(version, Way(path).path, status), status);
}

TAKES_OVER(int, __lxstat, int version, const char* path, struct stat* status)
{
    using Call = int (*)(int, const char*, struct stat*);
    return shown(NEXT_AS(Call, __lxstat)(version, Way(path).path, status), status);
}

TAKES_OVER(int, __lxstat64, int version, const char* path, struct stat64* status)
{
    using Call = int (*)(int, const char*, struct stat64*);
    return shown(NEXT_AS(Call, __lxstat64)(version, Way(path).path, status), status);
}

TAKES_OVER(int, __fxstatat, int version, int folder, const char* path, struct stat* status,
           int flags)
{
    using Call = int (*)(int, int, const char*, struct stat*, int);
    const Way way(folder, path);
    return shown(NEXT_AS(Call, __fxstatat)(version, way.folder, way.path, status, flags), status);
}

TAKES_OVER(int, __fxstatat64, int version, int folder, const char* path, struct stat64* status,
           int flags)
{
    using Call = int (*)(int, int, const char*, struct stat64*, int);
    const Way way(folder, path);
    return shown(NEXT_AS(Call, __fxstatat64)(version, way.folder, way.path, status, flags), status);
}

TAKES_OVER(int, statx, int folder, const char* path, int flags, unsigned mask, struct statx* status)
{
    const Way way(folder, path);
    const int result = NEXT(statx)(way.folder, way.path, flags, mask, status);
    if (result == 0) {
        const dev_t holder = makedev(status->stx_dev_major, status->stx_dev_minor);
        if (const auto device = device_ofFile(holder, status->stx_ino)) {
            status->stx_mode = kDeviceMode;
            status->stx_rdev_major = kDeviceMajor;
            status->stx_rdev_minor = device_minor(*device);
        }
    }
    return result;
}

TAKES_OVER(int, access, const char* path, int mode)
{
    return NEXT(access)(Way(path).path, mode);
}

TAKES_OVER(int, faccessat, int folder, const char* path, int mode, int flags)
{
    const Way way(folder, path);
    return NEXT(faccessat)(way.folder, way.path, mode, flags);
}

TAKES_OVER(int, euidaccess, const char* path, int mode)
{
    return NEXT(euidaccess)(Way(path).path, mode);
}

TAKES_OVER(int, eaccess, const char* path, int mode)
{
    return NEXT(eaccess)(Way(path).path, mode);
}

TAKES_OVER(int, statfs, const char* path, struct statfs* status)
{
    return NEXT(statfs)(Way(path).path, status);
}

TAKES_OVER(int, statfs64, const char* path, struct statfs64* status)
{
    return NEXT(statfs64)(Way(path).path, status);
}

TAKES_OVER(int, __statfs, const char* path, struct statfs* status)
{
    return NEXT(statfs)(Way(path).path, status);
}

TAKES_OVER(int, statvfs, const char* path, struct statvfs* status)
{
    return NEXT(statvfs)(Way(path).path, status);
}

TAKES_OVER(int, statvfs64, const char* path, struct statvfs64* status)
{
    return NEXT(statvfs64)(Way(path).path, status);
}

TAKES_OVER(long, pathconf, const char* path, int name)
{
    return NEXT(pathconf)(Way(path).path, name);
}

TAKES_OVER(key_t, ftok, const char* path, int project)
{
    return NEXT(ftok)(Way(path).path, project);
}

TAKES_OVER(ssize_t, getxattr, const char* path, const char* name, void* value, size_t size)
{
    return NEXT(getxattr)(Way(path).path, name, value, size);
}

TAKES_OVER(ssize_t, lgetxattr, const char* path, const char* name, void* value, size_t size)
{
    return NEXT(lgetxattr)(Way(path).path, name, value, size);
}

TAKES_OVER(ssize_t, listxattr, const char* path, char* list, size_t size)
{
    return NEXT(listxattr)(Way(path).path, list, size);
}

TAKES_OVER(ssize_t, llistxattr, const char* path, char* list, size_t size)
{
    return NEXT(llistxattr)(Way(path).path, list, size);
}

TAKES_OVER(int, name_to_handle_at, int folder, const char* path, file_handle* handle, int* mount,
           int flags)
{
    const Way way(folder, path);
    return NEXT(name_to_handle_at)(way.folder, way.path, handle, mount, flags);
}

TAKES_OVER(int, inotify_add_watch, int watcher, const char* path, uint32_t mask)
{
    return NEXT(inotify_add_watch)(watcher, Way(path).path, mask);
}

TAKES_OVER(int, fanotify_mark, int watcher, unsigned flags, uint64_t mask, int folder,
           const char* path)
{
    const Way way(folder, path);
    return NEXT(fanotify_mark)(watcher, flags, mask, way.folder, way.path);
}

// Changing a file

TAKES_OVER(int, unlink, const char* path)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(unlink)(way.path); });
}

TAKES_OVER(int, unlinkat, int folder, const char* path, int flags)
{
    const Way way(folder, path);
    return changed(way, [&] { return NEXT(unlinkat)(way.folder, way.path, flags); });
}

TAKES_OVER(int, remove, const char* path)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(remove)(way.path); });
}

TAKES_OVER(int, rmdir, const char* path)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(rmdir)(way.path); });
}

TAKES_OVER(int, mkdir, const char* path, mode_t mode)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(mkdir)(way.path, mode); });
}

TAKES_OVER(int, mkdirat, int folder, const char* path, mode_t mode)
{
    const Way way(folder, path);
    return changed(way, [&] { return NEXT(mkdirat)(way.folder, way.path, mode); });
}

TAKES_OVER(int, mkfifo, const char* path, mode_t mode)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(mkfifo)(way.path, mode); });
}

TAKES_OVER(int, mkfifoat, int folder, const char* path, mode_t mode)
{
    const Way way(folder, path);
    return changed(way, [&] { return NEXT(mkfifoat)(way.folder, way.path, mode); });
}

TAKES_OVER(int, mknod, const char* path, mode_t mode, dev_t device)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(mknod)(way.path, mode, device); });
}

TAKES_OVER(int, mknodat, int folder, const char* path, mode_t mode, dev_t device)
{
    const Way way(folder, path);
    return changed(way, [&] { return NEXT(mknodat)(way.folder, way.path, mode, device); });
}

TAKES_OVER(int, __xmknod, int version, const char* path, mode_t mode, dev_t* device)
{
    using Call = int (*)(int, const char*, mode_t, dev_t*);
    const Way way(path);
    return changed(way, [&] { return NEXT_AS(Call, __xmknod)(version, way.path, mode, device); });
}

TAKES_OVER(int, __xmknodat, int version, int folder, const char* path, mode_t mode, dev_t* device)
{
    using Call = int (*)(int, int, const char*, mode_t, dev_t*);
    const Way way(folder, path);
    return changed(way, [&] {
        return NEXT_AS(Call, __xmknodat)(version, way.folder, way.path, mode, device);
    });
}

TAKES_OVER(int, chmod, const char* path, mode_t mode)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(chmod)(way.path, mode); });
}

TAKES_OVER(int, lchmod, const char* path, mode_t mode)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(lchmod)(way.path, mode); });
}

TAKES_OVER(int, fchmodat, int folder, const char* path, mode_t mode, int flags)
{
    const Way way(folder, path);
    return changed(way, [&] { return NEXT(fchmodat)(way.folder, way.path, mode, flags); });
}

TAKES_OVER(int, chown, const char* path, uid_t user, gid_t group)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(chown)(way.path, user, group); });
}

TAKES_OVER(int, lchown, const char* path, uid_t user, gid_t group)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(lchown)(way.path, user, group); });
}

TAKES_OVER(int, fchownat, int folder, const char* path, uid_t user, gid_t group, int flags)
{
    const Way way(folder, path);
    return changed(way, [&] { return NEXT(fchownat)(way.folder, way.path, user, group, flags); });
}

TAKES_OVER(int, truncate, const char* path, off_t size)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(truncate)(way.path, size); });
}

TAKES_OVER(int, truncate64, const char* path, off64_t size)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(truncate64)(way.path, size); });
}

TAKES_OVER(int, utime, const char* path, const utimbuf* times)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(utime)(way.path, times); });
}

TAKES_OVER(int, utimes, const char* path, const timeval* times)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(utimes)(way.path, times); });
}

TAKES_OVER(int, lutimes, const char* path, const timeval* times)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(lutimes)(way.path, times); });
}

TAKES_OVER(int, futimesat, int folder, const char* path, const timeval* times)
{
    const Way way(folder, path);
    return changed(way, [&] { return NEXT(futimesat)(way.folder, way.path, times); });
}

TAKES_OVER(int, utimensat, int folder, const char* path, const timespec* times, int flags)
{
    const Way way(folder, path);
    return changed(way, [&] { return NEXT(utimensat)(way.folder, way.path, times, flags); });
}

TAKES_OVER(int, setxattr, const char* path, const char* name, const void* value, size_t size,
           int flags)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(setxattr)(way.path, name, value, size, flags); });
}

TAKES_OVER(int, lsetxattr, const char* path, const char* name, const void* value, size_t size,
           int flags)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(lsetxattr)(way.path, name, value, size, flags); });
}

TAKES_OVER(int, removexattr, const char* path, const char* name)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(removexattr)(way.path, name); });
}

TAKES_OVER(int, lremovexattr, const char* path, const char* name)
{
    const Way way(path);
    return changed(way, [&] { return NEXT(lremovexattr)(way.path, name); });
}

// Two paths

TAKES_OVER(int, rename, const char* from, const char* to)
{
    return path_rename(AT_FDCWD, from, AT_FDCWD, to, 0);
}

TAKES_OVER(int, renameat, int from_folder, const char* from, int to_folder, const char* to)
{
    return path_rename(from_folder, from, to_folder, to, 0);
}

TAKES_OVER(int, renameat2, int from_folder, const char* from, int to_folder, const char* to,
           unsigned flags)
{
    return path_rename(from_folder, from, to_folder, to, flags);
}

TAKES_OVER(int, link, const char* from, const char* to)
{
    return path_link(AT_FDCWD, from, AT_FDCWD, to, 0);
}

TAKES_OVER(int, linkat, int from_folder, const char* from, int to_folder, const char* to, int flags)
{
    return path_link(from_folder, from, to_folder, to, flags);
}

TAKES_OVER(int, symlink, const char* target, const char* path)
{
    return path_symlink(target, AT_FDCWD, path);
}

TAKES_OVER(int, symlinkat, const char* target, int folder, const char* path)
{
    return path_symlink(target, folder, path);
}

// The machine's mounts and roots

namespace
{

// What would put something of the machine in the place of the unit's, or the other way round.
template <typename Call> int mounted(const Way& way, Call call)
{
    return way.unit() ? failed(EPERM) : call();
}

} // namespace

TAKES_OVER(int, mount, const char* source, const char* path, const char* type, unsigned long flags,
           const void* data)
{
    const Way way(path, Look::kClose);
    return mounted(way, [&] { return NEXT(mount)(Way(source).path, way.path, type, flags, data); });
}

TAKES_OVER(int, umount, const char* path)
{
    const Way way(path, Look::kClose);
    return mounted(way, [&] { return NEXT(umount)(way.path); });
}

TAKES_OVER(int, umount2, const char* path, int flags)
{
    const Way way(path, Look::kClose);
    return mounted(way, [&] { return NEXT(umount2)(way.path, flags); });
}

TAKES_OVER(int, swapon, const char* path, int flags)
{
    const Way way(path, Look::kClose);
    return mounted(way, [&] { return NEXT(swapon)(way.path, flags); });
}

TAKES_OVER(int, swapoff, const char* path)
{
    const Way way(path, Look::kClose);
    return mounted(way, [&] { return NEXT(swapoff)(way.path); });
}

TAKES_OVER(int, acct, const char* path)
{
    const Way way(path, Look::kClose);
    return mounted(way, [&] { return NEXT(acct)(way.path); });
}

TAKES_OVER(int, open_tree, int folder, const char* path, unsigned flags)
{
    const Way way(folder, path, Look::kClose);
    return mounted(way, [&] { return NEXT(open_tree)(way.folder, way.path, flags); });
}

TAKES_OVER(int, fspick, int folder, const char* path, unsigned flags)
{
    const Way way(folder, path, Look::kClose);
    return mounted(way, [&] { return NEXT(fspick)(way.folder, way.path, flags); });
}

TAKES_OVER(int, mount_setattr, int folder, const char* path, unsigned flags, mount_attr* attributes,
           size_t size)
{
    const Way way(folder, path, Look::kClose);
    return mounted(
        way, [&] { return NEXT(mount_setattr)(way.folder, way.path, flags, attributes, size); });
}

TAKES_OVER(int, move_mount, int from_folder, const char* from, int to_folder, const char* to,
           unsigned flags)
{
    const Way from_way(from_folder, from, Look::kClose);
    const Way to_way(to_folder, to, Look::kClose);
    return from_way.unit() ? failed(EPERM) : mounted(to_way, [&] {
        return NEXT(move_mount)(from_way.folder, from_way.path, to_way.folder, to_way.path, flags);
    });
}

// In another root the unit's folder has another name, or none.
TAKES_OVER(int, chroot, const char* path)
{
    return sim_inside || sim_folder()[0] == '\0' ? NEXT(chroot)(path) : failed(EPERM);
}
