// The commands of maint/commands/rule.h.
#include "maint/commands/rule.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kRuleGroup = {"rule", "Rule entries", {}};
