#!/usr/bin/env bash
# What maintsim runs, what it refuses, and what is left of a unit for one run. The programs are those
# that a developer uses; none of them was built for it.
# usage: launch.sh MAINTSIM PRELOAD_OBJECT STATIC_PROGRAM
# shellcheck disable=SC2016  # variables of the programs that run on the unit
set -euo pipefail
: "${CC:=cc}"
export LC_ALL=C

maintsim=$1 object=$2 static=$3
work=$(mktemp -d)
trap 'chmod -R u+rwx "$work"; rm -rf "$work"' EXIT
cd "$work"
mkdir temporary
export TMPDIR=$work/temporary
failures=0

fail()
{
    printf 'FAIL: %s\n' "$*"
    failures=$((failures + 1))
}

# awaits COMMAND...: until it succeeds, or for half a minute; what is then, the caller looks at.
awaits()
{
    for _ in $(seq 600); do
        if "$@"; then break; fi
        sleep 0.05
    done
}

# between LEAST MOST NUMBER
between() { [ "$3" -ge "$1" ] && [ "$3" -lt "$2" ]; }

# ends STATUS PROGRAM...: the exit status; what it says goes to the files shown and error.
ends()
{
    local expected=$1 status=0
    shift
    "$@" >shown 2>error || status=$?
    [ "$status" -eq "$expected" ] || fail "'$*' ends with $status instead of $expected: $(cat error)"
}

# refuses STATUS TEXT PROGRAM...: one line on standard error, which begins so.
refuses()
{
    local status=$1 text=$2
    shift 2
    ends "$status" "$@"
    [ "$(wc -l <error)" -eq 1 ] || fail "'$*' says more than a line: $(cat error)"
    case $(cat error) in
    "maintsim: $text"*) ;;
    *) fail "'$*' says '$(cat error)' instead of 'maintsim: $text'" ;;
    esac
    [ ! -s shown ] || fail "'$*' says something on standard output"
}

# shows TEXT PROGRAM...: success, and this on standard output.
shows()
{
    local text=$1
    shift
    ends 0 "$@"
    [ "$(cat shown)" = "$text" ] || fail "'$*' shows '$(cat shown)' instead of '$text': $(cat error)"
}

[ ! -e /conf ] || { echo "SKIP: this machine has a /conf of its own" && exit 77; }
"$maintsim" -u unit new
serial=A00000001

# The options of maintsim itself

for words in '-u unit' '-uunit' '--unit unit' '--unit=unit' "-u $work/unit/"; do
    # shellcheck disable=SC2086 # one word or two
    shows 'rtc.runs=1' "$maintsim" $words show rtc.runs
done
refuses 64 'a program or a verb is missing; --help tells more' "$maintsim"
refuses 64 'a program or a verb is missing; --help tells more' "$maintsim" -u unit
refuses 64 'a program or a verb is missing; --help tells more' "$maintsim" --
for words in '-u' '--unit' '--unit='; do
    refuses 64 '-u needs a folder' "$maintsim" "$words"
done
refuses 64 '-u needs a folder' "$maintsim" -u '' show
refuses 64 '-u is given twice' "$maintsim" -u unit --unit=other show
refuses 64 'no such option: -x' "$maintsim" -x show
refuses 64 'no such option: --units' "$maintsim" --units unit show
for verb in new show set fail calls power-cycle warm-restart; do
    refuses 64 "$verb needs a unit: -u DIR" "$maintsim" "$verb"
    ends 0 "$maintsim" "$verb" --help
    [ "$(sed -n 2p shown | cut -c 1-$((14 + ${#verb})))" = "    maintsim $verb " ] || fail "help of $verb: $(cat shown)"
    ends 0 "$maintsim" -u none "$verb" -h
    [ ! -e none ] || fail "the help of $verb makes a unit"
done
ends 0 "$maintsim" --help
[ "$(head -n 2 shown)" = 'NAME
    maintsim - a simulated unit' ] || fail "--help shows $(cat shown)"
awk 'length($0) > 80 { bad = 1 } END { exit bad }' shown || fail "a line of --help is longer than a terminal's"
shows "$("$maintsim" --version)" "$maintsim" -V
[[ $(cat shown) =~ ^maintsim\ [0-9]+\.[0-9]+\.[0-9]+$ ]] || fail "the version is '$(cat shown)'"
refuses 1 'standard output cannot be written' bash -c '"$1" --help >/dev/full' bash "$maintsim"
refuses 1 'standard output: No space left on device' bash -c '"$1" -u unit show >/dev/full' bash "$maintsim"
# A program that has the name of a verb; what is behind it is its own.
printf '#!/bin/sh\necho "program $*"\n' >calls
chmod +x calls
shows 'program --help -u x' env PATH="$work:$PATH" "$maintsim" -u unit -- calls --help -u x
shows 'program -x' env PATH="$work:$PATH" "$maintsim" -- calls -x
shows 'program -h' "$maintsim" -u unit ./calls -h
rm calls

# Programs of the machine

shows "$serial" "$maintsim" -u unit cat /tmp/serialno
shows "$serial" "$maintsim" -u "$work/unit" cat /tmp/serialno
shows "$serial" "$maintsim" -u unit head -n 1 /conf/../tmp/serialno
shows "$serial" "$maintsim" -u unit sh -c 'cd /conf && cat ../tmp/serialno'
shows 'config statistics user.log' "$maintsim" -u unit sh -c 'echo $(ls /conf)'
shows '/conf/config' "$maintsim" -u unit sh -c 'echo /conf/conf*'
shows '/conf' "$maintsim" -u unit sh -c 'cd /conf; /bin/pwd'
shows 'character special file f0' "$maintsim" -u unit stat -c '%F %t' /dev/fpga
shows '' "$maintsim" -u unit cp /conf/config copy
cmp copy unit/files/conf/config || fail "cp copies something else"
shows '' "$maintsim" -u unit cp copy /conf/copy
shows '' "$maintsim" -u unit mv /conf/copy /conf/moved
cmp copy unit/files/conf/moved || fail "mv and cp write something else"
shows '' "$maintsim" -u unit mv /conf/moved moved
cmp copy moved || fail "mv out of the unit"
[ ! -e unit/files/conf/moved ] || fail "mv leaves the file in the unit"
shows '' "$maintsim" -u unit dd if=moved of=/tmp/vornapppoe.mtu bs=64 count=1 status=none
[ "$(stat -c %s unit/files/tmp/vornapppoe.mtu)" -eq 64 ] || fail "dd writes something else"
shows "B00000001" "$maintsim" -u unit sh -c 'sed -i s/A/B/ /tmp/serialno && cat /tmp/serialno'
"$maintsim" -u unit sh -c 'echo A00000001 >/tmp/serialno'
ends 1 "$maintsim" -u unit cat /dev/fpga
grep -q 'Invalid argument' error || fail "cat of a device: $(cat error)"
ends 1 "$maintsim" -u unit sh -c 'echo text >/dev/rtc'
ends 1 "$maintsim" -u unit rm -f /dev/fpga
# tail follows the file while another program writes.
echo first >unit/files/conf/followed
timeout 60 "$maintsim" -u unit tail -n +1 -f /conf/followed >followed &
tail=$!
awaits grep -q first followed
"$maintsim" -u unit sh -c 'echo second >>/conf/followed'
awaits grep -q second followed
kill "$tail"
wait "$tail" || true
[ "$(cat followed)" = "$(printf 'first\nsecond')" ] || fail "tail -f shows '$(cat followed)'"
"$maintsim" -u unit rm /conf/followed

# A program in the unit's own folder.
printf '#!/bin/sh\ncat "$(dirname "$0")/config" /tmp/serialno; exit 3\n' >unit/files/conf/program
refuses 126 '/conf/program: it may not be read and run' "$maintsim" -u unit /conf/program
chmod +x unit/files/conf/program
ends 3 "$maintsim" -u unit /conf/program
cat copy unit/files/tmp/serialno | cmp - shown || fail "a program of the unit shows $(cat shown)"
refuses 127 '/conf/none: no such program' "$maintsim" -u unit /conf/none
rm unit/files/conf/program

for program in python3 busybox vim; do
    command -v "$program" >/dev/null || echo "not here: $program"
done
if command -v python3 >/dev/null; then
    cat >ask.py <<'END'
import ctypes, fcntl, os, struct, sys, time
f = os.open("/dev/fpga", os.O_RDWR | os.O_NONBLOCK)
fcntl.ioctl(f, 0x6B43, struct.pack("<II", 0x12, 0x77))
print("%x" % struct.unpack("<II", fcntl.ioctl(f, 0x6B42, struct.pack("<II", 0x12, 0)))[1])
c = ctypes.CDLL(None, use_errno=True)
g = c.open(b"/dev/fpga", os.O_RDWR)
r = (ctypes.c_uint32 * 2)(0x12, 0)
assert c.ioctl(g, 0x6B42, r) == 0 and r[1] == 0x77
assert c.ioctl(g, 0x6B04, 0x1234) == 0
print(open("/tmp/serialno").read().strip(), sorted(os.listdir("/conf")), os.path.realpath("/conf/.."))
END
    shows "$(printf "77\n%s ['config', 'statistics', 'user.log'] /" "$serial")" \
        "$maintsim" -u unit python3 ask.py
    # Ended by a signal, and not with a number that a shell makes of it.
    shows -15 python3 -c 'import subprocess, sys; print(subprocess.call(sys.argv[1:]))' \
        "$maintsim" sh -c 'kill -TERM $$'
fi
if command -v busybox >/dev/null && "$maintsim" -u unit busybox true 2>error; then
    shows "$serial" "$maintsim" -u unit busybox cat /tmp/serialno
fi
if command -v vim >/dev/null; then
    echo one >unit/files/conf/edited
    ends 0 "$maintsim" -u unit vim -u NONE -es -c '%s/one/two/' -c wq /conf/edited </dev/null
    [ "$(cat unit/files/conf/edited)" = two ] || fail "vim does not write"
    rm unit/files/conf/edited
fi

# The clock is the unit's: the machine's is looked at before and after, by a program of the machine.
before=$(date +%s)
if "$maintsim" -u unit sh -c 'case $LD_PRELOAD in *libmaintsim_preload.so*) exit 0;; *) exit 1;; esac'; then
    shows '' "$maintsim" -u unit sh -c 'date -s @1000000000 >/dev/null'
    shows '2001' "$maintsim" -u unit date +%Y
    now=$("$maintsim" -u unit sh -c 'date +%s')
    between 1000000000 1000000060 "$now" || fail "the unit's clock says $now"
else
    fail "programs are not preloaded"
fi
after=$(date +%s)
between 0 60 $((after - before)) || fail "the machine's clock was set"

# maintsim on a unit whose clock stands elsewhere: what it sets has the machine's time, as for all others.
ends 0 "$maintsim" -u unit sh -c 'date -s @1000000000 >/dev/null
    "$1" -u unit set rtc.time=2020-01-02T03:04:05 rtc.runs=1 && "$1" -u other new' sh "$maintsim"
[ ! -s error ] || fail "maintsim on a unit says $(cat error)"
"$maintsim" -u unit show rtc.time >shown
[[ $(cat shown) == rtc.time=2020-01-02T03:0* ]] || fail "a clock set from a unit says $(cat shown)"
"$maintsim" -u other show rtc.time >shown
[[ $(cat shown) == "rtc.time=$(date +%Y)"-* ]] || fail "the clock of a unit made on another says $(cat shown)"
rm -r other

# A program of our own, in C, without a word about the simulation

cat >own.c <<'END'
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/ioctl.h>
#include <unistd.h>
int main(void)
{
    uint32_t record[2] = {0x12, 0};
    const int device = open("/dev/fpga", O_RDWR);
    if (device < 0 || ioctl(device, 0x6B42, record) != 0) {
        return 1;
    }
    printf("%x\n", record[1]);
    return close(device);
}
END
"$CC" own.c -o own
if command -v python3 >/dev/null; then
    shows 77 "$maintsim" -u unit ./own
fi
"$maintsim" -u other new
"$maintsim" -u other set register.0x0012=0x1111
"$maintsim" -u unit set register.0x0012=0x2222
shows 1111 "$maintsim" -u other ./own
shows 2222 "$maintsim" -u unit ./own
shows 1111 "$maintsim" -u unit "$maintsim" -u other ./own

# Everything that it asked is in the unit's list, the close too.
"$maintsim" -u other calls >other_calls
grep -c 'own: open /dev/fpga O_RDWR$' other_calls >count || true
[ "$(cat count)" -eq 2 ] || fail "the list of calls has not two opens: $(cat other_calls)"
[ "$(grep -c 'own: close /dev/fpga' other_calls)" -eq 2 ] || fail "the list has not two closes: $(cat other_calls)"

# Each close once, whichever way; a descriptor that is no open device closes nothing.
cat >closes.c <<'END'
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/ioctl.h>
#include <unistd.h>
int __close(int descriptor);
int main(void)
{
    uint32_t record[2] = {0x12, 0};
    const int device = open("/dev/fpga", O_RDWR);
    const int same = dup2(device, device);
    const int path = open("/dev/fpga", O_PATH);
    const int asked = ioctl(path, 0x6B42, record) == -1 && errno == EBADF;
    close(path);
    FILE* const stream = fopen("/dev/rtc", "re");
    const int inherited = fcntl(fileno(stream), F_GETFD) != FD_CLOEXEC;
    fclose(stream);
    fclose(fopen("/dev/rtc", "w"));
    fclose(fopen("/dev/rtc", "r+"));
    const int replaced = open("/dev/rtc", O_RDONLY);
    dup2(device, replaced);
    __close(replaced);
    const int null = open("/dev/null", O_RDONLY);
    dup3(null, device, 0);
    close(device);
    close(-1);
    return same == device && asked && !inherited ? 0 : 1;
}
END
"$CC" closes.c -o closes
"$maintsim" -u closing new
ends 0 "$maintsim" -u closing ./closes
told=$("$maintsim" -u closing calls | sed 's/.*closes: //')
[ "$told" = 'open /dev/fpga O_RDWR
open /dev/rtc O_RDONLY|O_CLOEXEC
close /dev/rtc
open /dev/rtc O_WRONLY
close /dev/rtc
open /dev/rtc O_RDWR
close /dev/rtc
open /dev/rtc O_RDONLY
close /dev/rtc
close /dev/fpga
close /dev/fpga' ] || fail "opens and closes are $told"

# A unit that breaks while it is used: a program is told of no device, and a person why.
cp -r unit broken
ends 1 "$maintsim" -u broken sh -c 'rm "$1"; exec cat /dev/fpga' sh "$work/broken/journal"
[ "$(cat error)" = "maintsim: $work/broken/journal: No such file or directory
cat: /dev/fpga: No such device or address" ] || fail "of a broken unit: $(cat error)"

# Exit status and signals, for both kinds of unit

for unit in '-u unit' ''; do
    # shellcheck disable=SC2086 # no word, or two
    {
        ends 0 "$maintsim" $unit true
        ends 7 "$maintsim" $unit sh -c 'exit 7'
        ends 143 "$maintsim" $unit sh -c 'kill -TERM $$'
        ends 137 "$maintsim" $unit sh -c 'kill -KILL $$'
        ends 0 "$maintsim" $unit sh -c 'read line; [ "$line" = x ]' <<<x
    }
done
[ -z "$(ls temporary)" ] || fail "a unit for one run is left: $(ls temporary)"

# What is sent to maintsim, the program gets.
"$maintsim" sh -c 'trap "exit 9" TERM; echo ready; while :; do sleep 0.05; done' >waiting &
launcher=$!
awaits grep -q ready waiting
[ "$(find temporary -mindepth 1 -maxdepth 1 | wc -l)" -eq 1 ] || fail "a unit for one run is not in TMPDIR"
kill -TERM "$launcher"
status=0
wait "$launcher" || status=$?
[ "$status" -eq 9 ] || fail "a signal is not passed on: $status"
[ -z "$(ls temporary)" ] || fail "a unit for one run is left after a signal"

# Nor does it depend on what its caller does with ended programs.
ends 7 timeout -s KILL 60 env --ignore-signal=CHLD "$maintsim" sh -c 'exit 7'

# As the program stands, so does maintsim; then both go on.
stands() { grep -q ') T ' "/proc/$launcher/stat"; }
"$maintsim" sh -c 'kill -STOP $$; exit 5' &
launcher=$!
awaits stands
stands || fail "maintsim goes on while its program stands"
kill -CONT "$launcher"
status=0
wait "$launcher" || status=$?
[ "$status" -eq 5 ] || fail "a program that stood ends with $status"

# A killed maintsim leaves its unit to the program; the next start removes it when that has ended.
rm -f go on
mkfifo go
"$maintsim" sh -c 'echo $$ >on; read line <go; cat /tmp/serialno >late' &
launcher=$!
awaits [ -s on ]
kill -KILL "$launcher"
wait "$launcher" 2>/dev/null || true
ends 0 "$maintsim" true
[ "$(find temporary -mindepth 1 -maxdepth 1 | wc -l)" -eq 1 ] || fail "a unit in use was removed, or is not there"
echo x >go
late_ended() { [ -s late ] && ! kill -0 "$(cat on)" 2>/dev/null; }
awaits late_ended
[ "$(cat late)" = "$serial" ] || fail "a program lost its unit"
ends 0 "$maintsim" true
[ -z "$(ls temporary)" ] || fail "an abandoned unit is left: $(ls temporary)"

# Many starts at once: none takes the unit of another one, which is being made, for an abandoned one.
for _ in $(seq 5); do
    for _ in $(seq 60); do
        "$maintsim" true 2>>many || echo "ends with $?" >>many &
    done
    wait
done
[ ! -s many ] || fail "of many starts at once: $(cat many)"
[ -z "$(ls temporary)" ] || fail "units of many starts are left: $(ls temporary)"

# Folders of others are left alone.
mkdir temporary/maintsim-mine
ends 0 "$maintsim" true
[ -d temporary/maintsim-mine ] || fail "a folder without a lock was removed"
rmdir temporary/maintsim-mine
mkdir linked
touch linked/lock
ln -s "$work/linked" temporary/maintsim-link
ends 0 "$maintsim" true
[ -L temporary/maintsim-link ] || fail "a link was removed"
[ -e linked/lock ] || fail "what a link leads to was removed"
rm temporary/maintsim-link

# What is refused

# Folders that may not be looked into would make it another refusal, here and in any shell.
refuses 127 'no-such-program: no such program' env PATH=/usr/bin:/bin "$maintsim" -u unit no-such-program
refuses 127 './none: no such program' "$maintsim" -u unit ./none
refuses 127 '.: no such program' env PATH=/usr/bin:/bin "$maintsim" -u unit .
echo text >plain
refuses 126 './plain: it may not be read and run' "$maintsim" -u unit ./plain
# In PATH it counts only if no other one is found.
refuses 126 'plain: it may not be read and run' env PATH="$work:/usr/bin:/bin" "$maintsim" -u unit plain
mkdir later
printf '#!/bin/sh\necho later\n' >later/plain
chmod +x later/plain
shows later env PATH="$work:$work/later:/usr/bin:/bin" "$maintsim" -u unit plain
refuses 126 "$static is linked statically" "$maintsim" -u unit "$static"
refuses 126 "$static is linked statically" "$maintsim" "$static"
# By a program of the unit, too: a line each.
ends 126 "$maintsim" -u unit sh -c '"$1"; "$1"' sh "$static"
[ "$(grep -cx "maintsim: $static is linked statically: it would use this machine's own devices and files" error)" -eq 2 ] ||
    fail "two refused programs: $(cat error)"
[ -z "$(ls temporary)" ] || fail "a refused program leaves a unit"

printf '#!%s\n' "$static" >script
chmod +x script
refuses 126 './script has an interpreter that is linked statically' "$maintsim" -u unit ./script
printf '#!/usr/bin/env sh\ncat /tmp/serialno\n' >script
shows "$serial" "$maintsim" -u unit ./script
printf 'cat /tmp/serialno; echo "$1"\n' >script
shows "$serial
word" "$maintsim" -u unit ./script word

# patched OFFSET OCTAL: a program with another byte there.
patched()
{
    cp own patched
    printf '%b' "\\0$2" | dd of=patched bs=1 seek="$1" conv=notrunc status=none
}
patched 4 1 # the class of 32 bits
refuses 126 './patched is for another processor' "$maintsim" -u unit ./patched
patched 18 10 # another processor's number
refuses 126 './patched is for another processor' "$maintsim" -u unit ./patched
"$CC" own.c -o patched -Wl,--dynamic-linker=/lib/ld-musl-x86_64.so.1
refuses 126 './patched uses another C library' "$maintsim" -u unit ./patched
cat >note.s <<'END'
.section .note.go.buildid,"a",%note
.long 4, 4, 4
.asciz "Go\0"
.long 0
.section .note.GNU-stack,"",%progbits
END
"$CC" own.c note.s -o patched
refuses 126 './patched is made by Go' "$maintsim" -u unit ./patched
"$CC" own.c -static-pie -o patched 2>/dev/null || "$CC" own.c -static -o patched
refuses 126 './patched is linked statically' "$maintsim" -u unit ./patched
refuses 126 './patched is linked statically' "$maintsim" ./patched

privileged=
if [ "$(id -u)" -eq 0 ]; then
    cp own privileged
    chown 1 privileged
    chmod 4755 privileged
    privileged=./privileged
else
    for program in /usr/bin/su /bin/su /usr/bin/passwd; do
        [ ! -u "$program" ] || privileged=$program
    done
fi
if [ -n "$privileged" ] && ! grep -q 'NoNewPrivs:.*1' /proc/self/status; then
    refuses 126 "$privileged runs with other rights" "$maintsim" -u unit "$privileged"
    ends 126 "$maintsim" -u unit sh -c "$privileged"
    grep -q "^maintsim: $privileged runs with other rights" error || fail "$(cat error)"
else
    echo "not tried: a program with other rights"
fi

refuses 1 "$work/none: no" "$maintsim" -u "$work/none" true
mkdir plain-folder
refuses 1 'plain-folder: no' "$maintsim" -u plain-folder true
cp -r unit empty
rm -r empty/files
refuses 1 'empty/files/dev/fpga: No such file' "$maintsim" -u empty true

# Where no unit for one run can be made: the folder that a developer knows is named, and nothing is left.
refuses 1 "$work/none: no unit can be made here: No such file or directory" \
    env TMPDIR="$work/none" "$maintsim" true
refuses 1 "$TMPDIR: no unit can be made here: File too large" \
    bash -c 'ulimit -f 8; exec "$@"' bash "$maintsim" true
[ -z "$(ls temporary)" ] || fail "a unit that could not be made is left: $(ls temporary)"

# The preloaded object: beside the program, or as installed

mkdir -p installed/bin installed/lib/maintsim 'with space'
cp "$maintsim" installed/bin/maintsim
refuses 1 'libmaintsim_preload.so is missing: neither in ' installed/bin/maintsim -u unit true
refuses 1 'libmaintsim_preload.so is missing: neither in ' installed/bin/maintsim true
[ -z "$(ls temporary)" ] || fail "a failed start leaves a unit"
cp "$maintsim" "$object" 'with space'
refuses 1 "$work/with space/libmaintsim_preload.so: the loader does not take a path" \
    'with space/maintsim' -u unit true

# Another preloaded object stays.
shows "$object:libdl.so.2" env LD_PRELOAD=libdl.so.2 "$maintsim" -u unit sh -c 'echo $LD_PRELOAD'
shows "$object" env LD_PRELOAD= "$maintsim" -u unit sh -c 'echo $LD_PRELOAD'
shows "$work/unit" "$maintsim" -u unit sh -c 'echo $MAINTSIM_UNIT'

[ "$failures" -eq 0 ]
