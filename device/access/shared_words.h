// The words and registers that commands of several nouns read or change, each its own bits: whose
// bit is whose.
#pragma once

#include <cstdint>

// Device word 03.
constexpr uint16_t kWord03Alert = 0x0040;    // WR_LED_GROUP_1, WR_LED_RESTORE
constexpr uint16_t kWord03Pattern = 0x0080;  // WR_LED_PATTERN_n set it, WR_LED_RESTORE clears it
constexpr uint16_t kWord03LineSize = 0x0100; // read: line sizes whole (WR_MTU_DATASIZE), 26 bytes
                                             // an item (WR_STATISTICS_SAVE)
constexpr uint16_t kWord03VlantMap = 0x1000; // RD_VLANT_MAP_ENABLE, WR_VLANT_MAP_ENABLE

// The status word; only read.
constexpr uint16_t kStatusInputs = 0x00F0; // RD_STATUS_INPUTS: active low
constexpr uint16_t kStatusBit8 = 0x0100;   // RD_STATUS_WORD_FLAG; WR_PORT_FLAGS writes a fixed word
                                           // while it is set; goes into the switch tables' record

// The group word.
constexpr uint16_t kGroupMode = 0x0003; // the mode switch: clear while it is on
constexpr uint16_t kGroupFlag = 0x01C4; // RD_GROUP_FLAG, WR_GROUP_FLAG

// Register 0x0114: each setter of address registers sets one bit after its writes; the mode switch
// drives all three.
constexpr uint32_t kRegister114 = 0x0114;
constexpr uint16_t kCommitPrefix0 = 0x0001;
constexpr uint16_t kCommitPrefix1 = 0x0002;
constexpr uint16_t kCommitReg110 = 0x0004;
constexpr uint16_t kMode114 = kCommitPrefix0 | kCommitPrefix1 | kCommitReg110;

// Register 0x0158: the one-bit commands, the three-state field (bits 12 and 13) and the mode
// switch.
constexpr uint32_t kRegister158 = 0x0158;
constexpr uint16_t kMode158 = 0x0005; // bits 0 and 2, which have their one-bit commands, too
