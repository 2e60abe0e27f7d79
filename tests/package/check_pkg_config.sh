#!/usr/bin/env bash
# The pkg-config file finds the folders of library and headers, whether they were given as parts of
# the prefix or as absolute paths.
# usage: check_pkg_config.sh SOURCE_DIR
. "$(dirname "$0")/common.sh"
work_make
source_dir=$1
prefix=$work/prefix

absolute()
{
    case $1 in
    /*) printf '%s\n' "$1" ;;
    *) printf '%s\n' "$prefix/$1" ;;
    esac
}

# leads VARIABLE FOLDER: the file where it would be installed has this folder in the variable.
leads()
{
    local got
    got=$(PKG_CONFIG_LIBDIR=$folder pkg-config --variable="$1" maint)
    [ "$(realpath -m "$got")" = "$(realpath -m "$2")" ] || finding "$1 is $got, not $2"
}

# finds LIBDIR INCLUDEDIR: configured with these, the file leads to them.
finds()
{
    local folder
    folder=$(absolute "$1")/pkgconfig
    rm -rf "$work/build"
    if ! "$CMAKE" -S "$source_dir" -B "$work/build" -G Ninja -DMAINT_BUILD_TESTS=OFF \
        -DCMAKE_C_COMPILER="$CC" -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_INSTALL_PREFIX="$prefix" \
        -DCMAKE_INSTALL_LIBDIR="$1" -DCMAKE_INSTALL_INCLUDEDIR="$2" >"$work/log" 2>&1; then
        cat "$work/log"
        finding "cannot be configured with $1 and $2"
        return
    fi
    mkdir -p "$folder"
    cp "$work/build/maint.pc" "$folder"
    leads libdir "$(absolute "$1")"
    leads includedir "$(absolute "$2")"
}

finds lib include
finds "$work/libraries" include
finds lib "$work/headers"
check_end
