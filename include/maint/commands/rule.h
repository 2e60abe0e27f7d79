/*
 * The table of rule entries, 0..127. On /dev/fpga. What a rule matches is the driver's.
 */
#ifndef MAINT_COMMANDS_RULE_H
#define MAINT_COMMANDS_RULE_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * A rule entry, 496 bytes, of which the first 38 are used.
 *
 * RD_RULE_ENTRY (0x011C): index in; the whole record out: cleared, then filled with what is present
 * in an enabled entry. Of a disabled entry only index and enabled are given, all else is 0. Opens
 * the device for writing.
 * WR_RULE_ENTRY (0x011D): all but `enabled` in; the entry is always enabled. What is absent and
 * what is present:
 *   address_a, address_b       absent when the first byte is 0; otherwise sent with the prefix as
 *                              it stands, also 0
 *   address_6_a, address_6_b   absent when all six bytes are 0
 *   value, byte_e              absent when 0
 *   word_c, word_d             absent when 0, and the companion with them
 *   class_code                 absent unless 1..4
 *   switches                   always sent
 * WR_RULE_DELETE (0x011E), in: the index alone; the entry is cleared and disabled.
 *
 * Results: 0; -1 device not opened; -2 read failed (the record stays as it was); -4 write failed;
 * -5 index above 127, tested before the device is opened.
 */
typedef struct RuleEntry {
    uint8_t index;          /* 0: 0..127; reported: the low byte of the driver's */
    uint8_t enabled;        /* 1: out: the driver's byte, any value but 0 is enabled */
    uint8_t address_a[4];   /* 2: most significant byte first */
    uint8_t address_b[4];   /* 6 */
    uint8_t address_6_a[6]; /* 10 */
    uint8_t address_6_b[6]; /* 16 */
    uint16_t value;         /* 22 */
    uint8_t class_code;     /* 24: 1..4, any other value: none; reported 0..4 */
    uint8_t byte_e;         /* 25 */
    uint8_t prefix_a;       /* 26 */
    uint8_t prefix_b;       /* 27 */
    uint16_t word_c;        /* 28 */
    uint16_t word_d;        /* 30 */
    uint8_t companion_c;    /* 32 */
    uint8_t companion_d;    /* 33 */
    uint8_t switches[4];    /* 34: any value but 0 is on; reported 0 or 1 */
    uint8_t spare[458];     /* 38: cleared by the report, not read by the setters */
} RuleEntry;
MAINT_COMMAND(RD_RULE_ENTRY, maint_rd_rule_entry, RuleEntry)
MAINT_COMMAND_IN(WR_RULE_ENTRY, maint_wr_rule_entry, RuleEntry)
MAINT_COMMAND_IN(WR_RULE_DELETE, maint_wr_rule_delete, uint8_t)

#endif
