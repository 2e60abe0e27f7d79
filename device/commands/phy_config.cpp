// Configuring a PHY: WR_PHY_CONFIG.
#include <unistd.h>

#include <cstddef>

#include "device/access/driver_records.h"
#include "device/commands/phy.h"
#include "device/commands/phy_mii.h"

static_assert(sizeof(PhyConfig) == 12);
static_assert(offsetof(PhyConfig, switch_flag) == 5);
static_assert(offsetof(PhyConfig, extra) == 8);

namespace
{

constexpr uint32_t kSwitchedPort = 5; // followed by switch port 4

constexpr uint16_t kPort0Prepare = 0x1001;
constexpr uint16_t kPort0Autoneg = kControlAutoneg;
constexpr unsigned kPort0Settle = 2; // seconds
constexpr uint16_t kAutonegPrepare = 0x0000;
constexpr uint16_t kAutonegRestart = kControlAutoneg | 0x0200;
constexpr uint16_t kPort6Prepare = 0x1001;
constexpr uint16_t kManualPrepare = 0x1002; // ports 1..5
constexpr unsigned kManualSettle = 1;       // seconds
constexpr uint16_t kVendorPlain = 0x0500;
constexpr uint16_t kVendorWithExtra = kVendorPlain | kVendorExtra;

constexpr int kFollowPasses = 5;
constexpr unsigned kFollowDelay = 1; // seconds

uint16_t control_manual(const PhyConfig& config)
{
    return static_cast<uint16_t>((config.speed100 != 0 ? kControlSpeed100 : 0) |
                                 (config.full_duplex != 0 ? kControlFullDuplex : 0));
}

// Writes the control register twice, `settle` seconds apart, then the vendor register.
void phy_write(Fpga& fpga, const PhyConfig& config, uint16_t prepare, unsigned settle,
               uint16_t control)
{
    mii_write(fpga, config.port, kMiiControl, prepare);
    if (settle != 0 && fpga_good(fpga)) {
        sleep(settle);
    }
    mii_write(fpga, config.port, kMiiControl, control);
    mii_write(fpga, config.port, kMiiVendor, config.extra == 1 ? kVendorWithExtra : kVendorPlain);
}

void phy_configure(Fpga& fpga, const PhyConfig& config)
{
    const bool autoneg = config.autoneg == 1;
    if (config.port == kLinePort) {
        phy_write(fpga, config, kPort0Prepare, kPort0Settle,
                  autoneg ? kPort0Autoneg : control_manual(config));
        return;
    }
    const bool port6 = config.port == kPort6;
    const uint16_t extra = !port6 && config.extra == 1 ? kControlExtra : uint16_t{0};
    if (autoneg) {
        phy_write(fpga, config, kAutonegPrepare, 0, kAutonegRestart | extra);
    } else {
        phy_write(fpga, config, port6 ? kPort6Prepare : kManualPrepare, kManualSettle,
                  control_manual(config) | extra);
    }
}

// One pass of the following; true when there is nothing more to do.
bool switchPort_follow(Fpga& fpga)
{
    sleep(kFollowDelay);
    PhyStatus phy{};
    phy.port = kSwitchedPort;
    if (read_phy(&phy) != DEVICE_OK || phy.autoneg == 1) {
        return true;
    }
    const SwitchPortRequest held = switchPort4_read(fpga);
    if (held.full_duplex == phy.full_duplex && held.speed100 == phy.speed100 &&
        held.link == phy.link) {
        return true;
    }
    switchPort4_write(fpga, phy.full_duplex, phy.speed100, phy.link);
    return false;
}

// Makes switch port 4 equal to the PHY of port 5. Only the first write counts for the result; the
// following is done as far as it goes, on a descriptor of its own beside the first one.
void switchPort_synchronise(Fpga& fpga, const PhyConfig& config)
{
    switchPort4_write(fpga, config.full_duplex, config.speed100, config.switch_flag);
    if (!fpga_good(fpga)) {
        return;
    }
    Fpga second = fpga_open(FpgaAccess::kWrite);
    for (int pass = 0; pass < kFollowPasses && fpga_good(second); ++pass) {
        if (switchPort_follow(second)) {
            break;
        }
    }
    static_cast<void>(fpga_close(second));
}

} // namespace

int32_t write_phy_config(const PhyConfig* config)
{
    if (config->port > kPhyPortMax) {
        return DEVICE_BAD_ARGUMENT;
    }
    // 100 Mb/s full duplex is all that can be set on port 0 by hand.
    if (config->port == kLinePort && config->autoneg != 1 &&
        (config->speed100 != 1 || config->full_duplex != 1)) {
        return DEVICE_BAD_ARGUMENT;
    }
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    phy_configure(fpga, *config);
    if (config->port == kSwitchedPort) {
        switchPort_synchronise(fpga, *config);
    }
    return fpga_close(fpga);
}
