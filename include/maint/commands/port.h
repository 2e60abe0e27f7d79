/*
 * Commands on ports: flags, entries, mask, bits and state. All on /dev/fpga.
 *
 * Flags are 0 or 1 in reports; setters take 1 as set and any other value as clear.
 *
 * Results, unless a command says otherwise: 0; -1 device not opened; -2 read request failed;
 * -4 write request failed (setters). A failed report leaves the record as it was.
 */
#ifndef MAINT_COMMANDS_PORT_H
#define MAINT_COMMANDS_PORT_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_PORT_FLAGS (0x0008), out: flags; mask is not touched.
 * WR_PORT_FLAGS (0x0009), in. While bit 8 of the status word is set the record is ignored and the
 * word is written as 0x10F0.
 */
typedef struct PortFlags {
    uint16_t mask;     /* 0: bit n selects flag n, 0 selects all ten; setter only */
    uint8_t flags[10]; /* 2: bits 8, 1, 2, 0, 3, 4, 5, 6, 7, 12 of the port flags word */
} PortFlags;
MAINT_COMMAND(RD_PORT_FLAGS, maint_rd_port_flags, PortFlags)
MAINT_COMMAND_IN(WR_PORT_FLAGS, maint_wr_port_flags, PortFlags)

/*
 * RD_PORT_ENTRY (0x009E): value out.
 * WR_PORT_ENTRY (0x009F): all in.
 * WR_PORT_ENTRY_RANGED (0x00A6): all in; -2 for a port outside 1..29, after the device was opened.
 * The entry's address is index + 8 * port, in 16 bits.
 */
typedef struct PortEntry {
    uint16_t port;  /* 0 */
    uint16_t flag;  /* 2 */
    uint16_t index; /* 4 */
    uint16_t value; /* 6 */
} PortEntry;
MAINT_COMMAND(RD_PORT_ENTRY, maint_rd_port_entry, PortEntry)
MAINT_COMMAND_IN(WR_PORT_ENTRY, maint_wr_port_entry, PortEntry)
MAINT_COMMAND_IN(WR_PORT_ENTRY_RANGED, maint_wr_port_entry_ranged, PortEntry)

/*
 * RD_PORT_MASK (0x00A0): mask out, filled by the driver itself, also when it fails.
 * WR_PORT_MASK_BIT (0x00A1): port and value in, mask out; the port's bit of the device's mask is
 * set for the value 1 and cleared for any other. The record holds the new mask even when its write
 * fails. Further result: -5 port outside 1..29, tested before the device is opened.
 */
typedef struct PortMask {
    uint16_t port;  /* 0: setter only: 1..29 */
    uint16_t value; /* 2 */
    uint32_t mask;  /* 4: bit n for port n */
} PortMask;
MAINT_COMMAND(RD_PORT_MASK, maint_rd_port_mask, PortMask)
MAINT_COMMAND(WR_PORT_MASK_BIT, maint_wr_port_mask_bit, PortMask)

/*
 * WR_PORT_BIT_SET (0x00A4), WR_PORT_BIT_CLEAR (0x00A5), in. Ports 1..15: the port's bit of register
 * 0x005E; ports 16..29: bit port - 16 of register 0x005C.
 * Results: 0; -1 device not opened; -2 port outside 1..29 (the device was opened); -3 read failed;
 * -4 write failed.
 */
typedef struct PortBit {
    uint16_t spare[2]; /* 0 */
    uint16_t port;     /* 4 */
} PortBit;
MAINT_COMMAND_IN(WR_PORT_BIT_SET, maint_wr_port_bit_set, PortBit)
MAINT_COMMAND_IN(WR_PORT_BIT_CLEAR, maint_wr_port_bit_clear, PortBit)

/*
 * RD_PORT_STATE_CODE (0x0400). Code out, of bits of the port's entry (RD_PORT_ENTRY with flag and
 * index 0): 0 the port is not in bitmap E (RD_DEVICE_WORD_3B), or a reading failed; 2 any of bits
 * 13..15; with bit 12 alone of these, by bits 9 and 8: 00 gives 1, 01 gives 3, 11 gives 4. In every
 * other case the code is not written: preset it (a first run that fails and is repeated has written
 * 0).
 * Results: 0; -1 a reading failed.
 */
typedef struct PortStateCode {
    uint16_t port; /* 0, in: 0..31; its low byte is the number of its bit, above 31 there is none */
    uint16_t code; /* 2, out */
} PortStateCode;
MAINT_COMMAND(RD_PORT_STATE_CODE, maint_rd_port_state_code, PortStateCode)

#endif
