#!/usr/bin/env bash
# The checks of this folder, each with something wrong to find, and with something right beside it.
# usage: fails_when_it_should.sh SOURCE_DIR BUILD_DIR PART
#   BUILD_DIR   where the product is built, or none for a build that nobody installs
#   PART        headers: the checks that compile headers; rest: all others
. "$(dirname "$0")/common.sh"
work_make
here=$(dirname "$0")
source_dir=$1
build=${2#none}
part=$3
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

# edited TEXT OLD NEW: the text with the old words, which have to be there, replaced.
edited()
{
    [[ $1 == *"$2"* ]] || printf 'lacks %s\n' "$2" >&2
    printf '%s\n' "${1/"$2"/"$3"}"
}

mkdir -p "$work/bare/maint"
case $part in
headers)

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
apart=$(header apart 'extern int entry;' 'extern char entry;')
fails_with 'the headers do not compile together as C99' check_headers.sh "$apart"
fails_with 'the headers do not compile together as C++20' check_headers.sh "$apart"
fails_with 'the headers do not compile within extern "C"' check_headers.sh "$(header block '
#ifdef __cplusplus
template <int k> struct Entry;
#endif')"
fails_with 'by itself as C99' check_headers.sh "$(header careless \
    'static inline char* entry(const char* text) { return (char*)text; }')"
fails_with 'no header in' check_headers.sh "$work/bare"

# Typed calls
# typed_with OLD NEW: the public headers, where what declares the calls has the old words replaced.
typed_with()
{
    rm -rf "$work/typed_calls"
    cp -r "$source_dir/include" "$work/typed_calls"
    edited "$(cat "$source_dir/include/maint/typed_call.h")" "$1" "$2" >"$work/typed_calls/maint/typed_call.h"
    printf '%s\n' "$work/typed_calls"
}
typed_fails() { fails_with "$1" check_typed_calls.sh "$(typed_with "${@:2}")"; }
passes check_typed_calls.sh "$(typed_with FUNCTION FUNCTION)"
typed_fails 'maint_rd_rtc_time(record) compiles as_c with (uint16_t* record)' \
    'FUNCTION(RECORD* argument)' 'FUNCTION(void* argument)'
typed_fails 'maint_rd_bandwidth(record) compiles as_cxx with (uint32_t* record)' \
    'FUNCTION(RECORD* argument)' 'FUNCTION(void* argument)'
typed_fails 'maint_wr_rtc_time(record) does not compile as_c with (const RtcDateTime* record)' \
    'FUNCTION(const RECORD* argument)' 'FUNCTION(RECORD* argument)'
typed_fails 'maint_wr_switch_tables_1(record) compiles as_cxx with (void* record)' \
    'FUNCTION(void)' 'FUNCTION(...)'
typed_fails 'typed calls cost something in C: ' 'Fpga_Register_Set(CODE, argument)' \
    'Fpga_Register_Set(CODE + 1, argument)'
typed_fails 'typed calls cost something in C: ' 'Fpga_Register_Set(CODE, argument)' \
    '-Fpga_Register_Set(CODE, argument)'
typed_fails 'maint_wr_rtc_time(record) costs something in C++: ' 'const_cast<RECORD*>(argument)' \
    'static_cast<void*>(0)'
typed_fails 'maint_wr_switch_tables_1() costs something in C++: ' \
    'Fpga_Register_Set(CODE, NULL)' '-Fpga_Register_Set(CODE, NULL)'
fails_with 'no typed call in' check_typed_calls.sh "$work/bare"
    ;;
rest)

# Records and constants: a table, and a header that keeps what it says
layout=$work/layout.txt
cat >"$layout" <<'LAYOUT'
type      Sink int32_t
constant  SINK_LOG -2
constant  SEQ_NONE 0xFFFFFFFF
record    Group 4
field     Group valid 0 1 uint8_t
field     Group element 1 3 uint8_t[3]
record    Panel 12
field     Panel id 0 4 uint32_t
field     Panel low 4 2 uint16_t
field     Panel high 6 2 uint16_t
field     Panel group 8 4 Group
LAYOUT
panel='/* Not read: typedef struct Old { int old; } Old; */
#ifndef MAINT_ENTRY_H
#define MAINT_ENTRY_H
#include <stdint.h>
#include "maint/commands/nested.h"
typedef int32_t Sink;
enum { SINK_LOG = -2 };
#define SEQ_NONE UINT32_C(0xFFFFFFFF)
typedef struct Group {
    uint8_t valid;      /* 0 */
    uint8_t element[3]; /* 1 */
} Group;
typedef struct Panel {
    uint32_t id;
    uint16_t low;
    uint16_t high;
    Group group;
} Panel;
MAINT_API int32_t entry(Panel* panel,
                        Sink sink);
#endif'
# panel_with OLD NEW [MORE]: the header with the old words replaced, and more in one below it.
panel_with() { header panel "$(edited "$panel" "$1" "$2")" "#define MAINT_API
${3:-}"; }
# layout_with OLD NEW: the table with the old words replaced.
layout_with()
{
    edited "$(cat "$layout")" "$1" "$2" >"$work/layout_with.txt"
    printf '%s\n' "$work/layout_with.txt"
}
passes check_record_layout.sh "$layout" "$(panel_with Panel Panel)"
# panel_fails TEXT OLD NEW [MORE], layout_fails TEXT OLD NEW: with this fault the check says the text.
panel_fails() { fails_with "$1" check_record_layout.sh "$layout" "$(panel_with "${@:2}")"; }
layout_fails()
{
    fails_with "$1" check_record_layout.sh "$(layout_with "${@:2}")" "$(panel_with Panel Panel)"
}

panel_fails 'Panel.low is not at 4' \
    $'uint16_t low;\n    uint16_t high;' $'uint16_t high;\n    uint16_t low;'
panel_fails 'Panel.high is not at 6' 'uint16_t low;' 'uint32_t low;'
panel_fails 'Panel.id is no uint32_t' 'uint32_t id;' 'int32_t id;'
panel_fails 'Panel has not 12 bytes' 'element[3]' 'element[4]'
panel_fails 'Group.element has not 3 bytes' 'element[3]' 'element[2]'
panel_fails 'the headers lack field Panel high' 'uint16_t high;' 'uint16_t tall;'
panel_fails 'the table lacks field Panel tall' 'uint16_t high;' 'uint16_t tall;'
panel_fails 'the table lacks field Panel more' 'Group group;' $'Group group;\n    uint8_t more[4];'
panel_fails 'the headers lack constant SINK_LOG' 'enum { SINK_LOG = -2 };' ''
panel_fails 'the table lacks constant SINK_BOTH' 'SINK_LOG = -2' 'SINK_LOG = -2, SINK_BOTH = 3'
panel_fails 'SINK_LOG is not -2' 'SINK_LOG = -2' 'SINK_LOG = 2'
panel_fails 'SEQ_NONE is not 0xFFFFFFFF' '0xFFFFFFFF' '0xFFFFFFFE'
panel_fails 'the table lacks constant SEQ_FIRST' \
    '#define SEQ_NONE' $'#define SEQ_FIRST 1\n#define SEQ_NONE'
panel_fails 'Sink is no int32_t' 'typedef int32_t' 'typedef uint32_t'
panel_fails 'the table lacks type Source' Panel Panel 'typedef int Source;'
panel_fails 'nor entry: typedef int *Source' Panel Panel 'typedef int *Source;'
panel_fails 'the table lacks record Nested' Panel Panel 'typedef struct Nested { int a; } Nested;'
panel_fails 'the table lacks constant NESTED' Panel Panel 'enum { NESTED };'
panel_fails 'maint/commands/nested.h has something that is neither' \
    Panel Panel 'union Nested { int a; };'
panel_fails 'neither type, constant, record nor entry: struct Nested {' \
    Panel Panel 'struct Nested { int a; };'
panel_fails 'nor entry: Nested ... unsigned a : 1' \
    Panel Panel 'typedef struct Nested { unsigned a : 1; } Nested;'
panel_fails 'nor entry: Nested ... int a, b' \
    Panel Panel 'typedef struct Nested { int a, b; } Nested;'
panel_fails 'nor entry: #define NESTED(a) a' Panel Panel '#define NESTED(a) a'
panel_fails 'nor entry: #define MAINT_COMMAND(a, b, c)' Panel Panel '#define MAINT_COMMAND(a, b, c) a'
panel_fails 'nor entry: MAINT_COMMANDS(RD_WORD, maint_rd_word, Word)' \
    Panel Panel 'MAINT_COMMANDS(RD_WORD, maint_rd_word, Word)'
panel_fails 'nor entry: namespace maint' Panel Panel 'namespace maint { template <int k> struct Command; }'
panel_fails 'nor entry: typedef enum Nested' Panel Panel 'typedef enum Nested { NESTED } Nested;'

layout_fails 'Panel.low is not at 6' \
    $'low 4 2 uint16_t\nfield     Panel high 6' $'high 4 2 uint16_t\nfield     Panel low 6'
layout_fails 'Panel.high is not at 7' 'high 6' 'high 7'
layout_fails 'Panel.high is at 7, where 6 bytes stand before it' 'high 6' 'high 7'
layout_fails 'Panel has 16 bytes, its fields 12' 'Panel 12' 'Panel 16'
layout_fails 'Panel has not 16 bytes' 'Panel 12' 'Panel 16'
layout_fails 'Panel.group is no uint32_t' '8 4 Group' '8 4 uint32_t'
layout_fails 'the table lacks field Panel group' 'field     Panel group 8 4 Group' ''
layout_fails 'the table lacks constant SINK_LOG' 'constant  SINK_LOG -2' ''
layout_fails 'the table lacks type Sink' 'type      Sink int32_t' ''
layout_fails 'the table lacks record Group' 'record    Group 4' ''
layout_fails 'SINK_LOG is not 2' 'SINK_LOG -2' 'SINK_LOG 2'
layout_fails 'constant SINK_LOG stands twice' \
    'constant  SEQ_NONE 0xFFFFFFFF' 'constant  SINK_LOG -2'
layout_fails 'cannot be read: fields' 'field     Panel id' 'fields    Panel id'
panel_fails 'the headers do not compile' 'MAINT_API int32_t' 'MAINT_API int32'
layout_fails 'SEQ_NONE is not 4294967295,' '0xFFFFFFFF' '4294967295,'
echo '# nothing' >"$work/nothing.txt"
fails_with 'nothing in' check_record_layout.sh "$work/nothing.txt" "$(panel_with Panel Panel)"
fails_with 'no header in' check_record_layout.sh "$layout" "$work/bare"
typed='#define MAINT_API
#include "maint/typed_call.h"
MAINT_COMMAND(RD_WORD, maint_rd_word, uint16_t)
MAINT_COMMAND_ALONE(WR_WORD, maint_wr_word)'
passes check_record_layout.sh "$layout" "$(header typed "$panel" "$typed" && echo '#define MAINT_COMMAND(A, B, C)
#define MAINT_COMMAND_ALONE(A, B)' >"$work/typed/maint/typed_call.h")"
passes check_record_layout.sh "$layout" "$(header numbers "$panel" '#define MAINT_API' &&
    echo 'enum { RD_WORD = 0x0001 };' >"$work/numbers/maint/device_commands.h")"

# Names of commands
# tree: a small source folder where all is as it should be; prints its path.
tree()
{
    rm -rf "$work/tree"
    mkdir -p "$work/tree"/{include/maint/commands,device/commands,tests/device}
    cat >"$work/tree/include/maint/device_commands.h" <<'NUMBERS'
/* RD_ reports */
enum {
    /* Words: maint/commands/word.h */
    RD_WORD = 0x0001,
    WR_WORD = 0x0002,

    /* Fields of words: maint/commands/word_field.h */
    RD_WORD_FIELD = 0x010A
};
NUMBERS
    cat >"$work/tree/include/maint/commands/word.h" <<'WORDS'
/* RD_WORD (0x0001), WR_WORD (0x0002): as RD_WORD. */
typedef struct Word {
    uint16_t value; /* 0 */
} Word;
MAINT_COMMAND(RD_WORD, maint_rd_word, Word)
MAINT_COMMAND_IN(WR_WORD, maint_wr_word, Word)

/* Words of any kind */
WORDS
    cat >"$work/tree/include/maint/commands/word_field.h" <<'FIELDS'
/* RD_WORD_FIELD (0x010A) */
MAINT_COMMAND_ALONE(RD_WORD_FIELD, maint_rd_word_field)
FIELDS
    echo '#define MAINT_COMMAND(CODE, FUNCTION, RECORD)' >"$work/tree/include/maint/typed_call.h"
    echo '/* The entry */' >"$work/tree/include/maint/fpga.h"
    touch "$work/tree/device/commands"/{word.cpp,word_block.cpp,word_field_state.cpp,strange.h} \
        "$work/tree/tests/device"/{word_test.cpp,word_field_test.cpp,dispatcher_test.cpp}
    echo 'expect(RD_WORD); expect(WR_WORD);' >"$work/tree/tests/device/word_test.cpp"
    echo 'expect(RD_WORD_FIELD);' >"$work/tree/tests/device/word_field_fixture.h"
    printf '%s\n' "$work/tree"
}
passes check_command_names.sh "$(tree)"
# names_fail TEXT FILE SED: with the file edited so, the check says the text.
names_fail()
{
    tree >/dev/null
    sed -i.old "$3" "$work/tree/$2"
    cmp -s "$work/tree/$2" "$work/tree/$2.old" && finding "$3 changes nothing in $2"
    rm "$work/tree/$2.old"
    fails_with "$1" check_command_names.sh "$work/tree"
}
# files_fail TEXT COMMAND FILE...: the same after a command on files of the tree.
files_fail()
{
    tree >/dev/null
    (cd "$work/tree" && "${@:2}")
    fails_with "$1" check_command_names.sh "$work/tree"
}
names_fail 'RD_WORD is named in no test of word' tests/device/word_test.cpp 's/(RD_WORD)/(RD_WORD_FIELD)/'
names_fail 'RD_WORD_FIELD is named in no test of word_field' tests/device/word_field_fixture.h 's/RD_/WR_/'
commands=include/maint/commands
numbers=include/maint/device_commands.h
names_fail 'RD_WORD is described as "RD_WORD (0x0001)" nowhere' \
    $commands/word.h 's/RD_WORD (0x0001)/RD_WORD/'
names_fail 'RD_WORD is 0x0001, and word.h says 0x0003' $commands/word.h 's/0x0001/0x0003/'
names_fail 'RD_WORD_FIELD is 0x010A, and word_field.h says 0x010a' \
    $commands/word_field.h 's/0x010A/0x010a/'
names_fail 'RD_WORD_FIELD is 0x010A, and word_field.h says 0x10A' \
    $commands/word_field.h 's/0x010A/0x10A/'
names_fail 'RD_WORD is described 2 times' $commands/word.h 's/as RD_WORD/as RD_WORD (0x0001)/'
names_fail 'RD_WORD is described 2 times' $commands/word_field.h '1s,$, /* RD_WORD (0x0001) */,'
names_fail 'RD_WORD is described in word_field.h, and its group names word.h' \
    $commands/word_field.h '1s,$, /* RD_WORD (0x0001) */,'
names_fail 'word.h describes RD_BIT, which is no command' \
    $commands/word.h '1s,$, /* RD_BIT (0x0009) */,'
names_fail 'RD_WORD_FIELD is described as "RD_WORD_FIELD (0x010A)" nowhere' \
    $commands/word_field.h '1s/RD_/WR_/'
names_fail 'RD_WORD has no typed call' $commands/word.h '/^MAINT_COMMAND(/d'
names_fail 'RD_WORD_FIELD has no typed call' $commands/word_field.h '/^MAINT_COMMAND_ALONE/d'
names_fail 'WR_WORD has 2 typed calls' $commands/word.h 's/^MAINT_COMMAND_IN.*/&\n&/'
names_fail 'the typed call of WR_WORD is maint_write_word' $commands/word.h 's/maint_wr_/maint_write_/'
names_fail 'the typed call of RD_WORD is maint_wr_word' $commands/word.h 's/maint_rd_/maint_wr_/'
names_fail 'word.h has a typed call of RD_BIT, which is no command' \
    $commands/word.h '/any kind/s/$/\nMAINT_COMMAND(RD_BIT, maint_rd_bit, uint8_t)/'
names_fail 'RD_WORD_FIELD has a typed call in word.h, and its group names word_field.h' \
    $commands/word.h '/any kind/s/$/\nMAINT_COMMAND_ALONE(RD_WORD_FIELD, maint_rd_word_field)/'
names_fail 'RD_WORD has a typed call in fpga.h, and its group names word.h' \
    include/maint/fpga.h 's/$/\nMAINT_COMMAND(RD_WORD, maint_rd_word, Word)/'
names_fail 'WR_WORD has its typed call away from its description' \
    $commands/word.h '/^MAINT_COMMAND_IN/ { h; d; }; /any kind/G'
names_fail 'word.h: a typed call that cannot be read: MAINT_COMMAND(RD_WORD, maint_rd_word, struct Word)' \
    $commands/word.h 's/maint_rd_word, Word/maint_rd_word, struct Word/'
names_fail 'word.h: a typed call that cannot be read: MAINT_COMMAND_OUT(' \
    $commands/word.h 's/^MAINT_COMMAND(/MAINT_COMMAND_OUT(/'
names_fail 'word_field.h: a typed call that cannot be read: MAINT_COMMAND_ALONE(' \
    $commands/word_field.h 's/maint_rd_word_field/&, Word/'
names_fail 'WR_WORD is 0x0004, and word.h says 0x0002' $numbers 's/0x0002/0x0004/'
names_fail 'WR_WORD has the number of RD_WORD' $numbers 's/0x0002/0x0001/'
names_fail 'RD_WORD is described in word.h, and its group names word_field.h' \
    $numbers 's/word\.h/word_field.h/'
names_fail 'maint/commands/word.h belongs to no group' $numbers 's/word\.h/word_field.h/'
names_fail 'names maint/commands/words.h, which is not there' $numbers 's/word\.h/words.h/'
names_fail 'RD_WORD belongs to no group' $numbers '/word\.h/d'
names_fail 'cannot be read:     RD_WORD = 1,' $numbers 's/0x0001/1/'
names_fail 'cannot be read:     RW_WORD = 0x0002,' $numbers 's/WR_/RW_/'
names_fail 'no command in' $numbers '/[RW][DR]_WORD.* =/d'
files_fail 'word_field.h has no device/commands/word_field.cpp or' \
    rm device/commands/word_field_state.cpp
files_fail 'word.h has no device/commands/word.cpp or' \
    rm device/commands/word.cpp device/commands/word_block.cpp
files_fail 'word.h has no tests/device/word_test.cpp or' rm tests/device/word_test.cpp
files_fail 'word_field.h has no tests/device/word_field_test.cpp or' \
    rm tests/device/word_field_test.cpp
files_fail 'device/commands/words.cpp begins with the name of no header' \
    touch device/commands/words.cpp
files_fail 'device/commands/bit_word.cpp begins with the name of no header' \
    touch device/commands/bit_word.cpp

# Includes
# house: a small source folder where nothing includes what lies above it; prints its path.
house()
{
    rm -rf "$work/house"
    mkdir -p "$work/house"/{maintlog,tools/maintsim,device/{dispatch,commands,access},config,log,sim,tests} \
        "$work/house/include/maint/commands"
    cd "$work/house"
    for folder in maintlog tools tools/maintsim device/{dispatch,commands,access} config log sim; do
        printf '#include <string.h>\n#include "%s"\n' "$folder/own.h" "maint/api.h" >"$folder/own.cpp"
        echo '#include "maint/commands/word.h"' >"$folder/own.h"
    done
    echo '#include "records.h"' >tools/records.c
    printf '#include "%s"\n' sim/own.h tools/records.h >>tools/maintsim/own.cpp
    touch tools/records.h include/maint/api.h
    echo '#include "maint/api.h"' >include/maint/commands/word.h
    echo '#include "device/access/own.h"' >>device/commands/own.cpp
    echo '#include "device/commands/own.h"' >tests/free_test.cpp
    echo 'add_library(maint maintlog/own.cpp log/own.cpp)' >CMakeLists.txt
    cd - >/dev/null
    printf '%s\n' "$work/house"
}
passes check_includes.sh "$(house)"
# include_fails TEXT FILE LINE: with the line more in this file, the check says the text.
include_fails()
{
    house >/dev/null
    printf '%s\n' "$3" >>"$work/house/$2"
    fails_with "$1" check_includes.sh "$work/house"
}
include_fails 'device/access/own.cpp:5 includes device/commands/own.h, which lies above it' \
    device/access/own.cpp '#include "device/commands/own.h"'
include_fails 'device/commands/own.h:2 includes device/dispatch/own.h, which lies above it' \
    device/commands/own.h '#  include "device/dispatch/own.h"'
include_fails 'log/own.cpp:5 includes config/own.h, which lies above it' \
    log/own.cpp '#include "config/own.h"'
include_fails 'includes device/access/own.h, which lies above it' \
    config/own.cpp '#include "../device/access/own.h"'
include_fails 'includes tools/records.h, which lies above it' \
    device/dispatch/own.cpp '#include "tools/records.h"'
include_fails 'includes maintlog/own.h, which lies above it' \
    tools/records.c ' #include <maintlog/own.h>'
include_fails 'includes tools/maintsim/own.h, which lies above it' \
    tools/records.c '#include "tools/maintsim/own.h"'
include_fails 'includes tools/maintsim/own.h, beyond the public headers' \
    sim/own.cpp '#include "tools/maintsim/own.h"'
include_fails 'includes sim/own.h, which lies on no floor' tools/records.c '#include "sim/own.h"'
include_fails 'word.h:2 includes log/own.h, which lies above it' \
    include/maint/commands/word.h '#include "log/own.h"'
include_fails 'api.h:1 includes include/maint/commands/word.h, which lies above it' \
    include/maint/api.h '#include "maint/commands/word.h"'
include_fails 'includes log/own.h, beyond the public headers' sim/own.cpp '#include "log/own.h"'
include_fails 'includes sim/own.h, which lies on no floor' log/own.cpp '#include "sim/own.h"'
include_fails 'includes tests/free_test.cpp, which lies on no floor' \
    log/own.cpp '#include "tests/free_test.cpp"'
include_fails 'includes log/gone.h, which is nowhere' log/own.cpp '#include "log/gone.h"'
include_fails 'includes what cannot be read: #include HEADER' log/own.cpp '#include HEADER'
include_fails 'net/own.cpp lies on no floor' CMakeLists.txt 'add_library(net net/own.cpp)'
include_fails 'device/own.cpp lies on no floor' device/own.cpp ''
fails_with 'no source in' check_includes.sh "$work/bare"

# Opened devices
# device_is LINE...: a source with a procedure of these lines; prints the folder that it lies in.
device_is()
{
    mkdir -p "$work/opened/device/commands"
    { printf 'int32_t work()\n{\n'; printf '    %s\n' "$@"; printf '}\n'; } >"$work/opened/device/commands/own.cpp"
    printf '%s\n' "$work/opened"
}
opens='Fpga fpga = fpga_open(FpgaAccess::kRead);'
closes='return fpga_close(fpga);'
passes check_closing.sh "$(device_is "$opens" 'if (a) {' "    $closes" '}' "$closes")"
passes check_closing.sh "$(device_is "$opens" 'if (a) {' '    b = fpga_close(fpga);' '    return b;' '}' "$closes")"
fails_with 'own.cpp:4: a return before' check_closing.sh "$(device_is "$opens" 'return 0;')"
fails_with 'own.cpp:5: a return before' check_closing.sh "$(device_is "$opens" 'if (a) {' '    return 0;' '}' "$closes")"
fails_with 'own.cpp:7: a return before' \
    check_closing.sh "$(device_is "$opens" 'if (a) {' "    $closes" '}' 'return 0;')"
fails_with 'own.cpp:5: the device of line 3 is not closed' check_closing.sh "$(device_is "$opens" 'work(fpga);')"
fails_with 'own.cpp:4: opened while' check_closing.sh "$(device_is "$opens" "$opens" "$closes")"
fails_with 'own.cpp:4: a return before' \
    check_closing.sh "$(device_is 'Fpga fpga{fpga_open(FpgaAccess::kRead)};' 'return 0;')"
fails_with 'nothing in' check_closing.sh "$(device_is "$closes")"
fails_with 'no source in' check_closing.sh "$work/bare"

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
echo getpid >"$work/more.txt"
passes check_linked.sh "$pure" "$calls" "$work/libstranger.so" "$work/more.txt"
echo getppid >"$work/more.txt"
fails_with 'calls getpid, which neither pure_calls.txt nor calls.syms nor more.txt allows' \
    check_linked.sh "$pure" "$calls" "$work/libstranger.so" "$work/more.txt"

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
if [ -n "$build" ]; then
    "$CMAKE" --install "$build" --prefix "$work/prefix" >/dev/null
    fails_with 'the installed headers are not the public ones' \
        check_installation.sh "$build" "$include" "$here/consumer"
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
    if [ -e "$work/prefix/bin/maintsim" ]; then
        passes check_consumer_on_a_unit.sh "$work/prefix" "$here/consumer"
        fails_with 'says something else' check_consumer_on_a_unit.sh "$work/prefix" "$work/consumer"
        fails_with 'no bin/maintsim in' check_consumer_on_a_unit.sh "$(without maintsim)" "$here/consumer"
        fails_with 'libmaintsim_preload.so is missing' \
            check_consumer_on_a_unit.sh "$(without libmaintsim_preload.so)" "$here/consumer"
    fi
fi

    ;;
*) finding "no part $part" ;;
esac

printf '%d uses of the checks tried\n' "$count"
check_end
