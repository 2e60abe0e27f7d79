// The options of a command line, and the words between them.
#pragma once

#include <span>

#include "tools/maintctl/session.h"
#include "tools/maintctl/text.h"

using Words = std::span<const char* const>;

// More than any command has fields and elements that could be named.
constexpr size_t kWordsMax = 256;

struct Options {
    bool json = false;
    bool trace = false;
    bool dry_run = false;
    bool hex = false;
    double watch = 0;
    bool help = false;
    bool version = false;
    const char* words[kWordsMax] = {}; // all that is no option
    size_t words_count = 0;
};

// Options may stand anywhere up to a word "--". False: `wrong` says what is wrong.
bool options_read(int argc, char* const* argv, Options& options, Text& wrong);

// The long name of each option, without "--"; null behind the last one.
const char* option_name(size_t number);

// Whether the word, an option, takes the next word as its value.
bool option_takesNext(const char* word);
