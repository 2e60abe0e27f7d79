// Fields whose values are mapped to states.
#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/commands/register_field.h"

static_assert(sizeof(RegF4Flags) == 8);
static_assert(sizeof(Reg168Mode) == 4);
static_assert(sizeof(Reg168Select) == 4);

namespace
{

constexpr uint32_t kRegisterF4 = 0x00F4;
constexpr uint16_t kRegF4Flags[] = {0x0080, 0x0040, 0x0020, 0x0010, 0x0008, 0x0004, 0x0002, 0x0001};

constexpr uint16_t kReg168ModeField = 0x3000;
constexpr unsigned kReg168ModeShift = 12;
constexpr uint16_t kReg168Modes = 4; // held as 1, 2, 3, 0

constexpr uint8_t kReg158BracketBit = 6; // brackets a change of the mode

constexpr uint16_t kReg168SelectFirst = 0x0100;
constexpr uint16_t kReg168Selects = 4;

constexpr uint16_t kReg158StateLow = 0x1000;  // state 1
constexpr uint16_t kReg158StateHigh = 0x2000; // state 2

constexpr uint16_t kNibble = 0x000F;
constexpr uint16_t kNibbleMode1 = 0x8;
constexpr uint16_t kNibbleMode2 = 0x0;
constexpr uint16_t kNibbleMode2Last = 0x2; // 0, 1 and 2 all read as mode 2
constexpr uint16_t kNibbleOther = 0xF;

constexpr uint32_t kRegister16C = 0x016C;
constexpr uint16_t kReg16CDisable = 0x0003;

unsigned select_bit(const Reg168Select& record)
{
    return static_cast<unsigned>(kReg168SelectFirst) << record.index;
}

// As WR_REG158_BIT6 does.
int32_t bracket_write(uint8_t flag)
{
    return bit_write8(&flag, registerBit_of(kRegister158, kReg158BracketBit));
}

} // namespace

int32_t read_regf4_flags(RegF4Flags* record)
{
    return flags_store(command_readRegister(kRegisterF4), kRegF4Flags, record->flags);
}

int32_t read_reg168_mode(uint16_t* mode)
{
    const int32_t value = command_readRegister(kRegister168);
    if (value < 0) {
        return value;
    }
    const int32_t held = (value & kReg168ModeField) >> kReg168ModeShift;
    *mode = static_cast<uint16_t>(held == 0 ? kReg168Modes : held);
    return DEVICE_OK;
}

int32_t write_reg168_mode(Reg168Mode* record)
{
    if (record->mode < 1 || record->mode > kReg168Modes) {
        return DEVICE_BAD_ARGUMENT;
    }
    if (record->mode == kReg168Modes) {
        record->mode = 0; // the caller's word: after a failure the second run finds it so
    }
    if (record->bracket != 0) {
        const int32_t status = bracket_write(0);
        if (status != DEVICE_OK) {
            return status;
        }
    }
    const unsigned field = static_cast<unsigned>(record->mode) << kReg168ModeShift;
    const int32_t status =
        command_changeRegister(kRegister168, field_assign(kReg168ModeField, field));
    if (status == DEVICE_OK && record->bracket != 0) {
        bracket_write(1);
    }
    return status;
}

int32_t read_reg168_select(Reg168Select* record)
{
    if (record->index >= kReg168Selects) {
        return DEVICE_BAD_ARGUMENT;
    }
    return value_store(command_readRegisterFlag(kRegister168, select_bit(*record)), &record->value);
}

int32_t write_reg168_select(const Reg168Select* record)
{
    if (record->index >= kReg168Selects) {
        return DEVICE_BAD_ARGUMENT;
    }
    return command_changeRegister(kRegister168,
                                  bits_assign(select_bit(*record), record->value == 1));
}

int32_t read_reg158_state(uint8_t* state)
{
    const int32_t value = command_readRegister(kRegister158);
    if (value < 0) {
        return value;
    }
    const uint8_t low = (value & kReg158StateLow) != 0 ? 1 : 0;
    *state = (value & kReg158StateHigh) != 0 ? uint8_t{2} : low;
    return DEVICE_OK;
}

int32_t write_reg158_state(const uint8_t* state)
{
    return command_changeRegister(kRegister158,
                                  bitChange_join(bits_assign(kReg158StateHigh, *state == 2),
                                                 bits_assign(kReg158StateLow, *state == 1)));
}

int32_t read_regfe_mode(uint16_t* mode)
{
    const int32_t value = command_readRegister(kRegisterFE);
    if (value < 0) {
        return value;
    }
    const int32_t nibble = value & kNibble;
    const uint16_t other = nibble <= kNibbleMode2Last ? 2 : 0;
    *mode = nibble == kNibbleMode1 ? uint16_t{1} : other;
    return DEVICE_OK;
}

int32_t write_regfe_mode(const uint16_t* mode)
{
    const uint16_t other = *mode == 2 ? kNibbleMode2 : kNibbleOther;
    return command_changeRegister(kRegisterFE,
                                  field_assign(kNibble, *mode == 1 ? kNibbleMode1 : other));
}

int32_t read_reg16c_enable(uint8_t* enable)
{
    const int32_t value = command_readRegister(kRegister16C);
    if (value < 0) {
        return value;
    }
    *enable = (value & kReg16CDisable) == 0 ? 1 : 0;
    return DEVICE_OK;
}

int32_t write_reg16c_enable(const uint8_t* enable)
{
    return command_changeRegister(kRegister16C, bits_assign(kReg16CDisable, *enable != 1));
}
