// Crash tests: a child that is killed before a chosen one of its system calls.
//
// The child works on the board's files through the C library's own streams, so what has reached a
// file by then is what a crash leaves. It is stopped where a system call begins and killed there;
// the kernel does not carry that call out any more.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>

#include "board/board_test.h"

// Why this machine lets no child be traced; empty: it does. A test that needs one is skipped with
// this as its reason.
std::string tracing_refusal();

class TracedTest : public BoardTest
{
  protected:
    void SetUp() override
    {
        if (const std::string refusal = tracing_refusal(); !refusal.empty()) {
            GTEST_SKIP() << "this machine lets no child be traced: " << refusal;
        }
    }
};

// The system calls that concern the board's files and the child's exit, as text:
//   stat /conf/system.log     open /dev/mtd_systemlog    create /conf/system.log (O_CREAT, too)
//   lock /conf/system.log     read /dev/mtd_systemlog    write /conf/system.log
//   close /conf/system.log    unlink /conf/system.log    exit
// Left out, and no kill points, are calls about memory, signals, identity and time, and any call
// about a file that is not the board's: they change no file, so a kill there leaves what a kill
// before the next call of the list leaves. What the tracer does not know shows as "system call N".
struct TracedRun {
    Trace calls;         // up to and with the one that the child was killed before
    bool killed = false; // false: the child ended first
    int status = -1;     // of a child that ended by itself: its exit status; -1: by a signal
};

// Runs `work` in a forked child and kills it before call number `call` (from 0) of that list.
TracedRun child_killBefore(const Board& board, size_t call, const std::function<int()>& work);
TracedRun child_traceAll(const Board& board, const std::function<int()>& work);

// How often a call stands in a row at its place.
enum class Often {
    kOnce,
    kEach,    // once or more: the number is the C library's choice of buffer
    kFurther, // as often as there are more of them, or not at all
};

// What a kill before one system call leaves, and what becomes of it.
struct KillPoint {
    const char* before;
    Often often;
    const char* left;
    const char* then;
};

// Kills `work` before each of its system calls in turn, each time behind a fresh `prepare`, and
// hands the table's row for it to `check`. Calls and rows must match in order, and each row that
// is not kFurther must come up. A stat, seek, read or control (ioctl, fcntl) of an open stream that
// has no row of its own is the C library's doing: it changes no file and shares the next call's
// row.
void kill_sweep(const Board& board, const std::function<void()>& prepare,
                const std::function<int()>& work, std::span<const KillPoint> points,
                const std::function<void(const KillPoint&)>& check);
