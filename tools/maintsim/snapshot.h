// What `maintctl snapshot` wrote of a unit.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "sim/unit_state.h"

struct Snapshot {
    UnitState state;
    std::map<std::string, std::string> files; // by path
    std::vector<std::string> missing;         // files that the unit does not have
    // Requests that failed for some indexes alone: here they have the answers of the others.
    std::map<uint32_t, size_t> partly;
};

// False: `fault` says which line is none of a snapshot.
bool snapshot_parse(std::string_view text, Snapshot& snapshot, std::string& fault);
