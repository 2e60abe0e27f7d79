/*
 * Commands that move one word of the device, or flags in it. All on /dev/fpga; what the words mean
 * is the device's. A failed report stores nothing unless the driver does.
 */
#ifndef MAINT_COMMANDS_DEVICE_WORD_H
#define MAINT_COMMANDS_DEVICE_WORD_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * Passed through: the driver itself fills or reads what the argument points to. How much that is,
 * is the driver's, whose documentation counts; the types below are what is known of it here, and a
 * record of DEVICE_RECORD_MAX bytes (maint/fpga.h) has room in any case.
 *   RD_DEVICE_WORD_27 (0x0036)  out
 *   RD_DEVICE_WORD_29 (0x0038)  out: the unit's own identifier
 *   RD_DEVICE_WORD_21 (0x0040)  out; see below
 *   RD_DEVICE_WORD_03 (0x0042)  out
 *   RD_DEVICE_WORD_3B (0x0046)  out: bitmap E, bit n for unit or port n
 *   RD_DEVICE_WORD_4E (0x0056)  out; opens the device for writing
 *   WR_DEVICE_WORD_41 (0x003F)  in
 *   WR_DEVICE_WORD_22 (0x0041)  in; see below
 * Results: 0; -1 device not opened; -2 (RD) or -4 (WR) request failed. A failed request of word 21
 * or 22 leaves the device open, and as the command is then run again, up to two descriptors for
 * each call.
 *
 *   RD_DEVICE_WORD_40 (0x003E)  out. Result: the driver's own, whatever it is, or -1 when the
 *                               device is not opened; never retried.
 */
MAINT_COMMAND(RD_DEVICE_WORD_27, maint_rd_device_word_27, uint16_t)
MAINT_COMMAND(RD_DEVICE_WORD_29, maint_rd_device_word_29, uint16_t)
MAINT_COMMAND(RD_DEVICE_WORD_21, maint_rd_device_word_21, uint16_t)
MAINT_COMMAND(RD_DEVICE_WORD_03, maint_rd_device_word_03, uint16_t)
MAINT_COMMAND(RD_DEVICE_WORD_3B, maint_rd_device_word_3b, uint32_t)
MAINT_COMMAND(RD_DEVICE_WORD_4E, maint_rd_device_word_4e, uint16_t)
MAINT_COMMAND_IN(WR_DEVICE_WORD_41, maint_wr_device_word_41, uint16_t)
MAINT_COMMAND_IN(WR_DEVICE_WORD_22, maint_wr_device_word_22, uint16_t)
MAINT_COMMAND(RD_DEVICE_WORD_40, maint_rd_device_word_40, uint16_t)

/*
 * Sent by value:
 *   WR_DEVICE_WORD_28 (0x0037)  in
 *   WR_DEVICE_WORD_2A (0x0039)  in
 *   WR_DEVICE_WORD_04 (0x0043)  in: replaces the whole word 03
 * Results: 0; -1 device not opened; -4 request failed.
 */
MAINT_COMMAND_IN(WR_DEVICE_WORD_28, maint_wr_device_word_28, uint16_t)
MAINT_COMMAND_IN(WR_DEVICE_WORD_2A, maint_wr_device_word_2a, uint16_t)
MAINT_COMMAND_IN(WR_DEVICE_WORD_04, maint_wr_device_word_04, uint16_t)

/*
 * One-hot code:
 *   RD_DEVICE_WORD_48 (0x0044)  out: 2, 4 or 8. Results: 0; -1; -2; -3 the device holds none of
 *                               them (nothing is stored).
 *   WR_DEVICE_WORD_49 (0x0045)  in: 2, 4 or 8. Results: 0; -1; -4; -5 any other value.
 */
MAINT_COMMAND(RD_DEVICE_WORD_48, maint_rd_device_word_48, uint16_t)
MAINT_COMMAND_IN(WR_DEVICE_WORD_49, maint_wr_device_word_49, uint16_t)

/*
 * Flags. Reports hold 0 or 1; setters keep the other bits of the word:
 *   RD_ENABLE_FLAG (0x000C)       out: bit 0 of the enable word
 *   RD_GROUP_FLAG (0x003A)        out: 1 if any of bits 2, 6, 7, 8 of the group word is set
 *   WR_GROUP_FLAG (0x003B)        in: 1 sets these four bits, any other value clears them
 *   RD_DEVICE_WORD_35 (0x004A)    out: 1 if bit 6 or bit 7 of the word is set
 *   WR_DEVICE_WORD_36 (0x004B)    in: not 0 sets both bits, 0 clears both
 *   RD_VLANT_MAP_ENABLE (0x004E)  out: bit 12 of word 03
 *   WR_VLANT_MAP_ENABLE (0x004F)  in: 1 sets the bit, any other value clears it
 * Results: 0; -1 device not opened; -2 word not read; -4 word not written.
 *
 *   WR_ENABLE_FLAG (0x000D)       in: 1 writes the enable word as 1, any other value as 0, without
 *                                 a read. Results: 0; -1; -4.
 */
MAINT_COMMAND(RD_ENABLE_FLAG, maint_rd_enable_flag, uint8_t)
MAINT_COMMAND(RD_GROUP_FLAG, maint_rd_group_flag, uint8_t)
MAINT_COMMAND_IN(WR_GROUP_FLAG, maint_wr_group_flag, uint8_t)
MAINT_COMMAND(RD_DEVICE_WORD_35, maint_rd_device_word_35, uint16_t)
MAINT_COMMAND_IN(WR_DEVICE_WORD_36, maint_wr_device_word_36, uint16_t)
MAINT_COMMAND(RD_VLANT_MAP_ENABLE, maint_rd_vlant_map_enable, uint16_t)
MAINT_COMMAND_IN(WR_VLANT_MAP_ENABLE, maint_wr_vlant_map_enable, uint16_t)
MAINT_COMMAND_IN(WR_ENABLE_FLAG, maint_wr_enable_flag, uint8_t)

/*
 * RD_CONTROL_BITS (0x0006), out: the first two; the third is not touched. Results: 0; -1; -2.
 * WR_CONTROL_BITS (0x0007), in: all three; 1 sets a bit, any other value clears it, and every other
 * bit of the control word is written as 0, without a read. Results: 0; -1; -4.
 */
typedef struct ControlBits {
    uint8_t flags[3]; /* 0: bits 1, 0, 2 of the control word */
} ControlBits;
MAINT_COMMAND(RD_CONTROL_BITS, maint_rd_control_bits, ControlBits)
MAINT_COMMAND_IN(WR_CONTROL_BITS, maint_wr_control_bits, ControlBits)

/*
 * RD_INDEXED_WORD (0x0064): value out. Opens the device for writing. Results: 0; -1; -2.
 * WR_INDEXED_WORD (0x0065): all in. Results: 0; -1; -4.
 */
typedef struct IndexedWord {
    uint16_t index; /* 0 */
    uint16_t value; /* 2 */
} IndexedWord;
MAINT_COMMAND(RD_INDEXED_WORD, maint_rd_indexed_word, IndexedWord)
MAINT_COMMAND_IN(WR_INDEXED_WORD, maint_wr_indexed_word, IndexedWord)

#endif
