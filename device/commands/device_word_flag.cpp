#include "device/commands/device_word_flag.h"

#include "device/access/bit_flag.h"

namespace
{

constexpr uint16_t kWord35Flag = 0x00C0;
constexpr uint16_t kVlantMapEnable = 0x1000; // of word 03

} // namespace

int32_t read_device_word_35(uint16_t* flag)
{
    return wordFlag_read(kWord35.read, kWord35Flag, flag);
}

// Any value but 0 sets the bits.
int32_t write_device_word_36(const uint16_t* flag)
{
    return command_changeWord(kWord35, bits_set(kWord35Flag, *flag != 0));
}

int32_t read_vlant_map_enable(uint16_t* flag)
{
    return wordFlag_read(kWord03.read, kVlantMapEnable, flag);
}

int32_t write_vlant_map_enable(const uint16_t* flag)
{
    return command_changeWord(kWord03, bits_set(kVlantMapEnable, *flag == 1));
}
