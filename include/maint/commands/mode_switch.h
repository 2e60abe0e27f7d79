/*
 * The mode switch. On /dev/fpga; what the mode means is the device's.
 */
#ifndef MAINT_COMMANDS_MODE_SWITCH_H
#define MAINT_COMMANDS_MODE_SWITCH_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_MODE_SWITCH (0x008E), out: 1 when bits 0 and 1 of the group word (that of RD_GROUP_FLAG) are
 * clear, bits 0, 1 and 2 of register 0x0114 set and bits 0 and 2 of register 0x0158 set; otherwise
 * 0. Results: 0; -1 device not opened; -2 word or register not read (nothing is stored).
 *
 * WR_MODE_SWITCH (0x008F), in: 1 gives these bits the values above, any other value the opposite
 * ones. Word and registers are written in this order; a failed write ends the command, and what was
 * written before stays. Results: 0; -1 device not opened; -2 word or register not read; -4 word or
 * register not written.
 */
MAINT_COMMAND(RD_MODE_SWITCH, maint_rd_mode_switch, uint16_t)
MAINT_COMMAND_IN(WR_MODE_SWITCH, maint_wr_mode_switch, uint16_t)

#endif
