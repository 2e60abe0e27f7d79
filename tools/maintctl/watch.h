// --watch: shows something again and again, with what changed marked, until Ctrl-C.
#pragma once

#include "tools/maintctl/invocation.h"
#include "tools/maintctl/session.h"

int command_watch(const Session& session, const Invocation& invocation, Words words);

// A verb that shows a screen.
int verb_watch(const Session& session, Words words, int (*show)(const Session& session));
