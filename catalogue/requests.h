// The requests of the drivers behind /dev/fpga and /dev/rtc described as data: for programs that show
// or keep what the library asks the devices.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// How a request takes its argument.
enum class RequestArgument : uint8_t {
    kRecord,  // the address of a record
    kValue,   // the value itself
    kNothing, // not at all
};

// What stands behind a name: two requests share one.
enum class RequestVerb : uint8_t { kNone, kRead, kWrite };

struct RequestDescription {
    uint32_t number;    // 0x6B42
    const char* name;   // "register"; request_verb says the rest
    const char* layout; // fields of the record, for requestField_next
    uint16_t size; // bytes of the record or the value; a record that is the driver's own may be
                   // longer, and 2 bytes are its part that the library knows
    uint8_t fills; // first byte that the driver fills
    uint8_t fills_count; // and how many; 0: it only reads
    RequestArgument argument;
    RequestVerb verb;
    bool changes; // the device: a write, or a read that restarts what it reads
};

// A field of a record, or several that are alike, one behind the other.
struct RequestField {
    std::string_view name; // "-": spare
    size_t offset;
    unsigned width; // bytes of each
    unsigned count; // several of one byte are bytes that belong together, others are numbers
    bool decimal;   // people write it so: an index, a time
    bool negative;  // likewise, and it may be below 0
};

// All requests, by number.
const RequestDescription* request_find(uint32_t number);       // null: not known
const char* request_verb(const RequestDescription& request);   // " read", " write" or nothing
const char* request_device(const RequestDescription& request); // "/dev/fpga", "/dev/rtc"

// The next field of a layout. Starts with the layout and a cleared field; returns where to go on, or
// null behind the last field.
//     RequestField field{};
//     for (const char* rest = layout; (rest = requestField_next(rest, field)) != nullptr;)
//
// A layout names the fields in order, with blanks between: "index:4d value:4 -:1*8". Behind the name
// stands ':'; the width; 'd' where it is decimal, 'i' where it may
// be below 0 as well; "*8": eight such.
constexpr const char* requestField_next(const char* layout, RequestField& field);

// Whether the driver fills the field.
constexpr bool requestField_isFilled(const RequestDescription& request, const RequestField& field)
{
    return field.offset >= request.fills &&
           field.offset < size_t{request.fills} + request.fills_count;
}

// -------------------------------------------------------------------------------------------------

constexpr unsigned requestField_number(const char*& text)
{
    unsigned number = 0;
    while (*text >= '0' && *text <= '9') {
        number = number * 10 + static_cast<unsigned>(*text++ - '0');
    }
    return number;
}

constexpr const char* requestField_next(const char* layout, RequestField& field)
{
    if (*layout == '\0') {
        return nullptr;
    }
    field.offset += size_t{field.width} * field.count;
    const char* end = layout;
    while (*end != ':') {
        ++end;
    }
    field.name = {layout, static_cast<size_t>(end - layout)};
    ++end;
    field.width = requestField_number(end);
    field.negative = *end == 'i';
    field.decimal = field.negative || *end == 'd';
    end += field.decimal ? 1 : 0;
    field.count = 1;
    if (*end == '*') {
        field.count = requestField_number(++end);
    }
    return *end == ' ' ? end + 1 : end;
}
