// The commands of maint/commands/flag_set.h.
#include "maint/commands/flag_set.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr CodeName kSets[] = {{1, "port1"}, {2, "port2"}, {4, "port4"}};

constexpr Field kFlags[] = {
    index(code(FIELD(FlagSet, set), kSets, "the switch port"), {1, 4, 1}), // 3 is refused
    bits(FIELD(FlagSet, valid), 7, "bit n selects flags[n]; 0: all"),
    flag(FIELD(FlagSet, flags)),
};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_FLAG_SET, {.summary = "the flags of a switch port",
                          .fields = kFlags,
                          .in = only(kFlags, "set"),
                          .out = only(kFlags, "flags"),
                          .results = kIndexedReportResults,
                          .reads = kFpga}),
    COMMAND(WR_FLAG_SET, {.summary = "sets or clears flags of a switch port",
                          .fields = kFlags,
                          .in = all(kFlags),
                          .results = kIndexedChangeResults,
                          .reads = kFpga,
                          .changes = kFpga,
                          .stays = kDeviceKeeps}),
};

} // namespace

constexpr CommandGroup kFlagSetGroup = {"flag_set", "Flag sets of the switch ports", kCommands};
