#!/usr/bin/env bash
# A C program builds against an installed tree and runs, found by CMake and by pkg-config. EMULATOR
# runs programs of another processor.
# usage: check_consumer.sh PREFIX CONSUMER_DIR
. "$(dirname "$0")/common.sh"
work_make
prefix=$1
consumer=$2

runs()
{
    local libraries
    libraries=$(dirname "$(find "$prefix" -name 'libmaint.*' | head -n 1)")
    LD_LIBRARY_PATH=$libraries ${EMULATOR:+"$EMULATOR"} "$work/$1" >"$work/said" || finding "$1 exits with $?"
    diff "$consumer/expected.txt" "$work/said" || finding "$1 says something else"
}

if "$CMAKE" -S "$consumer" -B "$work/build" -G Ninja -DCMAKE_C_COMPILER="$CC" \
    -DCMAKE_PREFIX_PATH="$prefix" >"$work/log" 2>&1 &&
    "$CMAKE" --build "$work/build" >>"$work/log" 2>&1; then
    grep -q "^maint_DIR:PATH=$prefix/" "$work/build/CMakeCache.txt" ||
        finding "CMake found a maint other than the one in $prefix"
    runs build/consumer
else
    cat "$work/log"
    finding "no consumer through find_package(maint)"
fi

PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name maint.pc | grep . || echo "$prefix/none")")
export PKG_CONFIG_LIBDIR
if flags=$(pkg-config --cflags --libs maint) &&
    read -ra words <<<"$flags" &&
    "$CC" -std=c99 -Wall -Wextra -Werror "$consumer/consumer.c" "${words[@]}" \
        -o "$work/with_pkg_config"; then
    runs with_pkg_config
else
    finding "no consumer through pkg-config"
fi
check_end
