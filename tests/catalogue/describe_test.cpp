// Descriptions that do not agree with a public header, or with themselves, do not compile. Whoever
// compiles this file has made the test.
#include <array>

#include "catalogue/describe.h"
#include "maint/commands/channel_word.h"
#include "maint/commands/driver.h"
#include "maint/commands/switch_tables.h"

namespace
{

constexpr char k60[] = "012345678901234567890123456789012345678901234567890123456789";
constexpr char k61[] = "0123456789012345678901234567890123456789012345678901234567890";

constexpr Field kFields[] = {number(FIELD(ChannelWord, id)), hex(FIELD(ChannelWord, value))};
constexpr Field kOverlap[] = {kFields[0], hex(field_of<uint16_t>("value", 1))};
constexpr Field kOverlapBefore[] = {hex(field_of<uint16_t>("value", 1)), kFields[0]};
constexpr Field kTwice[] = {kFields[0], hex(field_of<uint16_t>("id", 2))};
constexpr Field kBeyond[] = {kFields[0], hex(field_of<uint16_t>("value", 3))};
constexpr Field kArrayBeyond[] = {bytes(field_of<uint8_t[5]>("bytes", 0))};

constexpr ResultMeaning kNoZero[] = {{-1, "no device"}};
constexpr ResultMeaning kUnsorted[] = {{0, "done"}, {-2, "not read"}, {-1, "no device"}};
constexpr ResultMeaning kTwoAlike[] = {{0, "done"}, {-1, "no device"}, {-1, "no clock"}};
constexpr ResultMeaning kLateOne[] = {{0, "done"}, {-1, "no device"}, {1, "kept"}};
constexpr ResultMeaning kWithOne[] = {{0, "done"}, {1, "kept"}, {-1, "no device"}, {-5, "range"}};

constexpr Said kReport = {.summary = k60,
                          .fields = kFields,
                          .in = only(kFields, "id"),
                          .out = only(kFields, "value"),
                          .results = kWithOne,
                          .reads = kFpga};

// Whether the report above is a description of the command, once it is changed so.
template <DeviceCommandCode kCode, class Change> constexpr bool kDescribed = requires
{
    typename std::bool_constant<(described<kCode>("", Change::made()), true)>;
};

#define CHANGE(NAME, ...)                                                                          \
    struct NAME {                                                                                  \
        static consteval Said made()                                                               \
        {                                                                                          \
            Said said = kReport;                                                                   \
            __VA_ARGS__;                                                                           \
            return said;                                                                           \
        }                                                                                          \
    }

CHANGE(AsItIs, (void)0);
CHANGE(OnlyIn, said.in = 3, said.out = 0);
CHANGE(BothWays, said.in = 3, said.out = 3);
CHANGE(Changes, said.reads = 0, said.changes = kFpga);
static_assert(kDescribed<RD_CHANNEL_WORD, AsItIs>);
static_assert(kDescribed<WR_CHANNEL_WORD, OnlyIn>);
static_assert(kDescribed<RD_CHANNEL_WORD, BothWays>);
static_assert(kDescribed<RD_CHANNEL_WORD, Changes>);

// What the typed call takes
static_assert(!kDescribed<RD_CHANNEL_WORD, OnlyIn>); // and may change
static_assert(!kDescribed<WR_CHANNEL_WORD, AsItIs>); // and only reads
static_assert(!kDescribed<RD_CONTROL_WORD, AsItIs>); // shorter
static_assert(!kDescribed<WR_SWITCH_TABLES_1, AsItIs>);

// Fields
CHANGE(NoFields, said.fields = {}, said.in = 0, said.out = 0);
CHANGE(Overlap, said.fields = kOverlap);
CHANGE(OverlapBefore, said.fields = kOverlapBefore);
CHANGE(Twice, said.fields = kTwice);
CHANGE(Beyond, said.fields = kBeyond);
CHANGE(ArrayBeyond, said.fields = kArrayBeyond, said.in = 0, said.out = 1);
CHANGE(NoSuchIn, said.in = 4);
CHANGE(NoSuchOut, said.out = 4);
CHANGE(Unused, said.in = 0, said.out = 0);
static_assert(kDescribed<WR_SWITCH_TABLES_1, NoFields>);
static_assert(!kDescribed<RD_CHANNEL_WORD, NoFields>);
static_assert(!kDescribed<RD_CHANNEL_WORD, Overlap>);
static_assert(!kDescribed<RD_CHANNEL_WORD, OverlapBefore>);
static_assert(!kDescribed<RD_CHANNEL_WORD, Twice>);
static_assert(!kDescribed<RD_CHANNEL_WORD, Beyond>);
static_assert(!kDescribed<RD_CHANNEL_WORD, ArrayBeyond>);
static_assert(!kDescribed<RD_CHANNEL_WORD, NoSuchIn>);
static_assert(!kDescribed<RD_CHANNEL_WORD, NoSuchOut>);
static_assert(!kDescribed<WR_CHANNEL_WORD, Unused>);

// What clears, changes more than a log
CHANGE(ClearsNothing, said.clears = true);
CHANGE(ClearsALog, said.clears = true, said.changes = place_bit(Place::kSystemLog));
CHANGE(Clears, said.clears = true, said.changes = kFpga);
static_assert(kDescribed<RD_CHANNEL_WORD, Clears>);
static_assert(!kDescribed<RD_CHANNEL_WORD, ClearsNothing>);
static_assert(!kDescribed<RD_CHANNEL_WORD, ClearsALog>);

// Results, places, the summary
CHANGE(NoResults, said.results = {});
CHANGE(NoZero, said.results = kNoZero);
CHANGE(Unsorted, said.results = kUnsorted);
CHANGE(TwoAlike, said.results = kTwoAlike);
CHANGE(LateOne, said.results = kLateOne);
CHANGE(NoPlace, said.reads = 0);
CHANGE(LongSummary, said.summary = k61);
static_assert(!kDescribed<RD_CHANNEL_WORD, NoResults>);
static_assert(!kDescribed<RD_CHANNEL_WORD, NoZero>);
static_assert(!kDescribed<RD_CHANNEL_WORD, Unsorted>);
static_assert(!kDescribed<RD_CHANNEL_WORD, TwoAlike>);
static_assert(!kDescribed<RD_CHANNEL_WORD, LateOne>);
static_assert(!kDescribed<RD_CHANNEL_WORD, NoPlace>);
static_assert(!kDescribed<RD_CHANNEL_WORD, LongSummary>);

// Ranges within the width, the lower end first
constexpr Field kByte = field_of<uint8_t>("byte", 0);

template <uint32_t kLeast, uint32_t kMost> constexpr bool kRanged = requires
{
    typename std::bool_constant<(field_ranged(kByte, {kLeast, kMost}), true)>;
};
static_assert(kRanged<0, 255> && kRanged<7, 7>);
static_assert(!kRanged<0, 256> && !kRanged<8, 7>);

// Whole elements of single bytes
template <class Member, unsigned kWidth> constexpr bool kJoined = requires
{
    typename std::bool_constant<(field_joined(field_of<Member>("", 0), Kind::kIpv4, kWidth, ""),
                                 true)>;
};
static_assert(kJoined<uint8_t[8], 4> && kJoined<uint8_t[4][4], 4>);
static_assert(!kJoined<uint8_t[6], 4> && !kJoined<uint32_t, 4> && !kJoined<uint8_t[4], 0>);

// Sweeps of one number, within its range, that end
template <class Member, uint16_t kFirst, uint16_t kLast, uint16_t kStep>
constexpr bool kSwept = requires
{
    typename std::bool_constant<(
        index(number(field_of<Member>("", 0), {1, 30}), {kFirst, kLast, kStep}), true)>;
};
static_assert(kSwept<uint8_t, 1, 30, 1> && kSwept<uint32_t, 2, 2, 2>);
static_assert(!kSwept<uint8_t, 0, 30, 1> && !kSwept<uint8_t, 1, 31, 1>);
static_assert(!kSwept<uint8_t, 3, 2, 1> && !kSwept<uint8_t, 1, 30, 0>);
static_assert(!kSwept<uint8_t[2], 1, 30, 1>);

template <class Member> constexpr bool kSweptWhole = requires
{
    typename std::bool_constant<(index(field_of<Member>("", 0)), true)>;
};
static_assert(kSweptWhole<uint16_t> && !kSweptWhole<uint32_t>);

// Names of fields that there are
template <unsigned kCase> constexpr bool kNamed = requires
{
    typename std::bool_constant<(
        only(kFields, std::array{"id value", "value", "vale", "id  value", "ID"}[kCase]) != 0)>;
};
static_assert(kNamed<0> && kNamed<1>);
static_assert(!kNamed<2> && !kNamed<3> && !kNamed<4>);
static_assert(only(kFields, "value") == 2 && but(kFields, "value") == 1 && all(kFields) == 3);

} // namespace
