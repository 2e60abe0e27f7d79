/*
 * The device's status: status word, inputs, bitmap of units. All on /dev/fpga.
 *
 * Results, unless a command says otherwise: 0; -1 device not opened; -2 request failed. A failed
 * report leaves the record as it was.
 */
#ifndef MAINT_COMMANDS_STATUS_H
#define MAINT_COMMANDS_STATUS_H

#include <stdint.h>

#include "maint/typed_call.h"

/* RD_STATUS_WORD_FLAG (0x0002), out: bit 8 of the status word, 0 or 1. */
MAINT_COMMAND(RD_STATUS_WORD_FLAG, maint_rd_status_word_flag, uint8_t)

/* RD_STATUS_INPUTS (0x0004), out: the active-low bits 4..7 of the status word, 1 when clear. */
typedef struct StatusInputs {
    uint8_t input[4]; /* 0: bits 4, 5, 6, 7 */
} StatusInputs;
MAINT_COMMAND(RD_STATUS_INPUTS, maint_rd_status_inputs, StatusInputs)

/*
 * RD_STATUS_BIT (0x00A2): bit in, result out: a bit of the device's bitmap D, in which the hardware
 * marks units. Bit 0 alone cannot be asked for.
 */
typedef struct StatusBit {
    uint32_t bit;    /* 0, in: 0 the whole word, 1..31 that bit, above: 0 is reported */
    uint32_t result; /* 4, out */
} StatusBit;
MAINT_COMMAND(RD_STATUS_BIT, maint_rd_status_bit, StatusBit)

/* WR_STATUS_WORD (0x00A3), in; what it means is the driver's. */
MAINT_COMMAND_IN(WR_STATUS_WORD, maint_wr_status_word, uint16_t)

#endif
