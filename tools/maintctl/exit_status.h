// Exit statuses; those of 64 and above as in sysexits.h.
#pragma once

#include <cstdint>

constexpr int kExitUsage = 64;
constexpr int kExitOutput = 74;

// Of a command's result: 0 for 0 and above, 1 to 5 for -1 to -5. Another negative result, which only
// the driver's own answer can be, is 1.
constexpr int exitStatus_of(int32_t result)
{
    return result >= 0 ? 0 : result >= -5 ? -result : 1;
}
