// Whole registers.
#pragma once

#include <cstdint>

#include "maint/commands/register.h"

int32_t read_register(RegisterValue* record);
int32_t write_register(const RegisterValue* record);
int32_t read_reg_da_latched(uint32_t* value);
