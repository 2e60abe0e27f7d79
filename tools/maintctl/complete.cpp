#include <cstring>

#include "tools/maintctl/invocation.h"
#include "tools/maintctl/verbs.h"

namespace
{

// What a completion is made for.
struct Completion {
    FILE* out;
    const char* typed; // so far
};

bool begins_with(const char* name, const char* typed)
{
    return text_same(name, typed, strlen(typed));
}

void options_complete(const Completion& completion)
{
    for (size_t i = 0; option_name(i) != nullptr; ++i) {
        char option[32];
        Text text = text_in(option);
        text_add(text, "--%s", option_name(i));
        if (begins_with(option, completion.typed)) {
            fprintf(completion.out, "%s\n", option);
        }
    }
}

void verbs_complete(const Completion& completion)
{
    for (size_t i = 0; verb_name(i) != nullptr; ++i) {
        if (strncmp(verb_name(i), completion.typed, strlen(completion.typed)) == 0) {
            fprintf(completion.out, "%s\n", verb_name(i));
        }
    }
}

// In small letters where small letters were typed.
void commands_complete(const Completion& completion)
{
    const bool small = strpbrk(completion.typed, "abcdefghijklmnopqrstuvwxyz") != nullptr;
    for (const CommandGroup* group : catalogue_get()) {
        for (const CommandDescription& command : group->commands) {
            if (!begins_with(command.name, completion.typed)) {
                continue;
            }
            for (const char* at = command.name; *at != '\0'; ++at) {
                const bool lowered = small && *at >= 'A' && *at <= 'Z';
                fputc(lowered ? *at | 0x20 : *at, completion.out);
            }
            fputc('\n', completion.out);
        }
    }
}

// Whether one of the words gives the field.
bool field_isGiven(const Field& field, Words words)
{
    for (const char* word : words) {
        const size_t length = strcspn(word, "=");
        for (const char* name : {field.name, field_lastPart(field)}) {
            if (word[length] == '=' && strlen(name) == length && text_same(word, name, length)) {
                return true;
            }
        }
    }
    return false;
}

void value_complete(const Completion& completion, const Field& field, const char* value)
{
    const auto name_length = static_cast<int>(value - completion.typed); // with its "="
    const auto offer = [&](const char* candidate) {
        if (begins_with(candidate, value)) {
            fprintf(completion.out, "%.*s%s\n", name_length, completion.typed, candidate);
        }
    };
    if (field.kind == Kind::kFlag && field.count == 1) {
        offer("0");
        offer("1");
    }
    for (const CodeName& code : field.codes()) {
        offer(code.name);
    }
}

void fields_complete(const Completion& completion, const CommandDescription& command, Words given)
{
    const char* const sign = strchr(completion.typed, '=');
    for (size_t i = 0; i < command.fields().size(); ++i) {
        const Field& field = command.fields()[i];
        if (!field_in(command.in, i)) {
            continue;
        }
        if (sign != nullptr) {
            const char* const typed = completion.typed;
            if (field_isGiven(field, Words{&typed, 1})) {
                value_complete(completion, field, sign + 1);
            }
        } else if (begins_with(field.name, completion.typed) && !field_isGiven(field, given)) {
            fprintf(completion.out, "%s=\n", field.name);
        }
    }
}

bool word_asksHex(const char* word)
{
    return strcmp(word, "--hex") == 0 ||
           (word[0] == '-' && word[1] != '-' && strchr(word, 'x') != nullptr);
}

} // namespace

int complete_show(const Session& session, Words words)
{
    if (words.empty()) {
        return 0;
    }
    const Completion completion{session.out, words.back()};
    words = words.first(words.size() - 1);
    const char* first = nullptr; // the command or the verb
    bool hex = false;
    bool value = false; // the next word is an option's
    size_t behind = words.size();
    for (size_t i = 0; i < words.size(); ++i) {
        const bool is_option = !value && words[i][0] == '-';
        hex = hex || (is_option && word_asksHex(words[i]));
        if (!value && !is_option && first == nullptr) {
            first = words[i];
            behind = i + 1;
        }
        value = is_option && option_takesNext(words[i]);
    }
    if (value) {
        return 0;
    }
    if (completion.typed[0] == '-') {
        options_complete(completion);
    } else if (first == nullptr) {
        verbs_complete(completion);
        commands_complete(completion);
    } else if (strcmp(first, "describe") == 0) {
        if (behind == words.size()) {
            commands_complete(completion);
        }
    } else {
        char unused[kWrongMax];
        Text none = text_in(unused);
        const CommandDescription* const command = command_named(first, none);
        if (command != nullptr && hex) {
            fputs(begins_with("record=", completion.typed) ? "record=\n" : "", session.out);
        } else if (command != nullptr) {
            fields_complete(completion, *command, words.subspan(behind));
        }
    }
    return 0;
}
