// WR_LED_GROUP_1, which couples the group with the alert bit, ledA and device word 03.
#include "device/access/fpga.h"
#include "device/commands/device_word.h"
#include "device/commands/led_setter.h"
#include "device/commands/led_state_file.h"
#include "maint/user_log.h"

namespace
{

constexpr uint16_t kEventAlertOff = 256;
constexpr uint16_t kEventAlertOn = 257;
constexpr uint8_t kEventSource = 7; // byte 6 of the record; byte 7 is 0

constexpr uint8_t kLedAKept = UINT8_MAX; // no state: ledA does not change

void event_log(uint16_t code)
{
    UserLogRecord event{};
    event.code = code;
    event.caller_4[2] = kEventSource;
    userLog_put(&event);
}

// Records ledA's new state, or shows it in the register's word where it is not deferred.
uint8_t ledA_follow(uint8_t state, uint16_t& word)
{
    LedStateRecord record{};
    record.ledA = state;
    if (ledState_put(WR_LED_A, &record) != 0) {
        word = bitChange_apply(ledA_assign(state), word);
    }
    return state;
}

uint8_t alert_begin(uint8_t shown, uint16_t& word)
{
    word |= kAlertBit;
    event_log(kEventAlertOn);
    return shown == kLedAOff ? kLedAKept : ledA_follow(kLedAAlert, word);
}

uint8_t alert_end(uint8_t shown, uint16_t& word)
{
    word &= static_cast<uint16_t>(~kAlertBit);
    return shown == kLedACalm || shown == kLedAAlert ? ledA_follow(kLedACalm, word) : kLedAKept;
}

// Moves the alert bit as the group's new elements demand and returns ledA's new state.
uint8_t alert_follow(const LedGroup& group, uint16_t& word)
{
    const uint8_t shown = ledA_decode(word);
    const bool alert = (word & kAlertBit) != 0;
    if (group.element[0] == 0) {
        return alert_end(shown, word);
    }
    const bool complete = group.element[1] == 1 && group.element[2] == 1;
    if (complete && alert) {
        event_log(kEventAlertOff);
        return alert_end(shown, word);
    }
    return complete || alert ? kLedAKept : alert_begin(shown, word);
}

// The third element is only ever turned on here.
BitChange group1_change(const LedStateRecord& record)
{
    constexpr unsigned kThird = 2;
    const BitChange change = group_change(kLedGroup1, record);
    return element_isSelected(kLedGroup1, record.group1.valid, kThird)
               ? bitChange_join(change, bits_assign(element_bit(kLedGroup1, kThird), true))
               : change;
}

} // namespace

int32_t write_led_group_1(const LedStateRecord* record)
{
    const bool recorded = ledState_put(WR_LED_GROUP_1, record) == 0;
    uint8_t ledA = kLedAKept;
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    uint16_t word = word_read(fpga, kLedRegisterB);
    if (fpga_good(fpga)) {
        ledA = alert_follow(record->group1, word);
    }
    if (recorded) { // the event and ledA have been dealt with all the same
        const int32_t status = fpga_close(fpga);
        return status == DEVICE_OK ? LED_CHANGE_RECORDED : status;
    }
    word_write(fpga, kLedRegisterB, bitChange_apply(group1_change(*record), word));
    if (fpga_good(fpga) && ledA != kLedAKept) {
        fpga_fail(fpga, deviceWord03_setBit6(ledA == kLedAAlert ? 1 : 0));
    }
    return fpga_close(fpga);
}
