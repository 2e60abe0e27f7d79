#include "tools/maintctl/panel.h"

#include "catalogue/catalogue.h"
#include "maint/commands/device_word.h"
#include "maint/commands/led.h"
#include "tools/maintctl/answer.h"
#include "tools/maintctl/exit_status.h"
#include "tools/maintctl/quiet_reading.h"
#include "tools/maintctl/result.h"
#include "tools/maintctl/session.h"

namespace
{

// Readable without colours, too.
struct Look {
    const char* name;
    char symbol;
    Colour colour;
};
constexpr Look kLooks[] = {
    {"off", '.', Colour::kDim},
    {"on", '*', Colour::kGreen},
    {"pattern", '~', Colour::kYellow},
    {"alert", '!', Colour::kRed}, // of ledA alone
};
constexpr Look kUnknownLook{"unknown", '?', Colour::kRed};

const Look& look_of(uint8_t state)
{
    return state < sizeof kLooks / sizeof kLooks[0] ? kLooks[state] : kUnknownLook;
}

constexpr unsigned kIndicators = 6;
constexpr unsigned kGroups = 7;
constexpr uint8_t LedStateRecord::*kIndicator[kIndicators] = {
    &LedStateRecord::ledA, &LedStateRecord::ledB, &LedStateRecord::ledC,
    &LedStateRecord::ledD, &LedStateRecord::ledE, &LedStateRecord::ledF};
constexpr LedGroup LedStateRecord::*kGroup[kGroups] = {
    &LedStateRecord::group1, &LedStateRecord::group2, &LedStateRecord::group3,
    &LedStateRecord::group4, &LedStateRecord::group5, &LedStateRecord::group6,
    &LedStateRecord::group7};

void look_put(Screen& screen, const Look& look)
{
    const char text[] = {look.symbol, '\0'};
    screen_put(screen, look.colour, text);
}

void elements_put(Screen& screen, const LedGroup& group, const char* between)
{
    for (unsigned element = 0; element < sizeof group.element; ++element) {
        screen_put(screen, Colour::kPlain, element == 0 ? "" : between);
        look_put(screen, look_of(group.element[element]));
    }
}

// The picture -------------------------------------------------------------------------------------

constexpr unsigned kEdge = 72; // column of the right edge
constexpr unsigned kFirst = 4;
constexpr unsigned kIndicatorPitch = 11;
constexpr unsigned kGroupPitch = 10;

void edge_show(Screen& screen)
{
    screen_put(screen, Colour::kPlain, "+");
    while (screen.column < kEdge) {
        screen_put(screen, Colour::kPlain, "-");
    }
    screen_put(screen, Colour::kPlain, "+");
    screen_endRow(screen);
}

// One row within the frame: each of `count` things at its place.
template <class Put> void row_show(Screen& screen, unsigned count, unsigned pitch, const Put& put)
{
    screen_put(screen, Colour::kPlain, "|");
    for (unsigned n = 0; n < count; ++n) {
        screen_fill(screen, kFirst + n * pitch);
        put(n);
    }
    screen_fill(screen, kEdge);
    screen_put(screen, Colour::kPlain, "|");
    screen_endRow(screen);
}

void indicators_show(Screen& screen, const LedStateRecord& panel)
{
    row_show(screen, kIndicators, kIndicatorPitch,
             [&](unsigned n) { screen_format(screen, Colour::kPlain, " %c", 'A' + n); });
    row_show(screen, kIndicators, kIndicatorPitch, [&](unsigned n) {
        screen_put(screen, Colour::kPlain, "(");
        look_put(screen, look_of(panel.*kIndicator[n]));
        screen_put(screen, Colour::kPlain, ")");
    });
    row_show(screen, kIndicators, kIndicatorPitch, [&](unsigned n) {
        const Look& look = look_of(panel.*kIndicator[n]);
        screen_put(screen, look.colour, look.name);
    });
}

void groups_show(Screen& screen, const LedStateRecord& panel)
{
    row_show(screen, kGroups, kGroupPitch,
             [&](unsigned n) { screen_format(screen, Colour::kPlain, "  %u", n + 1); });
    row_show(screen, kGroups, kGroupPitch,
             [&](unsigned n) { elements_put(screen, panel.*kGroup[n], " "); });
}

void legend_show(Screen& screen)
{
    for (const Look& look : kLooks) {
        look_put(screen, look);
        screen_format(screen, Colour::kPlain, " %s   ", look.name);
    }
    screen_put(screen, Colour::kPlain, "F: line mode   2: line flags");
    screen_endRow(screen);
}

void panel_draw(Screen& screen, const LedStateRecord& panel)
{
    screen_format(screen, Colour::kPlain, "Front panel of unit %u", panel.ownId);
    screen_endRow(screen);
    edge_show(screen);
    indicators_show(screen, panel);
    row_show(screen, 0, 0, [](unsigned) {});
    groups_show(screen, panel);
    edge_show(screen);
    legend_show(screen);
}

void answer_json(FILE* out, const Answer& answer)
{
    const CommandDescription* command = command_find(answer.code);
    if (command == nullptr) {
        return;
    }
    Json json{out};
    json_open(json, '{');
    result_json(json, *command, answer.result, answer.record);
    json_close(json, '}');
    fputc('\n', out);
}

} // namespace

void panel_showShort(Screen& screen, const LedStateRecord& panel)
{
    for (unsigned n = 0; n < kIndicators; ++n) {
        screen_format(screen, Colour::kPlain, "%c", 'A' + n);
        look_put(screen, look_of(panel.*kIndicator[n]));
        screen_put(screen, Colour::kPlain, " ");
    }
    for (unsigned n = 0; n < kGroups; ++n) {
        screen_format(screen, Colour::kPlain, "  %u ", n + 1);
        elements_put(screen, panel.*kGroup[n], "");
    }
}

void panel_json(Json& json, const LedStateRecord& panel)
{
    for (unsigned n = 0; n < kIndicators; ++n) {
        const char key[] = {'l', 'e', 'd', static_cast<char>('A' + n), '\0'};
        json_key(json, key);
        json_number(json, panel.*kIndicator[n]);
    }
    for (unsigned n = 0; n < kGroups; ++n) {
        const char key[] = {'g', 'r', 'o', 'u', 'p', static_cast<char>('1' + n), '\0'};
        json_key(json, key);
        json_open(json, '[');
        for (const uint8_t element : (panel.*kGroup[n]).element) {
            json_number(json, element);
        }
        json_close(json, ']');
    }
}

const char* indicator_name(uint8_t state)
{
    return look_of(state).name;
}

Colour indicator_colour(uint8_t state)
{
    return look_of(state).colour;
}

int panel_show(const Session& session)
{
    Answer own_id;
    Answer panel;
    QuietReading quiet;
    quietReading_begin(quiet, session);
    const Answer& last = panel_get(own_id, panel);
    quietReading_end(quiet);
    if (session.json) {
        answer_json(session.out, last);
        return exitStatus_of(last.result);
    }
    Screen screen{session.out, session.colours};
    if (answer_isGood(last)) {
        panel_draw(screen, record_of<RD_LED_STATE>(panel));
    } else {
        screen_put(screen, Colour::kPlain, "Front panel: ");
        answer_showMissing(screen, last);
        screen_endRow(screen);
    }
    return exitStatus_of(last.result);
}
