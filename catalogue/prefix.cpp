// The commands of maint/commands/prefix.h.
#include "maint/commands/prefix.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kPrefixGroup = {"prefix", "Address and prefix sets", {}};
