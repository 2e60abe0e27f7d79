// The commands of maint/commands/flag_set.h.
#include "maint/commands/flag_set.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kFlagSetGroup = {"flag_set", "Flag sets of the switch ports", {}};
