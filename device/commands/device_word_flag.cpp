// Flags in words of the device.
#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/access/shared_words.h"
#include "device/commands/device_word.h"

namespace
{

constexpr uint16_t kEnable = 0x0001;     // the enable word
constexpr uint16_t kWord35Flag = 0x00C0; // word 35

// The control word. Reports do without the third.
constexpr uint16_t kControlBits[] = {0x0002, 0x0001, 0x0004};
constexpr size_t kControlBitsRead = 2;

} // namespace

int32_t read_enable_flag(uint8_t* flag)
{
    return value_store(command_readWordFlag(request_reading(kEnableWord), kEnable), flag);
}

int32_t write_enable_flag(const uint8_t* flag)
{
    return command_writeValue(request_writing(kEnableWord), *flag == 1 ? kEnable : 0);
}

int32_t read_group_flag(uint8_t* flag)
{
    return value_store(command_readWordFlag(request_reading(kGroupWord), kGroupFlag), flag);
}

int32_t write_group_flag(const uint8_t* flag)
{
    return command_changeWord(kGroupWord, bits_assign(kGroupFlag, *flag == 1));
}

int32_t read_device_word_35(uint16_t* flag)
{
    return value_store(command_readWordFlag(request_reading(kWord35), kWord35Flag), flag);
}

// Any value but 0 sets the bits.
int32_t write_device_word_36(const uint16_t* flag)
{
    return command_changeWord(kWord35, bits_assign(kWord35Flag, *flag != 0));
}

int32_t read_vlant_map_enable(uint16_t* flag)
{
    return value_store(command_readWordFlag(request_reading(kWord03), kWord03VlantMap), flag);
}

int32_t write_vlant_map_enable(const uint16_t* flag)
{
    return command_changeWord(kWord03, bits_assign(kWord03VlantMap, *flag == 1));
}

int32_t read_control_bits(ControlBits* bits)
{
    return flags_store(command_readWord(kControlWord), kControlBits, kControlBitsRead, bits->flags);
}

int32_t write_control_bits(const ControlBits* bits)
{
    const BitChange change = flagFields_change(kControlBits, 0, bits->flags);
    return command_writeValue(request_writing(kControlWord), bitChange_apply(change, 0));
}
