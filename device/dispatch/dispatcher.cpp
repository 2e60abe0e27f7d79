// The dispatcher behind Fpga_Register_Set.
#include "device/dispatch/dispatcher.h"

#include <unistd.h>

#include <algorithm>

#include "device/dispatch/command_table.h"
#include "maint/fpga.h"

namespace
{

constexpr int kRuns = 2;
constexpr useconds_t kRetryDelay = 1; // microseconds

} // namespace

int32_t command_dispatch(std::span<const DeviceCommand> table, DeviceCommandCode command,
                         void* argument)
{
    const auto entry =
        std::find_if(table.begin(), table.end(),
                     [command](const DeviceCommand& row) { return row.code == command; });
    if (entry == table.end() || entry->handler == nullptr) {
        return DEVICE_OPEN_FAILED;
    }
    int32_t result = 0;
    for (int run = 0; run < kRuns; ++run) {
        result = entry->handler(argument, entry->member);
        // RD_DEVICE_WORD_40 hands back whatever its request returned, and is never repeated.
        if (result >= 0 || result == DEVICE_BAD_ARGUMENT || command == RD_DEVICE_WORD_40) {
            return result;
        }
        usleep(kRetryDelay); // after the last run as well
    }
    return result;
}

int32_t Fpga_Register_Set(DeviceCommandCode command, void* argument)
{
    return command_dispatch(commandTable_get(), command, argument);
}
