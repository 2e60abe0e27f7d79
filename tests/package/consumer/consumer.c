/* A C program on the installed library. It touches no file, so it runs on any machine. */
#include <stdio.h>

#include <maint/ini_file.h>
#include <maint/save_lock.h>
#include <maint/system_log.h>

int main(void)
{
    char value[INI_VALUE_SIZE] = "?";
    report_message(LOG_SINK_CONSOLE, "consumer : 001 : linked with the installed library");
    printf("fileAccess_unlock(NULL) = %d\n", (int)fileAccess_unlock(NULL));
    printf("GetIniFileString(NULL, ...) = %d\n", (int)GetIniFileString(NULL, "", "KEY", value));
    printf("value '%s'\n", value);
    return 0;
}
