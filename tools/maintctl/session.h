// What a command line asked for, and where what it says goes.
#pragma once

#include <cstdio>

struct Session {
    FILE* out; // what was asked for
    FILE* err; // all else
    bool json = false;
    bool trace = false;
    bool dry_run = false;
    bool hex = false;
    double watch = 0;      // seconds; 0: once
    bool terminal = false; // somebody sees `out` on a terminal that can be drawn on
    bool colours = false;  // and wants colours there
};

// Verbs. Each returns the exit status.
int status_show(const Session& session);
int panel_show(const Session& session);
int snapshot_make(const Session& session);
