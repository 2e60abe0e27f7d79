/*
 * Entries of peer identifiers. All on /dev/fpga, which the reports open for writing, too; what the
 * fields mean is the device's.
 *
 * Results, unless a command says otherwise: 0; -1 device not opened; -2 read request failed;
 * -4 write request failed (setters). A failed report stores nothing.
 */
#ifndef MAINT_COMMANDS_ID_ENTRY_H
#define MAINT_COMMANDS_ID_ENTRY_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_ID_ENTRY (0x0052), in: id, field_b and field_c. Confirms that the identifier's entry can be
 * read, and that the CALLER's fields are in range; the entry read is not handed out and the record
 * is not touched. Further results: -3 the entry was read, but the record's field_b is above 4095 or
 * its field_c above 7; -5 identifier outside 1..30.
 *
 * WR_ID_ENTRY (0x0053), in. Changes the selected fields of the entry. Further result: -5 identifier
 * outside 1..30 (the device is not opened), or a selected field_b or field_c out of range (the
 * entry was read, nothing is written). A field that is not selected may hold anything.
 */
typedef struct IdEntry {
    uint16_t id;      /* 0: 1..30 */
    uint8_t mask;     /* 2: bit 0 field_a, bit 1 field_b, bit 2 field_c, 0 all; setter only */
    uint8_t spare_3;  /* 3: not used */
    uint16_t field_a; /* 4 */
    uint16_t field_b; /* 6: 0..4095 */
    uint16_t field_c; /* 8: 0..7 */
} IdEntry;
MAINT_COMMAND_IN(RD_ID_ENTRY, maint_rd_id_entry, IdEntry)
MAINT_COMMAND_IN(WR_ID_ENTRY, maint_wr_id_entry, IdEntry)

/*
 * RD_ID_ENTRY_VALUE (0x0054): own_id and id in, value out. Further results: -3 the identifier is
 * set in the device's bitmap D or clear in bitmap E; -5 identifier outside 1..30, or the own one.
 */
typedef struct IdEntryValue {
    uint16_t own_id; /* 0 */
    uint16_t id;     /* 2: 1..30 */
    uint16_t value;  /* 4 */
} IdEntryValue;
MAINT_COMMAND(RD_ID_ENTRY_VALUE, maint_rd_id_entry_value, IdEntryValue)

#endif
