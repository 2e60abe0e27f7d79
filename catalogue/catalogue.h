// Every device command described as data: for programs that list, describe, run and show commands.
// It is no part of the library. Names, offsets and widths of fields come from the public records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "maint/device_commands.h"

// What a field holds, and so how people write it.
enum class Kind : uint8_t {
    kNumber,   // decimal
    kHex,      // a number that is written in hexadecimal: an address, a word of the device
    kFlag,     // 0 or 1
    kBits,     // bit n stands for thing n; in hexadecimal
    kCode,     // a number whose values have names
    kIpv4,     // four bytes, the most significant first
    kAddress6, // six bytes
    kText,     // characters, without a terminating zero
    kBytes,    // bytes, as pairs of hexadecimal digits
};

enum class Role : uint8_t {
    kPlain,
    kIndex,       // selects what is reported; a field with this role has a sweep
    kOwnId,       // the unit's own identifier, which RD_DEVICE_WORD_29 reads
    kDriverSized, // bytes of which there may be fewer: the driver's own record
};

struct CodeName {
    uint32_t code;
    const char* name; // one word
};

// Values that a report is asked for, one after another, by a program that reads everything.
struct Sweep {
    uint16_t first;
    uint16_t last;
    uint16_t step; // 0: there is no sweep
};

enum class Unit : uint8_t { kNone, kBytes, kKib };

const char* unit_name(Unit unit); // "bytes", "KiB"; empty: none

// On the board there are hundreds of these: the order of the members leaves no gaps.
struct Field {
    const char* name; // as in the record: "group1.element"
    const char* note; // what the name does not say; empty: nothing. No final full stop
    const CodeName* first_code;
    uint32_t least; // range of each element that is a number
    uint32_t most;
    uint16_t offset;
    uint16_t width; // bytes of one element; of kText and kBytes the whole
    Sweep sweep;
    uint8_t count; // elements
    uint8_t code_count;
    Kind kind;
    Role role;
    Unit unit;

    // Of kCode; a value without a name is written as a number.
    [[nodiscard]] constexpr std::span<const CodeName> codes() const
    {
        return {first_code, code_count};
    }
};

struct ResultMeaning {
    int32_t result;
    const char* meaning;
};

// Devices, files and clocks that commands touch.
enum class Place : uint8_t {
    kFpga,
    kRtc,
    kSystemClock,
    kConfig,
    kStatistics,
    kSystemLog,
    kUserLog,
    kSaveLock,
    kFlashSave,
    kLedState,
    kMtuDatasize,
    kMtuNegotiated,
    kSerialNumber,
    kSwitchTableNor,
    kSwitchTablePri,
};
constexpr unsigned kPlaceCount = 15;

using Places = uint16_t; // a bit for each

constexpr Places place_bit(Place place)
{
    return static_cast<Places>(1U << static_cast<unsigned>(place));
}

const char* place_name(Place place); // "/dev/fpga", "the system clock"

// A field of a command by its number: bit n for field n.
using FieldSet = uint32_t;

struct CommandDescription {
    const char* name;    // "RD_RTC_TIME"
    const char* summary; // one line, at most 60 characters, no final full stop
    const char* stays;   // what stays set after the program ends, in sentences; null: nothing
    const char* note;    // what whoever runs it should know before; null: nothing
    const Field* first_field;
    const ResultMeaning* first_result;
    FieldSet in;    // what the command reads of its record
    FieldSet out;   // what it fills; in both: what a failure or another field may leave as it was
    Places reads;   // looks into; a place that is only locked counts here
    Places changes; // changes, at least in some cases
    uint16_t code;
    uint16_t record; // bytes of the record; 0: the argument is not used
    uint8_t field_count;
    uint8_t result_count;
    bool clears; // reading clears or restarts what it reads

    [[nodiscard]] constexpr std::span<const Field> fields() const
    {
        return {first_field, field_count};
    }
    // 0 first, then the others by distance from 0.
    [[nodiscard]] constexpr std::span<const ResultMeaning> results() const
    {
        return {first_result, result_count};
    }
};

// The commands of one public header, in its order.
struct CommandGroup {
    const char* name;  // of the header: "rtc"
    const char* title; // "Real-time clock"
    std::span<const CommandDescription> commands;
};

// All groups, in the order of maint/device_commands.h.
std::span<const CommandGroup* const> catalogue_get();

const CommandDescription* command_find(DeviceCommandCode code); // null: no command

constexpr bool field_in(FieldSet set, size_t number)
{
    return (set >> number & 1) != 0;
}
