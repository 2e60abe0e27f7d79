// The facts of every command: all that the tests loop over. A new command is one row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string>

#include "maint/device_commands.h"

using Requests = std::set<uint32_t>;

struct CommandFacts {
    const char* name;
    DeviceCommandCode named; // the public constant of that name
    uint32_t number;
    size_t record; // bytes of the caller's record, up to the last that the command reads or writes
    // All that the command may return. RD_DEVICE_WORD_40 returns whatever its request does, in the
    // tests 0 or a failure's -1; RD_PHY_STATUS returns -3 as well, but only when another thread
    // opens the device in the middle of it.
    std::set<int32_t> results;
    // The whole of what the command may ask of /dev/fpga, whatever its argument and the device's
    // state; none for a command that does not use it.
    Requests requests;
};

// Every command, in stored order.
std::span<const CommandFacts> commandFacts_get();
const CommandFacts* commandFacts_find(uint32_t number); // null: no command

// The longest record.
constexpr size_t kRecordMax = 496;

// "RD_BANDWIDTH (0x000A)", for messages.
std::string command_name(uint32_t number);
std::string hex_number(uint32_t number);
std::string hex_list(const std::set<uint32_t>& numbers);
// What a set lacks and has too much, in hex; empty: nothing.
std::string difference_of(const std::set<uint32_t>& expected, const std::set<uint32_t>& found);
