// The unit on one screen. Everything is read first, and then shown as rows or as JSON.
#include <cstdio>

#include "maint/commands/bandwidth.h"
#include "maint/commands/device_word.h"
#include "maint/commands/led.h"
#include "maint/commands/mtu.h"
#include "maint/commands/phy.h"
#include "maint/commands/port.h"
#include "maint/commands/rtc.h"
#include "maint/commands/unit.h"
#include "maint/vpn_id.h"
#include "tools/maintctl/answer.h"
#include "tools/maintctl/exit_status.h"
#include "tools/maintctl/panel.h"
#include "tools/maintctl/quiet_reading.h"
#include "tools/maintctl/session.h"

namespace
{

constexpr unsigned kPhys = 7;
constexpr unsigned kPorts = 32; // bits of bitmap E
constexpr unsigned kPortsInGroup = 8;

// What is asked, in the order of the screen.
enum Item : unsigned {
    kSerial,
    kInfo,
    kIds,
    kClock,
    kClockState,
    kOwnId,
    kMapEnable,
    kPresent,
    kMarked,
    kBandwidth,
    kPanel,
    kMtuLimit,
    kDatasize,
    kPortFlags,
    kPortCode,
    kPhy = kPortCode + kPorts,
    kItems = kPhy + kPhys,
};

constexpr uint16_t kNoCode = UINT16_MAX; // what RD_PORT_STATE_CODE leaves when it has no code

struct UnitStatus {
    Answer answers[kItems];
    const Answer* panel; // the panel, or why it cannot be asked for
    // The configured VPN identity. Get_Conf_VpnId is no command, but its result is like one's.
    int32_t identity_result = kNotAsked;
    uint32_t identity = 0;
};

// Reading -----------------------------------------------------------------------------------------

void identity_get(UnitStatus& unit)
{
    const Answer& map = unit.answers[kMapEnable];
    const Answer& own = unit.answers[kOwnId];
    // Asked without the device's flag, it would leave a line in the system log.
    if (!answer_isGood(map)) {
        return;
    }
    const bool indexed = record_of<RD_VLANT_MAP_ENABLE>(map) == 1;
    if (indexed && !answer_isGood(own)) {
        return;
    }
    unit.identity_result = Get_Conf_VpnId(record_of<RD_DEVICE_WORD_29>(own), &unit.identity);
}

void unit_read(UnitStatus& unit)
{
    Answer* answers = unit.answers;
    answer_get(answers[kSerial], RD_SERIAL_NUMBER);
    answer_get(answers[kInfo], RD_DEVICE_INFO);
    answer_get(answers[kIds], RD_ID_REGISTERS);
    answer_get(answers[kClock], RD_RTC_TIME);
    answer_get(answers[kClockState], RD_RTC_STATUS);
    unit.panel = &panel_get(answers[kOwnId], answers[kPanel]);
    answer_get(answers[kMapEnable], RD_VLANT_MAP_ENABLE);
    identity_get(unit);
    answer_get(answers[kPresent], RD_DEVICE_WORD_3B);
    answer_get(answers[kMarked], RD_UNIT_STATUS_MAP);
    answer_get(answers[kBandwidth], RD_BANDWIDTH);
    answer_get(answers[kMtuLimit], RD_MTU_LIMIT);
    answer_get(answers[kDatasize], RD_MTU_DATASIZE);
    answer_get(answers[kPortFlags], RD_PORT_FLAGS);
    for (unsigned port = 0; port < kPorts; ++port) {
        answer_get<RD_PORT_STATE_CODE>(answers[kPortCode + port],
                                       {static_cast<uint16_t>(port), kNoCode});
    }
    for (unsigned port = 0; port < kPhys; ++port) {
        PhyStatus phy{};
        phy.port = port;
        answer_get<RD_PHY_STATUS>(answers[kPhy + port], phy);
    }
}

// Link and autonegotiation are known, but the ends have not agreed on a speed.
bool phy_isUndecided(const Answer& answer)
{
    const PhyStatus phy = record_of<RD_PHY_STATUS>(answer);
    return answer.result == DEVICE_READ_FAILED && phy.link == 1;
}

// The value of the line's register that a limit stands for (maint/commands/bandwidth.h). One that
// is reported has the same value at both speeds, or its own at 100 Mb/s.
constexpr unsigned kLimitDividend = 64000;
unsigned limit_divisor(unsigned id)
{
    return id == 0 ? 3 : id == 1 ? 5 : id <= 11 ? 10 * (id - 1) : 100 * (id - 10);
}

const char* identity_meaning(int32_t result)
{
    switch (result) {
    case -2:
    case -4:
        return "no such key in /conf/config, or no such file";
    case -3:
    case -5:
        return "the key is empty";
    default:
        return "the device's flag cannot be read";
    }
}

// Rows --------------------------------------------------------------------------------------------

constexpr unsigned kLabelWidth = 12;

void label_put(Screen& screen, const char* label)
{
    screen_put(screen, Colour::kPlain, label);
    screen_fill(screen, kLabelWidth);
}

// A row of one answer: what `show` makes of it, or what is missing.
template <class Show>
void row_show(Screen& screen, const char* label, const Answer& answer, const Show& show)
{
    label_put(screen, label);
    answer_isGood(answer) ? show() : answer_showMissing(screen, answer);
    screen_endRow(screen);
}

template <class Number> void numbers_put(Screen& screen, const Number* numbers, unsigned count)
{
    for (unsigned n = 0; n < count; ++n) {
        screen_format(screen, Colour::kPlain, n == 0 ? "%u" : " %u", unsigned{numbers[n]});
    }
}

// "1-3 7 9-10"
void bits_put(Screen& screen, uint32_t bits)
{
    const char* before = "";
    for (unsigned bit = 0; bit < 32; ++bit) {
        const unsigned first = bit;
        while (bit < 32 && (bits >> bit & 1) != 0) {
            ++bit;
        }
        if (bit > first) {
            screen_format(screen, Colour::kPlain, "%s%u", before, first);
            if (bit > first + 1) {
                screen_format(screen, Colour::kPlain, "-%u", bit - 1);
            }
            before = " ";
        }
    }
    screen_put(screen, Colour::kPlain, bits == 0 ? "none" : "");
}

void hardware_show(Screen& screen, const Answer* answers)
{
    row_show(screen, "serial", answers[kSerial], [&] {
        const auto serial = record_of<RD_SERIAL_NUMBER>(answers[kSerial]);
        screen_format(screen, Colour::kPlain, "%.*s", int{sizeof serial.text}, serial.text);
    });
    row_show(screen, "device", answers[kInfo], [&] {
        const auto info = record_of<RD_DEVICE_INFO>(answers[kInfo]);
        screen_format(screen, Colour::kPlain, "%02x %02x %02x %02x, text %.*s", info.bytes[0],
                      info.bytes[1], info.bytes[2], info.bytes[3], int{sizeof info.text},
                      info.text);
    });
    row_show(screen, "registers", answers[kIds], [&] {
        const char* between = "";
        for (const uint16_t value : record_of<RD_ID_REGISTERS>(answers[kIds]).value) {
            screen_format(screen, Colour::kPlain, "%s0x%04x", between, value);
            between = " ";
        }
    });
    row_show(screen, "clock", answers[kClock], [&] {
        static constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
        const auto now = record_of<RD_RTC_TIME>(answers[kClock]);
        screen_format(screen, Colour::kPlain, "%04u-%02u-%02u %s %02u:%02u:%02u", now.year,
                      now.month, now.day, now.weekday < 7 ? kDays[now.weekday] : "?", now.hour,
                      now.minute, now.second);
    });
    row_show(screen, "clock state", answers[kClockState], [&] {
        screen_format(screen, Colour::kPlain, "0x%08x",
                      record_of<RD_RTC_STATUS>(answers[kClockState]));
    });
}

void identity_show(Screen& screen, const UnitStatus& unit)
{
    const Answer& own = unit.answers[kOwnId];
    row_show(screen, "own unit", own, [&] {
        screen_format(screen, Colour::kPlain, "%u", record_of<RD_DEVICE_WORD_29>(own));
    });
    const Answer& map = unit.answers[kMapEnable];
    const bool asked = unit.identity_result != kNotAsked;
    row_show(screen, "identity", asked || !answer_isGood(map) ? map : own, [&] {
        char key[32] = "OWN_VPN_ID";
        if (record_of<RD_VLANT_MAP_ENABLE>(map) == 1) {
            snprintf(key, sizeof key, "PPPOEOFF_VPN_ID%02u", record_of<RD_DEVICE_WORD_29>(own));
        }
        if (unit.identity_result == 0) {
            screen_format(screen, Colour::kPlain, "%u, by %s", unit.identity, key);
        } else {
            screen_format(screen, Colour::kRed, "%s %d: %s", key, unit.identity_result,
                          identity_meaning(unit.identity_result));
        }
    });
    row_show(screen, "present", unit.answers[kPresent],
             [&] { bits_put(screen, record_of<RD_DEVICE_WORD_3B>(unit.answers[kPresent])); });
    row_show(screen, "marked", unit.answers[kMarked],
             [&] { bits_put(screen, record_of<RD_UNIT_STATUS_MAP>(unit.answers[kMarked])); });
}

void line_show(Screen& screen, const UnitStatus& unit)
{
    const Answer* answers = unit.answers;
    row_show(screen, "bandwidth", answers[kBandwidth], [&] {
        const unsigned id = record_of<RD_BANDWIDTH>(answers[kBandwidth]);
        const unsigned divisor = limit_divisor(id);
        screen_format(screen, Colour::kPlain, "limit %u: register %u (%u / %u)", id,
                      kLimitDividend / divisor, kLimitDividend, divisor);
    });
    row_show(screen, "line", *unit.panel, [&] {
        const auto panel = record_of<RD_LED_STATE>(*unit.panel);
        screen_put(screen, Colour::kPlain, "mode ");
        screen_put(screen, indicator_colour(panel.ledF), indicator_name(panel.ledF));
        screen_put(screen, Colour::kPlain, ", flags ");
        numbers_put(screen, panel.group2.element, 3);
    });
    row_show(screen, "MTU limit", answers[kMtuLimit], [&] {
        const auto mtu = record_of<RD_MTU_LIMIT>(answers[kMtuLimit]);
        screen_format(screen, Colour::kPlain, "%u, frame size %u", mtu.limit, mtu.frame_size);
    });
    row_show(screen, "sizes", answers[kDatasize], [&] {
        const auto sizes = record_of<RD_MTU_DATASIZE>(answers[kDatasize]);
        numbers_put(screen, sizes.size, 3);
        screen_put(screen, Colour::kPlain, ", data ");
        numbers_put(screen, sizes.data_size, 3);
        screen_put(screen, Colour::kPlain, ", line ");
        numbers_put(screen, sizes.line_size, 3);
    });
}

// "0-7 ........ 8-15 .1......": the first failure stands for all.
void portCodes_show(Screen& screen, const Answer* codes)
{
    const Answer* shown = codes;
    for (unsigned port = 0; port < kPorts && answer_isGood(*shown); ++port) {
        shown = &codes[port];
    }
    row_show(screen, "port codes", *shown, [&] {
        for (unsigned port = 0; port < kPorts; ++port) {
            if (port % kPortsInGroup == 0) {
                screen_format(screen, Colour::kPlain, port == 0 ? "%u-%u " : "  %u-%u ", port,
                              port + kPortsInGroup - 1);
            }
            const uint16_t code = record_of<RD_PORT_STATE_CODE>(codes[port]).code;
            screen_format(screen, Colour::kPlain, "%c",
                          code == 0   ? '.'
                          : code <= 4 ? '0' + code
                                      : '?');
        }
    });
}

void phy_show(Screen& screen, unsigned port, const Answer& answer)
{
    char label[kLabelWidth];
    snprintf(label, sizeof label, "port %u", port);
    label_put(screen, label);
    const auto phy = record_of<RD_PHY_STATUS>(answer);
    const bool undecided = phy_isUndecided(answer);
    if (!answer_isGood(answer) && !undecided) {
        answer_showMissing(screen, answer);
    } else {
        screen_put(screen, phy.link == 1 ? Colour::kGreen : Colour::kDim,
                   phy.link == 1 ? "up  " : "down");
        if (undecided) {
            screen_put(screen, Colour::kRed, "  speed is not negotiated (RD_PHY_STATUS -2)");
        } else if (phy.link == 0 && phy.autoneg == 1) {
            // Nobody at the other end to negotiate with: speed and duplex are not known.
            screen_format(screen, Colour::kPlain, "  %-23sautonegotiation on   extra %u", "",
                          phy.extra);
        } else {
            screen_format(screen, Colour::kPlain,
                          "  %3u Mb/s  %s duplex  autonegotiation %s extra %u",
                          phy.speed100 == 1 ? 100U : 10U, phy.full_duplex == 1 ? "full" : "half",
                          phy.autoneg == 1 ? "on  " : "off ", phy.extra);
        }
    }
    screen_endRow(screen);
}

void ports_show(Screen& screen, const Answer* answers)
{
    row_show(screen, "port flags", answers[kPortFlags],
             [&] { numbers_put(screen, record_of<RD_PORT_FLAGS>(answers[kPortFlags]).flags, 10); });
    portCodes_show(screen, answers + kPortCode);
    for (unsigned port = 0; port < kPhys; ++port) {
        phy_show(screen, port, answers[kPhy + port]);
    }
}

void unit_show(const Session& session, const UnitStatus& unit)
{
    Screen screen{session.out, session.colours};
    hardware_show(screen, unit.answers);
    identity_show(screen, unit);
    line_show(screen, unit);
    ports_show(screen, unit.answers);
    row_show(screen, "panel", *unit.panel,
             [&] { panel_showShort(screen, record_of<RD_LED_STATE>(*unit.panel)); });
}

// JSON --------------------------------------------------------------------------------------------

void member_put(Json& json, const char* key, uint32_t number)
{
    json_key(json, key);
    json_number(json, number);
}

template <class Number, size_t kCount>
void member_put(Json& json, const char* key, const Number (&numbers)[kCount])
{
    json_key(json, key);
    json_open(json, '[');
    for (const Number number : numbers) {
        json_number(json, number);
    }
    json_close(json, ']');
}

// The number, or null where nobody knows it.
void member_put(Json& json, const char* key, bool known, uint32_t number)
{
    json_key(json, key);
    known ? json_number(json, number) : json_null(json);
}

// A member of one answer: false, and null, where it is missing.
bool member_begin(Json& json, const char* key, const Answer& answer)
{
    json_key(json, key);
    if (!answer_isGood(answer)) {
        json_null(json);
    }
    return answer_isGood(answer);
}

bool object_begin(Json& json, const char* key, const Answer& answer)
{
    const bool good = member_begin(json, key, answer);
    if (good) {
        json_open(json, '{');
    }
    return good;
}

void bits_json(Json& json, uint32_t bits)
{
    json_open(json, '[');
    for (unsigned bit = 0; bit < 32; ++bit) {
        if ((bits >> bit & 1) != 0) {
            json_number(json, bit);
        }
    }
    json_close(json, ']');
}

void hardware_json(Json& json, const Answer* answers)
{
    if (member_begin(json, "serial_number", answers[kSerial])) {
        const auto serial = record_of<RD_SERIAL_NUMBER>(answers[kSerial]);
        json_text(json, serial.text, sizeof serial.text);
    }
    if (object_begin(json, "device_info", answers[kInfo])) {
        const auto info = record_of<RD_DEVICE_INFO>(answers[kInfo]);
        member_put(json, "bytes", info.bytes);
        json_key(json, "text");
        json_text(json, info.text, sizeof info.text);
        json_close(json, '}');
    }
    if (object_begin(json, "id_registers", answers[kIds])) {
        member_put(json, "value", record_of<RD_ID_REGISTERS>(answers[kIds]).value);
        json_close(json, '}');
    }
    if (object_begin(json, "clock", answers[kClock])) {
        const auto now = record_of<RD_RTC_TIME>(answers[kClock]);
        member_put(json, "year", now.year);
        member_put(json, "month", now.month);
        member_put(json, "day", now.day);
        member_put(json, "hour", now.hour);
        member_put(json, "minute", now.minute);
        member_put(json, "second", now.second);
        member_put(json, "weekday", now.weekday);
        json_close(json, '}');
    }
    if (member_begin(json, "clock_state", answers[kClockState])) {
        json_number(json, record_of<RD_RTC_STATUS>(answers[kClockState]));
    }
}

void identity_json(Json& json, const UnitStatus& unit)
{
    const Answer* answers = unit.answers;
    if (member_begin(json, "own_id", answers[kOwnId])) {
        json_number(json, record_of<RD_DEVICE_WORD_29>(answers[kOwnId]));
    }
    if (member_begin(json, "vpn_map", answers[kMapEnable])) {
        json_number(json, record_of<RD_VLANT_MAP_ENABLE>(answers[kMapEnable]));
    }
    member_put(json, "vpn_id", unit.identity_result == 0, unit.identity);
    if (member_begin(json, "present", answers[kPresent])) {
        bits_json(json, record_of<RD_DEVICE_WORD_3B>(answers[kPresent]));
    }
    if (member_begin(json, "marked", answers[kMarked])) {
        bits_json(json, record_of<RD_UNIT_STATUS_MAP>(answers[kMarked]));
    }
}

void line_json(Json& json, const UnitStatus& unit)
{
    const Answer* answers = unit.answers;
    if (object_begin(json, "bandwidth", answers[kBandwidth])) {
        const unsigned id = record_of<RD_BANDWIDTH>(answers[kBandwidth]);
        member_put(json, "limit", id);
        member_put(json, "register", kLimitDividend / limit_divisor(id));
        json_close(json, '}');
    }
    if (object_begin(json, "line", *unit.panel)) {
        const auto panel = record_of<RD_LED_STATE>(*unit.panel);
        member_put(json, "mode", panel.ledF);
        member_put(json, "flags", panel.group2.element);
        json_close(json, '}');
    }
    if (object_begin(json, "mtu_limit", answers[kMtuLimit])) {
        const auto mtu = record_of<RD_MTU_LIMIT>(answers[kMtuLimit]);
        member_put(json, "limit", mtu.limit);
        member_put(json, "frame_size", mtu.frame_size);
        json_close(json, '}');
    }
    if (object_begin(json, "mtu_datasize", answers[kDatasize])) {
        const auto sizes = record_of<RD_MTU_DATASIZE>(answers[kDatasize]);
        member_put(json, "size", sizes.size);
        member_put(json, "data_size", sizes.data_size);
        member_put(json, "line_size", sizes.line_size);
        json_close(json, '}');
    }
}

void phy_json(Json& json, const Answer& answer)
{
    const auto phy = record_of<RD_PHY_STATUS>(answer);
    const bool good = answer_isGood(answer);
    const bool linked = good || phy_isUndecided(answer);
    const bool decided = good && (phy.link == 1 || phy.autoneg == 0);
    json_open(json, '{');
    member_put(json, "port", phy.port);
    member_put(json, "link", linked, phy.link);
    member_put(json, "autoneg", linked, phy.autoneg);
    member_put(json, "speed100", decided, phy.speed100);
    member_put(json, "full_duplex", decided, phy.full_duplex);
    member_put(json, "extra", good, phy.extra);
    json_close(json, '}');
}

void ports_json(Json& json, const Answer* answers)
{
    if (member_begin(json, "port_flags", answers[kPortFlags])) {
        json_open(json, '[');
        for (const uint8_t flag : record_of<RD_PORT_FLAGS>(answers[kPortFlags]).flags) {
            json_number(json, flag);
        }
        json_close(json, ']');
    }
    json_key(json, "port_codes");
    json_open(json, '[');
    for (unsigned port = 0; port < kPorts; ++port) {
        const Answer& answer = answers[kPortCode + port];
        const uint16_t code = record_of<RD_PORT_STATE_CODE>(answer).code;
        answer_isGood(answer) && code != kNoCode ? json_number(json, code) : json_null(json);
    }
    json_close(json, ']');
    json_key(json, "phys");
    json_open(json, '[');
    for (unsigned port = 0; port < kPhys; ++port) {
        phy_json(json, answers[kPhy + port]);
    }
    json_close(json, ']');
}

// Calls for every answer that is missing, in the order of the screen; for the many answers of one
// command that all failed alike only once.
template <class Missing, class IdentityMissing>
void missing_visit(const UnitStatus& unit, const Missing& missing,
                   const IdentityMissing& identity_missing)
{
    const Answer* last = nullptr;
    for (unsigned item = 0; item < kItems; ++item) {
        if (item == kPresent && unit.identity_result < 0 && unit.identity_result != kNotAsked) {
            identity_missing();
        }
        const Answer& answer = unit.answers[item];
        const bool again =
            last != nullptr && last->code == answer.code && last->result == answer.result;
        if (answer.result < 0 && answer.result != kNotAsked && !again) {
            missing(answer);
        }
        last = &answer;
    }
}

void identity_jsonError(Json& json, int32_t result)
{
    json_open(json, '{');
    json_key(json, "command");
    json_text(json, "Get_Conf_VpnId");
    json_key(json, "code");
    json_null(json);
    json_key(json, "result");
    json_number(json, result);
    json_key(json, "error");
    json_text(json, identity_meaning(result));
    json_close(json, '}');
}

void errors_json(Json& json, const UnitStatus& unit)
{
    json_key(json, "errors");
    json_open(json, '[');
    missing_visit(
        unit, [&](const Answer& answer) { answer_jsonError(json, answer); },
        [&] { identity_jsonError(json, unit.identity_result); });
    json_close(json, ']');
}

void unit_json(FILE* out, const UnitStatus& unit)
{
    Json json{out};
    json_open(json, '{');
    json_key(json, "status");
    json_open(json, '{');
    hardware_json(json, unit.answers);
    identity_json(json, unit);
    line_json(json, unit);
    ports_json(json, unit.answers);
    if (object_begin(json, "panel", *unit.panel)) {
        panel_json(json, record_of<RD_LED_STATE>(*unit.panel));
        json_close(json, '}');
    }
    errors_json(json, unit);
    json_close(json, '}');
    json_close(json, '}');
    fputc('\n', out);
}

// The result of the first answer that is missing; 0: none is.
int32_t firstFailure_of(const UnitStatus& unit)
{
    int32_t first = 0;
    const auto keep = [&](int32_t result) { first = first == 0 ? result : first; };
    missing_visit(
        unit, [&](const Answer& answer) { keep(answer.result); },
        [&] { keep(unit.identity_result); });
    return first;
}

} // namespace

int status_show(const Session& session)
{
    UnitStatus unit;
    QuietReading quiet;
    quietReading_begin(quiet, session);
    unit_read(unit);
    quietReading_end(quiet);
    session.json ? unit_json(session.out, unit) : unit_show(session, unit);
    return exitStatus_of(firstFailure_of(unit));
}
