#include "device/commands/bandwidth.h"

#include "device/access/fpga.h"
#include "device/commands/phy.h"
#include "device/commands/phy_mii.h"
#include "maint/commands/bandwidth.h"

namespace
{

constexpr uint32_t kBandwidthRegister = 0x0012;

using BandwidthTable = uint16_t[BANDWIDTH_ID_MAX + 1];

// The register's value for each identifier: port 0 not at 100 Mb/s, and at 100 Mb/s.
constexpr BandwidthTable kSlowTable = {21333, 12800, 6400, 3200, 2133, 1600, 1280,
                                       1066,  914,   800,  711,  640,  640,  640,
                                       640,   640,   640,  640,  640,  640,  640};
constexpr BandwidthTable kFastTable = {21333, 12800, 6400, 3200, 2133, 1600, 1280,
                                       1066,  914,   800,  711,  640,  320,  213,
                                       160,   128,   106,  91,   80,   71,   64};

// Which table applies now, or null when the PHY cannot be read.
const uint16_t* table_choose()
{
    PhyStatus phy{};
    phy.port = kLinePort;
    if (read_phy(&phy) != DEVICE_OK) {
        return nullptr;
    }
    return phy.speed100 != 0 ? kFastTable : kSlowTable;
}

} // namespace

int32_t read_bandwidth(uint16_t* id)
{
    const uint16_t* table = table_choose();
    if (table == nullptr) {
        return DEVICE_READ_FAILED;
    }
    const int32_t value = command_readRegister(kBandwidthRegister, FpgaAccess::kWrite);
    if (value < 0) {
        return value;
    }
    // The first match counts: the slow table repeats its last value.
    for (uint16_t n = 0; n <= BANDWIDTH_ID_MAX; ++n) {
        if (table[n] == value) {
            *id = n;
            return DEVICE_OK;
        }
    }
    *id = BANDWIDTH_ID_MAX;
    return DEVICE_UNMAPPED;
}

int32_t write_bandwidth(const uint16_t* id)
{
    if (*id > BANDWIDTH_ID_MAX) {
        return DEVICE_BAD_ARGUMENT;
    }
    const uint16_t* table = table_choose();
    if (table == nullptr) {
        return DEVICE_READ_FAILED;
    }
    const RegisterAccessRequest access{kBandwidthRegister, table[*id]};
    return command_writeRecord(kRegisterWrite, &access);
}
