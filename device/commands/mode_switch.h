// Commands that are a sequence over several registers: the latched register and the mode switch.
#pragma once

#include <cstdint>

#include "maint/commands/mode_switch.h"
#include "maint/commands/register.h"

int32_t read_reg_da_latched(uint32_t* value);
int32_t read_mode_switch(uint16_t* mode);
int32_t write_mode_switch(const uint16_t* mode);
