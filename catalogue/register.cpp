// The commands of maint/commands/register.h.
#include "maint/commands/register.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kRegisterGroup = {"register", "Whole registers", {}};
