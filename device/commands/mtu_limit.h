// The largest data size that the device accepts on the WAN side.
#pragma once

#include <cstdint>

#include "maint/commands/mtu.h"

// What an MTU holds besides the data.
constexpr int kDataOverhead = 26;

int32_t read_mtu_limit(MtuLimit* record);
int32_t write_mtu_limit(const uint16_t* cap);
