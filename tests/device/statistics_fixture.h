// The statistics file on the simulated board, and what a save and a clear make of it.
#pragma once

#include "device/command_test.h"
#include "device/record_bytes.h"

constexpr const char* kFile = "/conf/statistics";
constexpr uint32_t kPorts = 30;
constexpr size_t kFileSize = 496;

using Counters = std::map<std::pair<uint32_t, uint32_t>, uint32_t>;

// A stream of port 1: its counters' index, and the offsets of its total in the file.
struct Stream {
    const char* name;
    uint32_t index;
    size_t kib;
    size_t rest;
};

constexpr Stream kStreams[] = {{"A", 1, 128, 376}, {"B", 65, 8, 256}};

inline uint32_t total_at(const Bytes& file, size_t offset)
{
    return word_at(file, offset) | static_cast<uint32_t>(word_at(file, offset + 2)) << 16;
}

inline void total_put(Bytes& file, size_t offset, uint32_t word)
{
    bytes_put(file, offset, le32(word));
}

// 124 random words, the remainders within their range.
inline Bytes file_sample(uint32_t seed = 1)
{
    std::mt19937 random(seed);
    Bytes file;
    for (size_t word = 0; word < 124; ++word) {
        const auto number = static_cast<uint32_t>(random());
        file += le32(word < 64 ? number : number % 1024);
    }
    return file;
}

// The four counters of each port in the order in which they are read.
inline std::vector<std::pair<uint32_t, uint32_t>> reading_order()
{
    std::vector<std::pair<uint32_t, uint32_t>> order;
    for (uint32_t port = 1; port <= 30; ++port) {
        order.insert(order.end(), {{port, 32}, {port, 33}, {port + 64, 32}, {port + 64, 33}});
    }
    return order;
}

inline Counters counters_sample(uint32_t seed)
{
    std::mt19937 random(seed);
    Counters counters;
    for (const auto& counter : reading_order()) {
        // Every width: small ones, and some that make their sums wrap.
        counters[counter] = static_cast<uint32_t>(random()) >> random() % 32;
    }
    return counters;
}

// What a save makes of a file.
inline Bytes saved(Bytes file, const Counters& counters, uint64_t overhead)
{
    for (const Stream& stream : kStreams) {
        for (uint32_t i = 0; i < kPorts; ++i) {
            const uint64_t bytes = counters.at({stream.index + i, 32});
            const uint64_t items = counters.at({stream.index + i, 33});
            const uint64_t rest = total_at(file, stream.rest + 4 * i);
            const uint64_t sum = (bytes + items * overhead + rest) % 0x100000000;
            const uint64_t kib = total_at(file, stream.kib + 4 * i) + sum / 1024;
            total_put(file, stream.kib + 4 * i, static_cast<uint32_t>(kib % 0x100000000));
            total_put(file, stream.rest + 4 * i, static_cast<uint32_t>(sum % 1024));
        }
    }
    return file;
}

inline Bytes cleared(const Bytes& file)
{
    return file.substr(0, 8) + zeros(240) + file.substr(248, 8) + zeros(240);
}

const Bytes kCallers = untouched(kFileSize);

class StatisticsTest : public CommandTest
{
  protected:
    void board_put(const Bytes& file, const Counters& counters, uint16_t word = 0)
    {
        board.restart();
        board.file_put(kFile, file);
        board.fpga.counters = counters;
        board.fpga.words[0x6B03] = word;
    }

    // Runs a command that must succeed; file and caller's buffer must then be the same bytes.
    Bytes run_well(DeviceCommandCode command)
    {
        Bytes after = record_after(command, kCallers);
        EXPECT_EQ(board.file_get(kFile), after);
        return after;
    }
};
