#include "tools/maintctl/options.h"

#include <cstring>
#include <iterator>

#include "tools/maintctl/nearest.h"

namespace
{

struct Option {
    char letter;
    const char* name;
};

constexpr Option kOptions[] = {{'j', "json"},  {'t', "trace"}, {'n', "dry-run"}, {'x', "hex"},
                               {'w', "watch"}, {'h', "help"},  {'V', "version"}};

constexpr double kWatchLeast = 0.1;
constexpr double kWatchMost = 86400;

// Seconds as people write them: "2", "0.5". Neither a sign nor an exponent.
bool seconds_read(const char* text, double& seconds)
{
    double number = 0;
    double place = 0; // of the next digit behind the point; 0: there was none yet
    bool digits = false;
    for (; *text != '\0'; ++text) {
        if (*text == '.' && place == 0) {
            place = 0.1;
        } else if (*text < '0' || *text > '9') {
            return false;
        } else {
            digits = true;
            const double digit = *text - '0';
            number = place == 0 ? number * 10 + digit : number + digit * place;
            place /= 10;
        }
    }
    seconds = number;
    return digits && number >= kWatchLeast && number <= kWatchMost;
}

bool watch_set(Options& options, const char* value, Text& wrong)
{
    if (value != nullptr && seconds_read(value, options.watch)) {
        return true;
    }
    text_add(wrong, "--watch needs seconds from 0.1 to 86400");
    if (value != nullptr) {
        text_add(wrong, ", not '");
        text_addTyped(wrong, value, strlen(value));
        text_addChar(wrong, '\'');
    }
    return false;
}

void option_set(Options& options, char letter)
{
    switch (letter) {
    case 'j':
        options.json = true;
        break;
    case 't':
        options.trace = true;
        break;
    case 'n':
        options.dry_run = true;
        break;
    case 'x':
        options.hex = true;
        break;
    case 'h':
        options.help = true;
        break;
    default:
        options.version = true;
    }
}

void unknown_add(Text& wrong, const char* option, size_t length)
{
    text_add(wrong, "unknown option ");
    text_addTyped(wrong, option, length);
}

// The argument that may belong to an option before it.
struct Next {
    const char* word; // null: there is none
    bool taken;
};

bool long_read(const char* word, Next& next, Options& options, Text& wrong)
{
    const char* const name = word + 2;
    const char* const value = strchr(name, '=');
    const size_t length = value != nullptr ? static_cast<size_t>(value - name) : strlen(name);
    for (const Option& option : kOptions) {
        if (strlen(option.name) != length || strncmp(option.name, name, length) != 0) {
            continue;
        }
        if (option.letter == 'w') {
            next.taken = value == nullptr;
            return watch_set(options, value != nullptr ? value + 1 : next.word, wrong);
        }
        if (value != nullptr) {
            text_add(wrong, "--%s takes no value", option.name);
            return false;
        }
        option_set(options, option.letter);
        return true;
    }
    unknown_add(wrong, word, 2 + length);
    Nearest nearest{.typed = name};
    for (const Option& option : kOptions) {
        nearest_offer(nearest, option.name);
    }
    if (nearest.names[0] != nullptr) {
        text_add(wrong, "; nearest: --%s", nearest.names[0]);
    } else {
        text_add(wrong, "; maintctl -h shows all");
    }
    return false;
}

bool letters_read(const char* letters, Next& next, Options& options, Text& wrong)
{
    for (; *letters != '\0'; ++letters) {
        if (*letters == 'w') {
            next.taken = letters[1] == '\0';
            return watch_set(options, next.taken ? next.word : letters + 1, wrong);
        }
        bool known = false;
        for (const Option& option : kOptions) {
            known = known || option.letter == *letters;
        }
        if (!known) {
            unknown_add(wrong, "-", 1);
            text_addTyped(wrong, letters, 1);
            text_add(wrong, "; maintctl -h shows all");
            return false;
        }
        option_set(options, *letters);
    }
    return true;
}

} // namespace

bool options_read(int argc, char* const* argv, Options& options, Text& wrong)
{
    bool ended = false; // by a word "--"
    for (int i = 1; i < argc; ++i) {
        const char* const word = argv[i];
        if (!ended && strcmp(word, "--") == 0) {
            ended = true;
        } else if (!ended && word[0] == '-' && word[1] != '\0') {
            Next next = {i + 1 < argc ? argv[i + 1] : nullptr, false};
            if (word[1] == '-' ? !long_read(word, next, options, wrong)
                               : !letters_read(word + 1, next, options, wrong)) {
                return false;
            }
            i += next.taken ? 1 : 0;
        } else if (options.words_count == kWordsMax) {
            text_add(wrong, "more than %zu words", kWordsMax);
            return false;
        } else {
            options.words[options.words_count++] = word;
        }
    }
    return true;
}

const char* option_name(size_t number)
{
    return number < std::size(kOptions) ? kOptions[number].name : nullptr;
}

bool option_takesNext(const char* word)
{
    if (word[0] != '-') {
        return false;
    }
    if (word[1] == '-') {
        return strcmp(word, "--watch") == 0;
    }
    const char* const letter = strchr(word, 'w');
    return letter != nullptr && letter[1] == '\0';
}
