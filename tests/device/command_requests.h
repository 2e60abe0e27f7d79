// Which of the requests on /dev/fpga each command issues: the whole of what a command may ask of
// the driver, whatever its argument and the device's state.
#pragma once

#include <cstdint>
#include <set>

#include "maint/device_commands.h"

using Requests = std::set<uint32_t>;

// The command's requests; none for a command that does not use /dev/fpga.
const Requests& commandRequests_get(DeviceCommandCode command);
