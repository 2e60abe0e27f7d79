// Facts about the units: the own one's identity, the status of each.
#pragma once

#include <cstdint>

#include "maint/commands/unit.h"

int32_t read_device_info(DeviceInfo* info);
int32_t read_id_registers(IdRegisters* registers);
int32_t read_serial_number(SerialNumber* serial);

int32_t read_unit_status_map(uint32_t* map);
int32_t read_unit_status_flag(UnitStatusFlag* record);

// Whether the identity that the hardware holds for a unit is the configured one: 1 yes, 0 no,
// -1 one of the two cannot be read.
int32_t vpnId_match(uint32_t unit);
