#!/usr/bin/env bash
# The typed calls do what they promise. A record of another type does not compile, nor does a const one
# where it is changed, nor an argument where none is used. And they cost nothing: a program with typed
# calls becomes the same instructions as one with Fpga_Register_Set.
# usage: check_typed_calls.sh INCLUDE_DIR
. "$(dirname "$0")/common.sh"
work_make
include=$1

warnings=(-pedantic -Wall -Wextra -Wconversion -Wcast-qual -Werror)
as_c() { "$CC" -std=c99 "${warnings[@]}" -I "$include" -x c "$@"; }
as_cxx() { "$CXX" -std=c++20 "${warnings[@]}" -Wold-style-cast -I "$include" -x c++ "$@"; }

# unit TEXT: a source with the headers that the calls below need, and with the text.
unit()
{
    printf '#include "maint/commands/%s.h"\n' bandwidth rtc switch_tables
    printf '%s\n' "$1"
}
# call PARAMETER EXPRESSION: a procedure that returns the expression.
call() { printf 'int32_t call(%s);\nint32_t call(%s) { return %s; }\n' "$1" "$1" "$2"; }

# takes PARAMETER EXPRESSION, refuses PARAMETER EXPRESSION: it compiles in both languages, or in none.
takes()
{
    local language
    for language in as_c as_cxx; do
        unit "$(call "$1" "$2")" | "$language" -fsyntax-only - ||
            finding "$2 does not compile $language with ($1)"
    done
    count=$((count + 1))
}
refuses()
{
    local language
    for language in as_c as_cxx; do
        ! unit "$(call "$1" "$2")" | "$language" -fsyntax-only - 2>"$work/refused" ||
            finding "$2 compiles $language with ($1)"
        # What is refused is the call; anything else would be an error of this check.
        grep -qE 'argument|incompatible|discard|invalid conversion|no matching function' "$work/refused" ||
            finding "$2 with ($1) is refused $language, but not as a call: $(cat "$work/refused")"
    done
    count=$((count + 1))
}

count=0
# A record that is changed
takes 'RtcDateTime* record' 'maint_rd_rtc_time(record)'
refuses 'const RtcDateTime* record' 'maint_rd_rtc_time(record)'
refuses 'uint16_t* record' 'maint_rd_rtc_time(record)'
refuses 'RtcDateTime* record' 'maint_rd_rtc_time(*record)'
refuses 'RtcDateTime* record' 'maint_rd_rtc_time(&record)'
refuses 'void' 'maint_rd_rtc_time()'
takes 'uint16_t* record' 'maint_rd_bandwidth(record)'
refuses 'int16_t* record' 'maint_rd_bandwidth(record)'
refuses 'uint32_t* record' 'maint_rd_bandwidth(record)'
# A record that is only read
takes 'const RtcDateTime* record' 'maint_wr_rtc_time(record)'
takes 'RtcDateTime* record' 'maint_wr_rtc_time(record)'
refuses 'const uint16_t* record' 'maint_wr_rtc_time(record)'
takes 'const uint16_t* record' 'maint_wr_bandwidth(record)'
refuses 'const uint8_t* record' 'maint_wr_bandwidth(record)'
refuses 'uint32_t* record' 'maint_wr_bandwidth(record)'
# No argument
takes 'void' 'maint_wr_switch_tables_1()'
refuses 'void* record' 'maint_wr_switch_tables_1(record)'

# Every typed call beside its plain one: KIND COMMAND FUNCTION
sed -n 's/^MAINT_COMMAND\(_IN\|_ALONE\|\)(\(\w*\), \(\w*\).*)$/kind\1 \2 \3/p' \
    "$include"/maint/commands/*.h >"$work/calls" || true
[ -s "$work/calls" ] || finding "no typed call in $include"
calls=$(wc -l <"$work/calls")

# program STYLE: a procedure for every command, that makes its typed call or the plain one.
program()
{
    (cd "$include" && find maint/commands -name '*.h' | sort) | sed 's/.*/#include "&"/'
    awk -v style="$1" '{
        alone = $1 == "kind_ALONE"
        plain = "Fpga_Register_Set(" $2 ", " (alone ? "NULL" : "record") ")"
        typed = $3 "(" (alone ? "" : "record") ")"
        head = "int32_t call_" $2 "(" (alone ? "void" : "void* record") ")"
        print head ";\n" head " { return " (style == "typed" ? typed : plain) "; }"
    }' "$work/calls"
}
# In C, where a void* is a pointer of any type, all of them.
for style in typed plain; do
    program "$style" | as_c -Os -S -o "$work/$style.s" - || finding "no program with $style calls"
done
named=$(grep -c Fpga_Register_Set "$work/plain.s" || true)
[ "$named" -ge "$calls" ] || finding "$named call(s) in a program that should make $calls"
cmp -s "$work/typed.s" "$work/plain.s" || finding "typed calls cost something in C: $(
    diff "$work/plain.s" "$work/typed.s" | head -20)"

# costs_nothing PARAMETER TYPED PLAIN: the two calls become the same in C++.
costs_nothing()
{
    unit "$(call "$1" "$2")" | as_cxx -Os -S -o "$work/typed.s" - || finding "no program with $2"
    unit "$(call "$1" "$3")" | as_cxx -Os -S -o "$work/plain.s" - || finding "no program with $3"
    cmp -s "$work/typed.s" "$work/plain.s" || finding "$2 costs something in C++: $(
        diff "$work/plain.s" "$work/typed.s" | head -20)"
}
costs_nothing 'RtcDateTime* record' 'maint_rd_rtc_time(record)' \
    'Fpga_Register_Set(RD_RTC_TIME, record)'
costs_nothing 'const RtcDateTime* record' 'maint_wr_rtc_time(record)' \
    'Fpga_Register_Set(WR_RTC_TIME, const_cast<RtcDateTime*>(record))'
costs_nothing 'void' 'maint_wr_switch_tables_1()' 'Fpga_Register_Set(WR_SWITCH_TABLES_1, NULL)'

printf '%d typed call(s) compared, %d uses tried\n' "$calls" "$count"
check_end
