/*
 * Boot-time restore of the working system log.
 */
#ifndef MAINT_MAINTLOG_H
#define MAINT_MAINTLOG_H

#include <stdint.h>

#include "maint/api.h"

MAINT_C_BEGIN

/*
 * Makes sure that a usable /conf/system.log exists, before anything else writes to it.
 *
 * A working file that is present (warm start), can be read and has `number` and `location` of at
 * most 1000 each is kept untouched. Only the header is looked at: a file that lost records behind
 * it, because a rebuild was cut off, is kept as well. Any other is deleted and rebuilt from the
 * flash image on /dev/mtd_systemlog; where that image is erased, unreadable or refused, an empty
 * log is created.
 *
 * Every step is reported through report_message: 001 to 004 on the console; 005 to 007 on the
 * console and to the system log, before the empty log is created. While there is no working file,
 * such a message (and those of read_systemlog_header and systemLogFileMake) reaches the console
 * alone, followed by systemLog_put's own 002. Where a file with a whole header is there after all,
 * because it could not be deleted or the rebuild began it, the line is appended, and lost when the
 * empty log replaces the file; where the header is not whole, systemLog_put's own 004 follows on
 * the console.
 *
 * Needs about 110 KB of stack for the rebuild.
 *
 * Returns 0 when the working file was kept or rebuilt, otherwise the result of systemLogFileInit.
 */
MAINT_API int32_t zev_maintlog_init(void);

MAINT_C_END

#endif
