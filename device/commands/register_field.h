// Fields of registers.
#pragma once

#include <cstdint>

#include "device/access/families.h"
#include "device/access/shared_words.h"
#include "maint/commands/register_field.h"

// One bit.
constexpr CommandCall read_reg158_bit0 = bit_reported<uint8_t>(kRegister158, 0);
constexpr CommandCall write_reg158_bit0 = bit_written<uint8_t>(kRegister158, 0);
constexpr CommandCall read_reg158_bit1 = bit_reported<uint8_t>(kRegister158, 1);
constexpr CommandCall write_reg158_bit1 = bit_written<uint8_t>(kRegister158, 1);
constexpr CommandCall read_reg158_bit2 = bit_reported<uint8_t>(kRegister158, 2);
constexpr CommandCall write_reg158_bit2 = bit_written<uint8_t>(kRegister158, 2);
constexpr CommandCall read_reg158_bit3 = bit_reported<uint8_t>(kRegister158, 3);
constexpr CommandCall write_reg158_bit3 = bit_written<uint8_t>(kRegister158, 3);
constexpr CommandCall read_reg158_bit4 = bit_reported<uint8_t>(kRegister158, 4);
constexpr CommandCall write_reg158_bit4 = bit_written<uint8_t>(kRegister158, 4);
constexpr CommandCall read_reg158_bit5 = bit_reported<uint8_t>(kRegister158, 5);
constexpr CommandCall write_reg158_bit5 = bit_written<uint8_t>(kRegister158, 5);
constexpr CommandCall read_reg158_bit6 = bit_reported<uint8_t>(kRegister158, 6);
constexpr CommandCall write_reg158_bit6 = bit_written<uint8_t>(kRegister158, 6);
constexpr CommandCall read_reg158_bit7 = bit_reported<uint8_t>(kRegister158, 7);
constexpr CommandCall write_reg158_bit7 = bit_written<uint8_t>(kRegister158, 7);
constexpr CommandCall read_reg158_bit8 = bit_reported<uint8_t>(kRegister158, 8);
// Bound to no command: 0x007D is unknown to the dispatcher.
constexpr CommandCall write_reg158_bit8 = bit_written<uint8_t>(kRegister158, 8);
constexpr CommandCall read_reg158_bit10 = bit_reported<uint8_t>(kRegister158, 10);
constexpr CommandCall write_reg158_bit10 = bit_written<uint8_t>(kRegister158, 10);
constexpr CommandCall read_reg158_bit14 = bit_reported<uint8_t>(kRegister158, 14);
constexpr CommandCall write_reg158_bit14 = bit_written<uint8_t>(kRegister158, 14);
constexpr CommandCall read_reg158_bit15 = bit_reported<uint8_t>(kRegister158, 15);
constexpr CommandCall write_reg158_bit15 = bit_written<uint8_t>(kRegister158, 15);
constexpr CommandCall read_reg44_flag = bit_reported<uint16_t>(0x0044, 0);
constexpr CommandCall write_reg44_flag = bit_written<uint16_t>(0x0044, 0);
constexpr CommandCall read_reg11e_bit0 = bit_reported<uint16_t>(0x011E, 0);
constexpr CommandCall write_reg11e_bit0 = bit_written<uint16_t>(0x011E, 0);
constexpr CommandCall read_reg1b4_bit0 = bit_reported<uint16_t>(0x01B4, 0);
constexpr CommandCall write_reg1b4_bit0 = bit_written<uint16_t>(0x01B4, 0);

// A number.
constexpr uint32_t kRegisterFE = 0x00FE;
constexpr uint32_t kRegister168 = 0x0168;

constexpr RegisterField kReg132Value = registerField_of(0x0132, 7, TooLarge::kRefused);
constexpr CommandCall read_reg132_value = call_of<field_read>(kReg132Value);
constexpr CommandCall write_reg132_value = call_of<field_write>(kReg132Value);

constexpr RegisterField kReg168Value = registerField_of(kRegister168, 8, TooLarge::kRefused);
constexpr CommandCall read_reg168_value = call_of<field_read>(kReg168Value);
constexpr CommandCall write_reg168_value = call_of<field_write>(kReg168Value);

constexpr RegisterField kRegFENibble = registerField_of(kRegisterFE, 4, TooLarge::kCut);
constexpr CommandCall read_regfe_nibble = call_of<field_read>(kRegFENibble);
constexpr CommandCall write_regfe_nibble = call_of<field_write>(kRegFENibble);

// A state.
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

// Several in a record.
int32_t read_reg110_bytes(Reg110Bytes* record);
int32_t write_reg110_bytes(const Reg110Bytes* record);
int32_t read_reg15a_fields(Reg15AFields* record);
int32_t write_reg15a_fields(const Reg15AFields* record);
int32_t read_reg15c_pair(Reg15CPair* record);
int32_t write_reg15c_pair(const Reg15CPair* record);
