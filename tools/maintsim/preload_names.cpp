// Functions that hand out names, go through folders, or take two paths at once.
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fts.h>
#include <ftw.h>
#include <glob.h>
#include <string>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

#include "tools/maintsim/preload.h"
#include "tools/maintsim/preload_device.h"
#include "tools/maintsim/preload_files.h"
#include "tools/maintsim/preload_open.h"

namespace
{

// Moves a plain file between the machine's file system and the unit's, as the appliance, where both
// are one, renames it: whole or not at all. The target's folder holds the copy until it is whole.
int file_move(const Way& from, const Way& to)
{
    char copy[PATH_MAX];
    const int length = snprintf(copy, sizeof copy, "%s.%ld.moved", to.path, syscall(SYS_gettid));
    if (length < 0 || static_cast<size_t>(length) >= sizeof copy) {
        return failed(ENAMETOOLONG);
    }
    struct stat status {
    };
    if (NEXT(fstatat)(from.folder, from.path, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return -1;
    }
    if (!S_ISREG(status.st_mode)) {
        return failed(EXDEV);
    }
    const int source = NEXT(openat)(from.folder, from.path, O_RDONLY | O_CLOEXEC);
    if (source < 0) {
        return -1;
    }
    const int target = NEXT(openat)(to.folder, copy, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                    status.st_mode & 07777);
    bool whole = target >= 0;
    for (off_t left = status.st_size; whole && left > 0;) {
        const ssize_t sent = sendfile(target, source, nullptr, static_cast<size_t>(left));
        whole = sent > 0;
        left -= sent;
    }
    if (target >= 0) {
        const timespec times[] = {status.st_atim, status.st_mtim};
        whole =
            whole && fchmod(target, status.st_mode & 07777) == 0 && futimens(target, times) == 0;
        whole = whole && NEXT(renameat)(to.folder, copy, to.folder, to.path) == 0;
        if (!whole) {
            const ErrnoKept kept;
            NEXT(unlinkat)(to.folder, copy, 0);
        }
    }
    const ErrnoKept kept;
    if (target >= 0) {
        NEXT(close)(target);
    }
    NEXT(close)(source);
    return whole ? NEXT(unlinkat)(from.folder, from.path, 0) : -1;
}

// A name that the C library has written, as the unit's programs know it.
char* name_shown(char* name)
{
    if (name != nullptr && !sim_inside) {
        unitName_restore(name);
    }
    return name;
}

// The name that a link has; the caller's room may be shorter.
ssize_t link_read(int folder, const char* given, char* text, size_t size)
{
    const Way way(folder, given);
    char whole[PATH_MAX];
    const ssize_t length = NEXT(readlinkat)(way.folder, way.path, whole, sizeof whole - 1);
    if (length < 0 || size == 0 || sim_inside) {
        return NEXT(readlinkat)(way.folder, way.path, text, size);
    }
    whole[length] = '\0';
    unitName_restore(whole);
    const size_t shown = strnlen(whole, size);
    memcpy(text, whole, shown);
    return static_cast<ssize_t>(shown);
}

char* path_real(const char* given, char* resolved)
{
    return name_shown(NEXT(realpath)(Way(given).path, resolved));
}

// A name that the C library completes: the letters that it chose go back into the caller's.
template <typename Make> auto completed(char* name, Make make) -> decltype(make(name))
{
    const Way way(name);
    if (!way.unit()) {
        return make(name);
    }
    char place[PATH_MAX];
    snprintf(place, sizeof place, "%s", way.path);
    const auto result = make(place);
    const char* base = strrchr(name, '/');
    const size_t length = strlen(base == nullptr ? name : base);
    if (strlen(place) >= length) {
        memcpy(name + strlen(name) - length, place + strlen(place) - length, length);
    }
    return result;
}

// The callbacks of ftw() know no more than a name: whose they are, each thread keeps.
template <typename Callback> thread_local Callback walk_callback = nullptr;

template <typename Status> int walk_step(const char* name, const Status* status, int kind)
{
    char shown[PATH_MAX];
    snprintf(shown, sizeof shown, "%s", name);
    unitName_restore(shown);
    return walk_callback<int (*)(const char*, const Status*, int)>(shown, status, kind);
}

template <typename Status>
int walk_stepIn(const char* name, const Status* status, int kind, FTW* place)
{
    char shown[PATH_MAX];
    snprintf(shown, sizeof shown, "%s", name);
    FTW shown_place = *place;
    const auto cut = static_cast<int>(strlen(shown));
    if (unitName_restore(shown)) {
        shown_place.base -= cut - static_cast<int>(strlen(shown));
    }
    return walk_callback<int (*)(const char*, const Status*, int, FTW*)>(shown, status, kind,
                                                                         &shown_place);
}

template <typename Callback, typename Walk> int walked(Callback callback, Walk walk)
{
    Callback const before = walk_callback<Callback>;
    walk_callback<Callback> = callback;
    const int result = walk();
    walk_callback<Callback> = before;
    return result;
}

// The C library's glob() goes through folders by calls of its own, except when it is given some.
void* glob_open(const char* path)
{
    return NEXT(opendir)(Way(path).path);
}

template <typename Entry, Entry* (*kRead)(DIR*)> Entry* glob_read(void* folder)
{
    return kRead(static_cast<DIR*>(folder));
}

void glob_close(void* folder)
{
    closedir(static_cast<DIR*>(folder));
}

template <typename Status, int (*kStat)(const char*, Status*)>
int glob_stat(const char* path, Status* status)
{
    return kStat(Way(path).path, status);
}

template <typename Result, typename Entry, typename Status, Entry* (*kRead)(DIR*),
          int (*kStat)(const char*, Status*), int (*kLstat)(const char*, Status*), typename Glob>
int globbed(Glob next, const char* pattern, int flags, int (*error)(const char*, int),
            Result* result)
{
    if ((flags & GLOB_ALTDIRFUNC) != 0 || sim_inside) {
        return next(pattern, flags, error, result);
    }
    result->gl_opendir = glob_open;
    result->gl_readdir = glob_read<Entry, kRead>;
    result->gl_closedir = glob_close;
    result->gl_stat = glob_stat<Status, kStat>;
    result->gl_lstat = glob_stat<Status, kLstat>;
    const int found = next(pattern, flags | GLOB_ALTDIRFUNC, error, result);
    result->gl_flags &= ~GLOB_ALTDIRFUNC;
    return found;
}

template <typename Entry>
int folder_scan(int folder, const char* path, Entry*** names, int (*wanted)(const Entry*),
                int (*compare)(const Entry**, const Entry**),
                int (*next)(int, const char*, Entry***, int (*)(const Entry*),
                            int (*)(const Entry**, const Entry**)))
{
    const Way way(folder, path);
    return next(way.folder, way.path, names, wanted, compare);
}

// A list of paths, each as it leads.
class LedPaths
{
  public:
    explicit LedPaths(char* const* paths)
    {
        for (; *paths != nullptr; paths++) {
            paths_.emplace_back(Way(*paths).path);
        }
        for (std::string& path : paths_) {
            list_.push_back(path.data());
        }
        list_.push_back(nullptr);
    }
    [[nodiscard]] char* const* get() const { return list_.data(); }

  private:
    std::vector<std::string> paths_;
    std::vector<char*> list_;
};

} // namespace

int path_rename(int from_folder, const char* from, int to_folder, const char* to, unsigned flags)
{
    const Way from_way(from_folder, from, Look::kClose);
    const Way to_way(to_folder, to, Look::kClose);
    if (from_way.device() || to_way.device()) {
        return failed(EPERM);
    }
    const int result =
        flags == 0
            ? NEXT(renameat)(from_way.folder, from_way.path, to_way.folder, to_way.path)
            : NEXT(renameat2)(from_way.folder, from_way.path, to_way.folder, to_way.path, flags);
    return result != 0 && errno == EXDEV && flags == 0 && from_way.unit() != to_way.unit()
               ? file_move(from_way, to_way)
               : result;
}

int path_link(int from_folder, const char* from, int to_folder, const char* to, int flags)
{
    const Way from_way(from_folder, from);
    const Way to_way(to_folder, to);
    return from_way.device() || to_way.device()
               ? failed(EPERM)
               : NEXT(linkat)(from_way.folder, from_way.path, to_way.folder, to_way.path, flags);
}

// A link in the unit to a file of the unit leads there for the kernel, too.
int path_symlink(const char* target, int folder, const char* path)
{
    const Way way(folder, path, Look::kClose);
    if (way.device()) {
        return failed(EEXIST);
    }
    return way.unit() && target != nullptr && target[0] == '/'
               ? NEXT(symlinkat)(Way(target).path, way.folder, way.path)
               : NEXT(symlinkat)(target, way.folder, way.path);
}

// Folders

TAKES_OVER(DIR*, opendir, const char* path)
{
    return NEXT(opendir)(Way(path).path);
}

TAKES_OVER(int, chdir, const char* path)
{
    return NEXT(chdir)(Way(path).path);
}

TAKES_OVER(char*, getcwd, char* name, size_t size)
{
    // The unit's own name is longer than the one shown: room for both.
    char whole[PATH_MAX];
    if (sim_inside || NEXT(getcwd)(whole, sizeof whole) == nullptr || !unitName_restore(whole)) {
        return NEXT(getcwd)(name, size);
    }
    const size_t length = strlen(whole) + 1;
    if (name == nullptr) {
        char* const made = static_cast<char*>(malloc(size < length ? length : size));
        return made == nullptr ? nullptr : strcpy(made, whole);
    }
    if (size < length) {
        errno = size == 0 ? EINVAL : ERANGE;
        return nullptr;
    }
    return strcpy(name, whole);
}

TAKES_OVER(char*, __getcwd_chk, char* name, size_t size, size_t room)
{
    if (size > room) {
        abort();
    }
    return sim_getcwd(name, size);
}

TAKES_OVER(char*, getwd, char* name)
{
    return sim_getcwd(name, PATH_MAX);
}

TAKES_OVER(char*, get_current_dir_name)
{
    return name_shown(NEXT(get_current_dir_name)());
}

TAKES_OVER(int, scandir, const char* path, dirent*** names, int (*wanted)(const dirent*),
           int (*compare)(const dirent**, const dirent**))
{
    return folder_scan<dirent>(AT_FDCWD, path, names, wanted, compare, NEXT(scandirat));
}

TAKES_OVER(int, scandir64, const char* path, dirent64*** names, int (*wanted)(const dirent64*),
           int (*compare)(const dirent64**, const dirent64**))
{
    return folder_scan<dirent64>(AT_FDCWD, path, names, wanted, compare, NEXT(scandirat64));
}

TAKES_OVER(int, scandirat, int folder, const char* path, dirent*** names,
           int (*wanted)(const dirent*), int (*compare)(const dirent**, const dirent**))
{
    return folder_scan<dirent>(folder, path, names, wanted, compare, NEXT(scandirat));
}

TAKES_OVER(int, scandirat64, int folder, const char* path, dirent64*** names,
           int (*wanted)(const dirent64*), int (*compare)(const dirent64**, const dirent64**))
{
    return folder_scan<dirent64>(folder, path, names, wanted, compare, NEXT(scandirat64));
}

TAKES_OVER(int, ftw, const char* path, __ftw_func_t step, int descriptors)
{
    return walked(step,
                  [&] { return NEXT(ftw)(Way(path).path, walk_step<struct stat>, descriptors); });
}

TAKES_OVER(int, ftw64, const char* path, __ftw64_func_t step, int descriptors)
{
    return walked(
        step, [&] { return NEXT(ftw64)(Way(path).path, walk_step<struct stat64>, descriptors); });
}

TAKES_OVER(int, nftw, const char* path, __nftw_func_t step, int descriptors, int flags)
{
    return walked(step, [&] {
        return NEXT(nftw)(Way(path).path, walk_stepIn<struct stat>, descriptors, flags);
    });
}

TAKES_OVER(int, nftw64, const char* path, __nftw64_func_t step, int descriptors, int flags)
{
    return walked(step, [&] {
        return NEXT(nftw64)(Way(path).path, walk_stepIn<struct stat64>, descriptors, flags);
    });
}

TAKES_OVER(int, glob, const char* pattern, int flags, int (*error)(const char*, int),
           glob_t* result)
{
    return globbed<glob_t, dirent, struct stat, readdir, stat, lstat>(NEXT(glob), pattern, flags,
                                                                      error, result);
}

TAKES_OVER(int, glob64, const char* pattern, int flags, int (*error)(const char*, int),
           glob64_t* result)
{
    return globbed<glob64_t, dirent64, struct stat64, readdir64, stat64, lstat64>(
        NEXT(glob64), pattern, flags, error, result);
}

// The entries show their place in the unit's folder.
TAKES_OVER(FTS*, fts_open, char* const* paths, int options,
           int (*compare)(const FTSENT**, const FTSENT**))
{
    const LedPaths led(paths);
    return NEXT(fts_open)(led.get(), options, compare);
}

TAKES_OVER(FTS64*, fts64_open, char* const* paths, int options,
           int (*compare)(const FTSENT64**, const FTSENT64**))
{
    const LedPaths led(paths);
    return NEXT(fts64_open)(led.get(), options, compare);
}

// Names

TAKES_OVER(ssize_t, readlink, const char* path, char* text, size_t size)
{
    return link_read(AT_FDCWD, path, text, size);
}

TAKES_OVER(ssize_t, readlinkat, int folder, const char* path, char* text, size_t size)
{
    return link_read(folder, path, text, size);
}

TAKES_OVER(ssize_t, __readlink_chk, const char* path, char* text, size_t size, size_t room)
{
    if (size > room) {
        abort();
    }
    return link_read(AT_FDCWD, path, text, size);
}

TAKES_OVER(ssize_t, __readlinkat_chk, int folder, const char* path, char* text, size_t size,
           size_t room)
{
    if (size > room) {
        abort();
    }
    return link_read(folder, path, text, size);
}

TAKES_OVER(char*, realpath, const char* path, char* resolved)
{
    return path_real(path, resolved);
}

TAKES_OVER(char*, __realpath_chk, const char* path, char* resolved, size_t room)
{
    if (room < PATH_MAX) {
        abort();
    }
    return path_real(path, resolved);
}

TAKES_OVER(char*, canonicalize_file_name, const char* path)
{
    return path_real(path, nullptr);
}

TAKES_OVER(char*, mktemp, char* name)
{
    return completed(name, [](char* place) { return NEXT_AS(char* (*)(char*), mktemp)(place); }) ==
                   nullptr
               ? nullptr
               : name;
}

TAKES_OVER(int, mkstemp, char* name)
{
    return completed(name, [](char* place) { return NEXT(mkstemp)(place); });
}

TAKES_OVER(int, mkstemp64, char* name)
{
    return completed(name, [](char* place) { return NEXT(mkstemp64)(place); });
}

TAKES_OVER(int, mkostemp, char* name, int flags)
{
    return completed(name, [=](char* place) { return NEXT(mkostemp)(place, flags); });
}

TAKES_OVER(int, mkostemp64, char* name, int flags)
{
    return completed(name, [=](char* place) { return NEXT(mkostemp64)(place, flags); });
}

TAKES_OVER(int, mkstemps, char* name, int suffix)
{
    return completed(name, [=](char* place) { return NEXT(mkstemps)(place, suffix); });
}

TAKES_OVER(int, mkstemps64, char* name, int suffix)
{
    return completed(name, [=](char* place) { return NEXT(mkstemps64)(place, suffix); });
}

TAKES_OVER(int, mkostemps, char* name, int suffix, int flags)
{
    return completed(name, [=](char* place) { return NEXT(mkostemps)(place, suffix, flags); });
}

TAKES_OVER(int, mkostemps64, char* name, int suffix, int flags)
{
    return completed(name, [=](char* place) { return NEXT(mkostemps64)(place, suffix, flags); });
}

TAKES_OVER(char*, mkdtemp, char* name)
{
    return completed(name, [](char* place) { return NEXT(mkdtemp)(place); }) == nullptr ? nullptr
                                                                                        : name;
}
