// The mode switch.
#pragma once

#include <cstdint>

#include "maint/commands/mode_switch.h"

int32_t read_mode_switch(uint16_t* mode);
int32_t write_mode_switch(const uint16_t* mode);
