// Saves the traffic counters to the statistics file, and shows the ports that have totals.
//
// usage: statistics
#include <cstdint>
#include <cstdio>

#include <maint/commands/statistics.h>

int main()
{
    // The record's type follows from the command.
    maint::Command<WR_STATISTICS_SAVE>::Record totals{};
    const int32_t result = maint_wr_statistics_save(&totals);
    if (result != DEVICE_OK) {
        std::fprintf(stderr, "statistics: the counters cannot be saved (%d)\n",
                     static_cast<int>(result));
        return 1;
    }
    const auto bytes = [](uint32_t kib, uint32_t rest) {
        return static_cast<unsigned long long>(kib) * 1024 + rest;
    };
    std::printf("%4s %14s %14s\n", "port", "stream A", "stream B");
    for (int i = 0; i < STATISTICS_PORTS; ++i) {
        const unsigned long long a = bytes(totals.kib_a[i], totals.rest_a[i]);
        const unsigned long long b = bytes(totals.kib_b[i], totals.rest_b[i]);
        if (a != 0 || b != 0) {
            std::printf("%4d %14llu %14llu\n", i + 1, a, b);
        }
    }
    return 0;
}
