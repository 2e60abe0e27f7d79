// The commands of maint/commands/mode_switch.h.
#include "maint/commands/mode_switch.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kModeSwitchGroup = {"mode_switch", "Mode switch", {}};
