// The commands of maint/commands/switch_tables.h.
#include "maint/commands/switch_tables.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Places kTables = place_bit(Place::kSwitchTableNor) | place_bit(Place::kSwitchTablePri);
constexpr const char* kNoTables = "a file is missing or shorter than 128 bytes; nothing is loaded";
constexpr const char* kStays = "The switch keeps its tables.";

constexpr ResultMeaning kResults1[] = {
    {0, kDone},
    {-1, kNotOpened},
    {-2, "the status word cannot be read, or the device refuses the tables"},
    {-5, kNoTables}};

constexpr ResultMeaning kResults2[] = {{0, kDone},
                                       {-1, kNotOpened},
                                       {-2, "the status word cannot be read"},
                                       {-4, "the device refuses the tables"},
                                       {-5, kNoTables}};

constexpr CommandDescription kCommands[] = {
    COMMAND(WR_SWITCH_TABLES_1, {.summary = "loads the switch's tables from /tmp, request 0x6B79",
                                 .results = kResults1,
                                 .reads = kFpga | kTables,
                                 .changes = kFpga,
                                 .stays = kStays}),
    COMMAND(WR_SWITCH_TABLES_2, {.summary = "loads the switch's tables from /tmp, request 0x6B78",
                                 .results = kResults2,
                                 .reads = kFpga | kTables,
                                 .changes = kFpga,
                                 .stays = kStays}),
};

} // namespace

constexpr CommandGroup kSwitchTablesGroup = {"switch_tables", "Ethernet switch tables", kCommands};
