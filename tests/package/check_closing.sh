#!/usr/bin/env bash
# An opened /dev/fpga is closed on every path: in the procedures of the commands no return stands
# between fpga_open and the call of a closing procedure (fpga_close...), and none is left open at
# the end of a procedure.
# usage: check_closing.sh SOURCE_DIR
. "$(dirname "$0")/common.sh"
work_make
cd "$1"

find . -path './device/*.cpp' -o -path './device/*.h' | sort >"$work/files"
if [ ! -s "$work/files" ]; then
    finding "no source in $1/device"
    check_end
fi
# A close within a block closes the device for the rest of that block alone.
# shellcheck disable=SC2016  # awk's own
xargs awk '
    { match($0, /^ */); depth = RLENGTH }
    FNR == 1 { opened = 0 }
    /^ .*[^A-Za-z_]fpga_open\(/ && !/^ *\/\// {
        if (opened) print FILENAME ":" FNR ": opened while the device of line " opened " is open"
        opened = FNR
        outside = depth
        block = 0
        ++count
        next
    }
    block && depth < block { block = 0 }
    opened && /fpga_close[A-Za-z]*\(/ {
        if (depth <= outside) opened = 0
        else block = depth
        next
    }
    opened && !block && /(^|[^A-Za-z_])return([^A-Za-z_]|$)/ {
        print FILENAME ":" FNR ": a return before the device of line " opened " is closed"
    }
    opened && /^}/ {
        print FILENAME ":" FNR ": the device of line " opened " is not closed"
        opened = 0
    }
    END { print count + 0 }' <"$work/files" >"$work/said"
count=$(tail -n 1 "$work/said")
while read -r line; do
    finding "$line"
done < <(sed '$d' "$work/said")
[ "$count" -gt 0 ] || finding "nothing in $1/device opens the device"
printf 'the device is opened at %d place(s)\n' "$count"
check_end
