// Calls maintctl as a shell does.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "tools/maintctl/maintctl.h"

struct Said {
    int status;
    std::string out;
    std::string err;
};

using Arguments = std::vector<std::string>;

inline Said maintctl(Arguments arguments)
{
    arguments.insert(arguments.begin(), "maintctl");
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    char* texts[2] = {};
    size_t sizes[2] = {};
    FILE* out = open_memstream(&texts[0], &sizes[0]);
    FILE* err = open_memstream(&texts[1], &sizes[1]);
    Said said{};
    said.status = maintctl_run(static_cast<int>(argv.size()), argv.data(), out, err);
    fclose(out);
    fclose(err);
    said.out.assign(texts[0], sizes[0]);
    said.err.assign(texts[1], sizes[1]);
    free(texts[0]);
    free(texts[1]);
    return said;
}

inline Arguments words_of(const std::string& line)
{
    std::istringstream stream(line);
    Arguments words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

inline Said maintctl(const std::string& line)
{
    return maintctl(words_of(line));
}
