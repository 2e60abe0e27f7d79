#!/usr/bin/env bash
# A command is found where its name says: described once, with its number, in the header that its
# group in device_commands.h names, with its typed call beside it; and each of these headers has its
# sources and its tests, called after it, which name the command.
# usage: check_command_names.sh SOURCE_DIR
. "$(dirname "$0")/common.sh"
work_make
source_dir=$1
numbers=$source_dir/include/maint/device_commands.h
headers=$source_dir/include/maint/commands

# nouns_of FOLDER SUFFIX: its files with this end, by the header's name that begins theirs (the
# longest, as register_field_state.cpp is register_field's), or - where none does: NOUN FILE
nouns_of()
{
    local file base noun
    find "$1" -maxdepth 1 -name "*$2" 2>/dev/null | sort | while read -r file; do
        base=$(basename "$file" "$2")
        noun=$base
        until grep -qxF -e "$noun" "$work/nouns"; do
            case $noun in
            *_*) noun=${noun%_*} ;;
            *) noun=- && break ;;
            esac
        done
        printf '%s %s\n' "$noun" "${file#"$source_dir/"}"
    done
}

# The commands: NAME NUMBER HEADER, or what is wrong
awk '
    /^enum \{/ { inside = 1; next }
    /^\};/ { inside = 0 }
    !inside || NF == 0 { next }
    /^ *\/\* .*: maint\/commands\/[a-z0-9_]+\.h \*\/$/ { header = $(NF - 1); sub(/.*\//, "", header); next }
    /^ *(RD|WR)_[A-Z0-9_]+ = 0x[0-9A-F][0-9A-F][0-9A-F][0-9A-F],?$/ {
        sub(/,/, "", $3)
        print (header == "" ? "! " $1 " belongs to no group" : $1 " " $3 " " header)
        next
    }
    { print "! cannot be read: " $0 }' "$numbers" >"$work/read"
sed -n 's/^! //p' "$work/read" >"$work/unread"
while read -r line; do finding "device_commands.h: $line"; done <"$work/unread"
grep -v '^!' "$work/read" >"$work/commands" || finding "no command in $numbers"
awk '$2 in name { print $1 " has the number of " name[$2] } { name[$2] = $1 }' "$work/commands" \
    >"$work/same"
while read -r line; do finding "$line"; done <"$work/same"

# The headers: those that are named, and those that are there
awk '{ sub(/\.h$/, "", $3); print $3 }' "$work/commands" | sort -u >"$work/named"
find "$headers" -name '*.h' -exec basename {} .h \; | sort >"$work/nouns"
only_in_first "$work/named" "$work/nouns" >"$work/absent"
while read -r noun; do
    finding "device_commands.h names maint/commands/$noun.h, which is not there"
done <"$work/absent"
only_in_first "$work/nouns" "$work/named" >"$work/idle"
while read -r noun; do
    finding "maint/commands/$noun.h belongs to no group of device_commands.h"
done <"$work/idle"

# The descriptions: HEADER NAME NUMBER
find "$headers" -name '*.h' -printf '%f\n' | sort | while read -r header; do
    { grep -oE '\b(RD|WR)_[A-Z0-9_]+ \(0x[0-9A-Fa-f]+\)' "$headers/$header" || true; } |
        tr -d '()' | sed "s/^/$header /"
done >"$work/described"
awk '
    FNR == NR { number[$1] = $2; header[$1] = $3; next }
    !($2 in number) { print "maint/commands/" $1 " describes " $2 ", which is no command"; next }
    {
        count[$2]++
        if ($1 != header[$2]) print $2 " is described in " $1 ", and its group names " header[$2]
        if ($3 != number[$2]) print $2 " is " number[$2] ", and " $1 " says " $3
    }
    END {
        for (name in number) {
            if (!count[name]) print name " is described as \"" name " (" number[name] ")\" nowhere"
            if (count[name] > 1) print name " is described " count[name] " times"
        }
    }' "$work/commands" "$work/described" | sort >"$work/wrong"
while read -r line; do finding "$line"; done <"$work/wrong"

# The typed calls. A call stands beside its description when no other comment begins between them.
typed=$source_dir/include/maint/typed_call.h
find "$source_dir/include/maint" -name '*.h' ! -path "$typed" | sort | while read -r header; do
    awk -v header="${header##*/}" '
        /^\/\*/ { comment++ }
        { text = $0 }
        /^ *MAINT_COMMAND/ {
            if (!sub(/^MAINT_COMMAND(_IN)?\([A-Z0-9_]+, [a-z0-9_]+, [A-Za-z0-9_]+\)$/, "", text) &&
                !sub(/^MAINT_COMMAND_ALONE\([A-Z0-9_]+, [a-z0-9_]+\)$/, "", text)) {
                print "! " header ": a typed call that cannot be read: " $0
                next
            }
            split($0, word, /[(), ]+/)
            print "call", header, word[2], word[3], comment
            next
        }
        {
            while (match(text, /(RD|WR)_[A-Z0-9_]+ \(0x/)) {
                print "description", header, substr(text, RSTART, RLENGTH - 4), "-", comment
                text = substr(text, RSTART + RLENGTH)
            }
        }' "$header"
done >"$work/typed"
awk '
    /^!/ { sub(/^! /, ""); print; next }
    FNR == NR { header[$1] = $3; next }
    $1 == "description" { described[$3] = $5; next }
    !($3 in header) { print $2 " has a typed call of " $3 ", which is no command"; next }
    {
        count[$3]++
        if ($2 != header[$3]) print $3 " has a typed call in " $2 ", and its group names " header[$3]
        else if ($5 != described[$3]) print $3 " has its typed call away from its description"
        if ($4 != "maint_" tolower($3)) print "the typed call of " $3 " is " $4
    }
    END {
        for (name in header) {
            if (!count[name]) print name " has no typed call"
            if (count[name] > 1) print name " has " count[name] " typed calls"
        }
    }' "$work/commands" "$work/typed" | sort >"$work/wrong"
while read -r line; do finding "$line"; done <"$work/wrong"

# Sources and tests
nouns_of "$source_dir/device/commands" .cpp >"$work/sources"
nouns_of "$source_dir/tests/device" _test.cpp >"$work/tests"
sed -n 's/^- //p' "$work/sources" >"$work/strays"
while read -r file; do
    finding "$file begins with the name of no header in maint/commands"
done <"$work/strays"
while read -r noun; do
    grep -q "^$noun " "$work/sources" ||
        finding "maint/commands/$noun.h has no device/commands/$noun.cpp or ${noun}_*.cpp"
    grep -q "^$noun " "$work/tests" ||
        finding "maint/commands/$noun.h has no tests/device/${noun}_test.cpp or ${noun}_*_test.cpp"
done <"$work/nouns"

# Each command is tested by name in a test of its noun, or in the fixture of such tests.
nouns_of "$source_dir/tests/device" _fixture.h >>"$work/tests"
while read -r name _ header; do
    { sed -n "s|^${header%.h} |$source_dir/|p" "$work/tests" | xargs -r grep -qwF -e "$name"; } ||
        finding "$name is named in no test of ${header%.h}"
done <"$work/commands"

printf '%d command(s) in %d header(s)\n' "$(wc -l <"$work/commands")" "$(wc -l <"$work/nouns")"
check_end
