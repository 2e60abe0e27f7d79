/*
 * The channel words of the units. On /dev/fpga.
 */
#ifndef MAINT_COMMANDS_CHANNEL_WORD_H
#define MAINT_COMMANDS_CHANNEL_WORD_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_CHANNEL_WORD (0x00A7): value out; with the own identifier the whole channel word of the
 * device, filled by the driver, with another one the low 12 bits of that unit's.
 * WR_CHANNEL_WORD (0x00A8): value in; ORed with the top four bits of the device's own channel word.
 * The id is not used.
 *
 * Results: 0; -1 device not opened; -2 any request failed, of the setter, too, but that an own
 * identifier that cannot be read counts as 0.
 */
typedef struct ChannelWord {
    uint16_t id;    /* 0 */
    uint16_t value; /* 2 */
} ChannelWord;
MAINT_COMMAND(RD_CHANNEL_WORD, maint_rd_channel_word, ChannelWord)
MAINT_COMMAND_IN(WR_CHANNEL_WORD, maint_wr_channel_word, ChannelWord)

#endif
