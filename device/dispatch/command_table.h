// The table of device commands.
#pragma once

#include <cstddef>
#include <span>

#include "device/dispatch/handler.h"

constexpr std::size_t kCommandCount = 189;

std::span<const DeviceCommand, kCommandCount> commandTable_get();
