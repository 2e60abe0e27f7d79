// The clock that runs, and requests that somebody lets fail.
#include "sim/unit_state_fixture.h"

namespace
{

constexpr int64_t kSecond = 1000000000;
constexpr int64_t kStart = 1795300000 * kSecond;

UnitAnswer register_write(UnitState& state, uint16_t value)
{
    char record[8] = {0x58, 1, 0, 0, static_cast<char>(value), static_cast<char>(value >> 8), 0, 0};
    return unitState_serveFpga(state, *requestForm_find(0x6B43), record, 0, kStart);
}

TEST(RequestFailure, OfTheNextOneAlone)
{
    UnitState state;
    state.failures[0x6B43] = {};
    EXPECT_EQ(register_write(state, 1), (UnitAnswer{-1, EIO}));
    EXPECT_EQ(state.fpga.registers.count(0x158), 0U); // it did not reach the device
    EXPECT_TRUE(state.failures.empty());
    EXPECT_EQ(register_write(state, 2), (UnitAnswer{0, 0}));
    EXPECT_EQ(state.fpga.registers[0x158], 2);
}

TEST(RequestFailure, OfTheThirdAndFourth)
{
    UnitState state;
    state.failures[0x6B43] = {3, 2, EBUSY};
    const int expected[] = {0, 0, -1, -1, 0, 0};
    for (const int result : expected) {
        EXPECT_EQ(register_write(state, 1), (UnitAnswer{result, result < 0 ? EBUSY : 0}));
    }
}

TEST(RequestFailure, OfAllFromTheSecondOn)
{
    UnitState state;
    state.failures[0x6B43] = {2, 0, EIO};
    EXPECT_EQ(register_write(state, 1).result, 0);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(register_write(state, 1).result, -1);
    }
    EXPECT_EQ(state.failures[0x6B43], (RequestFailure{1, 0, EIO})); // nothing is counted
}

TEST(RequestFailure, IsOfItsRequestAlone)
{
    UnitState state;
    state.failures[0x6B42] = {};
    state.failures[kRtcTimeWrite] = {1, 1, EINVAL};
    EXPECT_EQ(register_write(state, 1).result, 0);
    RtcTime time{1, 2, 3, 4, 5, 6, 0, 0, 0};
    char record[36];
    memcpy(record, time.data(), sizeof record);
    const RequestForm& form = *rtcRequestForm_find(kRtcTimeWrite);
    EXPECT_EQ(unitState_serveRtc(state, form, record, kStart), (UnitAnswer{-1, EINVAL}));
    EXPECT_EQ(state.rtc.time, RtcTime{});
    EXPECT_EQ(unitState_serveRtc(state, form, record, kStart), (UnitAnswer{0, 0}));
    EXPECT_EQ(state.rtc.time, time);
    EXPECT_EQ(state.failures.size(), 1U);
}

TEST(RequestFailure, OfARegisterThatAPhyDoesNotHave)
{
    for (const uint32_t request : {0x6B87U, 0x6B88U, 0x6B98U, 0x6B99U}) {
        UnitState state;
        char record[8] = {3, 0, 32, 0, 1, 0, 0, 0};
        EXPECT_EQ(unitState_serveFpga(state, *requestForm_find(request), record, 0, kStart),
                  (UnitAnswer{-1, EINVAL}));
        EXPECT_TRUE(state.fpga.phys.empty());
        record[2] = 31;
        EXPECT_EQ(unitState_serveFpga(state, *requestForm_find(request), record, 0, kStart).result,
                  0);
    }
}

TEST(RequestResult, BelowZeroIsAnInputOutputError)
{
    UnitState state;
    state.fpga.results[0x6B43] = -3;
    EXPECT_EQ(register_write(state, 1), (UnitAnswer{-3, EIO}));
}

TEST(Reading, AddsNothingToTheState)
{
    UnitState state;
    for (uint32_t request = kRequestsFirst; request <= kRequestsLast; ++request) {
        const RequestForm* form = requestForm_find(request);
        if (form == nullptr || form->fills_count == 0) {
            continue;
        }
        char record[512] = {5};
        EXPECT_EQ(unitState_serveFpga(state, *form, record, 0, kStart).result, 0);
        expect_same(state, UnitState());
        ASSERT_FALSE(HasFailure()) << request;
    }
}

RtcTime clock_read(UnitState& state, int64_t now)
{
    RtcTime time{};
    char record[36];
    EXPECT_EQ(unitState_serveRtc(state, *rtcRequestForm_find(kRtcTimeRead), record, now).result, 0);
    memcpy(time.data(), record, sizeof record);
    return time;
}

void clock_write(UnitState& state, const RtcTime& time, int64_t now)
{
    char record[36];
    memcpy(record, time.data(), sizeof record);
    EXPECT_EQ(unitState_serveRtc(state, *rtcRequestForm_find(kRtcTimeWrite), record, now).result,
              0);
}

TEST(Clock, RunsFromTheTimeThatItIsSetTo)
{
    UnitState state;
    state.rtc_runs = true;
    const RtcTime leap_day{59, 59, 23, 28, 1, 124, 3, 58, 0}; // 2024-02-28
    clock_write(state, leap_day, kStart);
    EXPECT_EQ(clock_read(state, kStart), leap_day);
    EXPECT_EQ(clock_read(state, kStart + kSecond - 1), leap_day);
    EXPECT_EQ(clock_read(state, kStart + kSecond), (RtcTime{0, 0, 0, 29, 1, 124, 4, 59, 0}));
    EXPECT_EQ(clock_read(state, kStart + 86401 * kSecond), (RtcTime{0, 0, 0, 1, 2, 124, 5, 60, 0}));
    // The machine's clock may be set back meanwhile.
    EXPECT_EQ(clock_read(state, kStart - 1), (RtcTime{58, 59, 23, 28, 1, 124, 3, 58, 0}));
    clock_write(state, leap_day, kStart + 100 * kSecond);
    EXPECT_EQ(clock_read(state, kStart + 100 * kSecond), leap_day);
}

TEST(Clock, StandsStillOtherwise)
{
    UnitState state;
    const RtcTime time{1, 2, 3, 4, 5, 6, 7, 8, 9};
    clock_write(state, time, kStart);
    EXPECT_EQ(clock_read(state, kStart + 1000 * kSecond), time);
}

TEST(Clock, ThatShowsNoTimeDoesNotRun)
{
    UnitState state;
    state.rtc_runs = true;
    for (const RtcTime& time :
         {RtcTime{60, 0, 0, 1, 0, 100}, RtcTime{0, 60, 0, 1, 0, 100}, RtcTime{0, 0, 24, 1, 0, 100},
          RtcTime{0, 0, 0, 0, 0, 100}, RtcTime{0, 0, 0, 1, 12, 100}, RtcTime{0, 0, 0, 31, 3, 100},
          RtcTime{0, 0, 0, 1, 0, 8100}, RtcTime{-1, 0, 0, 1, 0, 100},
          RtcTime{INT32_MAX, INT32_MIN, 0, 1, 0, INT32_MAX}}) {
        clock_write(state, time, kStart);
        EXPECT_EQ(clock_read(state, kStart + 1000 * kSecond), time);
    }
}

TEST(Clock, OfEveryDayIsTheCLibrarys)
{
    for (int64_t seconds = -2208988800; seconds < 4102444800; seconds += 86400 * 3 + 12345) {
        const RtcTime time = rtcTime_ofSeconds(seconds);
        const auto when = static_cast<time_t>(seconds);
        if (when == seconds) { // not beyond a clock of 32 bits
            tm expected{};
            gmtime_r(&when, &expected);
            EXPECT_EQ(time, (RtcTime{expected.tm_sec, expected.tm_min, expected.tm_hour,
                                     expected.tm_mday, expected.tm_mon, expected.tm_year,
                                     expected.tm_wday, expected.tm_yday, 0}));
        }
        int64_t back = 0;
        EXPECT_TRUE(rtcTime_seconds(time, back));
        ASSERT_EQ(back, seconds);
    }
}

} // namespace
