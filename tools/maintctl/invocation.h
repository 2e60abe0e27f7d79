// A device command with what goes in, as it was typed: COMMAND FIELD=VALUE...
#pragma once

#include <cstdint>

#include "catalogue/catalogue.h"
#include "maint/fpga.h"
#include "tools/maintctl/options.h"
#include "tools/maintctl/session.h"
#include "tools/maintctl/text.h"

// What is wrong with a call, in a line.
constexpr size_t kWrongMax = 1400;

struct Invocation {
    const CommandDescription* command = nullptr;
    alignas(8) uint8_t record[DEVICE_RECORD_MAX] = {};
};

// A command by its name or number; null: `wrong` says what would be right.
const CommandDescription* command_named(const char* word, Text& wrong);

// The field that is meant among those that the command reads: by its whole name or, where only one
// fits, by its last part. Null: `wrong` says why there is none.
const Field* field_named(const CommandDescription& command, const char* typed, size_t length,
                         Text& wrong);

// False: `wrong` says what is wrong. Nothing of a device has been opened.
bool invocation_read(Words words, const Session& session, Invocation& invocation, Text& wrong);

// The part of a field's name behind the last dot: "element" of "group1.element".
const char* field_lastPart(const Field& field);

// RD_ commands report, WR_ commands change something.
bool command_isReport(const CommandDescription& command);
