/*
 * Linkage and visibility of the library's public entries.
 *
 * Results, for the whole library: every entry returns a signed 32-bit status, 0 for success and a
 * negative value for failure. An entry's own comment lists the values that are particular to it.
 * Pointers must not be null unless an entry's comment says otherwise.
 *
 * The library has no state of its own, no options and no environment variables. Every file and
 * device is opened, locked where the comment says so, used and closed within one call.
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
