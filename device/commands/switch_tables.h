// The configuration tables of the Ethernet switch.
#pragma once

#include <cstdint>

#include "device/access/families.h"

// Loads both tables; the argument is not used. A refused request is told as a failed read by one of
// the two commands.
int32_t tables_load(void* unused, SentRequest which);
constexpr CommandCall write_switch_tables_1 =
    call_of<tables_load>(sentRequest_of(kSwitchTablesWrite1, DEVICE_READ_FAILED));
constexpr CommandCall write_switch_tables_2 =
    call_of<tables_load>(sentRequest_of(kSwitchTablesWrite2, DEVICE_WRITE_FAILED));
