/*
 * Logs an event: its code to the user log, and a line of text to the system log.
 *
 * usage: log_event CODE VALUE1 VALUE2 TEXT     code 1 to 300, values 0 to 30
 */
#include <stdio.h>
#include <stdlib.h>

#include <maint/system_log.h>
#include <maint/user_log.h>

int main(int argc, char** argv)
{
    UserLogRecord event = {0};
    if (argc != 5) {
        fprintf(stderr, "usage: log_event CODE VALUE1 VALUE2 TEXT\n");
        return EXIT_FAILURE;
    }
    event.code = (uint16_t)strtoul(argv[1], NULL, 10);
    event.val1 = (uint8_t)strtoul(argv[2], NULL, 10);
    event.val2 = (uint8_t)strtoul(argv[3], NULL, 10);
    if (userLog_put(&event) != 0) {
        return EXIT_FAILURE; /* the library has said why, here and in the system log */
    }
    if (systemLog_put(argv[4]) != 0) {
        return EXIT_FAILURE;
    }
    printf("event %d is logged\n", event.code);
    return EXIT_SUCCESS;
}
