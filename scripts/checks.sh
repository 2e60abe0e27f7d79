# Sourced by the scripts that play a boot: checks by name, counted.
# shellcheck shell=bash
failures=0

# check WHAT COMMAND...: reports whether the command succeeds.
check()
{
    if "${@:2}"; then
        printf '  ok      %s\n' "$1"
    else
        printf '  FAILED  %s\n' "$1"
        failures=$((failures + 1))
    fi
}

# checks_end: ends the script if one has failed.
checks_end()
{
    if [ "$failures" -ne 0 ]; then
        printf '%s: %d check(s) FAILED\n' "${0##*/}" "$failures" >&2
        exit 1
    fi
}
