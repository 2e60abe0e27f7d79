/*
 * A system log as it lies in flash, of sample events: for trying the boot restore without a board.
 */
#ifndef TOOLS_SAMPLE_IMAGE_H
#define TOOLS_SAMPLE_IMAGE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { SAMPLE_EVENTS_MAX = 100000 }; /* a hundred times around the ring */

/*
 * Writes the image after so many events, in a file made anew; `seq` is which save of the log it is.
 * Returns 0, or -1 with errno. Not for several threads at once.
 */
int sampleImage_write(const char* path, unsigned count, uint32_t seq);

#ifdef __cplusplus
}
#endif

#endif
