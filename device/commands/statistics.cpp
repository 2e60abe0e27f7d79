#include "device/commands/statistics.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>

#include "device/access/shared_words.h"
#include "device/commands/counter.h"
#include "device/commands/device_word.h"
#include "maint/fpga.h"

static_assert(sizeof(StatisticsFile) == 496);
static_assert(offsetof(StatisticsFile, kib_b) == 8);
static_assert(offsetof(StatisticsFile, kib_a) == 128);
static_assert(offsetof(StatisticsFile, kept_248) == 248);
static_assert(offsetof(StatisticsFile, rest_b) == 256);
static_assert(offsetof(StatisticsFile, rest_a) == 376);

namespace
{

constexpr const char* kStatisticsPath = "/conf/statistics";
constexpr ssize_t kStatisticsSize = sizeof(StatisticsFile);
constexpr int32_t kFileFailed = DEVICE_OPEN_FAILED; // whatever failed about it

constexpr uint32_t kStreamB = 64; // its counters stand so far behind those of stream A
constexpr uint32_t kItemBytes = 18;
constexpr uint32_t kItemBytesWhole = 26;
constexpr unsigned kKibShift = 10;
constexpr uint32_t kRestMask = 0x3FF;

// A port's four counters, in the order in which they are read.
struct PortCounters {
    uint32_t bytesA;
    uint32_t itemsA;
    uint32_t bytesB;
    uint32_t itemsB;
};

int32_t portCounters_read(uint32_t port, PortCounters& counters)
{
    const struct {
        uint32_t index;
        CounterSelector selector;
        uint32_t& value;
    } reads[] = {{port, CounterSelector::kBytes, counters.bytesA},
                 {port, CounterSelector::kItems, counters.itemsA},
                 {port + kStreamB, CounterSelector::kBytes, counters.bytesB},
                 {port + kStreamB, CounterSelector::kItems, counters.itemsB}};
    for (const auto& read : reads) {
        const int32_t status = counter_read(read.index, read.selector, read.value);
        if (status != DEVICE_OK) {
            return status;
        }
    }
    return DEVICE_OK;
}

uint32_t itemBytes_read()
{
    uint16_t word = 0; // and so it counts when it cannot be read
    deviceWord03_read(word);
    return (word & kWord03LineSize) != 0 ? kItemBytesWhole : kItemBytes;
}

void total_add(uint32_t bytes, uint32_t& kib, uint32_t& rest)
{
    const uint32_t sum = bytes + rest;
    kib += sum >> kKibShift;
    rest = sum & kRestMask;
}

int32_t counters_add(StatisticsFile& statistics)
{
    const uint32_t itemBytes = itemBytes_read();
    for (uint32_t port = 1; port <= STATISTICS_PORTS; ++port) {
        PortCounters counters{};
        const int32_t status = portCounters_read(port, counters);
        if (status != DEVICE_OK) {
            return status;
        }
        const uint32_t i = port - 1;
        total_add(counters.bytesB + counters.itemsB * itemBytes, statistics.kib_b[i],
                  statistics.rest_b[i]);
        total_add(counters.bytesA + counters.itemsA * itemBytes, statistics.kib_a[i],
                  statistics.rest_a[i]);
    }
    return DEVICE_OK;
}

int32_t counters_discard(StatisticsFile& statistics)
{
    for (uint32_t port = 1; port <= STATISTICS_PORTS; ++port) {
        PortCounters discarded{};
        const int32_t status = portCounters_read(port, discarded);
        if (status != DEVICE_OK) {
            return status;
        }
        const uint32_t i = port - 1;
        statistics.kib_b[i] = statistics.rest_b[i] = 0;
        statistics.kib_a[i] = statistics.rest_a[i] = 0;
    }
    return DEVICE_OK;
}

// Reads the file into the caller's record, updates the record and writes it back in place; nothing
// is written when the update fails.
int32_t file_update(StatisticsFile* statistics, int32_t (*update)(StatisticsFile&))
{
    const int file = open(kStatisticsPath, O_RDWR);
    if (file < 0) {
        return kFileFailed;
    }
    int32_t status = kFileFailed;
    if (read(file, statistics, sizeof *statistics) == kStatisticsSize) {
        status = update(*statistics);
        if (status == DEVICE_OK &&
            (lseek(file, 0, SEEK_SET) < 0 ||
             write(file, statistics, sizeof *statistics) != kStatisticsSize)) {
            status = kFileFailed;
        }
    }
    close(file);
    return status;
}

} // namespace

int32_t write_statistics_save(StatisticsFile* statistics)
{
    return file_update(statistics, counters_add);
}

int32_t write_statistics_clear(StatisticsFile* statistics)
{
    return file_update(statistics, counters_discard);
}
