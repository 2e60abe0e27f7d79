/*
 * Linkage and visibility of the library's public entries.
 *
 * Results, for the whole library: an entry that can fail returns a signed 32-bit status, negative
 * for failure, and 0 for success unless its comment names another value. Pointers must not be null
 * unless an entry's comment says otherwise.
 *
 * errno is not a result: an entry may change it, and its value afterwards means nothing.
 *
 * The library has no state of its own and no options; of the environment only the time zone (TZ)
 * counts, for the times in the system log and the clock. Every file and device is opened, locked
 * where the comment says so, used and closed within one call; the save lock, and two device
 * commands that fail (maint/commands/device_word.h), are the only exceptions.
 *
 * All multi-byte fields of files and records are little-endian, which is the byte order of the
 * board.
 */
#ifndef MAINT_API_H
#define MAINT_API_H

#ifdef __cplusplus
#define MAINT_C_BEGIN extern "C" {
#define MAINT_C_END }
#else
#define MAINT_C_BEGIN
#define MAINT_C_END
#endif

#define MAINT_API __attribute__((visibility("default")))

#endif
