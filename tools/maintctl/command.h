// Runs a device command and shows what came of it.
#pragma once

#include "tools/maintctl/invocation.h"
#include "tools/maintctl/session.h"

// `where` stands before a message: "FILE:3: ", or nothing. `title` stands before what is reported, as a
// comment; empty: nothing does. Returns the exit status.
int command_run(const Session& session, const Invocation& invocation, const char* where = "",
                Words title = {});
