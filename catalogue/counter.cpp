// The commands of maint/commands/counter.h.
#include "maint/commands/counter.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Field kCounter[] = {
    number(FIELD(CounterRecord, index), "p (1..30): stream A of port p, 64 + p: its stream B"),
    number(FIELD(CounterRecord, value)),
    number(FIELD(CounterRecord, selector), "32: bytes, 33: items"),
};

constexpr Field kCounterAlt[] = {
    number(FIELD(CounterRecord, index), "what it means is the driver's"),
    number(FIELD(CounterRecord, value)),
    number(FIELD(CounterRecord, selector), "what it means is the driver's"),
};

constexpr Field kLarge[] = {bytes(FIELD(CounterBlockLarge, bytes), "the layout is the driver's")};
constexpr Field kSmall[] = {bytes(FIELD(CounterBlockSmall, bytes), "the layout is the driver's")};

constexpr const char* kCountsOn = "The counter counts on from this value.";
constexpr const char* kRestarted = "The counter may have restarted.";

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_COUNTER, {.summary = "a traffic counter, which restarts",
                         .fields = kCounter,
                         .in = but(kCounter, "value"),
                         .out = only(kCounter, "value"),
                         .results = kReportResults,
                         .reads = kFpga,
                         .changes = kFpga,
                         .stays = kRestarted,
                         .note = "What is read here is missing in the traffic statistics.",
                         .clears = true}),
    COMMAND(WR_COUNTER, {.summary = "writes a traffic counter",
                         .fields = kCounter,
                         .in = all(kCounter),
                         .results = kWriteAsReadResults,
                         .changes = kFpga,
                         .stays = kCountsOn,
                         .note = "The traffic statistics take the new value for traffic."}),
    COMMAND(RD_COUNTER_ALT, {.summary = "a counter of the second set, which restarts",
                             .fields = kCounterAlt,
                             .in = but(kCounterAlt, "value"),
                             .out = only(kCounterAlt, "value"),
                             .results = kReportResults,
                             .reads = kFpga,
                             .changes = kFpga,
                             .stays = kRestarted,
                             .clears = true}),
    COMMAND(WR_COUNTER_ALT, {.summary = "writes a counter of the second set",
                             .fields = kCounterAlt,
                             .in = all(kCounterAlt),
                             .results = kWriteAsReadResults,
                             .changes = kFpga,
                             .stays = kCountsOn}),
    COMMAND(WR_COUNTER_BLOCK_LARGE,
            {.summary = "sends the driver a block of 160 bytes for counters",
             .fields = kLarge,
             .in = all(kLarge),
             .results = kWriteAsReadResults,
             .changes = kFpga,
             .stays = kDeviceKeeps}),
    COMMAND(WR_COUNTER_BLOCK_SMALL, {.summary = "sends the driver a block of 68 bytes for counters",
                                     .fields = kSmall,
                                     .in = all(kSmall),
                                     .results = kWriteAsReadResults,
                                     .changes = kFpga,
                                     .stays = kDeviceKeeps}),
};

} // namespace

constexpr CommandGroup kCounterGroup = {"counter", "Counters", kCommands};
