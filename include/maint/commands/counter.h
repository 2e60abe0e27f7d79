/*
 * Counters, port entries, flag sets, address pairs and driver control. All on /dev/fpga; what a
 * request means is the driver's.
 *
 * Results, unless a command says otherwise: 0; -1 device not opened; -2 read request failed;
 * -4 write request failed; -5 argument out of range, tested before the device is opened.
 * Flags: 1 is set, any other value is clear; reports hold 0 or 1.
 */
#ifndef MAINT_COMMANDS_COUNTER_H
#define MAINT_COMMANDS_COUNTER_H

#include <stdint.h>

/* RD_INDEXED_WORD (0x64): value out. WR_INDEXED_WORD (0x65): all in. */
typedef struct IndexedWord {
    uint16_t index; /* 0 */
    uint16_t value; /* 2 */
} IndexedWord;

/*
 * RD_PORT_ENTRY (0x9E): value out. WR_PORT_ENTRY (0x9F): all in. The entry's address is
 * index + 8 * port, in 16 bits.
 * WR_PORT_ENTRY_RANGED (0xA6): all in; -2 for a port outside 1..29, after the device was opened.
 */
typedef struct PortEntry {
    uint16_t port;  /* 0 */
    uint16_t flag;  /* 2 */
    uint16_t index; /* 4 */
    uint16_t value; /* 6 */
} PortEntry;

/*
 * RD_PORT_MASK (0xA0): mask out.
 * WR_PORT_MASK_BIT (0xA1): port and value in, mask out; the port's bit of the device's mask is set
 * for the value 1 and cleared for any other. The record holds the new mask even when its write
 * fails.
 */
typedef struct PortMask {
    uint16_t port;  /* 0: setter only: 1..29, else -5 */
    uint16_t value; /* 2 */
    uint32_t mask;  /* 4: bit n for port n */
} PortMask;

/* RD_STATUS_BIT (0xA2). Bit 0 alone cannot be asked for. */
typedef struct StatusBit {
    uint32_t bit;    /* 0, in: 0 the whole word, 1..31 that bit, above: 0 is reported */
    uint32_t result; /* 4, out */
} StatusBit;

/* WR_STATUS_WORD (0xA3), uint16_t in. Results: -2 request failed. */

/*
 * RD_CHANNEL_WORD (0xA7): value out; with the own identifier the whole channel word of the device,
 * with another one the low 12 bits of that unit's.
 * WR_CHANNEL_WORD (0xA8): value in; ORed with the top four bits of the device's own channel word.
 * The id is not used.
 * Results: -2 any request failed, but that an own identifier that cannot be read counts as 0.
 */
typedef struct ChannelWord {
    uint16_t id;    /* 0 */
    uint16_t value; /* 2 */
} ChannelWord;

/* RD_FLAG_SET (0x104): flags out. WR_FLAG_SET (0x105): all in. */
typedef struct FlagSet {
    uint8_t set;      /* 0: 1, 2 or 4, else -5 */
    uint8_t valid;    /* 1: setter: bit n selects flag n, 0 all */
    uint8_t flags[7]; /* 2 */
} FlagSet;

/*
 * RD_ADDR_PAIR (0x106): addresses out. WR_ADDR_PAIR (0x107), WR_ADDR_PAIR_COPY (0x108): all in, and
 * both the same.
 */
typedef struct AddressPair {
    uint32_t index;       /* 0: 0..63, else -5 */
    uint8_t address[4];   /* 4 */
    uint8_t address_6[6]; /* 8 */
    uint8_t spare[2];     /* 14: not used */
} AddressPair;

/*
 * WR_PAIR_ENABLE (0x10B), uint8_t in: any value but 0 enables both.
 * RD_CONTROL_WORD (0x10C), uint16_t out, filled by the driver.
 * WR_CONTROL_BLOCK (0x10F), in: a block of the driver's own size and layout.
 * WR_CONTROL_BIT7_CLEAR (0x114), uint16_t out: reads the control word into it, clears bit 7 and
 *                               writes it from there; it stays so when the write fails.
 * WR_BYTE_ACTION (0x117), uint8_t in.
 * WR_WORD_ACTION (0x11B), uint16_t in.
 */

/* WR_KEY_BYTES (0x111), in. */
typedef struct KeyBytes {
    uint8_t number;   /* 0 */
    uint8_t bytes[4]; /* 1 */
} KeyBytes;

/* WR_PAIR_WORDS (0x119), in. */
typedef struct PairWords {
    uint32_t words[2]; /* 0 */
} PairWords;

/*
 * RD_COUNTER (0x401), RD_COUNTER_ALT (0x403): value out; a counter may restart when it is read.
 * WR_COUNTER (0x402), WR_COUNTER_ALT (0x404): all in. Results: -2 request failed.
 */
typedef struct CounterRecord {
    uint32_t index;    /* 0 */
    uint32_t value;    /* 4 */
    uint32_t selector; /* 8: 32 bytes, 33 items */
} CounterRecord;

/* WR_COUNTER_BLOCK_LARGE (0x405), in. Results: -2 request failed. */
typedef struct CounterBlockLarge {
    uint8_t bytes[160]; /* 0 */
} CounterBlockLarge;

/* WR_COUNTER_BLOCK_SMALL (0x406), in. Results: -2 request failed. */
typedef struct CounterBlockSmall {
    uint8_t bytes[68]; /* 0 */
} CounterBlockSmall;

/*
 * RD_DRIVER_STATE (0x500), uint16_t out: what the driver's request returned, a failure as well.
 * Results: 0; -1 device not opened.
 *
 * RD_EXT_STATUS_A (0x602), RD_EXT_STATUS_B (0x604), out; WR_EXT_CONTROL_A (0x603),
 * WR_EXT_CONTROL_B (0x605), in: uint16_t, filled or read by the driver. Results: -2 request failed.
 */

#endif
