#include "device/commands/bandwidth.h"

#include <algorithm>
#include <array>

#include "device/access/fpga.h"
#include "device/commands/phy.h"
#include "device/commands/phy_mii.h"
#include "maint/commands/bandwidth.h"

namespace
{

constexpr uint32_t kBandwidthRegister = 0x0012;

using BandwidthTable = std::array<uint16_t, BANDWIDTH_ID_MAX + 1>;

// The register's value for each identifier: port 0 not at 100 Mb/s, and at 100 Mb/s.
constexpr BandwidthTable kSlowTable = {21333, 12800, 6400, 3200, 2133, 1600, 1280,
                                       1066,  914,   800,  711,  640,  640,  640,
                                       640,   640,   640,  640,  640,  640,  640};
constexpr BandwidthTable kFastTable = {21333, 12800, 6400, 3200, 2133, 1600, 1280,
                                       1066,  914,   800,  711,  640,  320,  213,
                                       160,   128,   106,  91,   80,   71,   64};

// Which table applies now, or null when the PHY cannot be read.
const BandwidthTable* table_choose()
{
    PhyStatus phy{};
    phy.port = kLinePort;
    if (read_phy(&phy) != DEVICE_OK) {
        return nullptr;
    }
    return phy.speed100 != 0 ? &kFastTable : &kSlowTable;
}

} // namespace

int32_t read_bandwidth(uint16_t* id)
{
    const BandwidthTable* table = table_choose();
    if (table == nullptr) {
        return DEVICE_READ_FAILED;
    }
    // Opened for writing, although it only reads.
    return fpga_run(FpgaAccess::kWrite, [=](Fpga fpga) -> int32_t {
        uint16_t value = 0;
        const int32_t status = register_read(fpga, kBandwidthRegister, value);
        if (status != DEVICE_OK) {
            return status;
        }
        // The first match counts: the slow table repeats its last value.
        const auto* entry = std::find(table->begin(), table->end(), value);
        if (entry == table->end()) {
            *id = BANDWIDTH_ID_MAX;
            return DEVICE_UNMAPPED;
        }
        *id = static_cast<uint16_t>(entry - table->begin());
        return DEVICE_OK;
    });
}

int32_t write_bandwidth(const uint16_t* id)
{
    if (*id > BANDWIDTH_ID_MAX) {
        return DEVICE_BAD_ARGUMENT;
    }
    const BandwidthTable* table = table_choose();
    if (table == nullptr) {
        return DEVICE_READ_FAILED;
    }
    return command_writeRegister(kBandwidthRegister, (*table)[*id]);
}
