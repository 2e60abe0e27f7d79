/*
 * The real-time clock /dev/rtc.
 *
 * Results: 0; -1 /dev/rtc not opened; -2 (RD) or -4 (WR) request failed.
 */
#ifndef MAINT_COMMANDS_RTC_H
#define MAINT_COMMANDS_RTC_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_RTC_TIME (0x0200), out. The weekday is computed from the date; the driver's own is not used.
 * WR_RTC_TIME (0x0201), in; the weekday is ignored and nothing is checked for its range. Sets the
 * system clock, too, taking the record as local standard time; whether that succeeds is not told. A
 * refused request (-4) leaves the system clock as it is.
 * CAUTION: on a developer's machine with /dev/rtc, as root, this sets that machine's clocks.
 */
typedef struct RtcDateTime {
    uint16_t year;    /* 0: full year, 2006 */
    uint16_t month;   /* 2: 1..12 */
    uint16_t day;     /* 4: 1..31 */
    uint16_t hour;    /* 6: 0..23 */
    uint16_t minute;  /* 8: 0..59 */
    uint16_t second;  /* 10: 0..59 */
    uint16_t weekday; /* 12: 0..6, 0 is Sunday */
} RtcDateTime;
MAINT_COMMAND(RD_RTC_TIME, maint_rd_rtc_time, RtcDateTime)
MAINT_COMMAND_IN(WR_RTC_TIME, maint_wr_rtc_time, RtcDateTime)

/*
 * RD_RTC_STATUS (0x0202), out; WR_RTC_STATUS (0x0203), in: a value of the driver's, filled or read
 * by the driver itself.
 */
MAINT_COMMAND(RD_RTC_STATUS, maint_rd_rtc_status, uint32_t)
MAINT_COMMAND_IN(WR_RTC_STATUS, maint_wr_rtc_status, uint32_t)

#endif
