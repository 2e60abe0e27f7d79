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
 * most 1000 each is kept untouched. Any other is deleted and rebuilt from the flash image on
 * /dev/mtd_systemlog; where that image is erased, unreadable or refused, an empty log is created.
 *
 * Every step is reported through report_message: 001 to 004 on the console; 005 to 007 on the
 * console and to the system log. The line for the system log is handed over before the empty log
 * is created, so that 005 and 006 reach the console only, followed by systemLog_put's message 002;
 * 007 is also appended where the rebuild got as far as a complete header, and then lost when the
 * empty log replaces the file.
 *
 * Returns 0 when the working file was kept or rebuilt, otherwise the result of systemLogFileInit.
 */
MAINT_API int32_t zev_maintlog_init(void);

MAINT_C_END

#endif
