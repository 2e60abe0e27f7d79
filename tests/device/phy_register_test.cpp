// Single registers of the PHYs.
#include <array>

#include "device/caller_record.h"
#include "device/phy_course.h"

namespace
{

constexpr uint32_t kPorts[] = {0, 1, 2, 3, 4, 5, 6};

using Registers = std::array<uint16_t, 32>;

class PhyRegister : public DeviceTest
{
  protected:
    CallerRecord record;
};

TEST_F(PhyRegister, ReadsOneRegisterOfThePortsPhy)
{
    for (const uint32_t port : kPorts) {
        for (uint32_t number = 0; number < 32; ++number) {
            SCOPED_TRACE("port " + std::to_string(port) + " register " + std::to_string(number));
            const auto value = static_cast<uint16_t>(0x8000 + 256 * port + number);
            prove(RD_PHY_REGISTER,
                  [&] {
                      board.fpga.phys[kPhyAddressOfPort[port]][number] = value;
                      record = CallerRecord(le32(port) + le16(number));
                      return record.pointer();
                  },
                  {opens_to_write(), phy_register_read(port, number), closes()});
            EXPECT_EQ(record.bytes(), untouched_after(le32(port) + le16(number) + le16(value)));
        }
    }
}

TEST_F(PhyRegister, WritesOneRegisterOfThePortsPhy)
{
    for (const uint32_t port : kPorts) {
        for (uint32_t number = 0; number < 32; ++number) {
            SCOPED_TRACE("port " + std::to_string(port) + " register " + std::to_string(number));
            const auto value = static_cast<uint16_t>(0xA000 + 256 * port + number);
            const Bytes start = le32(port) + le16(number) + le16(value);
            Registers& registers = board.fpga.phys[kPhyAddressOfPort[port]];
            prove(WR_PHY_REGISTER,
                  [&] {
                      registers.fill(0);
                      record = CallerRecord(start);
                      return record.pointer();
                  },
                  {opens_to_write(), phy_register_write(port, number, value), closes()});
            Registers expected{};
            expected[number] = value;
            EXPECT_EQ(registers, expected);
            EXPECT_EQ(record.bytes(), untouched_after(start));
        }
    }
}

TEST_F(PhyRegister, ReadsBackWhatItWrote)
{
    record = CallerRecord(le32(6) + le16(17));
    for_every_word([this](uint16_t value) {
        record.put(6, value);
        record.put(7, value >> 8);
        EXPECT_EQ(Fpga_Register_Set(WR_PHY_REGISTER, record.pointer()), 0);
        CallerRecord read(le32(6) + le16(17));
        EXPECT_EQ(Fpga_Register_Set(RD_PHY_REGISTER, read.pointer()), 0);
        EXPECT_EQ(read.bytes(), untouched_after(le32(6) + le16(17) + le16(value)));
    });
}

TEST_F(PhyRegister, KeepsTheCallersValueWhenTheReadFails)
{
    for (size_t failing = 1; failing <= 2; ++failing) {
        record = CallerRecord(le32(0) + le16(1));
        board.restart();
        fail_in_both_runs(failing, failing == 1 ? 0 : 1);
        EXPECT_EQ(Fpga_Register_Set(RD_PHY_REGISTER, record.pointer()), failing == 1 ? -1 : -2);
        EXPECT_EQ(record.bytes(), untouched_after(le32(0) + le16(1)));
    }
}

TEST_F(PhyRegister, RefusesPortsAbove6AndNumbersAbove31WithoutOpening)
{
    for (const DeviceCommandCode command : {RD_PHY_REGISTER, WR_PHY_REGISTER}) {
        for (const uint32_t port : {7U, 8U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
            record = CallerRecord(le32(port) + le16(0));
            expect_refused(command, record.pointer());
            EXPECT_EQ(record.bytes(), untouched_after(le32(port) + le16(0)));
        }
        for (const uint32_t port : kPorts) {
            for (const uint32_t number : {32U, 33U, 255U, 256U, 0x8000U, 0xFFFFU}) {
                record = CallerRecord(le32(port) + le16(number));
                expect_refused(command, record.pointer());
                EXPECT_EQ(record.bytes(), untouched_after(le32(port) + le16(number)));
            }
        }
    }
}

} // namespace
