// The commands of maint/commands/channel_word.h.
#include "maint/commands/channel_word.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

constexpr CommandGroup kChannelWordGroup = {"channel_word", "Channel words", {}};
