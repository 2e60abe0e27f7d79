// All that a simulated unit's devices hold: the models' state, a clock that runs, and the failures
// that somebody asked for.
#pragma once

#include <cerrno>
#include <cstdint>
#include <map>

#include "sim/fpga_model.h"
#include "sim/rtc_model.h"

// Requests of one number that fail without reaching the device.
struct RequestFailure {
    uint32_t nth = 1;   // the first one that fails; 1: the next
    uint32_t count = 1; // how many fail in all; 0: all from then on
    int error = EIO;

    bool operator==(const RequestFailure&) const = default;
};

struct UnitState {
    FpgaModel fpga;
    RtcModel rtc;
    // The clock shows its time and what has gone by since then. Otherwise it stands still, so that
    // the same request has the same answer.
    bool rtc_runs = false;
    int64_t rtc_since = 0; // when it was set: the machine's clock, in nanoseconds
    // The system clock's difference to the machine's, in nanoseconds.
    int64_t clock_difference = 0;
    std::map<uint32_t, RequestFailure> failures; // by request
};

struct UnitAnswer {
    int result = 0;
    int error = 0; // errno, if the result is below 0

    bool operator==(const UnitAnswer&) const = default;
};

// Serves a request of a known form: `record` or `value`, as the form says. The time is the machine's.
UnitAnswer unitState_serveFpga(UnitState& state, const RequestForm& form, char* record,
                               uint32_t value, int64_t now);
UnitAnswer unitState_serveRtc(UnitState& state, const RequestForm& form, char* record, int64_t now);

using RtcTime = std::array<int32_t, 9>; // as RtcModel::time

// The time that the clock shows.
RtcTime unitState_rtcTime(const UnitState& state, int64_t now);

// A time of the calendar, with its weekday and day of the year, by seconds since 1970; and back, if
// second to year are a time of the calendar.
RtcTime rtcTime_ofSeconds(int64_t seconds);
bool rtcTime_seconds(const RtcTime& time, int64_t& seconds);
