// The flag sets of the switch ports.
#pragma once

#include <cstdint>

#include "maint/commands/flag_set.h"

int32_t read_flag_set(FlagSet* record);
int32_t write_flag_set(const FlagSet* record);
