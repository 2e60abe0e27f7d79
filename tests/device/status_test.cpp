// The status word: its flag and its inputs.
#include "device/command_test.h"

namespace
{

using Status = CommandTest;

TEST_F(Status, IsOneRequest)
{
    board.fpga.words[0x6B02] = 0xFF5F;
    const Course course{opens_to_read(), word_read(0x6B02), closes()};
    prove_record(RD_STATUS_WORD_FLAG, untouched(1), course, byte(1));
    prove_record(RD_STATUS_INPUTS, untouched(4), course, hex("00 01 00 01"));
    expect_kept(RD_STATUS_WORD_FLAG, untouched(1));
    expect_kept(RD_STATUS_INPUTS, untouched(4));
}

TEST_F(Status, FlagIsBit8AndInputsAreActiveLowInEveryWord)
{
    for_every_word([this](uint16_t word) {
        board.fpga.words[0x6B02] = word;
        expect_run(RD_STATUS_WORD_FLAG, untouched(1), 0, byte((word & 0x0100) != 0 ? 1 : 0));
        Bytes inputs;
        for (const unsigned bit : {0x10U, 0x20U, 0x40U, 0x80U}) {
            inputs += byte((word & bit) == 0 ? 1 : 0);
        }
        expect_run(RD_STATUS_INPUTS, untouched(4), 0, inputs);
    });
}

} // namespace
