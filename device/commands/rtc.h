// The real-time clock.
#pragma once

#include <cstdint>

#include "maint/commands/rtc.h"

int32_t read_rtc_time(RtcDateTime* record);
int32_t write_rtc_time(const RtcDateTime* record);
int32_t read_rtc_status(uint32_t* value);
int32_t write_rtc_status(const uint32_t* value);

// 0 for Sunday to 6 for Saturday.
uint16_t weekday_of(uint16_t year, uint16_t month, uint16_t day);
