#!/usr/bin/env bash
# Nothing escapes the simulated board: behind the renaming, the product calls nothing but what
# stays in the process and what the board answers.
# usage: check_board.sh PURE_LIST BOARD_LIST ARCHIVE
. "$(dirname "$0")/common.sh"
work_make

calls_allowed "$1" "$2"
list_words "$2" 2 | sort -u - "$work/pure" >"$work/allowed"
archive_undefined "$3" >"$work/undefined"
names_check "$work/undefined" "the product on the board"
check_end
