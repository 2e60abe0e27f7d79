#include "device/commands/channel_word.h"

#include "device/access/driver_records.h"
#include "device/access/fpga.h"
#include "device/commands/device_word.h"

static_assert(sizeof(ChannelWord) == 4);

namespace
{

constexpr uint16_t kChannelLow = 0x0FFF;

} // namespace

int32_t read_channel_word(ChannelWord* record)
{
    Fpga fpga = fpga_open(FpgaAccess::kRead);
    uint16_t own = 0; // and so it counts when it cannot be read
    if (fpga_good(fpga)) {
        ownId_read(own);
    }
    if (record->id == own) {
        record_read(fpga, request_reading(kChannelWord), &record->value);
        return fpga_close(fpga);
    }
    const UnitWords words = unitWords_read(fpga, record->id, UnitPage::kChannelWordAndLedRegisterC);
    if (fpga_good(fpga)) {
        record->value = words.first & kChannelLow;
    }
    return fpga_close(fpga);
}

// The caller's bits are not cut to 12.
int32_t write_channel_word(const ChannelWord* record)
{
    const int32_t status =
        command_changeWord(kChannelWord, bitChange_of(kChannelLow, record->value));
    return status == DEVICE_WRITE_FAILED ? DEVICE_READ_FAILED : status;
}
