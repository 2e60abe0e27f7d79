#!/usr/bin/env bash
# Builds the virtual board's kernel from the distribution's source: FOLDER/zImage and
# FOLDER/versatile-pb.dtb.
# usage: build.sh versions | into FOLDER
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source=linux-source-6.1
export ARCH=arm CROSS_COMPILE=arm-linux-gnueabi-

case ${1-} in
-h | --help)
    sed -n '1d; /^#/!q; s/^# \{0,1\}//p' "$0"
    exit
    ;;
versions)
    dpkg-query --show "$source" gcc-12-arm-linux-gnueabi binutils-arm-linux-gnueabi
    exit
    ;;
into) [ $# -eq 2 ] || exit 2 ;;
*)
    sed -n 's/^# usage: /usage: /p' "$0" >&2
    exit 2
    ;;
esac
folder=$2
fail()
{
    tail -n 30 "$folder/build.log"
    exit 1
}

# Most of the source is of other processors, of devices that the board does not have, of tools.
mkdir "$folder/source"
tar -xf "/usr/src/$source.tar.xz" -C "$folder/source" --strip-components=1 --checkpoint=20000 \
    --checkpoint-action='echo=  kernel: unpacking, %u blocks' \
    --exclude='*/drivers/gpu/drm/amd/include' --exclude='*/tools/testing' \
    --exclude='*/drivers/net/ethernet/*/*.c' --exclude='*/arch/[b-z]*/*.[chS]' \
    --exclude='*/sound/*.c' --exclude='*/drivers/media/*.c'
cd "$folder/source"
make -s KCONFIG_ALLCONFIG="$here/config" allnoconfig >"$folder/build.log" 2>&1 || fail

# A fact that the kernel's own rules overrode would show only on the board, and oddly.
while read -r option; do
    case $option in
    CONFIG_*=n) grep -q "^${option%=n}=" .config ;;
    CONFIG_*) ! grep -qxF -e "$option" .config ;;
    *) false ;;
    esac && {
        printf 'the kernel does not take this configuration: %s\n' "$option"
        exit 1
    }
done <"$here/config"
make -j"$(nproc)" zImage versatile-pb.dtb 2>&1 | "$here/../progress" "$folder/build.log" || fail
mv arch/arm/boot/zImage arch/arm/boot/dts/versatile-pb.dtb "$folder"
cd "$folder"
rm -rf "$folder/source"
ls -l "$folder/zImage" "$folder/versatile-pb.dtb"
