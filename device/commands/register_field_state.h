// Register fields whose values are mapped to states.
#pragma once

#include <cstdint>

#include "maint/commands/register_field.h"

int32_t read_regf4_flags(RegF4Flags* record);
int32_t read_reg168_mode(uint16_t* mode);
int32_t write_reg168_mode(Reg168Mode* record);
int32_t read_reg168_select(Reg168Select* record);
int32_t write_reg168_select(const Reg168Select* record);
int32_t read_reg158_state(uint8_t* state);
int32_t write_reg158_state(const uint8_t* state);
int32_t read_regfe_mode(uint16_t* mode);
int32_t write_regfe_mode(const uint16_t* mode);
int32_t read_reg16c_enable(uint8_t* enable);
int32_t write_reg16c_enable(const uint8_t* enable);
