// Registers that several command groups change, each its own bits.
#pragma once

#include <cstdint>

// Bits 0..2: each setter of address registers sets one after its writes; the mode switch drives all
// three.
constexpr uint32_t kRegister114 = 0x0114;
constexpr uint16_t kCommitPrefix0 = 0x0001;
constexpr uint16_t kCommitPrefix1 = 0x0002;
constexpr uint16_t kCommitReg110 = 0x0004;

// One-bit commands, the three-state field and the mode switch.
constexpr uint32_t kRegister158 = 0x0158;
