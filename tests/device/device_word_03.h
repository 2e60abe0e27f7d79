// Device word 03, which commands of several nouns ask for.
#pragma once

#include <cstdint>

constexpr uint32_t kDeviceWord03 = 0x6B03; // the request that reads it
constexpr uint32_t kMapEnabled = 0x1000;   // its bit 12: each unit has a key of its own
