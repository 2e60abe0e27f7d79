// The commands of maint/commands/register_block.h.
#include "maint/commands/register_block.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kRegisterBlockGroup = {"register_block", "Register blocks", {}};
