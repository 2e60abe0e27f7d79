/*
 * Key lookup in the configuration /conf/config (lines KEY='value') and in other text files (lines
 * KEY=value).
 */
#ifndef MAINT_INI_FILE_H
#define MAINT_INI_FILE_H

#include <stdint.h>

#include "maint/api.h"

MAINT_C_BEGIN

/* Size of the value buffer that always suffices: a value comes from one piece of a line. */
enum { INI_VALUE_SIZE = 1024 };

/*
 * Looks up a key and copies its value out, under the save lock (blocking): a caller that holds the
 * save lock would wait for itself.
 *   path     "/conf/config", letter for letter: the value stands between single quotes, and what
 *            follows the second is ignored. Any other path: the value runs from the first '=' to
 *            the newline; a last line without a newline has no value.
 *   section  text that begins the line after which the search starts; "" (or null): from the
 *            first line
 *   key      text that begins the line looked for
 *   value    buffer of INI_VALUE_SIZE bytes; set to "" first, and filled when the key was found.
 *            After -1 it is "", except when only the release of the save lock failed.
 *
 * Section and key match as prefixes of a line, without any trimming: ABC also finds ABCD='1'. The
 * search ends at the first line that begins with the key, delimited or not, and at the next
 * header of a site section, a line that begins with the bytes 5B B5 F2 C5 C0 49 44 23 ("[", the
 * word for "site" in EUC-JP, "ID#"). A line of more than 1023 bytes counts as several lines of
 * 1023 bytes each; a zero byte ends a line's text early.
 *
 * Returns 0; -1 path, key or value null, key not found, value not delimited, file not to be opened
 * (message 001 on both sinks), or save lock not to be had or released.
 */
MAINT_API int32_t GetIniFileString(const char* path, const char* section, const char* key,
                                   char* value);

MAINT_C_END

#endif
