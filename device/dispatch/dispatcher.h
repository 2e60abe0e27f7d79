// Finding and running a command.
#pragma once

#include <cstdint>
#include <span>

#include "device/dispatch/command_table.h"

// Scans the table from the top for the command and runs its handler, at most twice.
int32_t command_dispatch(std::span<const DeviceCommand> table, DeviceCommandCode command,
                         void* argument);
