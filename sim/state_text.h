// The state of a unit as text: an item a line, "register.0x0158=0x0020". No item needs quoting in a
// shell. What is printed can be put, and gives the same state.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "sim/unit_state.h"

// All items, each with a newline. With a time (the machine's, in nanoseconds), the clock's is what it
// shows then; without, it is the one that was set, and when.
std::string stateText_make(const UnitState& state, std::optional<int64_t> now = std::nullopt);

// Puts one item. False: `fault` says in one line why not, and the state is as before. A time that is
// set is set now.
bool stateText_put(UnitState& state, std::string_view item, int64_t now, std::string& fault);

// What a line of a message can show of any text: printable, and not long.
std::string text_shown(std::string_view text);

// "EIO" and its number; empty or 0: no driver returns it.
std::string errorName_text(int error);
int errorName_find(std::string_view name);

// A number as people write it, 17 or 0x11, up to a limit. False: `fault` says why not.
bool number_parse(std::string_view text, uint64_t limit, uint64_t& number, std::string& fault);
