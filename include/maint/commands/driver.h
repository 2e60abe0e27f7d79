/*
 * Words and records that go to the driver behind /dev/fpga, or come from it, as they are; what they
 * mean is the driver's.
 *
 * Results, unless a command says otherwise: 0; -1 device not opened; -2 (RD) or -4 (WR) request
 * failed.
 */
#ifndef MAINT_COMMANDS_DRIVER_H
#define MAINT_COMMANDS_DRIVER_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_CONTROL_WORD (0x010C), out, filled by the driver.
 * WR_CONTROL_BLOCK (0x010F), in: a block of the driver's own size and layout.
 * WR_CONTROL_BIT7_CLEAR (0x0114), out: reads the control word into it, clears bit 7 and writes it
 *                               from there; it stays so when the write fails. -2 not read, -4 not
 *                               written.
 * WR_BYTE_ACTION (0x0117), in.
 * WR_WORD_ACTION (0x011B), in.
 */
MAINT_COMMAND(RD_CONTROL_WORD, maint_rd_control_word, uint16_t)
MAINT_COMMAND_IN(WR_CONTROL_BLOCK, maint_wr_control_block, void)
MAINT_COMMAND(WR_CONTROL_BIT7_CLEAR, maint_wr_control_bit7_clear, uint16_t)
MAINT_COMMAND_IN(WR_BYTE_ACTION, maint_wr_byte_action, uint8_t)
MAINT_COMMAND_IN(WR_WORD_ACTION, maint_wr_word_action, uint16_t)

/* WR_KEY_BYTES (0x0111), in. */
typedef struct KeyBytes {
    uint8_t number;   /* 0 */
    uint8_t bytes[4]; /* 1 */
} KeyBytes;
MAINT_COMMAND_IN(WR_KEY_BYTES, maint_wr_key_bytes, KeyBytes)

/* WR_PAIR_WORDS (0x0119), in. */
typedef struct PairWords {
    uint32_t words[2]; /* 0 */
} PairWords;
MAINT_COMMAND_IN(WR_PAIR_WORDS, maint_wr_pair_words, PairWords)

/*
 * RD_DRIVER_STATE (0x0500), out: what the driver's request returned, a failure as well. Results: 0;
 * -1 device not opened.
 */
MAINT_COMMAND(RD_DRIVER_STATE, maint_rd_driver_state, uint16_t)

/*
 * RD_EXT_STATUS_A (0x0602), RD_EXT_STATUS_B (0x0604), out; WR_EXT_CONTROL_A (0x0603),
 * WR_EXT_CONTROL_B (0x0605), in: filled or read by the driver. Results: -2 request failed, of the
 * setters, too.
 */
MAINT_COMMAND(RD_EXT_STATUS_A, maint_rd_ext_status_a, uint16_t)
MAINT_COMMAND(RD_EXT_STATUS_B, maint_rd_ext_status_b, uint16_t)
MAINT_COMMAND_IN(WR_EXT_CONTROL_A, maint_wr_ext_control_a, uint16_t)
MAINT_COMMAND_IN(WR_EXT_CONTROL_B, maint_wr_ext_control_b, uint16_t)

#endif
