#!/usr/bin/env bash
# What systemlog_image shows and refuses.
# usage: systemlog_image.sh [EMULATOR] SYSTEMLOG_IMAGE
set -euo pipefail

tool=("$@")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
failures=0

fail()
{
    printf 'FAIL: %s\n' "$*"
    failures=$((failures + 1))
}

# shows FILE: compares the tool's output with standard input.
shows()
{
    cat >expected
    "${tool[@]}" show "$1" >shown || fail "show $1 exits with $?"
    diff expected shown || fail "show $1 differs"
}

# refuses MESSAGE COMMAND...: exit status 1 and the one message on standard error.
refuses()
{
    local message=$1 status=0
    shift
    "${tool[@]}" "$@" >shown 2>error || status=$?
    [ "$status" -eq 1 ] || fail "$* exits with $status instead of 1"
    [ "$(cat error)" = "$message" ] || fail "$* says '$(cat error)' instead of '$message'"
}

# bytes_put FILE OFFSET OCTAL...: overwrites bytes.
bytes_put()
{
    local file=$1 offset=$2
    shift 2
    printf '%b' "${@/#/\\0}" | dd of="$file" bs=1 seek="$offset" conv=notrunc status=none
}

# Making

"${tool[@]}" make three 3 77
[ "$(stat -c %s three)" -eq 312 ] || fail "an image of 3 records has not 312 bytes"
[ "$(od -An -tx1 -N10 three | tr -d ' ')" = 4d000000030003000100 ] || fail "header of 3 records"
"${tool[@]}" make three_again 3 77
cmp three three_again || fail "the same image twice is not the same"
tail -c +13 three | cut -c -19 | LC_ALL=C sort -c || fail "time runs backwards"

"${tool[@]}" make full 1640 4294967294
[ "$(stat -c %s full)" -eq 100012 ] || fail "a full image has not 100012 bytes"

# A checksum worked out by hand, a byte at a time: first bytes of the words, then second bytes.
"${tool[@]}" make one 1
low=0 high=0 index=0
for byte in $(od -An -v -tu1 -j12 one); do
    if [ $((index % 2)) -eq 0 ]; then low=$((low + byte)); else high=$((high + byte)); fi
    index=$((index + 1))
done
[ "$index" -eq 100 ] || fail "one record has $index bytes"
sum=$(((low + 256 * high) % 65535))
expected=$(printf '%02x%02x' $(((65535 - sum) / 256)) $(((65535 - sum) % 256)))
[ "$(od -An -tx1 -j10 -N2 one | tr -d ' ')" = "$expected" ] || fail "checksum is not $expected"

# Showing

shows three <<'END'
three
  seq_num 77  number 3  location 3  version 1  checksum 0x6959
  ring not yet full; the records' checksum is the header's
    1  slot   0  2006/03/01 09:05:07 cold start, reset cause 4
    2  slot   1  2006/03/01 10:02:10 temperature back in range, sensor 6
    3  slot   2  2006/03/01 11:02:50 cold start, reset cause 3
END

shows full <<'END'
full
  seq_num 4294967294  number 1000  location 640  version 1  checksum 0x4853
  full ring; the records' checksum is the header's
    1  slot 640  2006/03/28 13:20:07 temperature back in range, sensor 2
    2  slot 641  2006/03/28 14:37:19 login on the maintenance console, session 2
    3  slot 642  2006/03/28 14:56:45 cold start, reset cause 1
    4  slot 643  2006/03/28 15:14:15 link up : LAN port 2 (100 Mbps, full duplex)
  ...  992 more
  997  slot 636  2006/05/07 18:15:49 GetIniFileString : 001 : /tmp/mtu_datasize.8 file open error
  998  slot 637  2006/05/07 18:30:55 link up : LAN port 5 (100 Mbps, full duplex)
  999  slot 638  2006/05/07 19:22:09 GetIniFileString : 001 : /tmp/mtu_datasize.3 file open error
 1000  slot 639  2006/05/07 20:47:33 PPPoE session up, MTU 1454, attempt 8
END

"${tool[@]}" make just_full 1000
"${tool[@]}" show just_full >shown
grep -q '^    1  slot   0 ' shown || fail "location 1000: slot 0 is the oldest"
grep -q '^ 1000  slot 999 ' shown || fail "location 1000: slot 999 is the newest"

"${tool[@]}" make empty 0
shows empty <<'END'
empty
  seq_num 1  number 0  location 0  version 1  checksum 0x0000
  empty log
END

printf '\377%.0s' {1..64} >erased
shows erased <<'END'
erased
  seq_num 4294967295  number 65535  location 65535  version 65535  checksum 0xFFFF
  erased flash: no log was ever saved
END

cp three odd
bytes_put odd 39 033
"${tool[@]}" show odd >shown
grep -q "checksum is not the header's" shown || fail "a wrong checksum is not shown"
grep -q ' 2006/03/01 09:05:07 cold st?rt, reset' shown || fail "a control character is not masked"
if LC_ALL=C grep -q $'\033' shown; then fail "a control character is shown raw"; fi

# Damage

head -c 11 three >short
refuses 'short: damaged: shorter than the header of 12 bytes' show short
head -c 311 three >cut_off
refuses 'cut_off: damaged: shorter than its number of records' show cut_off
cp three number && bytes_put number 4 351 003
refuses 'number: damaged: number is above 1000' show number
cp three location && bytes_put location 6 351 003
refuses 'location: damaged: location is above 1000' show location
cp three version && bytes_put version 8 000 000
refuses 'version: damaged: version is 0' show version
cp three stamp && bytes_put stamp 112 101
refuses 'stamp: damaged: a record is not a time stamp and one line of text' show stamp
cp three newline && bytes_put newline 111 040
refuses 'newline: damaged: a record is not a time stamp and one line of text' show newline
refuses 'absent: No such file or directory' show absent

# Checking

"${tool[@]}" check three >shown || fail "check refuses a good image"
[ "$(cat shown)" = 'three: good image, 3 records' ] || fail "check says '$(cat shown)'"
"${tool[@]}" check empty >shown || fail "check refuses an empty image"
"${tool[@]}" check location >shown || fail "check looks at location, which the boot does not"
refuses "odd: damaged: the records' checksum is not the header's" check odd
refuses 'erased: erased flash' check erased
refuses 'version: damaged: version is 0' check version
refuses 'cut_off: damaged: shorter than its number of records' check cut_off

mkdir folder
refuses 'folder: Is a directory' show folder
refuses 'folder: Is a directory' check folder
refuses 'folder: Is a directory' make folder 5

# Wrong use

# wrong MISTAKE WORD...: exit status 2, the mistake on the first line, then the usage; no file f.
wrong()
{
    local mistake=$1 status=0
    shift
    "${tool[@]}" "$@" >shown 2>error || status=$?
    [ "$status" -eq 2 ] || fail "'$*' exits with $status instead of 2"
    [ ! -s shown ] || fail "'$*' says something on standard output"
    [ "$(head -n 1 error)" = "systemlog_image: $mistake" ] ||
        fail "'$*' says '$(head -n 1 error)' instead of '$mistake'"
    sed -n 2p error | grep -q '^usage: systemlog_image make FILE COUNT' || fail "'$*' shows no usage"
    [ "$(wc -l <error)" -eq 4 ] || fail "'$*' says more than the mistake and the usage"
    [ ! -e f ] || fail "'$*' makes a file"
}
wrong 'a command is missing'
wrong 'no such command: burn' burn f
wrong 'no such command: ' ''
wrong 'make takes FILE COUNT [SEQ]' make
wrong 'make takes FILE COUNT [SEQ]' make f
wrong 'make takes FILE COUNT [SEQ]' make f 1 2 3
wrong 'show takes one FILE' show
wrong 'show takes one FILE' show a b
wrong 'check takes one FILE' check
wrong 'check takes one FILE' check a b
wrong 'the name FILE is empty' make '' 5
wrong 'the name FILE is empty' show ''
wrong 'the name FILE is empty' check ''
for number in x 12abc 0x10 -1 +1 ' 1' ''; do
    wrong "COUNT is not a decimal number: $number" make f "$number"
    wrong "SEQ is not a decimal number: $number" make f 1 "$number"
done
wrong 'COUNT is above 100000: 100001' make f 100001
wrong 'COUNT is above 100000: 99999999999999999999999' make f 99999999999999999999999
wrong 'SEQ is above 4294967295: 4294967296' make f 1 4294967296
wrong 'SEQ is above 4294967295: 99999999999999999999999' make f 1 99999999999999999999999
"${tool[@]}" make most 100000 4294967295 || fail "the largest COUNT and SEQ are refused"

for option in --help -h; do
    "${tool[@]}" "$option" >shown 2>error || fail "$option exits with $?"
    [ ! -s error ] || fail "$option complains"
    grep -q '^usage: systemlog_image make' shown || fail "$option shows no usage"
    grep -q 'COUNT .* 0 to 100000' shown || fail "$option does not give the limit of COUNT"
    grep -q 'SEQ .* 0 to 4294967295' shown || fail "$option does not give the limit of SEQ"
done

[ "$failures" -eq 0 ]
