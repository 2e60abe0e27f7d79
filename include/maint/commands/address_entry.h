/*
 * The address entries of peers: one 4-byte value and a set of four 4-byte values for each
 * identifier of 1..30. All on /dev/fpga.
 *
 * Each command takes the appliance's own identifier beside the identifier it asks for. Equal, they
 * stand for the appliance's own entry, which the device keeps apart from the table of the others.
 * Any own identifier is accepted.
 *
 * Results, unless a command says otherwise: 0; -1 device not opened; -2 read request failed (RD);
 * -4 write request failed (WR); -5 identifier outside 1..30. A failed report leaves the numbers as
 * they were; the bytes of the own entry are filled by the driver itself.
 */
#ifndef MAINT_COMMANDS_ADDRESS_ENTRY_H
#define MAINT_COMMANDS_ADDRESS_ENTRY_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_ADDR_ENTRY (0x002E): own_id and id in, bytes and number out.
 * WR_ADDR_ENTRY (0x002F), in: own_id, id and bytes.
 * WR_ADDR_ENTRY_VALUE (0x0030), in: own_id, id and bytes. The bytes go into the table in the order
 * in which they stand, not as a number. An identifier that is the own one or outside 1..30 is no
 * error: 0 is returned and nothing is done. Cannot return -5.
 */
typedef struct AddressEntry {
    uint32_t own_id;      /* 0 */
    uint32_t id;          /* 4: 1..30 */
    uint8_t bytes[4];     /* 8: the value, most significant byte first */
    uint8_t spare_12[16]; /* 12: not touched */
    uint32_t number;      /* 28: the value as a number */
} AddressEntry;
MAINT_COMMAND(RD_ADDR_ENTRY, maint_rd_addr_entry, AddressEntry)
MAINT_COMMAND_IN(WR_ADDR_ENTRY, maint_wr_addr_entry, AddressEntry)
MAINT_COMMAND_IN(WR_ADDR_ENTRY_VALUE, maint_wr_addr_entry_value, AddressEntry)

/*
 * RD_ADDR_SET (0x0032): own_id and id in, bytes and number out. Of the own identifier, each number
 * has the first of its bytes as the LEAST significant; of any other, as the most significant.
 * WR_ADDR_SET (0x0033), in: own_id, id and bytes.
 * WR_ADDR_SET_VALUE (0x0034), in: own_id, id and bytes. As WR_ADDR_ENTRY_VALUE: bytes in the order
 * in which they stand; the own identifier, and one outside 1..30, do nothing and return 0. Cannot
 * return -5.
 */
typedef struct AddressSet {
    uint32_t own_id;     /* 0 */
    uint32_t id;         /* 4: 1..30 */
    uint8_t spare_8[4];  /* 8: not touched */
    uint8_t bytes[4][4]; /* 12: the values, most significant byte first */
    uint8_t spare_28[4]; /* 28: not touched */
    uint32_t number[4];  /* 32: the same values as numbers */
} AddressSet;
MAINT_COMMAND(RD_ADDR_SET, maint_rd_addr_set, AddressSet)
MAINT_COMMAND_IN(WR_ADDR_SET, maint_wr_addr_set, AddressSet)
MAINT_COMMAND_IN(WR_ADDR_SET_VALUE, maint_wr_addr_set_value, AddressSet)

#endif
