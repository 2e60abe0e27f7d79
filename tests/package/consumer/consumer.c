/* A C program on the installed library. It touches no file or device, so it runs on any machine. */
#include <stdio.h>

#include <maint/commands/bandwidth.h>
#include <maint/fpga.h>
#include <maint/ini_file.h>
#include <maint/save_lock.h>
#include <maint/system_log.h>

int main(void)
{
    char value[INI_VALUE_SIZE] = "?";
    uint16_t id = BANDWIDTH_ID_MAX + 1;
    report_message(LOG_SINK_CONSOLE, "consumer : 001 : linked with the installed library");
    printf("fileAccess_unlock(NULL) = %d\n", (int)fileAccess_unlock(NULL));
    printf("GetIniFileString(NULL, ...) = %d\n", (int)GetIniFileString(NULL, "", "KEY", value));
    printf("value '%s'\n", value);
    /* A bad argument is refused before any device is opened. */
    printf("Fpga_Register_Set(WR_BANDWIDTH, 21) = %d\n", (int)Fpga_Register_Set(WR_BANDWIDTH, &id));
    return 0;
}
