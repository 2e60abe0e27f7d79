# Sourced first by the programs of scripts/, .ci/ and board/: their help, and the refusal of what
# they do not understand. A program's help is the comment at its head.
# shellcheck shell=bash

usage_help() { sed -n '1d; /^#/!q; s/^# \{0,1\}//p' "$0"; }

# refuse WHAT: ends a program that was not called as it should be.
refuse()
{
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    usage_help | grep '^usage:' >&2
    printf '%s --help says more.\n' "${0##*/}" >&2
    exit 2
}

# usage LEAST MOST ARGUMENT...: so many arguments, none of them empty and none an option but --help.
usage()
{
    local least=$1 most=$2 argument
    shift 2
    case ${1-} in
    -h | --help)
        usage_help
        exit 0
        ;;
    esac
    for argument; do
        case $argument in
        '') refuse 'an argument is empty' ;;
        -*) refuse "no such option: $argument" ;;
        esac
    done
    [ $# -ge "$least" ] || refuse 'an argument is missing'
    [ $# -le "$most" ] || refuse "one argument too many: ${*:$((most + 1)):1}"
}
