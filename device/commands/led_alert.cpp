// WR_LED_GROUP_1, which couples the group with the alert bit, ledA and device word 03.
#include "device/commands/device_word_03.h"
#include "device/commands/led_indicator.h"
#include "device/commands/led_state_file.h"
#include "maint/user_log.h"

namespace
{

constexpr uint16_t kEventAlertOff = 256;
constexpr uint16_t kEventAlertOn = 257;
constexpr uint8_t kEventSource = 7; // low byte of the record's bytes 6 and 7

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
        word = bitChange_apply(ledA_change(state), word);
    }
    return state;
}

// Moves the alert bit as the group's new elements demand and returns ledA's new state, or
// kLedAOff where it does not change.
uint8_t alert_follow(const LedGroup& group, uint16_t& word)
{
    const uint8_t shown = ledA_decode(word);
    const bool alert = (word & kAlertBit) != 0;
    const bool complete = group.element[1] == 1 && group.element[2] == 1;

    if (group.element[0] != 0 && !complete && !alert) {
        word |= kAlertBit;
        event_log(kEventAlertOn);
        return shown != kLedAOff ? ledA_follow(kLedAAlert, word) : uint8_t{kLedAOff};
    }
    if (group.element[0] != 0) {
        if (!complete || !alert) {
            return kLedAOff;
        }
        event_log(kEventAlertOff);
    }
    word = bitChange_apply(bits_set(kAlertBit, false), word);
    return shown == kLedACalm || shown == kLedAAlert ? ledA_follow(kLedACalm, word)
                                                     : uint8_t{kLedAOff};
}

// The third element is only ever turned on here.
BitChange group1_change(const LedStateRecord& record)
{
    BitChange change = group_change(kLedGroup1, record);
    const uint16_t third = element_bit(kLedGroup1, 2);
    if (mask_selects(record.group1.valid, 2)) {
        change = bitChange_join(change, bits_set(third, true));
    }
    return change;
}

} // namespace

int32_t write_led_group_1(const LedStateRecord* record)
{
    const bool recorded = ledState_put(WR_LED_GROUP_1, record) == 0;
    return fpga_run(FpgaAccess::kWrite, [=](Fpga fpga) -> int32_t {
        uint16_t word = 0;
        int32_t status = word_read(fpga, kLedGroup1.word.read, word);
        if (status != DEVICE_OK) {
            return status;
        }
        const uint8_t ledA = alert_follow(record->group1, word);
        if (recorded) {
            return LED_CHANGE_RECORDED; // the event and ledA have been dealt with all the same
        }
        status =
            value_write(fpga, kLedGroup1.word.write, bitChange_apply(group1_change(*record), word));
        if (status != DEVICE_OK || ledA == kLedAOff) {
            return status;
        }
        return deviceWord03_setBit6(ledA == kLedAAlert ? 1 : 0);
    });
}
