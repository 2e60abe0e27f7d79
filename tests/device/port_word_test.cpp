// The port mask, status bits and the status word.
#include "device/record_fixture.h"

namespace
{

class PortWordTest : public RecordTest
{
};

// The port mask -----------------------------------------------------------------------------

TEST_F(PortWordTest, TheMaskIsFilledInTheCallersRecord)
{
    board.fpga.words[0x6B8D] = 0x89ABCDEF;
    prove_record(0x00A0, hex("AA BB CC DD 11 22 33 44"),
                 {opens_to_read(), record_read(0x6B8D, hex("11 22 33 44")), closes()},
                 hex("AA BB CC DD EF CD AB 89"));
    EXPECT_EQ(record_before_close(0x00A0, hex("AA BB CC DD 11 22 33 44")),
              hex("AA BB CC DD EF CD AB 89"));
    expect_kept_unopened(0x00A0, hex("AA BB CC DD 11 22 33 44"));
    expect_after_failed(0x00A0, hex("AA BB CC DD 11 22 33 44"), 0x6B8D, -2,
                        hex("AA BB CC DD 11 22 33 44"));
}

TEST_F(PortWordTest, APortsBitIsSetInTheCallersMask)
{
    device_put = [&] { board.fpga.words[0x6B8D] = 0x81234567; };
    prove_record(0x00A1, hex("03 00 01 00 11 22 33 44"),
                 {opens_to_write(), record_read(0x6B8D, hex("11 22 33 44")),
                  value_write(0x6B8E, 0x8123456F, kElsewhere), closes()},
                 hex("03 00 01 00 6F 45 23 81"));
    EXPECT_EQ(board.fpga.words[0x6B8D], 0x8123456FU);
}

TEST_F(PortWordTest, APortsBitIsClearedInTheCallersMask)
{
    device_put = [&] { board.fpga.words[0x6B8D] = 0xFFFFFFFF; };
    prove_record(0x00A1, hex("01 00 02 00 11 22 33 44"),
                 {opens_to_write(), record_read(0x6B8D, hex("11 22 33 44")),
                  value_write(0x6B8E, 0xFFFFFFFD, kElsewhere), closes()},
                 hex("01 00 02 00 FD FF FF FF"));
    EXPECT_EQ(board.fpga.words[0x6B8D], 0xFFFFFFFDU);
}

TEST_F(PortWordTest, AMaskThatCannotBeWrittenIsReadOnceMore)
{
    device_put = [&] { board.fpga.words[0x6B8D] = 0x81234567; };
    const std::string opens = "open /dev/fpga O_RDWR|O_NONBLOCK";
    prove_write_failure(
        0x00A1, hex("03 00 01 00 11 22 33 44"), hex("03 00 01 00 6F 45 23 81"),
        {opens, "ioctl 6B8D 11 22 33 44", "ioctl 6B8E =8123456F", "close /dev/fpga"},
        {opens, "ioctl 6B8D 6F 45 23 81", "ioctl 6B8E =8123456F", "close /dev/fpga"});
}

TEST_F(PortWordTest, TheMaskIsReadIntoTheCallersRecordAndStaysThereWhenItsWriteFails)
{
    const Bytes start = hex("04 00 01 00 11 22 33 44");
    board.fpga.words[0x6B8D] = 0x80000001;
    expect_kept_unopened(0x00A1, start);
    expect_after_failed(0x00A1, start, 0x6B8D, -2, start);
    expect_after_failed(0x00A1, start, 0x6B8E, -4, hex("04 00 01 00 11 00 00 80"));
    EXPECT_EQ(board.fpga.words[0x6B8D], 0x80000001U);
    EXPECT_EQ(record_before_close(0x00A1, start), hex("04 00 01 00 11 00 00 80"));
}

TEST_F(PortWordTest, EveryPortHasItsBit)
{
    board.recording = false;
    for (uint32_t port = 1; port <= 29; ++port) {
        for (const uint32_t value : {0U, 1U, 2U, 255U, 256U, 257U, 0x8001U, 0xFFFFU}) {
            for (const uint32_t mask : {0U, 0xFFFFFFFFU, 0xA5A5A5A5U, 0x5A5A5A5AU}) {
                uint32_t expected = mask;
                for (uint32_t bit = 0; bit < 32; ++bit) {
                    const uint32_t alone = uint32_t{1} << bit;
                    if (bit == port) {
                        expected = value == 1 ? expected | alone : expected & (0xFFFFFFFF - alone);
                    }
                }
                board.fpga.words[0x6B8D] = mask;
                ASSERT_EQ(run(0x00A1, le16(port) + le16(value) + le32(0x44332211)), 0);
                ASSERT_EQ(record_bytes(), le16(port) + le16(value) + le32(expected));
                ASSERT_EQ(board.fpga.words[0x6B8D], expected);
            }
        }
    }
}

TEST_F(PortWordTest, OnlyTheValueOneSetsABit)
{
    for_every_word([&](uint16_t value) {
        board.fpga.words[0x6B8D] = 0x00FF00FF;
        ASSERT_EQ(run(0x00A1, le16(7) + le16(value) + le32(0)), 0);
        ASSERT_EQ(board.fpga.words[0x6B8D], value == 1 ? 0x00FF00FFU : 0x00FF007FU);
    });
}

TEST_F(PortWordTest, NoOtherPortHasABit)
{
    for (const uint32_t port : {0U, 30U, 31U, 32U, 33U, 255U, 256U, 257U, 0x8001U, 0xFFFFU}) {
        expect_refused_record(0x00A1, le16(port) + le16(1) + le32(0x44332211));
    }
    for_every_word([&](uint16_t port) {
        ASSERT_EQ(run(0x00A1, le16(port) + le16(1) + le32(0)), port >= 1 && port <= 29 ? 0 : -5);
    });
}

// Status bits -------------------------------------------------------------------------------

TEST_F(PortWordTest, BitNumberZeroReportsTheWholeStatusWord)
{
    board.fpga.words[0x6B3D] = 0x89ABCDEF;
    prove_record(0x00A2, le32(0) + le32(0x44332211), {opens_to_read(), map_read(0x6B3D), closes()},
                 le32(0) + le32(0x89ABCDEF));
    for (const uint32_t bit : {0U, 1U, 32U}) {
        const Bytes start = le32(bit) + le32(0x44332211);
        expect_kept_unopened(0x00A2, start);
        expect_after_failed(0x00A2, start, 0x6B3D, -2, start);
    }
}

TEST_F(PortWordTest, EveryOtherStatusBitIsReportedAlone)
{
    for (uint32_t bit = 1; bit <= 31; ++bit) {
        for (uint32_t held = 0; held <= 31; ++held) {
            const uint32_t word = uint32_t{1} << held;
            board.fpga.words[0x6B3D] = word;
            EXPECT_EQ(run(0x00A2, le32(bit) + le32(0x44332211)), 0);
            expect_record(le32(bit) + le32(held == bit ? 1 : 0));
            board.fpga.words[0x6B3D] = ~word;
            EXPECT_EQ(run(0x00A2, le32(bit) + le32(0x44332211)), 0);
            expect_record(le32(bit) + le32(held == bit ? 0 : 1));
        }
    }
}

TEST_F(PortWordTest, BitNumbersBeyondTheWordReportZero)
{
    board.fpga.words[0x6B3D] = 0xFFFFFFFF;
    for (const uint32_t bit :
         {32U, 33U, 63U, 64U, 255U, 256U, 257U, 0x10001U, 0x80000000U, 0x80000001U, 0xFFFFFFFFU}) {
        prove_record(0x00A2, le32(bit) + le32(0x44332211),
                     {opens_to_read(), map_read(0x6B3D), closes()}, le32(bit) + le32(0));
    }
}

// The status word ---------------------------------------------------------------------------

TEST_F(PortWordTest, TheStatusWordIsWrittenFromACopy)
{
    prove_record(0x00A3, hex("C3 A5"),
                 {opens_to_write(), record_write(0x6B62, hex("C3 A5"), -2), closes()},
                 hex("C3 A5"));
    EXPECT_EQ(board.fpga.words[0x6B62], 0xA5C3U);
    EXPECT_EQ(run_changing(0x00A3, hex("34 12"), 0x6B62, hex("FF FF")), 0);
    EXPECT_EQ(board.fpga.words[0x6B62], 0x1234U);
}

// A driver that answers with a positive number has not failed.
TEST_F(PortWordTest, PositiveResultOfTheDriverIsSuccess)
{
    for (const uint32_t request :
         {0x6B29U, 0x6B3DU, 0x6B3EU, 0x6B51U, 0x6B52U, 0x6B62U, 0x6B8DU, 0x6B8EU}) {
        board.fpga.results[request] = 3;
    }
    for (const DeviceCommandCode command : {0x00A0U, 0x00A1U, 0x00A2U, 0x00A3U, 0x00A7U, 0x00A8U}) {
        EXPECT_EQ(run(command, le16(1) + zeros(6)), 0);
    }
    board.fpga.words[0x6B29] = 1; // read in spite of the result 3: the own identifier
    board.fpga.words[0x6B51] = 0xF345;
    EXPECT_EQ(run(0x00A7, le16(1) + le16(0)), 0);
    expect_record(le16(1) + le16(0xF345));
}

} // namespace
