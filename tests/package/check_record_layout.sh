#!/usr/bin/env bash
# The public records, types and constants are what other programs have been compiled with: the table
# has all that the headers have and nothing else, and the compiler gives them its sizes, offsets and
# values.
# usage: check_record_layout.sh TABLE INCLUDE_DIR
. "$(dirname "$0")/common.sh"
work_make
table=$1
include=$2

# The table by itself
awk '
    function bad(text) { print FILENAME ":" FNR ": " text }
    function record_end() {
        if (record != "" && at != size) bad(record " has " size " bytes, its fields " at)
    }
    /^#/ || NF == 0 { next }
    $1 == "type" && NF == 3 { next }
    $1 == "constant" && NF == 3 { next }
    $1 == "record" && NF == 3 { record_end(); record = $2; size = $3; at = 0; next }
    $1 == "field" && NF == 6 {
        if ($2 != record) bad($2 "." $3 " stands under " record)
        if ($4 != at) bad($2 "." $3 " is at " $4 ", where " at " bytes stand before it")
        at = $4 + $5
        next
    }
    { bad("cannot be read: " $0) }
    END { record_end() }' "$table" >"$work/table_errors"
while read -r line; do finding "$line"; done <"$work/table_errors"

# Both have the same names.
# shellcheck disable=SC2016  # for awk
names='!/^#/ && NF { print $1, $2 ($1 == "field" ? " " $3 : "") }'
awk "$names" "$table" | sort >"$work/listed"
[ -s "$work/listed" ] || finding "nothing in $table"
uniq -d "$work/listed" >"$work/twice"
while read -r name; do finding "$name stands twice in $table"; done <"$work/twice"
perl "$(dirname "$0")/header_names.pl" "$include" 2>"$work/unread" | sort >"$work/declared" ||
    finding "headers that cannot be read"
while read -r line; do finding "$line"; done <"$work/unread"
only_in_first "$work/listed" "$work/declared" >"$work/gone"
while read -r name; do finding "the headers lack $name"; done <"$work/gone"
only_in_first "$work/declared" "$work/listed" >"$work/new"
while read -r name; do finding "the table lacks $name"; done <"$work/new"

# The compiler says the same of them: a claim a line, which does not compile where it is false.
(cd "$include" && find maint -name '*.h' | sort) | sed 's/.*/#include "&"/' >"$work/layout.c"
awk '
    function claim(condition, text) {
        printf "typedef char claim_%d[(%s) ? 1 : -1]; /* %s */\n", ++count, condition, text
    }
    function same(type, what) { return "__builtin_types_compatible_p(" type ", " what ")" }
    BEGIN { print "#include <stddef.h>" }
    $1 == "type" { claim(same($2, $3), $2 " is no " $3) }
    $1 == "constant" { claim("(" $2 ") == (" $3 ")", $2 " is not " $3) }
    $1 == "record" { claim("sizeof(" $2 ") == " $3, $2 " has not " $3 " bytes") }
    $1 == "field" {
        field = "((" $2 "*)0)->" $3
        claim("offsetof(" $2 ", " $3 ") == " $4, $2 "." $3 " is not at " $4)
        claim("sizeof(" field ") == " $5, $2 "." $3 " has not " $5 " bytes")
        claim(same("__typeof__(" field ")", $6), $2 "." $3 " is no " $6)
    }' "$table" >>"$work/layout.c"
if ! "$CC" -std=c99 -Wall -Wextra -Werror -fsyntax-only -I "$include" "$work/layout.c" \
    2>"$work/errors"; then
    sed -n "s|^$work/layout.c:\([0-9]*\):.*error: .*|\1|p" "$work/errors" | sort -nu >"$work/lines"
    while read -r line; do
        finding "$(sed -n "$line { s|.*/\* \(.*\) \*/\$|\1|; p; }" "$work/layout.c")"
    done <"$work/lines"
    [ -s "$work/lines" ] || finding "the headers do not compile: $(cat "$work/errors")"
fi
printf '%d line(s) of the table compared\n' "$(wc -l <"$work/listed")"
check_end
