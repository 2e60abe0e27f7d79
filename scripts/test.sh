#!/usr/bin/env bash
# usage: test.sh [--all] [OPTION_OF_CTEST...]
#
# Builds library, programs, tools and tests in build/release, and runs the tests there. They go through
# a share of the loops that take long, and leave out the longest; with --all, they do everything. The
# other arguments go to ctest:
#   -R REGEX, -E REGEX   only tests whose name the regular expression finds; all but these
#   -N                   does not run the tests, but lists them
#   --rerun-failed       only the tests that failed the last time
#   -V, -VV, -Q          says more, still more, nothing
#   -j NUMBER            so many at once (4)
#   --timeout SECONDS, --repeat until-fail:NUMBER, --stop-on-failure, --schedule-random, --progress,
#   --output-on-failure
#
# The first build takes a good minute on two processors, the tests half a minute. Exit status: 0
# if all tests passed, 8 if one failed or none has such a name.
#
# Writes to build/release and to temporary folders. On Debian 12 and as root it installs what is
# missing; otherwise it names it.
set -euo pipefail
. "$(dirname "$0")/usage.sh"

case ${1-} in
-h | --help) usage 0 0 "$1" ;;
esac
preset=release
targets=all
if [ "${1-}" = --all ]; then
    preset=all
    targets='all long_tests'
    shift
fi
# ctest itself passes over what it does not know, and runs every test.
valued=
for argument; do
    if [ -n "$valued" ]; then
        valued=
        continue
    fi
    case $argument in
    -R | -E | -j | --timeout | --repeat) valued=$argument ;;
    -N | -V | -VV | -Q | -j[1-9] | -j[1-9][0-9]) ;;
    --rerun-failed | --stop-on-failure | --schedule-random | --progress | --output-on-failure) ;;
    *) refuse "no option that goes to ctest: $argument" ;;
    esac
done
[ -z "$valued" ] || refuse "$valued needs a value"

. "$(dirname "$0")/setup.sh"
setup_need "${test_needs[@]}"

cmake --preset release
# shellcheck disable=SC2086  # words on purpose
cmake --build --preset release --target $targets
ctest --preset "$preset" "$@"
