# Sourced by the steps: no argument but "needs", the top of the repository, a folder of their own.
# shellcheck shell=bash
set -euo pipefail
step_needs_alone=no
if [ "${1-}" = needs ]; then
    step_needs_alone=yes
    shift
fi
# shellcheck source=scripts/usage.sh
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/usage.sh"
usage_help() { printf 'usage: %s     one of the steps of .ci/run\n\n%s\n' "${0##*/}" "$(sed -n '2s/^# //p' "$0")"; }
usage 0 0 "$@"
# shellcheck source=scripts/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/setup.sh"

# step_needs THING=PACKAGE...: what the step cannot do without; the word "needs" asks for no more.
step_needs()
{
    setup_need "$@"
    [ "$step_needs_alone" = no ] || exit 0
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# What a step leaves for others and for the closing line.
kept=build/ci
mkdir -p "$kept"

# heading WHAT: a part of a step.
heading() { printf '\n-- %s\n' "$*"; }

# quietly COMMAND...: what it says counts only if it fails.
quietly()
{
    "$@" >"$work/said" 2>&1 || {
        cat "$work/said"
        die "failed: $*"
    }
}

# The repository may belong to another user than the one who tests.
files() { git -c safe.directory='*' ls-files "$@"; }

# shell_files FOLDER...: the shell scripts in these, those that are sourced by others too.
shell_files()
{
    files -z "$@" | xargs -0 awk '
        FNR == 1 && /^#!.*(bash|\/sh)$/ || FNR <= 4 && /^# shellcheck shell=bash$/ { print FILENAME; nextfile }
        FNR == 4 { nextfile }'
}
