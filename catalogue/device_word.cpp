// The commands of maint/commands/device_word.h.
#include "maint/commands/device_word.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kDeviceWordGroup = {"device_word", "Device words and flags in them", {}};
