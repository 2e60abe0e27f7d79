// The program's one entry, for main and for tests.
#pragma once

#include <cstdio>

// Runs the command line; what is asked for goes to `out`, all else to `err`. Returns the exit status.
int maintctl_run(int argc, char* const* argv, FILE* out, FILE* err);
