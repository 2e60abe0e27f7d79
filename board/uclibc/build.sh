#!/usr/bin/env bash
# The uClibc toolchain: Debian's cross compiler, and the board's C library built from Debian's
# source package. Its programs are FOLDER/bin/arm-uclibc-gcc, -g++, -nm and so on; they make static
# programs, and C++ without a runtime. The folder may be moved.
# usage: build.sh versions | into FOLDER
set -euo pipefail
shopt -s inherit_errexit
here=$(cd "$(dirname "$0")" && pwd)
usage='usage: build.sh versions | into FOLDER'

cross=arm-linux-gnueabi
cross_include=/usr/$cross/include
packages=(uclibc-source "gcc-$cross" "g++-$cross" "binutils-$cross" linux-libc-dev-armel-cross)
tools=(gcc g++ cpp gcc-ar gcc-nm gcc-ranlib addr2line ar as ld nm objcopy objdump ranlib readelf
    size strings strip)

die()
{
    printf 'uclibc/build.sh: %s\n' "$*" >&2
    exit 1
}

# What the build calls, before it starts and not a minute later.
programs_check()
{
    local program missing=()
    for program in make cc xz perl "${tools[@]/#/$cross-}"; do
        command -v "$program" >/dev/null || missing+=("$program")
    done
    [ "${#missing[@]}" -eq 0 ] || die "missing programs: ${missing[*]}"
}

# The compiler's own number: its packages' versions are those of a list of what is current.
versions()
{
    local package missing=()
    for package in "${packages[@]}"; do
        dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
            missing+=("$package")
    done
    [ "${#missing[@]}" -eq 0 ] ||
        die "missing packages (on Debian 12, as root: apt-get install ${missing[*]})"
    dpkg-query -W "${packages[@]}"
    "$cross-gcc" --version | head -n 1
}

# step WHAT LOG COMMAND...: runs the command, its output in the log, which is shown if it fails.
step()
{
    local what=$1 log=$folder/$2.log
    printf '  %s\n' "$what"
    "${@:3}" >"$log" 2>&1 </dev/null || failed "$what" "$log"
}

failed()
{
    tail -n 40 "$2" >&2
    die "$1 failed; the whole log is $2"
}

library_build()
{
    local source=(/usr/src/uClibc*.tar.xz) tree=$folder/build/source headers=$folder/build/kernel part
    local make=(make -C "$tree" ARCH=arm)
    [ -e "${source[0]}" ] || die "no source of uClibc in /usr/src (package uclibc-source)"
    mkdir -p "$tree" "$headers"
    step "Unpacking ${source[0]##*/}" unpack tar -C "$tree" --strip-components=1 -xf "${source[0]}"
    # The cross compiler's folder holds the kernel's headers among those of another C library.
    for part in asm asm-generic linux misc mtd; do
        [ -d "$cross_include/$part" ] || die "no $cross_include/$part (package linux-libc-dev-armel-cross)"
        cp -a "$cross_include/$part" "$headers"
    done
    {
        cat "$here/config"
        printf 'KERNEL_HEADERS="%s"\n' "$headers"
    } >"$tree/.config"
    step 'Configuring uClibc' configure "${make[@]}" olddefconfig
    choices_kept "$tree/.config"
    printf '  Compiling uClibc\n'
    "${make[@]}" -j "$(nproc)" 2>&1 </dev/null | "$here/../progress" "$folder/make.log" ||
        failed 'Compiling uClibc' "$folder/make.log"
    step 'Installing uClibc' install "${make[@]}" PREFIX="$folder/build/installed" install_dev
    mkdir -p "$folder/include"
    cp -a "$folder/build/installed/include" "$folder/include/uclibc"
    cp -a "$headers/." "$folder/include/uclibc"
    cp -a "$folder/build/installed/lib" "$folder/lib"
}

# choices_kept CONFIG: nothing of what was chosen was turned round for depending on something else.
choices_kept()
{
    local line
    while IFS= read -r line; do
        grep -qxF -e "$line" "$1" || die "uClibc's configuration does not take: $line"
    done < <(grep -E '^([A-Za-z]|# [A-Z0-9_a-z]+ is not set$)' "$here/config")
}

# The wrapper, its names, and the folders of headers in the places where it looks for them.
toolchain_make()
{
    local tool cxx
    cp "$here/wrapper" "$here/linking" "$folder"
    cp -a "$here/c++" "$folder/include/c++-uclibc"
    cxx=$cross_include/c++/$("$cross-g++" -dumpversion)
    [ -d "$cxx/$cross/bits" ] || die "no headers of C++ in $cxx"
    ln -s "$cxx" "$folder/include/c++"
    ln -s "$cxx/$cross" "$folder/include/c++-target"
    ln -s "$("$cross-gcc" -print-file-name=include)" "$folder/include/gcc"
    mkdir "$folder/bin"
    for tool in "${tools[@]}"; do
        ln -s ../wrapper "$folder/bin/arm-uclibc-$tool"
    done
    prefix=$folder/bin/arm-uclibc-

    step 'Completing libc.a' complete "${prefix}gcc" -Os -Wall -Wextra -Werror \
        -c "$here/static_only.c" -o "$folder/build/static_only.o"
    "${prefix}ar" r "$folder/lib/libc.a" "$folder/build/static_only.o"
    # The C++ compiler links with these unasked. Empty: what needs a C++ runtime does not link, and
    # the C library holds no mathematics.
    "${prefix}ar" rc "$folder/lib/libstdc++.a"
    "${prefix}ar" rc "$folder/lib/libm.a"
}

# The toolchain makes programs of both languages, for the board's processor.
toolchain_check()
{
    local program
    step 'Trying C' check_c "${prefix}gcc" -std=c99 -D_DEFAULT_SOURCE -D_POSIX_C_SOURCE=200809L \
        -pedantic -Wall -Wextra -Werror "$here/check/check.c" -o "$folder/build/check_c"
    step 'Trying C++' check_cxx "${prefix}g++" -std=c++20 -pedantic -Wall -Wextra -Werror \
        -fno-exceptions -fno-rtti "$here/check/check.cpp" -o "$folder/build/check_cxx"
    for program in "$folder/build/check_c" "$folder/build/check_cxx"; do
        "${prefix}readelf" -lA "$program" >"$folder/check_elf.log"
        ! grep -q INTERP "$folder/check_elf.log" || die "$program is not static"
        grep -q 'Tag_CPU_arch: v5TE$' "$folder/check_elf.log" || die "$program is not for ARMv5TE"
        ! grep -q 'Tag_ABI_VFP_args' "$folder/check_elf.log" || die "$program is not soft-float"
    done
}

refuse()
{
    printf '%s\n' "$usage" >&2
    exit 2
}
case ${1-} in
-h | --help)
    sed -n '1d; /^#/!q; s/^# \{0,1\}//p' "$0"
    exit
    ;;
versions)
    [ $# -eq 1 ] || refuse
    versions
    ;;
into)
    [ $# -eq 2 ] || refuse
    versions >/dev/null
    programs_check
    folder=$(cd "$2" 2>/dev/null && pwd) || die "no folder $2"
    [ -z "$(ls -A "$folder")" ] || die "not empty: $folder"
    library_build
    toolchain_make
    toolchain_check
    rm -rf "$folder/build"
    ;;
*) refuse ;;
esac
