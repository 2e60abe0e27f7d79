// What a device command costs beside the same calls made by hand: of the first row of the command
// table, and of the last, before which all others are looked at. Prints a table, and fails when a
// command costs more than its limit.
//
// Both sides are measured in turn, in short blocks, and the ratio is the median of those of
// neighbouring blocks: what disturbs a machine disturbs both. On one where three other programs
// ran for each processor it varied by less than 0.01, that of the fastest blocks by 0.05.
#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "benchmark/calls.h"
#include "maint/commands/register.h"
#include "maint/fpga.h"

namespace
{

constexpr unsigned long kRegisterRead = 0x6B42;
constexpr unsigned long kRegisterWrite = 0x6B43;
constexpr uint16_t kEnable = 0x016C;
constexpr uint32_t kAnyRegister = 0x0012;

struct RegisterRequest {
    uint32_t address;
    uint32_t value;
};

// The same work by hand, as a program without the library would have it.

int32_t register_readByHand()
{
    RegisterValue record{kAnyRegister, 0, 0};
    RegisterRequest request{record.address, 0};
    const int descriptor = board_open("/dev/fpga", O_RDONLY | O_NONBLOCK);
    if (descriptor < 0) {
        return DEVICE_OPEN_FAILED;
    }
    const int answer = board_ioctl(descriptor, kRegisterRead, &request);
    board_close(descriptor);
    if (answer < 0) {
        return DEVICE_READ_FAILED;
    }
    record.value = static_cast<uint16_t>(request.value);
    return DEVICE_OK;
}

int32_t enable_setByHand()
{
    const uint8_t enable = 1;
    RegisterRequest request{kEnable, 0};
    const int descriptor = board_open("/dev/fpga", O_RDWR | O_NONBLOCK);
    if (descriptor < 0) {
        return DEVICE_OPEN_FAILED;
    }
    if (board_ioctl(descriptor, kRegisterRead, &request) < 0) {
        board_close(descriptor);
        return DEVICE_READ_FAILED;
    }
    request.value = enable == 1 ? request.value & ~3U : request.value | 3U;
    const int answer = board_ioctl(descriptor, kRegisterWrite, &request);
    board_close(descriptor);
    return answer < 0 ? DEVICE_WRITE_FAILED : DEVICE_OK;
}

int32_t register_readByCommand()
{
    RegisterValue record{kAnyRegister, 0, 0};
    return Fpga_Register_Set(RD_REGISTER, &record);
}

int32_t enable_setByCommand()
{
    uint8_t enable = 1;
    return Fpga_Register_Set(WR_REG16C_ENABLE, &enable);
}

using Work = int32_t (*)();

struct Pair {
    const char* name;
    Work byHand;
    Work byCommand;
    size_t calls; // that each of them makes
    double limit; // of the ratio
};

// The first row of the table, and the last of those that the system came with: what is added stands
// behind them. The limits are for a machine on which the calls of the first row take some 2 microseconds.
constexpr Pair kPairs[] = {
    {"RD_REGISTER, the first row", register_readByHand, register_readByCommand, 3, 1.06},
    {"WR_REG16C_ENABLE, at the end", enable_setByHand, enable_setByCommand, 4, 1.10},
};

constexpr int kBlock = 50;    // runs measured at once
constexpr int kRounds = 3000; // of a block of either side

// The calls that the work makes; ends the program if it fails.
CallRecord work_record(Work work)
{
    CallRecord record{};
    calls_recordInto(&record);
    const int32_t status = work();
    calls_recordInto(nullptr);
    if (status != DEVICE_OK) {
        fprintf(stderr, "status %d\n", static_cast<int>(status));
        exit(1);
    }
    return record;
}

// Both sides make the same calls, so that nothing but the library is compared.
bool pair_same(const Pair& pair)
{
    const CallRecord byHand = work_record(pair.byHand);
    const CallRecord byCommand = work_record(pair.byCommand);
    return byHand.count == pair.calls && byCommand.count == pair.calls &&
           std::equal(byHand.calls, byHand.calls + byHand.count, byCommand.calls,
                      [](const Call& a, const Call& b) {
                          return strcmp(a.name, b.name) == 0 && a.detail == b.detail;
                      });
}

double nanoseconds_now()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

// What one run takes, of a block of them.
double block_measure(Work work)
{
    const double begin = nanoseconds_now();
    for (int i = 0; i < kBlock; ++i) {
        work();
    }
    return (nanoseconds_now() - begin) / kBlock;
}

double median(std::array<double, kRounds>& values)
{
    auto* const middle = values.begin() + kRounds / 2;
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

struct Cost {
    double byHand;    // nanoseconds
    double byCommand; // nanoseconds
    double ratio;
};

Cost pair_measure(const Pair& pair)
{
    static std::array<double, kRounds> byHand;
    static std::array<double, kRounds> byCommand;
    static std::array<double, kRounds> ratio;
    for (size_t i = 0; i < kRounds; ++i) {
        // Neither side is always the first.
        if (i % 2 == 0) {
            byHand[i] = block_measure(pair.byHand);
            byCommand[i] = block_measure(pair.byCommand);
        } else {
            byCommand[i] = block_measure(pair.byCommand);
            byHand[i] = block_measure(pair.byHand);
        }
        ratio[i] = byCommand[i] / byHand[i];
    }
    return {median(byHand), median(byCommand), median(ratio)};
}

} // namespace

int main()
{
    int failures = 0;
    printf("%-30s %12s %14s %7s %7s\n", "", "by hand", "by command", "ratio", "limit");
    for (const Pair& pair : kPairs) {
        if (!pair_same(pair)) {
            fprintf(stderr, "%s: by hand and by command are not the same calls\n", pair.name);
            return 1;
        }
        const Cost cost = pair_measure(pair);
        const bool good = cost.ratio <= pair.limit;
        printf("%-30s %9.0f ns %11.0f ns %7.3f %7.3f%s\n", pair.name, cost.byHand, cost.byCommand,
               cost.ratio, pair.limit, good ? "" : "  TOO MUCH");
        failures += good ? 0 : 1;
    }
    return failures == 0 ? 0 : 1;
}
