#include "tools/maintctl/invocation.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/maintctl/nearest.h"
#include "tools/maintctl/values.h"
#include "tools/maintctl/verbs.h"

namespace
{

// Where a dry run can hold back what is written, and the command does the same without it.
constexpr Places kHeldBack = place_bit(Place::kFpga) | place_bit(Place::kRtc) |
                             place_bit(Place::kSystemClock) | place_bit(Place::kSystemLog) |
                             place_bit(Place::kUserLog);

// A field, or one element of it, with its value.
struct Assignment {
    const char* word;
    size_t name_length;
    int element; // -1: all
    const char* value;
};

void typed_add(Text& text, const char* word)
{
    text_addTyped(text, word, strlen(word));
}

bool name_is(const char* name, const char* typed, size_t length)
{
    return strlen(name) == length && text_same(typed, name, length);
}

// "NAME=VALUE" or "NAME[ELEMENT]=VALUE".
bool assignment_split(const char* word, Assignment& assignment, Text& wrong)
{
    const char* const sign = strchr(word, '=');
    if (sign == nullptr || sign == word) {
        typed_add(wrong, word);
        text_add(wrong, " is not FIELD=VALUE");
        return false;
    }
    assignment = {word, static_cast<size_t>(sign - word), -1, sign + 1};
    const auto* const bracket = static_cast<const char*>(memchr(word, '[', assignment.name_length));
    if (bracket == nullptr) {
        return true;
    }
    assignment.name_length = static_cast<size_t>(bracket - word);
    constexpr int kMost = 999; // more than any field has
    int element = 0;
    const char* at = bracket + 1;
    for (; *at >= '0' && *at <= '9' && element <= kMost; ++at) {
        element = element * 10 + (*at - '0');
    }
    if (at == bracket + 1 || at + 1 != sign || *at != ']') {
        text_addTyped(wrong, bracket, static_cast<size_t>(sign - bracket));
        text_add(wrong, " is not the number of an element, such as [0]");
        return false;
    }
    assignment.element = element;
    return true;
}

void fields_add(const CommandDescription& command, Text& text)
{
    if (command.in == 0) {
        text_add(text, "; %s takes no fields", command.name);
        return;
    }
    const char* before = "; its fields: ";
    for (size_t i = 0; i < command.fields().size(); ++i) {
        if (field_in(command.in, i)) {
            text_add(text, "%s%s", before, command.fields()[i].name);
            before = ", ";
        }
    }
}

// Which bytes of the record have been given.
struct Given {
    bool bytes[DEVICE_RECORD_MAX] = {};
};

// False: a part of this has been given before.
bool given_add(Given& given, size_t offset, size_t length)
{
    for (size_t i = offset; i < offset + length; ++i) {
        if (given.bytes[i]) {
            return false;
        }
        given.bytes[i] = true;
    }
    return true;
}

bool field_assign(const char* word, Invocation& invocation, Given& given, Text& wrong)
{
    const CommandDescription& command = *invocation.command;
    const size_t before = wrong.length;
    Assignment assignment{};
    text_add(wrong, "%s: ", command.name);
    if (!assignment_split(word, assignment, wrong)) {
        fields_add(command, wrong);
        return false;
    }
    text_cut(wrong, before);
    const Field* const field = field_named(command, assignment.word, assignment.name_length, wrong);
    if (field == nullptr) {
        return false;
    }
    text_add(wrong, "%s: ", command.name);
    const bool one = assignment.element >= 0;
    if (one && field->count == 1) {
        text_add(wrong, "%s has no elements: write %s=VALUE", field->name, field->name);
        return false;
    }
    if (one && assignment.element >= field->count) {
        text_add(wrong, "%s has the elements 0 to %u, and no [%d]", field->name, field->count - 1U,
                 assignment.element);
        return false;
    }
    const size_t first = one ? static_cast<size_t>(assignment.element) : 0;
    if (!given_add(given, field->offset + first * field->width,
                   size_t{field->width} * (one ? 1 : field->count))) {
        text_add(wrong, one ? "%s[%d] is given twice" : "%s is given twice", field->name,
                 assignment.element);
        return false;
    }
    char reason[kValueMax];
    if (value_read(*field, assignment.element, assignment.value, invocation.record, reason) !=
        nullptr) {
        typed_add(wrong, word);
        text_add(wrong, " %s", reason);
        return false;
    }
    text_cut(wrong, before);
    return true;
}

bool recordFile_read(const char* path, Invocation& invocation, Text& wrong)
{
    const uint16_t record = invocation.command->record;
    uint8_t bytes[DEVICE_RECORD_MAX + 1];
    FILE* const file = fopen(path, "re");
    size_t length = 0;
    bool failed = file == nullptr;
    int error = errno;
    if (file != nullptr) {
        length = fread(bytes, 1, record + size_t{1}, file);
        error = errno;
        failed = ferror(file) != 0;
        fclose(file);
    }
    if (!failed && length <= record) {
        memcpy(invocation.record, bytes, length);
        return true;
    }
    text_add(wrong, "record=@");
    typed_add(wrong, path);
    if (failed) {
        text_add(wrong, " cannot be read: %s", error_text(error));
    } else {
        text_add(wrong, " has more than the %u bytes of the record", record);
    }
    return false;
}

// The whole record, as --hex has it.
bool record_assign(const char* word, Invocation& invocation, Given& given, Text& wrong)
{
    const CommandDescription& command = *invocation.command;
    const size_t before = wrong.length;
    text_add(wrong, "%s: ", command.name);
    if (!text_same(word, "record=", 7)) {
        text_add(wrong, "with --hex only record=BYTES or record=@FILE is taken, not ");
        typed_add(wrong, word);
        return false;
    }
    if (command.record == 0) {
        text_add(wrong, "it has no record");
        return false;
    }
    if (!given_add(given, 0, command.record)) {
        text_add(wrong, "record is given twice");
        return false;
    }
    const char* const value = word + 7;
    if (value[0] == '@') {
        if (!recordFile_read(value + 1, invocation, wrong)) {
            return false;
        }
        text_cut(wrong, before);
        return true;
    }
    Field all{};
    all.width = command.record;
    all.count = 1;
    all.kind = Kind::kBytes;
    all.role = Role::kDriverSized; // fewer bytes are filled with zeros
    char reason[kValueMax];
    if (value_read(all, -1, value, invocation.record, reason) != nullptr) {
        typed_add(wrong, word);
        text_add(wrong, " %s", reason);
        return false;
    }
    text_cut(wrong, before);
    return true;
}

// The first file that the command changes; null: none.
const char* changedFile_name(const CommandDescription& command)
{
    for (unsigned place = 0; place < kPlaceCount; ++place) {
        const Places bit = place_bit(static_cast<Place>(place));
        if ((command.changes & bit & ~kHeldBack) != 0) {
            return place_name(static_cast<Place>(place));
        }
    }
    return nullptr;
}

// Whether the options have a meaning for this command.
bool options_fit(const CommandDescription& command, const Session& session, Text& wrong)
{
    const char* const file = session.dry_run ? changedFile_name(command) : nullptr;
    if (file != nullptr) {
        text_add(wrong, "%s changes %s, which --dry-run cannot hold back", command.name, file);
        return false;
    }
    if (session.watch > 0 && !command_isReport(command)) {
        text_add(wrong, "--watch is for reports, and %s is none", command.name);
        return false;
    }
    return true;
}

} // namespace

bool command_isReport(const CommandDescription& command)
{
    return strncmp(command.name, "RD_", 3) == 0;
}

const char* field_lastPart(const Field& field)
{
    const char* const dot = strrchr(field.name, '.');
    return dot != nullptr ? dot + 1 : field.name;
}

const CommandDescription* command_named(const char* word, Text& wrong)
{
    uint64_t code = 0;
    if (number_parse(word, strlen(word), code)) {
        const CommandDescription* const command =
            code <= UINT32_MAX ? command_find(static_cast<DeviceCommandCode>(code)) : nullptr;
        if (command == nullptr) {
            text_add(wrong, "no command has the number ");
            typed_add(wrong, word);
        }
        return command;
    }
    Nearest nearest{.typed = word};
    for (const CommandGroup* group : catalogue_get()) {
        for (const CommandDescription& command : group->commands) {
            if (text_same(word, command.name, SIZE_MAX)) {
                return &command;
            }
            nearest_offer(nearest, command.name);
        }
    }
    for (size_t i = 0; verb_name(i) != nullptr; ++i) {
        nearest_offer(nearest, verb_name(i));
    }
    text_add(wrong, "unknown command '");
    typed_add(wrong, word);
    text_addChar(wrong, '\'');
    if (nearest.names[0] != nullptr) {
        nearest_add(nearest, wrong);
    } else {
        text_add(wrong, "; maintctl list shows all");
    }
    return nullptr;
}

const Field* field_named(const CommandDescription& command, const char* typed, size_t length,
                         Text& wrong)
{
    const Field* read = nullptr;
    const Field* second = nullptr;
    bool known = false;
    for (size_t i = 0; i < command.fields().size(); ++i) {
        const Field& field = command.fields()[i];
        const bool whole = name_is(field.name, typed, length);
        if (!whole && !name_is(field_lastPart(field), typed, length)) {
            continue;
        }
        if (!field_in(command.in, i)) {
            known = true;
        } else if (whole) {
            return &field;
        } else {
            second = read;
            read = &field;
        }
    }
    if (read != nullptr && second == nullptr) {
        return read;
    }
    if (read != nullptr) {
        text_addTyped(wrong, typed, length);
        text_add(wrong, " can be %s or %s", second->name, read->name);
    } else if (known) {
        text_addTyped(wrong, typed, length);
        text_add(wrong, " is not read by %s", command.name);
        fields_add(command, wrong);
    } else {
        text_add(wrong, "%s has no field ", command.name);
        text_addTyped(wrong, typed, length);
        if (name_is("record", typed, length)) {
            text_add(wrong, " (record= needs --hex)");
        }
        fields_add(command, wrong);
    }
    return nullptr;
}

bool invocation_read(Words words, const Session& session, Invocation& invocation, Text& wrong)
{
    invocation = {};
    invocation.command = command_named(words[0], wrong);
    if (invocation.command == nullptr || !options_fit(*invocation.command, session, wrong)) {
        return false;
    }
    Given given;
    for (const char* word : words.subspan(1)) {
        if (session.hex ? !record_assign(word, invocation, given, wrong)
                        : !field_assign(word, invocation, given, wrong)) {
            return false;
        }
    }
    return true;
}
