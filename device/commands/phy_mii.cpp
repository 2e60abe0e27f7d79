#include "device/commands/phy_mii.h"

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

constexpr uint8_t kPhyAddress[kPhyPortMax + 1] = {9, 1, 2, 3, 4, 5, 8};

} // namespace

uint16_t mii_read(Fpga& fpga, uint32_t port, uint16_t number)
{
    PhyRegisterRequest request{kPhyAddress[port], number, 0, 0};
    record_read(fpga, port == kLinePort ? kPort0PhyRead : kPhyRead, &request);
    return fpga_good(fpga) ? request.read : uint16_t{0};
}

void mii_write(Fpga& fpga, uint32_t port, uint16_t number, uint16_t value)
{
    const PhyRegisterRequest request{kPhyAddress[port], number, value, 0};
    record_write(fpga, port == kLinePort ? kPort0PhyWrite : kPhyWrite, &request);
}
