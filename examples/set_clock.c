/*
 * Sets the clock, and the system clock with it; without an argument it tells the time.
 *
 * usage: set_clock [YYYY-MM-DD HH:MM:SS]     local standard time
 */
#include <stdio.h>
#include <stdlib.h>

#include <maint/commands/rtc.h>

static const char* const kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                        "Thursday", "Friday", "Saturday"};

int main(int argc, char** argv)
{
    RtcDateTime time = {0};
    if (argc > 1) {
        /* The command checks no ranges: a program does it. */
        if (argc != 3 ||
            sscanf(argv[1], "%4hu-%2hu-%2hu", &time.year, &time.month, &time.day) != 3 ||
            sscanf(argv[2], "%2hu:%2hu:%2hu", &time.hour, &time.minute, &time.second) != 3 ||
            time.month < 1 || time.month > 12 || time.day < 1 || time.day > 31 || time.hour > 23 ||
            time.minute > 59 || time.second > 59) {
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
