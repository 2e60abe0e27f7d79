/*
 * The bandwidth limit of the line, as an identifier of 0..20. On /dev/fpga.
 *
 * RD_BANDWIDTH (0x000A), uint16_t out. Results: 0; -1 device not opened; -2 the PHY of port 0 or
 * the register cannot be read (nothing is stored); -3 the register holds no known value (20 is
 * stored). While port 0 is not at 100 Mb/s, identifiers 11..20 share one value and are reported
 * as 11.
 *
 * WR_BANDWIDTH (0x000B), uint16_t in. Results: 0; -1 device not opened; -2 the PHY of port 0 cannot
 * be read; -4 the register cannot be written; -5 identifier above 20.
 */
#ifndef MAINT_COMMANDS_BANDWIDTH_H
#define MAINT_COMMANDS_BANDWIDTH_H

enum { BANDWIDTH_ID_MAX = 20 };

#endif
