# Sourced by the checks of this folder: findings, lists and symbols.
# shellcheck shell=bash
set -euo pipefail
export LC_ALL=C

: "${CC:=cc}" "${CXX:=c++}" "${CMAKE:=cmake}" "${AR:=ar}" "${NM:=nm}"
: "${OBJCOPY:=objcopy}" "${OBJDUMP:=objdump}" "${READELF:=readelf}"

findings=0

finding()
{
    printf '%s\n' "$*" >&2
    findings=$((findings + 1))
}

# Ends the check: fails if there was a finding.
check_end()
{
    if [ "$findings" -ne 0 ]; then
        printf '%d finding(s)\n' "$findings" >&2
        exit 1
    fi
}

# A folder for the check's own files, removed at its end.
work_make()
{
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
}

# list_words FILE COLUMN: a column of a list with # comments, sorted.
list_words()
{
    awk -v column="$2" '!/^#/ && NF >= column { print $column }' "$1" | sort -u
}

# Names that only one of two sorted files has.
only_in_first() { comm -23 "$1" "$2"; }

# archive_undefined ARCHIVE: names that its objects leave to others.
archive_undefined()
{
    "$NM" --undefined-only "$1" | awk '$1 ~ /^[UwV]$/ { print $2 }' | sort -u >"$work/undefined.all"
    "$NM" --defined-only "$1" | awk 'NF == 3 { print $3 }' | sort -u >"$work/defined"
    # Two outputs of nothing would agree with everything.
    if [ ! -s "$work/undefined.all" ] || [ ! -s "$work/defined" ]; then
        finding "no symbols in $1: is it an archive of objects?"
    fi
    only_in_first "$work/undefined.all" "$work/defined"
}

# calls_allowed PURE_LIST BOARD_LIST: the names that the two lists allow the product, sorted.
calls_allowed()
{
    list_words "$1" 1 >"$work/pure"
    list_words "$2" 1 >"$work/leaving"
    if [ ! -s "$work/pure" ] || [ ! -s "$work/leaving" ]; then
        finding "an empty list of calls"
    fi
    comm -12 "$work/pure" "$work/leaving" >"$work/both"
    [ ! -s "$work/both" ] || finding "both pure and leaving the process: $(paste -sd' ' "$work/both")"
    sort -u "$work/pure" "$work/leaving" >"$work/allowed"
    lists="${1##*/} nor ${2##*/}"
}

# names_check FILE WHAT: findings for the names in the file that the allowed calls do not hold.
names_check()
{
    local name
    only_in_first "$1" "$work/allowed" >"$work/strangers"
    while read -r name; do
        case $name in
        # The compiler's division and shifts, for a processor that has none. Those that unwind are
        # the C++ runtime's.
        __aeabi_unwind*)
            finding "$2 needs the C++ runtime: $name" ;;
        __aeabi_*) ;;
        _Z* | __cxa* | __gxx* | _Unwind* | __dynamic_cast)
            finding "$2 needs the C++ runtime: $name" ;;
        *)
            finding "$2 calls $name, which neither $lists allows" ;;
        esac
    done <"$work/strangers"
}
