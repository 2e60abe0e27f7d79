// What a row of the command table holds.
#pragma once

#include <cstdint>

#include "maint/device_commands.h"

// A command's procedure as the dispatcher calls it, with the caller's pointer unchanged.
using CommandHandler = int32_t (*)(void* argument);

struct DeviceCommand {
    DeviceCommandCode code;
    CommandHandler handler;
};

namespace detail
{

template <class Record> Record* argument_type(int32_t (*)(Record*));

} // namespace detail

// The table's form of a handler that takes its own record. Only here is the caller's pointer cast
// to it.
template <auto kHandler> constexpr CommandHandler handler()
{
    return [](void* argument) -> int32_t {
        return kHandler(static_cast<decltype(detail::argument_type(kHandler))>(argument));
    };
}
