// Opens what a path leads to, as openat() does.
#pragma once

#include <sys/types.h>

int path_open(int folder, const char* given, int flags, mode_t mode);
