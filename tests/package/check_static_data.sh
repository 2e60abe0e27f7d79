#!/usr/bin/env bash
# The objects of an archive hold no writable static data and no code that runs before main: no
# .data, .bss, thread data, common symbols or constructors. (.data.rel.ro is constant once loaded.)
# usage: check_static_data.sh ARCHIVE
. "$(dirname "$0")/common.sh"
work_make

"$OBJDUMP" -h "$1" | awk '$1 ~ /^[0-9]+$/ && $3 ~ /^[0-9a-f]+$/ { print $2, $3 }' >"$work/sections"
[ -s "$work/sections" ] || finding "no sections in $1: is it an archive of objects?"
while read -r section size; do
    case $section in
    .data.rel.ro*) continue ;;
    .data* | .bss* | .tdata* | .tbss* | .init_array* | .fini_array* | .ctors* | .dtors*) ;;
    *) continue ;;
    esac
    [ "$((16#$size))" -eq 0 ] || finding "$1: section $section of $((16#$size)) bytes"
done <"$work/sections"
"$NM" "$1" | awk '$2 == "C" { print $3 }' >"$work/common"
while read -r name; do finding "$1: common symbol $name"; done <"$work/common"
check_end
