// The commands of maint/commands/address_entry.h.
#include "maint/commands/address_entry.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kAddressEntryGroup = {"address_entry", "Address entries", {}};
