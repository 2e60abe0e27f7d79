// Single bits of bitmap D, and the word of the driver's that WR_STATUS_WORD writes.
#include "device/caller_memory_fixture.h"

namespace
{

class StatusBits : public CallerMemoryTest
{
};

TEST_F(StatusBits, BitNumberZeroReportsTheWholeBitmap)
{
    board.fpga.words[0x6B3D] = 0x89ABCDEF;
    prove_record(RD_STATUS_BIT, le32(0) + le32(0x44332211),
                 {opens_to_read(), map_read(0x6B3D), closes()}, le32(0) + le32(0x89ABCDEF));
    for (const uint32_t bit : {0U, 1U, 32U}) {
        expect_kept(RD_STATUS_BIT, le32(bit) + le32(0x44332211));
    }
}

TEST_F(StatusBits, EveryOtherBitIsReportedAlone)
{
    for (uint32_t bit = 1; bit <= 31; ++bit) {
        for (uint32_t held = 0; held <= 31; ++held) {
            const Bytes asked = le32(bit) + le32(0x44332211);
            board.fpga.words[0x6B3D] = uint32_t{1} << held;
            expect_run(RD_STATUS_BIT, asked, 0, le32(bit) + le32(held == bit ? 1 : 0));
            board.fpga.words[0x6B3D] = ~(uint32_t{1} << held);
            expect_run(RD_STATUS_BIT, asked, 0, le32(bit) + le32(held == bit ? 0 : 1));
        }
    }
}

TEST_F(StatusBits, BitNumbersBeyondTheBitmapReportZero)
{
    board.fpga.words[0x6B3D] = 0xFFFFFFFF;
    for (const uint32_t bit :
         {32U, 33U, 63U, 64U, 255U, 256U, 257U, 0x10001U, 0x80000000U, 0x80000001U, 0xFFFFFFFFU}) {
        prove_record(RD_STATUS_BIT, le32(bit) + le32(0x44332211),
                     {opens_to_read(), map_read(0x6B3D), closes()}, le32(bit) + le32(0));
    }
}

TEST_F(StatusBits, TheWordIsWrittenFromACopy)
{
    prove_record(WR_STATUS_WORD, hex("C3 A5"),
                 {opens_to_write(), record_write(0x6B62, hex("C3 A5"), -2), closes()},
                 hex("C3 A5"));
    EXPECT_EQ(board.fpga.words[0x6B62], 0xA5C3U);
    EXPECT_EQ(run_changing(WR_STATUS_WORD, hex("34 12"), 0x6B62, hex("FF FF")), 0);
    EXPECT_EQ(board.fpga.words[0x6B62], 0x1234U);
}

} // namespace
