#include "device/commands/device_word_03.h"

#include "device/access/fpga.h"

namespace
{

constexpr uint16_t kWord03Bit6 = 0x0040;

} // namespace

int32_t deviceWord03_setBit6(int32_t flag)
{
    return command_changeWord(kWord03, bits_set(kWord03Bit6, flag == 1));
}
