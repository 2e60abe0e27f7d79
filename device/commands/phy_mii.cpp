#include "device/commands/phy_mii.h"

#include <array>

namespace
{

// The record of the PHY requests.
struct PhyRegisterRequest {
    uint16_t address;
    uint16_t number;
    uint16_t written;
    uint16_t read;
};
static_assert(sizeof(PhyRegisterRequest) == 8);

constexpr std::array<uint16_t, kPhyPortMax + 1> kPhyAddress = {9, 1, 2, 3, 4, 5, 8};

} // namespace

int32_t mii_read(Fpga fpga, uint32_t port, uint16_t number, uint16_t& value)
{
    PhyRegisterRequest request{kPhyAddress[port], number, 0, 0};
    const int32_t status =
        record_read(fpga, port == kLinePort ? kPort0PhyRead : kPhyRead, &request);
    if (status == DEVICE_OK) {
        value = request.read;
    }
    return status;
}

int32_t mii_write(Fpga fpga, uint32_t port, uint16_t number, uint16_t value)
{
    const PhyRegisterRequest request{kPhyAddress[port], number, value, 0};
    return record_write(fpga, port == kLinePort ? kPort0PhyWrite : kPhyWrite, &request);
}
