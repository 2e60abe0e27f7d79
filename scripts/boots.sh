# Sourced by run.sh and .ci/boot_root: plays the boots of one flash image, and checks each. Who sources
# it calls boots_of, has a procedure "program" that runs maintlogfile on the unit, puts the image in
# $flash, and calls boots and boots_end.
# shellcheck shell=bash
. scripts/checks.sh

# boots_of FOLDER IMAGE_TOOL: the folder has conf, dev and tmp of the unit in it.
boots_of()
{
    unit=$1
    tool=$(realpath "$2")
    flash=$unit/dev/mtd_systemlog
    log=$unit/conf/system.log
    # What is remembered from one boot to the next.
    memory=$(mktemp -d "$unit/boots.XXXXXX")
}

said() { grep -qxF -e "$1" "$memory/console"; }
said_first() { [ "$(head -n 1 "$memory/console")" = "$1" ]; }
said_last() { [ "$(tail -n 1 "$memory/console")" = "$1" ]; }
said_nothing_of() { ! grep -qF -e "$1" "$memory/console"; }

# The image may be longer than the log in it.
log_is_image() { head -c "$(stat -c %s "$log")" "$flash" | cmp -- "$log" -; }
log_has_all_records() { [ "$(stat -c %s "$log")" -eq $((12 + 100 * $(records_of "$flash"))) ]; }
log_is_empty() { printf '\0\0\0\0\0\0\0\0\1\0\0\0' | cmp -- "$log" -; }
log_is_untouched() { [ "$(log_stamp)" = "$stamp" ] && cmp -- "$log" "$memory/log"; }
log_stamp() { stat -c '%i %s %y %z' "$log"; }

# Values in the header of an image.
field_of() { od -An -v -t "u$3" -j "$2" -N "$3" "$1" | tr -d ' '; }
records_of() { field_of "$1" 4 2; }

# faults COMMAND FILE: runs the tool on a file of the unit; what it finds wrong there, it says on
# standard error, goes to the file "fault" without the file's name.
faults()
{
    local status=0
    (cd "$unit" && "$tool" "$1" "$2") 2>"$memory/fault" || status=$?
    sed -i "s|^$2: ||; s|^damaged: ||" "$memory/fault"
    return "$status"
}
# What cannot be shown may be what the caller's image holds: no check in itself.
show() { faults show "$1" || printf '  (not to be shown: %s)\n' "$(cat "$memory/fault")"; }

# boot TITLE: runs the program and shows what it says and leaves.
boot()
{
    local status=0
    printf '\n== %s\n' "$1"
    program >"$memory/console" || status=$?
    sed 's/^/  | /' "$memory/console"
    printf '  exit status %d\n\n' "$status"
    show conf/system.log
    printf '\n'
    check "exit status is what puts returned for the last line" \
        test "$status" -eq $(($(tail -n 1 "$memory/console" | wc -c)))
    check "begins and ends with the banners" banners_said
}
banners_said()
{
    said_first 'maintlogfile --> FROM Read Sart!!' && said_last 'maintlogfile --> FROM Read End!!'
}

# boots: the image in $flash, and the three starts.
boots()
{
    local byte reason
    chmod u+w "$flash"
    printf '\n== The flash image\n'
    good=yes
    refused=
    if faults check dev/mtd_systemlog >/dev/null; then
        show dev/mtd_systemlog
    else
        good=no
        refused=$(cat "$memory/fault")
        # Its header, if it has one. The reason is for the last line.
        faults show dev/mtd_systemlog || true
    fi

    boot 'Cold start: no working log'
    check "says that it is a cold start" said 'zev_maintlog_init : 004 : Cold Start!!'
    if [ "$good" = yes ]; then
        check "the log is the image's" log_is_image
        check "the log has all records" log_has_all_records
    else
        printf '  The image is none that a log can be rebuilt from.\n'
        check "the log is empty" log_is_empty
    fi

    cp -- "$log" "$memory/log"
    stamp=$(log_stamp)
    boot 'Warm start: the working log is still there'
    if [ "$(field_of "$log" 6 2)" -le 1000 ]; then
        check "says that it is a warm start" said 'zev_maintlog_init : 001 : Warm Start!!'
        check "does not read the flash" said_nothing_of head.
        check "the log is untouched" log_is_untouched
    else
        check "refuses the log's location" said 'zev_maintlog_init : 003 : maintlog header read error'
        check "the log is the image's again" log_is_image
    fi

    if [ "$good" = no ]; then
        printf '\n== No cold start with a damaged image: the image cannot be used as it is.\n'
        return
    fi
    rm -- "$log"
    if [ "$(records_of "$flash")" -gt 0 ]; then
        # One bit of the first record's message.
        byte=$(field_of "$flash" 50 1)
        printf '%b' "\\0$(printf %o $((byte ^ 1)))" |
            dd of="$flash" bs=1 seek=50 conv=notrunc status=none
        reason='systemLogFileMake : 006 : /dev/mtd_systemlog file checksum error'
    else
        # No record to damage: the version goes.
        printf '\0\0' | dd of="$flash" bs=1 seek=8 conv=notrunc status=none
        reason='systemLogFileMake : 005 : /dev/mtd_systemlog file header version error'
    fi
    boot 'Cold start with a damaged image'
    check "says what is wrong" said "$reason"
    check "says that the log starts anew" said 'zev_maintlog_init : 007 : systemlog init'
    check "the log is empty" log_is_empty
}

# boots_end: what came of it, as the last line; ends the script if a check has failed.
boots_end()
{
    printf '\n'
    checks_end
    if [ "$good" = yes ]; then
        printf 'All runs did what they should.\n'
    else
        printf 'The image is refused: %s; the boot starts an empty log.\n' "$refused"
    fi
}
