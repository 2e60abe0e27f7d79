#!/usr/bin/env bash
# The folders of the product are floors of a house: a file includes files of its own folder and of the
# floors below it, so that no two folders need each other.
# usage: check_includes.sh SOURCE_DIR
. "$(dirname "$0")/common.sh"
work_make
source_dir=$1

# From the top. The simulation stands beside the house, on its ground; one floor has a door to it.
floors=(maintlog tools/maintsim tools tools/maintctl catalogue device/dispatch device/commands device/access config log
    include/maint/commands include/maint)
beside=sim
door=tools/maintsim
declare -A number
for i in "${!floors[@]}"; do number[${floors[i]}]=$i; done

cd "$source_dir"
found=()
for folder in "${floors[@]%%/*}" "$beside"; do
    [ ! -d "$folder" ] || found+=("$folder")
done
find "${found[@]}" -name '*.[ch]' -o -name '*.cpp' -o -name '*.hpp' -o -name '*.inc' | sort -u >"$work/files"
# And whatever is built
if [ -e CMakeLists.txt ]; then
    grep -oE '[A-Za-z0-9_/]+\.(c|cpp)\b' CMakeLists.txt | sort -u - "$work/files" >"$work/all"
    mv "$work/all" "$work/files"
fi
[ -s "$work/files" ] || finding "no source in $source_dir"

# include_check FILE LINE TEXT: findings for one line that includes something.
include_check()
{
    local folder=${1%/*} place=$1:$2 name candidate target='' other
    if ! [[ $3 =~ ^[^\<\"]*[\<\"]([^\>\"]+)[\>\"] ]]; then
        finding "$place includes what cannot be read: $3"
        return
    fi
    name=${BASH_REMATCH[1]}
    # As the compiler looks for it; what is not found between < and > is the system's.
    for candidate in "$folder/$name" "include/$name" "$name"; do
        if [ -z "$target" ] && [ -e "$candidate" ]; then
            target=$candidate
        fi
    done
    if [ -z "$target" ]; then
        [[ $3 != *\"* ]] || finding "$place includes $name, which is nowhere"
        return
    fi
    case $target in
    *./*) target=$(realpath -s --relative-to=. "$target") ;;
    esac
    count=$((count + 1))
    other=${target%/*}
    if [ "$other" = "$folder" ] || [ "$folder,$other" = "$door,$beside" ]; then
        return
    elif [ -z "${number[$other]:-}" ]; then
        finding "$place includes $target, which lies on no floor"
    elif [ "$folder" = "$beside" ]; then
        [[ $other == include/* ]] || finding "$place includes $target, beyond the public headers"
    elif [ "${number[$other]}" -le "${number[$folder]}" ]; then
        finding "$place includes $target, which lies above it"
    fi
}

count=0
while read -r file; do
    if [ -z "${number[${file%/*}]:-}" ] && [ "${file%/*}" != "$beside" ]; then
        finding "$file lies on no floor"
        continue
    fi
    grep -nE '^[[:space:]]*#[[:space:]]*include' "$file" >"$work/includes" || continue
    while IFS=: read -r line text; do
        include_check "$file" "$line" "$text"
    done <"$work/includes"
done <"$work/files"
printf '%d include(s) of %d file(s) of the product\n' "$count" "$(wc -l <"$work/files")"
check_end
