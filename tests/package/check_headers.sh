#!/usr/bin/env bash
# Every public header compiles by itself, as C99 and as C++20.
# usage: check_headers.sh INCLUDE_DIR
. "$(dirname "$0")/common.sh"

compile()
{
    local language=$1
    shift
    # The declaration is for headers of macros alone: C99 wants one in every unit.
    printf '#include "maint/%s"\n#include "maint/%s"\nextern int unit;\n' "$name" "$name" |
        "$@" -pedantic -Wall -Wextra -Werror -fsyntax-only -I "$include" - ||
        finding "maint/$name does not compile by itself as $language"
}

include=$1
count=0
while IFS= read -r header; do
    name=${header#"$include/maint/"}
    compile C99 "$CC" -std=c99 -x c
    compile C++20 "$CXX" -std=c++20 -Wold-style-cast -x c++
    count=$((count + 1))
done < <(find "$include/maint" -name '*.h' | sort)
[ "$count" -gt 0 ] || finding "no header in $include/maint"
printf '%d header(s) compiled\n' "$count"
check_end
