#!/usr/bin/env bash
# Every function of this C library that takes a path, or works on a descriptor, has a decision, and
# what is decided is what the preloaded object does. A function that is new to the C library shows up
# here.
# usage: path_functions.sh LIST OBJECT TEST...
set -euo pipefail
export LC_ALL=C
: "${CC:=cc}" "${NM:=nm}"

list=$1 object=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
findings=0

finding()
{
    printf '%s\n' "$*" >&2
    findings=$((findings + 1))
}

# What the headers declare: a declaration a line, without attributes and bodies.
headers="aio dirent dlfcn err error fcntl fstab fts ftw glob iconv libgen libintl link malloc mntent
    mqueue nl_types poll pthread pty pwd grp shadow gshadow regex sched search semaphore signal spawn
    stdio stdlib string strings sys/acct sys/epoll sys/eventfd sys/fanotify sys/file sys/inotify
    sys/ioctl sys/ipc sys/mman sys/mount sys/pidfd sys/prctl sys/quota sys/reboot sys/select
    sys/sendfile sys/shm sys/signalfd sys/socket sys/stat sys/statfs sys/statvfs sys/swap sys/syscall
    sys/time sys/timeb sys/timerfd sys/timex sys/types sys/uio sys/utsname sys/vfs sys/wait sys/xattr
    syslog termios threads time ttyent uchar unistd utime utmp utmpx wchar wordexp"
for header in $headers; do
    printf '#if __has_include(<%s.h>)\n#include <%s.h>\n#endif\n' "$header" "$header"
done >"$work/headers.c"
"$CC" -E -P -D_GNU_SOURCE -D_LARGEFILE64_SOURCE -U_FORTIFY_SOURCE "$work/headers.c" |
    tr '\n' ' ' | tr ';{}' '\n' |
    sed -E 's/__attribute__ *\(\(([^()]|\([^()]*\))*\)\)//g; s/__asm__ *\([^)]*\)//g' |
    sed -nE 's/^ *extern .*[ *]([a-zA-Z_][a-zA-Z_0-9]*) *\((.*)\) *$/\1 \2/p' >"$work/declared"
# A path is text; of what may be a descriptor, the headers say so by the name.
{
    awk '/[^a-zA-Z_](char|__gnuc_va_list) *\*|char *\* *const/ { print $1 }' "$work/declared"
    awk '/int (__)?(fd|fildes|fds|fd1|fd2|dirfd|dfd|dfd1|from_dfd|to_dfd|infd|outfd|in_fd|out_fd|oldfd|newfd|fromfd|tofd|fdin|fdout|fs_fd)[ ,]|int (__)?(fd|fildes|fd2|tofd)$/ { print $1 }' "$work/declared"
    awk '/const struct timespec \*/ { print $1 }' "$work/declared"
    awk '/settime|adjtime|^time |gettime|^stime|settimeofday/ { print $1 }' "$work/declared"
} | grep -vx int | sort -u >"$work/functions" # a pointer to a function looks like that
[ "$(wc -l <"$work/functions")" -gt 500 ] || finding "the headers are not read: $(wc -l <"$work/functions") functions"

awk '!/^#/ && NF { print $1 }' "$list" | sort >"$work/decided"
uniq -d "$work/decided" >"$work/twice"
while read -r name; do
    finding "$name is decided twice"
done <"$work/twice"
comm -23 "$work/functions" "$work/decided" >"$work/new"
while read -r name; do
    finding "$name takes a path or a descriptor, and has no decision: $(grep -m 1 "^$name " "$work/declared")"
done <"$work/new"

awk '!/^#/ && $2 == "taken" { print $1 }' "$list" | sort >"$work/taken"
"$NM" -D --defined-only "$object" | awk '{ print $3 }' | sort >"$work/exported"
comm -23 "$work/taken" "$work/exported" >"$work/missing"
while read -r name; do
    finding "$name is not taken over"
done <"$work/missing"
comm -13 "$work/taken" "$work/exported" >"$work/extra"
while read -r name; do
    finding "$name is taken over, or exported, without a decision"
done <"$work/extra"
awk '!/^#/ && NF && $2 !~ /^(taken|text|name|follows|machine|kernel)$/ { print $1 }' "$list" >"$work/unclear"
while read -r name; do
    finding "the decision of $name is none of those that the list explains"
done <"$work/unclear"

cat "$@" >"$work/tests"
while read -r name; do
    grep -qw -- "$name" "$work/tests" || finding "$name is named in no test"
done <"$work/taken"

if [ "$findings" -ne 0 ]; then
    printf '%d finding(s)\n' "$findings" >&2
    exit 1
fi
