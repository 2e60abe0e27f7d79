// What each device command takes and returns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

struct CommandForm {
    std::vector<uint32_t> codes;
    // All that the commands may return. Command 62 returns whatever its request does, here 0 or a
    // failure's -1.
    std::set<int32_t> results;
    size_t record; // bytes of the caller's record, in and out
};

// The longest record.
constexpr size_t kRecordMax = 496;

// All 189 commands, those of one form together.
const std::vector<CommandForm>& commandForms_get();
