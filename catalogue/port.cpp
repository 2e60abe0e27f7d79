// The commands of maint/commands/port.h.
#include "maint/commands/port.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kPortGroup = {"port", "Ports", {}};
