// Any register as a whole.
#include "device/register_fixture.h"

namespace
{

class AnyRegister : public RegisterTest
{
};

Bytes register_record(uint32_t address, uint32_t value)
{
    return le32(address) + le16(value);
}

TEST_F(AnyRegister, IsReadAndWrittenInOneRequest)
{
    prove_registers({RD_REGISTER,
                     register_record(0x89ABCDEF, 9),
                     {{0x89ABCDEF, 0x4321}},
                     reads_register(0x89ABCDEF),
                     register_record(0x89ABCDEF, 0x4321)});
    prove_registers({WR_REGISTER,
                     register_record(0x89ABCDEF, 0x4321),
                     {{0x89ABCDEF, 9}},
                     {opens_to_write(), register_write(0x89ABCDEF, 0x4321, -2), closes()},
                     register_record(0x89ABCDEF, 0x4321)});
}

TEST_F(AnyRegister, IsReadAndWrittenWhole)
{
    for (const uint32_t address : {0U, 1U, 0x158U, 0xFFFFU, 0x12345678U, 0xFFFFFFFFU}) {
        read_every_value(RD_REGISTER, address, register_record(address, 0xA5A5),
                         [=](uint16_t word) { return register_record(address, word); });
        uint16_t& held = at(address);
        for_every_word([&](uint16_t word) {
            held = static_cast<uint16_t>(~word);
            ASSERT_EQ(run(WR_REGISTER, register_record(address, word)), 0);
            ASSERT_EQ(held, word);
        });
        EXPECT_EQ(board.fpga.registers.size(), 1U);
    }
}

} // namespace
