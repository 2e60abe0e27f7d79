// The fixed display patterns and the end of the inhibit that they start.
#pragma once

#include <cstdint>

#include "device/access/fpga.h"
#include "device/commands/led_panel.h"
#include "maint/led_state.h"

// What a pattern does to LED registers B and C.
struct LedPattern {
    BitChange registerB;
    BitChange registerC;
};

// The pattern that shows these values. Unlike a setter's, a ledA of 2 leaves the alert bit.
constexpr LedPattern pattern_of(uint8_t ledA, uint8_t ledB, uint8_t ledC, uint8_t ledD,
                                uint8_t ledE)
{
    const BitChange bAndC = bitChange_join(indicator_set(kLedB, ledB), indicator_set(kLedC, ledC));
    return {bitChange_join(ledA_change(ledA), bAndC),
            bitChange_join(indicator_set(kLedD, ledD), indicator_set(kLedE, ledE))};
}

constexpr LedPattern kLedPattern1 = pattern_of(1, 1, 1, 2, 1);
constexpr LedPattern kLedPattern2 = pattern_of(1, 2, 1, 1, 2);
constexpr LedPattern kLedPattern3 = pattern_of(2, 2, 2, 1, 2);

int32_t pattern_show(const LedPattern& pattern);

// The commands' argument is not used.
template <const LedPattern& kPattern> int32_t write_pattern(void* /*argument*/)
{
    return pattern_show(kPattern);
}

constexpr auto write_led_pattern_1 = write_pattern<kLedPattern1>;
constexpr auto write_led_pattern_2 = write_pattern<kLedPattern2>;
constexpr auto write_led_pattern_3 = write_pattern<kLedPattern3>;

int32_t write_led_restore(LedStateRecord* record);
