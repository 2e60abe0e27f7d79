#include "tools/maintctl/watch.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/select.h>
#include <unistd.h>

#include "tools/maintctl/command.h"
#include "tools/maintctl/exit_status.h"
#include "tools/maintctl/result.h"
#include "tools/maintctl/verbs.h"

namespace
{

volatile sig_atomic_t interrupted;

void interrupt_note(int /*signal*/)
{
    interrupted = 1;
}

// Ctrl-C ends the watch between two rounds. The second one ends the program at once, should a round
// wait for something.
struct Interrupt {
    struct sigaction before;
    sigset_t mask_before;
};

void interrupt_catch(Interrupt& interrupt)
{
    interrupted = 0;
    sigaction(SIGINT, nullptr, &interrupt.before);
    if (interrupt.before.sa_handler != SIG_IGN) {
        struct sigaction action = {};
        action.sa_handler = interrupt_note;
        action.sa_flags = SA_RESTART; // what the library does goes on
        action.sa_flags |= static_cast<int>(SA_RESETHAND);
        sigaction(SIGINT, &action, nullptr);
    }
}

void interrupt_release(const Interrupt& interrupt)
{
    sigaction(SIGINT, &interrupt.before, nullptr);
}

// False: interrupted, now or before.
bool interval_wait(double seconds)
{
    sigset_t only;
    sigset_t before;
    sigemptyset(&only);
    sigaddset(&only, SIGINT);
    sigprocmask(SIG_BLOCK, &only, &before); // it comes in while pselect waits, or not at all
    if (interrupted == 0) {
        struct timespec time = {};
        time.tv_sec = static_cast<time_t>(seconds);
        time.tv_nsec =
            static_cast<long>((seconds - static_cast<double>(time.tv_sec)) * 1000000000.0);
        pselect(0, nullptr, nullptr, nullptr, &time, &before);
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return interrupted == 0;
}

// The longest round: the fields of a record, or a screen with its colours.
constexpr size_t kRoundMax = 16384;

struct Round {
    char text[kRoundMax];
};

Round rounds[2];

// A line of a round, without its end.
struct Line {
    const char* begin;
    size_t length;
};

Line line_next(const char*& at)
{
    const Line line = {at, strcspn(at, "\n")};
    at += line.length + (at[line.length] == '\n' ? 1 : 0);
    return line;
}

bool lines_equal(const Line& one, const Line& other)
{
    return one.length == other.length && memcmp(one.begin, other.begin, one.length) == 0;
}

// On a terminal what changed stands in reverse video.
void line_redraw(FILE* out, const Line& line, const Line& before, bool marked)
{
    if (!marked || lines_equal(line, before)) {
        fwrite(line.begin, 1, line.length, out);
    } else if (memchr(line.begin, '\x1b', line.length) != nullptr) { // it has colours of its own
        fwrite(line.begin, 1, line.length, out);
        fputs(" *", out);
    } else {
        bool reverse = false;
        for (size_t i = 0; i < line.length; ++i) {
            const bool changed = i >= before.length || line.begin[i] != before.begin[i];
            if (changed != reverse) {
                fputs(changed ? "\x1b[7m" : "\x1b[0m", out);
                reverse = changed;
            }
            fputc(line.begin[i], out);
        }
        fputs(reverse ? "\x1b[0m" : "", out);
    }
    fputs("\x1b[K\n", out);
}

void line_append(FILE* out, const Line& line, const Line& before, bool marked)
{
    fputs(marked && !lines_equal(line, before) ? "* " : "  ", out);
    fwrite(line.begin, 1, line.length, out);
    fputc('\n', out);
}

void round_show(const Session& session, const char* text, const char* before, bool first)
{
    while (*text != '\0') {
        const Line line = line_next(text);
        const Line line_before = line_next(before);
        (session.terminal ? line_redraw : line_append)(session.out, line, line_before, !first);
    }
    if (session.terminal) {
        fputs("\x1b[J", session.out);
    }
}

// What is watched: a command, or a verb.
struct Subject {
    const Invocation* invocation = nullptr;
    Words words = {};
    int (*show)(const Session& session) = nullptr;
};

void title_show(FILE* out, Words words)
{
    char text[80];
    Text title = text_in(text);
    const time_t now = time(nullptr);
    struct tm clock = {};
    localtime_r(&now, &clock);
    text_add(title, "# %02d:%02d:%02d", clock.tm_hour, clock.tm_min, clock.tm_sec);
    for (const char* word : words) {
        text_addChar(title, ' ');
        text_addTyped(title, word, strlen(word));
    }
    fprintf(out, "%s\n", text);
}

void screen_begin(const Session& session, const Subject& subject, bool first)
{
    if (session.terminal) {
        fputs(first ? "\x1b[H\x1b[2J" : "\x1b[H", session.out);
    }
    if (!session.terminal ||
        subject.invocation != nullptr) { // a verb fills the screen, with its own time
        title_show(session.out, subject.words);
    }
}

int subject_show(const Session& session, const Subject& subject)
{
    return subject.invocation != nullptr ? command_run(session, *subject.invocation)
                                         : subject.show(session);
}

// One round as text, marked against the one before.
int text_round(const Session& session, const Subject& subject, unsigned number)
{
    Round& now = rounds[number % 2];
    // The board's C library has no streams into memory; a pipe holds far more than a round.
    int ends[2];
    FILE* const file = pipe(ends) == 0 ? fdopen(ends[1], "w") : nullptr;
    if (file == nullptr) {
        fprintf(session.err, "maintctl: no pipe\n");
        return kExitOutput;
    }
    fcntl(ends[1], F_SETFL, O_NONBLOCK); // and should it not, the rest is left out
    Session inner = session;
    inner.out = file;
    if (session.terminal) {
        inner.err = file; // a failure belongs to the screen, too
    }
    screen_begin(session, subject, number == 0);
    fflush(session.out); // before what goes to `err`
    const int status = subject_show(inner, subject);
    fclose(file);
    const ssize_t count = read(ends[0], now.text, sizeof now.text - 1);
    now.text[count > 0 ? count : 0] = '\0';
    close(ends[0]);
    round_show(session, now.text, rounds[(number + 1) % 2].text, number == 0);
    return status;
}

// Names the fields of a report that are not as in the round before.
void changes_json(Json& json, const CommandDescription& command, const uint8_t* record,
                  const uint8_t* before)
{
    json_key(json, "changed");
    json_open(json, '[');
    for (size_t i = 0; i < command.fields().size(); ++i) {
        const Field& field = command.fields()[i];
        if (field_in(command.out, i) && memcmp(record + field.offset, before + field.offset,
                                               size_t{field.width} * field.count) != 0) {
            json_text(json, field.name);
        }
    }
    json_close(json, ']');
}

int json_round(const Session& session, const Subject& subject, unsigned number)
{
    if (subject.invocation == nullptr) {
        return subject.show(session);
    }
    static uint8_t before[DEVICE_RECORD_MAX];
    Invocation answer = *subject.invocation;
    const int32_t result = Fpga_Register_Set(answer.command->code, answer.record);
    Json json{session.out};
    json_open(json, '{');
    result_json(json, *answer.command, result, answer.record);
    changes_json(json, *answer.command, answer.record, number == 0 ? answer.record : before);
    json_close(json, '}');
    fputc('\n', session.out);
    memcpy(before, answer.record, sizeof before);
    return exitStatus_of(result);
}

int subject_watch(const Session& session, const Subject& subject)
{
    Interrupt interrupt{};
    interrupt_catch(interrupt);
    int status = 0;
    unsigned number = 0;
    do {
        status = (session.json ? json_round : text_round)(session, subject, number++);
        status = output_end(session, status);
    } while (status != kExitOutput && interval_wait(session.watch));
    interrupt_release(interrupt);
    return status;
}

} // namespace

int command_watch(const Session& session, const Invocation& invocation, Words words)
{
    return subject_watch(session, {.invocation = &invocation, .words = words});
}

int verb_watch(const Session& session, Words words, int (*show)(const Session& session))
{
    return subject_watch(session, {.words = words, .show = show});
}
