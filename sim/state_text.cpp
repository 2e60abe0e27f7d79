#include "sim/state_text.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <limits>
#include <type_traits>

namespace
{

using Record = FpgaModel::Record;

constexpr uint32_t kWordsFirst = 0x6B01;
constexpr uint32_t kWordsLast = 0x6BFF;
constexpr std::array<uint16_t, 7> kPhyAddresses = {9, 1, 2, 3, 4, 5, 8}; // by port
constexpr size_t kLongestWord = 256; // bytes that a request for a word may fill

__attribute__((format(printf, 1, 2))) std::string text_of(const char* format, ...)
{
    char text[128];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments); // NOLINT(clang-analyzer-valist.Uninitialized)
    va_end(arguments);
    return text;
}

std::string hex_text(const Record& held, size_t size)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(i < held.size() ? held[i] : '\0');
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

bool bitmap_is(uint32_t request)
{
    return request == 0x6B3B || request == 0x6B3D || request == 0x6B8D;
}

const RequestForm* form_find(uint32_t request)
{
    const RequestForm* form = requestForm_find(request);
    return form != nullptr ? form : rtcRequestForm_find(request);
}

// Reading -----------------------------------------------------------------------------------

// What is being put: the words between the dots behind the first one as numbers, and the value.
struct Put {
    UnitState& state;
    std::array<uint32_t, 2> key{};
    std::string_view value;
    int64_t now = 0;
    std::string fault{};

    bool refuse(std::string why)
    {
        fault = std::move(why);
        return false;
    }
};

template <class Number> bool number_take(Put& put, std::string_view text, Number& held)
{
    uint64_t number = 0;
    if (!number_parse(text, std::numeric_limits<Number>::max(), number, put.fault)) {
        return false;
    }
    held = static_cast<Number>(number);
    return true;
}

bool signed_take(Put& put, std::string_view text, int64_t least, int64_t most, int64_t& held)
{
    const bool below_zero = !text.empty() && text.front() == '-';
    uint64_t number = 0;
    const uint64_t limit = below_zero ? -static_cast<uint64_t>(least) : static_cast<uint64_t>(most);
    if (!number_parse(below_zero ? text.substr(1) : text, limit, number, put.fault)) {
        if (below_zero && number > limit) {
            put.fault = text_of("below %" PRId64, least);
        }
        return false;
    }
    held = static_cast<int64_t>(below_zero ? -number : number);
    return true;
}

bool int_take(Put& put, int& held)
{
    int64_t number = 0;
    if (!signed_take(put, put.value, INT32_MIN, INT32_MAX, number)) {
        return false;
    }
    held = static_cast<int>(number);
    return true;
}

bool flag_take(Put& put, bool& held)
{
    if (put.value != "0" && put.value != "1") {
        return put.refuse("neither 0 nor 1");
    }
    held = put.value == "1";
    return true;
}

int digit_value(char digit)
{
    const char lower = static_cast<char>(digit | 0x20);
    return digit >= '0' && digit <= '9'   ? digit - '0'
           : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10
                                          : -1;
}

bool record_take(Put& put, size_t size, Record& held)
{
    if (put.value.size() != 2 * size) {
        return put.refuse(text_of("not %zu bytes in hex, two digits each", size));
    }
    Record record;
    for (size_t i = 0; i < put.value.size(); i += 2) {
        const int high = digit_value(put.value[i]);
        const int low = digit_value(put.value[i + 1]);
        if (high < 0 || low < 0) {
            return put.refuse("not hex digits alone");
        }
        record += static_cast<char>(high << 4 | low);
    }
    held = std::move(record);
    return true;
}

// The text up to the next separator, which both are taken from the rest.
std::string_view part_take(std::string_view& rest, char separator)
{
    const size_t end = std::min(rest.find(separator), rest.size());
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return part;
}

bool request_known(Put& put)
{
    return form_find(put.key[0]) != nullptr || put.refuse("no such request");
}

// Tables of records, all alike --------------------------------------------------------------

template <auto Table, size_t Size>
void records_print(const UnitState& state, const char* kind, std::string& text)
{
    for (const auto& [key, record] : state.fpga.*Table) {
        text += text_of("%s.%" PRIu32 "=", kind, static_cast<uint32_t>(key)) +
                hex_text(record, Size) + "\n";
    }
}

template <auto Table, size_t Size> bool records_put(Put& put)
{
    using Key = typename std::remove_reference_t<decltype(put.state.fpga.*Table)>::key_type;
    Record record;
    if (!record_take(put, Size, record)) {
        return false;
    }
    (put.state.fpga.*Table)[static_cast<Key>(put.key[0])] = std::move(record);
    return true;
}

template <auto Field, size_t Size>
void record_print(const UnitState& state, const char* kind, std::string& text)
{
    text += kind + ("=" + hex_text(state.fpga.*Field, Size)) + "\n";
}

template <auto Field, size_t Size> bool record_put(Put& put)
{
    return record_take(put, Size, put.state.fpga.*Field);
}

// Tables of words -----------------------------------------------------------------------------

template <auto Table> void words_print(const UnitState& state, const char* kind, std::string& text)
{
    using Value = typename std::remove_reference_t<decltype(state.fpga.*Table)>::mapped_type;
    for (const auto& [key, value] : state.fpga.*Table) {
        text += text_of("%s.%" PRIu32 "=0x%0*" PRIX32 "\n", kind, static_cast<uint32_t>(key),
                        static_cast<int>(2 * sizeof(Value)), static_cast<uint32_t>(value));
    }
}

template <auto Table> bool words_put(Put& put)
{
    using Entries = std::remove_reference_t<decltype(put.state.fpga.*Table)>;
    typename Entries::mapped_type value{};
    if (!number_take(put, put.value, value)) {
        return false;
    }
    (put.state.fpga.*Table)[static_cast<typename Entries::key_type>(put.key[0])] = value;
    return true;
}

template <auto Table>
void counters_print(const UnitState& state, const char* kind, std::string& text)
{
    for (const auto& [key, value] : state.fpga.*Table) {
        text +=
            text_of("%s.%" PRIu32 ".%" PRIu32 "=%" PRIu32 "\n", kind, key.first, key.second, value);
    }
}

template <auto Table> bool counters_put(Put& put)
{
    uint32_t value = 0;
    if (!number_take(put, put.value, value)) {
        return false;
    }
    (put.state.fpga.*Table)[{put.key[0], put.key[1]}] = value;
    return true;
}

// The others ----------------------------------------------------------------------------------

void word_print(const UnitState& state, const char* kind, std::string& text)
{
    for (const auto& [request, value] : state.fpga.words) {
        text += text_of("%s.0x%04" PRIX32 "=0x%0*" PRIX32 "\n", kind, request,
                        bitmap_is(request) ? 8 : 4, value);
    }
}

bool word_put(Put& put)
{
    const uint32_t request = put.key[0];
    if (request < kWordsFirst || request > kWordsLast) {
        return put.refuse("no such word");
    }
    uint64_t value = 0;
    if (!number_parse(put.value, bitmap_is(request) ? UINT32_MAX : UINT16_MAX, value, put.fault)) {
        return false;
    }
    put.state.fpga.words[request] = static_cast<uint32_t>(value);
    return true;
}

void register_print(const UnitState& state, const char* kind, std::string& text)
{
    for (const auto& [address, value] : state.fpga.registers) {
        text += text_of("%s.0x%04" PRIX32 "=0x%04X\n", kind, address, value);
    }
}

void registerHigh_print(const UnitState& state, const char* kind, std::string& text)
{
    text += text_of("%s=0x%04X\n", kind, state.fpga.register_high);
}

bool registerHigh_put(Put& put)
{
    return number_take(put, put.value, put.state.fpga.register_high);
}

void phy_print(const UnitState& state, const char* kind, std::string& text)
{
    for (size_t port = 0; port < kPhyAddresses.size(); ++port) {
        const auto phy = state.fpga.phys.find(kPhyAddresses[port]);
        for (size_t i = 0; phy != state.fpga.phys.end() && i < phy->second.size(); ++i) {
            text += text_of("%s.%zu.%zu=0x%04X\n", kind, port, i, phy->second[i]);
        }
    }
}

void phyAddress_print(const UnitState& state, const char* kind, std::string& text)
{
    for (const auto& [address, registers] : state.fpga.phys) {
        if (std::ranges::find(kPhyAddresses, address) != kPhyAddresses.end()) {
            continue;
        }
        for (size_t i = 0; i < registers.size(); ++i) {
            text += text_of("%s.%u.%zu=0x%04X\n", kind, address, i, registers[i]);
        }
    }
}

bool phyAddress_put(Put& put)
{
    uint16_t value = 0;
    if (!number_take(put, put.value, value)) {
        return false;
    }
    put.state.fpga.phys[static_cast<uint16_t>(put.key[0])].at(put.key[1]) = value;
    return true;
}

bool phy_put(Put& put)
{
    put.key[0] = kPhyAddresses.at(put.key[0]);
    return phyAddress_put(put);
}

void unitWords_print(const UnitState& state, const char* kind, std::string& text)
{
    for (const auto& [key, value] : state.fpga.unit_words) {
        text += text_of("%s.%" PRIu32 ".%u=0x%04X,0x%04X\n", kind, key.first, key.second,
                        value.first, value.second);
    }
}

bool unitWords_put(Put& put)
{
    if (std::ranges::count(put.value, ',') != 1) {
        return put.refuse("not two numbers with a comma between");
    }
    std::pair<uint16_t, uint16_t> words;
    std::string_view rest = put.value;
    if (!number_take(put, part_take(rest, ','), words.first) ||
        !number_take(put, rest, words.second)) {
        return false;
    }
    put.state.fpga.unit_words[{put.key[0], static_cast<uint16_t>(put.key[1])}] = words;
    return true;
}

void written_print(const UnitState& state, const char* kind, std::string& text)
{
    for (const auto& [request, record] : state.fpga.written) {
        text +=
            text_of("%s.0x%04" PRIX32 "=", kind, request) + hex_text(record, record.size()) + "\n";
    }
}

bool written_put(Put& put)
{
    const RequestForm* form = requestForm_find(put.key[0]);
    if (form == nullptr || form->argument != Argument::kRecord || form->fills_count != 0) {
        return put.refuse("no request that writes a record");
    }
    Record record;
    if (!record_take(put, form->size, record)) {
        return false;
    }
    put.state.fpga.written[put.key[0]] = std::move(record);
    return true;
}

void answer_print(const UnitState& state, const char* kind, std::string& text)
{
    for (const auto& [request, result] : state.fpga.results) {
        text += text_of("%s.0x%04" PRIX32 "=%d\n", kind, request, result);
    }
}

bool answer_put(Put& put)
{
    int result = 0;
    if (requestForm_find(put.key[0]) == nullptr) {
        return put.refuse("no such request");
    }
    if (!int_take(put, result)) {
        return false;
    }
    put.state.fpga.results[put.key[0]] = result;
    return true;
}

void filled_print(const UnitState& state, const char* kind, std::string& text)
{
    for (const auto& [request, size] : state.fpga.filled) {
        text += text_of("%s.0x%04" PRIX32 "=%zu\n", kind, request, size);
    }
}

bool filled_put(Put& put)
{
    const RequestForm* form = requestForm_find(put.key[0]);
    if (form == nullptr ||
        (form->argument != Argument::kWord && form->argument != Argument::kMap)) {
        return put.refuse("no request that reads a word or a bitmap");
    }
    uint64_t size = 0;
    if (!number_parse(put.value, kLongestWord, size, put.fault)) {
        return false;
    }
    put.state.fpga.filled[put.key[0]] = static_cast<size_t>(size);
    return true;
}

void fillsWhenFailing_print(const UnitState& state, const char* kind, std::string& text)
{
    text += text_of("%s=%d\n", kind, state.fpga.fills_when_failing ? 1 : 0);
}

bool fillsWhenFailing_put(Put& put)
{
    return flag_take(put, put.state.fpga.fills_when_failing);
}

void fail_print(const UnitState& state, const char* kind, std::string& text)
{
    for (const auto& [request, failure] : state.failures) {
        text += text_of("%s.0x%04" PRIX32 "=%" PRIu32 ",%" PRIu32 ",%s\n", kind, request,
                        failure.nth, failure.count, errorName_text(failure.error).c_str());
    }
}

// "0" takes a failure away.
bool fail_put(Put& put)
{
    if (!request_known(put)) {
        return false;
    }
    if (put.value == "0") {
        put.state.failures.erase(put.key[0]);
        return true;
    }
    if (std::ranges::count(put.value, ',') != 2) {
        return put.refuse("neither 0 nor NTH,COUNT,ERROR");
    }
    RequestFailure failure;
    std::string_view rest = put.value;
    if (!number_take(put, part_take(rest, ','), failure.nth) ||
        !number_take(put, part_take(rest, ','), failure.count)) {
        return false;
    }
    if (failure.nth == 0) {
        return put.refuse("the first that fails is 1 or above");
    }
    failure.error = errorName_find(rest);
    if (failure.error == 0) {
        return put.refuse("no such error: " + text_shown(rest));
    }
    put.state.failures[put.key[0]] = failure;
    return true;
}

// The clock -------------------------------------------------------------------------------------

// A time of the calendar as such; any other as its nine numbers.
std::string time_text(const RtcTime& time)
{
    int64_t seconds = 0;
    if (rtcTime_seconds(time, seconds) && rtcTime_ofSeconds(seconds) == time) {
        return text_of("%04d-%02d-%02dT%02d:%02d:%02d", time[5] + 1900, time[4] + 1, time[3],
                       time[2], time[1], time[0]);
    }
    std::string text;
    for (const int32_t part : time) {
        text += (text.empty() ? "" : ",") + std::to_string(part);
    }
    return text;
}

bool calendar_take(std::string_view text, RtcTime& time)
{
    static constexpr std::string_view kForm = "0000-00-00T00:00:00";
    if (text.size() != kForm.size()) {
        return false;
    }
    for (size_t i = 0; i < text.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (kForm[i] == '0' ? !digit : text[i] != kForm[i]) {
            return false;
        }
    }
    const auto number = [&](size_t at, size_t digits) {
        int32_t value = 0;
        for (const char digit : text.substr(at, digits)) {
            value = value * 10 + (digit - '0');
        }
        return value;
    };
    const RtcTime read = {number(17, 2),
                          number(14, 2),
                          number(11, 2),
                          number(8, 2),
                          number(5, 2) - 1,
                          number(0, 4) - 1900,
                          0,
                          0,
                          0};
    int64_t seconds = 0;
    if (!rtcTime_seconds(read, seconds)) {
        return false;
    }
    time = rtcTime_ofSeconds(seconds);
    return true;
}

bool time_put(Put& put)
{
    RtcTime time{};
    if (!calendar_take(put.value, time)) {
        if (std::ranges::count(put.value, ',') + 1 != static_cast<ptrdiff_t>(time.size())) {
            return put.refuse("not a time like 2026-11-21T10:20:30");
        }
        std::string_view rest = put.value;
        for (int32_t& part : time) {
            int64_t number = 0;
            if (!signed_take(put, part_take(rest, ','), INT32_MIN, INT32_MAX, number)) {
                return false;
            }
            part = static_cast<int32_t>(number);
        }
    }
    put.state.rtc.time = time;
    put.state.rtc_since = put.now;
    return true;
}

// A clock that begins or ends to run shows the same time before and after.
bool runs_put(Put& put)
{
    bool runs = false;
    if (!flag_take(put, runs)) {
        return false;
    }
    if (runs != put.state.rtc_runs) {
        put.state.rtc.time = unitState_rtcTime(put.state, put.now);
        put.state.rtc_since = put.now;
        put.state.rtc_runs = runs;
    }
    return true;
}

bool since_put(Put& put)
{
    return signed_take(put, put.value, INT64_MIN, INT64_MAX, put.state.rtc_since);
}

bool status_put(Put& put)
{
    return number_take(put, put.value, put.state.rtc.status);
}

bool rtcAnswer_put(Put& put)
{
    return int_take(put, put.state.rtc.result);
}

bool overwrites_put(Put& put)
{
    return flag_take(put, put.state.rtc.overwrites);
}

bool difference_put(Put& put)
{
    return signed_take(put, put.value, INT64_MIN, INT64_MAX, put.state.clock_difference);
}

void clock_print(const UnitState& state, std::optional<int64_t> now, std::string& text)
{
    text += text_of("rtc.runs=%d\n", state.rtc_runs ? 1 : 0);
    text += "rtc.time=" + time_text(now ? unitState_rtcTime(state, *now) : state.rtc.time) + "\n";
    if (!now) {
        text += text_of("rtc.since=%" PRId64 "\n", state.rtc_since);
    }
    text += text_of("rtc.status=0x%08" PRIX32 "\n", state.rtc.status);
    text += text_of("rtc.answer=%d\n", state.rtc.result);
    text += text_of("rtc.overwrites=%d\n", state.rtc.overwrites ? 1 : 0);
    text += text_of("clock.difference=%" PRId64 "\n", state.clock_difference);
}

// Errors that a driver returns, by name.
struct Error {
    int number;
    std::string_view name;
};

constexpr Error kErrors[] = {{EPERM, "EPERM"},         {ENOENT, "ENOENT"},
                             {EINTR, "EINTR"},         {EIO, "EIO"},
                             {ENXIO, "ENXIO"},         {EBADF, "EBADF"},
                             {EAGAIN, "EAGAIN"},       {ENOMEM, "ENOMEM"},
                             {EACCES, "EACCES"},       {EFAULT, "EFAULT"},
                             {EBUSY, "EBUSY"},         {EEXIST, "EEXIST"},
                             {ENODEV, "ENODEV"},       {EINVAL, "EINVAL"},
                             {ENFILE, "ENFILE"},       {EMFILE, "EMFILE"},
                             {ENOTTY, "ENOTTY"},       {EFBIG, "EFBIG"},
                             {ENOSPC, "ENOSPC"},       {EROFS, "EROFS"},
                             {EDOM, "EDOM"},           {ERANGE, "ERANGE"},
                             {ENODATA, "ENODATA"},     {ETIME, "ETIME"},
                             {EPROTO, "EPROTO"},       {EBADMSG, "EBADMSG"},
                             {EOVERFLOW, "EOVERFLOW"}, {EOPNOTSUPP, "EOPNOTSUPP"},
                             {EMSGSIZE, "EMSGSIZE"},   {ECONNRESET, "ECONNRESET"},
                             {ETIMEDOUT, "ETIMEDOUT"}, {ECANCELED, "ECANCELED"},
                             {EREMOTEIO, "EREMOTEIO"}};

// All kinds of items ---------------------------------------------------------------------------

struct Kind {
    const char* name;            // the clock's have their dot in it
    std::array<int64_t, 2> last; // the greatest number behind each dot; -1: there is none
    void (*print)(const UnitState& state, const char* kind, std::string& text);
    bool (*put)(Put& put);
};

constexpr int64_t kNone = -1;
constexpr int64_t kAny = UINT32_MAX;

using F = FpgaModel;

constexpr Kind kKinds[] = {
    {"device_info",
     {kNone, kNone},
     record_print<&F::device_info, 8>,
     record_put<&F::device_info, 8>},
    {"own_address",
     {kNone, kNone},
     record_print<&F::own_address, 4>,
     record_put<&F::own_address, 4>},
    {"own_address_set",
     {kNone, kNone},
     record_print<&F::own_address_set, 16>,
     record_put<&F::own_address_set, 16>},
    {"word", {kAny, kNone}, word_print, word_put},
    {"register", {kAny, kNone}, register_print, words_put<&F::registers>},
    {"register_high", {kNone, kNone}, registerHigh_print, registerHigh_put},
    {"phy", {kPhyAddresses.size() - 1, 31}, phy_print, phy_put},
    {"phy_address", {UINT16_MAX, 31}, phyAddress_print, phyAddress_put},
    {"switch_port",
     {UINT8_MAX, kNone},
     records_print<&F::switch_ports, 8>,
     records_put<&F::switch_ports, 8>},
    {"address", {kAny, kNone}, records_print<&F::addresses, 4>, records_put<&F::addresses, 4>},
    {"address_set",
     {kAny, kNone},
     records_print<&F::address_sets, 16>,
     records_put<&F::address_sets, 16>},
    {"id_entry", {kAny, kNone}, records_print<&F::id_entries, 12>, records_put<&F::id_entries, 12>},
    {"id_value", {kAny, kNone}, words_print<&F::id_values>, words_put<&F::id_values>},
    {"unit_words", {kAny, UINT16_MAX}, unitWords_print, unitWords_put},
    {"address_pair",
     {kAny, kNone},
     records_print<&F::address_pairs, 20>,
     records_put<&F::address_pairs, 20>},
    {"address_table",
     {kAny, kNone},
     records_print<&F::address_table, 24>,
     records_put<&F::address_table, 24>},
    {"port_entry", {UINT16_MAX, kNone}, words_print<&F::port_entries>, words_put<&F::port_entries>},
    {"rule", {UINT16_MAX, kNone}, records_print<&F::rules, 80>, records_put<&F::rules, 80>},
    {"indexed_word", {kAny, kNone}, words_print<&F::indexed_words>, words_put<&F::indexed_words>},
    {"counter", {kAny, kAny}, counters_print<&F::counters>, counters_put<&F::counters>},
    {"counter_alt", {kAny, kAny}, counters_print<&F::counters_alt>, counters_put<&F::counters_alt>},
    {"written", {kAny, kNone}, written_print, written_put},
    {"answer", {kAny, kNone}, answer_print, answer_put},
    {"filled", {kAny, kNone}, filled_print, filled_put},
    {"fills_when_failing", {kNone, kNone}, fillsWhenFailing_print, fillsWhenFailing_put},
    {"fail", {kAny, kNone}, fail_print, fail_put},
    {"rtc.runs", {kNone, kNone}, nullptr, runs_put},
    {"rtc.time", {kNone, kNone}, nullptr, time_put},
    {"rtc.since", {kNone, kNone}, nullptr, since_put},
    {"rtc.status", {kNone, kNone}, nullptr, status_put},
    {"rtc.answer", {kNone, kNone}, nullptr, rtcAnswer_put},
    {"rtc.overwrites", {kNone, kNone}, nullptr, overwrites_put},
    {"clock.difference", {kNone, kNone}, nullptr, difference_put},
};

const Kind* kind_find(std::string_view name)
{
    const auto* kind =
        std::ranges::find_if(kKinds, [&](const Kind& row) { return row.name == name; });
    return kind == std::end(kKinds) ? nullptr : kind;
}

bool item_put(Put& put, std::string_view name)
{
    const Kind* kind = kind_find(name);
    std::string_view rest;
    if (kind == nullptr) {
        rest = name;
        kind = kind_find(part_take(rest, '.'));
    }
    if (kind == nullptr) {
        return put.refuse("no such item");
    }
    for (size_t i = 0; i < kind->last.size() && kind->last[i] != kNone; ++i) {
        uint64_t number = 0;
        std::string fault;
        if (!number_parse(part_take(rest, '.'), static_cast<uint64_t>(kind->last[i]), number,
                          fault)) {
            return put.refuse(text_of("number %zu behind %s: ", i + 1, kind->name) + fault);
        }
        put.key.at(i) = static_cast<uint32_t>(number);
    }
    if (!rest.empty() || name.back() == '.') {
        return put.refuse(text_of("too many numbers behind %s", kind->name));
    }
    return kind->put(put);
}

} // namespace

bool number_parse(std::string_view text, uint64_t limit, uint64_t& number, std::string& fault)
{
    number = 0;
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    const std::string_view digits = hex ? text.substr(2) : text;
    const unsigned base = hex ? 16 : 10;
    if (digits.empty()) {
        fault = text.empty() ? "a number is missing" : "not a number: " + text_shown(text);
        return false;
    }
    bool above = false;
    for (const char digit : digits) {
        const int value = digit_value(digit);
        if (value < 0 || static_cast<unsigned>(value) >= base) {
            fault = "not a number: " + text_shown(text);
            number = 0;
            return false;
        }
        above = above || number > (limit - static_cast<unsigned>(value)) / base ||
                static_cast<unsigned>(value) > limit;
        number = above ? UINT64_MAX : number * base + static_cast<unsigned>(value);
    }
    if (above) {
        fault = hex ? text_of("above 0x%" PRIX64, limit) : text_of("above %" PRIu64, limit);
        return false;
    }
    return true;
}

std::string text_shown(std::string_view text)
{
    constexpr size_t kLongest = 60;
    std::string shown(text.substr(0, kLongest));
    std::ranges::replace_if(
        shown, [](char c) { return c < ' ' || c > '~'; }, '?');
    return text.size() > kLongest ? shown + "..." : shown;
}

std::string errorName_text(int error)
{
    const auto* row =
        std::ranges::find_if(kErrors, [=](const Error& known) { return known.number == error; });
    return row == std::end(kErrors) ? std::string() : std::string(row->name);
}

int errorName_find(std::string_view name)
{
    const auto* row =
        std::ranges::find_if(kErrors, [=](const Error& known) { return known.name == name; });
    return row == std::end(kErrors) ? 0 : row->number;
}

std::string stateText_make(const UnitState& state, std::optional<int64_t> now)
{
    std::string text;
    for (const Kind& kind : kKinds) {
        if (kind.print != nullptr) {
            kind.print(state, kind.name, text);
        }
    }
    clock_print(state, now, text);
    return text;
}

bool stateText_put(UnitState& state, std::string_view item, int64_t now, std::string& fault)
{
    const size_t equals = item.find('=');
    if (equals == std::string_view::npos || equals == 0) {
        fault = text_shown(item) + ": not of the form ITEM=VALUE";
        return false;
    }
    Put put{state, {}, item.substr(equals + 1), now};
    const std::string_view name = item.substr(0, equals);
    if (!item_put(put, name)) {
        fault = text_shown(item) + ": " + put.fault;
        return false;
    }
    return true;
}
