# Sourced by the scripts that build: goes to the top of the repository and has what is needed.
# shellcheck shell=bash
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Programs of the system's administrator: not in everybody's PATH.
PATH=$PATH:/usr/sbin:/sbin

die()
{
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# present THING: a program, a file, or a C++ header that the compiler finds.
present()
{
    case $1 in
    /*) [ -e "$1" ] ;;
    *.h) printf '#include <%s>\n' "$1" | c++ -E -x c++ - >/dev/null 2>&1 ;;
    *) command -v "$1" >/dev/null ;;
    esac
}

# setup_need THING=PACKAGE...: installs the packages of what is missing, or names them and ends.
setup_need()
{
    local need missing=() packages=()
    for need in "$@"; do
        if ! present "${need%%=*}"; then
            missing+=("${need%%=*}")
            packages+=("${need#*=}")
        fi
    done
    [ "${#missing[@]}" -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ] || ! command -v apt-get >/dev/null; then
        die "missing: ${missing[*]} (on Debian 12, as root: apt-get install ${packages[*]})"
    fi
    printf 'Missing: %s. Installing: %s\n' "${missing[*]}" "${packages[*]}"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${packages[@]}"
    for need in "$@"; do
        present "${need%%=*}" || die "still missing after the installation: ${need%%=*}"
    done
}

# What every build takes.
# shellcheck disable=SC2034  # for the scripts that source this
build_needs=("cc=gcc" "c++=g++" "cmake=cmake" "ninja=ninja-build")
# And a build with the tests, and running them.
# shellcheck disable=SC2034
test_needs=("${build_needs[@]}" gtest/gtest.h=libgtest-dev pkg-config=pkg-config python3=python3 jq=jq)
