/*
 * Writes lines to the system log, as the appliance's programs do.
 *
 * usage: log_lines FIRST COUNT
 */
#include <stdio.h>
#include <stdlib.h>

#include <maint/system_log.h>

int main(int argc, char** argv)
{
    const int first = argc == 3 ? atoi(argv[1]) : 0;
    const int count = argc == 3 ? atoi(argv[2]) : 0;
    int i;
    for (i = first; i < first + count; ++i) {
        char text[SYSTEM_LOG_MESSAGE_LENGTH + 1];
        snprintf(text, sizeof text, "link up : LAN port %d, event %d", i % 5 + 1, i);
        if (systemLog_put(text) != 0) {
            return EXIT_FAILURE;
        }
    }
    return count > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
