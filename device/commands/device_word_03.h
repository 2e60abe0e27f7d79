// Bit 6 of device word 03, which follows the alert state of the front panel.
#pragma once

#include <cstdint>

// Sets the bit when flag is 1, clears it otherwise; -1, -2, -4 as any setter.
int32_t deviceWord03_setBit6(int32_t flag);
