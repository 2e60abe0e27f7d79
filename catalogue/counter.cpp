// The commands of maint/commands/counter.h.
#include "maint/commands/counter.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kCounterGroup = {"counter", "Counters", {}};
