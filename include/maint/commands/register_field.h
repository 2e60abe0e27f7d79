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

#include "maint/typed_call.h"

/*
 * One bit. Reports hold 0 or 1; setters set the bit for 1 and clear it for any other value, so that
 * they never return -5.
 *
 *   register 0x0158:
 *     RD_REG158_BIT0 (0x0086)   WR_REG158_BIT0 (0x0087)   bit 0
 *     RD_REG158_BIT1 (0x0084)   WR_REG158_BIT1 (0x0085)   bit 1
 *     RD_REG158_BIT2 (0x0082)   WR_REG158_BIT2 (0x0083)   bit 2
 *     RD_REG158_BIT3 (0x0080)   WR_REG158_BIT3 (0x0081)   bit 3
 *     RD_REG158_BIT4 (0x007E)   WR_REG158_BIT4 (0x007F)   bit 4
 *     RD_REG158_BIT5 (0x0090)   WR_REG158_BIT5 (0x0091)   bit 5
 *     RD_REG158_BIT6 (0x0072)   WR_REG158_BIT6 (0x0073)   bit 6
 *     RD_REG158_BIT7 (0x0074)   WR_REG158_BIT7 (0x0075)   bit 7
 *     RD_REG158_BIT8 (0x007C)   0x007D is no command      bit 8
 *     RD_REG158_BIT10 (0x00AA)  WR_REG158_BIT10 (0x00AB)  bit 10
 *     RD_REG158_BIT14 (0x0078)  WR_REG158_BIT14 (0x0079)  bit 14
 *     RD_REG158_BIT15 (0x0076)  WR_REG158_BIT15 (0x0077)  bit 15
 *   other registers:
 *     RD_REG44_FLAG (0x009C)    WR_REG44_FLAG (0x009D)    bit 0 of 0x0044
 *     RD_REG11E_BIT0 (0x0092)   WR_REG11E_BIT0 (0x0093)   bit 0 of 0x011E
 *     RD_REG1B4_BIT0 (0x0606)   WR_REG1B4_BIT0 (0x0607)   bit 0 of 0x01B4
 */
MAINT_COMMAND(RD_REG158_BIT0, maint_rd_reg158_bit0, uint8_t)
MAINT_COMMAND_IN(WR_REG158_BIT0, maint_wr_reg158_bit0, uint8_t)
MAINT_COMMAND(RD_REG158_BIT1, maint_rd_reg158_bit1, uint8_t)
MAINT_COMMAND_IN(WR_REG158_BIT1, maint_wr_reg158_bit1, uint8_t)
MAINT_COMMAND(RD_REG158_BIT2, maint_rd_reg158_bit2, uint8_t)
MAINT_COMMAND_IN(WR_REG158_BIT2, maint_wr_reg158_bit2, uint8_t)
MAINT_COMMAND(RD_REG158_BIT3, maint_rd_reg158_bit3, uint8_t)
MAINT_COMMAND_IN(WR_REG158_BIT3, maint_wr_reg158_bit3, uint8_t)
MAINT_COMMAND(RD_REG158_BIT4, maint_rd_reg158_bit4, uint8_t)
MAINT_COMMAND_IN(WR_REG158_BIT4, maint_wr_reg158_bit4, uint8_t)
MAINT_COMMAND(RD_REG158_BIT5, maint_rd_reg158_bit5, uint8_t)
MAINT_COMMAND_IN(WR_REG158_BIT5, maint_wr_reg158_bit5, uint8_t)
MAINT_COMMAND(RD_REG158_BIT6, maint_rd_reg158_bit6, uint8_t)
MAINT_COMMAND_IN(WR_REG158_BIT6, maint_wr_reg158_bit6, uint8_t)
MAINT_COMMAND(RD_REG158_BIT7, maint_rd_reg158_bit7, uint8_t)
MAINT_COMMAND_IN(WR_REG158_BIT7, maint_wr_reg158_bit7, uint8_t)
MAINT_COMMAND(RD_REG158_BIT8, maint_rd_reg158_bit8, uint8_t)
MAINT_COMMAND(RD_REG158_BIT10, maint_rd_reg158_bit10, uint8_t)
MAINT_COMMAND_IN(WR_REG158_BIT10, maint_wr_reg158_bit10, uint8_t)
MAINT_COMMAND(RD_REG158_BIT14, maint_rd_reg158_bit14, uint8_t)
MAINT_COMMAND_IN(WR_REG158_BIT14, maint_wr_reg158_bit14, uint8_t)
MAINT_COMMAND(RD_REG158_BIT15, maint_rd_reg158_bit15, uint8_t)
MAINT_COMMAND_IN(WR_REG158_BIT15, maint_wr_reg158_bit15, uint8_t)
MAINT_COMMAND(RD_REG44_FLAG, maint_rd_reg44_flag, uint16_t)
MAINT_COMMAND_IN(WR_REG44_FLAG, maint_wr_reg44_flag, uint16_t)
MAINT_COMMAND(RD_REG11E_BIT0, maint_rd_reg11e_bit0, uint16_t)
MAINT_COMMAND_IN(WR_REG11E_BIT0, maint_wr_reg11e_bit0, uint16_t)
MAINT_COMMAND(RD_REG1B4_BIT0, maint_rd_reg1b4_bit0, uint16_t)
MAINT_COMMAND_IN(WR_REG1B4_BIT0, maint_wr_reg1b4_bit0, uint16_t)

/*
 * A number.
 *     RD_REG132_VALUE (0x0058)  WR_REG132_VALUE (0x0059)  bits 0..6 of 0x0132, above 127: -5
 *     RD_REG168_VALUE (0x006E)  WR_REG168_VALUE (0x006F)  bits 0..7 of 0x0168, above 255: -5
 *     RD_REGFE_NIBBLE (0x009A)  WR_REGFE_NIBBLE (0x009B)  bits 0..3 of 0x00FE, the value's higher
 *                                                         bits are ignored
 */
MAINT_COMMAND(RD_REG132_VALUE, maint_rd_reg132_value, uint16_t)
MAINT_COMMAND_IN(WR_REG132_VALUE, maint_wr_reg132_value, uint16_t)
MAINT_COMMAND(RD_REG168_VALUE, maint_rd_reg168_value, uint16_t)
MAINT_COMMAND_IN(WR_REG168_VALUE, maint_wr_reg168_value, uint16_t)
MAINT_COMMAND(RD_REGFE_NIBBLE, maint_rd_regfe_nibble, uint16_t)
MAINT_COMMAND_IN(WR_REGFE_NIBBLE, maint_wr_regfe_nibble, uint16_t)

/*
 * A state.
 *     RD_REG158_STATE (0x007A)  WR_REG158_STATE (0x007B)  bits 12 and 13 of 0x0158: 2 sets bit 13
 *                       alone, 1 bit 12 alone, any other value neither; reported 2 with bit 13 set,
 *                       else bit 12
 *     RD_REGFE_MODE (0x0098)    WR_REGFE_MODE (0x0099)    bits 0..3 of 0x00FE: 1 writes 8, 2 writes
 *                       0, any other value 15; 8 is reported as 1, 0..2 as 2, else 0
 *     RD_REG16C_ENABLE (0x00AC) WR_REG16C_ENABLE (0x00AD) bits 0 and 1 of 0x016C: 1 clears both,
 *                       any other value sets both; reported 1 with both clear, else 0
 */
MAINT_COMMAND(RD_REG158_STATE, maint_rd_reg158_state, uint8_t)
MAINT_COMMAND_IN(WR_REG158_STATE, maint_wr_reg158_state, uint8_t)
MAINT_COMMAND(RD_REGFE_MODE, maint_rd_regfe_mode, uint16_t)
MAINT_COMMAND_IN(WR_REGFE_MODE, maint_wr_regfe_mode, uint16_t)
MAINT_COMMAND(RD_REG16C_ENABLE, maint_rd_reg16c_enable, uint8_t)
MAINT_COMMAND_IN(WR_REG16C_ENABLE, maint_wr_reg16c_enable, uint8_t)

/*
 * RD_REG110_BYTES (0x0062), out.
 * WR_REG110_BYTES (0x0063), in: writes both registers whole, without reading them, then sets bit 2
 * of 0x0114 (-2: 0x0114 cannot be read).
 */
typedef struct Reg110Bytes {
    uint8_t bytes[4]; /* 0: high and low byte of 0x0110, high and low byte of 0x0112 */
} Reg110Bytes;
MAINT_COMMAND(RD_REG110_BYTES, maint_rd_reg110_bytes, Reg110Bytes)
MAINT_COMMAND_IN(WR_REG110_BYTES, maint_wr_reg110_bytes, Reg110Bytes)

/* RD_REGF4_FLAGS (0x0068), out. */
typedef struct RegF4Flags {
    uint8_t flags[8]; /* 0: bits 7, 6 .. 0 of 0x00F4, each 0 or 1 */
} RegF4Flags;
MAINT_COMMAND(RD_REGF4_FLAGS, maint_rd_regf4_flags, RegF4Flags)

/* RD_REG168_MODE (0x006A), out: bits 12 and 13 of 0x0168, 0 reported as 4. */
MAINT_COMMAND(RD_REG168_MODE, maint_rd_reg168_mode, uint16_t)

/*
 * WR_REG168_MODE (0x006B), in. A non-zero bracket clears bit 6 of 0x0158 before (as the one-bit
 * setter above does, whose failure is returned) and sets it after a successful write (whose failure
 * is not); a failure between the two leaves it clear. Mode 4 is overwritten with 0 in the record,
 * so that the second run after a failure returns -5.
 */
typedef struct Reg168Mode {
    uint16_t mode;    /* 0: 1..4, else -5 */
    uint16_t bracket; /* 2 */
} Reg168Mode;
MAINT_COMMAND(WR_REG168_MODE, maint_wr_reg168_mode, Reg168Mode)

/*
 * RD_REG168_SELECT (0x006C): index in, value out.
 * WR_REG168_SELECT (0x006D): all in.
 * Bit 8 + index of 0x0168; 1 sets it, any other value clears it, reported 0 or 1.
 */
typedef struct Reg168Select {
    uint16_t index; /* 0, in: 0..3, else -5 */
    uint16_t value; /* 2 */
} Reg168Select;
MAINT_COMMAND(RD_REG168_SELECT, maint_rd_reg168_select, Reg168Select)
MAINT_COMMAND_IN(WR_REG168_SELECT, maint_wr_reg168_select, Reg168Select)

/*
 * RD_REG15A_FIELDS (0x0088): a and b out.
 * WR_REG15A_FIELDS (0x0089): all in. Writing a clears bits 8..12 and writing b clears bits 0..4.
 * Nothing is written when the mask selects neither.
 */
typedef struct Reg15AFields {
    uint8_t valid; /* 0: setter: bit 0 a, bit 1 b */
    uint8_t spare; /* 1 */
    uint8_t a;     /* 2: bits 13..15 of 0x015A; the setter uses its low 3 bits */
    uint8_t b;     /* 3: bits 5..12; the setter drives bits 5..7 only */
} Reg15AFields;
MAINT_COMMAND(RD_REG15A_FIELDS, maint_rd_reg15a_fields, Reg15AFields)
MAINT_COMMAND_IN(WR_REG15A_FIELDS, maint_wr_reg15a_fields, Reg15AFields)

/*
 * RD_REG15C_PAIR (0x008A): a and b out.
 * WR_REG15C_PAIR (0x008B): all in; whole registers, so that it cannot return -2.
 */
typedef struct Reg15CPair {
    uint8_t valid; /* 0: setter: bit 0 a, bit 1 b */
    uint8_t spare; /* 1 */
    uint16_t a;    /* 2: register 0x015E */
    uint16_t b;    /* 4: register 0x015C */
} Reg15CPair;
MAINT_COMMAND(RD_REG15C_PAIR, maint_rd_reg15c_pair, Reg15CPair)
MAINT_COMMAND_IN(WR_REG15C_PAIR, maint_wr_reg15c_pair, Reg15CPair)

#endif
