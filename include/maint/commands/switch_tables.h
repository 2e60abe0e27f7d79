/*
 * The configuration tables of the Ethernet switch: loads /tmp/ks8995_nor.dat and
 * /tmp/ks8995_pri.dat, 128 bytes of each, into the device through /dev/fpga. What lies behind the
 * first 128 bytes is ignored.
 */
#ifndef MAINT_COMMANDS_SWITCH_TABLES_H
#define MAINT_COMMANDS_SWITCH_TABLES_H

#include "maint/typed_call.h"

/*
 * WR_SWITCH_TABLES_1 (0x0120), WR_SWITCH_TABLES_2 (0x0121): the argument is not used and may be
 * null.
 *
 * Results: 0; -1 device not opened; -2 status word not read, or tables refused (0x0120); -4 tables
 * refused (0x0121); -5 a file is missing or shorter than 128 bytes (found with the device open;
 * nothing is loaded, and the command is not retried).
 */
MAINT_COMMAND_ALONE(WR_SWITCH_TABLES_1, maint_wr_switch_tables_1)
MAINT_COMMAND_ALONE(WR_SWITCH_TABLES_2, maint_wr_switch_tables_2)

#endif
