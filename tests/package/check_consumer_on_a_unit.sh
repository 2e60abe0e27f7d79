#!/usr/bin/env bash
# A C program on the installed library works on a simulated unit, as its user would try it: it does its
# work, the unit knows what it asked, and a failure arrives where it belongs.
# usage: check_consumer_on_a_unit.sh PREFIX CONSUMER_DIR
. "$(dirname "$0")/common.sh"
work_make
prefix=$(realpath "$1")
consumer=$(realpath "$2")
if ! [ -x "$prefix/bin/maintsim" ]; then
    finding "no bin/maintsim in $prefix"
    check_end
fi

if ! "$CMAKE" -S "$consumer" -B "$work/build" -G Ninja -DCMAKE_C_COMPILER="$CC" \
    -DCMAKE_PREFIX_PATH="$prefix" >"$work/log" 2>&1 ||
    ! "$CMAKE" --build "$work/build" >>"$work/log" 2>&1; then
    cat "$work/log"
    finding "no consumer through find_package(maint)"
    check_end
fi
cd "$work"
on_unit() { "$prefix/bin/maintsim" -u unit "$@"; }
on_unit new
# The table that the consumer loads is in a file of the unit.
printf '\001\002\003' | dd of=unit/files/tmp/ks8995_nor.dat conv=notrunc status=none

# does RESULT: it says what it should, with this result of loading the table.
does()
{
    on_unit build/consumer table >said 2>&1 || finding "consumer exits with $?"
    diff <(cat "$consumer/expected.txt" && echo "build/consumer: maint_wr_switch_tables_1() = $1") said ||
        finding "consumer says something else"
}
# asked: the requests of the consumer since the unit was made, with what they end with; of the table,
# the first bytes.
asked()
{
    on_unit calls | sed -n 's/^.* consumer: ioctl //p' |
        sed -E 's/^(.* 6B79 [^)]*\)( [0-9A-F]{2}){6}).*( -> .*)$/\1 ...\3/'
}

does 0
diff - <(asked) <<'END' || finding "the unit was asked something else"
/dev/fpga 6B02 (status word read) 00 00 -> 0 F0 00
/dev/fpga 6B79 (switch tables write 1) 00 00 01 02 03 00 ... -> 0
END

# The command is tried twice; then its caller is told.
on_unit fail 0x6B79 --for 2
does -2
[ "$(asked | grep -c ' 6B79 .* -> -1 EIO$')" -eq 2 ] || finding "two requests should have failed: $(asked)"
does 0
check_end
