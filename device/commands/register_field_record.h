// Register fields that come several in a record.
#pragma once

#include <cstdint>

#include "maint/commands/port.h"
#include "maint/commands/register.h"
#include "maint/commands/register_block.h"
#include "maint/commands/register_field.h"

int32_t read_reg110_bytes(Reg110Bytes* record);
int32_t write_reg110_bytes(const Reg110Bytes* record);
int32_t read_reg16a_block(Reg16ABlock* record);
int32_t write_reg16a_block(const Reg16ABlock* record);
int32_t read_reg15a_fields(Reg15AFields* record);
int32_t write_reg15a_fields(const Reg15AFields* record);
int32_t read_reg15c_pair(Reg15CPair* record);
int32_t write_reg15c_pair(const Reg15CPair* record);
int32_t write_port_bit_set(const PortBit* record);
int32_t write_port_bit_clear(const PortBit* record);
int32_t read_register(RegisterValue* record);
int32_t write_register(const RegisterValue* record);
