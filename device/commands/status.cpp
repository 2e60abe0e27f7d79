#include "device/commands/status.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "device/access/bit_flag.h"
#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/commands/led_panel.h"

static_assert(sizeof(DeviceInfo) == 8);
static_assert(sizeof(PortFlags) == 12);

namespace
{

constexpr uint16_t kStatusBit8 = 0x0100;
constexpr uint16_t kStatusInputs = 0x00F0; // active low
constexpr unsigned kStatusInputShift = 4;

constexpr FlagField kControlBits[] = {{0, 0x0002}, {1, 0x0001}, {2, 0x0004}};
constexpr size_t kControlBitsRead = 2; // the reports do without the third

constexpr FlagField kPortFlags[] = {{0, 0x0100}, {1, 0x0002}, {2, 0x0004}, {3, 0x0001},
                                    {4, 0x0008}, {5, 0x0010}, {6, 0x0020}, {7, 0x0040},
                                    {8, 0x0080}, {9, 0x1000}};
constexpr uint16_t kPortFlagsForced = 0x10F0; // while status bit 8 is set

constexpr uint16_t kEnableBit = 0x0001;

constexpr uint32_t kIdRegister = 0x0180;
constexpr uint32_t kRegisterStep = 2;

char hex_digit(unsigned value)
{
    return "0123456789abcdef"[value & 0xFU];
}

} // namespace

int32_t read_device_info(DeviceInfo* info)
{
    alignas(uint16_t) uint8_t words[sizeof(DeviceInfo)] = {}; // the driver stores words
    const int32_t status = command_readRecord(kDeviceInfoRead, words);
    if (status != DEVICE_OK) {
        return status;
    }
    for (size_t i = 0; i < sizeof words; i += sizeof(uint16_t)) {
        std::swap(words[i], words[i + 1]);
    }
    std::copy_n(words, sizeof info->bytes, info->bytes);
    const uint8_t high = words[sizeof info->bytes];
    const uint8_t low = words[sizeof info->bytes + 1];
    info->text[0] = hex_digit(high >> 4);
    info->text[1] = hex_digit(high);
    info->text[2] = hex_digit(low >> 4);
    info->text[3] = hex_digit(low);
    return DEVICE_OK;
}

int32_t read_status_word_flag(uint8_t* flag)
{
    return wordFlag_read(kStatusWordRead, kStatusBit8, flag);
}

int32_t read_status_inputs(StatusInputs* inputs)
{
    uint16_t word = 0;
    const int32_t status = command_readWord(kStatusWordRead, word);
    if (status == DEVICE_OK) {
        unsigned low = (~word & kStatusInputs) >> kStatusInputShift;
        for (uint8_t& input : inputs->input) {
            input = low & 1U;
            low >>= 1;
        }
    }
    return status;
}

int32_t read_control_bits(ControlBits* bits)
{
    uint16_t word = 0;
    const int32_t status = command_readWord(kControlWord.read, word);
    if (status == DEVICE_OK) {
        flagFields_extract(std::span(kControlBits).first(kControlBitsRead), word, bits->flags);
    }
    return status;
}

int32_t write_control_bits(const ControlBits* bits)
{
    return command_writeValue(kControlWord.write,
                              flagFields_change(kControlBits, 0, bits->flags).set);
}

int32_t read_port_flags(PortFlags* record)
{
    uint16_t word = 0;
    const int32_t status = command_readWord(kPortFlagsWord.read, word);
    if (status == DEVICE_OK) {
        flagFields_extract(kPortFlags, word, record->flags);
    }
    return status;
}

int32_t write_port_flags(const PortFlags* record)
{
    return fpga_run(FpgaAccess::kWrite, [record](Fpga fpga) -> int32_t {
        uint16_t word = 0;
        const int32_t status = word_read(fpga, kStatusWordRead, word);
        if (status != DEVICE_OK) {
            return status;
        }
        if ((word & kStatusBit8) != 0) {
            return value_write(fpga, kPortFlagsWord.write, kPortFlagsForced);
        }
        return word_change(fpga, kPortFlagsWord,
                           flagFields_change(kPortFlags, record->mask, record->flags));
    });
}

int32_t read_enable_flag(uint8_t* flag)
{
    return wordFlag_read(kEnableWord.read, kEnableBit, flag);
}

int32_t write_enable_flag(const uint8_t* flag)
{
    return command_writeValue(kEnableWord.write, *flag == 1 ? kEnableBit : 0);
}

// Indicator F and group 2 of the front panel; these two never look at the LED state file.
int32_t write_line_mode(const LedStateRecord* record)
{
    return command_changeWord(kLedF.word, indicator_change(kLedF, *record));
}

int32_t write_line_flags(const LedStateRecord* record)
{
    return command_changeWord(kLedGroup2.word, group_change(kLedGroup2, *record));
}

int32_t read_id_registers(IdRegisters* registers)
{
    return fpga_run(FpgaAccess::kRead, [registers](Fpga fpga) -> int32_t {
        uint32_t address = kIdRegister;
        for (uint16_t& value : registers->value) {
            const int32_t status = register_read(fpga, address, value);
            if (status != DEVICE_OK) {
                return status;
            }
            address += kRegisterStep;
        }
        return DEVICE_OK;
    });
}
