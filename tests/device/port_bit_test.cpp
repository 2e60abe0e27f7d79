// A bit for each port.
#include "device/register_fixture.h"

namespace
{

class PortBits : public RegisterTest
{
};

struct PortRow {
    uint32_t port;
    uint32_t address;
    uint16_t bit;
};

constexpr PortRow kPorts[] = {
    {1, 0x5E, 0x0002},  {2, 0x5E, 0x0004},  {3, 0x5E, 0x0008},  {4, 0x5E, 0x0010},
    {5, 0x5E, 0x0020},  {6, 0x5E, 0x0040},  {7, 0x5E, 0x0080},  {8, 0x5E, 0x0100},
    {9, 0x5E, 0x0200},  {10, 0x5E, 0x0400}, {11, 0x5E, 0x0800}, {12, 0x5E, 0x1000},
    {13, 0x5E, 0x2000}, {14, 0x5E, 0x4000}, {15, 0x5E, 0x8000}, {16, 0x5C, 0x0001},
    {17, 0x5C, 0x0002}, {18, 0x5C, 0x0004}, {19, 0x5C, 0x0008}, {20, 0x5C, 0x0010},
    {21, 0x5C, 0x0020}, {22, 0x5C, 0x0040}, {23, 0x5C, 0x0080}, {24, 0x5C, 0x0100},
    {25, 0x5C, 0x0200}, {26, 0x5C, 0x0400}, {27, 0x5C, 0x0800}, {28, 0x5C, 0x1000},
    {29, 0x5C, 0x2000},
};

Bytes port(uint32_t port)
{
    return le16(5) + le16(6) + le16(port);
}

TEST_F(PortBits, APortsBitIsSetOrClearedAndTheOthersKept)
{
    for (const auto& [number, address, bit] : kPorts) {
        const Bytes record = port(number);
        const auto with = [bit = bit](uint16_t word) { return static_cast<uint16_t>(word | bit); };
        const auto without = [bit = bit](uint16_t word) {
            return static_cast<uint16_t>(word & ~bit);
        };
        write_over_every_value(WR_PORT_BIT_SET, address, record, with);
        write_over_every_value(WR_PORT_BIT_CLEAR, address, record, without);
        // What is held already is written again.
        for (const uint16_t held : {uint16_t{0}, bit, without(0xFFFF), uint16_t{0xFFFF}}) {
            prove_registers({WR_PORT_BIT_SET,
                             record,
                             {{address, held}},
                             changes_register(address, with(held), -3),
                             record});
            prove_registers({WR_PORT_BIT_CLEAR,
                             record,
                             {{address, held}},
                             changes_register(address, without(held), -3),
                             record});
        }
    }
}

TEST_F(PortBits, APortOutside1To29FailsAfterTheOpen)
{
    const Course once{opens_to_write(), closes(), {"usleep 1", kIgnored}};
    for (const DeviceCommandCode command : {WR_PORT_BIT_SET, WR_PORT_BIT_CLEAR}) {
        for (const uint32_t value : {0U, 30U, 31U, 32U, 0x0101U, 0xFFFFU}) {
            expect_calls(command, port(value), once + once, port(value), -2);
        }
        for_every_word([&](uint16_t value) {
            ASSERT_EQ(run(command, port(value)), value >= 1 && value <= 29 ? 0 : -2);
        });
        board.fpga_present = false;
        expect_run(command, port(0), -1, port(0));
        board.fpga_present = true;
    }
}

} // namespace
