// The families of one-bit and number fields: a member is one row here.
#pragma once

#include <cstdint>

#include "device/access/bit_flag.h"
#include "device/access/fpga.h"
#include "device/access/shared_registers.h"

// One bit of a register.
struct RegisterBit {
    uint32_t address;
    uint16_t mask;
};

template <const RegisterBit& kBit, class Flag> int32_t read_bit(Flag* flag)
{
    return registerFlag_read(kBit.address, kBit.mask, flag);
}

template <const RegisterBit& kBit, class Flag> int32_t write_bit(const Flag* flag)
{
    return command_changeRegister(kBit.address, bits_set(kBit.mask, *flag == 1));
}

// A number in the low bits of a register.
struct RegisterField {
    uint32_t address;
    uint16_t mask;
    bool checked; // a setter refuses what does not fit, otherwise it cuts it
};

int32_t field_read(const RegisterField& field, uint16_t* value);
int32_t field_write(const RegisterField& field, uint16_t value);

template <const RegisterField& kField> int32_t read_field(uint16_t* value)
{
    return field_read(kField, value);
}

template <const RegisterField& kField> int32_t write_field(const uint16_t* value)
{
    return field_write(kField, *value);
}

constexpr uint32_t kRegisterFE = 0x00FE;
constexpr uint32_t kRegister168 = 0x0168;

constexpr RegisterField kReg132Value{0x0132, 0x007F, true};
constexpr auto read_reg132_value = read_field<kReg132Value>;
constexpr auto write_reg132_value = write_field<kReg132Value>;

constexpr RegisterField kReg168Value{kRegister168, 0x00FF, true};
constexpr auto read_reg168_value = read_field<kReg168Value>;
constexpr auto write_reg168_value = write_field<kReg168Value>;

constexpr RegisterField kRegFENibble{kRegisterFE, 0x000F, false};
constexpr auto read_regfe_nibble = read_field<kRegFENibble>;
constexpr auto write_regfe_nibble = write_field<kRegFENibble>;

constexpr RegisterBit kReg11EBit0{0x011E, 0x0001};
constexpr auto read_reg11e_bit0 = read_bit<kReg11EBit0, uint16_t>;
constexpr auto write_reg11e_bit0 = write_bit<kReg11EBit0, uint16_t>;

constexpr RegisterBit kReg1B4Bit0{0x01B4, 0x0001};
constexpr auto read_reg1b4_bit0 = read_bit<kReg1B4Bit0, uint16_t>;
constexpr auto write_reg1b4_bit0 = write_bit<kReg1B4Bit0, uint16_t>;

constexpr RegisterBit kReg158Bit0{kRegister158, 0x0001};
constexpr auto read_reg158_bit0 = read_bit<kReg158Bit0, uint8_t>;
constexpr auto write_reg158_bit0 = write_bit<kReg158Bit0, uint8_t>;

constexpr RegisterBit kReg158Bit1{kRegister158, 0x0002};
constexpr auto read_reg158_bit1 = read_bit<kReg158Bit1, uint8_t>;
constexpr auto write_reg158_bit1 = write_bit<kReg158Bit1, uint8_t>;

constexpr RegisterBit kReg158Bit2{kRegister158, 0x0004};
constexpr auto read_reg158_bit2 = read_bit<kReg158Bit2, uint8_t>;
constexpr auto write_reg158_bit2 = write_bit<kReg158Bit2, uint8_t>;

constexpr RegisterBit kReg158Bit3{kRegister158, 0x0008};
constexpr auto read_reg158_bit3 = read_bit<kReg158Bit3, uint8_t>;
constexpr auto write_reg158_bit3 = write_bit<kReg158Bit3, uint8_t>;

constexpr RegisterBit kReg158Bit4{kRegister158, 0x0010};
constexpr auto read_reg158_bit4 = read_bit<kReg158Bit4, uint8_t>;
constexpr auto write_reg158_bit4 = write_bit<kReg158Bit4, uint8_t>;

constexpr RegisterBit kReg158Bit5{kRegister158, 0x0020};
constexpr auto read_reg158_bit5 = read_bit<kReg158Bit5, uint8_t>;
constexpr auto write_reg158_bit5 = write_bit<kReg158Bit5, uint8_t>;

constexpr RegisterBit kReg158Bit6{kRegister158, 0x0040};
constexpr auto read_reg158_bit6 = read_bit<kReg158Bit6, uint8_t>;
constexpr auto write_reg158_bit6 = write_bit<kReg158Bit6, uint8_t>;

constexpr RegisterBit kReg158Bit7{kRegister158, 0x0080};
constexpr auto read_reg158_bit7 = read_bit<kReg158Bit7, uint8_t>;
constexpr auto write_reg158_bit7 = write_bit<kReg158Bit7, uint8_t>;

// The setter is bound to no command: 0x7D is unknown to the dispatcher.
constexpr RegisterBit kReg158Bit8{kRegister158, 0x0100};
constexpr auto read_reg158_bit8 = read_bit<kReg158Bit8, uint8_t>;
constexpr auto write_reg158_bit8 = write_bit<kReg158Bit8, uint8_t>;

constexpr RegisterBit kReg158Bit10{kRegister158, 0x0400};
constexpr auto read_reg158_bit10 = read_bit<kReg158Bit10, uint8_t>;
constexpr auto write_reg158_bit10 = write_bit<kReg158Bit10, uint8_t>;

constexpr RegisterBit kReg158Bit14{kRegister158, 0x4000};
constexpr auto read_reg158_bit14 = read_bit<kReg158Bit14, uint8_t>;
constexpr auto write_reg158_bit14 = write_bit<kReg158Bit14, uint8_t>;

constexpr RegisterBit kReg158Bit15{kRegister158, 0x8000};
constexpr auto read_reg158_bit15 = read_bit<kReg158Bit15, uint8_t>;
constexpr auto write_reg158_bit15 = write_bit<kReg158Bit15, uint8_t>;
