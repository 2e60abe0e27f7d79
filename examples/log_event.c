/*
 * Logs an event: its code to the user log, and a line of text to the system log.
 *
 * usage: log_event CODE VALUE1 VALUE2 TEXT     code 1 to 300, values 0 to 30
 */
#include <ctype.h>
#include <errno.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>

#include <maint/system_log.h>
#include <maint/user_log.h>

/* A whole number from 0 to the most; false for anything else. */
static bool number_parse(const char* text, unsigned long most, unsigned long* number)
{
    char* end;
    errno = 0;
    *number = strtoul(text, &end, 10);
    return isdigit((unsigned char)text[0]) && *end == '\0' && errno == 0 && *number <= most;
}

int main(int argc, char** argv)
{
    UserLogRecord event = {0};
    unsigned long code;
    unsigned long value1;
    unsigned long value2;
    if (argc != 5 || !number_parse(argv[1], USER_LOG_CODE_MAX, &code) ||
        !number_parse(argv[2], USER_LOG_VALUE_MAX, &value1) ||
        !number_parse(argv[3], USER_LOG_VALUE_MAX, &value2)) {
        fprintf(stderr, "usage: log_event CODE VALUE1 VALUE2 TEXT\n");
        return EXIT_FAILURE;
    }
    event.code = (uint16_t)code;
    event.val1 = (uint8_t)value1;
    event.val2 = (uint8_t)value2;
    if (userLog_put(&event) != 0) {
        return EXIT_FAILURE; /* the library has said why, here and in the system log */
    }
    if (systemLog_put(argv[4]) != 0) {
        return EXIT_FAILURE;
    }
    printf("event %d is logged\n", event.code);
    return EXIT_SUCCESS;
}
