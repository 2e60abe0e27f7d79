#!/usr/bin/env bash
# usage: run.sh [IMAGE]
#
# A tour of the product on a simulated unit, by maintsim: the boot (a cold start, a warm start, a
# damaged image), the unit's status, a pattern on its front panel and the panel restored, a request
# that fails. Each step is checked.
#   IMAGE   flash image to start from instead of a sample of 640 records
#
# Takes a few seconds, the first time up to a minute for the build. Exit status: 0 if every program
# did what it should. That is so with an image that it refuses, too: the last line says why it does,
# and "systemlog_image check IMAGE" gives a status that tells.
#
# Needs neither root nor a device. Writes to build/sample, and to a folder in build that is gone at
# the end. On Debian 12 and as root it installs what is missing; otherwise it names it.
set -euo pipefail
. "$(dirname "$0")/usage.sh"
usage 0 1 "$@"
image=
if [ $# -eq 1 ]; then
    [ -e "$1" ] || refuse "no such file: $1"
    [ -f "$1" ] || refuse "not a file: $1"
    [ -r "$1" ] || refuse "not to be read: $1"
    image=$(realpath -- "$1")
fi
. "$(dirname "$0")/setup.sh"

setup_need "${build_needs[@]}"
printf 'Building (as %s)\n' "$(id -un)"
# Not where temporary files go by default: programs may not be allowed to run there.
mkdir -p build
work=$(mktemp -d "$PWD/build/tour.XXXXXX")
trap 'rm -rf "$work"' EXIT
. scripts/boots.sh
stage=$PWD/build/sample/stage
{
    cmake --preset sample && cmake --build --preset sample &&
        cmake --install build/sample --prefix "$stage"
} >"$work/build.log" 2>&1 || {
    cat "$work/build.log"
    die 'the build failed'
}
PATH=$stage/bin:$stage/sbin:$PATH

maintsim -u "$work/unit" new ${image:+--image "$image"}
boots_of "$work/unit/files" build/sample/tools/systemlog_image

# Part one: the boot
program() { maintsim -u "$work/unit" maintlogfile; }
boots

# Part two: the device commands

title() { printf '\n== %s\n' "$1"; }
# try STATUS COMMAND: shows a command as one types it and what it says; its exit status is checked.
try()
{
    local status=0
    printf '  $ %s\n' "$2"
    (cd "$work" && bash -o pipefail -c "$2") >"$work/said" 2>&1 || status=$?
    sed 's/^/  | /' "$work/said"
    check "exit status $1" test "$status" -eq "$1"
}
has() { grep -qF -e "$1" "$work/said"; }
both_tries() { [ "$(grep -c 'register read, address=0x0056) = -1 EIO' "$work/said")" -eq 2 ]; }
same_as() { cmp -- "$work/said" "$work/$1"; }
differs_from() { ! cmp -s -- "$work/said" "$work/$1"; }

title 'The unit on one screen'
try 0 'maintsim -u unit maintctl status'
check "says whose status it is" has 'serial      A00000001'
check "says that port 6 is up" has 'port 6      up '

title 'The front panel, before'
try 0 'maintsim -u unit maintctl panel'
cp "$work/said" "$work/panel"
title 'A fixed pattern on the panel'
try 0 'maintsim -u unit maintctl WR_LED_PATTERN_1'
try 0 'maintsim -u unit maintctl panel'
check "the panel shows something else" differs_from panel
title 'The panel as it was'
try 0 'maintsim -u unit maintctl WR_LED_RESTORE'
try 0 'maintsim -u unit maintctl panel'
check "the panel shows what it showed before" same_as panel

title 'A request that fails twice: the library tries a failed command once more'
try 0 'maintsim -u unit fail register-read --for 2'
try 2 'maintsim -u unit maintctl --trace RD_MTU_LIMIT'
check "says what failed" has 'maintctl: RD_MTU_LIMIT: -2: '
check "shows both tries" both_tries
title 'And the next time, when it does not'
try 0 'maintsim -u unit maintctl RD_MTU_LIMIT'
check "says the limit" has '=1404'

title 'What the devices were asked in the end, and by whom'
try 0 'maintsim -u unit calls | tail -n 4'
check "the answer is there" has 'maintctl: ioctl /dev/fpga 6B42 (register read) 56 00 00 00 00 00 00 00 -> 0 '

printf '\nTo go on by yourself:\n'
printf '  PATH=%q:%q:%s\n' "$stage/bin" "$stage/sbin" "\$PATH"
printf '  maintsim -u build/unit new\n'
printf '  maintsim -u build/unit maintctl status\n'
boots_end
