#include "device/commands/counter.h"

#include "device/access/fpga.h"

static_assert(sizeof(CounterRecord) == 12);
static_assert(sizeof(CounterBlockLarge) == 160);
static_assert(sizeof(CounterBlockSmall) == 68);

namespace
{

constexpr uint32_t kCounterIndexMax = 255;

// Sends a copy of the caller's record; the caller gets the value alone.
int32_t counterRecord_read(FpgaRequest request, CounterRecord* record)
{
    CounterRecord counter = *record;
    const int32_t status = command_readRecord(request, &counter);
    if (status == DEVICE_OK) {
        record->value = counter.value;
    }
    return status;
}

} // namespace

int32_t read_counter(CounterRecord* record)
{
    return counterRecord_read(kCounterRead, record);
}

int32_t read_counter_alt(CounterRecord* record)
{
    return counterRecord_read(kCounterAltRead, record);
}

int32_t read_driver_state(uint16_t* state)
{
    return fpga_run(FpgaAccess::kWrite, [state](Fpga fpga) -> int32_t {
        *state = static_cast<uint16_t>(fpga_requestValue(fpga, kDriverStateRead, 0));
        return DEVICE_OK;
    });
}

int32_t write_ext_control_a(const uint16_t* word)
{
    return command_writeRecordFailingAsRead(kExtControlAWrite, word);
}

int32_t write_ext_control_b(const uint16_t* word)
{
    return command_writeRecordFailingAsRead(kExtControlBWrite, word);
}

int32_t counter_read(uint32_t index, CounterSelector selector, uint32_t& value)
{
    if (index > kCounterIndexMax) {
        return DEVICE_BAD_ARGUMENT;
    }
    CounterRecord counter{index, 0, static_cast<uint32_t>(selector)};
    const int32_t status = fpga_run(FpgaAccess::kWrite, [&counter](Fpga fpga) {
        return record_read(fpga, kCounterRead, &counter);
    });
    if (status == DEVICE_OK) {
        value = counter.value;
    }
    return status;
}
