#!/usr/bin/env bash
# usage: fails_when_it_should.sh TOOLCHAIN_PREFIX
#
# The size table and the stack measurement, each with something wrong to find.
#   TOOLCHAIN_PREFIX   of the board's toolchain: $(board/cached uclibc)/bin/arm-uclibc-
#
# Takes about two minutes on two processors; writes to a temporary folder alone.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../scripts/usage.sh"
usage 1 1 "$@"
prefix=$1
export CROSS_COMPILE=$prefix
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
findings=0
count=0

# expect STATUS TEXT COMMAND...: the command ends like that, and says the text.
expect()
{
    local status=0
    count=$((count + 1))
    "${@:3}" >"$work/said" 2>&1 || status=$?
    if [ "$((status != 0))" -ne "$1" ] || ! grep -qF -e "$2" "$work/said"; then
        printf 'status %d, or not "%s":\n' "$status" "$2" >&2
        tail -n 20 "$work/said" >&2
        findings=$((findings + 1))
    fi
}

# The stack measurement --------------------------------------------------------------------------

# stack RULES SOURCE: the stack of "entry" in a source of C, whose frames hold what "use" is given.
stack()
{
    rm -rf "$work/c"
    mkdir "$work/c"
    printf '%s\n' "$1" | tr ';' '\n' >"$work/c/rules"
    echo entry >"$work/c/entries"
    printf '%s\n' 'void use(void*); int unknown(void);' "$2" >"$work/c/x.c"
    # shellcheck disable=SC2086  # words on purpose
    "${prefix}gcc" -Os -fno-inline -fno-ipa-cp -fno-optimize-sibling-calls -ffunction-sections \
        -fcallgraph-info=su ${3-} -c "$work/c/x.c" -o "$work/c/x.c.o" &&
        "$here/stack_use.pl" "${prefix}readelf" "$work/c/rules" "$work/c/entries" "$work/c/x.c.o"
}

# Frames are what is used and at most four words, rounded up to eight bytes.
frames='void big(void) { char a[800]; use(a); }
void small(void) { char a[80]; use(a); }'
by_argument="$frames
static void run(void (*work)(void)) { work(); use(0); }"
by_table="$frames
void (*const table[])(void) = {small, big};
void entry(int i) { table[i](); use(0); }"
loop='void entry(int i) { char a[80]; use(a); if (i) entry(0); use(a); }'
mutual='void second(int);
void entry(int i) { char a[80]; use(a); second(i); use(a); }
void second(int i) { char a[160]; use(a); if (i) entry(0); use(a); }'

expect 0 'entry 8 > big 808' stack '' "$frames void entry(void) { small(); big(); use(0); }"
expect 0 'entry 8 > run 8 > small 88' stack 'argument run' \
    "$by_argument void entry(void) { run(small); } void other(void) { run(big); }"
expect 0 'entry 8 > run 8 > big 808' stack 'argument run' \
    "$by_argument void entry(void) { run(small); run(big); }"
expect 0 'entry 8 > big 808' stack 'table entry x.c' "$by_table"
expect 0 'entry 88 > second 168' stack 'single entry' "$mutual"
expect 0 'entry 88 > second 168 > entry 88' stack 'single second' "$mutual"
expect 0 $'88\tentry\tentry 88' stack 'single entry' "$loop"

expect 1 'unresolved: entry calls through a pointer' stack '' "$by_table"
expect 1 'hands run a pointer that it has not taken' stack 'argument run' \
    "$by_argument void entry(void (*work)(void)) { run(work); }"
expect 1 'who calls big, whose address is in the code of other' stack 'argument run' \
    "$by_argument void entry(void) { run(small); } void* other(void) { return big; }"
expect 1 'who calls small, whose address is in the tables' stack '' \
    "$frames void (*const table[])(void) = {small, big}; void entry(void) { use((void*)table); }"
expect 1 'a loop that no rule bounds: entry > entry' stack '' "$loop"
expect 1 'a loop that no rule bounds: entry > second > entry' stack '' "$mutual"
expect 1 'the frame of entry has no bound' stack '' 'void entry(int n) { char a[n]; use(a); }'
expect 1 'single big: no loop goes through' stack 'single big' "$frames void entry(void) { big(); }"
expect 1 'table entry: no such indirect call' stack 'table entry x.c' "$loop"
expect 1 'neither table, argument nor single' stack 'twice entry' "$frames"
expect 1 'no procedure entry' stack '' "$frames"
expect 1 'no stack size of entry' stack '' \
    "$frames __asm__(\".section .text.entry;.global entry;.type entry,%function;entry: bx lr\");"
expect 1 'entry calls big, which the call graph lacks' stack '' \
    "$frames void entry(void) { __asm__(\"bl big\"); }"
expect 1 'outside a procedure' stack '' "$frames void entry(void) { big(); }" -fno-function-sections

# The table --------------------------------------------------------------------------------------

tree=$work/tree
mkdir "$tree"
tar -C "$here/.." -c --exclude=./.cache --exclude=./build --exclude=./.git . | tar -x -C "$tree"

build() { cmake --preset board "$@" && cmake --build --preset board; }
table() { board/sizes.sh build/board "$prefix"; }

# changed FILE EDIT COMMAND...: the command in a copy of the product where a file is edited with sed.
changed()
{
    local status=0
    cp "$tree/$1" "$work/kept"
    sed -i "$2" "$tree/$1"
    (cd "$tree" && "${@:3}") || status=$?
    cp "$work/kept" "$tree/$1"
    return "$status"
}
limit_table() { sed -i 's/^\([a-z_]*\) [0-9]*$/\1 1000/' board/limits && table; }
built_table() { build "$@" >"$work/log" 2>&1 && table; }
public='extern "C" __attribute__((visibility("default")))'
counter="$public int next(); int next() { static int n; return ++n; }"
pointer="$public int pass(int (*)()); int pass(int (*f)()) { return f(); }"

expect 0 'stack at most' changed board/limits '' built_table
expect 1 'the limit is 1000 (stripped_program' changed board/limits '' limit_table
cp "$work/said" "$work/said_of_limits"
expect 0 'the limit is 1000 (stripped_tool in' cat "$work/said_of_limits"
expect 0 'the limit is 1000 (library_text in' cat "$work/said_of_limits"
expect 0 'the limit is 1000 (library_text_thumb in' cat "$work/said_of_limits"
expect 0 'the limit is 1000 (stack' cat "$work/said_of_limits"
expect 1 'no limit stack' changed board/limits '/^stack/d' table
expect 1 'does not make the calls of the boot restore' changed board/floors/calls.c '/tzset/d' table
expect 1 'log/report.cpp.o is not what its command makes now' \
    changed log/report.cpp "\$a $counter" table
expect 1 'writable static data' changed log/report.cpp "\$a $counter" built_table
expect 1 'unresolved: pass calls through a pointer' \
    changed log/report.cpp "\$a $pointer" built_table
expect 1 'unwind tables' changed README.md '' built_table -DCMAKE_CXX_FLAGS=-funwind-tables
expect 1 'has not been built there' "$here/sizes.sh" "$tree" "$prefix"
expect 1 'no program nobody-gcc' "$here/sizes.sh" "$tree/build/board" nobody-
expect 1 'usage' "$here/sizes.sh" "$tree"

printf '%d uses of the size table and the stack measurement tried\n' "$count"
[ "$findings" -eq 0 ] || { printf '%d finding(s)\n' "$findings" >&2; exit 1; }
