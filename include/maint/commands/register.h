/*
 * The FPGA's 16-bit registers, whole. All on /dev/fpga. Fields of registers:
 * maint/commands/register_field.h; blocks of them: maint/commands/register_block.h.
 */
#ifndef MAINT_COMMANDS_REGISTER_H
#define MAINT_COMMANDS_REGISTER_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_REGISTER (0x0122): value out.
 * WR_REGISTER (0x0123): value in, written without reading.
 * Any address. Results: 0; -1 device not opened; -2 read failed, or write failed. A failed report
 * leaves the value as it was.
 */
typedef struct RegisterValue {
    uint32_t address; /* 0 */
    uint16_t value;   /* 4 */
    uint16_t spare;   /* 6 */
} RegisterValue;
MAINT_COMMAND(RD_REGISTER, maint_rd_register, RegisterValue)
MAINT_COMMAND_IN(WR_REGISTER, maint_wr_register, RegisterValue)

/*
 * RD_REG_DA_LATCHED (0x0050), out: the low 8 bits of register 0x00DA, taken while bit 5 of register
 * 0x00D8 is clear; the bit is set again afterwards. Opens the device for writing. Results: 0; -1
 * device not opened; -2 a register not read; -4 register 0x00D8 not written. After a failure, up to
 * that of setting it again, the bit stays clear; a failed command stores nothing.
 */
MAINT_COMMAND(RD_REG_DA_LATCHED, maint_rd_reg_da_latched, uint32_t)

#endif
