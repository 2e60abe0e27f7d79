#!/usr/bin/env bash
# usage: sizes.sh BUILD_FOLDER TOOLCHAIN_PREFIX
#
# Prints what the product costs on the board: sizes of program and library, and the stack that each
# public entry needs at worst. Fails if a limit of the file "limits" is exceeded, if there is
# writable static data or an unwind table, or if it cannot say how much stack is needed.
#   BUILD_FOLDER       a build of the preset board
#   TOOLCHAIN_PREFIX   what it was built with, as CROSS_COMPILE was; GCC 10 or later
#
# Takes about 15 seconds on two processors: it compiles the product twice more. Writes to a temporary
# folder alone.
set -euo pipefail
shopt -s inherit_errexit
export LC_ALL=C
here=$(cd "$(dirname "$0")" && pwd)
source_dir=$(cd "$here/.." && pwd)
package=$source_dir/tests/package

die()
{
    printf 'sizes.sh: %s\n' "$*" >&2
    exit 1
}

. "$here/../scripts/usage.sh"
usage 2 2 "$@"
build=$(cd "$1" && pwd) || die "no folder $1"
prefix=$2
for tool in gcc ar nm objdump readelf size strip; do
    command -v "$prefix$tool" >/dev/null || die "no program $prefix$tool"
done
program=$build/maintlogfile
tool=$build/tools/maintctl/maintctl
library=$build/libmaint.a
for file in "$program" "$tool" "$library" "$build/compile_commands.json" "$build/CMakeCache.txt"; do
    [ -e "$file" ] || die "no $file: the preset board has not been built there"
done

declare -A limits
for limit in stripped_program stripped_tool library_text library_text_thumb stack; do
    limits[$limit]=$(awk -v name="$limit" '$1 == name { print $2 }' "$here/limits")
    [[ ${limits[$limit]} =~ ^[0-9]+$ ]] || die "no limit $limit in $here/limits"
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=()

heading() { printf '\n%s\n' "$*"; }

# The objects again, with the compiler's call graph ----------------------------------------------

# Lists the product's objects, and writes commands that make each twice more, in the work folder:
# with the compiler's call graph, and in Thumb state. The call graph must not change what it is the
# graph of: so it is not an option of the build.
commands_make()
{
    perl -ne '
        BEGIN { ($work) = splice(@ARGV, 0, 1) }
        m{^  "directory": "(.*)",?$} and $directory = $1;
        m{^  "command": "(.*)",?$} or next;
        ($command = $1) =~ s{\\(.)}{$1}g;
        $command =~ m{ -o ((?:\S*/)?CMakeFiles/(?:maint_objects|maintlogfile_main)\.dir/\S+\.o) } or next;
        $object = $1;
        for (["again", "-fcallgraph-info=su"], ["thumb", "-mthumb"]) {
            ($place, $option) = @$_;
            ($other = $command) =~ s{\Q$object\E}{$work/$place/$object}g;
            ($folder = "$work/$place/$object") =~ s{/[^/]*$}{};
            print "mkdir -p $folder && cd $directory && $other $option\0";
        }
        open($objects, ">>", "$work/objects") or die;
        print $objects "$object\n";
    ' "$work" "$build/compile_commands.json" >"$work/commands"
    [ -s "$work/objects" ] || die "no object of the product in $build/compile_commands.json"
}

objects_check()
{
    local object
    while read -r object; do
        cmp -s "$build/$object" "$work/again/$object" ||
            die "$object is not what its command makes now, with -fcallgraph-info: build first"
    done <"$work/objects"
    grep '/maint_objects\.dir/' "$work/objects" | sed "s|^|$build/|" | xargs cat >"$work/library_objects"
    "${prefix}ar" p "$library" | cmp -s - "$work/library_objects" ||
        die "$library is not made of the objects beside it: build first"
    [ ! "$library" -nt "$program" ] || die "$program is older than $library: build first"
}

commands_make
xargs -0 -n 1 -P "$(nproc)" sh -c <"$work/commands" >"$work/compile.log" 2>&1 || {
    tail -n 20 "$work/compile.log" >&2
    die 'the objects cannot be compiled with -fcallgraph-info (GCC 10 or later)'
}
objects_check

# Program ----------------------------------------------------------------------------------------

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }

# floor_make NAME: a program of floors/, compiled and linked as the product is.
floor_make()
{
    local type compile link
    type=$(cached CMAKE_BUILD_TYPE)
    compile="$(cached CMAKE_C_FLAGS) $(cached "CMAKE_C_FLAGS_${type^^}") -ffunction-sections -fdata-sections"
    link="$(cached CMAKE_EXE_LINKER_FLAGS) $(cached "CMAKE_EXE_LINKER_FLAGS_${type^^}") -Wl,--gc-sections"
    # shellcheck disable=SC2086  # words on purpose
    "${prefix}gcc" $compile -Wall -Wextra -Wno-unused-result -c "$here/floors/$1.c" -o "$work/$1.o"
    # shellcheck disable=SC2086
    "${prefix}gcc" $compile $link "$work/$1.o" -o "$work/$1"
}

# calls_of FILE...: the C library's procedures that a program of these files calls.
calls_of()
{
    "${prefix}gcc" -r -nostdlib -Wl,--gc-sections,-e,main "$@" -o "$work/whole.o"
    "${prefix}nm" --undefined-only "$work/whole.o" | awk '{ print $2 }' |
        grep -vE '^(__aeabi_.*|_GLOBAL_OFFSET_TABLE_)$' | sort
}

program_row()
{
    "${prefix}strip" -o "$work/stripped" "$2"
    printf '%10d ' "$(stat -c %s "$work/stripped")"
    "${prefix}size" "$2" | awk -v what="$1" 'NR == 2 { printf "%10d %10d %10d  %s\n", $1, $2, $3, what }'
}

floor_make empty
floor_make calls
grep '/maintlogfile_main\.dir/' "$work/objects" | sed "s|^|$build/|" >"$work/main_objects"
mapfile -t main_objects <"$work/main_objects"
calls_of "${main_objects[@]}" "$library" >"$work/calls_made"
calls_of "$work/calls.o" >"$work/calls_of_floor"
if ! diff "$work/calls_made" "$work/calls_of_floor" >"$work/difference"; then
    failures+=("floors/calls.c does not make the calls of the boot restore (lacks <, has too many >):
$(grep '^[<>]' "$work/difference")")
fi

heading "Programs, in bytes ($("${prefix}gcc" -dumpmachine), GCC $("${prefix}gcc" -dumpversion))"
printf '%10s %10s %10s %10s\n' stripped text data bss
program_row 'maintlogfile' "$program" | tee "$work/program"
program_row 'an empty program' "$work/empty"
program_row "the boot restore's calls of the C library alone" "$work/calls"
program_row 'maintctl' "$tool" | tee "$work/tool"
stripped=$(awk '{ print $1 }' "$work/program")
stripped_tool=$(awk '{ print $1 }' "$work/tool")

# Library ----------------------------------------------------------------------------------------

# shares FOLDER: rows of group, and the bytes of an object's code, constants, constants with
# addresses in them, writable data and unwind tables, of the objects in this folder.
shares()
{
    grep '/maint_objects\.dir/' "$work/objects" | while read -r object; do
        group=${object#*/maint_objects.dir/}
        "${prefix}size" -A -d "$1/$object" | awk -v group="${group%/*}" '
            $2 !~ /^[0-9]+$/ { next }
            $1 ~ /^\.text/ { code += $2 }
            $1 ~ /^\.rodata/ { constants += $2 }
            $1 ~ /^\.data\.rel\.ro/ { addresses += $2; next }
            $1 ~ /^(\.data|\.bss|\.tdata|\.tbss|COMMON)/ { writable += $2 }
            $1 ~ /^\.(ARM\.ex|eh_frame|gcc_except)/ { unwind += $2 }
            END { print group, code + 0, constants + 0, addresses + 0, writable + 0, unwind + 0 }'
    done
}

shares "$build" >"$work/shares"
heading 'Library by folder, in bytes'
printf '%10s %10s %10s %10s %10s %6s\n' code constants addresses writable together share
sort "$work/shares" | awk -v totals="$work/totals" '
    !($1 in seen) { groups[++count] = $1; seen[$1] }
    { for (i = 2; i <= 6; ++i) { part[$1, i] += $i; sum[i] += $i } }
    function row(name, code, constants, addresses, writable) {
        together = code + constants + addresses + writable
        printf "%10d %10d %10d %10d %10d %5.1f%%  %s\n", code, constants, addresses, writable,
            together, 100 * together / (sum[2] + sum[3] + sum[4] + sum[5]), name
    }
    END {
        for (i = 1; i <= count; ++i) {
            group = groups[i]
            row(group, part[group, 2], part[group, 3], part[group, 4], part[group, 5])
        }
        row("libmaint.a", sum[2], sum[3], sum[4], sum[5])
        print sum[2] + sum[3] + sum[4], sum[5], sum[6] >totals
    }'
read -r library_text writable unwind <"$work/totals"
shares "$work/thumb" | awk -v total="$work/thumb_total" '
    { code += $2; constants += $3; addresses += $4 }
    END {
        printf "%10d %10d %10d %10d %10d %6s  libmaint.a, compiled with -mthumb\n", code, constants,
            addresses, 0, code + constants + addresses, ""
        print code + constants + addresses >total
    }'
read -r library_text_thumb <"$work/thumb_total"
OBJDUMP=${prefix}objdump NM=${prefix}nm "$package/check_static_data.sh" "$library" 2>"$work/said" ||
    failures+=("writable static data, which the product must not have: $(cat "$work/said")")
[ "$writable" -eq 0 ] || failures+=("writable static data: $writable bytes")
[ "$unwind" -eq 0 ] || failures+=("unwind tables, which nobody reads: $unwind bytes")

heading 'Largest procedures, in bytes of code'
"${prefix}nm" --demangle --print-size --size-sort --radix=d "$library" | awk '
    NF >= 4 && $3 ~ /^[tTwW]$/ { size = $2 + 0; $1 = $2 = $3 = ""; print size, $0 }' |
    sort -rn | awk '
    NR <= 10 { size = $1; $1 = ""; sub(/^ +/, ""); if (length > 88) $0 = substr($0, 1, 85) "..."
      printf "%10d  %s\n", size, $0 }'

# Stack ------------------------------------------------------------------------------------------

{
    cat "$package/public_entries.txt"
    echo main
} >"$work/entries"
sed "s|^|$work/again/|" "$work/objects" | xargs "$here/stack_use.pl" "${prefix}readelf" \
    "$here/stack_rules" "$work/entries" >"$work/stack" ||
    die 'the use of stack is not known; see above'

heading "Stack at most, in bytes (the product's own procedures; the C library's come on top)"
printf '%10s  %-24s %s\n' bytes entry 'of these, in the largest frames on the path'
sort -t '	' -k 1,1rn -k 2 "$work/stack" | awk -F '\t' '
    {
        count = split($3, frames, " > ")
        said = ""
        for (i = 1; i <= count; ++i) {
            split(frames[i], frame, " ")
            if (frame[2] * 10 >= $1) said = said (said == "" ? "" : ", ") frame[1] " " frame[2]
        }
        printf "%10d  %-24s %s\n", $1, $2, said
    }'
awk -F '\t' '$2 == "main" || $2 == "Fpga_Register_Set" {
    print "\nThe path of " $2 ":"
    line = "   "
    count = split($3, frames, " > ")
    for (i = 1; i <= count; ++i) {
        step = frames[i] (i < count ? " >" : "")
        if (length(line " " step) > 100) { print line; line = "   " }
        line = line " " step
    }
    print line
}' "$work/stack"
stack=$(sort -rn "$work/stack" | awk 'NR == 1 { print $1 }')

# Limits -----------------------------------------------------------------------------------------

# limit_check NAME MEASURED WHAT
limit_check()
{
    local limit=${limits[$1]}
    printf '%10d %10d  %s\n' "$2" "$limit" "$3"
    [ "$2" -le "$limit" ] ||
        failures+=("$3: $2 bytes, and the limit is $limit ($1 in board/limits)")
}

heading 'Limits, in bytes'
printf '%10s %10s\n' measured limit
limit_check stripped_program "$stripped" 'maintlogfile, stripped'
limit_check stripped_tool "$stripped_tool" 'maintctl, stripped'
limit_check library_text "$library_text" "libmaint.a, code and constants"
limit_check library_text_thumb "$library_text_thumb" "libmaint.a in Thumb state"
limit_check stack "$stack" 'stack at most'

if [ "${#failures[@]}" -gt 0 ]; then
    printf '\n' >&2
    printf 'sizes.sh: %s\n' "${failures[@]}" >&2
    exit 1
fi
