/*
 * The bandwidth limit of the line, as an identifier of 0..20; its unit is the device's. On
 * /dev/fpga. Both commands read the PHY of port 0 first, as RD_PHY_STATUS does, and then open the
 * device again.
 *
 * RD_BANDWIDTH (0x000A), uint16_t out. Results: 0; -1 device not opened after the PHY has been
 * read; -2 the PHY (its opening included) or the register cannot be read; -3 the register holds no
 * known value (20 is stored). Nothing is stored with -1 and -2. While port 0 is not at 100 Mb/s,
 * identifiers 11..20 share one value and are reported as 11.
 *
 * WR_BANDWIDTH (0x000B), uint16_t in. Results: 0; -1 device not opened after the PHY has been read;
 * -2 the PHY cannot be read (its opening included); -4 the register cannot be written; -5
 * identifier above 20, nothing is touched.
 */
#ifndef MAINT_COMMANDS_BANDWIDTH_H
#define MAINT_COMMANDS_BANDWIDTH_H

enum { BANDWIDTH_ID_MAX = 20 };

#endif
