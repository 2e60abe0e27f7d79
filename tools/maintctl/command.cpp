#include "tools/maintctl/command.h"

#include <cstring>

#include "tools/maintctl/exit_status.h"
#include "tools/maintctl/library_calls.h"
#include "tools/maintctl/result.h"
#include "tools/maintctl/values.h"

namespace
{

void record_showHex(FILE* out, const CommandDescription& command, const uint8_t* record)
{
    fputs("record=", out);
    for (size_t i = 0; i < command.record; ++i) {
        fprintf(out, "%02x", record[i]);
    }
    fputc('\n', out);
}

void fields_show(FILE* out, const CommandDescription& command, const uint8_t* record)
{
    for (size_t i = 0; i < command.fields().size(); ++i) {
        if (field_in(command.out, i)) {
            char value[kValueMax];
            value_print(command.fields()[i], record, value);
            fprintf(out, "%s=%s\n", command.fields()[i].name, value);
        }
    }
}

void result_tell(FILE* err, const CommandDescription& command, int32_t result, const char* where)
{
    fprintf(err, "maintctl: %s%s: %d: %s\n", where, command.name, result,
            result_meaning(command, result));
}

void title_show(FILE* out, Words title)
{
    char text[kWrongMax];
    Text line = text_in(text);
    for (const char* word : title) {
        text_addChar(line, ' ');
        text_addTyped(line, word, strlen(word));
    }
    fprintf(out, "#%s\n", text);
}

// What is reported goes to `out`; a failure, and what a result above 0 means, to `err`.
void text_show(const Session& session, const CommandDescription& command, int32_t result,
               const uint8_t* record, const char* where, Words title)
{
    if (result != 0) {
        result_tell(session.err, command, result, where);
    }
    if (result < 0) {
        return;
    }
    if (!title.empty() && (result > 0 || command.out != 0)) {
        title_show(session.out, title);
    }
    if (result > 0) {
        fprintf(session.out, "result=%d\n", result);
    }
    if (session.hex && command.out != 0) {
        record_showHex(session.out, command, record);
    } else {
        fields_show(session.out, command, record);
    }
}

void dryRun_tell(const Session& session, const CommandDescription& command, unsigned held,
                 const char* where)
{
    if (held != 0) {
        fprintf(session.err, "maintctl: %s%s: dry run: %u %s held back\n", where, command.name,
                held, held == 1 ? "call was" : "calls were");
    } else if (!command_isReport(command)) {
        fprintf(session.err, "maintctl: %s%s: dry run: nothing was to be changed\n", where,
                command.name);
    }
}

} // namespace

int command_run(const Session& session, const Invocation& invocation, const char* where,
                Words title)
{
    const CommandDescription& command = *invocation.command;
    Invocation answer = invocation;
    const unsigned held_before = libraryCalls_held();
    const int32_t result = Fpga_Register_Set(command.code, answer.record);
    if (session.json) {
        Json json{session.out};
        json_open(json, '{');
        result_json(json, command, result, answer.record);
        json_close(json, '}');
        fputc('\n', session.out);
        if (result < 0 && where[0] != '\0') {
            result_tell(session.err, command, result, where);
        }
    } else {
        text_show(session, command, result, answer.record, where, title);
    }
    if (session.dry_run) {
        dryRun_tell(session, command, libraryCalls_held() - held_before, where);
    }
    return exitStatus_of(result);
}
