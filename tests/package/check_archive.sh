#!/usr/bin/env bash
# The static library needs the C library alone, and made into a shared one it exports the public
# entries alone.
# usage: check_archive.sh PURE_LIST BOARD_LIST ENTRIES INCLUDE_DIR ARCHIVE
. "$(dirname "$0")/common.sh"
work_make

calls_allowed "$1" "$2"
archive_undefined "$5" >"$work/undefined"
names_check "$work/undefined" "$5"

# Whatever the lists say, the C library and the compiler's own helpers have to define it all.
if "$CC" -shared -nodefaultlibs -Wl,-z,defs -Wl,--whole-archive "$5" -Wl,--no-whole-archive \
    -lc -lgcc -o "$work/libwhole.so" 2>"$work/errors"; then
    "$(dirname "$0")/check_entries.sh" "$3" "$4" "$work/libwhole.so" || finding "exports of $5"
else
    finding "$5 does not link with the C library alone: $(cat "$work/errors")"
fi
check_end
