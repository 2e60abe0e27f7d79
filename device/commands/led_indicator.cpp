#include "device/commands/led_indicator.h"

#include "device/access/switch_port.h"
#include "device/commands/led_state_file.h"

namespace
{

bool change_recorded(DeviceCommandCode command, const LedStateRecord& record)
{
    return ledState_put(static_cast<int32_t>(command), &record) == 0;
}

// Copies the selected elements of group 7 to switch port 4.
int32_t switchPort_mirror(Fpga fpga, const LedGroup& group)
{
    SwitchPortRequest port{};
    port.port = kSwitchPort4;
    const int32_t status = record_read(fpga, kSwitchPortRead, &port);
    if (status != DEVICE_OK) {
        return status;
    }
    uint8_t* const flags[] = {&port.link, &port.speed100, &port.full_duplex}; // by element
    for (unsigned n = 0; n < kLedGroup7.order.size(); ++n) {
        if (mask_selects(group.valid, n)) {
            const unsigned element = kLedGroup7.order[n];
            *flags[element] = group.element[element] == 1 ? 1 : 0;
        }
    }
    return record_write(fpga, kSwitchPortWrite, &port);
}

} // namespace

int32_t indicator_write(DeviceCommandCode command, const LedIndicator& indicator,
                        const LedStateRecord& record)
{
    if (change_recorded(command, record)) {
        return LED_CHANGE_RECORDED;
    }
    return command_changeWord(indicator.word, indicator_change(indicator, record));
}

int32_t group_write(DeviceCommandCode command, const LedGroupPlace& place,
                    const LedStateRecord& record)
{
    if (change_recorded(command, record)) {
        return LED_CHANGE_RECORDED;
    }
    return command_changeWord(place.word, group_change(place, record));
}

int32_t write_led_a(const LedStateRecord* record)
{
    if (change_recorded(WR_LED_A, *record)) {
        return LED_CHANGE_RECORDED;
    }
    // Here, unlike in a restore, a value out of range is off, and calm ends an alert.
    BitChange change = ledA_change(record->ledA <= kLedAAlert ? record->ledA : uint8_t{kLedAOff});
    if (record->ledA == kLedACalm) {
        change = bitChange_join(change, bits_set(kAlertBit, false));
    }
    return command_changeWord(kLedRegisterB, change);
}

// A failed write counts as an unopened device; this command alone is so.
int32_t write_led_c(const LedStateRecord* record)
{
    const int32_t status = indicator_write(WR_LED_C, kLedC, *record);
    return status == DEVICE_WRITE_FAILED ? static_cast<int32_t>(DEVICE_OPEN_FAILED) : status;
}

int32_t write_led_group_7(const LedStateRecord* record)
{
    if (change_recorded(WR_LED_GROUP_7, *record)) {
        return LED_CHANGE_RECORDED;
    }
    return fpga_run(FpgaAccess::kWrite, [record](Fpga fpga) {
        const int32_t status =
            word_change(fpga, kLedGroup7.word, group_change(kLedGroup7, *record));
        return status == DEVICE_OK ? switchPort_mirror(fpga, record->group7) : status;
    });
}
