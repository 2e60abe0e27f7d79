/*
 * The data size that the device accepts on the WAN side, and the file of data sizes.
 *
 * Sizes are in bytes. Configuration values are looked up in /conf/config as GetIniFileString does,
 * before the first site section, under the save lock (blocking); a missing configuration or key
 * never fails a command (a missing file is reported as GetIniFileString does, at each lookup).
 * Numbers are decimal: white space, a sign, the digits up to the first other character, 0 without a
 * digit; a number beyond -2147483648 .. 2147483647 counts as the nearer of the two.
 *   SELECT_MTU    names the key that holds the MTU. The name matches as the beginning of a key, so
 *                 that an empty one names the configuration's first line.
 *   (that key)    the MTU, of which the low 16 bits count. SELECT_MTU or the key missing, or the
 *                 key's value empty: 1390.
 *   WAN_TYPE      5, or missing: PPPoE. Any other value, an empty one too: not PPPoE.
 *   IPSEC_ENABLE  3: IPsec is on. Any other value, or missing: off.
 * The PPPoE client leaves the MRU that it has negotiated in /tmp/vornapppoe.mtu.
 */
#ifndef MAINT_COMMANDS_MTU_H
#define MAINT_COMMANDS_MTU_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_MTU_LIMIT (0x0048), out. On /dev/fpga (register 0x0056); /conf/config.
 *
 * Results: 0; -1 device not opened; -2 register not read. A failed report leaves the record as it
 * was.
 */
typedef struct MtuLimit {
    uint16_t unused; /* 0: not touched */
    /*
     * 2: what the limit takes in a frame: limit + 24; with IPsec on limit + pad + 82, where pad
     * brings limit + 26 up to a multiple of 16. Modulo 65536.
     */
    uint16_t frame_size;
    uint16_t limit; /* 4: the register */
} MtuLimit;
MAINT_COMMAND(RD_MTU_LIMIT, maint_rd_mtu_limit, MtuLimit)

/*
 * WR_MTU_LIMIT (0x0049), in: the cap; not 0: under PPPoE, a limit that is set (not 0) is never
 * raised. On /dev/fpga (registers 0x0054 and 0x0056, which get the same limit); /conf/config; under
 * PPPoE /tmp/vornapppoe.mtu (key VORNAMRU, of which the low 16 bits count).
 *
 * The data size is the MTU less 26, or 1364 for an MTU of at most 26; at most the MRU, where one is
 * known and not 0; at least 1188. The limit is what is left of it without the overhead of 24, or
 * of 82 and the padding with IPsec on, lowered to 1004 plus a multiple of 16. All of it is computed
 * in 16 bits: from an MTU of 65528 under PPPoE and IPsec the limit comes out 16 higher than that.
 *
 * Results: 0; -1 device not opened; -4 a register cannot be written, which any answer of the driver
 * but 0 means here (0x0054 may have been written). A present limit that cannot be read counts as
 * none.
 */
MAINT_COMMAND_IN(WR_MTU_LIMIT, maint_wr_mtu_limit, uint16_t)

/*
 * RD_MTU_DATASIZE (0x004C), out. WR_MTU_DATASIZE (0x004D), in and out.
 * The record is the contents of the file /tmp/mtu_datasize, 20 bytes in the host's byte order,
 * without a lock.
 *
 * RD_MTU_DATASIZE reads the file; the device is not touched. Results: 0; -1 the file cannot be
 * opened or is shorter (what it had is in the record).
 *
 * WR_MTU_DATASIZE reads a flag on /dev/fpga, opened for writing (bit 8 of device word 03), fills
 * data_size and line_size and writes the record, creating or replacing the file. Results: 0; -1
 * device or file not opened, or file not written; -2 flag not read (the record stays as it was).
 * When the file fails, the record has been filled all the same. The file is written through a
 * buffer and its closing not looked at: 0 does not promise that it reached a full disk.
 *
 * Each run that fails on the file adds a line to the system log, nothing to the console unless the
 * log itself fails. A failed command is run twice, and so leaves two lines.
 */
typedef struct MtuDatasize {
    uint16_t size[3];      /* 0: from the caller */
    uint16_t data_size[3]; /* 6: size less 26, modulo 65536 */
    uint16_t line_size[3]; /* 12: size while the flag is set, else size less 8, modulo 65536 */
    uint16_t kept;         /* 18: the caller's, written as it stands */
} MtuDatasize;
MAINT_COMMAND(RD_MTU_DATASIZE, maint_rd_mtu_datasize, MtuDatasize)
MAINT_COMMAND(WR_MTU_DATASIZE, maint_wr_mtu_datasize, MtuDatasize)

#endif
