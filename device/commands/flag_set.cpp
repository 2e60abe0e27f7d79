#include "device/commands/flag_set.h"

#include "device/access/driver_records.h"
#include "device/access/flag_fields.h"
#include "device/access/fpga.h"

static_assert(sizeof(FlagSet) == 9);

namespace
{

// The record of a switch port, as a set of flags.
struct FlagSetRequest {
    uint8_t set; // the switch port
    uint8_t flags[7];
};
static_assert(sizeof(FlagSetRequest) == sizeof(SwitchPortRequest));

bool set_isValid(uint8_t set)
{
    return set == 1 || set == 2 || set == 4;
}

} // namespace

int32_t read_flag_set(FlagSet* record)
{
    if (!set_isValid(record->set)) {
        return DEVICE_BAD_ARGUMENT;
    }
    FlagSetRequest request{record->set, {}};
    const int32_t status = command_readRecord(kSwitchPortRead, &request, FpgaAccess::kWrite);
    if (status == DEVICE_OK) {
        for (size_t n = 0; n < sizeof record->flags; ++n) {
            record->flags[n] = request.flags[n] == 1 ? 1 : 0;
        }
    }
    return status;
}

int32_t write_flag_set(const FlagSet* record)
{
    if (!set_isValid(record->set)) {
        return DEVICE_BAD_ARGUMENT;
    }
    const unsigned valid = validMask_of(record->valid);
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    FlagSetRequest request{record->set, {}};
    record_read(fpga, kSwitchPortRead, &request);
    for (size_t n = 0; n < sizeof record->flags; ++n) {
        if ((valid & (1U << n)) != 0) {
            request.flags[n] = record->flags[n] == 1 ? 1 : 0;
        }
    }
    record_write(fpga, kSwitchPortWrite, &request);
    return fpga_close(fpga);
}
