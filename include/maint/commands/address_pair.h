/*
 * Pairs of a 4-byte and a 6-byte address. On /dev/fpga; what they match is the driver's.
 */
#ifndef MAINT_COMMANDS_ADDRESS_PAIR_H
#define MAINT_COMMANDS_ADDRESS_PAIR_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_ADDR_PAIR (0x0106): addresses out.
 * WR_ADDR_PAIR (0x0107): all in.
 * WR_ADDR_PAIR_COPY (0x0108): the same as WR_ADDR_PAIR.
 *
 * Results: 0; -1 device not opened; -2 pair not read; -4 pair not written; -5 index above 63,
 * tested before the device is opened.
 */
typedef struct AddressPair {
    uint32_t index;       /* 0: 0..63 */
    uint8_t address[4];   /* 4 */
    uint8_t address_6[6]; /* 8 */
    uint8_t spare[2];     /* 14: not used */
} AddressPair;
MAINT_COMMAND(RD_ADDR_PAIR, maint_rd_addr_pair, AddressPair)
MAINT_COMMAND_IN(WR_ADDR_PAIR, maint_wr_addr_pair, AddressPair)
MAINT_COMMAND_IN(WR_ADDR_PAIR_COPY, maint_wr_addr_pair_copy, AddressPair)

/*
 * WR_PAIR_ENABLE (0x010B), in: any value but 0 enables both, 0 neither. Results: 0; -1 device not
 * opened; -4 request failed.
 */
MAINT_COMMAND_IN(WR_PAIR_ENABLE, maint_wr_pair_enable, uint8_t)

#endif
