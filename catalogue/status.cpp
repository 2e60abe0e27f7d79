// The commands of maint/commands/status.h.
#include "maint/commands/status.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kStatusGroup = {"status", "Status word, inputs, bitmap of units", {}};
