// The setters of single indicators and of groups of three.
#pragma once

#include "device/access/command_call.h"
#include "device/commands/led_panel.h"
#include "maint/commands/led.h"

// Recorded while the inhibit is on, otherwise one change of one LED register.
int32_t indicator_write(const LedStateRecord* record, IndicatorId which);
int32_t group_write(const LedStateRecord* record, GroupId which);

constexpr CommandCall write_led_b = call_of<indicator_write>(IndicatorId::kB);
constexpr CommandCall write_led_d = call_of<indicator_write>(IndicatorId::kD);
constexpr CommandCall write_led_e = call_of<indicator_write>(IndicatorId::kE);
constexpr CommandCall write_led_group_3 = call_of<group_write>(GroupId::k3);
constexpr CommandCall write_led_group_4 = call_of<group_write>(GroupId::k4);
constexpr CommandCall write_led_group_5 = call_of<group_write>(GroupId::k5);
constexpr CommandCall write_led_group_6 = call_of<group_write>(GroupId::k6);

// Likewise, with a difference.
int32_t write_led_a(const LedStateRecord* record);
int32_t write_led_c(const LedStateRecord* record);
int32_t write_led_group_1(const LedStateRecord* record);
int32_t write_led_group_7(const LedStateRecord* record);

// These two never look at the LED state file.
int32_t write_line_mode(const LedStateRecord* record);
int32_t write_line_flags(const LedStateRecord* record);
