#include "device/commands/led_setter.h"

#include "device/access/driver_records.h"
#include "device/access/fpga.h"
#include "device/commands/led_state_file.h"

namespace
{

bool change_recorded(int32_t command, const LedStateRecord& record)
{
    return ledState_put(command, &record) == 0;
}

// Copies the selected elements of group 7 to switch port 4.
void switchPort_mirror(Fpga& fpga, const LedGroup& group)
{
    SwitchPortRequest port = switchPort4_read(fpga);
    uint8_t* const flags[kGroupElements] = {&port.link, &port.speed100, &port.full_duplex};
    for (unsigned element = 0; element < kGroupElements; ++element) {
        if (element_isSelected(kLedGroup7, group.valid, element)) {
            *flags[element] = group.element[element] == 1 ? 1 : 0;
        }
    }
    record_write(fpga, kSwitchPortWrite, &port);
}

} // namespace

int32_t indicator_write(const LedStateRecord* record, IndicatorId which)
{
    const LedIndicator& indicator = indicator_get(which);
    if (change_recorded(indicator.command, *record)) {
        return LED_CHANGE_RECORDED;
    }
    return command_changeWord(indicator.word,
                              indicator_assign(indicator, record->*indicator.value));
}

int32_t group_write(const LedStateRecord* record, GroupId which)
{
    const LedGroupPlace& place = group_get(which);
    if (change_recorded(place.command, *record)) {
        return LED_CHANGE_RECORDED;
    }
    return command_changeWord(place.word, group_change(place, *record));
}

int32_t write_led_a(const LedStateRecord* record)
{
    if (change_recorded(WR_LED_A, *record)) {
        return LED_CHANGE_RECORDED;
    }
    // Here, unlike in a restore, a value out of range is off, and calm ends an alert.
    BitChange change = ledA_assign(record->ledA <= kLedAAlert ? record->ledA : uint8_t{kLedAOff});
    if (record->ledA == kLedACalm) {
        change = bitChange_join(change, bits_assign(kAlertBit, false));
    }
    return command_changeWord(kLedRegisterB, change);
}

// A failed write counts as an unopened device; this command alone is so.
int32_t write_led_c(const LedStateRecord* record)
{
    const int32_t status = indicator_write(record, IndicatorId::kC);
    return status == DEVICE_WRITE_FAILED ? DEVICE_OPEN_FAILED : status;
}

int32_t write_led_group_7(const LedStateRecord* record)
{
    if (change_recorded(WR_LED_GROUP_7, *record)) {
        return LED_CHANGE_RECORDED;
    }
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    word_change(fpga, kLedRegisterB, group_change(kLedGroup7, *record));
    switchPort_mirror(fpga, record->group7);
    return fpga_close(fpga);
}

int32_t write_line_mode(const LedStateRecord* record)
{
    return command_changeWord(kLedRegisterC, indicator_assign(kLedF, record->ledF));
}

int32_t write_line_flags(const LedStateRecord* record)
{
    return command_changeWord(kLedRegisterC, group_change(kLedGroup2, *record));
}
