#!/usr/bin/env bash
# A shared library exports the public entries and nothing else, and the headers declare them.
# usage: check_entries.sh ENTRIES INCLUDE_DIR LIBRARY
. "$(dirname "$0")/common.sh"
work_make

# compare FILE WHOSE: findings for the names of the file against the public entries.
compare()
{
    local name
    only_in_first "$work/entries" "$1" >"$work/lacking"
    while read -r name; do finding "$2 lacks $name"; done <"$work/lacking"
    only_in_first "$1" "$work/entries" >"$work/extra"
    while read -r name; do finding "$2 has $name, which is no public entry"; done <"$work/extra"
}

list_words "$1" 1 >"$work/entries"
[ -s "$work/entries" ] || finding "no entry in $1"

find "$2/maint" -name '*.h' \
    -exec sed -n 's/^MAINT_API [^(]*[ *]\([A-Za-z0-9_]*\)(.*/\1/p' {} + | sort >"$work/declared"
compare "$work/declared" "$2/maint"

"$NM" --dynamic --defined-only "$3" | awk '{ print $3 }' | sort >"$work/exported"
compare "$work/exported" "$3"
check_end
