// Models of what the rule commands make of the caller's record and of the driver's.
#pragma once

#include "board/board_test.h"

constexpr size_t kCallersSize = 496;

// The driver's record that is sent for the caller's.
Bytes sent_for(const Bytes& from);

// The caller's record that is reported for the driver's.
Bytes reported_for(const Bytes& held);

// What comes back when a caller's record is written and then reported.
Bytes normal_form(Bytes record);
