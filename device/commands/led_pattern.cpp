#include "device/commands/led_pattern.h"

#include <unistd.h>

#include "device/commands/device_word_03.h"
#include "device/commands/led_panel.h"
#include "device/commands/led_state_file.h"

namespace
{

constexpr uint16_t kPatternShown = 0x0080; // of device word 03

int32_t registerA_restore(const LedStateRecord& record)
{
    BitChange change{0, 0};
    for (const LedGroupPlace& place : {kLedGroup3, kLedGroup4, kLedGroup5, kLedGroup6}) {
        change = bitChange_join(change, group_restore(place, record));
    }
    return command_changeWord(kLedRegisterA, change);
}

int32_t registerB_restore(const LedStateRecord& record)
{
    return fpga_run(FpgaAccess::kWrite, [&record](Fpga fpga) {
        uint16_t word = 0;
        int32_t status = word_read(fpga, kLedRegisterB.read, word);
        // Device word 03 follows an alert at once, before the register shows it.
        if (status == DEVICE_OK && record.ledA == kLedAAlert) {
            status = deviceWord03_setBit6(1);
        }
        if (status != DEVICE_OK) {
            return status;
        }
        for (const BitChange change :
             {group_restore(kLedGroup7, record), group_restore(kLedGroup1, record),
              indicator_restore(kLedC, record), indicator_restore(kLedB, record),
              ledA_change(record.ledA)}) {
            word = bitChange_apply(change, word);
        }
        return value_write(fpga, kLedRegisterB.write, word);
    });
}

// ledF is not restored.
int32_t registerC_restore(const LedStateRecord& record)
{
    BitChange change = group_restore(kLedGroup2, record);
    change = bitChange_join(change, indicator_restore(kLedE, record));
    change = bitChange_join(change, indicator_restore(kLedD, record));
    return command_changeWord(kLedRegisterC, change);
}

int32_t panel_restore(const LedStateRecord& record)
{
    int32_t status = command_changeWord(kWord03, bits_set(kPatternShown, false));
    if (status == DEVICE_OK) {
        status = registerA_restore(record);
    }
    if (status == DEVICE_OK) {
        status = registerB_restore(record);
    }
    return status == DEVICE_OK ? registerC_restore(record) : status;
}

} // namespace

int32_t pattern_show(const LedPattern& pattern)
{
    if (ledState_save() < 0) {
        return DEVICE_OPEN_FAILED;
    }
    return fpga_run(FpgaAccess::kWrite, [&pattern](Fpga fpga) {
        int32_t status = word_change(fpga, kLedRegisterB, pattern.registerB);
        if (status == DEVICE_OK) {
            status = word_change(fpga, kLedRegisterC, pattern.registerC);
        }
        return status == DEVICE_OK ? word_change(fpga, kWord03, bits_set(kPatternShown, true))
                                   : status;
    });
}

// Holds the save lock to the end: LED commands that come meanwhile wait, and then find no file. A
// failure leaves the file, so that the next call tries again from the start.
int32_t write_led_restore(LedStateRecord* record)
{
    return saveLock_run([record]() -> int32_t {
        if (!ledState_inhibited()) {
            return DEVICE_OK;
        }
        int32_t status = ledState_load(record);
        if (status == DEVICE_OK) {
            status = panel_restore(*record);
        }
        if (status == DEVICE_OK) {
            unlink(kLedStatePath);
        }
        return status;
    });
}
