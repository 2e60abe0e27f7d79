// The latched register, which is read beside the bit that holds it.
#include "device/command_test.h"

namespace
{

class LatchedRegister : public CommandTest
{
  protected:
    void expect_value(uint32_t value)
    {
        expect_run(RD_REG_DA_LATCHED, untouched(4), 0, le32(value));
    }

    uint16_t& control = board.fpga.registers[0xD8];
    uint16_t& latched = board.fpga.registers[0xDA];
};

TEST_F(LatchedRegister, ReadsWhileTheBitIsClearAndThenSetsIt)
{
    board.fpga.register_high = 0xCAFE;
    device_put = [this] {
        control = 0xFFFF;
        latched = 0xBEEF;
    };
    prove_record(RD_REG_DA_LATCHED, untouched(4),
                 {opens_to_write(), register_read(0xD8), register_write(0xD8, 0xCAFEFFDF),
                  register_read(0xDA), register_write(0xD8, 0xCAFEFFFF), register_read(0xDA),
                  closes()},
                 le32(0xEF));
}

TEST_F(LatchedRegister, ReportsTheFirstOfTheTwoValues)
{
    latched = 0x1234;
    size_t reads = 0;
    board.before_call = [&](const std::string& call) {
        if (call.rfind("ioctl 6B42 DA", 0) == 0) {
            latched = reads++ == 0 ? 0x5678 : 0x9ABC;
        }
    };
    expect_value(0x78);
    EXPECT_EQ(reads, 2U);
    board.before_call = nullptr;
}

TEST_F(LatchedRegister, EveryValueOfBothRegisters)
{
    uint16_t while_read = 0;
    board.before_call = [&](const std::string&) {
        if (board.call_count() == 3) { // after the opening, a read and a write
            while_read = control;
        }
    };
    for_every_word([&](uint16_t value) {
        board.restart();
        control = value;
        latched = value;
        expect_value(value & 0xFF);
        EXPECT_EQ(while_read, value & 0xFFDF);
        EXPECT_EQ(control, value | 0x0020);
        EXPECT_EQ(latched, value);
    });
    board.before_call = nullptr;
}

TEST_F(LatchedRegister, FailureStoresNothingAndLeavesTheBitAsLastWritten)
{
    const struct {
        size_t call; // that fails in both runs: open 1, the requests 2..6
        int32_t result;
        uint16_t control; // afterwards
    } cases[] = {{1, -1, 0x8020}, {2, -2, 0x8020}, {3, -4, 0x8020},
                 {4, -2, 0x8000}, {5, -4, 0x8000}, {6, -2, 0x8020}};
    for (const auto& [call, result, after] : cases) {
        SCOPED_TRACE(call);
        control = 0x8020;
        latched = 0xBEEF;
        board.restart();
        fail_in_both_runs(call, call == 1 ? 0 : 1);
        expect_run(RD_REG_DA_LATCHED, untouched(4), result, untouched(4));
        EXPECT_EQ(control, after);
    }
}

} // namespace
