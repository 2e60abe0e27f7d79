/*
 * The commands on the real-time clock, on the board's own clock device: setting it sets the system
 * clock, too. Ends with 1 when something is not as it should be.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <maint/commands/rtc.h>
#include <maint/fpga.h>

/* A text that a file of the kernel's begins with. */
static int begins_with(const char* path, const char* text)
{
    char line[64] = "";
    FILE* file = fopen(path, "r");
    if (file == NULL || fgets(line, sizeof line, file) == NULL) {
        perror(path);
    }
    if (file != NULL) {
        fclose(file);
    }
    return strncmp(line, text, strlen(text)) == 0;
}

int main(void)
{
    /* A leap day; the weekday given is wrong and not used. */
    const RtcDateTime set = {2020, 2, 29, 12, 0, 0, 3};
    RtcDateTime got;
    uint32_t status = 0;
    const time_t then = 1582977600; /* the same time in seconds */
    int good;

    memset(&got, 0xFF, sizeof got);
    good = maint_wr_rtc_time(&set) == DEVICE_OK;
    good = good && time(NULL) >= then && time(NULL) <= then + 50;
    good = good && maint_rd_rtc_time(&got) == DEVICE_OK;
    good = good && got.year == 2020 && got.month == 2 && got.day == 29 && got.hour == 12 &&
           got.minute == 0 && got.second <= 50 && got.weekday == 6;
    good = good && begins_with("/sys/class/rtc/rtc0/date", "2020-02-29") &&
           begins_with("/sys/class/rtc/rtc0/time", "12:00:");
    /* This clock has no status word: its driver refuses both requests. */
    good = good && maint_rd_rtc_status(&status) == DEVICE_READ_FAILED &&
           maint_wr_rtc_status(&status) == DEVICE_WRITE_FAILED;
    printf("clock: %04u-%02u-%02u %02u:%02u:%02u weekday %u, system time %ld: %s\n", got.year,
           got.month, got.day, got.hour, got.minute, got.second, got.weekday, (long)time(NULL),
           good ? "ok" : "FAILED");
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
