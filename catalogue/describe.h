// What the descriptions in this folder are written with. All of it is evaluated by the compiler: a
// description that does not agree with the public header does not compile.
#pragma once

#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

#include "catalogue/catalogue.h"
#include "maint/typed_call.h"

void description_isWrong(); // nowhere defined: such a description does not compile

// Fields ------------------------------------------------------------------------------------------

// A member of a record: FIELD(RtcDateTime, year), FIELD(LedStateRecord, group1.element).
#define FIELD(Record, member)                                                                      \
    field_of<std::remove_reference_t<decltype(std::declval<Record&>().member)>>(                   \
        #member, offsetof(Record, member))

// A record that is one number is one field, "value".
template <class Number> consteval Field value_of();

struct Range {
    uint32_t least;
    uint32_t most;
};

template <class Member> consteval Field field_of(const char* name, size_t offset)
{
    using Element = std::remove_all_extents_t<Member>;
    static_assert(std::is_integral_v<Element>);
    Field field{};
    field.name = name;
    field.offset = static_cast<uint16_t>(offset);
    field.width = sizeof(Element);
    field.count = sizeof(Member) / sizeof(Element);
    field.note = "";
    field.most = static_cast<uint32_t>((uint64_t{1} << 8 * sizeof(Element)) - 1);
    return field;
}

template <class Number> consteval Field value_of()
{
    return field_of<Number>("value", 0);
}

consteval Field field_as(Field field, Kind kind, const char* note)
{
    field.kind = kind;
    field.note = note;
    return field;
}

consteval Field field_ranged(Field field, Range range)
{
    if (range.least > range.most || range.most > field.most) {
        description_isWrong();
    }
    field.least = range.least;
    field.most = range.most;
    return field;
}

consteval Field number(Field field, const char* note = "")
{
    return field_as(field, Kind::kNumber, note);
}

consteval Field number(Field field, Range range, const char* note = "")
{
    return field_ranged(number(field, note), range);
}

consteval Field hex(Field field, const char* note = "")
{
    return field_as(field, Kind::kHex, note);
}

consteval Field hex(Field field, Range range, const char* note = "")
{
    return field_ranged(hex(field, note), range);
}

consteval Field flag(Field field, const char* note = "")
{
    return field_ranged(field_as(field, Kind::kFlag, note), {0, 1});
}

// Bits 0 to `bits` - 1 stand for something.
consteval Field bits(Field field, unsigned bits, const char* note = "")
{
    return field_ranged(field_as(field, Kind::kBits, note),
                        {0, static_cast<uint32_t>((uint64_t{1} << bits) - 1)});
}

// The codes are the only values that a command takes.
template <size_t kCount>
consteval Field code(Field field, const CodeName (&codes)[kCount], const char* note = "")
{
    field = field_as(field, Kind::kCode, note);
    static_assert(kCount <= UINT8_MAX);
    field.first_code = codes;
    field.code_count = kCount;
    return field;
}

// Bytes that belong together, `width` to an element.
consteval Field field_joined(Field field, Kind kind, unsigned width, const char* note)
{
    if (field.width != 1 || width == 0 || field.count % width != 0) {
        description_isWrong();
    }
    field = field_as(field, kind, note);
    field.count = static_cast<uint8_t>(field.count / width);
    field.width = static_cast<uint16_t>(width);
    field.most = 0;
    return field;
}

consteval Field ipv4(Field field, const char* note = "")
{
    return field_joined(field, Kind::kIpv4, 4, note);
}

consteval Field address6(Field field, const char* note = "")
{
    return field_joined(field, Kind::kAddress6, 6, note);
}

consteval Field text(Field field, const char* note = "")
{
    return field_joined(field, Kind::kText, field.count, note);
}

consteval Field bytes(Field field, const char* note = "")
{
    return field_joined(field, Kind::kBytes, field.count, note);
}

consteval Field in_unit(Field field, Unit unit)
{
    field.unit = unit;
    return field;
}

// A number that selects what is reported.
consteval Field index(Field field, Sweep sweep)
{
    if (field.count != 1 || field.most == 0 || sweep.step == 0 || sweep.first < field.least ||
        sweep.last > field.most || sweep.first > sweep.last) {
        description_isWrong();
    }
    field.role = Role::kIndex;
    field.sweep = sweep;
    return field;
}

// All values of the field's range.
consteval Field index(Field field)
{
    if (field.most > UINT16_MAX) {
        description_isWrong();
    }
    return index(field, {static_cast<uint16_t>(field.least), static_cast<uint16_t>(field.most), 1});
}

// Bytes whose layout, and how many of them, are the driver's own.
consteval Field driver_sized(const char* name, const char* note)
{
    Field field{};
    field.name = name;
    field.width = DEVICE_RECORD_MAX;
    field.count = 1;
    field.kind = Kind::kBytes;
    field.role = Role::kDriverSized;
    field.note = note;
    return field;
}

consteval Field own_id(Field field)
{
    field.role = Role::kOwnId;
    return field;
}

// Sets of fields ----------------------------------------------------------------------------------

// Three procedures are constexpr: clang 14 lets no consteval one take what another one was given.
constexpr FieldSet all(std::span<const Field> fields)
{
    return static_cast<FieldSet>((uint64_t{1} << fields.size()) - 1);
}

// These, named with blanks between: only(kFields, "port index").
consteval FieldSet only(std::span<const Field> fields, std::string_view names)
{
    FieldSet set = 0;
    while (!names.empty()) {
        const size_t end = names.find(' ');
        const std::string_view name = names.substr(0, end);
        names = end == std::string_view::npos ? std::string_view{} : names.substr(end + 1);
        size_t number = 0;
        while (number < fields.size() && name != fields[number].name) {
            ++number;
        }
        if (number == fields.size()) {
            description_isWrong();
        }
        set |= FieldSet{1} << number;
    }
    return set;
}

consteval FieldSet but(std::span<const Field> fields, std::string_view names)
{
    return all(fields) & ~only(fields, names);
}

// Commands ----------------------------------------------------------------------------------------

// Fields that lie within the record, apart from one another, with different names.
constexpr bool fields_fit(std::span<const Field> fields, size_t record)
{
    for (size_t i = 0; i < fields.size(); ++i) {
        const size_t end = fields[i].offset + size_t{fields[i].width} * fields[i].count;
        if (end > record) {
            return false;
        }
        for (size_t j = 0; j < i; ++j) {
            const size_t other = fields[j].offset + size_t{fields[j].width} * fields[j].count;
            if ((fields[i].offset < other && fields[j].offset < end) ||
                std::string_view{fields[i].name} == fields[j].name) {
                return false;
            }
        }
    }
    return true;
}

constexpr bool results_sorted(std::span<const ResultMeaning> results)
{
    const auto place = [](int32_t result) { return result >= 0 ? result : 100 - result; };
    for (size_t i = 1; i < results.size(); ++i) {
        if (place(results[i - 1].result) >= place(results[i].result)) {
            return false;
        }
    }
    return !results.empty() && results[0].result == 0;
}

// What a description says itself; CommandDescription tells more of each.
struct Said {
    const char* summary = nullptr;
    std::span<const Field> fields{};
    FieldSet in = 0;
    FieldSet out = 0;
    std::span<const ResultMeaning> results{};
    Places reads = 0;
    Places changes = 0;
    const char* stays = nullptr;
    const char* note = nullptr;
    bool clears = false;
};

// Bytes of the record behind the pointer that a typed call takes.
template <class Argument, class Record> consteval uint16_t record_size()
{
    if constexpr (!std::is_void_v<Record>) {
        return sizeof(Record);
    } else {
        return std::is_const_v<Argument> ? DEVICE_RECORD_MAX : 0; // the driver's own record, none
    }
}

// Checks a description against the command's typed call, and completes it.
template <DeviceCommandCode kCode>
consteval CommandDescription described(const char* name, const Said& said)
{
    using Types = maint::Command<kCode>;
    using Argument = std::remove_pointer_t<typename Types::Argument>;
    static_assert(kCode <= UINT16_MAX);
    const uint16_t record = record_size<Argument, typename Types::Record>();
    if (!fields_fit(said.fields, record) || !results_sorted(said.results) ||
        ((said.in | said.out) & ~all(said.fields)) != 0 ||
        (std::is_const_v<Argument> && said.out != 0) || (record == 0) != said.fields.empty() ||
        (record != 0 && (said.in | said.out) == 0) || (said.reads | said.changes) == 0 ||
        std::string_view{said.summary}.size() > 60) {
        description_isWrong();
    }
    return {.name = name,
            .summary = said.summary,
            .stays = said.stays,
            .note = said.note,
            .first_field = said.fields.data(),
            .first_result = said.results.data(),
            .in = said.in,
            .out = said.out,
            .reads = said.reads,
            .changes = said.changes,
            .code = kCode,
            .record = record,
            .field_count = static_cast<uint8_t>(said.fields.size()),
            .result_count = static_cast<uint8_t>(said.results.size()),
            .clears = said.clears};
}

#define COMMAND(CODE, ...) described<CODE>(#CODE, Said __VA_ARGS__)

// Places and results that many commands share -----------------------------------------------------

constexpr Places kFpga = place_bit(Place::kFpga);
constexpr Places kConfigLocked = place_bit(Place::kConfig) | place_bit(Place::kSaveLock);

inline constexpr const char* kDone = "done";
inline constexpr const char* kNotOpened = "the device cannot be opened";
inline constexpr const char* kNotRead = "the device's answer cannot be read";
inline constexpr const char* kNotWritten = "the device refuses the write";
inline constexpr const char* kNotAllRead =
    "a register cannot be read; what was written before stays";
inline constexpr const char* kPartlyWritten =
    "the device refuses a write; what was written before stays";
inline constexpr const char* kOutOfRange = "an argument is out of range; no device was touched";
inline constexpr const char* kDeviceKeeps = "The device keeps what was written.";

inline constexpr ResultMeaning kReportResults[] = {{0, kDone}, {-1, kNotOpened}, {-2, kNotRead}};
inline constexpr ResultMeaning kWriteResults[] = {{0, kDone}, {-1, kNotOpened}, {-4, kNotWritten}};
inline constexpr ResultMeaning kChangeResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, kNotRead}, {-4, kNotWritten}};
inline constexpr ResultMeaning kIndexedReportResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, kNotRead}, {-5, kOutOfRange}};
inline constexpr ResultMeaning kIndexedWriteResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-4, kNotWritten}, {-5, kOutOfRange}};
inline constexpr ResultMeaning kIndexedChangeResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, kNotRead}, {-4, kNotWritten}, {-5, kOutOfRange}};
inline constexpr ResultMeaning kWriteAsReadResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, kNotWritten}};
