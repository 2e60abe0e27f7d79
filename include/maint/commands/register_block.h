/*
 * Blocks of the FPGA's 16-bit registers. All on /dev/fpga; what they hold is the device's.
 *
 * Valid masks count for setters: bit n selects part n, 0 selects all. Parts written before a failed
 * one stay written.
 *
 * Results, unless a command says otherwise: 0; -1 device not opened; -2 a register not read;
 * -4 a register not written; -5 argument out of range.
 */
#ifndef MAINT_COMMANDS_REGISTER_BLOCK_H
#define MAINT_COMMANDS_REGISTER_BLOCK_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_REGE0_BLOCK (0x0066), out but for the mask.
 * WR_REGE0_BLOCK (0x0067), in; the block is read first. Results: -5 a field is out of range: 0x00F2
 * is not written, found only after everything before it has been written.
 */
typedef struct RegE0Block {
    uint8_t valid;      /* 0: bits 0..6 select the seven fields below, in order */
    uint8_t enable;     /* 1: report: bit 0 of 0x00F0; setter: 1 sets bits 0..2, else clears them */
    uint8_t address[6]; /* 2: 0x00E0, 0x00E2, 0x00E4, high byte first */
    uint16_t word;      /* 8: 0x00E6 */
    uint8_t spare[2];   /* 10 */
    uint32_t first;     /* 12: 0x00E8 high half, 0x00EA low half */
    uint32_t second;    /* 16: 0x00EC high half, 0x00EE low half */
    uint8_t field_3;    /* 20: bits 8..10 of 0x00F2, 0..7 */
    uint8_t field_5;    /* 21: bits 0..4 of 0x00F2, 0..31 */
    uint8_t end[2];     /* 22: not used */
} RegE0Block;
MAINT_COMMAND(RD_REGE0_BLOCK, maint_rd_rege0_block, RegE0Block)
MAINT_COMMAND_IN(WR_REGE0_BLOCK, maint_wr_rege0_block, RegE0Block)

/*
 * RD_REG16A_BLOCK (0x0070): index in, flags and data out.
 * WR_REG16A_BLOCK (0x0071): all in.
 * Both write the index to bits 0 and 1 of 0x016A first, which selects the block and stays so when a
 * later step fails; so the report opens the device for writing and can return -4, too. Data
 * registers are written whole, without reading them. Flags: 1 sets, any other value clears,
 * reported 0 or 1. An index out of range is found before the device is opened.
 */
typedef struct Reg16ABlock {
    uint16_t index;  /* 0: 0..3, else -5 */
    uint8_t valid;   /* 2: setter: bit 0 flag A, bit 1 flag B, bit 2 data */
    uint8_t flag_a;  /* 3: bit 1 of 0x0166 */
    uint8_t flag_b;  /* 4: bit 0 of 0x0166 */
    uint8_t spare;   /* 5 */
    uint8_t data[6]; /* 6: high and low bytes of 0x0160, 0x0162, 0x0164 */
} Reg16ABlock;
MAINT_COMMAND(RD_REG16A_BLOCK, maint_rd_reg16a_block, Reg16ABlock)
MAINT_COMMAND_IN(WR_REG16A_BLOCK, maint_wr_reg16a_block, Reg16ABlock)

/*
 * RD_REG16E_BLOCK (0x008C), out but for the mask.
 * WR_REG16E_BLOCK (0x008D), in; the block is read first.
 */
typedef struct Reg16EBlock {
    uint8_t valid;     /* 0: bit 0 flag A, bit 1 flag B, bit 2 first, bit 3 second */
    uint8_t spare;     /* 1 */
    uint8_t flag_a;    /* 2: bit 0 of 0x016E; 1 sets it, any other value clears it */
    uint8_t flag_b;    /* 3: bit 1 of 0x016E */
    uint8_t first[4];  /* 4: 0x0170, 0x0172, high byte first */
    uint8_t second[4]; /* 8: 0x0174, 0x0176 */
} Reg16EBlock;
MAINT_COMMAND(RD_REG16E_BLOCK, maint_rd_reg16e_block, Reg16EBlock)
MAINT_COMMAND_IN(WR_REG16E_BLOCK, maint_wr_reg16e_block, Reg16EBlock)

#endif
