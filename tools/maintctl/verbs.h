// What maintctl does besides running device commands.
#pragma once

#include <cstddef>

#include "tools/maintctl/options.h"
#include "tools/maintctl/session.h"

// The names of the verbs; null behind the last one.
const char* verb_name(size_t number);

// Each returns the exit status.
int list_show(const Session& session, const char* text); // null: all commands
int describe_show(const Session& session, const char* word);
int script_run(const Session& session, const char* path); // "-": the standard input
int help_show(const Session& session);
int usage_show(FILE* file);                             // in short
int complete_show(const Session& session, Words words); // the last word is the one to complete

// "maintctl: MESSAGE"; returns the exit status of a wrong call.
int call_refuse(const Session& session, const char* message);

// Writes out what was shown. Returns `status`, or that of an output that cannot be written.
int output_end(const Session& session, int status);
