// Counters.
#pragma once

#include <cstdint>

#include "device/access/families.h"
#include "maint/commands/counter.h"

// The driver gets a copy of the caller's record, the caller the value alone.
int32_t counterRecord_read(CounterRecord* record, RequestNumber request);

constexpr CommandCall read_counter = call_of<counterRecord_read>(kCounterRead);
constexpr CommandCall read_counter_alt = call_of<counterRecord_read>(kCounterAltRead);

constexpr CommandCall write_counter = copy_sent<CounterRecord>(kCounterWrite, DEVICE_READ_FAILED);
constexpr CommandCall write_counter_alt =
    copy_sent<CounterRecord>(kCounterAltWrite, DEVICE_READ_FAILED);
constexpr CommandCall write_counter_block_large =
    copy_sent<CounterBlockLarge>(kCounterBlockLargeWrite, DEVICE_READ_FAILED);
constexpr CommandCall write_counter_block_small =
    copy_sent<CounterBlockSmall>(kCounterBlockSmallWrite, DEVICE_READ_FAILED);

// One counter of the traffic statistics.
enum class CounterSelector : uint32_t { kBytes = 32, kItems = 33 };
// Reads it by itself, with the device opened for writing. Returns 0, -1, -2; -5 index above 255.
int32_t counter_read(uint32_t index, CounterSelector selector, uint32_t& value);
