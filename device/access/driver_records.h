// Driver's records that serve commands of several nouns, and room for what a driver fills.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "device/access/fpga.h"

// What a record read below holds after a failure, is nothing to use.

// A switch port (kSwitchPortRead, kSwitchPortWrite).
struct SwitchPortRequest {
    uint8_t port;
    uint8_t spare_1;
    uint8_t full_duplex;
    uint8_t speed100;
    uint8_t link;
    uint8_t spare_5[3];
};
static_assert(sizeof(SwitchPortRequest) == 8);

// The switch port behind the PHY of port 5; front-panel group 7 is mirrored into it, too.
constexpr uint8_t kSwitchPort4 = 4;

SwitchPortRequest switchPort4_read(Fpga& fpga);
void switchPort4_write(Fpga& fpga, uint8_t full_duplex, uint8_t speed100, uint8_t link);

// Two words of another unit.
enum class UnitPage : uint16_t {
    kLedRegistersBAndA = 0,
    kChannelWordAndLedRegisterC = 1,
};

struct UnitWords {
    uint16_t first;
    uint16_t second;
};

UnitWords unitWords_read(Fpga& fpga, uint32_t unit, UnitPage page);

// The VPN identity that the hardware holds for a unit.
uint16_t idValue_read(Fpga& fpga, uint32_t unit);

// Cleared room for all that the driver may fill, where a command that passes the caller's pointer
// through is run from within (DEVICE_RECORD_MAX says why some reads need it).
template <class Number> using WorkRecord = std::array<Number, DEVICE_RECORD_MAX / sizeof(Number)>;
