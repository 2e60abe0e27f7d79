// The channel words of the units.
#pragma once

#include <cstdint>

#include "maint/commands/channel_word.h"

int32_t read_channel_word(ChannelWord* record);
int32_t write_channel_word(const ChannelWord* record);
