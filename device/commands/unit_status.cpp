// The status of each unit: the hardware's marks, and identities that are not the configured ones.
#include <cstddef>

#include "device/access/driver_records.h"
#include "device/access/fpga.h"
#include "device/access/numbers.h"
#include "device/commands/unit.h"
#include "maint/vpn_id.h"

static_assert(sizeof(UnitStatusFlag) == 8 && offsetof(UnitStatusFlag, unit) == 4);

int32_t vpnId_match(uint32_t unit)
{
    Fpga fpga = fpga_open(FpgaAccess::kRead);
    const uint32_t held = idValue_read(fpga, unit);
    uint32_t configured = 0;
    if (fpga_good(fpga) && Get_Conf_VpnId(static_cast<int32_t>(unit), &configured) != 0) {
        fpga_fail(fpga, DEVICE_READ_FAILED);
    }
    const int32_t status = fpga_close(fpga);
    if (status != DEVICE_OK) {
        return -1;
    }
    return held == configured ? 1 : 0;
}

int32_t read_unit_status_map(uint32_t* map)
{
    Fpga fpga = fpga_open(FpgaAccess::kRead);
    record_read(fpga, kPortMaskRead, map); // of units here: which the hardware marks
    const uint16_t ownId = word_read(fpga, kOwnIdRead);
    uint32_t present = 0;
    record_read(fpga, kUnitMapERead, &present);
    const int32_t status = fpga_close(fpga);
    if (status != DEVICE_OK) {
        return status;
    }
    uint32_t mismatched = 0;
    for (uint32_t unit = kPeerIdMin; unit <= kPeerIdMax; ++unit) {
        const uint32_t bit = unit_bit(unit);
        if (unit != ownId && (present & ~*map & bit) != 0 && vpnId_match(unit) == 0) {
            mismatched |= bit;
        }
    }
    *map = (*map & ~unit_bit(ownId) & present) | mismatched;
    return DEVICE_OK;
}

int32_t read_unit_status_flag(UnitStatusFlag* record)
{
    uint32_t map = 0;
    const int32_t status = command_readRecord(kUnitMapDRead, &map);
    if (status != DEVICE_OK) {
        return status;
    }
    const bool set = (map & unit_bit(record->unit)) != 0;
    // A match that cannot be asked leaves the bit as it is.
    record->status = vpnId_match(record->unit) == 0 || set ? 1 : 0;
    return DEVICE_OK;
}
