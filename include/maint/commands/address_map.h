/*
 * Addresses, prefixes and small tables in the FPGA. All on /dev/fpga. What they match is the
 * device's.
 *
 * Valid masks count for setters: bit n selects part n, 0 selects all. Parts written before a failed
 * one stay written.
 *
 * Results, unless a command says otherwise: 0; -1 device not opened; -2 read failed; -4 write
 * failed; -5 argument out of range.
 */
#ifndef MAINT_COMMANDS_ADDRESS_MAP_H
#define MAINT_COMMANDS_ADDRESS_MAP_H

#include <stdint.h>

/* One address with its prefix length, 8 bytes. */
typedef struct PrefixSet {
    uint8_t valid;      /* 0: bit 0 address, bit 1 length */
    uint8_t spare;      /* 1 */
    uint8_t address[4]; /* 2: most significant byte first */
    uint16_t length;    /* 6: 0..32 */
} PrefixSet;

/*
 * RD_PREFIX0_LENGTH (0x5E), out: the length of set 0 and nothing else.
 * RD_PREFIX1 (0x60), out: address and length of set 1.
 * WR_PREFIX0 (0x5F), WR_PREFIX1 (0x61), in: set 0 or set 1. The set is read first; then the
 * selected parts are written, and if there was one the set's commit bit (bit 0 or 1 of register
 * 0x114) is set.
 * A mask that is not contiguous is reported with the length of its leading ones.
 * Results: also -3, a selected length above 32 (nothing is written).
 */
typedef struct PrefixMap {
    PrefixSet set0; /* 0: registers 0x100..0x106 */
    PrefixSet set1; /* 8: registers 0x108..0x10E */
} PrefixMap;

/*
 * RD_ADDR_TABLE_ENTRY (0x5A): index and table in, the rest out but for the mask.
 * WR_ADDR_TABLE_ENTRY (0x5B): all in; parts that are not selected keep what the entry holds, and
 * the entry is marked valid.
 * WR_ADDR_TABLE_DELETE (0x5C): index and table in; the entry is cleared and marked invalid.
 * Results: -5 index out of its table, tested before the device is opened.
 */
typedef struct AddressTableEntry {
    uint8_t index;        /* 0: 0..127 in the large table, 0..29 in the small one */
    uint8_t valid;        /* 1: bit 0 address, bit 1 long address, bit 2 attribute */
    uint8_t address[4];   /* 2 */
    uint8_t address_6[6]; /* 6 */
    uint8_t attribute;    /* 12 */
    uint8_t table;        /* 13: 0 the large table, any other value the small one */
} AddressTableEntry;

/*
 * RD_REGE0_BLOCK (0x66), out but for the mask. WR_REGE0_BLOCK (0x67), in; the block is read first.
 * Results: -5 a field is out of range: 0xF2 is not written, found only after everything before it
 * has been written.
 */
typedef struct RegE0Block {
    uint8_t valid;      /* 0: bits 0..6 select the seven fields below, in order */
    uint8_t enable;     /* 1: report: bit 0 of 0xF0; setter: 1 sets bits 0..2, else clears them */
    uint8_t address[6]; /* 2: 0xE0, 0xE2, 0xE4, high byte first */
    uint16_t word;      /* 8: 0xE6 */
    uint8_t spare[2];   /* 10 */
    uint32_t first;     /* 12: 0xE8 high half, 0xEA low half */
    uint32_t second;    /* 16: 0xEC high half, 0xEE low half */
    uint8_t field_3;    /* 20: bits 8..10 of 0xF2, 0..7 */
    uint8_t field_5;    /* 21: bits 0..4 of 0xF2, 0..31 */
    uint8_t end[2];     /* 22: not used */
} RegE0Block;

/* RD_REG16E_BLOCK (0x8C), out but for the mask. WR_REG16E_BLOCK (0x8D), in; read first. */
typedef struct Reg16EBlock {
    uint8_t valid;     /* 0: bit 0 flag A, bit 1 flag B, bit 2 first, bit 3 second */
    uint8_t spare;     /* 1 */
    uint8_t flag_a;    /* 2: bit 0 of 0x16E; 1 sets it, any other value clears it */
    uint8_t flag_b;    /* 3: bit 1 of 0x16E */
    uint8_t first[4];  /* 4: 0x170, 0x172, high byte first */
    uint8_t second[4]; /* 8: 0x174, 0x176 */
} Reg16EBlock;

#endif
