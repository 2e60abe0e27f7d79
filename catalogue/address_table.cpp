// The commands of maint/commands/address_table.h.
#include "maint/commands/address_table.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kAddressTableGroup = {"address_table", "Address tables", {}};
