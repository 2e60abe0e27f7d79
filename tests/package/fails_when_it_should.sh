#!/usr/bin/env bash
# The checks of this folder, each with something wrong to find, and with something right beside it.
# usage: fails_when_it_should.sh SOURCE_DIR [BUILD_DIR]
. "$(dirname "$0")/common.sh"
work_make
here=$(dirname "$0")
source_dir=$1
pure=$here/pure_calls.txt
calls=$source_dir/tests/board/calls.syms
count=0

passes()
{
    count=$((count + 1))
    "$here/$1" "${@:2}" >"$work/said" 2>&1 || finding "$* fails: $(cat "$work/said")"
}

# fails_with TEXT CHECK...: the check fails, and says the text.
fails_with()
{
    local text=$1
    shift
    count=$((count + 1))
    if "$here/$1" "${@:2}" >"$work/said" 2>&1; then
        finding "$* passes where it should fail with '$text'"
    elif ! grep -qF -e "$text" "$work/said"; then
        finding "$* fails without '$text': $(cat "$work/said")"
    fi
}

# header NAME TEXT [NESTED]: a folder of public headers with the one header, and with one in a
# folder below where its text is given; prints its path.
header()
{
    mkdir -p "$work/$1/maint/commands"
    printf '%s\n' "$2" >"$work/$1/maint/entry.h"
    [ $# -eq 2 ] || printf '%s\n' "$3" >"$work/$1/maint/commands/nested.h"
    printf '%s\n' "$work/$1"
}

# archive NAME OPTION... TEXT: an archive of one object of C; archive_cxx: of C++.
archive() { archive_of "$1" "$CC" -std=c11 -x c "${@:2}"; }
archive_cxx() { archive_of "$1" "$CXX" -std=c++20 -x c++ "${@:2}"; }
archive_of()
{
    local name=$1 options=("${@:2:$#-2}")
    printf '%s\n' "${@: -1}" |
        "${options[@]}" -Os -fPIC -fvisibility=hidden -c -o "$work/$name.o" -
    "$AR" rc "$work/$name.a" "$work/$name.o"
}

public='__attribute__((visibility("default")))'

# Headers
passes check_headers.sh "$(header good '#include <stdint.h>
uint32_t entry(void);')"
needy=$(header needy 'uint32_t entry(void);')
fails_with 'maint/entry.h does not compile by itself as C99' check_headers.sh "$needy"
fails_with 'maint/entry.h does not compile by itself as C++20' check_headers.sh "$needy"
fails_with 'by itself as C++20' check_headers.sh "$(header keyword 'extern int class;')"
fails_with 'by itself as C99' check_headers.sh "$(header cxx_only 'namespace entry {}')"
passes check_headers.sh "$(header both_good 'extern int entry;' 'extern int nested;')"
nested=$(header nested 'extern int entry;' 'uint32_t nested(void);')
fails_with 'maint/commands/nested.h does not compile by itself as C99' check_headers.sh "$nested"
fails_with 'maint/commands/nested.h does not compile by itself as C++20' check_headers.sh "$nested"
mkdir -p "$work/bare/maint"
fails_with 'no header in' check_headers.sh "$work/bare"

# Archives and exports
include=$(header declared 'MAINT_API int32_t* entry(const char* text);')
echo entry >"$work/entries"
archive good "#include <string.h>
$public int entry(const char* a) { return (int)strlen(a); }"
passes check_archive.sh "$pure" "$calls" "$work/entries" "$include" "$work/good.a"

archive stranger "#include <unistd.h>
$public int entry(void) { return getpid(); }"
fails_with 'calls getpid, which neither' \
    check_archive.sh "$pure" "$calls" "$work/entries" "$include" "$work/stranger.a"
archive_cxx runtime "extern \"C\" $public int* entry() { return new int; }"
fails_with 'needs the C++ runtime: _Znw' \
    check_archive.sh "$pure" "$calls" "$work/entries" "$include" "$work/runtime.a"
archive nobody "int nobodys(void);
$public int entry(void) { return nobodys(); }"
{ cat "$pure"; echo nobodys; } >"$work/pure_and_nobodys"
fails_with 'does not link with the C library alone' \
    check_archive.sh "$work/pure_and_nobodys" "$calls" "$work/entries" "$include" "$work/nobody.a"
"$AR" rc "$work/empty.a"
fails_with 'no symbols in' \
    check_archive.sh "$pure" "$calls" "$work/entries" "$include" "$work/empty.a"
archive visible "#include <string.h>
$public int entry(const char* a) { return (int)strlen(a); }
$public int extra(void) { return 1; }"
fails_with 'has extra, which is no public entry' \
    check_archive.sh "$pure" "$calls" "$work/entries" "$include" "$work/visible.a"

{ cat "$pure"; echo open; } >"$work/pure_and_open"
fails_with 'both pure and leaving the process: open' \
    check_archive.sh "$work/pure_and_open" "$calls" "$work/entries" "$include" "$work/good.a"
printf '%s\n' entry absent >"$work/entries_more"
"$CC" -shared "$work/good.o" -o "$work/libgood.so"
passes check_entries.sh "$work/entries" "$include" "$work/libgood.so"
fails_with 'libgood.so lacks absent' \
    check_entries.sh "$work/entries_more" "$include" "$work/libgood.so"
fails_with 'maint lacks entry' \
    check_entries.sh "$work/entries" "$(header silent '')" "$work/libgood.so"
fails_with 'maint has more, which is no public entry' \
    check_entries.sh "$work/entries" \
    "$(header talkative 'MAINT_API int entry(void);
MAINT_API void more(int a);')" "$work/libgood.so"
fails_with 'maint has deeper, which is no public entry' \
    check_entries.sh "$work/entries" \
    "$(header deep 'MAINT_API int entry(void);' 'MAINT_API void deeper(int a);')" "$work/libgood.so"

# The board
archive escape '#include <fcntl.h>
int entry(void) { return open("/conf/config", O_RDONLY); }'
fails_with 'the product on the board calls open, which' \
    check_board.sh "$pure" "$calls" "$work/escape.a"
"$OBJCOPY" --redefine-syms="$calls" "$work/escape.a" "$work/kept.a"
passes check_board.sh "$pure" "$calls" "$work/kept.a"
archive divides 'unsigned __aeabi_uidiv(unsigned a, unsigned b);
unsigned entry(unsigned a, unsigned b) { return __aeabi_uidiv(a, b); }'
passes check_board.sh "$pure" "$calls" "$work/divides.a"
archive swaps 'unsigned __bswapsi2(unsigned a);
unsigned entry(unsigned a) { return __bswapsi2(a); }'
passes check_board.sh "$pure" "$calls" "$work/swaps.a"
archive table 'extern char _GLOBAL_OFFSET_TABLE_[];
const char* entry(void) { return _GLOBAL_OFFSET_TABLE_; }'
passes check_board.sh "$pure" "$calls" "$work/table.a"
archive unwinds 'void __aeabi_unwind_cpp_pr0(void);
void entry(void) { __aeabi_unwind_cpp_pr0(); }'
fails_with 'needs the C++ runtime: __aeabi_unwind_cpp_pr0' \
    check_board.sh "$pure" "$calls" "$work/unwinds.a"

# Linked files
passes check_linked.sh "$pure" "$calls" "$work/libgood.so"
"$CC" -shared "$work/good.o" -Wl,--no-as-needed -lm -o "$work/libmath.so"
fails_with 'needs libm.so' check_linked.sh "$pure" "$calls" "$work/libmath.so"
"$CC" -shared "$work/stranger.o" -o "$work/libstranger.so"
fails_with 'calls getpid, which neither' check_linked.sh "$pure" "$calls" "$work/libstranger.so"
"$CXX" -shared "$work/runtime.o" -o "$work/libruntime.so"
fails_with 'needs the C++ runtime: _Znw' check_linked.sh "$pure" "$calls" "$work/libruntime.so"
fails_with 'needs libstdc++.so' check_linked.sh "$pure" "$calls" "$work/libruntime.so"

# Static data
archive constant 'const char* const table[] = {"a", "b"};'
passes check_static_data.sh "$work/constant.a"
archive data 'int x = 1;'
fails_with 'section .data of 4 bytes' check_static_data.sh "$work/data.a"
archive bss 'int next(void) { static int n; return n++; }'
fails_with 'section .bss of 4 bytes' check_static_data.sh "$work/bss.a"
archive section -fdata-sections 'int x = 1;'
fails_with 'section .data.x of 4 bytes' check_static_data.sh "$work/section.a"
archive thread '_Thread_local int x;'
fails_with 'section .tbss of 4 bytes' check_static_data.sh "$work/thread.a"
archive common -fcommon 'int x;'
fails_with 'common symbol x' check_static_data.sh "$work/common.a"
archive_cxx constructor 'int first(); extern const int x; const int x = first();'
fails_with 'section .init_array of ' check_static_data.sh "$work/constructor.a"
fails_with 'no sections in' check_static_data.sh "$work/empty.a"

# The pkg-config file
mkdir "$work/elsewhere"
cat >"$work/elsewhere/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(elsewhere LANGUAGES NONE)
file(WRITE ${PROJECT_BINARY_DIR}/maint.pc
     "libdir=/elsewhere\nincludedir=/elsewhere\nName: maint\nDescription: -\nVersion: 1\n")
END
fails_with 'libdir is /elsewhere, not' check_pkg_config.sh "$work/elsewhere"
fails_with 'includedir is /elsewhere, not' check_pkg_config.sh "$work/elsewhere"
fails_with 'cannot be configured' check_pkg_config.sh "$work/bare"

# The installation
if [ $# -eq 2 ]; then
    "$CMAKE" --install "$2" --prefix "$work/prefix" >/dev/null
    fails_with 'the installed headers are not the public ones' \
        check_installation.sh "$2" "$include" "$here/consumer"
    passes check_consumer.sh "$work/prefix" "$here/consumer"

    # without NAME: a copy of the installed tree that lacks the file; prints its path.
    without()
    {
        cp -a "$work/prefix" "$work/without_$1"
        find "$work/without_$1" -name "$1" -delete
        printf '%s\n' "$work/without_$1"
    }
    fails_with 'no consumer through pkg-config' \
        check_consumer.sh "$(without maint.pc)" "$here/consumer"
    fails_with 'no consumer through find_package' \
        check_consumer.sh "$(without maintTargets.cmake)" "$here/consumer"
    fails_with 'no consumer through find_package' \
        check_consumer.sh "$(without save_lock.h)" "$here/consumer"
    cp -a "$here/consumer" "$work/consumer"
    echo 'one line more' >>"$work/consumer/expected.txt"
    fails_with 'says something else' check_consumer.sh "$work/prefix" "$work/consumer"
fi

printf '%d uses of the checks tried\n' "$count"
check_end
