#include "device/commands/counter.h"

#include "device/access/fpga.h"

static_assert(sizeof(CounterRecord) == 12);
static_assert(sizeof(CounterBlockLarge) == 160);
static_assert(sizeof(CounterBlockSmall) == 68);

namespace
{

constexpr uint32_t kCounterIndexMax = 255;

} // namespace

int32_t counterRecord_read(CounterRecord* record, RequestNumber request)
{
    CounterRecord counter = *record;
    const int32_t status = command_readRecord(request, &counter);
    if (status == DEVICE_OK) {
        record->value = counter.value;
    }
    return status;
}

int32_t counter_read(uint32_t index, CounterSelector selector, uint32_t& value)
{
    if (index > kCounterIndexMax) {
        return DEVICE_BAD_ARGUMENT;
    }
    CounterRecord counter{index, 0, static_cast<uint32_t>(selector)};
    const int32_t status = command_readRecord(kCounterRead, &counter, FpgaAccess::kWrite);
    if (status == DEVICE_OK) {
        value = counter.value;
    }
    return status;
}
