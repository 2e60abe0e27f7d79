// Reading the whole panel of the own or of another unit, and the per-unit status.
#pragma once

#include <cstdint>

#include "maint/commands/led.h"
#include "maint/commands/unit.h"

int32_t read_led_state(LedStateRecord* record);
int32_t read_unit_status_map(uint32_t* map);
int32_t read_unit_status_flag(UnitStatusFlag* record);

// Reads the live registers into the record's indicators: 0, -1 or -2.
int32_t ledState_readLocal(LedStateRecord* record);
// Reads the unit record->targetId: 0, -1 or -2.
int32_t ledState_readRemote(LedStateRecord* record);

// Whether the identity that the hardware holds for a unit is the configured one: 1 yes, 0 no,
// -1 one of the two cannot be read.
int32_t vpnId_match(uint32_t unit);
