// What maintsim does itself with a unit, instead of running a program on it.
#pragma once

#include <cstdio>
#include <span>
#include <string>
#include <string_view>

enum ExitStatus { kDone = 0, kFailed = 1, kWrongCall = 64 };

using Words = std::span<char* const>;

// A wrong call or a failure: one line on standard error, and the exit status.
int wrong_call(const std::string& what);
int failure(const std::string& what);

struct Verb {
    const char* name;
    const char* help;
    int (*run)(const std::string& folder, Words words); // the words behind its name
};

const Verb* verb_find(std::string_view name); // null: none
