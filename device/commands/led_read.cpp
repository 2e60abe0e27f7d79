#include "device/commands/led_read.h"

#include "device/access/driver_records.h"
#include "device/access/fpga.h"
#include "device/access/numbers.h"
#include "device/commands/led_panel.h"
#include "device/commands/unit.h"

namespace
{

// What a dark unit keeps of its register B: both bits of ledA and of ledB.
constexpr uint16_t kDarkRegisterB = kLedALow | kLedAHigh | 3 * kLedB.low;

} // namespace

int32_t ledState_readLocal(LedStateRecord* record)
{
    Fpga fpga = fpga_open(FpgaAccess::kRead);
    const uint16_t registerA = word_read(fpga, kLedRegisterA);
    if (fpga_good(fpga)) {
        ledRegA_decode(registerA, *record);
    }
    const uint16_t registerB = word_read(fpga, kLedRegisterB);
    if (fpga_good(fpga)) {
        ledRegB_decode(registerB, *record);
    }
    const uint16_t registerC = word_read(fpga, kLedRegisterC);
    if (fpga_good(fpga)) {
        ledRegC_decode(registerC, *record);
    }
    // Says nothing of the panel, but the panel counts as read only with it.
    word_read(fpga, kChannelWord);
    return fpga_close(fpga);
}

int32_t ledState_readRemote(LedStateRecord* record)
{
    const uint32_t unit = record->targetId;
    Fpga fpga = fpga_open(FpgaAccess::kRead);
    uint32_t darkUnits = 0;
    record_read(fpga, kUnitMapDRead, &darkUnits);
    const bool dark =
        fpga_good(fpga) && ((darkUnits & unit_bit(unit)) != 0 || vpnId_match(unit) == 0);

    const UnitWords bAndA = unitWords_read(fpga, unit, UnitPage::kLedRegistersBAndA);
    if (fpga_good(fpga)) {
        ledRegA_decode(dark ? 0 : bAndA.second, *record);
        ledRegB_decode(dark ? bAndA.first & kDarkRegisterB : bAndA.first, *record);
    }
    const UnitWords channelAndC = unitWords_read(fpga, unit, UnitPage::kChannelWordAndLedRegisterC);
    if (fpga_good(fpga)) {
        ledRegC_decode(dark ? 0 : channelAndC.second, *record);
    }
    return fpga_close(fpga);
}

int32_t read_led_state(LedStateRecord* record)
{
    if (!peerId_isValid(record->ownId) || !peerId_isValid(record->targetId)) {
        return DEVICE_BAD_ARGUMENT;
    }
    return record->ownId == record->targetId ? ledState_readLocal(record)
                                             : ledState_readRemote(record);
}
