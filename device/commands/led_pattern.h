// The fixed display patterns and the end of the inhibit that they start.
#pragma once

#include <cstdint>

#include "device/access/command_call.h"
#include "maint/led_state.h"

enum class Pattern : uint16_t { k1, k2, k3 };

int32_t pattern_show(void* unused, Pattern which);
constexpr CommandCall write_led_pattern_1 = call_of<pattern_show>(Pattern::k1);
constexpr CommandCall write_led_pattern_2 = call_of<pattern_show>(Pattern::k2);
constexpr CommandCall write_led_pattern_3 = call_of<pattern_show>(Pattern::k3);

int32_t write_led_restore(LedStateRecord* record);
