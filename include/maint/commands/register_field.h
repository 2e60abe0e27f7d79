/*
 * Fields of the FPGA's 16-bit registers. All on /dev/fpga. What a field controls is the device's.
 *
 * Setters read the register, change their own bits and write it back; a setter of whole registers
 * writes without reading, and says so. Valid masks: bit n selects field n, 0 selects all. Where
 * several registers are written, those before a failed one stay written.
 *
 * Results, unless a command says otherwise: 0; -1 device not opened; -2 read failed; -4 write
 * failed; -5 argument out of range, tested before the device is opened.
 */
#ifndef MAINT_COMMANDS_REGISTER_FIELD_H
#define MAINT_COMMANDS_REGISTER_FIELD_H

#include <stdint.h>

/*
 * One bit. Reports hold 0 or 1; setters set the bit for 1 and clear it for any other value.
 *
 *   uint8_t, register 0x158:
 *     RD_/WR_REG158_BIT0 (0x86/0x87), _BIT1 (0x84/0x85), _BIT2 (0x82/0x83), _BIT3 (0x80/0x81),
 *     _BIT4 (0x7E/0x7F), _BIT5 (0x90/0x91), _BIT6 (0x72/0x73), _BIT7 (0x74/0x75),
 *     _BIT10 (0xAA/0xAB), _BIT14 (0x78/0x79), _BIT15 (0x76/0x77)
 *     RD_REG158_BIT8 (0x7C), report only: 0x7D is no command
 *   uint16_t, bit 0 of 0x11E and of 0x1B4:
 *     RD_/WR_REG11E_BIT0 (0x92/0x93), RD_/WR_REG1B4_BIT0 (0x606/0x607)
 *
 * A number, uint16_t.
 *   RD_/WR_REG132_VALUE (0x58/0x59)   bits 0..6 of 0x132, above 127: -5
 *   RD_/WR_REG168_VALUE (0x6E/0x6F)   bits 0..7 of 0x168, above 255: -5
 *   RD_/WR_REGFE_NIBBLE (0x9A/0x9B)   bits 0..3 of 0xFE, the value's higher bits are ignored
 *
 * A state.
 *   RD_/WR_REG158_STATE (0x7A/0x7B)   uint8_t, bits 12 and 13 of 0x158: 2 sets bit 13 alone,
 *                                     1 bit 12 alone, any other value neither; reported 2 with
 *                                     bit 13 set, else bit 12
 *   RD_/WR_REGFE_MODE (0x98/0x99)     uint16_t, bits 0..3 of 0xFE: 1 writes 8, 2 writes 0, any
 *                                     other value 15; 8 is reported as 1, 0..2 as 2, else 0
 *   RD_/WR_REG16C_ENABLE (0xAC/0xAD)  uint8_t, bits 0 and 1 of 0x16C: 1 clears both, any other
 *                                     value sets both; reported 1 with both clear, else 0
 */

/*
 * RD_REG110_BYTES (0x62), out. WR_REG110_BYTES (0x63), in: writes both registers whole, without
 * reading them, then sets bit 2 of 0x114 (-2: 0x114 cannot be read).
 */
typedef struct Reg110Bytes {
    uint8_t bytes[4]; /* 0: high and low byte of 0x110, high and low byte of 0x112 */
} Reg110Bytes;

/* RD_REGF4_FLAGS (0x68), out. */
typedef struct RegF4Flags {
    uint8_t flags[8]; /* 0: bits 7, 6 .. 0 of 0xF4, each 0 or 1 */
} RegF4Flags;

/* RD_REG168_MODE (0x6A), uint16_t out: bits 12 and 13 of 0x168, 0 reported as 4. */

/*
 * WR_REG168_MODE (0x6B). A non-zero bracket clears bit 6 of 0x158 before (as WR_REG158_BIT6, whose
 * failure is returned) and sets it after a successful write (whose failure is not). Mode 4 is
 * overwritten with 0 in the record, so that the second run after a failure returns -5.
 */
typedef struct Reg168Mode {
    uint16_t mode;    /* 0: 1..4, else -5 */
    uint16_t bracket; /* 2 */
} Reg168Mode;

/*
 * RD_REG168_SELECT (0x6C), WR_REG168_SELECT (0x6D): bit 8 + index of 0x168; 1 sets it, any other
 * value clears it, reported 0 or 1.
 */
typedef struct Reg168Select {
    uint16_t index; /* 0, in: 0..3, else -5 */
    uint16_t value; /* 2 */
} Reg168Select;

/*
 * RD_REG16A_BLOCK (0x70): index in, flags and data out. WR_REG16A_BLOCK (0x71): all in. Both write
 * the index to bits 0 and 1 of 0x16A first, which selects the block and stays so when a later step
 * fails; so the report opens the device for writing and can return -4, too. Data registers are
 * written whole, without reading them. Flags: 1 sets, any other value clears, reported 0 or 1.
 */
typedef struct Reg16ABlock {
    uint16_t index;  /* 0: 0..3, else -5 */
    uint8_t valid;   /* 2: setter: bit 0 flag A, bit 1 flag B, bit 2 data */
    uint8_t flag_a;  /* 3: bit 1 of 0x166 */
    uint8_t flag_b;  /* 4: bit 0 of 0x166 */
    uint8_t spare;   /* 5 */
    uint8_t data[6]; /* 6: high and low bytes of 0x160, 0x162, 0x164 */
} Reg16ABlock;

/*
 * RD_REG15A_FIELDS (0x88): a and b out. WR_REG15A_FIELDS (0x89): all in. Writing a clears
 * bits 8..12 and writing b clears bits 0..4. Nothing is written when the mask selects neither.
 */
typedef struct Reg15AFields {
    uint8_t valid; /* 0: setter: bit 0 a, bit 1 b */
    uint8_t spare; /* 1 */
    uint8_t a;     /* 2: bits 13..15 of 0x15A; the setter uses its low 3 bits */
    uint8_t b;     /* 3: bits 5..12; the setter drives bits 5..7 only */
} Reg15AFields;

/*
 * RD_REG15C_PAIR (0x8A): a and b out. WR_REG15C_PAIR (0x8B): all in; whole registers, so that it
 * cannot return -2.
 */
typedef struct Reg15CPair {
    uint8_t valid; /* 0: setter: bit 0 a, bit 1 b */
    uint8_t spare; /* 1 */
    uint16_t a;    /* 2: register 0x15E */
    uint16_t b;    /* 4: register 0x15C */
} Reg15CPair;

/*
 * WR_PORT_BIT_SET (0xA4), WR_PORT_BIT_CLEAR (0xA5), in. Ports 1..15: the port's bit of 0x5E; ports
 * 16..29: bit port - 16 of 0x5C.
 * Results: 0; -1 device not opened; -2 port outside 1..29 (the device was opened); -3 read failed;
 * -4 write failed.
 */
typedef struct PortBit {
    uint16_t spare[2]; /* 0 */
    uint16_t port;     /* 4 */
} PortBit;

/*
 * RD_REGISTER (0x122): value out. WR_REGISTER (0x123): value in, written without reading. Any
 * address. Results: 0; -1 device not opened; -2 read failed, or write failed.
 */
typedef struct RegisterValue {
    uint32_t address; /* 0 */
    uint16_t value;   /* 4 */
    uint16_t spare;   /* 6 */
} RegisterValue;

#endif
