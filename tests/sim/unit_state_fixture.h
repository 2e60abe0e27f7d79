// States of a unit, drawn and compared member by member.
#pragma once

#include <gtest/gtest.h>

#include <random>

#include "sim/device_state.h"
#include "sim/unit_state.h"

inline void expect_same(const UnitState& one, const UnitState& other)
{
    EXPECT_EQ(one.fpga.words, other.fpga.words);
    EXPECT_EQ(one.fpga.registers, other.fpga.registers);
    EXPECT_EQ(one.fpga.register_high, other.fpga.register_high);
    EXPECT_EQ(one.fpga.phys, other.fpga.phys);
    EXPECT_EQ(one.fpga.switch_ports, other.fpga.switch_ports);
    EXPECT_EQ(one.fpga.device_info, other.fpga.device_info);
    EXPECT_EQ(one.fpga.own_address, other.fpga.own_address);
    EXPECT_EQ(one.fpga.own_address_set, other.fpga.own_address_set);
    EXPECT_EQ(one.fpga.addresses, other.fpga.addresses);
    EXPECT_EQ(one.fpga.address_sets, other.fpga.address_sets);
    EXPECT_EQ(one.fpga.id_entries, other.fpga.id_entries);
    EXPECT_EQ(one.fpga.id_values, other.fpga.id_values);
    EXPECT_EQ(one.fpga.unit_words, other.fpga.unit_words);
    EXPECT_EQ(one.fpga.address_pairs, other.fpga.address_pairs);
    EXPECT_EQ(one.fpga.address_table, other.fpga.address_table);
    EXPECT_EQ(one.fpga.port_entries, other.fpga.port_entries);
    EXPECT_EQ(one.fpga.rules, other.fpga.rules);
    EXPECT_EQ(one.fpga.indexed_words, other.fpga.indexed_words);
    EXPECT_EQ(one.fpga.counters, other.fpga.counters);
    EXPECT_EQ(one.fpga.counters_alt, other.fpga.counters_alt);
    EXPECT_EQ(one.fpga.written, other.fpga.written);
    EXPECT_EQ(one.fpga.results, other.fpga.results);
    EXPECT_EQ(one.fpga.filled, other.fpga.filled);
    EXPECT_EQ(one.fpga.fills_when_failing, other.fpga.fills_when_failing);
    EXPECT_EQ(one.rtc.time, other.rtc.time);
    EXPECT_EQ(one.rtc.status, other.rtc.status);
    EXPECT_EQ(one.rtc.result, other.rtc.result);
    EXPECT_EQ(one.rtc.overwrites, other.rtc.overwrites);
    EXPECT_EQ(one.rtc_runs, other.rtc_runs);
    EXPECT_EQ(one.rtc_since, other.rtc_since);
    EXPECT_EQ(one.clock_difference, other.clock_difference);
    EXPECT_EQ(one.failures, other.failures);
}

// Every number of a request, known or not.
constexpr uint32_t kRequestsFirst = 0x6B00;
constexpr uint32_t kRequestsLast = 0x6BA8;

// A request of /dev/fpga that the model can serve, with small numbers mostly.
struct DrawnRequest {
    uint32_t number;
    std::string record; // 512 bytes
    uint32_t value;
};

class RequestDraw
{
  public:
    explicit RequestDraw(uint32_t seed) : engine_(seed) {}

    uint32_t number() { return static_cast<uint32_t>(engine_()); }
    uint32_t below(uint32_t limit) { return number() % limit; }

    DrawnRequest request()
    {
        DrawnRequest drawn{kRequestsFirst + below(kRequestsLast - kRequestsFirst + 1),
                           std::string(512, '\0'), number()};
        const bool any = below(8) == 0;
        for (size_t i = 0; i < drawn.record.size(); ++i) {
            drawn.record[i] = static_cast<char>(any ? number() : i % 2 == 0 ? below(12) : 0);
        }
        return drawn;
    }

  private:
    std::mt19937 engine_;
};

// All members of the state, those too that no request changes.
inline UnitState state_draw(uint32_t number)
{
    UnitState state;
    deviceState_put(number, state.fpga, state.rtc);
    RequestDraw draw(number);
    state.fpga.register_high = static_cast<uint16_t>(draw.number());
    state.fpga.phys[6][draw.below(32)] = static_cast<uint16_t>(draw.number()); // no port's
    for (uint32_t unit = 0; unit < 4; ++unit) {
        const auto word = [&] { return static_cast<uint16_t>(draw.number()); };
        state.fpga.unit_words[{draw.number(), word()}] = {word(), word()};
    }
    state.fpga.results[0x6B42] = static_cast<int>(draw.number());
    state.fpga.results[0x6BA2] = -1;
    state.fpga.filled[0x6B02] = draw.below(257);
    state.fpga.fills_when_failing = draw.below(2) == 0;
    state.fpga.written[0x6B78] = std::string(260, static_cast<char>(draw.number()));
    state.rtc.result = static_cast<int>(draw.number());
    state.rtc.overwrites = draw.below(2) == 0;
    state.rtc.time[6] = static_cast<int32_t>(draw.below(3)) - 1;
    state.rtc_runs = draw.below(2) == 0;
    state.rtc_since = static_cast<int64_t>(draw.number()) * 1000003;
    state.clock_difference = -static_cast<int64_t>(draw.number()) * 1000003;
    state.failures[0x6B01 + draw.below(3)] = {1 + draw.below(9), draw.below(3), EBUSY};
    return state;
}
