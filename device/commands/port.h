// Commands on ports: flags, entries, mask, bits and state.
#pragma once

#include <cstdint>

#include "device/access/command_call.h"
#include "maint/commands/port.h"

int32_t read_port_flags(PortFlags* record);
int32_t write_port_flags(const PortFlags* record);

int32_t read_port_entry(PortEntry* entry);
int32_t write_port_entry(const PortEntry* entry);
int32_t write_port_entry_ranged(const PortEntry* entry);

int32_t read_port_mask(PortMask* record);
int32_t write_port_mask_bit(PortMask* record);

int32_t portBit_write(const PortBit* record, bool on);
constexpr CommandCall write_port_bit_set = call_of<portBit_write>(true);
constexpr CommandCall write_port_bit_clear = call_of<portBit_write>(false);

int32_t read_port_state_code(PortStateCode* record);
