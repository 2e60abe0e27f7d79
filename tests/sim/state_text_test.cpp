// A unit's state as text: what is printed, what is taken, what is refused.
#include "sim/state_text.h"

#include "board/share.h"
#include "sim/new_unit.h"
#include "sim/unit_state_fixture.h"

namespace
{

constexpr int64_t kNow = 1795300000123456789;

UnitState state_ofText(const std::string& text)
{
    UnitState state;
    size_t begin = 0;
    while (begin < text.size()) {
        const size_t end = text.find('\n', begin);
        std::string fault;
        EXPECT_TRUE(stateText_put(state, text.substr(begin, end - begin), kNow, fault)) << fault;
        begin = end + 1;
    }
    return state;
}

TEST(StateText, OfNothing)
{
    EXPECT_EQ(stateText_make(UnitState()), "device_info=0000000000000000\n"
                                           "own_address=00000000\n"
                                           "own_address_set=00000000000000000000000000000000\n"
                                           "register_high=0x0000\n"
                                           "fills_when_failing=0\n"
                                           "rtc.runs=0\n"
                                           "rtc.time=0,0,0,0,0,0,0,0,0\n"
                                           "rtc.since=0\n"
                                           "rtc.status=0x00000000\n"
                                           "rtc.answer=0\n"
                                           "rtc.overwrites=0\n"
                                           "clock.difference=0\n");
}

// One item of each kind, as it is printed.
constexpr const char* kItems[] = {
    "device_info=00010203a12000ff",
    "own_address=0101a8c0",
    "own_address_set=000102030405060708090a0b0c0d0e0f",
    "word.0x6B29=0x0005",
    "word.0x6B3B=0x8000000E",
    "register.0x0158=0x0020",
    "register.0x12345678=0xFFFF",
    "register_high=0xBEEF",
    "switch_port.4=0400010101000001",
    "address.30=0102a8c0",
    "address_set.2=000102030405060708090a0b0c0d0e0f",
    "id_entry.7=000102030405060708090a0b",
    "id_value.4294967295=0x000C",
    "unit_words.3.1=0x0150,0xFFFF",
    "address_pair.9=000102030405060708090a0b0c0d0e0f10111213",
    "address_table.9=000102030405060708090a0b0c0d0e0f1011121314151617",
    "port_entry.65535=0x1000",
    ("rule.1="
     "0000000000000000000000000000000000000000000000000000000000000000000000000000000000000000"
     "000000000000000000000000000000000000000000000000000000000000000000000099"),
    "indexed_word.5=0xDEADBEEF",
    "counter.3.32=17",
    "counter_alt.67.4294967295=4294967295",
    "written.0x6B69=0001020304050607",
    "answer.0x6B04=-1",
    "filled.0x6B02=256",
    "fills_when_failing=1",
    "fail.0x6B42=2,0,EBUSY",
    "fail.0x80247009=1,3,EIO",
    "rtc.runs=1",
    "rtc.time=2026-11-21T10:20:30",
    "rtc.since=-5",
    "rtc.status=0x00000007",
    "rtc.answer=-2147483648",
    "rtc.overwrites=1",
    "clock.difference=-9223372036854775808",
};

TEST(StateText, HasEachItemAsItIsPut)
{
    UnitState state;
    std::string fault;
    for (const char* item : kItems) {
        EXPECT_TRUE(stateText_put(state, item, kNow, fault)) << fault;
    }
    const std::string text = "\n" + stateText_make(state);
    for (const char* item : kItems) {
        EXPECT_NE(text.find("\n" + std::string(item) + "\n"), std::string::npos) << item;
    }
    EXPECT_EQ(static_cast<size_t>(std::count(text.begin(), text.end(), '\n')),
              std::size(kItems) + 1);
    EXPECT_EQ(state.fpga.words[0x6B3B], 0x8000000EU);
    EXPECT_EQ(state.fpga.counters_alt.begin()->first, std::pair(67U, 4294967295U));
    EXPECT_EQ(state.fpga.rules[1].back(), '\x99');
    EXPECT_EQ(state.rtc.time, (RtcTime{30, 20, 10, 21, 10, 126, 6, 324, 0}));
    EXPECT_EQ(state.failures[0x6B42], (RequestFailure{2, 0, EBUSY}));
}

TEST(StateText, OfAPhyGoesByItsPort)
{
    static constexpr uint16_t kAddresses[] = {9, 1, 2, 3, 4, 5, 8};
    for (size_t port = 0; port < std::size(kAddresses); ++port) {
        UnitState state;
        std::string fault;
        const std::string item = "phy." + std::to_string(port) + ".31=0x782D";
        ASSERT_TRUE(stateText_put(state, item, kNow, fault)) << fault;
        EXPECT_EQ(state.fpga.phys.size(), 1U);
        EXPECT_EQ(state.fpga.phys[kAddresses[port]][31], 0x782D);
        EXPECT_NE(stateText_make(state).find(item + "\n"), std::string::npos);
    }
    UnitState state;
    std::string fault;
    EXPECT_TRUE(stateText_put(state, "phy_address.6.0=1", kNow, fault)) << fault;
    EXPECT_EQ(state.fpga.phys[6][0], 1);
    EXPECT_NE(stateText_make(state).find("phy_address.6.0=0x0001\n"), std::string::npos);
}

TEST(StateText, GivesTheSameStateAgain)
{
    for (uint32_t number = 0; number < 300; ++number) {
        SCOPED_TRACE(number);
        const UnitState state = state_draw(number);
        const std::string text = stateText_make(state);
        const UnitState again = state_ofText(text);
        expect_same(state, again);
        ASSERT_EQ(text, stateText_make(again));
        ASSERT_FALSE(HasFailure());
    }
}

TEST(StateText, GivesTheSameStateAgainAfterAnyRequests)
{
    for (uint32_t number = 0; number < 20; ++number) {
        SCOPED_TRACE(number);
        UnitState state;
        RequestDraw draw(number);
        for (int i = 0; i < 1000; ++i) {
            DrawnRequest drawn = draw.request();
            if (const RequestForm* form = requestForm_find(drawn.number)) {
                unitState_serveFpga(state, *form, drawn.record.data(), drawn.value, kNow);
            }
        }
        const std::string text = stateText_make(state);
        const UnitState again = state_ofText(text);
        expect_same(state, again);
        ASSERT_EQ(text, stateText_make(again));
        ASSERT_FALSE(HasFailure());
    }
}

TEST(StateText, NeedsNoQuotesInAShell)
{
    for (uint32_t number = 0; number < 50; ++number) {
        const std::string text = stateText_make(state_draw(number));
        EXPECT_EQ(text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                         "0123456789_.,=:-\n"),
                  std::string::npos);
    }
}

// What is refused, and what is said.
constexpr struct {
    const char* item;
    const char* fault;
} kRefused[] = {
    {"", ": not of the form ITEM=VALUE"},
    {"=", "=: not of the form ITEM=VALUE"},
    {"=5", "=5: not of the form ITEM=VALUE"},
    {"register.0x0158", "register.0x0158: not of the form ITEM=VALUE"},
    {"registers.0x0158=1", "registers.0x0158=1: no such item"},
    {"register=1", "register=1: number 1 behind register: a number is missing"},
    {"register.=1", "register.=1: number 1 behind register: a number is missing"},
    {"register.x=1", "register.x=1: number 1 behind register: not a number: x"},
    {"register.0x=1", "register.0x=1: number 1 behind register: not a number: 0x"},
    {"register.1.2=1", "register.1.2=1: too many numbers behind register"},
    {"register.1.=1", "register.1.=1: too many numbers behind register"},
    {"register.0x100000000=1",
     "register.0x100000000=1: number 1 behind register: above 0xFFFFFFFF"},
    {"register.0x0158=", "register.0x0158=: a number is missing"},
    {"register.0x0158=70000", "register.0x0158=70000: above 65535"},
    {"register.0x0158=0x10000", "register.0x0158=0x10000: above 0xFFFF"},
    {"register.0x0158=-1", "register.0x0158=-1: not a number: -1"},
    {"register.0x0158=1 ", "register.0x0158=1 : not a number: 1 "},
    {"register.0x0158=99999999999999999999999999",
     "register.0x0158=99999999999999999999999999: above 65535"},
    {"register_high=0x10000", "register_high=0x10000: above 0xFFFF"},
    {"word.0x6B00=1", "word.0x6B00=1: no such word"},
    {"word.0x6C00=1", "word.0x6C00=1: no such word"},
    {"word.0x6B29=0x10000", "word.0x6B29=0x10000: above 0xFFFF"},
    {"word.0x6B3B=0x100000000", "word.0x6B3B=0x100000000: above 0xFFFFFFFF"},
    {"phy.7.0=1", "phy.7.0=1: number 1 behind phy: above 6"},
    {"phy.0.32=1", "phy.0.32=1: number 2 behind phy: above 31"},
    {"phy.0=1", "phy.0=1: number 2 behind phy: a number is missing"},
    {"phy_address.65536.0=1", "phy_address.65536.0=1: number 1 behind phy_address: above 65535"},
    {"switch_port.256=0000000000000000",
     "switch_port.256=0000000000000000: number 1 behind switch_port: above 255"},
    {"switch_port.1=00", "switch_port.1=00: not 8 bytes in hex, two digits each"},
    {"switch_port.1=000000000000000g", "switch_port.1=000000000000000g: not hex digits alone"},
    {"own_address=010203040", "own_address=010203040: not 4 bytes in hex, two digits each"},
    {"unit_words.1.0=1", "unit_words.1.0=1: not two numbers with a comma between"},
    {"unit_words.1.0=1,", "unit_words.1.0=1,: a number is missing"},
    {"unit_words.1.0=1,2,3", "unit_words.1.0=1,2,3: not two numbers with a comma between"},
    {"unit_words.1.65536=1,2", "unit_words.1.65536=1,2: number 2 behind unit_words: above 65535"},
    {"port_entry.65536=1", "port_entry.65536=1: number 1 behind port_entry: above 65535"},
    {"counter.1.2=4294967296", "counter.1.2=4294967296: above 4294967295"},
    {"written.0x6B42=0000000000000000",
     "written.0x6B42=0000000000000000: no request that writes a record"},
    {"written.0x6B69=00", "written.0x6B69=00: not 8 bytes in hex, two digits each"},
    {"answer.0x6B00=1", "answer.0x6B00=1: no such request"},
    {"answer.0x80247009=1", "answer.0x80247009=1: no such request"},
    {"answer.0x6B04=2147483648", "answer.0x6B04=2147483648: above 2147483647"},
    {"answer.0x6B04=-2147483649", "answer.0x6B04=-2147483649: below -2147483648"},
    {"answer.0x6B04=-", "answer.0x6B04=-: a number is missing"},
    {"filled.0x6B42=1", "filled.0x6B42=1: no request that reads a word or a bitmap"},
    {"filled.0x6B02=257", "filled.0x6B02=257: above 256"},
    {"fills_when_failing=2", "fills_when_failing=2: neither 0 nor 1"},
    {"fail.0x6B00=1,1,EIO", "fail.0x6B00=1,1,EIO: no such request"},
    {"fail.0x6B42=1", "fail.0x6B42=1: neither 0 nor NTH,COUNT,ERROR"},
    {"fail.0x6B42=0,1,EIO", "fail.0x6B42=0,1,EIO: the first that fails is 1 or above"},
    {"fail.0x6B42=1,1,EFOO", "fail.0x6B42=1,1,EFOO: no such error: EFOO"},
    {"fail.0x6B42=1,1,", "fail.0x6B42=1,1,: no such error: "},
    {"rtc.runs=yes", "rtc.runs=yes: neither 0 nor 1"},
    {"rtc.time=now", "rtc.time=now: not a time like 2026-11-21T10:20:30"},
    {"rtc.time=2026-02-29T00:00:00", "rtc.time=2026-02-29T00:00:00: not a time like "
                                     "2026-11-21T10:20:30"},
    {"rtc.time=2026-11-21T24:00:00", "rtc.time=2026-11-21T24:00:00: not a time like "
                                     "2026-11-21T10:20:30"},
    {"rtc.time=2026-11-21 10:20:30", "rtc.time=2026-11-21 10:20:30: not a time like "
                                     "2026-11-21T10:20:30"},
    {"rtc.time=1,2,3,4,5,6,7,8,x", "rtc.time=1,2,3,4,5,6,7,8,x: not a number: x"},
    {"rtc.status=4294967296", "rtc.status=4294967296: above 4294967295"},
    {"rtc.color=1", "rtc.color=1: no such item"},
    {"clock.difference=9223372036854775808",
     "clock.difference=9223372036854775808: above 9223372036854775807"},
    {"a\nb\x7F\xFF=1", "a?b?\?=1: no such item"},
};

TEST(StateText, IsRefusedWithOneLine)
{
    for (const auto& [item, expected] : kRefused) {
        UnitState state = state_draw(1);
        const std::string before = stateText_make(state);
        std::string fault;
        EXPECT_FALSE(stateText_put(state, item, kNow, fault)) << item;
        EXPECT_EQ(fault, expected);
        EXPECT_EQ(stateText_make(state), before) << item;
    }
}

TEST(StateText, OfAnyBytesIsTakenOrRefused)
{
    RequestDraw draw(1);
    std::vector<std::string> items;
    for (const char* item : kItems) {
        items.emplace_back(item);
    }
    size_t taken = 0;
    for (uint32_t i = 0; i < share_of(200000); ++i) {
        std::string item = items[draw.below(static_cast<uint32_t>(items.size()))];
        for (uint32_t change = 0; change <= draw.below(3); ++change) {
            const size_t at = draw.below(static_cast<uint32_t>(item.size()));
            switch (draw.below(3)) {
            case 0:
                item[at] = static_cast<char>(draw.number());
                break;
            case 1:
                item.insert(at, 1, static_cast<char>(draw.number()));
                break;
            default:
                item.erase(at, 1);
            }
        }
        UnitState state;
        std::string fault;
        if (stateText_put(state, item, kNow, fault)) {
            ++taken;
            ASSERT_EQ(stateText_make(state_ofText(stateText_make(state))), stateText_make(state));
        } else {
            ASSERT_EQ(stateText_make(state), stateText_make(UnitState()));
            ASSERT_EQ(fault.find_first_of("\n\r\t\x1B"), std::string::npos) << fault;
            ASSERT_GT(fault.size(), 10U);
            ASSERT_LT(fault.size(), 200U);
        }
    }
    EXPECT_GT(taken, share_of(1000));
    EXPECT_LT(taken, share_of(199000));
}

TEST(StateText, ShowsTheTimeThatItIs)
{
    UnitState state;
    std::string fault;
    ASSERT_TRUE(stateText_put(state, "rtc.time=2026-12-31T23:59:58", kNow, fault));
    ASSERT_TRUE(stateText_put(state, "rtc.runs=1", kNow, fault));
    const std::string shown = stateText_make(state, kNow + 2000000000);
    EXPECT_NE(shown.find("rtc.time=2027-01-01T00:00:00\n"), std::string::npos) << shown;
    EXPECT_EQ(shown.find("rtc.since"), std::string::npos);
    // The one that is kept says when it was set.
    EXPECT_NE(stateText_make(state).find("rtc.time=2026-12-31T23:59:58\n"
                                         "rtc.since=1795300000123456789\n"),
              std::string::npos);
}

TEST(StateText, LetsAClockRunAndStandFromTheTimeThatItShows)
{
    UnitState state;
    std::string fault;
    ASSERT_TRUE(stateText_put(state, "rtc.time=2026-01-01T00:00:00", kNow, fault));
    ASSERT_TRUE(stateText_put(state, "rtc.runs=1", kNow + 50000000000, fault));
    EXPECT_EQ(unitState_rtcTime(state, kNow + 60000000000)[0], 10);
    ASSERT_TRUE(stateText_put(state, "rtc.time=2026-01-01T00:00:10", kNow + 60000000000, fault));
    EXPECT_EQ(unitState_rtcTime(state, kNow + 61000000000)[0], 11); // while it runs
    ASSERT_TRUE(stateText_put(state, "rtc.runs=0", kNow + 60000000000, fault));
    EXPECT_EQ(unitState_rtcTime(state, kNow + 90000000000)[0], 10);
    // One that runs and is told to run, or stands and is told to stand, goes on as it did.
    ASSERT_TRUE(stateText_put(state, "rtc.runs=0", kNow + 90000000000, fault));
    ASSERT_TRUE(stateText_put(state, "rtc.runs=1", kNow + 90000000000, fault));
    ASSERT_TRUE(stateText_put(state, "rtc.runs=1", kNow + 90600000000, fault));
    EXPECT_EQ(unitState_rtcTime(state, kNow + 91000000000)[0], 11);
}

TEST(StateText, HasTheWholeCalendar)
{
    UnitState state;
    std::string fault;
    for (const char* item : {"rtc.time=0000-01-01T00:00:00", "rtc.time=9999-12-31T23:59:59"}) {
        ASSERT_TRUE(stateText_put(state, item, kNow, fault)) << fault;
        EXPECT_NE(stateText_make(state, kNow).find(std::string(item) + "\n"), std::string::npos)
            << stateText_make(state, kNow);
    }
}

TEST(StateText, OfANumber)
{
    uint64_t number = 0;
    std::string fault;
    EXPECT_TRUE(number_parse("0", 0, number, fault));
    EXPECT_EQ(number, 0U);
    EXPECT_TRUE(number_parse("18446744073709551615", UINT64_MAX, number, fault));
    EXPECT_EQ(number, UINT64_MAX);
    EXPECT_FALSE(number_parse("18446744073709551616", UINT64_MAX, number, fault));
    EXPECT_TRUE(number_parse("0xfFfFfFfFfFfFfFfF", UINT64_MAX, number, fault));
    EXPECT_EQ(number, UINT64_MAX);
    EXPECT_TRUE(number_parse("0009", 9, number, fault));
    EXPECT_EQ(number, 9U);
    EXPECT_FALSE(number_parse("10", 9, number, fault));
    EXPECT_FALSE(number_parse("5", 4, number, fault));
    EXPECT_TRUE(number_parse("4", 4, number, fault));
    EXPECT_FALSE(number_parse("1a", 99, number, fault));
    EXPECT_FALSE(number_parse("+1", 99, number, fault));
}

} // namespace
