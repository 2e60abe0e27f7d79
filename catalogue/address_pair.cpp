// The commands of maint/commands/address_pair.h.
#include "maint/commands/address_pair.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kAddressPairGroup = {"address_pair", "Address pairs", {}};
