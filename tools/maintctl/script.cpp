#include <cerrno>
#include <cstring>

#include "tools/maintctl/command.h"
#include "tools/maintctl/exit_status.h"
#include "tools/maintctl/verbs.h"

namespace
{

// The whole script is read before its first command runs.
constexpr size_t kScriptMax = 65536;
constexpr size_t kLineMax = 4096;

char script[kScriptMax + 1];

// A line, cut into words in place.
struct ScriptLine {
    char text[kLineMax];
    const char* words[kWordsMax];
    size_t words_count;
};

// A word up to a blank that stands in no quotes; quotes are taken away. Returns where it ends, null:
// the quotes do not.
char* word_end(char* at)
{
    char* to = at;
    char quote = '\0';
    for (; *at != '\0' && (quote != '\0' || (*at != ' ' && *at != '\t')); ++at) {
        if (quote == '\0' ? *at == '"' || *at == '\'' : *at == quote) {
            quote = quote == '\0' ? *at : '\0';
        } else {
            *to++ = *at;
        }
    }
    if (quote != '\0') {
        return nullptr;
    }
    char* const end = *at == '\0' ? at : at + 1;
    *to = '\0';
    return end;
}

bool line_split(const char* begin, size_t length, ScriptLine& line, Text& wrong)
{
    line.words_count = 0;
    if (length != 0 && begin[length - 1] == '\r') {
        --length;
    }
    if (length >= kLineMax) {
        text_add(wrong, "the line has %zu characters; %zu is the most", length, kLineMax - 1);
        return false;
    }
    if (memchr(begin, '\0', length) != nullptr) {
        text_add(wrong, "the line has a zero byte");
        return false;
    }
    memcpy(line.text, begin, length);
    line.text[length] = '\0';
    char* at = line.text + strspn(line.text, " \t");
    while (*at != '\0' && *at != '#') {
        if (line.words_count == kWordsMax) {
            text_add(wrong, "more than %zu words", kWordsMax);
            return false;
        }
        line.words[line.words_count++] = at;
        at = word_end(at);
        if (at == nullptr) {
            text_add(wrong, "quotes that do not end");
            return false;
        }
        at += strspn(at, " \t");
    }
    return true;
}

bool verb_is(const char* word)
{
    for (size_t i = 0; verb_name(i) != nullptr; ++i) {
        if (strcmp(word, verb_name(i)) == 0) {
            return true;
        }
    }
    return false;
}

bool line_read(const Session& session, const ScriptLine& line, Invocation& invocation, Text& wrong)
{
    if (verb_is(line.words[0])) {
        text_add(wrong, "a script has device commands only, not %s", line.words[0]);
        return false;
    }
    return invocation_read(Words{line.words, line.words_count}, session, invocation, wrong);
}

// Goes through all lines: checks them, or runs them. Returns the status of the first that fails.
int lines_pass(const Session& session, const char* name, size_t length, bool runs)
{
    char where[100];
    size_t number = 0;
    for (const char *at = script, *const end = script + length; at < end;) {
        const auto* const line_end =
            static_cast<const char*>(memchr(at, '\n', static_cast<size_t>(end - at)));
        const auto line_length = static_cast<size_t>((line_end != nullptr ? line_end : end) - at);
        Text place = text_in(where);
        text_addTyped(place, name, strlen(name));
        text_add(place, ":%zu: ", ++number);
        ScriptLine line;
        Invocation invocation;
        char wrong[kWrongMax];
        Text why = text_in(wrong);
        text_add(why, "%s", where);
        if (!line_split(at, line_length, line, why) ||
            (line.words_count != 0 && !line_read(session, line, invocation, why))) {
            return call_refuse(session, wrong);
        }
        if (runs && line.words_count != 0) {
            const Words words{line.words, line.words_count};
            const int status = output_end(session, command_run(session, invocation, where, words));
            if (status != 0) {
                return status;
            }
        }
        at += line_length + 1;
    }
    return 0;
}

} // namespace

int script_run(const Session& session, const char* path)
{
    const bool standard = strcmp(path, "-") == 0;
    const char* const name = standard ? "standard input" : path;
    char wrong[kWrongMax];
    Text why = text_in(wrong);
    text_addTyped(why, name, strlen(name));
    FILE* const file = standard ? stdin : fopen(path, "re");
    if (file == nullptr) {
        text_add(why, " cannot be read: %s", error_text(errno));
        return call_refuse(session, wrong);
    }
    const size_t length = fread(script, 1, sizeof script, file);
    const int error = errno;
    const bool failed = ferror(file) != 0;
    if (!standard) {
        fclose(file);
    }
    if (failed || length > kScriptMax) {
        if (failed) {
            text_add(why, " cannot be read: %s", error_text(error));
        } else {
            text_add(why, " has more than %zu bytes", kScriptMax);
        }
        return call_refuse(session, wrong);
    }
    const int status = lines_pass(session, name, length, false);
    return status != 0 ? status : lines_pass(session, name, length, true);
}
