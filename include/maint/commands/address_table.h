/*
 * The indexed address tables. On /dev/fpga; what they match is the device's.
 */
#ifndef MAINT_COMMANDS_ADDRESS_TABLE_H
#define MAINT_COMMANDS_ADDRESS_TABLE_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_ADDR_TABLE_ENTRY (0x005A): index and table in, the rest out but for the mask.
 * WR_ADDR_TABLE_ENTRY (0x005B): all in; parts that are not selected keep what the entry holds, and
 * the entry is marked valid.
 * WR_ADDR_TABLE_DELETE (0x005C): index and table in; the entry is cleared and marked invalid.
 *
 * Results: 0; -1 device not opened; -2 entry not read; -4 entry not written; -5 index out of its
 * table, tested before the device is opened.
 */
typedef struct AddressTableEntry {
    uint8_t index;        /* 0: 0..127 in the large table, 0..29 in the small one */
    uint8_t valid;        /* 1: setter: bit 0 address, bit 1 long address, bit 2 attribute, 0 all */
    uint8_t address[4];   /* 2 */
    uint8_t address_6[6]; /* 6 */
    uint8_t attribute;    /* 12 */
    uint8_t table;        /* 13: 0 the large table, any other value the small one */
} AddressTableEntry;
MAINT_COMMAND(RD_ADDR_TABLE_ENTRY, maint_rd_addr_table_entry, AddressTableEntry)
MAINT_COMMAND_IN(WR_ADDR_TABLE_ENTRY, maint_wr_addr_table_entry, AddressTableEntry)
MAINT_COMMAND_IN(WR_ADDR_TABLE_DELETE, maint_wr_addr_table_delete, AddressTableEntry)

#endif
