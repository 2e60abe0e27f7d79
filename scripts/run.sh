#!/usr/bin/env bash
# usage: run.sh [IMAGE]
#
# Plays the boot of the board: runs the real program in a private root folder, where
# /dev/mtd_systemlog is a plain file, at a cold start, at a warm start and with a damaged image.
#   IMAGE   flash image to start from instead of a sample of 640 records
#
# Takes a few seconds, the first time up to half a minute for the build. Exit status: 0 if the
# program did what it should at each start. That is so with an image that it refuses, too: the last
# line says why it does, and "systemlog_image check IMAGE" gives a status that tells.
#
# Writes to build/sample, and to a folder in build that is gone at the end. On Debian 12 and as root
# it installs what is missing; otherwise it names it. Needs root or user namespaces.
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
. scripts/checks.sh

setup_need "${build_needs[@]}"
# How to change the root folder: as root, or as root of a user namespace of one's own.
if chroot / true 2>/dev/null; then
    enter=(chroot)
elif unshare --user --map-root-user chroot / true 2>/dev/null; then
    enter=(unshare --user --map-root-user chroot)
else
    die "needs root, or user namespaces for ordinary users (unshare --user): neither is to be had"
fi

printf 'Building (as %s, entering the private root with: %s)\n' "$(id -un)" "${enter[*]}"
# Not where temporary files go by default: programs may not be allowed to run there.
mkdir -p build
root=$(mktemp -d "$PWD/build/root.XXXXXX")
trap 'rm -rf "$root"' EXIT
{ cmake --preset sample && cmake --build --preset sample; } >"$root/build.log" 2>&1 || {
    cat "$root/build.log"
    die 'the build failed'
}

tool=$PWD/build/sample/tools/systemlog_image
flash=$root/dev/mtd_systemlog
log=$root/conf/system.log
mkdir "$root/conf" "$root/dev" "$root/tmp"
cmake --install build/sample --prefix "$root/usr" >/dev/null

said() { grep -qxF -e "$1" "$root/console"; }
said_first() { [ "$(head -n 1 "$root/console")" = "$1" ]; }
said_last() { [ "$(tail -n 1 "$root/console")" = "$1" ]; }
said_nothing_of() { ! grep -qF -e "$1" "$root/console"; }

# The image may be longer than the log in it.
log_is_image() { head -c "$(stat -c %s "$log")" "$flash" | cmp -- "$log" -; }
log_has_all_records() { [ "$(stat -c %s "$log")" -eq $((12 + 100 * $(records_of "$flash"))) ]; }
log_is_empty() { printf '\0\0\0\0\0\0\0\0\1\0\0\0' | cmp -- "$log" -; }
log_is_untouched() { [ "$(log_stamp)" = "$stamp" ] && cmp -- "$log" "$root/log_before"; }
log_stamp() { stat -c '%i %s %y %z' "$log"; }

# Values in the header of an image.
field_of() { od -An -v -t "u$3" -j "$2" -N "$3" "$1" | tr -d ' '; }
records_of() { field_of "$1" 4 2; }

# faults COMMAND FILE: runs the tool on a file of the private root; what it finds wrong there, it
# says on standard error, goes to the file "fault" without the file's name.
faults()
{
    local status=0
    (cd "$root" && "$tool" "$1" "$2") 2>"$root/fault" || status=$?
    sed -i "s|^$2: ||; s|^damaged: ||" "$root/fault"
    return "$status"
}
# What cannot be shown may be what the caller's image holds: no check in itself.
show() { faults show "$1" || printf '  (not to be shown: %s)\n' "$(cat "$root/fault")"; }

# boot TITLE: runs the program and shows what it says and leaves.
boot()
{
    local status=0
    printf '\n== %s\n' "$1"
    "${enter[@]}" "$root" /usr/sbin/maintlogfile >"$root/console" || status=$?
    sed 's/^/  | /' "$root/console"
    printf '  exit status %d\n\n' "$status"
    show conf/system.log
    printf '\n'
    check "exit status is what puts returned for the last line" \
        test "$status" -eq $(($(tail -n 1 "$root/console" | wc -c)))
    check "begins and ends with the banners" banners_said
}
banners_said()
{
    said_first 'maintlogfile --> FROM Read Sart!!' && said_last 'maintlogfile --> FROM Read End!!'
}

if [ -z "$image" ]; then
    "$tool" make "$flash" 640
else
    cp -- "$image" "$flash"
fi
chmod u+w "$flash"
printf '\n== The flash image\n'
good=yes
refused=
if faults check dev/mtd_systemlog >/dev/null; then
    show dev/mtd_systemlog
else
    good=no
    refused=$(cat "$root/fault")
    # Its header, if it has one. The reason is for the last line.
    faults show dev/mtd_systemlog || true
fi

boot 'Cold start: no working log'
check "says that it is a cold start" said 'zev_maintlog_init : 004 : Cold Start!!'
if [ "$good" = yes ]; then
    check "the log is the image's" log_is_image
    check "the log has all records" log_has_all_records
else
    printf '  The image is none that a log can be rebuilt from.\n'
    check "the log is empty" log_is_empty
fi

cp -- "$log" "$root/log_before"
stamp=$(log_stamp)
boot 'Warm start: the working log is still there'
if [ "$(field_of "$log" 6 2)" -le 1000 ]; then
    check "says that it is a warm start" said 'zev_maintlog_init : 001 : Warm Start!!'
    check "does not read the flash" said_nothing_of head.
    check "the log is untouched" log_is_untouched
else
    check "refuses the log's location" said 'zev_maintlog_init : 003 : maintlog header read error'
    check "the log is the image's again" log_is_image
fi

if [ "$good" = yes ]; then
    rm -- "$log"
    if [ "$(records_of "$flash")" -gt 0 ]; then
        # One bit of the first record's message.
        byte=$(field_of "$flash" 50 1)
        printf '%b' "\\0$(printf %o $((byte ^ 1)))" |
            dd of="$flash" bs=1 seek=50 conv=notrunc status=none
        reason='systemLogFileMake : 006 : /dev/mtd_systemlog file checksum error'
    else
        # No record to damage: the version goes.
        printf '\0\0' | dd of="$flash" bs=1 seek=8 conv=notrunc status=none
        reason='systemLogFileMake : 005 : /dev/mtd_systemlog file header version error'
    fi
    boot 'Cold start with a damaged image'
    check "says what is wrong" said "$reason"
    check "says that the log starts anew" said 'zev_maintlog_init : 007 : systemlog init'
    check "the log is empty" log_is_empty
else
    printf '\n== No cold start with a damaged image: the image cannot be used as it is.\n'
fi

printf '\n'
checks_end
if [ "$good" = yes ]; then
    printf 'All runs did what they should.\n'
else
    printf 'The image is refused: %s; the boot starts an empty log.\n' "$refused"
fi
