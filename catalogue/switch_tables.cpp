// The commands of maint/commands/switch_tables.h.
#include "maint/commands/switch_tables.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kSwitchTablesGroup = {"switch_tables", "Ethernet switch tables", {}};
