// The commands of maint/commands/led.h.
#include "maint/commands/led.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kLedGroup = {"led", "Front panel, line mode and line flags", {}};
