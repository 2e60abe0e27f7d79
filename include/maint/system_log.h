/*
 * The system log: its header and records, the flash image and the working file, the writer, and
 * the reporter through which the whole library reports.
 *
 * Which entry for what:
 *   a line to console and log              report_message(LOG_SINK_BOTH, text)
 *   a line to the log alone                systemLog_put(text)
 *   the header of the log as it is now     zev_maintlog_head_read (the working file)
 *   the header of the saved copy           read_systemlog_header (the flash; old after a new line)
 *   at boot: make sure that there is a log zev_maintlog_init (maint/maintlog.h)
 * Not for a program beside the boot: systemLogFileInit EMPTIES the log, and systemLogFileMake
 * replaces it by the saved copy.
 *
 * Two places hold the log in one layout:
 *   /dev/mtd_systemlog   flash image; survives a power cycle
 *   /conf/system.log     working file; survives a warm restart only
 *
 * Layout: a SystemLogHeader (12 bytes), then up to 1000 slots of 100 bytes; slot i begins at byte
 * 12 + 100 * i. The largest file has 100,012 bytes, unless `location` is 1000 or more in a ring
 * that is not full.
 *   flash image    records in slots 0 .. number-1; what lies behind them is ignored
 *   working file   a ring: while number < 1000 the records stand in slots 0 .. number-1, oldest
 *                  first; with number == 1000 the oldest is in slot `location` (slot 0 when
 *                  location is 1000) and the newest in the slot before it
 *
 * The working file, and in the rebuild the image, are read and written under an exclusive, blocking
 * flock on the open file. Creating the file empties it before the lock is had, and deleting it
 * takes none: both belong to the boot, before anything else writes the log.
 *
 * Streams are buffered and their closing is not looked at: of a full disk a call may learn nothing,
 * and return 0 with the last bytes lost.
 */
#ifndef MAINT_SYSTEM_LOG_H
#define MAINT_SYSTEM_LOG_H

#include <stdint.h>

#include "maint/api.h"

MAINT_C_BEGIN

/* Where a message goes: a mask of these bits; other bits are ignored. */
typedef int32_t LogSink;
enum {
    LOG_SINK_CONSOLE = 1,    /* standard output */
    LOG_SINK_SYSTEM_LOG = 2, /* /conf/system.log */
    LOG_SINK_BOTH = 3
};

enum {
    SYSTEM_LOG_SLOTS = 1000,        /* records in a full ring */
    SYSTEM_LOG_RECORD_SIZE = 100,   /* bytes of one record */
    SYSTEM_LOG_MESSAGE_LENGTH = 79, /* bytes of message text in a record */
    SYSTEM_LOG_VERSION = 1          /* version of a newly created log */
};

/* seq_num of erased flash: no log was ever saved. */
#define SYSTEM_LOG_SEQ_ERASED UINT32_C(0xFFFFFFFF)

/* Header of image and working file, 12 bytes. */
typedef struct SystemLogHeader {
    uint32_t seq_num;  /* 0: number of the flash copy; all ones: erased flash */
    uint16_t number;   /* 4: valid records, 0..1000 */
    uint16_t location; /* 6: slot of the next write, 0..1000 (1000 in a full ring: slot 0) */
    uint16_t version;  /* 8: format version; an image with 0 is refused */
    uint16_t checksum; /* 10: of the image's record area, see below; kept, and stale, in the file */
} SystemLogHeader;

/*
 * A record is 100 bytes of text without a terminating zero: the local time as
 * "%Y/%m/%d %H:%M:%S" (19 bytes), a blank, the message left-justified in 79 bytes (padded with
 * blanks, cut at 79), a newline. A time that does not fit 19 bytes (a year of five digits) is
 * written as 19 asterisks.
 *
 * Checksum, as whoever writes the image must store it: add up the record bytes
 * 0 .. number * 100 - 1 as little-endian 16-bit words, fold the carries back in (ones' complement
 * sum), complement, and store the result high byte first at bytes 10 and 11. Read as the
 * little-endian field `checksum`, it is therefore the complement with its bytes exchanged.
 * Examples for one record: all bytes 0 stores FF FF; bytes 01 00 and then 0 stores FF FE.
 */

/*
 * Reads the header of the flash image, without a lock.
 *   out  the header; undefined unless the result is 0
 * Returns 0; -1 open or read failed (messages 001, 002 on both sinks).
 */
MAINT_API int32_t read_systemlog_header(SystemLogHeader* out);

/*
 * Reads the header of the working file.
 *   out  the header; undefined unless the result is 0
 * Returns 0; -1 open, lock or read failed (messages 001 to 003, console only).
 */
MAINT_API int32_t zev_maintlog_head_read(SystemLogHeader* out);

/*
 * Creates an empty working file, or empties the one that is there: the header {0, 0, 0, 1, 0}
 * alone, 12 bytes.
 * Returns 0; -1 open, lock or write failed (messages 001 to 003 on both sinks).
 */
MAINT_API int32_t systemLogFileInit(void);

/*
 * Verifies the flash image and copies its header, as it stands, and its records into a new working
 * file. Refused are an image of more than 1000 records (message 004), one of version 0 (005), one
 * shorter than its records (005 again, with another text) and one of a wrong checksum (006); an
 * erased seq_num and a location out of range are not. An image without records has no checksum.
 * Prints the accepted header, and once the records are read the stored and the computed checksum,
 * on standard output. A failure while writing can leave a partial working file. Needs about 110 KB
 * of stack.
 * Returns 0; -2 checksum mismatch; -1 any other refusal, or image (001 to 003) or file (007 to 010)
 * not opened, locked, read or written. All messages on both sinks.
 */
MAINT_API int32_t systemLogFileMake(void);

/*
 * Appends one record with the present time to the working file, which must exist.
 *   text  zero-terminated; the first 79 bytes are logged
 * `location` goes back to slot 0 only when it has reached 1000 in a full ring (number == 1000); in
 * any other log it counts on past 1000, and the file grows.
 * The result of writing the record is not looked at. A record that the disk does not take shows at
 * the seek behind it: 007, and it is not counted, though its beginning may stand in the slot.
 * Returns 0; -1 on failure, with a message on the console only: 001 clock, 002 open, 003 lock, 004
 * read of the header, 005 seek to the record, 007 seek back to the header (there is no 006). A
 * failed write of the header (008) leaves the record in place under the old header and still
 * returns 0.
 */
MAINT_API int32_t systemLog_put(const char* text);

/*
 * Reports a message: on standard output when bit 0 of the mask is set, then in the system log when
 * bit 1 is set. Failures of the log show as systemLog_put's own console messages.
 *   text  zero-terminated; the console shows all of it, the log its first 79 bytes
 */
MAINT_API void report_message(LogSink mask, const char* text);

MAINT_C_END

#endif
