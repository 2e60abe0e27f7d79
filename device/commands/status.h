// Status inputs, control bits, port flags, line control bits and identity of the device.
#pragma once

#include <cstdint>

#include "maint/commands/device_word.h"
#include "maint/commands/port.h"
#include "maint/commands/status.h"
#include "maint/commands/unit.h"
#include "maint/led_state.h"

int32_t read_device_info(DeviceInfo* info);
int32_t read_status_word_flag(uint8_t* flag);
int32_t read_status_inputs(StatusInputs* inputs);
int32_t read_control_bits(ControlBits* bits);
int32_t write_control_bits(const ControlBits* bits);
int32_t read_port_flags(PortFlags* record);
int32_t write_port_flags(const PortFlags* record);
int32_t read_enable_flag(uint8_t* flag);
int32_t write_enable_flag(const uint8_t* flag);
int32_t write_line_mode(const LedStateRecord* record);
int32_t write_line_flags(const LedStateRecord* record);
int32_t read_id_registers(IdRegisters* registers);
