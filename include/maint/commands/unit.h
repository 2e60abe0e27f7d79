/*
 * Facts about the unit.
 */
#ifndef MAINT_COMMANDS_UNIT_H
#define MAINT_COMMANDS_UNIT_H

#include <stdint.h>

/*
 * RD_SERIAL_NUMBER (0x300), out: the first 9 bytes of /tmp/serialno, without a terminating zero.
 * Results: 0; -1 file not opened; -2 file not read; -3 file of less than 9 bytes (what was read is
 * in the record).
 */
typedef struct SerialNumber {
    char text[9]; /* 0 */
} SerialNumber;

/*
 * RD_PORT_STATE_CODE (0x400). Code out: 0 the port is not in the device's bitmap, or a reading
 * failed; 2 any of status bits 13..15; with bit 12 alone of these, by bits 9 and 8: 00 gives 1, 01
 * gives 3, 11 gives 4. In every other case the code is not written: preset it (a first run that
 * fails and is repeated has written 0).
 * Results: 0; -1 a reading failed.
 */
typedef struct PortStateCode {
    uint16_t port; /* 0, in: 0..31; its low byte is the number of its bit, above 31 there is none */
    uint16_t code; /* 2, out */
} PortStateCode;

#endif
