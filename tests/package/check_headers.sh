#!/usr/bin/env bash
# Every public header compiles by itself, and all of them together, as C99 and as C++20, without the
# warnings that a careful program asks for.
# usage: check_headers.sh INCLUDE_DIR
. "$(dirname "$0")/common.sh"

as_c() { "$CC" -std=c99 -x c "$@"; }
as_cxx() { "$CXX" -std=c++20 -Wold-style-cast -x c++ "$@"; }
# As some C++ programs include headers of C
as_block() { { echo 'extern "C" {' && cat && echo '}'; } | as_cxx "$@"; }

# compiles COMPILER HEADER...: a unit with these headers compiles.
compiles()
{
    # The declaration is for headers of macros alone: C99 wants one in every unit.
    { printf '#include "maint/%s"\n' "${@:2}" && echo 'extern int unit;'; } |
        "$1" -pedantic -Wall -Wextra -Wconversion -Wshadow -Wcast-qual -Wunused -Werror \
            -fsyntax-only -I "$include" -
}

include=$1
names=()
while IFS= read -r header; do
    name=${header#"$include/maint/"}
    names+=("$name")
    compiles as_c "$name" "$name" || finding "maint/$name does not compile by itself as C99"
    compiles as_cxx "$name" "$name" || finding "maint/$name does not compile by itself as C++20"
done < <(find "$include/maint" -name '*.h' | sort)
if [ "${#names[@]}" -gt 0 ]; then
    compiles as_c "${names[@]}" || finding "the headers do not compile together as C99"
    compiles as_cxx "${names[@]}" || finding "the headers do not compile together as C++20"
    compiles as_block "${names[@]}" || finding 'the headers do not compile within extern "C"'
else
    finding "no header in $include/maint"
fi
printf '%d header(s) compiled\n' "${#names[@]}"
check_end
