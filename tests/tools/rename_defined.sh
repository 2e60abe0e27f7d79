#!/bin/sh
# Copies an archive and puts a prefix before the names that it defines, so that a program can have it
# beside another that defines the same names.
# usage: rename_defined.sh NM OBJCOPY PREFIX ARCHIVE COPY
set -e
"$1" -gP --defined-only "$4" | awk -v prefix="$3" 'NF > 1 { print $1, prefix $1 }' | sort -u >"$5.syms"
"$2" --redefine-syms="$5.syms" "$4" "$5"
