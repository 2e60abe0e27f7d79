#include <algorithm>
#include <cstring>

#include "catalogue/catalogue.h"
#include "tools/maintctl/json.h"
#include "tools/maintctl/text.h"
#include "tools/maintctl/values.h"
#include "tools/maintctl/verbs.h"

namespace
{

// A number that is asked for is the whole number, in any form: 10, 0xa, 0x000A.
bool number_matches(const CommandDescription& command, const char* text)
{
    uint64_t number = 0;
    return number_parse(text, strlen(text), number) && number == command.code;
}

bool command_matches(const CommandGroup& group, const CommandDescription& command, const char* text)
{
    if (text == nullptr || number_matches(command, text)) {
        return true;
    }
    const size_t length = strlen(text);
    for (const char* place : {command.name, command.summary, group.name, group.title}) {
        if (text_has(place, text, length)) {
            return true;
        }
    }
    return false;
}

void command_json(FILE* out, const CommandGroup& group, const CommandDescription& command)
{
    Json json{out};
    json_open(json, '{');
    json_key(json, "command");
    json_text(json, command.name);
    json_key(json, "code");
    json_number(json, command.code);
    json_key(json, "group");
    json_text(json, group.name);
    json_key(json, "summary");
    json_text(json, command.summary);
    json_key(json, "changes");
    json_bool(json, command.changes != 0);
    json_key(json, "clears");
    json_bool(json, command.clears);
    json_close(json, '}');
    fputc('\n', out);
}

size_t name_widest(const CommandGroup& group)
{
    size_t widest = 0;
    for (const CommandDescription& command : group.commands) {
        widest = std::max(widest, strlen(command.name));
    }
    return widest;
}

// One line, at most 80 columns; `describe` has all of a summary that is longer.
void command_line(FILE* out, const CommandDescription& command, size_t name_width)
{
    const size_t space = 80 - strlen("0x0000 ") - name_width - 1;
    const bool cut = strlen(command.summary) > space;
    fprintf(out, "0x%04X %-*s %.*s%s\n", static_cast<unsigned>(command.code),
            static_cast<int>(name_width), command.name, static_cast<int>(cut ? space - 3 : space),
            command.summary, cut ? "..." : "");
}

} // namespace

int list_show(const Session& session, const char* text)
{
    bool found = false;
    for (const CommandGroup* group : catalogue_get()) {
        bool titled = false;
        for (const CommandDescription& command : group->commands) {
            if (!command_matches(*group, command, text)) {
                continue;
            }
            if (session.json) {
                command_json(session.out, *group, command);
            } else {
                if (!titled) {
                    fprintf(session.out, "%s%s (%s)\n", found ? "\n" : "", group->title,
                            group->name);
                }
                command_line(session.out, command, name_widest(*group));
            }
            titled = true;
            found = true;
        }
    }
    if (found) {
        return 0;
    }
    char typed[300];
    Text shown = text_in(typed);
    text_addTyped(shown, text, strlen(text));
    fprintf(session.err, "maintctl: no command has '%s' in its name, number, group or summary\n",
            typed);
    return 1;
}
