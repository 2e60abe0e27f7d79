// The C library's calls that a command makes here, by the names that calls.syms gives them; library
// and code by hand go through the same ones.
#pragma once

#include <cstddef>

extern "C" {
int board_open(const char* path, int flags, ...);
int board_ioctl(int descriptor, unsigned long request, ...);
int board_close(int descriptor);
}

// What is called: the name, and open's flags or ioctl's request.
struct Call {
    const char* name;
    unsigned long detail;
};

struct CallRecord {
    size_t count;
    Call calls[8];
};

// Calls go into the record from now on; into none with null.
void calls_recordInto(CallRecord* record);
