// The flag in register 0x0044.
#include "device/command_test.h"

namespace
{

using Register44 = CommandTest;

TEST_F(Register44, IsReadOnce)
{
    board.fpga.registers[0x0044] = 0x0001;
    prove_record(RD_REG44_FLAG, untouched(2), {opens_to_read(), register_read(0x0044), closes()},
                 le16(1));
    expect_kept(RD_REG44_FLAG, untouched(2));
}

// What the driver returned beside the register's 16 bits is written back with them.
TEST_F(Register44, IsChangedInTheRecordThatWasRead)
{
    board.fpga.register_high = 0xCAFE;
    device_put = [this] { board.fpga.registers[0x0044] = 0x1230; };
    prove_record(
        WR_REG44_FLAG, le16(1),
        {opens_to_write(), register_read(0x0044), register_write(0x0044, 0xCAFE1231), closes()},
        le16(1));
}

TEST_F(Register44, HasTheFlagInBit0AndOneAloneSetsIt)
{
    board.fpga.register_high = 0xFFFF;
    for_every_word([&](uint16_t held) {
        board.fpga.registers[0x0044] = held;
        expect_run(RD_REG44_FLAG, untouched(2), 0, le16(held % 2U));
        for (const uint32_t flag : {0U, 1U, 2U, 255U, 0x0101U, 0x0100U, 0xFFFFU}) {
            board.fpga.registers[0x0044] = held;
            expect_run(WR_REG44_FLAG, le16(flag), 0, le16(flag));
            EXPECT_EQ(board.fpga.registers[0x0044], flag == 1 ? held | 1 : held & 0xFFFE)
                << hex_number(flag) << " into " << hex_number(held);
        }
    });
    EXPECT_EQ(board.fpga.registers.size(), 1U);
}

TEST_F(Register44, ReadsBackWhatWasWritten)
{
    for (const uint32_t flag : {1U, 0U}) {
        EXPECT_EQ(run(WR_REG44_FLAG, le16(flag)), 0);
        expect_run(RD_REG44_FLAG, untouched(2), 0, le16(flag));
    }
}

} // namespace
