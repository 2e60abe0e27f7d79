/*
 * Sets the clock, and the system clock with it; without an argument it tells the time.
 *
 * usage: set_clock [YYYY-MM-DD HH:MM:SS]     local standard time, from the year 2000 on
 */
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <maint/commands/rtc.h>

static const char* const kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                        "Thursday", "Friday", "Saturday"};

/* False: the two words are no date and time. */
static bool time_parse(const char* date, const char* clock, RtcDateTime* time)
{
    int date_end = 0;
    int clock_end = 0;
    return strspn(date, "0123456789-") == strlen(date) &&
           strspn(clock, "0123456789:") == strlen(clock) &&
           sscanf(date, "%4hu-%2hu-%2hu%n", &time->year, &time->month, &time->day, &date_end) ==
               3 &&
           date[date_end] == '\0' &&
           sscanf(clock, "%2hu:%2hu:%2hu%n", &time->hour, &time->minute, &time->second,
                  &clock_end) == 3 &&
           clock[clock_end] == '\0';
}

/* The command checks no ranges: a program does it. */
static bool time_exists(const RtcDateTime* time)
{
    static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = time->year % 4 == 0 && (time->year % 100 != 0 || time->year % 400 == 0);
    return time->year >= 2000 && time->year <= 9999 && time->month >= 1 && time->month <= 12 &&
           time->day >= 1 &&
           time->day <= kDays[time->month - 1] + (leap && time->month == 2 ? 1 : 0) &&
           time->hour <= 23 && time->minute <= 59 && time->second <= 59;
}

int main(int argc, char** argv)
{
    RtcDateTime time = {0};
    if (argc > 1) {
        if (argc != 3 || !time_parse(argv[1], argv[2], &time) || !time_exists(&time)) {
            fprintf(stderr, "usage: set_clock [YYYY-MM-DD HH:MM:SS]\n");
            return EXIT_FAILURE;
        }
        if (maint_wr_rtc_time(&time) != DEVICE_OK) {
            fprintf(stderr, "set_clock: the clock cannot be set\n");
            return EXIT_FAILURE;
        }
    }
    if (maint_rd_rtc_time(&time) != DEVICE_OK) {
        fprintf(stderr, "set_clock: the clock cannot be read\n");
        return EXIT_FAILURE;
    }
    printf("%s %04d-%02d-%02d %02d:%02d\n", kWeekdays[time.weekday % 7], time.year, time.month,
           time.day, time.hour, time.minute);
    return EXIT_SUCCESS;
}
