// The table of device commands.
#pragma once

#include <cstdint>
#include <span>

#include "device/access/command_call.h"
#include "maint/device_commands.h"

// A row: the number in 16 of its first word's 32 bits, the member in the others.
struct DeviceCommand {
    uint16_t code;
    Member member;
    CommandHandler handler;

    template <class Argument>
    constexpr DeviceCommand(uint16_t number, CommandCall<Argument> call)
        : code{number}, member{call.member}, handler{call.handler}
    {
    }
};

std::span<const DeviceCommand> commandTable_get();
