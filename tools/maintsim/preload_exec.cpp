// What starts other programs: they belong to the unit, too, or they are refused.
//
// Between vfork and exec the parent's memory is in use: nothing here allocates, but on the stack.
#include <alloca.h>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <string_view>
#include <unistd.h>

#include "tools/maintsim/preload.h"
#include "tools/maintsim/preload_device.h"
#include "tools/maintsim/preload_paths.h"
#include "tools/maintsim/preload_variables.h"
#include "tools/maintsim/program_check.h"

namespace
{

constexpr char kShell[] = "/bin/sh";

// The value of a variable in an environment; null: it has none.
const char* variable_find(char* const* environment, std::string_view name)
{
    for (; environment != nullptr && *environment != nullptr; environment++) {
        const std::string_view entry = *environment;
        if (entry.starts_with(name) && entry.size() > name.size() && entry[name.size()] == '=') {
            return *environment + name.size() + 1;
        }
    }
    return nullptr;
}

bool preload_named(const char* value)
{
    const std::string_view object = sim_object();
    while (value != nullptr && *value != '\0') {
        const size_t length = strcspn(value, ": ");
        if (std::string_view(value, length) == object) {
            return true;
        }
        value += length;
        value += strspn(value, ": ");
    }
    return false;
}

bool environment_whole(char* const* environment)
{
    return variable_find(environment, kUnitVariable) != nullptr &&
           preload_named(variable_find(environment, kPreloadVariable));
}

size_t list_length(char* const* list)
{
    size_t length = 0;
    while (list != nullptr && list[length] != nullptr) {
        length++;
    }
    return length;
}

// The environment with both variables in it, in the caller's memory: `whole` has room for two more
// entries, `unit` and `preload` for the variables.
char** environment_complete(char* const* environment, char** whole, char* unit, char* preload)
{
    const char* const others = variable_find(environment, kPreloadVariable);
    const bool named = preload_named(others);
    size_t count = 0;
    for (; environment != nullptr && *environment != nullptr; environment++) {
        const std::string_view entry = *environment;
        if (!entry.starts_with(kPreloadVariable) || entry[strlen(kPreloadVariable)] != '=') {
            whole[count++] = *environment;
        }
    }
    if (unit != nullptr) {
        sprintf(unit, "%s=%s", kUnitVariable, sim_folder());
        whole[count++] = unit;
    }
    const bool more = others != nullptr && *others != '\0';
    sprintf(preload, "%s=%s%s%s", kPreloadVariable, named ? "" : sim_object(),
            !named && more ? ":" : "", more ? others : "");
    whole[count++] = preload;
    whole[count] = nullptr;
    return whole;
}

size_t preload_length(char* const* environment)
{
    const char* const others = variable_find(environment, kPreloadVariable);
    return sizeof kPreloadVariable + 1 + strlen(sim_object()) + 1 +
           (others == nullptr ? 0 : strlen(others));
}

size_t unit_length(char* const* environment)
{
    return variable_find(environment, kUnitVariable) != nullptr
               ? 0
               : sizeof kUnitVariable + 1 + strlen(sim_folder());
}

bool sim_belongs()
{
    return sim_folder()[0] != '\0' && !sim_inside;
}

// Names an environment with both variables in it; it lies on the caller's stack.
// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are names
#define ENVIRONMENT_COMPLETE(given, whole)                                                         \
    char** whole = const_cast<char**>(given);                                                      \
    if (sim_belongs() && !environment_whole(given)) {                                              \
        void* const entries = alloca((list_length(given) + 3) * sizeof(char*));                    \
        void* const preload = alloca(preload_length(given) + 1);                                   \
        void* const unit = unit_length(given) == 0 ? nullptr : alloca(unit_length(given) + 1);     \
        whole = environment_complete(given, static_cast<char**>(entries),                          \
                                     static_cast<char*>(unit), static_cast<char*>(preload));       \
    }
// NOLINTEND(bugprone-macro-parentheses)

// Whether the program may start; if not, it says why.
bool program_allowed(int folder, const char* path, const char* name)
{
    if (!sim_belongs()) {
        return true;
    }
    const ErrnoKept kept;
    ProgramVerdict verdict{};
    {
        const Inside inside;
        verdict = program_check(folder, path);
    }
    const char* const reason = programKind_reason(verdict);
    if (reason != nullptr) {
        sim_say(name, " ", reason);
    }
    return reason == nullptr;
}

int program_start(int folder, const char* name, char* const* arguments, char* const* environment,
                  int flags)
{
    const Way way(folder, name);
    if (!program_allowed(way.folder, way.path, name)) {
        return failed(EACCES);
    }
    ENVIRONMENT_COMPLETE(environment, whole)
    return way.folder == AT_FDCWD && flags == 0
               ? NEXT(execve)(way.path, arguments, whole)
               : NEXT(execveat)(way.folder, way.path, arguments, whole, flags);
}

// Calls with each place in PATH where the program may be, until the answer is not that it is not
// there. What is found there and may not be run counts only if nothing else is found.
template <typename Try> int path_search(const char* name, Try attempt)
{
    if (strchr(name, '/') != nullptr) {
        return attempt(name);
    }
    if (*name == '\0') {
        return ENOENT;
    }
    const char* search = getenv("PATH");
    if (search == nullptr) {
        search = "/bin:/usr/bin";
    }
    int error = ENOENT;
    for (bool more = true; more;) {
        const size_t length = strcspn(search, ":");
        char place[PATH_MAX];
        const int size = snprintf(place, sizeof place, "%.*s%s%s", static_cast<int>(length), search,
                                  length == 0 ? "" : "/", name);
        if (size > 0 && static_cast<size_t>(size) < sizeof place) {
            const int result = attempt(place);
            if (result != ENOENT && result != ENOTDIR && result != EACCES) {
                return result;
            }
            error = result == EACCES ? EACCES : error;
        }
        more = search[length] == ':';
        search += length + 1;
    }
    return error;
}

int program_startInPath(const char* name, char* const* arguments, char* const* environment)
{
    const int error = path_search(name, [&](const char* place) {
        program_start(AT_FDCWD, place, arguments, environment, 0);
        if (errno == ENOEXEC) { // a script without a first line that says whose
            const size_t count = list_length(arguments);
            auto** const list = static_cast<char**>(alloca((count + 3) * sizeof(char*)));
            list[0] = const_cast<char*>(kShell);
            list[1] = const_cast<char*>(place);
            memcpy(list + 2, arguments + (count > 0 ? 1 : 0),
                   (count > 0 ? count : 1) * sizeof(char*));
            program_start(AT_FDCWD, kShell, list, environment, 0);
        }
        return errno;
    });
    return failed(error);
}

// For what the C library starts itself, with the environment as it stands: it gets the variables back.
bool shell_allowed()
{
    if (!sim_belongs()) {
        return true;
    }
    if (!program_allowed(AT_FDCWD, kShell, kShell)) {
        return false;
    }
    ENVIRONMENT_COMPLETE(environ, whole)
    if (whole != environ) {
        setenv(kUnitVariable, variable_find(whole, kUnitVariable), 1);
        setenv(kPreloadVariable, variable_find(whole, kPreloadVariable), 1);
    }
    return true;
}

using Spawn = decltype(&posix_spawn);

int program_spawn(Spawn next, pid_t* child, const char* name,
                  const posix_spawn_file_actions_t* actions, const posix_spawnattr_t* attributes,
                  char* const* arguments, char* const* environment)
{
    const Way way(name);
    if (!program_allowed(AT_FDCWD, way.path, name)) {
        return EACCES;
    }
    ENVIRONMENT_COMPLETE(environment, whole)
    return next(child, way.path, actions, attributes, arguments, whole);
}

// The arguments of execl() and its like, from a list in the registers and on the stack.
// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are names
#define ARGUMENTS_COLLECT(first, arguments, rest)                                                  \
    va_list rest;                                                                                  \
    va_start(rest, first);                                                                         \
    size_t count = 1;                                                                              \
    for (const char* argument = first; argument != nullptr; count++) {                             \
        argument = va_arg(rest, const char*);                                                      \
    }                                                                                              \
    va_end(rest);                                                                                  \
    auto** const arguments = static_cast<char**>(alloca(count * sizeof(char*)));                   \
    va_start(rest, first);                                                                         \
    arguments[0] = const_cast<char*>(first);                                                       \
    for (size_t i = 1; i < count; i++) {                                                           \
        arguments[i] = va_arg(rest, char*);                                                        \
    }
// NOLINTEND(bugprone-macro-parentheses)

} // namespace

TAKES_OVER(int, execve, const char* path, char* const* arguments, char* const* environment)
{
    return program_start(AT_FDCWD, path, arguments, environment, 0);
}

TAKES_OVER(int, execv, const char* path, char* const* arguments)
{
    return program_start(AT_FDCWD, path, arguments, environ, 0);
}

TAKES_OVER(int, execveat, int folder, const char* path, char* const* arguments,
           char* const* environment, int flags)
{
    if (path != nullptr && *path == '\0' && (flags & AT_EMPTY_PATH) != 0) {
        char link[32];
        snprintf(link, sizeof link, "/proc/self/fd/%d", folder);
        if (!program_allowed(AT_FDCWD, link, "the program of a descriptor")) {
            return failed(EACCES);
        }
        ENVIRONMENT_COMPLETE(environment, whole)
        return NEXT(execveat)(folder, path, arguments, whole, flags);
    }
    return program_start(folder, path, arguments, environment, flags);
}

TAKES_OVER(int, fexecve, int descriptor, char* const* arguments, char* const* environment)
{
    char link[32];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    if (!program_allowed(AT_FDCWD, link, "the program of a descriptor")) {
        return failed(EACCES);
    }
    ENVIRONMENT_COMPLETE(environment, whole)
    return NEXT(fexecve)(descriptor, arguments, whole);
}

TAKES_OVER(int, execvp, const char* name, char* const* arguments)
{
    return program_startInPath(name, arguments, environ);
}

TAKES_OVER(int, execvpe, const char* name, char* const* arguments, char* const* environment)
{
    return program_startInPath(name, arguments, environment);
}

TAKES_OVER(int, execl, const char* path, const char* first, ...)
{
    ARGUMENTS_COLLECT(first, arguments, rest)
    va_end(rest);
    return program_start(AT_FDCWD, path, arguments, environ, 0);
}

TAKES_OVER(int, execlp, const char* name, const char* first, ...)
{
    ARGUMENTS_COLLECT(first, arguments, rest)
    va_end(rest);
    return program_startInPath(name, arguments, environ);
}

TAKES_OVER(int, execle, const char* path, const char* first, ...)
{
    ARGUMENTS_COLLECT(first, arguments, rest)
    char* const* const environment = va_arg(rest, char* const*);
    va_end(rest);
    return program_start(AT_FDCWD, path, arguments, environment, 0);
}

TAKES_OVER(int, posix_spawn, pid_t* child, const char* path,
           const posix_spawn_file_actions_t* actions, const posix_spawnattr_t* attributes,
           char* const* arguments, char* const* environment)
{
    return program_spawn(NEXT(posix_spawn), child, path, actions, attributes, arguments,
                         environment);
}

TAKES_OVER(int, posix_spawnp, pid_t* child, const char* name,
           const posix_spawn_file_actions_t* actions, const posix_spawnattr_t* attributes,
           char* const* arguments, char* const* environment)
{
    return path_search(name, [&](const char* place) {
        return program_spawn(NEXT(posix_spawn), child, place, actions, attributes, arguments,
                             environment);
    });
}

TAKES_OVER(int, posix_spawn_file_actions_addopen, posix_spawn_file_actions_t* actions,
           int descriptor, const char* path, int flags, mode_t mode)
{
    const Way way(path);
    return NEXT(posix_spawn_file_actions_addopen)(actions, descriptor, way.path,
                                                  way.device() ? flags | kNoAccess : flags, mode);
}

TAKES_OVER(int, posix_spawn_file_actions_addchdir_np, posix_spawn_file_actions_t* actions,
           const char* path)
{
    return NEXT(posix_spawn_file_actions_addchdir_np)(actions, Way(path).path);
}

TAKES_OVER(int, system, const char* command)
{
    return shell_allowed() ? NEXT(system)(command) : 126 << 8;
}

TAKES_OVER(FILE*, popen, const char* command, const char* mode)
{
    if (!shell_allowed()) {
        errno = EACCES;
        return nullptr;
    }
    return NEXT(popen)(command, mode);
}
