// Every function that takes a path, with every way to write one.
#include "sim/preload_fixture.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fts.h>
#include <ftw.h>
#include <functional>
#include <glob.h>
#include <span>
#include <sys/fanotify.h>
#include <sys/inotify.h>
#include <sys/ipc.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/swap.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utime.h>
#include <vector>

namespace
{

constexpr char kText[] = "of the unit";

template <typename Type> Type entry(const char* name)
{
    return reinterpret_cast<Type>(dlsym(RTLD_DEFAULT, name));
}

bool shut(int descriptor)
{
    return descriptor >= 0 && close(descriptor) == 0;
}

bool holds_text(int descriptor)
{
    char text[sizeof kText] = "";
    const bool good = descriptor >= 0 && read(descriptor, text, sizeof text) > 0;
    return shut(descriptor) && good && strcmp(text, kText) == 0;
}

bool stream_good(FILE* stream)
{
    if (stream == nullptr) {
        return false;
    }
    char text[sizeof kText] = "";
    const bool good = fread(text, 1, sizeof text, stream) > 0 && strcmp(text, kText) == 0;
    return fclose(stream) == 0 && good;
}

FILE* other_stream()
{
    return fopen("/dev/null", "r");
}

bool reopened(FILE* stream, FILE* (*reopen)(const char*, const char*, FILE*), const char* path)
{
    // A stream that cannot be reopened is closed by the attempt.
    return stream_good(reopen(path, "r", stream));
}

template <typename Status> bool plain(int result, const Status& status)
{
    return result == 0 && S_ISREG(status.st_mode) && status.st_size == sizeof kText - 1;
}

struct Function {
    const char* name;
    bool (*call)(const char* path);
};

#define STAT(name, type)                                                                           \
    {                                                                                              \
#name, [](const char* path) {                                                                 \
         struct type status;                                                                       \
         return plain(name(path, &status), status);                                                \
     }    \
    }
#define STAT_AT(name, type)                                                                        \
    {                                                                                              \
#name, [](const char* path) {                                                                 \
         struct type status;                                                                       \
         return plain(name(AT_FDCWD, path, &status, 0), status);                                   \
     }    \
    }
#define STAT_OLD(name, type)                                                                       \
    {                                                                                              \
#name, [](const char* path) {                                                                 \
         struct type status;                                                                       \
         return plain(entry<int (*)(int, const char*, struct type*)>(#name)(1, path, &status),     \
                      status);                                                                     \
     }    \
    }
#define STAT_OLD_AT(name, type)                                                                    \
    {                                                                                              \
#name, [](const char* path) {                                                                 \
         struct type status;                                                                       \
         return plain(entry<int (*)(int, int, const char*, struct type*, int)>(#name)(             \
                          1, AT_FDCWD, path, &status, 0),                                          \
                      status);                                                                     \
     }    \
    }
#define DONE(name, ...)                                                                            \
    {                                                                                              \
#name, [](const char* path) { return name(__VA_ARGS__) == 0; }                             \
    }
#define NUMBER(name, ...)                                                                          \
    {                                                                                              \
#name, [](const char* path) { return name(__VA_ARGS__) >= 0; }                             \
    }
#define CALL(name, ...)                                                                            \
    {                                                                                              \
#name, [](const char* path) __VA_ARGS__                                                    \
    }

constexpr timeval kTimes[2] = {{1000, 0}, {1000, 0}};
constexpr timespec kExactTimes[2] = {{1000, 0}, {1000, 0}};

// They succeed with a file that is there, and fail with one that is not.
const Function kOnFiles[] = {
    CALL(open, { return holds_text(open(path, O_RDONLY)); }),
    CALL(open64, { return holds_text(open64(path, O_RDONLY)); }),
    CALL(openat, { return holds_text(openat(AT_FDCWD, path, O_RDONLY)); }),
    CALL(openat64, { return holds_text(openat64(AT_FDCWD, path, O_RDONLY)); }),
    CALL(__open, { return holds_text(entry<int (*)(const char*, int, ...)>("__open")(path, 0)); }),
    CALL(__open64,
         { return holds_text(entry<int (*)(const char*, int, ...)>("__open64")(path, 0)); }),
    CALL(__open_2, { return holds_text(entry<int (*)(const char*, int)>("__open_2")(path, 0)); }),
    CALL(__open64_2,
         { return holds_text(entry<int (*)(const char*, int)>("__open64_2")(path, 0)); }),
    CALL(__openat_2,
         {
             return holds_text(
                 entry<int (*)(int, const char*, int)>("__openat_2")(AT_FDCWD, path, 0));
         }),
    CALL(__openat64_2,
         {
             return holds_text(
                 entry<int (*)(int, const char*, int)>("__openat64_2")(AT_FDCWD, path, 0));
         }),
    CALL(fopen, { return stream_good(fopen(path, "r")); }),
    CALL(fopen64, { return stream_good(fopen64(path, "r")); }),
    CALL(_IO_fopen,
         {
             return stream_good(entry<FILE* (*)(const char*, const char*)>("_IO_fopen")(path, "r"));
         }),
    CALL(freopen, { return reopened(other_stream(), freopen, path); }),
    CALL(freopen64, { return reopened(other_stream(), freopen64, path); }),
    STAT(stat, stat),
    STAT(stat64, stat64),
    STAT(lstat, stat),
    STAT(lstat64, stat64),
    STAT_AT(fstatat, stat),
    STAT_AT(fstatat64, stat64),
    STAT_OLD(__xstat, stat),
    STAT_OLD(__xstat64, stat64),
    STAT_OLD(__lxstat, stat),
    STAT_OLD(__lxstat64, stat64),
    STAT_OLD_AT(__fxstatat, stat),
    STAT_OLD_AT(__fxstatat64, stat64),
    CALL(statx,
         {
             struct statx status;
             return statx(AT_FDCWD, path, 0, STATX_SIZE, &status) == 0 &&
                    status.stx_size == sizeof kText - 1;
         }),
    DONE(access, path, R_OK),
    DONE(faccessat, AT_FDCWD, path, R_OK, 0),
    DONE(euidaccess, path, R_OK),
    DONE(eaccess, path, R_OK),
    CALL(statfs,
         {
             struct statfs status;
             return statfs(path, &status) == 0;
         }),
    CALL(__statfs,
         {
             struct statfs status;
             return entry<int (*)(const char*, struct statfs*)>("__statfs")(path, &status) == 0;
         }),
    CALL(statfs64,
         {
             struct statfs64 status;
             return statfs64(path, &status) == 0;
         }),
    CALL(statvfs,
         {
             struct statvfs status;
             return statvfs(path, &status) == 0;
         }),
    CALL(statvfs64,
         {
             struct statvfs64 status;
             return statvfs64(path, &status) == 0;
         }),
    CALL(pathconf, { return pathconf(path, _PC_LINK_MAX) > 0; }),
    CALL(ftok, { return ftok(path, 1) != -1; }),
    NUMBER(listxattr, path, nullptr, 0),
    NUMBER(llistxattr, path, nullptr, 0),
    CALL(getxattr, { return getxattr(path, "user.none", nullptr, 0) >= 0 || errno == ENODATA; }),
    CALL(lgetxattr, { return lgetxattr(path, "user.none", nullptr, 0) >= 0 || errno == ENODATA; }),
    CALL(setxattr, { return setxattr(path, "bad", "", 0, 0) == 0 || errno == EOPNOTSUPP; }),
    CALL(lsetxattr, { return lsetxattr(path, "bad", "", 0, 0) == 0 || errno == EOPNOTSUPP; }),
    CALL(removexattr, { return removexattr(path, "bad") == 0 || errno == EOPNOTSUPP; }),
    CALL(lremovexattr, { return lremovexattr(path, "bad") == 0 || errno == EOPNOTSUPP; }),
    CALL(name_to_handle_at,
         {
             file_handle handle{};
             int mount = 0;
             return name_to_handle_at(AT_FDCWD, path, &handle, &mount, 0) == -1 &&
                    errno == EOVERFLOW;
         }),
    CALL(inotify_add_watch,
         {
             const int watcher = inotify_init();
             const bool added = inotify_add_watch(watcher, path, IN_MODIFY) >= 0;
             return shut(watcher) && added;
         }),
    DONE(chmod, path, 0600),
    DONE(fchmodat, AT_FDCWD, path, 0600, 0),
    CALL(lchmod,
         {
             const int result = lchmod(path, 0600); // a file that is no link may be changed
             return result == 0 || errno == EOPNOTSUPP;
         }),
    DONE(chown, path, getuid(), getgid()),
    DONE(lchown, path, getuid(), getgid()),
    DONE(fchownat, AT_FDCWD, path, getuid(), getgid(), 0),
    DONE(truncate, path, sizeof kText - 1),
    DONE(truncate64, path, sizeof kText - 1),
    DONE(utime, path, nullptr),
    DONE(utimes, path, kTimes),
    DONE(lutimes, path, kTimes),
    DONE(futimesat, AT_FDCWD, path, kTimes),
    DONE(utimensat, AT_FDCWD, path, kExactTimes, 0),
    CALL(glob,
         {
             glob_t found{};
             const bool good = glob(path, GLOB_NOSORT, nullptr, &found) == 0;
             const bool same = good && strcmp(found.gl_pathv[0], path) == 0;
             globfree(&found);
             return same;
         }),
    CALL(glob64,
         {
             glob64_t found{};
             const bool good = glob64(path, GLOB_NOSORT, nullptr, &found) == 0;
             const bool same = good && strcmp(found.gl_pathv[0], path) == 0;
             globfree64(&found);
             return same;
         }),
    CALL(ftw,
         {
             return ftw(
                        path, [](auto, auto, int) { return 7; }, 4) == 7;
         }),
    CALL(ftw64,
         {
             return ftw64(
                        path, [](auto, auto, int) { return 7; }, 4) == 7;
         }),
    CALL(nftw,
         {
             return nftw(
                        path, [](auto, auto, int kind, auto) { return kind == FTW_F ? 7 : 0; }, 4,
                        0) == 7;
         }),
    CALL(nftw64,
         {
             return nftw64(
                        path, [](auto, auto, int kind, auto) { return kind == FTW_F ? 7 : 0; }, 4,
                        0) == 7;
         }),
    CALL(fts_open,
         {
             char* const paths[] = {const_cast<char*>(path), nullptr};
             FTS* walk = fts_open(paths, FTS_PHYSICAL | FTS_NOCHDIR, nullptr);
             const FTSENT* found = fts_read(walk);
             const bool good = found != nullptr && found->fts_info == FTS_F;
             fts_close(walk);
             return good;
         }),
    CALL(fts64_open,
         {
             char* const paths[] = {const_cast<char*>(path), nullptr};
             FTS64* walk = fts64_open(paths, FTS_PHYSICAL | FTS_NOCHDIR, nullptr);
             const FTSENT64* found = fts64_read(walk);
             const bool good = found != nullptr && found->fts_info == FTS_F;
             fts64_close(walk);
             return good;
         }),
    // It is a file, and no link: the errno says that it was found.
    CALL(readlink,
         {
             char text[8];
             return readlink(path, text, sizeof text) == -1 && errno == EINVAL;
         }),
    CALL(readlinkat,
         {
             char text[8];
             return readlinkat(AT_FDCWD, path, text, sizeof text) == -1 && errno == EINVAL;
         }),
    CALL(__readlink_chk,
         {
             char text[8];
             return entry<ssize_t (*)(const char*, char*, size_t, size_t)>("__readlink_chk")(
                        path, text, 8, 8) == -1 &&
                    errno == EINVAL;
         }),
    CALL(__readlinkat_chk,
         {
             char text[8];
             return entry<ssize_t (*)(int, const char*, char*, size_t, size_t)>("__readlinkat_chk")(
                        AT_FDCWD, path, text, 8, 8) == -1 &&
                    errno == EINVAL;
         }),
    CALL(opendir, { return opendir(path) == nullptr && errno == ENOTDIR; }),
    CALL(chdir, { return chdir(path) == -1 && errno == ENOTDIR; }),
    CALL(rmdir, { return rmdir(path) == -1 && errno == ENOTDIR; }),
    CALL(scandir,
         {
             dirent** names = nullptr;
             return scandir(path, &names, nullptr, nullptr) == -1 && errno == ENOTDIR;
         }),
    CALL(scandir64,
         {
             dirent64** names = nullptr;
             return scandir64(path, &names, nullptr, nullptr) == -1 && errno == ENOTDIR;
         }),
    CALL(scandirat,
         {
             dirent** names = nullptr;
             return scandirat(AT_FDCWD, path, &names, nullptr, nullptr) == -1 && errno == ENOTDIR;
         }),
    CALL(scandirat64,
         {
             dirent64** names = nullptr;
             return scandirat64(AT_FDCWD, path, &names, nullptr, nullptr) == -1 && errno == ENOTDIR;
         }),
    CALL(link, { return link(path, "/conf/two") == 0 && unlink("/conf/two") == 0; }),
    CALL(linkat,
         {
             return linkat(AT_FDCWD, path, AT_FDCWD, "/conf/two", 0) == 0 &&
                    unlink("/conf/two") == 0;
         }),
    CALL(
        syscall,
        {
            struct stat status;
            struct statx statx_status;
            char text[8];
            struct {
                uint64_t flags;
                uint64_t mode;
                uint64_t resolve;
            } how{};
            return holds_text(static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, O_RDONLY, 0))) &&
                   holds_text(
                       static_cast<int>(syscall(SYS_openat2, AT_FDCWD, path, &how, sizeof how))) &&
                   syscall(SYS_newfstatat, AT_FDCWD, path, &status, 0) == 0 &&
                   syscall(SYS_statx, AT_FDCWD, path, 0, 0, &statx_status) == 0 &&
                   syscall(SYS_faccessat, AT_FDCWD, path, R_OK) == 0 &&
                   syscall(SYS_truncate, path, sizeof kText - 1) == 0 &&
                   syscall(SYS_readlinkat, AT_FDCWD, path, text, sizeof text) == -1 &&
                   errno == EINVAL &&
                   syscall(SYS_linkat, AT_FDCWD, path, AT_FDCWD, "/conf/two", 0) == 0 &&
                   syscall(SYS_renameat2, AT_FDCWD, "/conf/two", AT_FDCWD, "/conf/three", 0) == 0 &&
                   syscall(SYS_unlinkat, AT_FDCWD, "/conf/three", 0) == 0;
        }),
};

// They are refused, but do not say that a file is there that is not.
const Function kRefused[] = {
    CALL(mount,
         {
             return mount("none", path, "none", 0, nullptr) == -1 && errno == EPERM &&
                    access(path, F_OK) == 0;
         }),
    CALL(umount, { return umount(path) == -1 && errno == EPERM && access(path, F_OK) == 0; }),
    CALL(umount2, { return umount2(path, 0) == -1 && errno == EPERM && access(path, F_OK) == 0; }),
    CALL(swapon, { return swapon(path, 0) == -1 && errno == EPERM && access(path, F_OK) == 0; }),
    CALL(swapoff, { return swapoff(path) == -1 && errno == EPERM && access(path, F_OK) == 0; }),
    CALL(open_tree,
         {
             return open_tree(AT_FDCWD, path, 0) == -1 && errno == EPERM && access(path, F_OK) == 0;
         }),
    CALL(fspick,
         { return fspick(AT_FDCWD, path, 0) == -1 && errno == EPERM && access(path, F_OK) == 0; }),
    CALL(mount_setattr,
         {
             return mount_setattr(AT_FDCWD, path, 0, nullptr, 0) == -1 && errno == EPERM &&
                    access(path, F_OK) == 0;
         }),
    CALL(move_mount,
         {
             return move_mount(AT_FDCWD, path, AT_FDCWD, "/nowhere", 0) == -1 && errno == EPERM &&
                    move_mount(AT_FDCWD, "/nowhere", AT_FDCWD, path, 0) == -1 && errno == EPERM &&
                    access(path, F_OK) == 0;
         }),
};

// They make the file that is not there.
const Function kMaking[] = {
    CALL(open, { return shut(open(path, O_WRONLY | O_CREAT | O_EXCL, 0600)); }),
    CALL(openat, { return shut(openat(AT_FDCWD, path, O_WRONLY | O_CREAT | O_EXCL, 0600)); }),
    CALL(creat, { return shut(creat(path, 0600)); }),
    CALL(creat64, { return shut(creat64(path, 0600)); }),
    CALL(fopen, { return fclose(fopen(path, "w")) == 0; }),
    CALL(freopen, { return fclose(freopen(path, "w", other_stream())) == 0; }),
    DONE(mkdir, path, 0700),
    DONE(mkdirat, AT_FDCWD, path, 0700),
    DONE(mkfifo, path, 0600),
    DONE(mkfifoat, AT_FDCWD, path, 0600),
    DONE(mknod, path, S_IFREG | 0600, 0),
    DONE(mknodat, AT_FDCWD, path, S_IFREG | 0600, 0),
    CALL(__xmknod,
         {
             dev_t device = 0;
             return entry<int (*)(int, const char*, mode_t, dev_t*)>("__xmknod")(
                        0, path, S_IFREG | 0600, &device) == 0;
         }),
    CALL(__xmknodat,
         {
             dev_t device = 0;
             return entry<int (*)(int, int, const char*, mode_t, dev_t*)>("__xmknodat")(
                        0, AT_FDCWD, path, S_IFREG | 0600, &device) == 0;
         }),
    DONE(symlink, "anything", path),
    DONE(symlinkat, "anything", AT_FDCWD, path),
    DONE(link, "/conf/other", path),
    DONE(linkat, AT_FDCWD, "/conf/other", AT_FDCWD, path, 0),
};

const Function kRemoving[] = {
    DONE(unlink, path),
    DONE(unlinkat, AT_FDCWD, path, 0),
    DONE(remove, path),
    DONE(rename, path, "/conf/other"),
    DONE(renameat, AT_FDCWD, path, AT_FDCWD, "/conf/other"),
    DONE(renameat2, AT_FDCWD, path, AT_FDCWD, "/conf/other", 0),
};

// A file of the unit, and how a program may name it from a folder where it stands.
struct Spelling {
    const char* file;
    const char* from;
    const char* path;
};

constexpr Spelling kSpellings[] = {
    {"/conf/probe", "/", "/conf/probe"},
    {"/conf/probe", "/", "//conf//./probe"},
    {"/conf/probe", "/", "/conf/../conf/probe"},
    {"/conf/probe", "/", "/etc/../conf/probe"},
    {"/conf/probe", "/", "/../../conf/probe"},
    {"/conf/probe", "/", "/conf/sub/../probe"},
    {"/conf/probe", "/", "/conf/sub/../../conf/./probe"},
    {"/conf/probe", "/", "conf/probe"},
    {"/conf/probe", "/", "./conf/probe"},
    {"/conf/probe", "/", ".//conf//probe"},
    {"/conf/probe", "/etc", "../conf/probe"},
    {"/conf/probe", "/conf", "probe"},
    {"/conf/probe", "/conf", "./probe"},
    {"/conf/probe", "/conf", "../conf/probe"},
    {"/conf/probe", "/conf", "../etc/../conf/probe"},
    {"/conf/probe", "/conf/sub", "../probe"},
    {"/conf/probe", "/conf/sub", "../../conf/probe"},
    {"/conf/conf", "/conf", "conf"},
    {"/conf/sub/tmp", "/conf/sub", "tmp"},
    {"/tmp/serialno", "/", "/tmp/serialno"},
    {"/tmp/Saveing", "/", "/tmp/Saveing"},
    {"/tmp/flashsave", "/", "/tmp/flashsave"},
    {"/tmp/led_rewrite_inh", "/", "/tmp/led_rewrite_inh"},
    {"/tmp/mtu_datasize", "/", "/tmp/mtu_datasize"},
    {"/tmp/vornapppoe.mtu", "/", "/tmp/vornapppoe.mtu"},
    {"/tmp/ks8995_nor.dat", "/", "/tmp/ks8995_nor.dat"},
    {"/tmp/ks8995_pri.dat", "/", "/tmp/ks8995_pri.dat"},
    {"/tmp/serialno", "/", "/dev/../tmp//serialno"},
    {"/tmp/serialno", "/", "tmp/serialno"},
    {"/tmp/serialno", "/tmp", "serialno"},
    {"/tmp/serialno", "/tmp", "./serialno"},
    {"/tmp/serialno", "/conf", "../tmp/serialno"},
    {"/dev/mtd_systemlog", "/", "/dev/mtd_systemlog"},
    {"/dev/mtd_systemlog", "/dev", "mtd_systemlog"},
    {"/dev/mtd_systemlog", "/tmp", "../dev/mtd_systemlog"},
};

std::string named(const Function& function, const Spelling& spelling)
{
    return std::string(function.name) + " of " + spelling.path + " in " + spelling.from + ": " +
           strerror(errno);
}

// These make a second name of a file in the unit.
bool within_unit(const Function& function)
{
    const std::string_view name = function.name;
    return name == "link" || name == "linkat" || name == "syscall";
}

std::vector<std::string> unit_entries()
{
    std::vector<std::string> entries;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(unit_place(""))) {
        entries.push_back(entry.path().string());
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

class PreloadPaths : public testing::Test
{
  protected:
    void SetUp() override
    {
        for (const Spelling& spelling : kSpellings) {
            if (std::string_view(spelling.file).starts_with("/conf")) {
                ASSERT_FALSE(machine_has(spelling.file)) << "this machine has a unit's file itself";
            }
        }
        std::filesystem::create_directories(unit_place("/conf/sub"));
        for (const char* file : {"/conf/probe", "/conf/conf", "/conf/sub/tmp"}) {
            std::filesystem::remove_all(unit_place(file));
        }
        file_make(unit_place("/conf/other"), kText);
    }
    void TearDown() override { ASSERT_EQ(chdir("/"), 0); }
};

TEST_F(PreloadPaths, EveryFunctionIsTheUnits)
{
    for (const auto& table :
         {std::span<const Function>(kOnFiles), {kRefused}, {kMaking}, {kRemoving}}) {
        for (const Function& function : table) {
            EXPECT_TRUE(taken_over(function.name)) << function.name;
        }
    }
}

void expect_found(std::span<const Function> functions)
{
    for (const Spelling& spelling : kSpellings) {
        const std::string place = unit_place(spelling.file);
        for (const Function& function : functions) {
            file_make(place, kText);
            ASSERT_EQ(chdir(spelling.from), 0);
            errno = 0;
            EXPECT_TRUE(function.call(spelling.path)) << named(function, spelling);
            ASSERT_EQ(unlink(place.c_str()), 0) << named(function, spelling);
            EXPECT_FALSE(function.call(spelling.path)) << named(function, spelling);
        }
    }
}

TEST_F(PreloadPaths, EveryFunctionFindsTheUnitsFileByEverySpelling)
{
    expect_found(kOnFiles);
}

TEST_F(PreloadPaths, WhatWouldMountIsRefusedByEverySpelling)
{
    expect_found(kRefused);
}

// The same functions in a folder of the machine: nothing of it comes to the unit.
TEST_F(PreloadPaths, OtherPathsAreLeftAlone)
{
    char folder[] = "/tmp/preload-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    ASSERT_EQ(mkdir((std::string(folder) + "/conf").c_str(), 0700), 0);
    const std::vector<std::string> before = unit_entries();
    for (const std::string file : {"/file", "/conf/probe", "/serialno"}) {
        const std::string path = folder + file;
        const Spelling spelling = {path.c_str(), folder, path.c_str() + sizeof folder};
        ASSERT_EQ(chdir(folder), 0);
        for (const char* name : {path.c_str(), spelling.path}) {
            for (const Function& function : kOnFiles) {
                if (within_unit(function)) {
                    continue;
                }
                file_make(path, kText);
                errno = 0;
                EXPECT_TRUE(function.call(name)) << named(function, spelling);
                ASSERT_EQ(unlink(path.c_str()), 0) << named(function, spelling);
                EXPECT_FALSE(function.call(name)) << named(function, spelling);
            }
            for (const Function& function : kMaking) {
                if (!within_unit(function)) {
                    EXPECT_TRUE(function.call(name)) << named(function, spelling);
                    EXPECT_GT(std::filesystem::remove_all(path), 0U) << named(function, spelling);
                }
            }
            for (const Function& function : std::span<const Function>(kRemoving).first(3)) {
                file_make(path, kText);
                EXPECT_TRUE(function.call(name)) << named(function, spelling);
                EXPECT_FALSE(machine_has(path)) << named(function, spelling);
            }
        }
    }
    ASSERT_EQ(chdir("/"), 0);
    std::filesystem::remove_all(folder);
    EXPECT_EQ(unit_entries(), before);
}

TEST_F(PreloadPaths, EveryFunctionMakesTheUnitsFileByEverySpelling)
{
    for (const Spelling& spelling : kSpellings) {
        const std::string place = unit_place(spelling.file);
        const bool machines = machine_has(spelling.file);
        for (const Function& function : kMaking) {
            std::filesystem::remove_all(place);
            ASSERT_EQ(chdir(spelling.from), 0);
            EXPECT_TRUE(function.call(spelling.path)) << named(function, spelling);
            struct stat status;
            EXPECT_EQ(lstat(place.c_str(), &status), 0) << named(function, spelling);
            EXPECT_EQ(machine_has(spelling.file), machines) << named(function, spelling);
        }
        std::filesystem::remove_all(place);
    }
}

TEST_F(PreloadPaths, EveryFunctionRemovesTheUnitsFileByEverySpelling)
{
    for (const Spelling& spelling : kSpellings) {
        const std::string place = unit_place(spelling.file);
        const bool machines = machine_has(spelling.file);
        for (const Function& function : kRemoving) {
            file_make(place, kText);
            ASSERT_EQ(chdir(spelling.from), 0);
            EXPECT_TRUE(function.call(spelling.path)) << named(function, spelling);
            EXPECT_FALSE(machine_has(place)) << named(function, spelling);
            EXPECT_EQ(machine_has(spelling.file), machines) << named(function, spelling);
        }
    }
}

TEST_F(PreloadPaths, ChangesReachTheUnitsFile)
{
    const std::string place = unit_place("/conf/probe");
    file_make(place, kText);
    struct stat status;
    ASSERT_EQ(chmod("/conf/probe", 0640), 0);
    ASSERT_EQ(truncate("/conf/probe", 2), 0);
    ASSERT_EQ(utimes("/conf/probe", kTimes), 0);
    ASSERT_EQ(stat(place.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    EXPECT_EQ(status.st_size, 2);
    EXPECT_EQ(status.st_mtime, 1000);
}

TEST_F(PreloadPaths, AFileWithoutANameHasItsMode)
{
    const int file = open("/conf", O_TMPFILE | O_RDWR, 0640);
    if (file < 0) {
        GTEST_SKIP() << "O_TMPFILE: " << strerror(errno);
    }
    struct stat status;
    ASSERT_EQ(fstat(file, &status), 0);
    EXPECT_EQ(status.st_mode & 0700U, 0600U);
    EXPECT_EQ(close(file), 0);
}

TEST_F(PreloadPaths, AFolderOfADescriptorLeadsThere)
{
    file_make(unit_place("/conf/probe"), kText);
    file_make(unit_place("/tmp/serialno"), kText);
    struct Case {
        const char* folder;
        const char* path;
    };
    for (const auto& [folder, path] : {Case{"/", "conf/probe"},
                                       {"/conf", "probe"},
                                       {"/etc", "../conf/probe"},
                                       {"/conf/sub", "../probe"},
                                       {"/conf/sub", "../../tmp/serialno"},
                                       {"/tmp", "serialno"},
                                       {"/tmp", "/conf/probe"}}) {
        const int descriptor = open(folder, O_RDONLY | O_DIRECTORY);
        ASSERT_GE(descriptor, 0) << folder;
        EXPECT_TRUE(holds_text(openat(descriptor, path, O_RDONLY))) << folder << " " << path;
        struct stat status;
        EXPECT_EQ(fstatat(descriptor, path, &status, 0), 0) << folder << " " << path;
        ASSERT_EQ(close(descriptor), 0);
    }
}

TEST_F(PreloadPaths, NamesBesideTheUnitsAreTheMachines)
{
    for (const char* path : {"/confuse", "/conf.d/x", "/tmp/serialno2", "/tmp/serialn",
                             "/tmp/sub/serialno", "/dev/fpga0", "/dev/rtc0.none", "/etc/conf/x"}) {
        file_make(unit_place("/tmp/serialno"), kText);
        EXPECT_EQ(open(path, O_RDONLY), -1) << path;
        EXPECT_EQ(errno, ENOENT) << path;
    }
    struct stat status;
    ASSERT_EQ(stat("/conf/../etc/passwd", &status), 0);
    ASSERT_EQ(chdir("/conf"), 0);
    ASSERT_EQ(stat("../etc/passwd", &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    ASSERT_EQ(stat("..", &status), 0);
    struct stat root;
    ASSERT_EQ(stat("/", &root), 0);
    EXPECT_EQ(status.st_ino, root.st_ino);
}

// The kernel says the same: a folder that is missing is missing before "..", too.
TEST_F(PreloadPaths, WhatIsMissingBeforeDotDotIsMissing)
{
    file_make(unit_place("/conf/probe"), kText);
    for (const char* path : {"/nowhere/../conf/probe", "/conf/nowhere/../probe",
                             "/etc/passwd/../../conf/probe", "/conf/probe/../probe"}) {
        EXPECT_EQ(open(path, O_RDONLY), -1) << path;
        EXPECT_TRUE(errno == ENOENT || errno == ENOTDIR) << path << strerror(errno);
    }
    EXPECT_EQ(open("/conf/probe/", O_RDONLY), -1);
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_EQ(open("/tmp/serialno/x", O_RDONLY), -1);
    const std::string longest(4200, 'x');
    EXPECT_EQ(open(("/conf/" + longest).c_str(), O_RDONLY), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(open("", O_RDONLY), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(syscall(SYS_openat, AT_FDCWD, nullptr, O_RDONLY, 0), -1);
    EXPECT_EQ(errno, EFAULT);
}

// ".." behind a link is the folder above the link's own: as the kernel goes.
TEST_F(PreloadPaths, DotDotBehindALinkIsWhereTheLinkLeads)
{
    char folder[] = "/tmp/preload-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string deep = std::string(folder) + "/link";
    file_make(unit_place("/conf/probe"), kText);
    ASSERT_EQ(symlink("/etc", deep.c_str()), 0);
    EXPECT_TRUE(holds_text(open((deep + "/../conf/probe").c_str(), O_RDONLY)));
    ASSERT_EQ(unlink(deep.c_str()), 0);
    ASSERT_EQ(symlink("/usr/bin", deep.c_str()), 0);
    EXPECT_EQ(open((deep + "/../conf/probe").c_str(), O_RDONLY), -1);
    EXPECT_EQ(errno, ENOENT);
    ASSERT_EQ(unlink(deep.c_str()), 0);
    ASSERT_EQ(rmdir(folder), 0);
}

TEST_F(PreloadPaths, FoldersShowTheUnitsNames)
{
    const auto cwd = [] {
        char name[4096];
        return std::string(getcwd(name, sizeof name));
    };
    ASSERT_EQ(chdir("/conf/sub"), 0);
    EXPECT_EQ(cwd(), "/conf/sub");
    char small[4];
    EXPECT_EQ(getcwd(small, sizeof small), nullptr);
    EXPECT_EQ(errno, ERANGE);
    char* made = getcwd(nullptr, 0);
    EXPECT_STREQ(made, "/conf/sub");
    free(made);
    made = get_current_dir_name();
    EXPECT_STREQ(made, "/conf/sub");
    free(made);
    char room[4096];
    EXPECT_STREQ(entry<char* (*)(char*)>("getwd")(room), "/conf/sub");
    EXPECT_STREQ(entry<char* (*)(char*, size_t, size_t)>("__getcwd_chk")(room, 4096, 4096),
                 "/conf/sub");
    ASSERT_EQ(chdir(".."), 0);
    EXPECT_EQ(cwd(), "/conf");
    ASSERT_EQ(chdir(".."), 0);
    EXPECT_EQ(cwd(), "/");
    file_make(unit_place("/conf/probe"), kText);
    char resolved[PATH_MAX];
    EXPECT_STREQ(realpath("/conf/sub/../probe", resolved), "/conf/probe");
    EXPECT_STREQ(entry<char* (*)(const char*, char*, size_t)>("__realpath_chk")("/tmp/serialno",
                                                                                resolved, PATH_MAX),
                 "/tmp/serialno");
    made = canonicalize_file_name("/conf/probe");
    EXPECT_STREQ(made, "/conf/probe");
    free(made);
    EXPECT_EQ(realpath("/conf/nowhere", resolved), nullptr);
    EXPECT_STREQ(realpath("/etc/passwd", resolved), "/etc/passwd");
}

TEST_F(PreloadPaths, FoldersHoldTheUnitsEntries)
{
    file_make(unit_place("/conf/probe"), kText);
    DIR* folder = opendir("/conf");
    ASSERT_NE(folder, nullptr);
    bool found = false;
    while (const dirent* name = readdir(folder)) {
        found = found || strcmp(name->d_name, "probe") == 0;
    }
    EXPECT_TRUE(found);
    EXPECT_EQ(closedir(folder), 0);
    static std::string seen;
    seen.clear();
    EXPECT_EQ(nftw(
                  "/conf/sub",
                  [](const char* name, const struct stat*, int, FTW* place) {
                      seen += std::string(name) + "=" + (name + place->base) + " ";
                      return 0;
                  },
                  4, 0),
              0);
    EXPECT_EQ(seen, "/conf/sub=sub ");
    glob_t names{};
    ASSERT_EQ(glob("/conf/pr*", 0, nullptr, &names), 0);
    EXPECT_EQ(names.gl_pathc, 1U);
    EXPECT_STREQ(names.gl_pathv[0], "/conf/probe");
    EXPECT_EQ(names.gl_flags & GLOB_ALTDIRFUNC, 0);
    globfree(&names);
    EXPECT_EQ(glob("/conf/none*", 0, nullptr, &names), GLOB_NOMATCH);
    dirent** entries = nullptr;
    const int count = scandir("/conf/sub", &entries, nullptr, alphasort);
    EXPECT_EQ(count, 2); // "." and ".."
    for (int i = 0; i < count; i++) {
        free(entries[i]);
    }
    free(entries);
}

TEST_F(PreloadPaths, ALinkInTheUnitLeadsToTheUnit)
{
    file_make(unit_place("/conf/other"), kText);
    std::filesystem::remove(unit_place("/conf/link"));
    ASSERT_EQ(symlink("/conf/other", "/conf/link"), 0);
    EXPECT_TRUE(holds_text(open("/conf/link", O_RDONLY)));
    char text[64] = "";
    EXPECT_EQ(readlink("/conf/link", text, sizeof text), 11);
    EXPECT_STREQ(text, "/conf/other");
    EXPECT_EQ(readlink("/conf/link", text, 5), 5);
    ASSERT_EQ(unlink("/conf/link"), 0);
    EXPECT_EQ(chdir("/conf"), 0);
    memset(text, 0, sizeof text);
    EXPECT_EQ(readlink("/proc/self/cwd", text, sizeof text), 5);
    EXPECT_STREQ(text, "/conf");
}

TEST_F(PreloadPaths, TemporaryNamesComeBackComplete)
{
    struct Maker {
        const char* name;
        std::function<int(char*)> make;
        const char* suffix;
    };
    const Maker makers[] = {
        {"mkstemp", [](char* name) { return mkstemp(name); }, ""},
        {"mkstemp64", [](char* name) { return mkstemp64(name); }, ""},
        {"mkostemp", [](char* name) { return mkostemp(name, O_CLOEXEC); }, ""},
        {"mkostemp64", [](char* name) { return mkostemp64(name, O_CLOEXEC); }, ""},
        {"mkstemps", [](char* name) { return mkstemps(name, 2); }, ".c"},
        {"mkstemps64", [](char* name) { return mkstemps64(name, 2); }, ".c"},
        {"mkostemps", [](char* name) { return mkostemps(name, 2, 0); }, ".c"},
        {"mkostemps64", [](char* name) { return mkostemps64(name, 2, 0); }, ".c"},
    };
    for (const char* base : {"/conf/n.XXXXXX", "/conf/sub/../n.XXXXXX", "//conf//n.XXXXXX"}) {
        for (const Maker& maker : makers) {
            std::string name = std::string(base) + maker.suffix;
            const std::string before = name;
            ASSERT_TRUE(taken_over(maker.name)) << maker.name;
            ASSERT_TRUE(shut(maker.make(name.data()))) << maker.name << " " << base;
            EXPECT_EQ(name.find("XXXXXX"), std::string::npos) << maker.name << " " << name;
            EXPECT_EQ(name.size(), before.size());
            const std::string own = name.substr(name.rfind('/'));
            EXPECT_TRUE(machine_has(unit_place("/conf" + own))) << name;
            EXPECT_EQ(unlink(name.c_str()), 0) << name;
        }
    }
    std::string folder = "/conf/d.XXXXXX";
    ASSERT_EQ(mkdtemp(folder.data()), folder.data());
    EXPECT_TRUE(machine_has(unit_place(folder)));
    EXPECT_EQ(rmdir(folder.c_str()), 0);
    std::string other = "/conf/m.XXXXXX";
    auto* const made = entry<char* (*)(char*)>("mktemp")(other.data());
    ASSERT_EQ(made, other.data());
    EXPECT_EQ(other.find("XXXXXX"), std::string::npos);
    std::string wrong = "/conf/short.XX";
    EXPECT_EQ(mkstemp(wrong.data()), -1);
    EXPECT_EQ(errno, EINVAL);
}

// On the appliance, /tmp and /conf and what lies beside are renamed into each other.
TEST_F(PreloadPaths, AFileMovesBetweenTheMachineAndTheUnit)
{
    char folder[] = "/dev/shm/preload-XXXXXX"; // another file system, on most machines
    if (mkdtemp(folder) == nullptr) {
        GTEST_SKIP() << "no /dev/shm";
    }
    const std::string outside = std::string(folder) + "/file";
    file_make(outside, "from outside");
    ASSERT_EQ(chmod(outside.c_str(), 0600), 0);
    ASSERT_EQ(rename(outside.c_str(), "/tmp/serialno"), 0) << strerror(errno);
    EXPECT_EQ(file_text(unit_place("/tmp/serialno")), "from outside");
    EXPECT_FALSE(machine_has(outside));
    ASSERT_EQ(rename("/tmp/serialno", outside.c_str()), 0);
    EXPECT_EQ(file_text(outside), "from outside");
    EXPECT_FALSE(machine_has(unit_place("/tmp/serialno")));
    struct stat status;
    ASSERT_EQ(stat(outside.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    ASSERT_EQ(mkdir("/conf/folder", 0700), 0);
    if (rename("/conf/folder", (outside + ".folder").c_str()) == 0) {
        ASSERT_EQ(rmdir((outside + ".folder").c_str()), 0); // one file system
    } else {
        EXPECT_EQ(errno, EXDEV);
        ASSERT_EQ(rmdir("/conf/folder"), 0);
    }
    ASSERT_EQ(unlink(outside.c_str()), 0);
    ASSERT_EQ(rmdir(folder), 0);
}

// What the kernel itself would refuse with another errno, so that a gap would harm nobody.
TEST_F(PreloadPaths, AccountsAreNotKeptInTheUnit)
{
    ASSERT_TRUE(taken_over("acct"));
    for (const char* path : {"/conf/sub", "/conf"}) {
        EXPECT_EQ(acct(path), -1);
        EXPECT_EQ(errno, EPERM) << path;
    }
    ASSERT_EQ(chdir("/conf"), 0);
    EXPECT_EQ(acct("sub"), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(syscall(SYS_acct, "sub"), -1);
    EXPECT_EQ(errno, EPERM);
}

TEST_F(PreloadPaths, ANameInAFolderOfTheUnitIsTheUnits)
{
    file_make(unit_place("/conf/other"), kText);
    std::filesystem::remove(unit_place("/conf/link"));
    ASSERT_EQ(chdir("/conf"), 0);
    ASSERT_EQ(symlink("/conf/other", "link"), 0);
    EXPECT_TRUE(holds_text(open("link", O_RDONLY)));
    ASSERT_EQ(unlink("link"), 0);
    char outside[] = "/dev/shm/preload-XXXXXX";
    const int made = mkstemp(outside);
    if (made < 0) {
        GTEST_SKIP() << "no /dev/shm";
    }
    ASSERT_EQ(close(made), 0);
    EXPECT_EQ(rename("other", outside), 0) << strerror(errno);
    EXPECT_EQ(file_text(outside), kText);
    EXPECT_EQ(rename(outside, "other"), 0) << strerror(errno);
    EXPECT_EQ(file_text(unit_place("/conf/other")), kText);
}

TEST_F(PreloadPaths, AnotherRootIsRefused)
{
    EXPECT_EQ(chroot("/"), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(syscall(SYS_chroot, "/"), -1);
    EXPECT_EQ(errno, EPERM);
}

TEST_F(PreloadPaths, ErrnoStaysWhereNothingFails)
{
    file_make(unit_place("/conf/probe"), kText);
    for (const char* path : {"/conf/probe", "/etc/../conf/probe", "/etc/passwd"}) {
        errno = 99;
        EXPECT_EQ(access(path, R_OK), 0);
        EXPECT_EQ(errno, 99) << path;
    }
}

// fanotify needs rights that most have not: then the errno is all there is to see.
TEST_F(PreloadPaths, MarksAreSetOnTheUnitsFiles)
{
    ASSERT_TRUE(taken_over("fanotify_mark"));
    file_make(unit_place("/conf/probe"), kText);
    const int group = fanotify_init(FAN_CLASS_NOTIF, O_RDONLY);
    if (group < 0) {
        GTEST_SKIP() << "fanotify_init: " << strerror(errno);
    }
    EXPECT_EQ(fanotify_mark(group, FAN_MARK_ADD, FAN_MODIFY, AT_FDCWD, "/conf/probe"), 0)
        << strerror(errno);
    EXPECT_EQ(fanotify_mark(group, FAN_MARK_ADD, FAN_MODIFY, AT_FDCWD, "/conf/nowhere"), -1);
    ASSERT_EQ(close(group), 0);
}

} // namespace
