// Register 0x114: writing a set of address registers takes effect when its commit bit is set.
#pragma once

#include <cstdint>

constexpr uint32_t kCommitRegister = 0x0114;
constexpr uint16_t kCommitPrefix0 = 0x0001;
constexpr uint16_t kCommitPrefix1 = 0x0002;
constexpr uint16_t kCommitReg110 = 0x0004;
