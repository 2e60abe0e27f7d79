#include "device/commands/register_field_state.h"

#include "device/access/flag_fields.h"
#include "device/commands/register_field.h"

static_assert(sizeof(RegF4Flags) == 8);
static_assert(sizeof(Reg168Mode) == 4);
static_assert(sizeof(Reg168Select) == 4);

namespace
{

constexpr uint32_t kRegisterF4 = 0x00F4;
constexpr FlagField kRegF4Flags[] = {{0, 0x0080}, {1, 0x0040}, {2, 0x0020}, {3, 0x0010},
                                     {4, 0x0008}, {5, 0x0004}, {6, 0x0002}, {7, 0x0001}};

constexpr uint16_t kReg168ModeField = 0x3000;
constexpr unsigned kReg168ModeShift = 12;
constexpr uint16_t kReg168Modes = 4; // held as 1, 2, 3, 0

constexpr uint16_t kReg168SelectFirst = 0x0100;
constexpr uint16_t kReg168Selects = 4;

constexpr uint16_t kReg158StateLow = 0x1000;  // state 1
constexpr uint16_t kReg158StateHigh = 0x2000; // state 2

constexpr uint16_t kRegFENibbleMask = kRegFENibble.mask;
constexpr uint16_t kNibbleMode1 = 0x8;
constexpr uint16_t kNibbleMode2 = 0x0;
constexpr uint16_t kNibbleMode2Last = 0x2; // 0, 1 and 2 all read as mode 2
constexpr uint16_t kNibbleOther = 0xF;

constexpr uint32_t kRegister16C = 0x016C;
constexpr uint16_t kReg16CDisable = 0x0003;

uint16_t select_bit(const Reg168Select& record)
{
    return static_cast<uint16_t>(kReg168SelectFirst << record.index);
}

} // namespace

int32_t read_regf4_flags(RegF4Flags* record)
{
    uint16_t value = 0;
    const int32_t status = command_readRegister(kRegisterF4, value);
    if (status == DEVICE_OK) {
        flagFields_extract(kRegF4Flags, value, record->flags);
    }
    return status;
}

int32_t read_reg168_mode(uint16_t* mode)
{
    uint16_t value = 0;
    const int32_t status = command_readRegister(kRegister168, value);
    if (status == DEVICE_OK) {
        const unsigned held = (value & kReg168ModeField) >> kReg168ModeShift;
        *mode = static_cast<uint16_t>(held == 0 ? kReg168Modes : held);
    }
    return status;
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
        constexpr uint8_t kClear = 0;
        const int32_t status = write_reg158_bit6(&kClear);
        if (status != DEVICE_OK) {
            return status;
        }
    }
    const auto field = static_cast<uint16_t>(record->mode << kReg168ModeShift);
    const int32_t status = command_changeRegister(kRegister168, field_set(kReg168ModeField, field));
    if (status == DEVICE_OK && record->bracket != 0) {
        constexpr uint8_t kSet = 1;
        write_reg158_bit6(&kSet);
    }
    return status;
}

int32_t read_reg168_select(Reg168Select* record)
{
    if (record->index >= kReg168Selects) {
        return DEVICE_BAD_ARGUMENT;
    }
    return registerFlag_read(kRegister168, select_bit(*record), &record->value);
}

int32_t write_reg168_select(const Reg168Select* record)
{
    if (record->index >= kReg168Selects) {
        return DEVICE_BAD_ARGUMENT;
    }
    return command_changeRegister(kRegister168, bits_set(select_bit(*record), record->value == 1));
}

int32_t read_reg158_state(uint8_t* state)
{
    uint16_t value = 0;
    const int32_t status = command_readRegister(kRegister158, value);
    if (status == DEVICE_OK) {
        const uint8_t low = (value & kReg158StateLow) != 0 ? 1 : 0;
        *state = (value & kReg158StateHigh) != 0 ? uint8_t{2} : low;
    }
    return status;
}

int32_t write_reg158_state(const uint8_t* state)
{
    return command_changeRegister(kRegister158,
                                  bitChange_join(bits_set(kReg158StateHigh, *state == 2),
                                                 bits_set(kReg158StateLow, *state == 1)));
}

int32_t read_regfe_mode(uint16_t* mode)
{
    uint16_t nibble = 0;
    const int32_t status = read_regfe_nibble(&nibble);
    if (status == DEVICE_OK) {
        const uint16_t other = nibble <= kNibbleMode2Last ? 2 : 0;
        *mode = nibble == kNibbleMode1 ? uint16_t{1} : other;
    }
    return status;
}

int32_t write_regfe_mode(const uint16_t* mode)
{
    const uint16_t other = *mode == 2 ? kNibbleMode2 : kNibbleOther;
    return command_changeRegister(kRegisterFE,
                                  field_set(kRegFENibbleMask, *mode == 1 ? kNibbleMode1 : other));
}

int32_t read_reg16c_enable(uint8_t* enable)
{
    uint8_t disabled = 0;
    const int32_t status = registerFlag_read(kRegister16C, kReg16CDisable, &disabled);
    if (status == DEVICE_OK) {
        *enable = disabled == 0 ? 1 : 0;
    }
    return status;
}

int32_t write_reg16c_enable(const uint8_t* enable)
{
    return command_changeRegister(kRegister16C, bits_set(kReg16CDisable, *enable != 1));
}
