#include "tools/maintsim/launch.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tools/maintsim/files.h"
#include "tools/maintsim/preload_variables.h"
#include "tools/maintsim/program_check.h"
#include "tools/maintsim/unit_folder.h"
#include "tools/maintsim/verbs.h"

namespace fs = std::filesystem;

namespace
{

enum LaunchStatus { kCannotRun = 126, kNotFound = 127 };

constexpr char kObject[] = "libmaintsim_preload.so";
constexpr char kTemporary[] = "maintsim-";
constexpr int kLockDescriptor = 100; // out of the way of a program's own

int refusal(LaunchStatus status, const std::string& what)
{
    failure(what);
    return status;
}

// The program -----------------------------------------------------------------------------------

bool is_program(const std::string& path)
{
    return program_check(AT_FDCWD, path.c_str()).kind != ProgramKind::kMissing;
}

// As a shell finds it; empty: it is nowhere. One that may not be run counts if there is no other.
std::string program_find(const std::string& name)
{
    if (name.find('/') != std::string::npos) {
        return is_program(name) ? name : "";
    }
    const char* path = getenv("PATH");
    const std::string search = path == nullptr ? "/bin:/usr/bin" : path;
    std::string found;
    for (size_t at = 0; at <= search.size() && !name.empty();) {
        const size_t end = std::min(search.find(':', at), search.size());
        std::string place = search.substr(at, end - at);
        place.append(place.empty() ? "" : "/").append(name);
        const ProgramKind kind = program_check(AT_FDCWD, place.c_str()).kind;
        if (kind != ProgramKind::kMissing && kind != ProgramKind::kNotAllowed) {
            return place;
        }
        if (kind == ProgramKind::kNotAllowed && found.empty()) {
            found = place;
        }
        at = end + 1;
    }
    return found;
}

// A program that lies in /conf of the unit; empty: it is none.
std::string unitProgram_find(const std::string& folder, const std::string& name)
{
    const std::string place = folder + "/files" + name;
    return !folder.empty() && name.starts_with("/conf/") && is_program(place) ? place : "";
}

// The preloaded object --------------------------------------------------------------------------

// It lies beside this program in the build tree, and in ../lib as installed.
std::string object_find(std::string& error)
{
    std::error_code code;
    const fs::path own = fs::read_symlink("/proc/self/exe", code).parent_path();
    for (const fs::path& place : {own / kObject, own / MAINTSIM_OBJECT_FOLDER / kObject}) {
        if (access(place.c_str(), R_OK) == 0) {
            return fs::canonical(place, code).string();
        }
    }
    error = std::string(kObject) + " is missing: neither in " + own.string() + " nor in " +
            (own / MAINTSIM_OBJECT_FOLDER).lexically_normal().string();
    return "";
}

// The loader takes the name apart at such letters, and says nothing if the object is not loaded.
bool object_named(const std::string& object, std::string& error)
{
    if (object.find_first_of(" :$") == std::string::npos) {
        return true;
    }
    error = path_shown(object) + ": the loader does not take a path with a space, ':' or '$'";
    return false;
}

// The files that stand for the devices. The preloaded object makes them when a device is opened; a
// look at a device finds them before that. Without them, a program would say that there is no device.
bool devices_make(const std::string& folder, std::string& error)
{
    for (const char* name : {"/files/dev/fpga", "/files/dev/rtc"}) {
        const int file =
            open((folder + name).c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666);
        if (file < 0) {
            error = path_shown(folder + name) + ": " + strerror(errno);
            return false;
        }
        close(file);
    }
    return true;
}

// Everything that stands between the program and the unit; empty error: the program may start.
bool environment_make(const std::string& folder, std::string& error)
{
    const std::string object = object_find(error);
    if (object.empty() || !object_named(object, error)) {
        return false;
    }
    const char* before = getenv(kPreloadVariable);
    std::string preload = object;
    if (before != nullptr && *before != '\0') {
        preload += ":";
        preload += before;
    }
    if (setenv(kPreloadVariable, preload.c_str(), 1) != 0 ||
        setenv(kUnitVariable, folder.c_str(), 1) != 0) {
        error = strerror(errno);
        return false;
    }
    return true;
}

// A shell's own way with a program of no known kind: it is a script of the shell.
int program_become(const std::string& path, char** program)
{
    execv(path.c_str(), program);
    if (errno == ENOEXEC) {
        std::vector<char*> words = {const_cast<char*>("sh"), const_cast<char*>(path.c_str())};
        for (char** word = program + 1; *word != nullptr; ++word) {
            words.push_back(*word);
        }
        words.push_back(nullptr);
        execv("/bin/sh", words.data());
    }
    return refusal(kCannotRun, path_shown(path) + ": " + strerror(errno));
}

// A unit for one run ----------------------------------------------------------------------------

fs::path temporary_parent()
{
    const char* folder = getenv("TMPDIR");
    return folder == nullptr || *folder != '/' ? "/tmp" : folder;
}

// The lock that tells a folder in use from an abandoned one. The program inherits it, so that a unit
// outlives a maintsim that was killed until its program has ended. -1: it is in use, or not ours.
int file_lock(const fs::path& path, int flags)
{
    const int lock = open(path.c_str(), flags | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) != 0) {
        close(lock);
        return -1;
    }
    return lock;
}

// What earlier runs of this user left behind when they were killed.
void abandoned_remove(const fs::path& parent)
{
    std::error_code code;
    for (fs::directory_iterator entry(parent, code), end; !code && entry != end;
         entry.increment(code)) {
        const fs::path& folder = entry->path();
        struct stat status {
        };
        if (!folder.filename().string().starts_with(kTemporary) ||
            lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) ||
            status.st_uid != geteuid()) {
            continue;
        }
        const int lock = file_lock(folder / "lock", 0);
        if (lock >= 0) {
            std::error_code ignored;
            fs::remove_all(folder, ignored);
            close(lock);
        }
    }
}

struct TemporaryUnit {
    fs::path folder; // the unit's is "unit" in it
    int lock = -1;
};

// Nobody has heard of a folder that is gone again: where it stood, and why it cannot.
bool temporary_fail(const fs::path& parent, const std::string& reason, std::string& error)
{
    error = path_shown(parent) + ": no unit can be made here: " + reason;
    return false;
}

bool temporary_make(TemporaryUnit& made, std::string& error)
{
    const fs::path parent = temporary_parent();
    abandoned_remove(parent);
    std::string name = (parent / kTemporary).string() + "XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        return temporary_fail(parent, strerror(errno), error);
    }
    made.folder = name;
    // It is held before it has its name: another start would take the folder for an abandoned one.
    const fs::path unnamed = made.folder / "lock.new";
    const int lock = file_lock(unnamed, O_CREAT);
    made.lock = lock < 0 ? -1 : fcntl(lock, F_DUPFD, kLockDescriptor);
    if (lock >= 0) {
        close(lock);
    }
    if (made.lock < 0 || rename(unnamed.c_str(), (made.folder / "lock").c_str()) != 0) {
        return temporary_fail(parent, strerror(errno), error);
    }
    const std::string folder = made.folder / "unit";
    std::string fault;
    if (!unitFolder_make(folder, {}, fault) || !devices_make(folder, fault)) {
        return temporary_fail(parent, fault.substr(fault.rfind(": ") + 2), error);
    }
    return true;
}

// Waits for the program; passes on what is sent to this process. What the terminal sends, the program
// gets itself.
int program_wait(pid_t child, const sigset_t& signals)
{
    for (;;) {
        siginfo_t info{};
        const int number = sigwaitinfo(&signals, &info);
        if (number < 0) {
            continue;
        }
        if (number != SIGCHLD) {
            if (info.si_code <= 0) {
                kill(child, number);
            }
            continue;
        }
        int status = 0;
        while (waitpid(child, &status, WNOHANG | WUNTRACED) == child) {
            if (!WIFSTOPPED(status)) {
                return status;
            }
            raise(SIGSTOP); // as the program stands, so does this one; then both go on
            kill(child, SIGCONT);
        }
    }
}

// Ends as the program did.
int program_ended(int status)
{
    if (!WIFSIGNALED(status)) {
        return WEXITSTATUS(status);
    }
    const rlimit no_core{};
    setrlimit(RLIMIT_CORE, &no_core);
    const int number = WTERMSIG(status);
    signal(number, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, number);
    raise(number);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
    return 128 + number; // a signal that cannot end this process
}

int temporary_launch(const std::string& path, char** program)
{
    TemporaryUnit unit;
    std::string error;
    sigset_t signals;
    sigset_t before;
    sigfillset(&signals);
    for (const int own :
         {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS, SIGTSTP, SIGTTIN, SIGTTOU}) {
        sigdelset(&signals, own);
    }
    sigprocmask(SIG_BLOCK, &signals, &before);
    signal(SIGCHLD, SIG_DFL); // an ignored one would leave nothing to wait for
    const bool made = temporary_make(unit, error) && environment_make(unit.folder / "unit", error);
    int status = 0;
    pid_t child = -1;
    if (made) {
        child = fork();
        if (child == 0) {
            sigprocmask(SIG_SETMASK, &before, nullptr);
            _exit(program_become(path, program));
        }
        if (child < 0) {
            error = strerror(errno);
        } else {
            status = program_wait(child, signals);
        }
    }
    std::error_code ignored;
    if (!unit.folder.empty()) {
        fs::remove_all(unit.folder, ignored);
    }
    return child < 0 ? failure(error) : program_ended(status);
}

} // namespace

int launch(const std::string& folder, char** program)
{
    const std::string name = path_shown(program[0]);
    std::string path = unitProgram_find(folder, program[0]);
    path = path.empty() ? program_find(program[0]) : path;
    if (path.empty()) {
        return refusal(kNotFound, name + ": no such program");
    }
    const ProgramVerdict verdict = program_check(AT_FDCWD, path.c_str());
    if (verdict.kind == ProgramKind::kNotAllowed) {
        return refusal(kCannotRun, name + ": it may not be read and run");
    }
    if (const char* reason = programKind_reason(verdict)) {
        return refusal(kCannotRun, name + " " + reason);
    }
    if (folder.empty()) {
        return temporary_launch(path, program);
    }
    std::string error;
    Unit* const unit = unit_open(folder, error); // one clear line instead of a program's many
    if (unit == nullptr) {
        return failure(error);
    }
    unit_close(unit);
    if (!devices_make(folder, error)) {
        return failure(error);
    }
    std::error_code code;
    const std::string whole = fs::canonical(folder, code).string();
    if (code || !environment_make(whole, error)) {
        return failure(code ? path_shown(folder) + ": " + code.message() : error);
    }
    return program_become(path, program);
}
