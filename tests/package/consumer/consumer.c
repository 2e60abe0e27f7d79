/*
 * A C program on the installed library. It touches no file or device, so it runs on any machine; only
 * with an argument it loads the tables of the Ethernet switch.
 */
#include <stdio.h>

#include <maint/commands/bandwidth.h>
#include <maint/commands/phy.h>
#include <maint/commands/switch_tables.h>
#include <maint/fpga.h>
#include <maint/ini_file.h>
#include <maint/save_lock.h>
#include <maint/system_log.h>

int main(int argc, char** argv)
{
    char value[INI_VALUE_SIZE] = "?";
    uint16_t id = BANDWIDTH_ID_MAX + 1;
    const uint16_t limit = BANDWIDTH_ID_MAX + 1;
    PhyStatus phy = {.port = 7};
    report_message(LOG_SINK_CONSOLE, "consumer : 001 : linked with the installed library");
    printf("fileAccess_unlock(NULL) = %d\n", (int)fileAccess_unlock(NULL));
    printf("GetIniFileString(NULL, ...) = %d\n", (int)GetIniFileString(NULL, "", "KEY", value));
    printf("value '%s'\n", value);
    /* A bad argument is refused before any device is opened. */
    printf("Fpga_Register_Set(WR_BANDWIDTH, 21) = %d\n", (int)Fpga_Register_Set(WR_BANDWIDTH, &id));
    printf("maint_wr_bandwidth(21) = %d\n", (int)maint_wr_bandwidth(&limit));
    printf("maint_rd_phy_status(port 7) = %d\n", (int)maint_rd_phy_status(&phy));
    if (argc > 1) {
        printf("%s: maint_wr_switch_tables_1() = %d\n", argv[0], (int)maint_wr_switch_tables_1());
    }
    return 0;
}
