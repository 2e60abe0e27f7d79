#!/usr/bin/env bash
# usage: board.sh
#
# Proves the product for the board: builds it with the board's C library and says how large it is,
# runs all tests on the board's processor, emulated, and lives the life of a unit on a virtual board
# with a kernel, a flash and devices of its own.
#
# On two processors the first run takes about ten minutes; it downloads about 300 MB of packages, if
# they are not installed yet, and some for the virtual board's shell. It builds the C library and the
# kernel and keeps them in .cache (or in the folder that MAINT_CACHE names) for all that follow,
# which take about three minutes.
#
# Writes to build/board-uclibc, build/arm, build/sample, build/virtual-board and .cache. On Debian 12
# and as root it installs what is missing; otherwise it names it.
set -euo pipefail
. "$(dirname "$0")/usage.sh"
usage 0 0 "$@"
. "$(dirname "$0")/setup.sh"
. scripts/checks.sh

# What the builds below read of the environment is theirs to choose.
unset CROSS_COMPILE CFLAGS CXXFLAGS CPPFLAGS LDFLAGS MAKEFLAGS GTEST_FILTER
case $PWD${MAINT_CACHE-} in
*[[:space:],:]*) die 'the builds take no folder with a blank, comma or colon in its name' ;;
esac

setup_need "${build_needs[@]}" pkg-config=pkg-config make=make perl=perl \
    arm-linux-gnueabi-g++=g++-arm-linux-gnueabi /usr/src/uClibc-ng-1.0.35.tar.xz=uclibc-source \
    /usr/src/googletest/CMakeLists.txt=googletest qemu-arm-static=qemu-user-static \
    /usr/src/linux-source-6.1.tar.xz=linux-source-6.1 xz=xz-utils bc=bc flex=flex bison=bison \
    qemu-system-arm=qemu-system-arm cpio=cpio

step()
{
    printf '\n=== %s (at %d s)\n' "$1" "$SECONDS"
}

# quietly COMMAND...: what it says counts only if it fails.
quietly()
{
    "$@" >"$work/log" 2>&1 || {
        cat "$work/log"
        die "failed: $*"
    }
}

work=$PWD/build/virtual-board
mkdir -p build
exec 9>"$work.lock"
flock -n 9 || die 'another one runs here'
rm -rf "$work"
mkdir "$work"

step 'the toolchain and the C library of the board'
toolchain=$(board/cached uclibc)/bin/arm-uclibc-
"${toolchain}gcc" --version | head -n 1

step 'the product for the board'
stage=$work/stage/usr
CROSS_COMPILE=$toolchain quietly cmake --fresh --preset board -B build/board-uclibc
quietly cmake --build build/board-uclibc
quietly cmake --install build/board-uclibc --prefix "$stage"
board/sizes.sh build/board-uclibc "$toolchain"

step 'all tests on the processor of the board, emulated'
cmake --preset arm
cmake --build --preset arm
cmake --build --preset arm --target device_daemon
trials=$work/trials.txt
MAINT_TRIALS=$trials MAINT_TRIALS_JSON=$work/maintctl.jsonl ctest --preset arm | tee "$work/ctest.log"
.ci/skips "$work/ctest.log" | tee "$work/skips"
if grep -q ': no reason given$' "$work/skips"; then die 'a test is skipped without a reason'; fi

step 'the kernel, shell and tools of the virtual board'
kernel=$(board/cached kernel)
busybox=$(board/cached busybox)/busybox
ls -l "$kernel/zImage" "$busybox"

step 'what the virtual board runs'
board/root_image "$work" "$toolchain" "$stage" "$busybox" build/arm/tests/device_daemon "$trials"
ls -l "$work/root.gz"

step 'the life of a unit'
quietly cmake --preset sample
quietly cmake --build --preset sample --target systemlog_image
board/life "$work" "$kernel" "$work/root.gz" build/sample/tools/systemlog_image

step 'the commands on real devices'
board/run_vm "$work" "$kernel" "$work/root.gz" devices
tr -d '\r' <"$work/console" >"$work/said"
sed 's/^/  | /' "$work/said"
said() { grep -qxE -e "$1" "$work/said"; }
for group in ports PHYs bandwidth MTU 'address entries' 'device words' 'identifier entries' panel \
    'register fields' 'address maps' counters statistics rules 'switch tables' unit files; do
    check "commands of the group $group" said "commands: $group: ok"
done
check '4 processes at once' said 'together: 4 processes, 25 rounds each: ok'
check '9 processes at once' said 'together: 9 processes, 8 rounds each: ok'
check "the board's clock is set" said 'clock: 2020-02-29 12:00:[0-9]{2} weekday 6, .*: ok'
# 128 and the number of SIGBUS
check 'a misaligned access is fatal' said 'misaligned: ended with 135'
check 'the step ended well' said 'board: step devices ended with 0'
# Numbers behind < have no trial, numbers behind > are no command.
commands_tried()
{
    diff <(sed -n 's/.*{NAMED(.*), 0x\([0-9A-F]*\),.*/\1/p' tests/device/command_facts.cpp | sort) \
        <(sed -n 's/^trial //p' "$trials" | sort -u)
}
check 'there are trials of every command' commands_tried
trials_same() { diff "$trials" "$work/out/trials.txt" | head -n 40; }
check "all $(grep -c '^trial ' "$trials") trials: same requests, results, records and files as in the tests" \
    trials_same
program_same() { diff "$trials" "$work/out/maintctl.txt" | head -n 40; }
check 'the same by the program maintctl' program_same
lines_same() { diff "$work/maintctl.jsonl" "$work/out/maintctl.jsonl" | head -n 40; }
check "all $(wc -l <"$work/maintctl.jsonl") lines of JSON that it says: the same as in the tests" lines_same
checks_end

printf '\nThe product holds on the board, after %d s.\n' "$SECONDS"
