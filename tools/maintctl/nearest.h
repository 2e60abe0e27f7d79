// The names that look most like what somebody typed.
#pragma once

#include "tools/maintctl/text.h"

constexpr unsigned kNearestMax = 3;

struct Nearest {
    const char* typed;
    const char* names[kNearestMax] = {};
    unsigned distances[kNearestMax] = {};
};

// Takes the name if it is near, and nearer than those before it.
void nearest_offer(Nearest& nearest, const char* name);

// "; nearest: A, B", or nothing where no name is near.
void nearest_add(const Nearest& nearest, Text& text);
