// The commands of maint/commands/unit.h.
#include "maint/commands/unit.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kUnitGroup = {"unit", "Identity and status of the units", {}};
