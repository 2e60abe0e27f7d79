// The commands of maint/commands/rtc.h.
#include "maint/commands/rtc.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Places kRtc = place_bit(Place::kRtc);

constexpr Field kDateTime[] = {
    number(FIELD(RtcDateTime, year), "full year"),
    number(FIELD(RtcDateTime, month), {1, 12}),
    number(FIELD(RtcDateTime, day), {1, 31}),
    number(FIELD(RtcDateTime, hour), {0, 23}),
    number(FIELD(RtcDateTime, minute), {0, 59}),
    number(FIELD(RtcDateTime, second), {0, 59}),
    number(FIELD(RtcDateTime, weekday), {0, 6}, "0 is Sunday; computed from the date"),
};

constexpr Field kStatus[] = {hex(value_of<uint32_t>(), "what it means is the driver's")};

constexpr ResultMeaning kSetResults[] = {
    {0, kDone},
    {-1, kNotOpened},
    {-4, "the clock refuses the time; the system clock stays as it is"}};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_RTC_TIME, {.summary = "date and time of the clock",
                          .fields = kDateTime,
                          .out = all(kDateTime),
                          .results = kReportResults,
                          .reads = kRtc}),
    COMMAND(WR_RTC_TIME, {.summary = "sets the clock, and the system clock after it",
                          .fields = kDateTime,
                          .in = but(kDateTime, "weekday"),
                          .results = kSetResults,
                          .changes = kRtc | place_bit(Place::kSystemClock),
                          .stays = "Both clocks run on from this time.",
                          .note = "The time is local standard time (TZ). Whether the system clock "
                                  "could be set is not told."}),
    COMMAND(RD_RTC_STATUS, {.summary = "a status value of the clock's driver",
                            .fields = kStatus,
                            .out = all(kStatus),
                            .results = kReportResults,
                            .reads = kRtc}),
    COMMAND(WR_RTC_STATUS, {.summary = "sets the status value of the clock's driver",
                            .fields = kStatus,
                            .in = all(kStatus),
                            .results = kWriteResults,
                            .changes = kRtc,
                            .stays = "The value stays as the driver keeps it."}),
};

} // namespace

constexpr CommandGroup kRtcGroup = {"rtc", "Real-time clock", kCommands};
