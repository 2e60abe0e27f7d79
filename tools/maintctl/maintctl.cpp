#include "tools/maintctl/maintctl.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "tools/maintctl/command.h"
#include "tools/maintctl/exit_status.h"
#include "tools/maintctl/invocation.h"
#include "tools/maintctl/library_calls.h"
#include "tools/maintctl/options.h"
#include "tools/maintctl/verbs.h"
#include "tools/maintctl/watch.h"

namespace
{

// Options that have a meaning for a verb; those that only ask for help always have.
enum : unsigned { kCalls = 1, kHex = 2, kWatch = 4 }; // kCalls: --trace and --dry-run

struct Verb {
    const char* name;
    size_t arguments_least;
    size_t arguments_most;
    const char* argument; // what it takes
    unsigned options;
};

constexpr Verb kList = {"list", 0, 1, "at most one TEXT", 0};
constexpr Verb kDescribe = {"describe", 1, 1, "one COMMAND", 0};
constexpr Verb kStatus = {"status", 0, 0, "no argument", kCalls | kWatch};
constexpr Verb kPanel = {"panel", 0, 0, "no argument", kCalls | kWatch};
constexpr Verb kSnapshot = {"snapshot", 0, 0, "no argument", kCalls};
constexpr Verb kRun = {"run", 0, 1, "at most one FILE", kCalls | kHex};
constexpr Verb kHelpVerb = {"help", 0, 0, "no argument", 0};
constexpr const Verb* kVerbs[] = {&kList,     &kDescribe, &kStatus,  &kPanel,
                                  &kSnapshot, &kRun,      &kHelpVerb};

const Verb* verb_find(const char* word)
{
    for (const Verb* verb : kVerbs) {
        if (strcmp(word, verb->name) == 0) {
            return verb;
        }
    }
    return nullptr;
}

bool verb_fits(const Verb& verb, size_t arguments, const Session& session, Text& wrong)
{
    if (arguments < verb.arguments_least || arguments > verb.arguments_most) {
        text_add(wrong, "%s takes %s", verb.name, verb.argument);
        return false;
    }
    const struct {
        bool given;
        unsigned option;
        const char* name;
    } options[] = {{session.trace, kCalls, "trace"},
                   {session.dry_run, kCalls, "dry-run"},
                   {session.hex, kHex, "hex"},
                   {session.watch > 0, kWatch, "watch"}};
    for (const auto& option : options) {
        if (option.given && (verb.options & option.option) == 0) {
            text_add(wrong, "--%s is not for %s", option.name, verb.name);
            return false;
        }
    }
    return true;
}

int verb_run(const Verb& verb, const Session& session, Words words)
{
    const char* const argument = words.size() > 1 ? words[1] : nullptr;
    char wrong[kWrongMax];
    Text why = text_in(wrong);
    if (!verb_fits(verb, words.size() - 1, session, why)) {
        return call_refuse(session, wrong);
    }
    if (&verb == &kList) {
        return list_show(session, argument);
    }
    if (&verb == &kDescribe) {
        return describe_show(session, argument);
    }
    if (&verb == &kRun) {
        return script_run(session, argument != nullptr ? argument : "-");
    }
    if (&verb == &kSnapshot) {
        return snapshot_make(session);
    }
    if (&verb == &kHelpVerb) {
        return help_show(session);
    }
    const auto show = &verb == &kStatus ? status_show : panel_show;
    return session.watch > 0 ? verb_watch(session, words, show) : show(session);
}

int words_run(const Session& session, Words words)
{
    const Verb* const verb = verb_find(words[0]);
    if (verb != nullptr) {
        return verb_run(*verb, session, words);
    }
    char wrong[kWrongMax];
    Text why = text_in(wrong);
    Invocation invocation;
    if (!invocation_read(words, session, invocation, why)) {
        return call_refuse(session, wrong);
    }
    return session.watch > 0 ? command_watch(session, invocation, words)
                             : command_run(session, invocation);
}

// Whether a variable of the environment is there and is not `except`.
bool environment_has(const char* name, const char* except)
{
    const char* const value = getenv(name);
    return value != nullptr && strcmp(value, except) != 0;
}

bool isTerminal(FILE* file)
{
    const int descriptor = fileno(file);
    return descriptor >= 0 && isatty(descriptor) == 1;
}

} // namespace

const char* verb_name(size_t number)
{
    return number < std::size(kVerbs) ? kVerbs[number]->name : nullptr;
}

int call_refuse(const Session& session, const char* message)
{
    fprintf(session.err, "maintctl: %s\n", message);
    return kExitUsage;
}

int output_end(const Session& session, int status)
{
    errno = 0;
    if (fflush(session.out) == 0 && ferror(session.out) == 0) {
        return status;
    }
    if (errno != EPIPE) { // who reads no more, as `head`, knows
        fprintf(session.err, "maintctl: the output cannot be written%s%s\n", errno != 0 ? ": " : "",
                errno != 0 ? error_text(errno) : "");
    }
    return kExitOutput;
}

int maintctl_run(int argc, char* const* argv, FILE* out, FILE* err)
{
    Session session{.out = out, .err = err};
    if (argc > 2 && strcmp(argv[1], "complete") == 0) { // what is typed so far may be wrong
        return output_end(session,
                          complete_show(session, Words{argv + 2, static_cast<size_t>(argc) - 2}));
    }
    Options options;
    char wrong[kWrongMax];
    Text why = text_in(wrong);
    if (!options_read(argc, argv, options, why)) {
        return call_refuse(session, wrong);
    }
    if (options.help) {
        return output_end(session, help_show(session));
    }
    if (options.version) {
        fputs("maintctl " MAINT_VERSION "\n", out);
        return output_end(session, 0);
    }
    if (options.words_count == 0) {
        return usage_show(err);
    }
    session.json = options.json;
    session.trace = options.trace;
    session.dry_run = options.dry_run;
    session.hex = options.hex;
    session.watch = options.watch;
    session.terminal = isTerminal(out) && environment_has("TERM", "dumb");
    session.colours = session.terminal && !environment_has("NO_COLOR", "");
    const LibraryCalls calls{
        .console = err, .trace = session.trace ? err : nullptr, .dry_run = session.dry_run};
    libraryCalls_set(&calls);
    const int status = words_run(session, Words{options.words, options.words_count});
    libraryCalls_set(nullptr);
    // A watch has told already that the output cannot be written.
    return status == kExitOutput ? status : output_end(session, status);
}
