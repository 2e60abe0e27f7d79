// Single registers of the PHYs.
#include "device/command_test.h"
#include "device/phy_course.h"

namespace
{

using PhyRegister = CommandTest;

Bytes access_of(uint32_t port, uint32_t number, uint32_t value)
{
    return le32(port) + le16(number) + le16(value);
}

constexpr uint32_t kHeld = 0xA5A5;

TEST_F(PhyRegister, IsReadAndWrittenAloneOnThePortsPhy)
{
    for (const uint32_t port : kPhyPorts) {
        auto& registers = board.fpga.phys[kPhyAddressOfPort[port]];
        for (uint32_t number = 0; number < 32; ++number) {
            SCOPED_TRACE("port " + std::to_string(port) + " register " + std::to_string(number));
            const auto value = static_cast<uint16_t>(0x8000 + 256 * port + number);
            const Bytes access = access_of(port, number, value);
            registers.fill(0);
            registers[number] = value;
            prove_record(RD_PHY_REGISTER, access_of(port, number, kHeld),
                         {opens_to_write(), phy_register_read(port, number), closes()}, access);
            const auto expected = registers;
            device_put = [&registers] { registers.fill(0); };
            prove_record(WR_PHY_REGISTER, access,
                         {opens_to_write(), phy_register_write(port, number, value), closes()},
                         access);
            EXPECT_EQ(registers, expected);
            device_put = nullptr;
        }
    }
}

TEST_F(PhyRegister, ReadsBackWhatItWrote)
{
    for_every_word([this](uint16_t value) {
        const Bytes access = access_of(6, 17, value);
        expect_run(WR_PHY_REGISTER, access, 0, access);
        expect_run(RD_PHY_REGISTER, access_of(6, 17, kHeld), 0, access);
    });
}

TEST_F(PhyRegister, KeepsTheCallersValueWhenTheReadFails)
{
    expect_kept(RD_PHY_REGISTER, access_of(0, 1, kHeld));
}

TEST_F(PhyRegister, RefusesPortsAbove6AndNumbersAbove31WithoutOpening)
{
    for (const DeviceCommandCode command : {RD_PHY_REGISTER, WR_PHY_REGISTER}) {
        for (const uint32_t port : {7U, 8U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
            expect_refused(command, access_of(port, 0, kHeld));
        }
        for (const uint32_t port : kPhyPorts) {
            for (const uint32_t number : {32U, 33U, 255U, 256U, 0x8000U, 0xFFFFU}) {
                expect_refused(command, access_of(port, number, kHeld));
            }
        }
    }
}

} // namespace
