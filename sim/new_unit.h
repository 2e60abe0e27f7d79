// The devices of a unit that is new and works: it is unit 1, units 2 and 3 are there, the ports are
// up, tables are filled.
#pragma once

#include <string>
#include <vector>

#include "sim/unit_state.h"

// The clock runs from this time on; `now` is the machine's, in nanoseconds.
void newUnit_put(UnitState& state, const RtcTime& time, int64_t now);

// Its files under /conf and /tmp, but for the working log, which its first start makes.
struct UnitFile {
    const char* path;
    std::string bytes;
};
std::vector<UnitFile> newUnit_files();
