// Whether a program takes part in the simulation: whether the dynamic loader loads the preloaded
// object into it, and its calls go through the C library. One that does not would work on the
// machine's own files, devices and clock.
#pragma once

#include <cstdint>

enum class ProgramKind : uint8_t {
    kRuns,
    kMissing,      // or a folder
    kNotAllowed,   // no execute permission, or not readable
    kUnknown,      // neither ELF nor a script: what exec makes of it is exec's
    kStatic,       // nothing is loaded into it
    kOtherMachine, // of another processor
    kOtherLoader,  // of another C library
    kOwnCalls,     // makes its system calls itself
    kPrivileged,   // set-user-id, set-group-id or capabilities: the loader ignores what it is given
};

struct ProgramVerdict {
    ProgramKind kind;
    bool interpreter; // of the script that the program is
};

// Allocates nothing: it runs between vfork and exec, too. A relative path is one of the folder.
ProgramVerdict program_check(int folder, const char* path);

// Why not, as the end of a sentence that begins with the program's name; null for one that runs, or
// that exec itself refuses.
const char* programKind_reason(ProgramVerdict verdict);
