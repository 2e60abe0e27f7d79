// The driver's record of a switch port, and the same record as a set of flags.
#pragma once

#include <cstdint>

#include "device/access/fpga.h"

struct SwitchPortRequest {
    uint8_t port;
    uint8_t spare_1;
    uint8_t full_duplex;
    uint8_t speed100;
    uint8_t link;
    uint8_t spare_5[3];
};
static_assert(sizeof(SwitchPortRequest) == 8);

struct FlagSetRequest {
    uint8_t set; // the switch port
    uint8_t flags[7];
};
static_assert(sizeof(FlagSetRequest) == sizeof(SwitchPortRequest));

// The switch port behind the PHY of port 5; front-panel group 7 is mirrored into it, too.
constexpr uint8_t kSwitchPort4 = 4;
