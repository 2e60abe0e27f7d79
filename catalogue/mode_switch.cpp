// The commands of maint/commands/mode_switch.h.
#include "maint/commands/mode_switch.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Field kMode[] = {flag(value_of<uint16_t>())};

constexpr ResultMeaning kSwitchResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, kNotRead}, {-4, kPartlyWritten}};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_MODE_SWITCH,
            {.summary = "whether the mode switch is on",
             .fields = kMode,
             .out = all(kMode),
             .results = kReportResults,
             .reads = kFpga,
             .note = "1: bits 0 and 1 of the group word are clear, bits 0, 1, 2 of register "
                     "0x0114 and bits 0 and 2 of register 0x0158 are set."}),
    COMMAND(WR_MODE_SWITCH,
            {.summary = "turns the mode switch on or off",
             .fields = kMode,
             .in = all(kMode),
             .results = kSwitchResults,
             .reads = kFpga,
             .changes = kFpga,
             .stays = kDeviceKeeps,
             .note = "1 makes the bits so, 0 the opposite: group word, 0x0114, 0x0158."}),
};

} // namespace

constexpr CommandGroup kModeSwitchGroup = {"mode_switch", "Mode switch", kCommands};
