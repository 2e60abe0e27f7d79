/*
 * Counters of the driver. All on /dev/fpga.
 *
 * Results: 0; -1 device not opened; -2 request failed, of a setter as well.
 */
#ifndef MAINT_COMMANDS_COUNTER_H
#define MAINT_COMMANDS_COUNTER_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_COUNTER (0x0401), RD_COUNTER_ALT (0x0403): index and selector in, value out.
 * WR_COUNTER (0x0402), WR_COUNTER_ALT (0x0404): all in.
 *
 * A counter may restart when it is read: a look takes its count away from whoever reads next.
 * WR_STATISTICS_SAVE (maint/commands/statistics.h) reads the counters below to add them to the
 * totals; what another program has read in between is missing there.
 *
 * What is known of the indexes, from the statistics: p (1..30) is stream A of port p, 64 + p is
 * stream B. RD_COUNTER and WR_COUNTER pass any index and any selector on; what else there is, and
 * what the second set (_ALT) counts, is the driver's.
 */
typedef struct CounterRecord {
    uint32_t index;    /* 0 */
    uint32_t value;    /* 4 */
    uint32_t selector; /* 8: which counter of the index: 32 its bytes, 33 its items */
} CounterRecord;
MAINT_COMMAND(RD_COUNTER, maint_rd_counter, CounterRecord)
MAINT_COMMAND(RD_COUNTER_ALT, maint_rd_counter_alt, CounterRecord)
MAINT_COMMAND_IN(WR_COUNTER, maint_wr_counter, CounterRecord)
MAINT_COMMAND_IN(WR_COUNTER_ALT, maint_wr_counter_alt, CounterRecord)

/* WR_COUNTER_BLOCK_LARGE (0x0405), in. */
typedef struct CounterBlockLarge {
    uint8_t bytes[160]; /* 0 */
} CounterBlockLarge;
MAINT_COMMAND_IN(WR_COUNTER_BLOCK_LARGE, maint_wr_counter_block_large, CounterBlockLarge)

/* WR_COUNTER_BLOCK_SMALL (0x0406), in. */
typedef struct CounterBlockSmall {
    uint8_t bytes[68]; /* 0 */
} CounterBlockSmall;
MAINT_COMMAND_IN(WR_COUNTER_BLOCK_SMALL, maint_wr_counter_block_small, CounterBlockSmall)

#endif
