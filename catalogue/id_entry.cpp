// The commands of maint/commands/id_entry.h.
#include "maint/commands/id_entry.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kIdEntryGroup = {"id_entry", "Identifier entries", {}};
