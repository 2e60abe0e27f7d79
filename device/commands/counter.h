// Counters and the driver's own state.
#pragma once

#include <cstdint>

#include "device/access/pass_through.h"
#include "maint/commands/counter.h"
#include "maint/commands/driver.h"

int32_t read_counter(CounterRecord* record);
int32_t read_counter_alt(CounterRecord* record);
int32_t read_driver_state(uint16_t* state);

constexpr auto write_counter = record_writeCopyFailingAsRead<kCounterWrite, CounterRecord>;
constexpr auto write_counter_alt = record_writeCopyFailingAsRead<kCounterAltWrite, CounterRecord>;
constexpr auto write_counter_block_large =
    record_writeCopyFailingAsRead<kCounterBlockLargeWrite, CounterBlockLarge>;
constexpr auto write_counter_block_small =
    record_writeCopyFailingAsRead<kCounterBlockSmallWrite, CounterBlockSmall>;

constexpr auto read_ext_status_a = record_readThrough<kExtStatusARead, uint16_t>;
constexpr auto read_ext_status_b = record_readThrough<kExtStatusBRead, uint16_t>;
int32_t write_ext_control_a(const uint16_t* word);
int32_t write_ext_control_b(const uint16_t* word);

// One counter of the traffic statistics.
enum class CounterSelector : uint32_t { kBytes = 32, kItems = 33 };
// Reads it by itself, with the device opened for writing. Returns 0, -1, -2; -5 index above 255.
int32_t counter_read(uint32_t index, CounterSelector selector, uint32_t& value);
