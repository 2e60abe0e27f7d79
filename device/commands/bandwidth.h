// The bandwidth limit of the line.
#pragma once

#include <cstdint>

int32_t read_bandwidth(uint16_t* id);
int32_t write_bandwidth(const uint16_t* id);
