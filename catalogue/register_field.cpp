// The commands of maint/commands/register_field.h.
#include "maint/commands/register_field.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kRegisterFieldGroup = {"register_field", "Register fields", {}};
