/*
 * The persistent traffic statistics /conf/statistics: totals of two streams for each of 30 ports.
 */
#ifndef MAINT_COMMANDS_STATISTICS_H
#define MAINT_COMMANDS_STATISTICS_H

#include <stdint.h>

#include "maint/typed_call.h"

enum { STATISTICS_PORTS = 30 };

/*
 * The file, 496 bytes. A total is kib * 1024 + rest bytes; element p - 1 belongs to port p.
 *
 * WR_STATISTICS_SAVE (0x0100): reads every counter of the device, which restarts it, adds it to the
 * file's totals, and hands the new file to the caller, out.
 * WR_STATISTICS_CLEAR (0x0102): reads every counter, which restarts it, and sets all totals to 0;
 * the new file, out.
 *
 * A stream's bytes are its byte counter plus, for every counted item, 18 bytes, or 26 while bit 8
 * of device word 03 is set (18 where the word cannot be read). Sums wrap at 32 bits.
 *
 * The file must exist with at least 496 bytes; /dev/fpga is opened once for each of the 120
 * counters, and by the save once more for the word. The file is not locked: two concurrent saves
 * can lose counts. On failure the file stays as it was (a failed write may leave it partly
 * written), what the record holds is not defined, and the counters read so far are lost; also when
 * the second run that follows a failed one succeeds.
 *
 * Results: 0; -1 file not opened, read, positioned or written in full, or device not opened;
 * -2 a counter cannot be read.
 */
typedef struct StatisticsFile {
    uint32_t kept_0[2];                /* 0: not these commands' */
    uint32_t kib_b[STATISTICS_PORTS];  /* 8 */
    uint32_t kib_a[STATISTICS_PORTS];  /* 128 */
    uint32_t kept_248[2];              /* 248: not these commands' */
    uint32_t rest_b[STATISTICS_PORTS]; /* 256: 0..1023 */
    uint32_t rest_a[STATISTICS_PORTS]; /* 376: 0..1023 */
} StatisticsFile;
MAINT_COMMAND(WR_STATISTICS_SAVE, maint_wr_statistics_save, StatisticsFile)
MAINT_COMMAND(WR_STATISTICS_CLEAR, maint_wr_statistics_clear, StatisticsFile)

#endif
