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

# The simulated unit is installed with the rest, and by its name alone.
if grep -q '^MAINT_BUILD_SIMULATOR:BOOL=ON$' "$1/CMakeCache.txt"; then
    "$(dirname "$0")/check_consumer_on_a_unit.sh" "$prefix" "$3" ||
        finding "the installed simulated unit is of no use"
    "$CMAKE" --install "$1" --prefix "$work/alone" --component maintsim >"$work/install.log"
    files=$(cd "$work/alone" && find . -type f | sort | paste -sd' ')
    [[ $files =~ ^\./bin/maintsim\ \./lib[^\ ]*/maintsim/libmaintsim_preload\.so$ ]] ||
        finding "the component maintsim is something else: $files"
    # It comes into programs of any kind: it brings nothing but the C library.
    find "$work/alone" -type f | while read -r file; do
        "$READELF" -d "$file" | sed -n '/\[\(libc\.so\|ld-linux\)[^]]*\]$/!s/.*(NEEDED).*\[\(.*\)\]$/\1/p' |
            sed "s|^|${file##*/} needs |"
    done >"$work/needed"
    [ ! -s "$work/needed" ] || finding "$(cat "$work/needed")"
    "$work/alone/bin/maintsim" true || finding "the component maintsim alone is of no use"
elif [ -e "$prefix/bin/maintsim" ]; then
    finding "bin/maintsim, which nobody asked for"
fi
check_end
