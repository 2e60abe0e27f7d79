#include "device/commands/status.h"

#include "device/access/fpga.h"
#include "device/access/numbers.h"
#include "device/access/shared_words.h"

static_assert(sizeof(StatusInputs) == 4);
static_assert(sizeof(StatusBit) == 8);

namespace
{

constexpr unsigned kStatusInputShift = 4;

} // namespace

int32_t read_status_word_flag(uint8_t* flag)
{
    return value_store(command_readWordFlag(kStatusWordRead, kStatusBit8), flag);
}

int32_t read_status_inputs(StatusInputs* inputs)
{
    const int32_t word = command_readWord(kStatusWordRead);
    if (word < 0) {
        return word;
    }
    unsigned low = (~static_cast<unsigned>(word) & kStatusInputs) >> kStatusInputShift;
    for (uint8_t& input : inputs->input) {
        input = low & 1U;
        low >>= 1;
    }
    return DEVICE_OK;
}

int32_t read_status_bit(StatusBit* record)
{
    uint32_t map = 0;
    const int32_t status = command_readRecord(kUnitMapDRead, &map);
    if (status == DEVICE_OK) {
        const uint32_t bit = (map & unit_bit(record->bit)) != 0 ? 1 : 0;
        record->result = record->bit == 0 ? map : bit;
    }
    return status;
}
