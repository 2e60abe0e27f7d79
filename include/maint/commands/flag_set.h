/*
 * The flag sets of the switch ports. On /dev/fpga; what a flag means is the driver's.
 */
#ifndef MAINT_COMMANDS_FLAG_SET_H
#define MAINT_COMMANDS_FLAG_SET_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_FLAG_SET (0x0104): flags out, each 0 or 1. Opens the device for writing.
 * WR_FLAG_SET (0x0105): all in; 1 sets a flag, any other value clears it.
 *
 * Results: 0; -1 device not opened; -2 set not read; -4 set not written; -5 another set than these,
 * tested before the device is opened.
 */
typedef struct FlagSet {
    uint8_t set;      /* 0: the switch port: 1, 2 or 4 */
    uint8_t valid;    /* 1: setter: bit n selects flag n, 0 all */
    uint8_t flags[7]; /* 2 */
} FlagSet;
MAINT_COMMAND(RD_FLAG_SET, maint_rd_flag_set, FlagSet)
MAINT_COMMAND_IN(WR_FLAG_SET, maint_wr_flag_set, FlagSet)

#endif
