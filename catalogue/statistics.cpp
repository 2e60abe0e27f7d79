// The commands of maint/commands/statistics.h.
#include "maint/commands/statistics.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kStatisticsGroup = {"statistics", "Traffic statistics", {}};
