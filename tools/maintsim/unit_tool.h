// What maintsim itself does with a unit; a program that runs on one needs only unit.h.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/unit_state.h"
#include "tools/maintsim/journal.h"
#include "tools/maintsim/unit.h"

// Makes a unit's files in a folder that is there and has none of them. False: `error` says in one
// line why not.
bool unit_create(const std::string& folder, const UnitState& state, std::string& error);

// The devices' state as text, the clock's time as it shows now.
bool unit_text(Unit* unit, std::string& text, std::string& error);

// Puts items, all or none of them.
bool unit_put(Unit* unit, const std::vector<std::string>& items, std::string& error);

// Changes the whole state at once, and writes it to the unit's folder; the journal has this mark.
bool unit_change(
    Unit* unit, std::string_view mark,
    const std::function<bool(UnitState& state, int64_t now, std::string& error)>& change,
    std::string& error);

// One entry of the journal.
struct UnitCall {
    EntryHead head;
    std::string before;
    std::string after;
};

// The calls from this sequence number on that the journal still has, in order.
bool unit_calls(Unit* unit, uint64_t from, std::vector<UnitCall>& calls, std::string& error);
