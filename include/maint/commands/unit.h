/*
 * Facts about the units: the own one's identity, the status of each.
 */
#ifndef MAINT_COMMANDS_UNIT_H
#define MAINT_COMMANDS_UNIT_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_DEVICE_INFO (0x0000), out: the device's four identity words, each with its bytes exchanged; of
 * the third, the text of its four lowercase hexadecimal digits. On /dev/fpga. Results: 0; -1 device
 * not opened; -2 not read (the record stays as it was).
 */
typedef struct DeviceInfo {
    uint8_t bytes[4]; /* 0: words 0 and 1 */
    char text[4];     /* 4: word 2, without a terminating zero; word 3 is lost */
} DeviceInfo;
MAINT_COMMAND(RD_DEVICE_INFO, maint_rd_device_info, DeviceInfo)

/*
 * RD_ID_REGISTERS (0x002C), out: registers 0x0180, 0x0182 .. 0x018C. On /dev/fpga. Results: 0; -1
 * device not opened; -2 a register not read; those before it are filled.
 */
typedef struct IdRegisters {
    uint16_t value[7]; /* 0 */
} IdRegisters;
MAINT_COMMAND(RD_ID_REGISTERS, maint_rd_id_registers, IdRegisters)

/*
 * RD_SERIAL_NUMBER (0x0300), out: the first 9 bytes of /tmp/serialno, without a terminating zero.
 * Results: 0; -1 file not opened; -2 file not read; -3 file of less than 9 bytes (what was read is
 * in the record).
 */
typedef struct SerialNumber {
    char text[9]; /* 0 */
} SerialNumber;
MAINT_COMMAND(RD_SERIAL_NUMBER, maint_rd_serial_number, SerialNumber)

/*
 * RD_UNIT_STATUS_MAP (0x003C), out, filled by the driver first: bit n for unit n. Set are the units
 * that are present (RD_DEVICE_WORD_3B) and marked in the port mask (RD_PORT_MASK), and units of
 * 1..30 that are present with another VPN identity than the configured one; never the own unit. On
 * /dev/fpga; each identity is looked up in /conf/config under the save lock and reported, as for
 * RD_LED_STATE (maint/commands/led.h).
 * Results: 0; -1 device not opened; -2 a read failed (the word may hold the hardware's own map).
 */
MAINT_COMMAND(RD_UNIT_STATUS_MAP, maint_rd_unit_status_map, uint32_t)

/*
 * RD_UNIT_STATUS_FLAG (0x00A9): unit in, status out. Asks another bitmap than RD_UNIT_STATUS_MAP,
 * bitmap D (RD_STATUS_BIT), and not whether the unit is present. On /dev/fpga and /conf/config.
 * Results: 0; -1 device not opened; -2 read failed (no change).
 */
typedef struct UnitStatusFlag {
    uint32_t status; /* 0, out: 1: marked in bitmap D, or another identity; else 0 */
    uint16_t unit;   /* 4, in; above 31 there is no mark */
    uint16_t spare;  /* 6: not used */
} UnitStatusFlag;
MAINT_COMMAND(RD_UNIT_STATUS_FLAG, maint_rd_unit_status_flag, UnitStatusFlag)

#endif
