// While something is read that shall change nothing: what the library would change all the same is
// held back (a failing command may leave a line in the system log), and what it prints is dropped,
// because what is missing is shown in its place.
#pragma once

#include "tools/maintctl/library_calls.h"
#include "tools/maintctl/session.h"

struct QuietReading {
    FILE* nowhere;
    LibraryCalls calls;
    const LibraryCalls* calls_before;
};

void quietReading_begin(QuietReading& reading, const Session& session);

// Calls of the library are treated as before.
void quietReading_end(const QuietReading& reading);
