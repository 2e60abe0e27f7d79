// Reading a PHY: RD_PHY_STATUS and RD_PHY_REGISTER.
#include "device/commands/phy.h"
#include "device/commands/phy_mii.h"

static_assert(sizeof(PhyStatus) == 12);
static_assert(sizeof(PhyRegisterAccess) == 8);

namespace
{

using MiiRegisters = uint16_t[kMiiRegisters];

// What both ends can do, the best first.
struct Ability {
    uint16_t bit;
    uint8_t speed100;
    uint8_t full_duplex;
};
constexpr Ability kAbilities[] = {{0x0100, 1, 1}, {0x0080, 1, 0}, {0x0040, 0, 1}, {0x0020, 0, 0}};

uint8_t flag_of(uint16_t word, uint16_t bit)
{
    return (word & bit) != 0 ? 1 : 0;
}

void miiRegisters_read(Fpga& fpga, uint32_t port, MiiRegisters& registers)
{
    for (uint16_t number = 0; number < kMiiRegisters; ++number) {
        registers[number] = mii_read(fpga, port, number);
    }
}

bool register_isValid(const PhyRegisterAccess& access)
{
    return access.port <= kPhyPortMax && access.number < kMiiRegisters;
}

// Fills all flags but `extra`; false when negotiation leaves speed and duplex undecided.
bool status_decide(const MiiRegisters& registers, PhyStatus* status)
{
    const uint16_t control = registers[kMiiControl];
    status->link = flag_of(registers[kMiiStatus], kStatusLink);
    status->autoneg = flag_of(control, kControlAutoneg);
    if (status->autoneg == 0) {
        status->speed100 = flag_of(control, kControlSpeed100);
        status->full_duplex = flag_of(control, kControlFullDuplex);
        return true;
    }
    if (status->link == 0) {
        return true; // speed and duplex stay as the caller cleared them
    }
    if ((registers[kMiiStatus] & kStatusNegotiated) == 0) {
        return false;
    }
    const unsigned common = registers[kMiiAdvertised] & registers[kMiiPartner];
    for (const Ability& best : kAbilities) {
        if ((common & best.bit) != 0) {
            status->speed100 = best.speed100;
            status->full_duplex = best.full_duplex;
            return true;
        }
    }
    return false;
}

} // namespace

int32_t read_phy(PhyStatus* status)
{
    if (status->port > kPhyPortMax) {
        return DEVICE_BAD_ARGUMENT;
    }
    MiiRegisters registers;
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    miiRegisters_read(fpga, status->port, registers);
    const int32_t result = fpga_close(fpga);
    if (result != DEVICE_OK) {
        return result;
    }
    if (!status_decide(registers, status)) {
        // A second pass, on the descriptor that is closed by now: it fails at its first request, so
        // that an undecided negotiation reads as a read failure. Callers rely on that code. It ends
        // otherwise only when another thread has been given the descriptor's number in between.
        miiRegisters_read(fpga, status->port, registers);
        if (!fpga_good(fpga)) {
            return fpga.status;
        }
        if (!status_decide(registers, status)) {
            return DEVICE_UNMAPPED;
        }
    }
    status->extra = status->port == kLinePort || status->port == kPort6
                        ? flag_of(registers[kMiiVendor], kVendorExtra)
                        : flag_of(registers[kMiiControl], kControlExtra);
    return DEVICE_OK;
}

int32_t read_phy_register(PhyRegisterAccess* access)
{
    if (!register_isValid(*access)) {
        return DEVICE_BAD_ARGUMENT;
    }
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    const uint16_t value = mii_read(fpga, access->port, access->number);
    if (fpga_good(fpga)) {
        access->value = value;
    }
    return fpga_close(fpga);
}

int32_t write_phy_register(const PhyRegisterAccess* access)
{
    if (!register_isValid(*access)) {
        return DEVICE_BAD_ARGUMENT;
    }
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    mii_write(fpga, access->port, access->number, access->value);
    return fpga_close(fpga);
}
