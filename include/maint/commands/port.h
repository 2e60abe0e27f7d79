/*
 * Status inputs, control bits, port flags, line control bits and identity of the device. All on
 * /dev/fpga.
 *
 * Flags are single bytes. Reports hold exactly 0 or 1; setters take 1 as set and any other value
 * as clear.
 *
 * Results, unless a command says otherwise: 0; -1 device not opened; -2 read request failed;
 * -4 write request failed (setters). A failed report leaves the record as it was.
 */
#ifndef MAINT_COMMANDS_PORT_H
#define MAINT_COMMANDS_PORT_H

#include <stdint.h>

#include "maint/led_state.h"

/*
 * RD_DEVICE_INFO (0x0000): the device's four identity words, each with its bytes exchanged; of the
 * third, the text of its four lowercase hexadecimal digits.
 */
typedef struct DeviceInfo {
    uint8_t bytes[4]; /* 0: words 0 and 1 */
    char text[4];     /* 4: word 2, without a terminating zero; word 3 is lost */
} DeviceInfo;

/* RD_STATUS_WORD_FLAG (0x0002), uint8_t out: bit 8 of the status word. */

/* RD_STATUS_INPUTS (0x0004), out: the active-low bits 4..7 of the status word, 1 when clear. */
typedef struct StatusInputs {
    uint8_t input[4]; /* 0: bits 4, 5, 6, 7 */
} StatusInputs;

/*
 * RD_CONTROL_BITS (0x0006), out: the first two; the third is not touched.
 * WR_CONTROL_BITS (0x0007), in: all three; every other bit of the control word is written as 0,
 * without a read. Cannot return -2.
 */
typedef struct ControlBits {
    uint8_t flags[3]; /* 0: bits 1, 0, 2 of the control word */
} ControlBits;

/*
 * RD_PORT_FLAGS (0x0008), out: flags; mask is not touched.
 * WR_PORT_FLAGS (0x0009), in. While bit 8 of the status word is set the record is ignored and the
 * word is written as 0x10F0.
 */
typedef struct PortFlags {
    uint16_t mask;     /* 0: bit n selects flag n, 0 selects all ten; setter only */
    uint8_t flags[10]; /* 2: bits 8, 1, 2, 0, 3, 4, 5, 6, 7, 12 of the port flags word */
} PortFlags;

/* RD_ENABLE_FLAG (0x000C), uint8_t out: bit 0 of the enable word. */
/* WR_ENABLE_FLAG (0x000D), uint8_t in: writes 1 or 0. Cannot return -2. */

/*
 * WR_LINE_MODE (0x001B), LedStateRecord in: ledF. 1 sets bit 4 and clears bit 5 of the line control
 * word; 2 sets bit 5 and keeps bit 4; any other value clears both. Not deferred while the LED
 * rewrite inhibit is on, nor changed by its end.
 */

/*
 * WR_LINE_FLAGS (0x001F), LedStateRecord in: group2. Elements 0, 1, 2 drive bits 2, 0, 1 of the
 * line control word; mask bits 0, 1, 2 select them in that order. Not deferred while the LED
 * rewrite inhibit is on, whose end brings back the flags saved at its beginning.
 */

/*
 * RD_ID_REGISTERS (0x002C), out: registers 0x0180, 0x0182 .. 0x018C. Registers read before a
 * failed one are filled.
 */
typedef struct IdRegisters {
    uint16_t value[7]; /* 0 */
} IdRegisters;

#endif
