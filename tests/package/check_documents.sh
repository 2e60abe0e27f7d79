#!/usr/bin/env bash
# The examples build on the installed library, and documents show what programs print on a simulated
# unit.
# usage: check_documents.sh BUILD_DIR SOURCE_DIR DOCUMENT...
. "$(dirname "$0")/common.sh"
work_make
source_dir=$2

"$CMAKE" --install "$1" --prefix "$work/prefix" >"$work/install.log"
if "$CMAKE" -S "$source_dir/examples" -B "$work/examples" -G Ninja -DCMAKE_C_COMPILER="$CC" \
    -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_PREFIX_PATH="$work/prefix" \
    -DCMAKE_C_FLAGS='-Wall -Wextra -Wpedantic -Wconversion -Werror' \
    -DCMAKE_CXX_FLAGS='-Wall -Wextra -Wpedantic -Wconversion -Werror' >"$work/log" 2>&1 &&
    "$CMAKE" --build "$work/examples" >>"$work/log" 2>&1; then
    (cd "$source_dir" && tests/tools/maintctl_examples.py --path "$work/prefix/bin" \
        --path "$work/prefix/sbin" --path "$work/examples" "${@:3}") ||
        finding "a document shows something else"
else
    cat "$work/log"
    finding "the examples do not build"
fi
check_end
