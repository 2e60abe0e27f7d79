#!/usr/bin/env bash
# What cmake --install leaves is all that a C program needs, by CMake package and by pkg-config.
# usage: check_installation.sh BUILD_DIR INCLUDE_DIR CONSUMER_DIR
. "$(dirname "$0")/common.sh"
work_make

prefix=$work/prefix
"$CMAKE" --install "$1" --prefix "$prefix" >"$work/install.log"

for program in maintlogfile maintctl; do
    [ -x "$prefix/sbin/$program" ] || finding "no sbin/$program"
done
[ -f "$prefix/share/bash-completion/completions/maintctl" ] || finding "no completion for maintctl"
diff -r "$2/maint" "$prefix/include/maint" || finding "the installed headers are not the public ones"

"$(dirname "$0")/check_consumer.sh" "$prefix" "$3" || finding "the installed library is of no use"
check_end
