// Blocks of registers.
#pragma once

#include <cstdint>

#include "maint/commands/register_block.h"

int32_t read_rege0_block(RegE0Block* record);
int32_t write_rege0_block(const RegE0Block* record);
int32_t read_reg16a_block(Reg16ABlock* record);
int32_t write_reg16a_block(const Reg16ABlock* record);
int32_t read_reg16e_block(Reg16EBlock* record);
int32_t write_reg16e_block(const Reg16EBlock* record);
