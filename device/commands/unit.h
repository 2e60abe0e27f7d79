// Serial number and port state.
#pragma once

#include <cstdint>

#include "maint/commands/port.h"
#include "maint/commands/unit.h"

int32_t read_serial_number(SerialNumber* serial);
int32_t read_port_state_code(PortStateCode* record);
