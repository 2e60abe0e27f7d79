// The table of rule entries.
#pragma once

#include <cstdint>

#include "maint/commands/rule.h"

int32_t read_rule_entry(RuleEntry* entry);
int32_t write_rule_entry(const RuleEntry* entry);
int32_t write_rule_delete(const uint8_t* index);
