// Configuring a PHY: WR_PHY_CONFIG.
#include <unistd.h>

#include <cstddef>

#include "device/access/switch_port.h"
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

int32_t vendor_write(Fpga fpga, const PhyConfig& config)
{
    return mii_write(fpga, config.port, kMiiVendor,
                     config.extra == 1 ? kVendorWithExtra : kVendorPlain);
}

// Writes the control register twice, `settle` seconds apart, then the vendor register.
int32_t phy_write(Fpga fpga, const PhyConfig& config, uint16_t prepare, unsigned settle,
                  uint16_t control)
{
    int32_t status = mii_write(fpga, config.port, kMiiControl, prepare);
    if (status != DEVICE_OK) {
        return status;
    }
    if (settle != 0) {
        sleep(settle);
    }
    status = mii_write(fpga, config.port, kMiiControl, control);
    if (status != DEVICE_OK) {
        return status;
    }
    return vendor_write(fpga, config);
}

int32_t phy_configure(Fpga fpga, const PhyConfig& config)
{
    const bool autoneg = config.autoneg == 1;
    if (config.port == kLinePort) {
        return phy_write(fpga, config, kPort0Prepare, kPort0Settle,
                         autoneg ? kPort0Autoneg : control_manual(config));
    }
    const bool port6 = config.port == kPort6;
    const uint16_t extra = !port6 && config.extra == 1 ? kControlExtra : uint16_t{0};
    if (autoneg) {
        return phy_write(fpga, config, kAutonegPrepare, 0, kAutonegRestart | extra);
    }
    return phy_write(fpga, config, port6 ? kPort6Prepare : kManualPrepare, kManualSettle,
                     control_manual(config) | extra);
}

// One pass of the following; true when there is nothing more to do.
bool switchPort_follow(Fpga fpga)
{
    sleep(kFollowDelay);
    PhyStatus phy{};
    phy.port = kSwitchedPort;
    if (read_phy(&phy) != DEVICE_OK || phy.autoneg == 1) {
        return true;
    }
    SwitchPortRequest held{};
    held.port = kSwitchPort4;
    if (record_read(fpga, kSwitchPortRead, &held) != DEVICE_OK) {
        return true;
    }
    if (held.full_duplex == phy.full_duplex && held.speed100 == phy.speed100 &&
        held.link == phy.link) {
        return true;
    }
    const SwitchPortRequest wanted{kSwitchPort4, 0, phy.full_duplex, phy.speed100, phy.link, {}};
    return record_write(fpga, kSwitchPortWrite, &wanted) != DEVICE_OK;
}

// Makes switch port 4 equal to the PHY of port 5. Only the first write counts for the result; the
// following is done as far as it goes, on a descriptor of its own beside the first one.
int32_t switchPort_synchronise(Fpga fpga, const PhyConfig& config)
{
    const SwitchPortRequest wanted{kSwitchPort4,       0, config.full_duplex, config.speed100,
                                   config.switch_flag, {}};
    const int32_t status = record_write(fpga, kSwitchPortWrite, &wanted);
    if (status != DEVICE_OK) {
        return status;
    }
    fpga_run(FpgaAccess::kWrite, [](Fpga second) -> int32_t {
        for (int pass = 0; pass < kFollowPasses && !switchPort_follow(second); ++pass) {
        }
        return DEVICE_OK;
    });
    return DEVICE_OK;
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
    return fpga_run(FpgaAccess::kWrite, [config](Fpga fpga) {
        const int32_t status = phy_configure(fpga, *config);
        return status == DEVICE_OK && config->port == kSwitchedPort
                   ? switchPort_synchronise(fpga, *config)
                   : status;
    });
}
