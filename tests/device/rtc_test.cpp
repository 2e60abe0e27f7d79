// The real-time clock commands.
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "device/command_test.h"
#include "device/commands/rtc.h"
#include "maint/commands/rtc.h"

namespace
{

Step rtc_opens(const char* access)
{
    return {std::string("open /dev/rtc ") + access + "|O_NONBLOCK", -1};
}

Step rtc_closes()
{
    return {"close /dev/rtc", kIgnored};
}

Step rtc_request(uint32_t request, const Bytes& record, int32_t failure)
{
    Step step = record_read(request, record, failure);
    step.call.insert(strlen("ioctl "), "/dev/rtc ");
    return step;
}

Bytes rtc_time(const std::array<int32_t, 9>& fields)
{
    Bytes bytes;
    for (const int32_t field : fields) {
        bytes += le32(static_cast<uint32_t>(field));
    }
    return bytes;
}

// The record of the date and time.
Bytes date(uint32_t year, uint32_t month, uint32_t day, uint32_t hour, uint32_t minute,
           uint32_t second, uint32_t weekday)
{
    return le16(year) + le16(month) + le16(day) + le16(hour) + le16(minute) + le16(second) +
           le16(weekday);
}

const Bytes kLeapDay = date(2004, 2, 29, 12, 34, 56, 0); // a Sunday
constexpr time_t kLeapDayTime = 1078058096;

class Rtc : public CommandTest
{
  protected:
    void TearDown() override
    {
        EXPECT_EQ(board.console, "");
        CommandTest::TearDown();
    }

    // Sets the clock; the record stays.
    void expect_set(const Bytes& record, int32_t result = 0)
    {
        expect_run(WR_RTC_TIME, record, result, record);
    }
};

TEST_F(Rtc, RecordIsSevenWordsInThisOrder)
{
    EXPECT_EQ(bytes_of(RtcDateTime{1, 2, 3, 4, 5, 6, 7}), date(1, 2, 3, 4, 5, 6, 7));
}

TEST_F(Rtc, ReadsTheTime)
{
    // The driver's weekday, day of the year and daylight saving do not count.
    board.rtc.time = {7, 5, 9, 1, 2, 106, 5, 200, 1};
    prove_record(RD_RTC_TIME, untouched(14),
                 {rtc_opens("O_RDONLY"), rtc_request(0x80247009, zeros(36), -2), rtc_closes()},
                 date(2006, 3, 1, 9, 5, 7, 3));
    expect_kept(RD_RTC_TIME, untouched(14));
}

TEST_F(Rtc, TakesTheLowSixteenBitsOfTheDriversFields)
{
    board.rtc.time = {0x10001, 0x20002, 0x30003, 0x40004, 0x50005, 0x60006, 0, 0, 0};
    expect_run(RD_RTC_TIME, untouched(14), 0, date(1906, 6, 4, 3, 2, 1, 1));
}

TEST_F(Rtc, SetsClockAndSystemClock)
{
    device_put = [this] {
        board.rtc.time = {};
        board.now = 0;
    };
    const Bytes record = date(2004, 2, 29, 12, 34, 56, 5); // the weekday is ignored
    prove_record(WR_RTC_TIME, record,
                 {rtc_opens("O_RDONLY"),
                  rtc_request(0x4024700A, rtc_time({56, 34, 12, 29, 1, 104, 0, 0, 0}), -4),
                  rtc_closes(),
                  {"stime 1078058096", kIgnored}},
                 record);
    EXPECT_EQ(board.now, kLeapDayTime);
}

TEST_F(Rtc, TakesTheRecordAsLocalTime)
{
    setenv("TZ", "JST-9", 1);
    tzset();
    expect_set(kLeapDay);
    EXPECT_EQ(board.now, kLeapDayTime - 9 * 3600);
    EXPECT_EQ(board.rtc.time[2], 12);
}

// The record's daylight-saving field is 0: in summer the clock is an hour behind what was given.
TEST_F(Rtc, TakesTheRecordAsStandardTimeAllTheYear)
{
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    expect_set(date(2004, 7, 1, 12, 0, 0, 0));
    EXPECT_EQ(board.now, 1088683200 - 3600); // 12:00 UTC on that day, less the zone's hour
}

TEST_F(Rtc, SystemClockFollowsTheCallerNotTheDriver)
{
    board.rtc.overwrites = true;
    expect_set(kLeapDay);
    EXPECT_EQ(board.now, kLeapDayTime);
}

// The driver works in the caller's own memory.
TEST_F(Rtc, StatusIsTheCallersOwnWord)
{
    board.rtc.status = 7;
    board.before_call = [&](const std::string& call) {
        if (call == "close /dev/rtc") {
            EXPECT_EQ(record(), le32(7)) << "filled before the device is closed";
        }
    };
    expect_run(RD_RTC_STATUS, le32(0), 0, le32(7));
    board.before_call = [&](const std::string& call) {
        if (call.rfind("ioctl", 0) == 0) {
            put_byte(0, 9); // changed just before the driver looks
        }
    };
    expect_run(WR_RTC_STATUS, le32(7), 0, le32(9));
    EXPECT_EQ(board.rtc.status, 9U);
    board.before_call = nullptr;
}

TEST_F(Rtc, LeavesTheSystemClockWhenTheRtcCannotBeSet)
{
    const time_t before = board.now;
    board.fail_calls({2, 6});
    expect_set(kLeapDay, -4);
    EXPECT_EQ(board.now, before);
    for (const std::string& call : board.calls) {
        EXPECT_NE(call.rfind("stime", 0), 0U) << call;
    }
}

TEST_F(Rtc, SendsWhatIsOutOfRangeAsItStands)
{
    expect_set(date(0, 0, 0, 65535, 65534, 65533, 65532));
    EXPECT_EQ(board.rtc.time, (std::array<int32_t, 9>{65533, 65534, 65535, 0, -1, -1900, 0, 0, 0}));
}

// No range is checked: the system clock gets what the calendar makes of the record.
TEST_F(Rtc, SystemClockCarriesWhatIsOutOfRange)
{
    expect_set(date(2004, 13, 32, 25, 61, 61, 0));
    EXPECT_EQ(board.rtc.time, (std::array<int32_t, 9>{61, 61, 25, 32, 12, 104, 0, 0, 0}));
    EXPECT_EQ(board.now, 1107309721); // 2005-02-02 02:02:01
}

// The time -1 is a time, too.
TEST_F(Rtc, SystemClockIsSetToTheLastSecondBeforeItsEpoch)
{
    expect_set(date(1969, 12, 31, 23, 59, 59, 0));
    EXPECT_EQ(board.calls.back(), "stime -1");
    EXPECT_EQ(board.now, -1);
}

TEST_F(Rtc, PassesTheStatusThrough)
{
    board.rtc.status = 0x89ABCDEF;
    const Bytes held = hex("44 33 22 11");
    prove_record(RD_RTC_STATUS, held,
                 {rtc_opens("O_RDONLY"), rtc_request(0x80047013, held, -2), rtc_closes()},
                 le32(0x89ABCDEF));
    const Bytes given = hex("78 56 34 12");
    prove_record(WR_RTC_STATUS, given,
                 {rtc_opens("O_RDWR"), rtc_request(0x40047014, given, -4), rtc_closes()}, given);
    EXPECT_EQ(board.rtc.status, 0x12345678U);
}

TEST_F(Rtc, MissingClockFailsEveryCommand)
{
    board.rtc_present = false;
    for (const DeviceCommandCode command :
         {RD_RTC_TIME, WR_RTC_TIME, RD_RTC_STATUS, WR_RTC_STATUS}) {
        board.restart();
        expect_run(command, kLeapDay, -1, kLeapDay);
        EXPECT_EQ(board.calls.size(), 4U); // two opens, each with its sleep
    }
}

struct Day {
    uint16_t year, month, day, weekday;
};

TEST_F(Rtc, WeekdayOfKnownDays)
{
    for (const Day& day : {Day{2000, 1, 1, 6}, Day{2004, 2, 29, 0}, Day{2006, 3, 1, 3},
                           Day{1970, 1, 1, 4}, Day{2038, 1, 19, 2}}) {
        EXPECT_EQ(weekday_of(day.year, day.month, day.day), day.weekday) << day.year;
    }
}

TEST_F(Rtc, WeekdayOfEveryDayFrom1970To2100IsTheCalendars)
{
    using std::chrono::days;
    using std::chrono::sys_days;
    const sys_days last = std::chrono::year{2100} / 12 / 31;
    int walked = 0;
    for (sys_days day{}; day <= last; day += days{1}) {
        ++walked;
        const std::chrono::year_month_day date{day};
        const uint16_t weekday =
            weekday_of(static_cast<uint16_t>(static_cast<int>(date.year())),
                       static_cast<uint16_t>(static_cast<unsigned>(date.month())),
                       static_cast<uint16_t>(static_cast<unsigned>(date.day())));
        const int64_t noon = int64_t{day.time_since_epoch().count()} * 24 * 3600 + 12 * 3600;
        ASSERT_EQ(weekday, std::chrono::weekday{day}.c_encoding()) << noon;
        // The C library's calendar as well, as far as its clock goes.
        if (std::in_range<time_t>(noon)) {
            const auto time = static_cast<time_t>(noon);
            tm calendar{};
            ASSERT_NE(gmtime_r(&time, &calendar), nullptr);
            ASSERT_EQ(weekday, calendar.tm_wday) << noon;
        }
    }
    EXPECT_EQ(walked, 47847); // 131 years, 32 of them leap years
}

// A sum below 0 wraps at 32 bits.
TEST_F(Rtc, WeekdayOfTheYearZero)
{
    for (const Day& day :
         {Day{0, 3, 1, 0}, Day{0, 3, 30, 1}, Day{0, 12, 1, 2}, Day{0, 1, 1, 3}, Day{0, 2, 28, 5}}) {
        EXPECT_EQ(weekday_of(day.year, day.month, day.day), day.weekday)
            << day.month << "-" << day.day;
    }
}

// The sum in 64 bits, for years that would wrap a 16-bit term.
TEST_F(Rtc, WeekdayDoesNotWrapForLateYears)
{
    for (const uint32_t year : {180U, 2400U, 9999U, 30000U, 65535U}) {
        for (uint32_t month = 1; month <= 12; ++month) {
            const uint64_t y = month <= 2 ? year - 1 : year;
            const uint64_t m = month <= 2 ? month + 12 : month;
            const uint64_t sum =
                365 * y + y / 4 - y / 100 + y / 400 + (306 * m + 306) / 10 + 28 - 428;
            EXPECT_EQ(weekday_of(static_cast<uint16_t>(year), static_cast<uint16_t>(month), 28),
                      sum % 7)
                << year << "-" << month;
        }
    }
}

} // namespace
