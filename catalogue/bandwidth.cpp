// The commands of maint/commands/bandwidth.h.
#include "maint/commands/bandwidth.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kBandwidthGroup = {"bandwidth", "Line bandwidth", {}};
