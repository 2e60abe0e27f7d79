#include "tools/maintsim/verbs.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <csignal>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <vector>

#include "catalogue/requests.h"
#include "sim/call_text.h"
#include "sim/state_text.h"
#include "tools/maintsim/unit_folder.h"
#include "tools/maintsim/unit_tool.h"

namespace
{

struct UnitClose {
    void operator()(Unit* unit) const { unit_close(unit); }
};
using OpenUnit = std::unique_ptr<Unit, UnitClose>;

// Options -----------------------------------------------------------------------------------

struct Option {
    std::string_view name; // "--nth"
    bool takes_value;
    std::string* value = nullptr; // "yes" for one that takes none
};

// Takes the options out of the words, wherever they stand. False: the one line was said.
bool options_take(Words words, std::span<const Option> options, std::vector<std::string>& rest)
{
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string_view word = words[i];
        if (!word.starts_with("-")) {
            rest.emplace_back(word);
            continue;
        }
        const std::string_view name = word.substr(0, word.find('='));
        const auto option =
            std::ranges::find_if(options, [&](const Option& known) { return known.name == name; });
        if (option == options.end()) {
            wrong_call("no such option: " + text_shown(word));
            return false;
        }
        if (!option->value->empty()) {
            wrong_call(std::string(name) + " is given twice");
            return false;
        }
        if (!option->takes_value) {
            if (name.size() != word.size()) {
                wrong_call(std::string(name) + " takes no value");
                return false;
            }
            *option->value = "yes";
        } else if (name.size() != word.size()) {
            *option->value = word.substr(name.size() + 1);
        } else if (i + 1 < words.size()) {
            *option->value = words[++i];
        }
        if (option->value->empty()) {
            wrong_call(std::string(name) + " needs a value");
            return false;
        }
    }
    return true;
}

bool rest_fits(const std::vector<std::string>& rest, size_t least, size_t most, const char* what)
{
    if (rest.size() < least) {
        wrong_call(std::string(what) + " is missing");
        return false;
    }
    if (rest.size() > most) {
        wrong_call("a word too many: " + text_shown(rest[most]));
        return false;
    }
    return true;
}

OpenUnit unit_get(const std::string& folder)
{
    std::string error;
    OpenUnit unit(unit_open(folder, error));
    if (unit == nullptr) {
        failure(error);
    }
    return unit;
}

// What was said is on its way, or could not be said.
int output_end()
{
    return fflush(stdout) == 0 && ferror(stdout) == 0
               ? kDone
               : failure(std::string("standard output: ") + strerror(errno));
}

// new, show, set, fail ------------------------------------------------------------------------

int new_run(const std::string& folder, Words words)
{
    NewUnit choice;
    std::string blank;
    const Option options[] = {{"--blank", false, &blank},
                              {"--image", true, &choice.image},
                              {"--config", true, &choice.config},
                              {"--snapshot", true, &choice.snapshot}};
    std::vector<std::string> rest;
    if (!options_take(words, options, rest) || !rest_fits(rest, 0, 0, "")) {
        return kWrongCall;
    }
    choice.blank = !blank.empty();
    std::string error;
    return unitFolder_make(folder, choice, error) ? kDone : failure(error);
}

int show_run(const std::string& folder, Words words)
{
    std::vector<std::string> rest;
    if (!options_take(words, {}, rest) || !rest_fits(rest, 0, 1, "")) {
        return kWrongCall;
    }
    const OpenUnit unit = unit_get(folder);
    std::string error;
    std::string text;
    if (unit == nullptr) {
        return kFailed;
    }
    if (!unit_text(unit.get(), text, error)) {
        return failure(error);
    }
    bool found = false;
    std::string_view lines = text;
    while (!lines.empty()) {
        const std::string_view line = lines.substr(0, lines.find('\n') + 1);
        if (rest.empty() || line.find(rest[0]) != std::string_view::npos) {
            fwrite(line.data(), 1, line.size(), stdout);
            found = true;
        }
        lines.remove_prefix(line.size());
    }
    return found ? output_end() : failure("no item has \"" + text_shown(rest[0]) + "\" in it");
}

int items_put(const std::string& folder, const std::vector<std::string>& items)
{
    const OpenUnit unit = unit_get(folder);
    std::string error;
    if (unit == nullptr) {
        return kFailed;
    }
    return unit_put(unit.get(), items, error) ? kDone : failure(error);
}

int set_run(const std::string& folder, Words words)
{
    std::vector<std::string> items;
    if (!options_take(words, {}, items) || !rest_fits(items, 1, SIZE_MAX, "ITEM=VALUE")) {
        return kWrongCall;
    }
    // What is wrong with an item, is wrong with it on any unit: before one is opened.
    UnitState any;
    std::string error;
    for (const std::string& item : items) {
        if (!stateText_put(any, item, 0, error)) {
            return wrong_call(error);
        }
    }
    return items_put(folder, items);
}

// "register read"; empty: the request has no name.
std::string name_of(uint32_t request)
{
    const RequestDescription* description = request_find(request);
    return description == nullptr ? ""
                                  : description->name + std::string(request_verb(*description));
}

// The number of a request that is given by its name, "register-read"; any other text as it is.
std::string request_number(const std::string& text)
{
    std::string name = text;
    std::ranges::replace(name, '-', ' ');
    const auto named = [&](uint32_t request) { return !name.empty() && name_of(request) == name; };
    char number[16];
    for (uint32_t request = 0x6B00; request <= 0x6BFF; ++request) {
        if (named(request)) {
            snprintf(number, sizeof number, "0x%04" PRIX32, request);
            return number;
        }
    }
    for (const uint32_t request : {kRtcTimeRead, kRtcTimeWrite, kRtcStatusRead, kRtcStatusWrite}) {
        if (named(request)) {
            snprintf(number, sizeof number, "0x%08" PRIX32, request);
            return number;
        }
    }
    return text;
}

bool request_known(uint32_t request)
{
    return requestForm_find(request) != nullptr || rtcRequestForm_find(request) != nullptr;
}

int fail_run(const std::string& folder, Words words)
{
    std::string nth;
    std::string count;
    std::string name;
    const Option options[] = {
        {"--nth", true, &nth}, {"--for", true, &count}, {"--errno", true, &name}};
    std::vector<std::string> rest;
    if (!options_take(words, options, rest) || !rest_fits(rest, 1, 1, "REQUEST")) {
        return kWrongCall;
    }
    const std::string request = request_number(rest[0]);
    uint64_t number = 0;
    std::string fault;
    if (!number_parse(request, UINT32_MAX, number, fault) ||
        !request_known(static_cast<uint32_t>(number))) {
        return wrong_call("no such request: " + text_shown(rest[0]));
    }
    nth = nth.empty() ? "1" : nth;
    count = count.empty() ? "1" : count;
    name = name.empty() ? "EIO" : name;
    const auto item_with = [&](const std::string& first, const std::string& most,
                               const std::string& error_name) {
        return "fail." + request + "=" + first + "," + most + "," + error_name;
    };
    // Each by itself: what is wrong is told in the words of the call.
    const struct {
        const char* option;
        const std::string& value;
        std::string item;
    } kParts[] = {{"--nth", nth, item_with(nth, "1", "EIO")},
                  {"--for", count, item_with("1", count, "EIO")},
                  {"--errno", name, item_with("1", "1", name)}};
    for (const auto& part : kParts) {
        UnitState any;
        std::string error;
        if (!stateText_put(any, part.item, 0, error)) {
            return wrong_call(part.option + (" " + text_shown(part.value)) +
                              error.substr(std::min(error.find(": "), error.size())));
        }
    }
    return items_put(folder, {item_with(nth, count, name)});
}

// calls -----------------------------------------------------------------------------------------

std::string bytes_text(std::string_view bytes, const char* between)
{
    std::string text;
    for (const char byte : bytes) {
        char pair[4];
        snprintf(pair, sizeof pair, "%02X", static_cast<unsigned char>(byte));
        text += (text.empty() ? "" : between) + std::string(pair);
    }
    return text;
}

bool clock_is(const UnitCall& call)
{
    return call.head.device == static_cast<uint8_t>(UnitDevice::kRtc);
}

const char* device_path(const UnitCall& call)
{
    return clock_is(call) ? "/dev/rtc" : "/dev/fpga";
}

const RequestForm* form_of(const UnitCall& call)
{
    return clock_is(call) ? rtcRequestForm_find(call.head.request)
                          : requestForm_find(call.head.request);
}

std::string program_of(const UnitCall& call)
{
    return {call.head.program, strnlen(call.head.program, sizeof call.head.program)};
}

// The machine's time, as people here read it.
std::string time_text(const UnitCall& call)
{
    constexpr int64_t kSecond = 1000000000;
    const time_t seconds = call.head.time / kSecond;
    tm local{};
    localtime_r(&seconds, &local);
    char text[64];
    const size_t length = strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    snprintf(text + length, sizeof text - length, ".%06d",
             static_cast<int>(call.head.time % kSecond / 1000));
    return text;
}

std::string result_text(const UnitCall& call)
{
    std::string text = " -> " + std::to_string(call.head.result);
    if (call.head.result < 0) {
        const std::string name = errorName_text(call.head.error);
        text += " " + (name.empty() ? std::to_string(call.head.error) : name);
    }
    return call.after.empty() ? text : text + " " + bytes_text(call.after, " ");
}

// Number, name and record.
std::string request_line(const UnitCall& call)
{
    const RequestForm* form = form_of(call);
    char number[16];
    snprintf(number, sizeof number, "%04" PRIX32, call.head.request);
    std::string request = std::string("ioctl ") + device_path(call) + " " + number;
    if (form == nullptr) {
        return request + " unknown" + result_text(call);
    }
    if (const std::string name = name_of(form->number); !name.empty()) {
        request += " (" + name + ")";
    }
    return request +
           request_text(*form, call.before.data(), call.head.argument).substr(strlen(number)) +
           result_text(call);
}

// The items of a line each, as words of one line.
std::string items_line(std::string items)
{
    while (items.ends_with('\n')) {
        items.pop_back();
    }
    std::ranges::replace(items, '\n', ' ');
    return items;
}

std::string call_line(const UnitCall& call)
{
    switch (call.head.kind) {
    case EntryKind::kOpen:
        return std::string("open ") + device_path(call) + " " +
               openFlags_text(static_cast<int>(call.head.argument));
    case EntryKind::kClose:
        return std::string("close ") + device_path(call);
    case EntryKind::kSet:
        return "set " + items_line(call.before);
    case EntryKind::kMark:
        return call.before;
    default:
        return request_line(call);
    }
}

std::string json_quoted(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        if (byte < 0x20 || byte > 0x7E) {
            char code[8];
            snprintf(code, sizeof code, "\\u%04x", byte);
            quoted += code;
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

class JsonLine
{
  public:
    void text(const char* key, std::string_view value) { put(key, json_quoted(value)); }
    void number(const char* key, int64_t value) { put(key, std::to_string(value)); }
    std::string line() const { return "{" + members_ + "}"; }

  private:
    void put(const char* key, const std::string& value)
    {
        members_ += (members_.empty() ? "" : ",") + json_quoted(key) + ":" + value;
    }
    std::string members_;
};

void request_json(const UnitCall& call, JsonLine& json)
{
    char number[16];
    snprintf(number, sizeof number, "0x%04" PRIX32, call.head.request);
    json.text("request", number);
    if (const std::string name = name_of(call.head.request); !name.empty()) {
        json.text("name", name);
    }
    const RequestForm* form = form_of(call);
    if (form != nullptr && form->argument == Argument::kValue) {
        json.number("value", static_cast<uint32_t>(call.head.argument));
    } else if (form != nullptr && form->size > 0) {
        json.text("record", bytes_text(call.before, ""));
    }
    json.number("result", call.head.result);
    if (call.head.result < 0) {
        json.text("errno", errorName_text(call.head.error));
    }
    if (!call.after.empty()) {
        json.text("after", bytes_text(call.after, ""));
    }
}

std::string call_json(const UnitCall& call)
{
    JsonLine json;
    json.number("sequence", static_cast<int64_t>(call.head.sequence));
    json.text("time", time_text(call));
    json.number("process", call.head.process);
    json.text("program", program_of(call));
    switch (call.head.kind) {
    case EntryKind::kOpen:
        json.text("call", "open");
        json.text("device", device_path(call));
        json.text("flags", openFlags_text(static_cast<int>(call.head.argument)));
        break;
    case EntryKind::kClose:
        json.text("call", "close");
        json.text("device", device_path(call));
        break;
    case EntryKind::kSet:
        json.text("call", "set");
        json.text("items", items_line(call.before));
        break;
    case EntryKind::kMark:
        json.text("call", call.before);
        break;
    default:
        json.text("call", "ioctl");
        json.text("device", device_path(call));
        request_json(call, json);
    }
    return json.line();
}

void call_print(const UnitCall& call, bool json)
{
    const std::string line = json ? call_json(call)
                                  : std::to_string(call.head.sequence) + " " + time_text(call) +
                                        " " + std::to_string(call.head.process) + " " +
                                        text_shown(program_of(call)) + ": " + call_line(call);
    fwrite(line.data(), 1, line.size(), stdout);
    fputc('\n', stdout);
}

int calls_run(const std::string& folder, Words words)
{
    std::string follow;
    std::string json;
    const Option options[] = {{"--follow", false, &follow}, {"--json", false, &json}};
    std::vector<std::string> rest;
    if (!options_take(words, options, rest) || !rest_fits(rest, 0, 0, "")) {
        return kWrongCall;
    }
    const OpenUnit unit = unit_get(folder);
    if (unit == nullptr) {
        return kFailed;
    }
    uint64_t next = 0;
    for (;;) {
        std::vector<UnitCall> calls;
        std::string error;
        if (!unit_calls(unit.get(), next, calls, error)) {
            return failure(error);
        }
        if (next != 0 && !calls.empty() && calls.front().head.sequence > next) {
            fprintf(stderr, "maintsim: note: %" PRIu64 " calls came too fast to be told\n",
                    calls.front().head.sequence - next);
        }
        for (const UnitCall& call : calls) {
            call_print(call, !json.empty());
            next = call.head.sequence + 1;
        }
        const int status = output_end();
        if (follow.empty() || status != kDone) {
            return status;
        }
        constexpr int kTenth = 100; // milliseconds
        pollfd reader{STDOUT_FILENO, 0, 0};
        if (poll(&reader, 1, kTenth) > 0) {
            raise(SIGPIPE); // nobody reads any more
            return failure("standard output: nobody reads it");
        }
    }
}

// power-cycle, warm-restart --------------------------------------------------------------------

int restart(const std::string& folder, Words words, Restart kind)
{
    std::vector<std::string> rest;
    if (!options_take(words, {}, rest) || !rest_fits(rest, 0, 0, "")) {
        return kWrongCall;
    }
    const OpenUnit unit = unit_get(folder);
    std::string error;
    if (unit == nullptr) {
        return kFailed;
    }
    return unit_restart(unit.get(), folder, kind, error) ? kDone : failure(error);
}

int powerCycle_run(const std::string& folder, Words words)
{
    return restart(folder, words, Restart::kPowerCycle);
}

int warmRestart_run(const std::string& folder, Words words)
{
    return restart(folder, words, Restart::kWarm);
}

constexpr Verb kVerbs[] = {
    {"new",
     R"(NAME
    maintsim new - makes a simulated unit

SYNOPSIS
    maintsim -u DIR new [--blank] [--image FILE] [--config FILE]
                        [--snapshot FILE]

DESCRIPTION
    Makes the folder DIR, which must not exist or be empty. The unit stands
    before its first start: there is a flash image, and no working log yet.
    Unless told otherwise it is unit 1, units 2 and 3 are present, its ports are
    up, its clock runs and shows the local time.

OPTIONS
    --blank          devices of zeros, a clock that stands still, erased flash,
                     no files
    --image FILE     the flash image of the system log; otherwise a sample of
                     640 records
    --config FILE    /conf/config of the unit
    --snapshot FILE  a unit that answers as the one of which `maintctl snapshot`
                     wrote FILE; its clock stands still. What FILE does not tell
                     is zero, and files are a new unit's

EXAMPLE
    maintsim -u unit new --image flash.image
)",
     new_run},
    {"show",
     R"(NAME
    maintsim show - the state of a unit's devices

SYNOPSIS
    maintsim -u DIR show [TEXT]

DESCRIPTION
    Prints an item a line, as `set` takes it; with TEXT, the items that have it
    in them. What is not printed is zero. The clock's time is the one that it
    shows now.

EXAMPLE
    maintsim -u unit show register.0x0158
)",
     show_run},
    {"set",
     R"(NAME
    maintsim set - changes the state of a unit's devices

SYNOPSIS
    maintsim -u DIR set ITEM=VALUE...

DESCRIPTION
    Sets all items, or none if one of them is wrong. `show` prints those that
    are not zero; among them:
      word.0x6B29=1                 a word, by the request that reads it
      register.0x0158=0x0020        a register
      phy.3.1=0x782D                register 1 of the PHY of port 3
      counter.3.32=17               counter 32 of index 3
      rtc.time=2026-11-21T10:20:30  the clock; rtc.runs=0 lets it stand still
      answer.0x6B04=-1              what a request returns
      fail.0x6B42=0                 takes away what `fail` asked for
    Tables hold bytes in hex, as the driver has them. Programs that run see the
    change at once.

EXAMPLE
    maintsim -u unit set register.0x0158=0x0020 phy.3.1=0x7809
)",
     set_run},
    {"fail",
     R"(NAME
    maintsim fail - lets requests fail

SYNOPSIS
    maintsim -u DIR fail REQUEST [--nth N] [--for COUNT] [--errno NAME]

DESCRIPTION
    Requests REQUEST fail with -1, and do not reach the device. REQUEST is a
    number as 0x6B42 or a name as register-read; `calls` tells both. The library
    tries a failed command once more, so that its caller is told of a failure
    that lasts for two requests.

OPTIONS
    --nth N       from the Nth such request on; otherwise from the next one on
    --for COUNT   so many in all; 0: all; otherwise one
    --errno NAME  the error; otherwise EIO

EXAMPLE
    maintsim -u unit fail register-read --for 2 --errno EBUSY
)",
     fail_run},
    {"calls",
     R"(NAME
    maintsim calls - what the devices were asked

SYNOPSIS
    maintsim -u DIR calls [--follow] [--json]

DESCRIPTION
    Prints a call a line: number, time, process and program; the call, its
    record; behind the arrow the result and, if it changed, the record. The last
    16384 calls at least are kept. What the end of a program closes is not told.

OPTIONS
    --follow  goes on with what comes; ends by Ctrl-C
    --json    an object a line

EXAMPLE
    maintsim -u unit calls --follow
)",
     calls_run},
    {"power-cycle",
     R"(NAME
    maintsim power-cycle - takes a unit's power away and gives it back

SYNOPSIS
    maintsim -u DIR power-cycle

DESCRIPTION
    Lost: what the devices held (they are as they were made), the working log
    /conf/system.log and /tmp but for the serial number and the switch's tables,
    which each start makes anew. Kept: the flash, the other files under /conf,
    the clock, and what `fail` and `set answer...` asked for. The system clock
    starts with the clock's time. Programs that run go on running.

EXAMPLE
    maintsim -u unit power-cycle
)",
     powerCycle_run},
    {"warm-restart",
     R"(NAME
    maintsim warm-restart - starts a unit's programs anew

SYNOPSIS
    maintsim -u DIR warm-restart

DESCRIPTION
    Devices and files are kept. The system clock starts with the clock's time.
    Programs that run go on running.

EXAMPLE
    maintsim -u unit warm-restart
)",
     warmRestart_run},
};

} // namespace

int wrong_call(const std::string& what)
{
    fprintf(stderr, "maintsim: %s\n", what.c_str());
    return kWrongCall;
}

int failure(const std::string& what)
{
    fprintf(stderr, "maintsim: %s\n", what.c_str());
    return kFailed;
}

const Verb* verb_find(std::string_view name)
{
    const auto* verb =
        std::ranges::find_if(kVerbs, [&](const Verb& row) { return row.name == name; });
    return verb == std::end(kVerbs) ? nullptr : verb;
}
