// The setters of single indicators and of groups of three.
#pragma once

#include "device/commands/led_panel.h"
#include "maint/commands/led.h"
#include "maint/fpga.h"

int32_t write_led_a(const LedStateRecord* record);
int32_t write_led_c(const LedStateRecord* record);
int32_t write_led_group_1(const LedStateRecord* record);
int32_t write_led_group_7(const LedStateRecord* record);

// The families: recorded while the inhibit is on, otherwise one change of one LED register.
int32_t indicator_write(DeviceCommandCode command, const LedIndicator& indicator,
                        const LedStateRecord& record);
int32_t group_write(DeviceCommandCode command, const LedGroupPlace& place,
                    const LedStateRecord& record);

template <DeviceCommandCode kCommand, const LedIndicator& kIndicator>
int32_t write_indicator(const LedStateRecord* record)
{
    return indicator_write(kCommand, kIndicator, *record);
}

template <DeviceCommandCode kCommand, const LedGroupPlace& kPlace>
int32_t write_group(const LedStateRecord* record)
{
    return group_write(kCommand, kPlace, *record);
}

constexpr auto write_led_b = write_indicator<WR_LED_B, kLedB>;
constexpr auto write_led_d = write_indicator<WR_LED_D, kLedD>;
constexpr auto write_led_e = write_indicator<WR_LED_E, kLedE>;
constexpr auto write_led_group_3 = write_group<WR_LED_GROUP_3, kLedGroup3>;
constexpr auto write_led_group_4 = write_group<WR_LED_GROUP_4, kLedGroup4>;
constexpr auto write_led_group_5 = write_group<WR_LED_GROUP_5, kLedGroup5>;
constexpr auto write_led_group_6 = write_group<WR_LED_GROUP_6, kLedGroup6>;
