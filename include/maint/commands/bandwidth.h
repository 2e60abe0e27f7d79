/*
 * The bandwidth limit of the line. On /dev/fpga. A limit is an identifier of 0..20 that stands for
 * a value of register 0x0012. Which value, depends on the PHY of port 0: at 100 Mb/s or not.
 *
 *   identifier          0     1     2    3    4    5    6    7   8   9  10
 *   register        21333 12800  6400 3200 2133 1600 1280 1066 914 800 711
 *
 *   identifier         11    12    13   14   15   16   17   18  19  20
 *   at 100 Mb/s       640   320   213  160  128  106   91   80  71  64
 *   otherwise         640   640   640  640  640  640  640  640 640 640
 *
 * Each value is 64000 / n, without its fraction, for n = 3, 5, 10, 20, 30 .. 100, 200, 300 .. 1000.
 * A smaller value stands for a higher limit; its unit is the device's.
 *
 * Both commands open the device for writing, read the PHY of port 0 as RD_PHY_STATUS does, close
 * the device and open it again. If there is no device, the first opening fails, which is -2 here.
 */
#ifndef MAINT_COMMANDS_BANDWIDTH_H
#define MAINT_COMMANDS_BANDWIDTH_H

#include <stdint.h>

#include "maint/typed_call.h"

enum { BANDWIDTH_ID_MAX = 20 };

/*
 * RD_BANDWIDTH (0x000A), out: the first identifier that has the register's value. While port 0 is
 * not at 100 Mb/s, identifiers 12..20 come back as 11.
 * Results: 0; -1 device not opened after the PHY has been read; -2 the PHY (its opening included)
 * or the register cannot be read; -3 the register holds no value of the row that applies now, and
 * 20 is stored (also when one of 12..20 was set at 100 Mb/s and the PHY is slower now). Nothing
 * is stored with -1 and -2. Only if the first run of a failed command ended with -3, 20 has been
 * stored.
 *
 * WR_BANDWIDTH (0x000B), in.
 * Results: 0; -1 device not opened after the PHY has been read; -2 the PHY cannot be read (its
 * opening included); -4 the register cannot be written; -5 identifier above 20, nothing is touched.
 */
MAINT_COMMAND(RD_BANDWIDTH, maint_rd_bandwidth, uint16_t)
MAINT_COMMAND_IN(WR_BANDWIDTH, maint_wr_bandwidth, uint16_t)

#endif
