// The commands of maint/commands/statistics.h.
#include "maint/commands/statistics.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Places kFile = place_bit(Place::kStatistics);

constexpr Field kTotals[] = {
    hex(FIELD(StatisticsFile, kept_0), "not of these commands"),
    in_unit(number(FIELD(StatisticsFile, kib_b), "stream B, port by port"), Unit::kKib),
    in_unit(number(FIELD(StatisticsFile, kib_a), "stream A, port by port"), Unit::kKib),
    hex(FIELD(StatisticsFile, kept_248), "not of these commands"),
    in_unit(number(FIELD(StatisticsFile, rest_b), "stream B, beyond kib_b"), Unit::kBytes),
    in_unit(number(FIELD(StatisticsFile, rest_a), "stream A, beyond kib_a"), Unit::kBytes),
};

constexpr ResultMeaning kResults[] = {
    {0, kDone},
    {-1, "the device or /conf/statistics cannot be opened, or the file is shorter than 496 bytes "
         "or cannot be written"},
    {-2, "a counter cannot be read"}};

constexpr const char* kNote = "On failure the counts read so far are lost.";

constexpr CommandDescription kCommands[] = {
    COMMAND(WR_STATISTICS_SAVE, {.summary = "adds all traffic counters to the saved totals",
                                 .fields = kTotals,
                                 .out = all(kTotals),
                                 .results = kResults,
                                 .reads = kFpga | kFile,
                                 .changes = kFpga | kFile,
                                 .stays = "The file keeps the new totals; the counters restart.",
                                 .note = kNote,
                                 .clears = true}),
    COMMAND(WR_STATISTICS_CLEAR, {.summary = "sets all saved totals of the traffic to 0",
                                  .fields = kTotals,
                                  .out = all(kTotals),
                                  .results = kResults,
                                  .reads = kFpga | kFile,
                                  .changes = kFpga | kFile,
                                  .stays = "The totals are gone; the counters restart.",
                                  .note = kNote,
                                  .clears = true}),
};

} // namespace

constexpr CommandGroup kStatisticsGroup = {"statistics", "Traffic statistics", kCommands};
