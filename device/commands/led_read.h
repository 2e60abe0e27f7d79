// Reading the whole panel of the own or of another unit.
#pragma once

#include <cstdint>

#include "maint/commands/led.h"

int32_t read_led_state(LedStateRecord* record);

// Reads the live registers into the record's indicators: 0, -1 or -2.
int32_t ledState_readLocal(LedStateRecord* record);
// Reads the unit record->targetId: 0, -1 or -2.
int32_t ledState_readRemote(LedStateRecord* record);
