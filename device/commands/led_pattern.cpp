#include "device/commands/led_pattern.h"

#include <unistd.h>

#include "device/access/fpga.h"
#include "device/access/shared_words.h"
#include "device/commands/device_word.h"
#include "device/commands/led_panel.h"
#include "device/commands/led_state_file.h"

namespace
{

// What a pattern does to LED registers B and C.
struct PatternChange {
    BitChange registerB;
    BitChange registerC;
};

// The pattern that shows these values. Unlike a setter's, a ledA of 2 leaves the alert bit.
constexpr PatternChange pattern_of(uint8_t ledA, uint8_t ledB, uint8_t ledC, uint8_t ledD,
                                   uint8_t ledE)
{
    const BitChange bAndC =
        bitChange_join(indicator_assign(kLedB, ledB), indicator_assign(kLedC, ledC));
    return {bitChange_join(ledA_assign(ledA), bAndC),
            bitChange_join(indicator_assign(kLedD, ledD), indicator_assign(kLedE, ledE))};
}

constexpr PatternChange kPatterns[] = {
    pattern_of(1, 1, 1, 2, 1), // 1
    pattern_of(1, 2, 1, 1, 2), // 2
    pattern_of(2, 2, 2, 1, 2), // 3
};

int32_t registerB_restore(const LedStateRecord& record)
{
    const BitChange change =
        bitChange_join(panel_restored(kLedRegisterB, record), ledA_assign(record.ledA));
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    const uint16_t word = word_read(fpga, kLedRegisterB);
    // Device word 03 follows an alert at once, before the register shows it.
    if (fpga_good(fpga) && record.ledA == kLedAAlert) {
        fpga_fail(fpga, deviceWord03_setBit6(1));
    }
    word_write(fpga, kLedRegisterB, bitChange_apply(change, word));
    return fpga_close(fpga);
}

int32_t panel_restore(const LedStateRecord& record)
{
    const int32_t pattern = command_changeWord(kWord03, bits_assign(kWord03Pattern, false));
    if (pattern != DEVICE_OK) {
        return pattern;
    }
    const int32_t a = command_changeWord(kLedRegisterA, panel_restored(kLedRegisterA, record));
    if (a != DEVICE_OK) {
        return a;
    }
    const int32_t b = registerB_restore(record);
    if (b != DEVICE_OK) {
        return b;
    }
    return command_changeWord(kLedRegisterC, panel_restored(kLedRegisterC, record));
}

} // namespace

int32_t pattern_show(void* /*unused*/, Pattern which)
{
    if (ledState_save() < 0) {
        return DEVICE_OPEN_FAILED;
    }
    const PatternChange& pattern = kPatterns[static_cast<unsigned>(which)];
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    word_change(fpga, kLedRegisterB, pattern.registerB);
    word_change(fpga, kLedRegisterC, pattern.registerC);
    word_change(fpga, kWord03, bits_assign(kWord03Pattern, true));
    return fpga_close(fpga);
}

// Holds the save lock to the end: LED commands that come meanwhile wait, and then find no file. A
// failure leaves the file, so that the next call tries again from the start.
int32_t write_led_restore(LedStateRecord* record)
{
    return saveLock_run([record]() -> int32_t {
        if (!ledState_isInhibited()) {
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
