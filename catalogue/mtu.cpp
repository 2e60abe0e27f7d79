// The commands of maint/commands/mtu.h.
#include "maint/commands/mtu.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kMtuGroup = {"mtu", "MTU and data sizes", {}};
