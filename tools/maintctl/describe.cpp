#include "tools/maintctl/describe.h"

#include <algorithm>
#include <cstring>

#include "tools/maintctl/invocation.h"
#include "tools/maintctl/json.h"
#include "tools/maintctl/values.h"
#include "tools/maintctl/verbs.h"

namespace
{

constexpr size_t kColumns = 80;

constexpr const char* kKindNames[] = {"number", "hex",      "flag", "bits", "code",
                                      "IPv4",   "address6", "text", "bytes"};

const char* kind_name(const Field& field)
{
    return kKindNames[static_cast<unsigned>(field.kind)];
}

// Writes words in lines of 80 columns; all but the first are indented.
struct Paragraph {
    FILE* out;
    size_t indent;
    size_t column = 0;
};

void paragraph_add(Paragraph& paragraph, const char* text)
{
    while (*text != '\0') {
        const size_t length = strcspn(text, " ");
        if (length != 0) {
            const bool fits = paragraph.column + 1 + length <= kColumns;
            if (paragraph.column > paragraph.indent && fits) {
                fputc(' ', paragraph.out);
                ++paragraph.column;
            } else if (paragraph.column > paragraph.indent) {
                fprintf(paragraph.out, "\n%*s", static_cast<int>(paragraph.indent), "");
                paragraph.column = paragraph.indent;
            }
            fwrite(text, 1, length, paragraph.out);
            paragraph.column += length;
        }
        text += length + (text[length] == ' ' ? 1 : 0);
    }
}

void paragraph_end(Paragraph& paragraph)
{
    fputc('\n', paragraph.out);
}

// A heading in the left margin; what follows stands at the tenth column.
Paragraph heading_begin(FILE* out, const char* heading)
{
    constexpr int kIndent = 9;
    fprintf(out, "%-*s", kIndent, heading);
    return {out, kIndent, kIndent};
}

void places_show(FILE* out, const char* heading, Places places)
{
    Paragraph paragraph = heading_begin(out, heading);
    const char* before = "";
    char text[80];
    for (unsigned place = 0; place < kPlaceCount; ++place) {
        if ((places & place_bit(static_cast<Place>(place))) != 0) {
            if (before[0] != '\0') {
                fputc(',', out);
                ++paragraph.column;
            }
            Text name = text_in(text);
            text_add(name, "%s", place_name(static_cast<Place>(place)));
            paragraph_add(paragraph, text);
            before = ",";
        }
    }
    if (before[0] == '\0') {
        paragraph_add(paragraph, "nothing");
    }
    paragraph_end(paragraph);
}

const char* field_direction(const CommandDescription& command, size_t number)
{
    const bool in = field_in(command.in, number);
    if (!field_in(command.out, number)) {
        return in ? "in" : nullptr;
    }
    return in ? "in+out" : "out";
}

// "number 1 to 12 s, 3 elements"
void field_addKind(Text& text, const Field& field)
{
    text_add(text, "%s", kind_name(field));
    if (field.kind == Kind::kNumber) {
        text_add(text, " %u to %u", static_cast<unsigned>(field.least),
                 static_cast<unsigned>(field.most));
    } else if (field.kind == Kind::kHex || field.kind == Kind::kBits) {
        text_add(text, " 0x%0*x to 0x%0*x", 2 * field.width, static_cast<unsigned>(field.least),
                 2 * field.width, static_cast<unsigned>(field.most));
    } else if (field.kind == Kind::kText || field.kind == Kind::kBytes) {
        text_add(text, field.role == Role::kDriverSized ? " up to %u" : " of %u", field.width);
    }
    if (unit_name(field.unit)[0] != '\0') {
        text_add(text, " %s", unit_name(field.unit));
    }
    if (field.count > 1) {
        text_add(text, ", %u elements", field.count);
    }
}

void field_show(FILE* out, const CommandDescription& command, size_t number)
{
    const Field& field = command.fields()[number];
    char text[160];
    Text kind = text_in(text);
    fprintf(out, "  %-18s %-6s ", field.name, field_direction(command, number));
    const size_t name = strlen(field.name);
    Paragraph paragraph{out, 28, 28 + (name > 18 ? name - 18 : 0)};
    field_addKind(kind, field);
    paragraph_add(paragraph, text);
    if (field.note[0] != '\0') {
        fputc(';', out);
        ++paragraph.column;
        paragraph_add(paragraph, field.note);
    }
    const char* before = ":";
    for (const CodeName& code : field.codes()) {
        fputs(before, out);
        ++paragraph.column;
        kind = text_in(text);
        text_add(kind, "%s (%u)", code.name, static_cast<unsigned>(code.code));
        paragraph_add(paragraph, text);
        before = ",";
    }
    paragraph_end(paragraph);
}

void fields_show(FILE* out, const CommandDescription& command)
{
    bool any = false;
    for (size_t i = 0; i < command.fields().size(); ++i) {
        if (field_direction(command, i) != nullptr) {
            fputs(any ? "" : "Fields\n", out);
            field_show(out, command, i);
            any = true;
        }
    }
    fputs(any ? "" : "Fields   none\n", out);
}

void results_show(FILE* out, const CommandDescription& command)
{
    fputs("Results\n", out);
    for (const ResultMeaning& result : command.results()) {
        fprintf(out, "  %4d   ", result.result);
        Paragraph paragraph{out, 9, 9};
        paragraph_add(paragraph, result.meaning);
        paragraph_end(paragraph);
    }
}

const CommandGroup& group_of(const CommandDescription& command)
{
    for (const CommandGroup* group : catalogue_get()) {
        if (&command >= group->commands.data() &&
            &command < group->commands.data() + group->commands.size()) {
            return *group;
        }
    }
    return *catalogue_get()[0]; // a command is always in a group
}

void call_show(FILE* out, const CommandDescription& command)
{
    char text[120];
    Text call = text_in(text);
    text_add(call, "maint_");
    for (const char* at = command.name; *at != '\0'; ++at) {
        const bool capital = *at >= 'A' && *at <= 'Z';
        text_addChar(call, capital ? static_cast<char>(*at | 0x20) : *at);
    }
    text_add(call, "() of maint/commands/%s.h", group_of(command).name);
    Paragraph paragraph = heading_begin(out, "In C");
    paragraph_add(paragraph, text);
    paragraph_end(paragraph);
}

void text_show(FILE* out, const CommandDescription& command)
{
    const int first =
        fprintf(out, "%s  0x%04X  ", command.name, static_cast<unsigned>(command.code));
    Paragraph summary{out, static_cast<size_t>(std::max(first, 0))};
    summary.column = summary.indent;
    paragraph_add(summary, command.summary);
    paragraph_end(summary);
    Paragraph stays{out, 0};
    paragraph_add(stays, command.stays != nullptr ? "Stays set:" : "Nothing stays set.");
    paragraph_add(stays, command.stays != nullptr ? command.stays : "");
    paragraph_end(stays);
    if (command.note != nullptr) {
        Paragraph note{out, 0};
        paragraph_add(note, "Note:");
        paragraph_add(note, command.note);
        paragraph_end(note);
    }
    fputc('\n', out);
    places_show(out, "Reads", command.reads);
    places_show(out, "Changes", command.changes);
    if (command.clears) {
        fputs("Clears   what it reads: the next reading begins anew\n", out);
    }
    fields_show(out, command);
    results_show(out, command);
    call_show(out, command);
    char example[kWrongMax];
    Text line = text_in(example);
    text_add(line, "maintctl ");
    example_add(line, command);
    Paragraph paragraph = heading_begin(out, "Example");
    paragraph_add(paragraph, example);
    paragraph_end(paragraph);
}

void places_json(Json& json, const char* key, Places places)
{
    json_key(json, key);
    json_open(json, '[');
    for (unsigned place = 0; place < kPlaceCount; ++place) {
        if ((places & place_bit(static_cast<Place>(place))) != 0) {
            json_text(json, place_name(static_cast<Place>(place)));
        }
    }
    json_close(json, ']');
}

void text_json(Json& json, const char* key, const char* text)
{
    json_key(json, key);
    if (text != nullptr) {
        json_text(json, text);
    } else {
        json_null(json);
    }
}

void number_json(Json& json, const char* key, int64_t number)
{
    json_key(json, key);
    json_number(json, number);
}

void field_json(Json& json, const CommandDescription& command, size_t number)
{
    const Field& field = command.fields()[number];
    json_open(json, '{');
    text_json(json, "name", field.name);
    text_json(json, "direction", field_direction(command, number));
    text_json(json, "kind", kind_name(field));
    number_json(json, "offset", field.offset);
    number_json(json, "width", field.width);
    number_json(json, "count", field.count);
    if (value_isNumber(field)) {
        number_json(json, "least", field.least);
        number_json(json, "most", field.most);
    }
    text_json(json, "unit", unit_name(field.unit));
    text_json(json, "note", field.note);
    if (field.kind == Kind::kCode) {
        json_key(json, "codes");
        json_open(json, '{');
        for (const CodeName& code : field.codes()) {
            number_json(json, code.name, code.code);
        }
        json_close(json, '}');
    }
    json_close(json, '}');
}

void command_json(FILE* out, const CommandDescription& command)
{
    Json json{out};
    json_open(json, '{');
    text_json(json, "command", command.name);
    number_json(json, "code", command.code);
    text_json(json, "group", group_of(command).name);
    text_json(json, "summary", command.summary);
    text_json(json, "stays", command.stays);
    text_json(json, "note", command.note);
    places_json(json, "reads", command.reads);
    places_json(json, "changes", command.changes);
    json_key(json, "clears");
    json_bool(json, command.clears);
    number_json(json, "record", command.record);
    json_key(json, "fields");
    json_open(json, '[');
    for (size_t i = 0; i < command.fields().size(); ++i) {
        if (field_direction(command, i) != nullptr) {
            field_json(json, command, i);
        }
    }
    json_close(json, ']');
    json_key(json, "results");
    json_open(json, '[');
    for (const ResultMeaning& result : command.results()) {
        json_open(json, '{');
        number_json(json, "result", result.result);
        text_json(json, "meaning", result.meaning);
        json_close(json, '}');
    }
    json_close(json, ']');
    json_close(json, '}');
    fputc('\n', out);
}

// A value of the field that the command takes.
void value_addExample(Text& text, const Field& field)
{
    uint32_t number = field.least == 0 && field.most >= 1 ? 1 : field.least;
    if (field.role == Role::kIndex) {
        number = field.sweep.first;
    }
    for (unsigned element = 0; element < field.count; ++element) {
        text_add(text, element != 0 ? "," : "");
        switch (field.kind) {
        case Kind::kIpv4:
            text_add(text, "10.0.0.1");
            break;
        case Kind::kAddress6:
            text_add(text, "02:00:00:00:00:01");
            break;
        case Kind::kText:
            text_add(text, "A");
            break;
        case Kind::kBytes:
            for (unsigned i = 0; i < field.width; ++i) {
                text_add(text, "01");
            }
            break;
        case Kind::kCode:
            text_add(text, "%s", field.codes()[0].name);
            break;
        case Kind::kHex:
        case Kind::kBits:
            text_add(text, "0x%0*x", 2 * field.width, static_cast<unsigned>(number));
            break;
        default:
            text_add(text, "%u", static_cast<unsigned>(number));
        }
    }
}

// More than somebody would type.
bool takes_manyBytes(const CommandDescription& command)
{
    constexpr unsigned kMany = 16;
    for (size_t i = 0; i < command.fields().size(); ++i) {
        if (field_in(command.in, i) && command.fields()[i].kind == Kind::kBytes &&
            command.fields()[i].width > kMany) {
            return true;
        }
    }
    return false;
}

} // namespace

void example_add(Text& text, const CommandDescription& command)
{
    if (takes_manyBytes(command)) {
        text_add(text, "-x %s record=01", command.name);
        return;
    }
    text_add(text, "%s", command.name);
    for (size_t i = 0; i < command.fields().size(); ++i) {
        const Field& field = command.fields()[i];
        if (field_in(command.in, i) && !field_in(command.out, i)) {
            text_add(text, " %s=", field.name);
            value_addExample(text, field);
        }
    }
}

int describe_show(const Session& session, const char* word)
{
    char wrong[kWrongMax];
    Text why = text_in(wrong);
    const CommandDescription* const command = command_named(word, why);
    if (command == nullptr) {
        return call_refuse(session, wrong);
    }
    if (session.json) {
        command_json(session.out, *command);
    } else {
        text_show(session.out, *command);
    }
    return 0;
}
