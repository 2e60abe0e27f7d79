#!/usr/bin/env bash
# A linked file, program or shared library, is loaded with the C library alone (and libmaint.so
# where it is given), and calls nothing else of it than the lists allow.
# usage: check_linked.sh PURE_LIST BOARD_LIST FILE [LIBMAINT | MORE_LIST.txt]
. "$(dirname "$0")/common.sh"
work_make

calls_allowed "$1" "$2"
# What the compiler's start files refer to, most of it weakly.
printf '%s\n' _ITM_deregisterTMCloneTable _ITM_registerTMCloneTable __cxa_finalize \
    __gmon_start__ __libc_start_main >>"$work/allowed"
# ARM's refer to one more, and its division without an instruction of the processor to another one.
if "$READELF" -h "$3" | grep -q 'Machine: *ARM$'; then
    printf '%s\n' abort raise >>"$work/allowed"
fi
library=
case ${4:-} in
'') ;;
*.txt)
    list_words "$4" 1 >>"$work/allowed"
    lists="$lists nor ${4##*/}"
    ;;
*)
    library=$4
    "$NM" --dynamic --defined-only "$library" | awk '{ print $3 }' >>"$work/allowed"
    ;;
esac
sort -u -o "$work/allowed" "$work/allowed"

"$NM" --dynamic --undefined-only "$3" | awk '{ sub(/@.*/, "", $2); print $2 }' | sort -u \
    >"$work/undefined"
[ -s "$work/undefined" ] || finding "no dynamic symbols in $3: is it a linked file?"
names_check "$work/undefined" "$3"

"$READELF" -d "$3" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' >"$work/needed"
[ -s "$work/needed" ] || finding "$3 needs no library at all"
while read -r needed; do
    case $needed in
    libc.so*) ;;
    libmaint.so*) [ -n "$library" ] || finding "$3 needs $needed" ;;
    *) finding "$3 needs $needed" ;;
    esac
done <"$work/needed"
check_end
