// One process and one unit: what is served, kept and told.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include "sim/unit_fixture.h"

namespace
{

TEST_F(UnitTest, ServesAsTheModelsDo)
{
    UnitState expected = state_draw(7);
    expected.rtc_runs = false;
    expected.failures[0x6B42] = {40, 3, EBUSY};
    Unit* unit = open(make("other", expected));
    RequestDraw draw(1);
    static constexpr uint32_t kClock[] = {kRtcTimeRead, kRtcTimeWrite, kRtcStatusRead,
                                          kRtcStatusWrite, 0x1234};
    int known = 0;
    for (int i = 0; i < 100000; ++i) {
        DrawnRequest drawn = draw.request();
        const bool clock = i % 16 == 0;
        const uint32_t number = clock ? kClock[draw.below(5)] : drawn.number;
        const RequestForm* form = clock ? rtcRequestForm_find(number) : requestForm_find(number);
        std::string record = drawn.record;
        UnitAnswer answer{-1, ENOTTY};
        if (form != nullptr) {
            ++known;
            answer =
                clock ? unitState_serveRtc(expected, *form, drawn.record.data(), 0)
                      : unitState_serveFpga(expected, *form, drawn.record.data(), drawn.value, 0);
        }
        const bool by_value = form != nullptr && form->argument == Argument::kValue;
        errno = 0;
        const int result =
            unit_request(unit, clock ? UnitDevice::kRtc : UnitDevice::kFpga, number,
                         by_value ? drawn.value : reinterpret_cast<unsigned long>(record.data()));
        ASSERT_EQ(result, answer.result) << std::hex << number;
        ASSERT_EQ(errno, answer.error) << std::hex << number;
        ASSERT_EQ(record, drawn.record) << std::hex << number;
    }
    EXPECT_GT(known, 50000);
    std::vector<std::string> items;
    // The state is the same one, and so it is for the next one who opens the unit.
    Unit* again = open(top + "/other");
    EXPECT_EQ(text(unit), text(again));
    expected.rtc_since = 0;
    std::string here = text(again);
    std::string there = text(open(make("expected", expected)));
    EXPECT_EQ(here, there);
    unit_close(unit);
    unit_close(again);
}

TEST_F(UnitTest, KeepsWhatWasAnswered)
{
    for (uint32_t run = 0; run < 50; ++run) {
        Unit* unit = open(folder);
        EXPECT_EQ(number_read(unit, 3), run);
        EXPECT_EQ(number_write(unit, 3, run + 1), 0);
        unit_close(unit);
    }
    EXPECT_EQ(content(folder + "/state").substr(0, 46),
              "maintsim state 1 generation 1 sequence 1 items");
}

// A journal without its room would end a program, on a disk that is full, by a signal.
TEST_F(UnitTest, HasItsRoomFromTheFirst)
{
    struct stat status {
    };
    ASSERT_EQ(stat((folder + "/journal").c_str(), &status), 0);
    EXPECT_GE(status.st_blocks * 512, status.st_size);
    EXPECT_GT(status.st_size, 4 << 20);
}

TEST_F(UnitTest, TellsOthersAtOnce)
{
    Unit* one = open(folder);
    Unit* other = open(folder);
    for (uint32_t i = 0; i < 40000; ++i) { // more than a journal holds
        ASSERT_EQ(number_write(i % 2 == 0 ? one : other, 1, i), 0);
        ASSERT_EQ(number_read(i % 2 == 0 ? other : one, 1), i);
    }
    EXPECT_NE(content(folder + "/state").find("generation 5 "), std::string::npos)
        << content(folder + "/state").substr(0, 60);
    unit_close(one);
    unit_close(other);
}

TEST_F(UnitTest, RefusesARequestThatTheDriverDoesNotKnow)
{
    Unit* unit = open(folder);
    errno = 0;
    EXPECT_EQ(unit_request(unit, UnitDevice::kFpga, 0x1234, 5), -1);
    EXPECT_EQ(errno, ENOTTY);
    errno = 0;
    EXPECT_EQ(unit_request(unit, UnitDevice::kRtc, 0x6B42, 5), -1); // the other one's
    EXPECT_EQ(errno, ENOTTY);
    const std::vector<UnitCall> seen = calls(unit);
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[0].head.request, 0x1234U);
    EXPECT_EQ(seen[0].head.result, -1);
    EXPECT_EQ(seen[0].head.error, ENOTTY);
    unit_close(unit);
}

TEST_F(UnitTest, RefusesARecordThatIsNowhere)
{
    Unit* unit = open(folder);
    for (const unsigned long address : {0UL, 1UL, 4095UL}) {
        errno = 0;
        EXPECT_EQ(unit_request(unit, UnitDevice::kFpga, 0x6B42, address), -1);
        EXPECT_EQ(errno, EFAULT);
    }
    EXPECT_EQ(unit_request(unit, UnitDevice::kFpga, 0x6BA2, 0), 0); // takes none
    EXPECT_EQ(calls(unit).size(), 1U);
    unit_close(unit);
}

// A write request's record may lie in memory that cannot be written, and at a page's very end.
TEST_F(UnitTest, OnlyReadsWhatItWrites)
{
    Unit* unit = open(folder);
    auto* pages = static_cast<char*>(
        mmap(nullptr, 8192, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    char* record = pages + 4096 - 8;
    const uint32_t words[2] = {0x158, 0x1234};
    memcpy(record, words, sizeof words);
    ASSERT_EQ(mprotect(pages, 4096, PROT_READ), 0);
    ASSERT_EQ(mprotect(pages + 4096, 4096, PROT_NONE), 0);
    EXPECT_EQ(request(unit, 0x6B43, record), 0);
    uint32_t back[2] = {0x158, 0};
    EXPECT_EQ(request(unit, 0x6B42, back), 0);
    EXPECT_EQ(back[1], 0x1234U);
    munmap(pages, 8192);
    unit_close(unit);
}

TEST_F(UnitTest, TellsItsCalls)
{
    Unit* unit = open(folder);
    EXPECT_EQ(unit_opened(unit, UnitDevice::kFpga, O_RDWR | O_NONBLOCK), 0);
    uint32_t record[2] = {0x158, 0x20};
    EXPECT_EQ(request(unit, 0x6B43, record), 0);
    record[1] = 0;
    EXPECT_EQ(request(unit, 0x6B42, record), 0);
    EXPECT_EQ(unit_request(unit, UnitDevice::kFpga, 0x6B04, 0x12345678), 0);
    unit_closed(unit, UnitDevice::kFpga);
    std::string error;
    EXPECT_TRUE(unit_put(unit, {"answer.0x6B42=-2", "word.0x6B29=1"}, error)) << error;
    EXPECT_EQ(request(unit, 0x6B42, record), -2);
    const std::vector<UnitCall> seen = calls(unit);
    ASSERT_EQ(seen.size(), 7U);
    for (size_t i = 0; i < seen.size(); ++i) {
        EXPECT_EQ(seen[i].head.sequence, i + 1);
        EXPECT_EQ(seen[i].head.process, getpid());
        EXPECT_STREQ(seen[i].head.program, "simulated_unit_");
        EXPECT_GE(seen[i].head.time, seen[0].head.time);
    }
    EXPECT_EQ(seen[0].head.kind, EntryKind::kOpen);
    EXPECT_EQ(seen[0].head.argument, static_cast<uint64_t>(O_RDWR | O_NONBLOCK));
    EXPECT_EQ(seen[1].head.kind, EntryKind::kRequest);
    EXPECT_EQ(seen[1].head.request, 0x6B43U);
    EXPECT_EQ(seen[1].before, std::string("\x58\x01\0\0\x20\0\0\0", 8));
    EXPECT_EQ(seen[1].after, "");
    EXPECT_EQ(seen[2].before, std::string("\x58\x01\0\0\0\0\0\0", 8));
    EXPECT_EQ(seen[2].after, std::string("\x58\x01\0\0\x20\0\0\0", 8));
    EXPECT_EQ(seen[2].head.result, 0);
    EXPECT_EQ(seen[3].head.argument, 0x12345678U);
    EXPECT_EQ(seen[3].before, "");
    EXPECT_EQ(seen[4].head.kind, EntryKind::kClose);
    EXPECT_EQ(seen[5].head.kind, EntryKind::kSet);
    EXPECT_EQ(seen[5].before, "answer.0x6B42=-2\nword.0x6B29=1\n");
    EXPECT_EQ(seen[6].head.result, -2);
    EXPECT_EQ(seen[6].head.error, EIO);
    EXPECT_EQ(calls(unit, 7).size(), 1U);
    EXPECT_EQ(calls(unit, 8).size(), 0U);
    unit_close(unit);
}

TEST_F(UnitTest, TellsTheLastCallsAtLeast)
{
    constexpr uint32_t kKept = 16384;
    Unit* unit = open(folder);
    for (uint32_t i = 1; i <= 100000; ++i) {
        number_write(unit, 1, i);
        if (i % 9973 != 0) {
            continue;
        }
        const std::vector<UnitCall> seen = calls(unit);
        ASSERT_GE(seen.size(), std::min(i, kKept));
        for (size_t n = 0; n < seen.size(); ++n) {
            ASSERT_EQ(seen[n].head.sequence, i - seen.size() + 1 + n);
        }
    }
    unit_close(unit);
}

// Each restart starts the journal anew, and long records fill it before it has so many entries.
TEST_F(UnitTest, TellsTheLastCallsAfterRestartsAndLongRecordsToo)
{
    constexpr uint32_t kKept = 16384;
    Unit* unit = open(folder);
    const std::vector<std::string> rule = {"rule.1=" + std::string(160, 'a'),
                                           "rule.2=" + std::string(160, 'b')};
    std::string error;
    for (uint32_t i = 1; i <= 50000; ++i) {
        ASSERT_TRUE(
            i % 7777 == 0
                ? unit_change(
                      unit, "x", [](UnitState&, int64_t, std::string&) { return true; }, error)
                : unit_put(unit, rule, error))
            << error;
        if (i % 7777 > 2 && i % 4999 != 0) {
            continue;
        }
        const std::vector<UnitCall> seen = calls(unit);
        ASSERT_GE(seen.size(), std::min(i, kKept)) << i;
        for (size_t n = 0; n < seen.size(); ++n) {
            ASSERT_EQ(seen[n].head.sequence, i - seen.size() + 1 + n);
        }
    }
    EXPECT_LT(std::filesystem::file_size(folder + "/calls"), size_t{15} << 20);
    unit_close(unit);
}

// A few calls that are very long are not all kept.
TEST_F(UnitTest, KeepsItsCallsShort)
{
    Unit* unit = open(folder);
    const std::vector<std::string> items(20000, "rule.1=" + std::string(160, 'a'));
    std::string error;
    for (int i = 0; i < 12; ++i) {
        ASSERT_TRUE(unit_put(unit, items, error)) << error;
    }
    EXPECT_LT(std::filesystem::file_size(folder + "/calls"), size_t{15} << 20);
    const std::vector<UnitCall> seen = calls(unit);
    ASSERT_GE(seen.size(), 3U);
    EXPECT_EQ(seen.back().head.sequence, 12U);
    unit_close(unit);
}

// Who is killed while the journal starts anew may have kept its calls already.
TEST_F(UnitTest, TellsNoCallTwice)
{
    Unit* unit = open(folder);
    number_write(unit, 1, 1);
    std::string error;
    ASSERT_TRUE(unit_change(
        unit, "x", [](UnitState&, int64_t, std::string&) { return true; }, error));
    number_write(unit, 1, 2);
    const std::string journal = content(folder + "/journal");
    content_put(folder + "/calls", content(folder + "/calls") + journal.substr(4096, 176));
    const std::vector<UnitCall> seen = calls(unit);
    ASSERT_EQ(seen.size(), 3U);
    for (size_t n = 0; n < seen.size(); ++n) {
        EXPECT_EQ(seen[n].head.sequence, n + 1);
        EXPECT_EQ(calls(unit, n + 1).size(), 3 - n); // from any of them on
    }
    unit_close(unit);
}

TEST_F(UnitTest, PutsAllItemsOrNone)
{
    Unit* unit = open(folder);
    const std::string before = text(unit);
    std::string error;
    EXPECT_FALSE(unit_put(unit, {"word.0x6B29=1", "word.0x6B29=70000"}, error));
    EXPECT_EQ(error, "word.0x6B29=70000: above 65535");
    EXPECT_EQ(text(unit), before);
    EXPECT_TRUE(calls(unit).empty());
    // As many as a journal's rest cannot hold, or a whole journal.
    std::vector<std::string> items(10000, "rule.1=" + std::string(160, 'a'));
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(unit_put(unit, items, error)) << error;
    }
    items.resize(40000, items[0]);
    EXPECT_FALSE(unit_put(unit, items, error));
    EXPECT_EQ(error, folder + ": Message too long");
    Unit* other = open(folder);
    EXPECT_EQ(text(other), text(unit));
    unit_close(unit);
    unit_close(other);
}

TEST_F(UnitTest, ChangesAllAtOnce)
{
    Unit* unit = open(folder);
    Unit* other = open(folder);
    number_write(unit, 1, 5);
    std::string error;
    const UnitState drawn = state_draw(3);
    EXPECT_TRUE(unit_change(
        unit, "power-cycle",
        [&](UnitState& state, int64_t now, std::string&) {
            EXPECT_EQ(state.fpga.indexed_words[1], 5U);
            EXPECT_GT(now, 1700000000000000000);
            state = drawn;
            state.rtc_runs = false;
            return true;
        },
        error))
        << error;
    EXPECT_EQ(text(unit), text(other));
    EXPECT_NE(text(unit).find("rule.15="), std::string::npos);
    const std::vector<UnitCall> seen = calls(other);
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[1].head.kind, EntryKind::kMark);
    EXPECT_EQ(seen[1].before, "power-cycle");
    const std::string before = text(unit);
    EXPECT_FALSE(unit_change(
        unit, "x",
        [](UnitState& state, int64_t, std::string& why) {
            state = UnitState();
            why = "not now";
            return false;
        },
        error));
    EXPECT_EQ(error, "not now");
    EXPECT_EQ(text(unit), before);
    unit_close(unit);
    unit_close(other);
}

// One that was killed has left half a file, longer than the new one.
TEST_F(UnitTest, WritesItsStateOverWhatIsLeft)
{
    content_put(folder + "/state.new", std::string(100000, 'x'));
    Unit* unit = open(folder);
    std::string error;
    ASSERT_TRUE(unit_change(
        unit, "x", [](UnitState&, int64_t, std::string&) { return true; }, error));
    unit_close(unit);
    EXPECT_EQ(refusal(folder), "opened");
    EXPECT_FALSE(std::filesystem::exists(folder + "/state.new"));
}

TEST_F(UnitTest, KeepsItsSystemClock)
{
    Unit* unit = open(folder);
    Unit* other = open(folder);
    EXPECT_EQ(unit_clockDifference(unit), 0);
    unit_setClock(unit, -5000000000);
    EXPECT_EQ(unit_clockDifference(unit), -5000000000);
    EXPECT_EQ(unit_clockDifference(other), -5000000000);
    number_write(unit, 1, 1);
    EXPECT_EQ(unit_clockDifference(other), -5000000000);
    unit_setClock(other, 7);
    EXPECT_EQ(unit_clockDifference(unit), 7);
    EXPECT_EQ(unit_clockDifference(unit), 7);
    EXPECT_EQ(calls(unit).size(), 3U); // looking at it is no call
    unit_close(unit);
    unit_close(other);
    unit = open(folder);
    EXPECT_EQ(unit_clockDifference(unit), 7);
    unit_close(unit);
}

TEST_F(UnitTest, FillsMoreThanAWordWhereItIsTold)
{
    Unit* unit = open(folder);
    std::string error;
    ASSERT_TRUE(unit_put(unit, {"filled.0x6B02=5", "word.0x6B02=0x1234"}, error)) << error;
    char record[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(request(unit, 0x6B02, record), 0);
    EXPECT_EQ(std::string(record, 8), "\x34\x12\xEE\xEE\xEE\x06\x07\x08");
    unit_close(unit);
}

// A journal whose entries are so long is full before it has as many as it may have.
TEST_F(UnitTest, HasRoomForWhatIsFilled)
{
    Unit* unit = open(folder);
    std::string error;
    ASSERT_TRUE(unit_put(unit, {"filled.0x6B02=250", "word.0x6B02=0x1234"}, error)) << error;
    for (int i = 0; i < 14000; ++i) {
        char record[256] = {};
        ASSERT_EQ(request(unit, 0x6B02, record), 0);
        ASSERT_EQ(record[249], '\xEE');
    }
    EXPECT_NE(content(folder + "/state").find("generation 2 "), std::string::npos);
    Unit* other = open(folder);
    EXPECT_EQ(text(other), text(unit));
    unit_close(other);
    unit_close(unit);
}

// It may be given by a path from the working folder, and the program may go elsewhere.
TEST_F(UnitTest, StaysWhereItIs)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(top);
    Unit* unit = open("unit");
    std::filesystem::current_path("/");
    for (uint32_t i = 0; i < 20000; ++i) {
        ASSERT_EQ(number_write(unit, 1, i), 0);
    }
    std::filesystem::current_path(before);
    EXPECT_NE(content(folder + "/state").find("generation 2 "), std::string::npos);
    EXPECT_EQ(number_read(unit, 1), 19999U);
    unit_close(unit);
}

TEST_F(UnitTest, IsNotMadeOverAnother)
{
    std::string error;
    Unit* unit = open(folder);
    number_write(unit, 1, 5);
    EXPECT_FALSE(unit_create(folder, UnitState(), error));
    EXPECT_EQ(error, folder + "/journal: File exists");
    EXPECT_EQ(number_read(unit, 1), 5U);
    unit_close(unit);
}

} // namespace
