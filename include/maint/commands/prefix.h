/*
 * The two address and prefix sets. On /dev/fpga; what they match is the device's.
 */
#ifndef MAINT_COMMANDS_PREFIX_H
#define MAINT_COMMANDS_PREFIX_H

#include <stdint.h>

#include "maint/typed_call.h"

/* One address with its prefix length, 8 bytes. */
typedef struct PrefixSet {
    uint8_t valid;      /* 0: setter: bit 0 address, bit 1 length, 0 both */
    uint8_t spare;      /* 1 */
    uint8_t address[4]; /* 2: most significant byte first */
    uint16_t length;    /* 6: 0..32 */
} PrefixSet;

/*
 * RD_PREFIX0_LENGTH (0x005E), out: the length of set 0 and nothing else.
 * RD_PREFIX1 (0x0060), out: address and length of set 1.
 * WR_PREFIX0 (0x005F), WR_PREFIX1 (0x0061), in: set 0 or set 1. The set is read first; then the
 * selected parts are written, and if there was one the set's commit bit (bit 0 or 1 of register
 * 0x0114) is set. Parts written before a failed one stay written.
 * A mask that is not contiguous is reported with the length of its leading ones.
 *
 * Results: 0; -1 device not opened; -2 a register not read; -3 a selected length above 32 (nothing
 * is written); -4 a register not written.
 */
typedef struct PrefixMap {
    PrefixSet set0; /* 0: registers 0x0100..0x0106 */
    PrefixSet set1; /* 8: registers 0x0108..0x010E */
} PrefixMap;
MAINT_COMMAND(RD_PREFIX0_LENGTH, maint_rd_prefix0_length, PrefixMap)
MAINT_COMMAND(RD_PREFIX1, maint_rd_prefix1, PrefixMap)
MAINT_COMMAND_IN(WR_PREFIX0, maint_wr_prefix0, PrefixMap)
MAINT_COMMAND_IN(WR_PREFIX1, maint_wr_prefix1, PrefixMap)

#endif
