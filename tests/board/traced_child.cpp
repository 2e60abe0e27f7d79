#include "board/traced_child.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>

namespace fs = std::filesystem;

namespace
{

using SystemCall = __ptrace_syscall_info;

constexpr int kDescriptor = -1; // the file is the first argument, an open descriptor

// Calls about files. Which of them exist depends on the machine.
struct FileCall {
    long number;
    const char* name;
    int path; // which argument is the path, or kDescriptor
};
constexpr FileCall kFileCalls[] = {
#ifdef SYS_open
    {SYS_open, "open", 0},
#endif
    {SYS_openat, "open", 1},
#ifdef SYS_creat
    {SYS_creat, "create", 0},
#endif
#ifdef SYS_stat
    {SYS_stat, "stat", 0},
    {SYS_lstat, "stat", 0},
#endif
#ifdef SYS_stat64
    {SYS_stat64, "stat", 0},
    {SYS_fstat64, "stat", kDescriptor},
#endif
#ifdef SYS_fstat
    {SYS_fstat, "stat", kDescriptor},
#endif
#ifdef SYS_newfstatat
    {SYS_newfstatat, "stat", 1},
#endif
#ifdef SYS_fstatat64
    {SYS_fstatat64, "stat", 1},
#endif
    {SYS_statx, "stat", 1},
#ifdef SYS_access
    {SYS_access, "access", 0},
#endif
    {SYS_faccessat, "access", 1},
#ifdef SYS_unlink
    {SYS_unlink, "unlink", 0},
#endif
    {SYS_unlinkat, "unlink", 1},
#ifdef SYS_rename
    {SYS_rename, "rename", 0},
#endif
#ifdef SYS_renameat
    {SYS_renameat, "rename", 1},
#endif
    {SYS_renameat2, "rename", 1},
    {SYS_truncate, "truncate", 0},
    {SYS_ftruncate, "truncate", kDescriptor},
    {SYS_read, "read", kDescriptor},
    {SYS_readv, "read", kDescriptor},
    {SYS_pread64, "read", kDescriptor},
    {SYS_write, "write", kDescriptor},
    {SYS_writev, "write", kDescriptor},
    {SYS_pwrite64, "write", kDescriptor},
    {SYS_lseek, "seek", kDescriptor},
#ifdef SYS__llseek
    {SYS__llseek, "seek", kDescriptor},
#endif
    {SYS_flock, "lock", kDescriptor},
    {SYS_fsync, "sync", kDescriptor},
    {SYS_fdatasync, "sync", kDescriptor},
    {SYS_fcntl, "control", kDescriptor},
    {SYS_ioctl, "control", kDescriptor},
    {SYS_close, "close", kDescriptor},
};

// Calls that concern no file: memory, signals, identity, time. The sanitizers' are among them.
constexpr long kOtherCalls[] = {
    SYS_brk,
#ifdef SYS_mmap
    SYS_mmap,
#endif
#ifdef SYS_mmap2
    SYS_mmap2,
#endif
    SYS_munmap,      SYS_mprotect,     SYS_mremap,         SYS_madvise,       SYS_futex,
    SYS_getrandom,   SYS_rt_sigaction, SYS_rt_sigprocmask, SYS_sigaltstack,   SYS_getpid,
    SYS_gettid,      SYS_tgkill,       SYS_kill,           SYS_clock_gettime, SYS_gettimeofday,
    SYS_sched_yield, SYS_rt_sigreturn, SYS_restart_syscall};

// Lets a stopped child run to where its next system call begins. False: it has ended, and how is
// in `status`.
bool call_next(pid_t child, SystemCall& call, int& status)
{
    for (int signal = 0;;) {
        if (ptrace(PTRACE_SYSCALL, child, nullptr, signal) != 0 ||
            waitpid(child, &status, 0) != child) {
            throw std::runtime_error(std::string("traced child: ") + strerror(errno));
        }
        if (!WIFSTOPPED(status)) {
            return false;
        }
        signal = WSTOPSIG(status);
        if (signal != (SIGTRAP | 0x80)) {
            continue; // a signal of the child's own: passed on
        }
        signal = 0;
        // The kernel fills in no more than it knows; an entry's part is complete since Linux 5.3.
        if (ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof call, &call) <= 0) {
            throw std::runtime_error(std::string("PTRACE_GET_SYSCALL_INFO: ") + strerror(errno));
        }
        if (call.op == PTRACE_SYSCALL_INFO_ENTRY) {
            return true;
        }
    }
}

void child_kill(pid_t child)
{
    int status = 0;
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
}

// Starts `work` in a child that is stopped just before it. The child ends with _exit, so that no
// leak check runs in it: that one needs tracing itself.
pid_t child_startTraced(const std::function<int()>& work, std::string& refusal)
{
    const pid_t child = child_start([&] {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
            return errno;
        }
        raise(SIGSTOP);
        return work();
    });
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status)) {
        refusal = std::string("PTRACE_TRACEME: ") + strerror(WEXITSTATUS(status));
    } else if (ptrace(PTRACE_SETOPTIONS, child, nullptr,
                      PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0) {
        refusal = std::string("PTRACE_SETOPTIONS: ") + strerror(errno);
        child_kill(child);
    }
    return child;
}

std::string text_at(pid_t child, uint64_t address)
{
    std::string text;
    for (;; address += sizeof(long)) {
        errno = 0;
        const long word = ptrace(PTRACE_PEEKDATA, child, address, nullptr);
        if (errno != 0) {
            return text;
        }
        std::array<char, sizeof word> bytes;
        memcpy(bytes.data(), &word, sizeof word);
        const size_t length = strnlen(bytes.data(), bytes.size());
        text.append(bytes.data(), length);
        if (length < bytes.size()) {
            return text;
        }
    }
}

fs::path descriptor_file(pid_t child, uint64_t descriptor)
{
    std::error_code none;
    return fs::read_symlink("/proc/" + std::to_string(child) + "/fd/" +
                                std::to_string(static_cast<int>(descriptor)),
                            none);
}

// The call as text; empty: it does not concern the board.
std::string call_text(const Board& board, pid_t child, const SystemCall& call)
{
    const auto number = static_cast<long>(call.entry.nr);
    if (number == SYS_exit_group || number == SYS_exit) {
        return "exit";
    }
    const auto* const known = std::find_if(std::begin(kFileCalls), std::end(kFileCalls),
                                           [&](const auto& row) { return row.number == number; });
    if (known == std::end(kFileCalls)) {
        const bool other = std::count(std::begin(kOtherCalls), std::end(kOtherCalls), number) != 0;
        return other ? "" : "system call " + std::to_string(number);
    }
    // An empty path stands for the descriptor in front of it.
    std::string path;
    if (known->path != kDescriptor) {
        path = text_at(child, call.entry.args[known->path]);
    }
    const fs::path file =
        path.empty() ? descriptor_file(child, call.entry.args[0]) : fs::path(path);
    const std::string on_board = board.board_path(file);
    if (on_board.empty()) {
        return "";
    }
    std::string name = known->name;
    if (name == "open" && (call.entry.args[known->path + 1] & O_CREAT) != 0) {
        name = "create";
    } else if (name == "stat" && path.empty()) {
        name = "stat of open";
    }
    return name + " " + on_board;
}

bool libraryOwn_is(const std::string& call)
{
    constexpr const char* kOwn[] = {"stat of open ", "seek ", "read ", "control "};
    return std::any_of(std::begin(kOwn), std::end(kOwn),
                       [&](const char* own) { return call.starts_with(own); });
}

// Finds the row of each call; the result says where they do not match, or is empty.
std::string points_match(std::span<const KillPoint> points, const Trace& calls,
                         std::vector<const KillPoint*>& rows)
{
    const KillPoint* const end = points.data() + points.size();
    const KillPoint* last = nullptr;
    const KillPoint* next = points.data();
    for (const std::string& call : calls) {
        const KillPoint* row = next;
        while (row != end && row->often == Often::kFurther && call != row->before) {
            ++row;
        }
        if (row != end && call == row->before) {
            next = row + 1;
        } else if (last != nullptr && last->often != Often::kOnce && call == last->before) {
            row = last;
        } else if (libraryOwn_is(call)) {
            rows.push_back(nullptr);
            continue;
        } else {
            return "call " + std::to_string(rows.size()) + ": " + call + ", but the table has " +
                   (row == end ? "no more rows" : row->before);
        }
        last = row;
        rows.push_back(row);
    }
    for (; next != end; ++next) {
        if (next->often != Often::kFurther) {
            return std::string("never came: ") + next->before;
        }
    }
    const KillPoint* following = nullptr;
    for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
        *row = following = *row == nullptr ? following : *row;
    }
    return rows.empty() || rows.back() == nullptr ? "no row for the last call" : "";
}

} // namespace

std::string tracing_refusal()
{
    std::string refusal;
    const pid_t child = child_startTraced([] { return 0; }, refusal);
    if (!refusal.empty()) {
        return refusal;
    }
    try {
        SystemCall call;
        int status = 0;
        if (!call_next(child, call, status)) {
            return "a traced child ran past its stops";
        }
    } catch (const std::exception& error) {
        refusal = error.what();
    }
    child_kill(child);
    return refusal;
}

TracedRun child_killBefore(const Board& board, size_t call, const std::function<int()>& work)
{
    TracedRun run;
    std::string refusal;
    const pid_t child = child_startTraced(work, refusal);
    if (!refusal.empty()) {
        throw std::runtime_error(refusal);
    }
    SystemCall stop;
    int status = 0;
    while (call_next(child, stop, status)) {
        const std::string text = call_text(board, child, stop);
        if (text.empty()) {
            continue;
        }
        run.calls.push_back(text);
        if (run.calls.size() > call) {
            child_kill(child);
            run.killed = true;
            return run;
        }
    }
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

TracedRun child_traceAll(const Board& board, const std::function<int()>& work)
{
    return child_killBefore(board, SIZE_MAX, work);
}

void kill_sweep(const Board& board, const std::function<void()>& prepare,
                const std::function<int()>& work, std::span<const KillPoint> points,
                const std::function<void(const KillPoint&)>& check)
{
    prepare();
    const TracedRun complete = child_traceAll(board, work);
    ASSERT_EQ(complete.status, 0) << "the child by itself, not killed";
    std::vector<const KillPoint*> rows;
    ASSERT_EQ(points_match(points, complete.calls, rows), "");

    for (size_t call = 0; call < rows.size(); ++call) {
        SCOPED_TRACE("killed before call " + std::to_string(call) + ": " + complete.calls[call]);
        prepare();
        const TracedRun run = child_killBefore(board, call, work);
        ASSERT_TRUE(run.killed);
        ASSERT_EQ(run.calls, Trace(complete.calls.begin(),
                                   complete.calls.begin() + static_cast<ptrdiff_t>(call) + 1));
        check(*rows[call]);
    }
}
