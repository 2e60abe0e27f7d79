// The commands of maint/commands/driver.h.
#include "maint/commands/driver.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kDriverGroup = {"driver", "Driver words and records", {}};
