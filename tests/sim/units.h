// Units for whole programs, made and looked at by the project's own procedures.
#pragma once

#include <string>
#include <vector>

#include "sim/programs.h"
#include "tools/maintsim/unit_tool.h"

class Units : public TestFolder
{
  public:
    // A blank unit whose devices are in this state; its folder.
    [[nodiscard]] std::string make(const std::string& name, const UnitState& state = {}) const;
};

Unit* unit_reopen(const std::string& folder);
void unitState_put(Unit* unit, const UnitState& state);
std::vector<UnitCall> unitCalls_get(Unit* unit, uint64_t from = 0);
std::string unitText_get(Unit* unit);
