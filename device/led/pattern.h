// The fixed display patterns and the end of the inhibit that they start.
#pragma once

#include <cstdint>

#include "device/fpga_device.h"
#include "maint/led_state.h"

// A pattern's bits in LED registers B and C.
struct LedPattern {
    BitChange registerB;
    BitChange registerC;
};

// ledA 1, ledB 1, ledC 1, ledD 2, ledE 1
constexpr LedPattern kLedPattern1{{0x2A00, 0x1500}, {0x0080, 0x0240}};
// ledA 1, ledB 2, ledC 1, ledD 1, ledE 2
constexpr LedPattern kLedPattern2{{0x2200, 0x1900}, {0x0200, 0x0180}};
// ledA 2, ledB 2, ledC 2, ledD 1, ledE 2
constexpr LedPattern kLedPattern3{{0x0000, 0x3A00}, {0x0200, 0x0180}};

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
