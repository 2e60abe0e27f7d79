#include "sim/units.h"

#include <gtest/gtest.h>

#include "tools/maintsim/unit_folder.h"

std::string Units::make(const std::string& name, const UnitState& state) const
{
    std::string folder = place(name);
    std::string error;
    NewUnit blank;
    blank.blank = true;
    EXPECT_TRUE(unitFolder_make(folder, blank, error)) << error;
    Unit* unit = unit_reopen(folder);
    unitState_put(unit, state);
    unit_close(unit);
    return folder;
}

Unit* unit_reopen(const std::string& folder)
{
    std::string error;
    Unit* unit = unit_open(folder, error);
    EXPECT_NE(unit, nullptr) << error;
    return unit;
}

void unitState_put(Unit* unit, const UnitState& state)
{
    std::string error;
    const auto change = [&](UnitState& now, int64_t, std::string&) {
        now = state;
        return true;
    };
    EXPECT_TRUE(unit_change(unit, "test", change, error)) << error;
}

std::vector<UnitCall> unitCalls_get(Unit* unit, uint64_t from)
{
    std::vector<UnitCall> calls;
    std::string error;
    EXPECT_TRUE(unit_calls(unit, from, calls, error)) << error;
    return calls;
}

std::string unitText_get(Unit* unit)
{
    std::string text;
    std::string error;
    EXPECT_TRUE(unit_text(unit, text, error)) << error;
    return text;
}
