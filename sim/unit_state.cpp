#include "sim/unit_state.h"

#include <chrono>
#include <stdexcept>

namespace
{

constexpr int64_t kSecond = 1000000000;

// Whether this request fails now.
bool failure_due(UnitState& state, uint32_t request, UnitAnswer& answer)
{
    const auto entry = state.failures.find(request);
    if (entry == state.failures.end()) {
        return false;
    }
    RequestFailure& failure = entry->second;
    if (failure.nth > 1) {
        --failure.nth;
        return false;
    }
    answer = {-1, failure.error};
    if (failure.count > 0 && --failure.count == 0) {
        state.failures.erase(entry);
    }
    return true;
}

UnitAnswer answer_of(int result)
{
    return {result, result < 0 ? EIO : 0};
}

int64_t floor_divide(int64_t number, int64_t divisor)
{
    return number / divisor - (number % divisor < 0 ? 1 : 0);
}

} // namespace

RtcTime rtcTime_ofSeconds(int64_t seconds)
{
    using namespace std::chrono;
    const auto clock = sys_seconds(std::chrono::seconds(seconds));
    const auto day = floor<days>(clock);
    const year_month_day date(day);
    const hh_mm_ss time(clock - day);
    const auto new_year = sys_days(date.year() / January / 1);
    return {static_cast<int32_t>(time.seconds().count()),
            static_cast<int32_t>(time.minutes().count()),
            static_cast<int32_t>(time.hours().count()),
            static_cast<int32_t>(static_cast<unsigned>(date.day())),
            static_cast<int32_t>(static_cast<unsigned>(date.month())) - 1,
            static_cast<int>(date.year()) - 1900,
            static_cast<int32_t>(weekday(day).c_encoding()),
            static_cast<int32_t>((day - new_year).count()),
            0};
}

bool rtcTime_seconds(const RtcTime& time, int64_t& seconds)
{
    using namespace std::chrono;
    const auto [second, minute, hour, day, month, year, week_day, year_day, saving] = time;
    // Four digits of a year are as far as the calendar goes here.
    if (second < 0 || second > 59 || minute < 0 || minute > 59 || hour < 0 || hour > 23 ||
        day < 1 || day > 31 || month < 0 || month > 11 || year < -1900 || year > 9999 - 1900) {
        return false;
    }
    const year_month_day date(std::chrono::year(year + 1900),
                              std::chrono::month(static_cast<unsigned>(month) + 1),
                              std::chrono::day(static_cast<unsigned>(day)));
    if (!date.ok()) {
        return false;
    }
    seconds = duration_cast<std::chrono::seconds>(sys_days(date).time_since_epoch()).count() +
              int64_t{hour} * 3600 + int64_t{minute} * 60 + second;
    return true;
}

RtcTime unitState_rtcTime(const UnitState& state, int64_t now)
{
    int64_t seconds = 0;
    if (!state.rtc_runs || !rtcTime_seconds(state.rtc.time, seconds)) {
        return state.rtc.time;
    }
    // As unsigned numbers: any difference of two times is one.
    const auto gone =
        static_cast<int64_t>(static_cast<uint64_t>(now) - static_cast<uint64_t>(state.rtc_since));
    return rtcTime_ofSeconds(seconds + floor_divide(gone, kSecond));
}

UnitAnswer unitState_serveFpga(UnitState& state, const RequestForm& form, char* record,
                               uint32_t value, int64_t /*now*/)
{
    UnitAnswer answer;
    if (failure_due(state, form.number, answer)) {
        return answer;
    }
    try {
        return answer_of(state.fpga.serve(form, record, value));
    } catch (const std::out_of_range&) {
        return {-1, EINVAL}; // a PHY has 32 registers
    }
}

UnitAnswer unitState_serveRtc(UnitState& state, const RequestForm& form, char* record, int64_t now)
{
    UnitAnswer answer;
    if (failure_due(state, form.number, answer)) {
        return answer;
    }
    if (form.number == kRtcTimeRead) {
        RtcModel shown = state.rtc;
        shown.time = unitState_rtcTime(state, now);
        return answer_of(shown.serve(form, record));
    }
    if (form.number == kRtcTimeWrite) {
        state.rtc_since = now;
    }
    return answer_of(state.rtc.serve(form, record));
}
