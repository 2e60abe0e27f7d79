// The ports that commands with a port's number accept.
#pragma once

#include <cstdint>

constexpr uint16_t kPortFirst = 1;
constexpr uint16_t kPortLast = 29;

constexpr bool port_isValid(uint16_t port)
{
    return port >= kPortFirst && port <= kPortLast;
}
