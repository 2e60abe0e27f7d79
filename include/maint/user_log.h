/*
 * The user log /conf/user.log: coded events in a ring of 1000 records of 16 bytes behind a header
 * of 16 bytes. Slot i begins at byte 16 + 16 * i; the largest file has 16,016 bytes. The log is
 * created by another program.
 */
#ifndef MAINT_USER_LOG_H
#define MAINT_USER_LOG_H

#include <stdint.h>

#include "maint/api.h"

MAINT_C_BEGIN

enum {
    USER_LOG_SLOTS = 1000,   /* records in a full ring */
    USER_LOG_CODE_MAX = 300, /* codes 1..300 */
    USER_LOG_VALUE_MAX = 30  /* values 0..30 */
};

/* Header of the file, 16 bytes. */
typedef struct UserLogHeader {
    uint8_t kept_0[4]; /* 0: not this library's, kept */
    uint16_t number;   /* 4: records; counts up to 1000, a higher number is kept */
    uint16_t location; /* 6: slot of the next write; above 999 slot 0 is next */
    uint8_t kept_8[8]; /* 8: not this library's, kept */
} UserLogHeader;

/* One record, 16 bytes. */
typedef struct UserLogRecord {
    uint32_t time;        /* 0: seconds since the epoch, filled in by userLog_put */
    uint8_t caller_4[4];  /* 4: the caller's, written as it stands */
    uint16_t code;        /* 8: event code, 1..300 */
    uint8_t val1;         /* 10: 0..30 */
    uint8_t val2;         /* 11: 0..30 */
    uint8_t caller_12[4]; /* 12: the caller's, written as it stands */
} UserLogRecord;

/*
 * Raises the flash-save marker /tmp/flashsave (a file of the one byte 0x01), then checks the
 * record, stamps it with the present time and appends it to /conf/user.log, which must exist.
 *   record  in: all but `time`; out: `time`, once the record has passed the checks and the clock
 *           could be read, also when the append then fails
 * The marker is raised for a record that is then refused, too; a marker that cannot be raised
 * (messages 001 to 003) stops nothing. `location` goes back to slot 0 whenever it is above 999,
 * whatever `number` holds.
 * Both files are updated under an exclusive, blocking flock (a marker that cannot be locked is
 * written all the same). Streams are buffered and their closing is not looked at: 0 does not
 * promise that the header reached a full disk. Returns 0; -1 code or value out of range (004, 005),
 * clock (006), or open, lock, read, seek or write of the log failed (007 to 013). After 012 the
 * record may be, after 013 it is in place, under the old header. All messages go to the console and
 * to the system log.
 */
MAINT_API int32_t userLog_put(UserLogRecord* record);

MAINT_C_END

#endif
