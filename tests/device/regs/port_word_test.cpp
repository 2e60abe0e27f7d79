// The port mask, status bits, the status word and channel words.
#include "device/regs/record_fixture.h"

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

// The channel word --------------------------------------------------------------------------

// The own identifier is read by another open, while the device is open already.
const Course kOwnIdRead = {opens_to_read(), opens_to_read(kElsewhere),
                           record_read(0x6B29, le16(0), kElsewhere), closes()};

Bytes unit_request(uint32_t id)
{
    return le32(id) + zeros(4) + hex("01 00 00 00 00 00 00 00");
}

Course own_course(const Bytes& callers)
{
    return kOwnIdRead + Course{record_read(0x6B51, callers), closes()};
}

Course other_course(uint32_t id)
{
    return kOwnIdRead + Course{record_read(0x6B3E, unit_request(id)), closes()};
}

TEST_F(PortWordTest, TheOwnChannelWordIsFilledInTheCallersRecord)
{
    board.fpga.words[0x6B29] = 0x1207;
    board.fpga.words[0x6B51] = 0xF345;
    const Bytes start = hex("07 12 5A A5");
    prove_record(0x00A7, start, own_course(hex("5A A5")), hex("07 12 45 F3"));
    std::vector<Bytes> at_close;
    board.before_call = [&](const std::string& call) {
        if (call == "close /dev/fpga") {
            at_close.push_back(record_bytes());
        }
    };
    EXPECT_EQ(run(0x00A7, start), 0);
    board.before_call = nullptr;
    EXPECT_EQ(at_close, (std::vector<Bytes>{start, hex("07 12 45 F3")}));
    expect_kept_unopened(0x00A7, start);
    expect_after_failed(0x00A7, start, 0x6B51, -2, start);
}

TEST_F(PortWordTest, AnotherUnitsChannelWordIsTwelveBits)
{
    board.fpga.words[0x6B29] = 0x1207;
    board.fpga.unit_words[{0x1208, 1}] = {0xF345, 0xFFFF};
    board.fpga.unit_words[{0x1208, 0}] = {0x0111, 0x0222};
    const Bytes start = hex("08 12 5A A5");
    prove_record(0x00A7, start, other_course(0x1208), hex("08 12 45 03"));
    expect_kept_unopened(0x00A7, start);
    expect_after_failed(0x00A7, start, 0x6B3E, -2, start);
}

TEST_F(PortWordTest, EveryOwnChannelWordIsReportedWhole)
{
    board.fpga.words[0x6B29] = 9;
    for_every_word([&](uint16_t word) {
        board.fpga.words[0x6B51] = word;
        ASSERT_EQ(run(0x00A7, le16(9) + le16(~word & 0xFFFFU)), 0);
        ASSERT_EQ(record_bytes(), le16(9) + le16(word));
        board.fpga.unit_words[{10, 1}] = {word, ~word & 0xFFFFU};
        ASSERT_EQ(run(0x00A7, le16(10) + le16(~word & 0xFFFFU)), 0);
        ASSERT_EQ(record_bytes(), le16(10) + le16(word % 0x1000U));
    });
}

TEST_F(PortWordTest, EveryIdentifierButTheOwnIsAnotherUnits)
{
    for (const uint16_t own : {uint16_t{0}, uint16_t{1}, uint16_t{0x1234}, uint16_t{0xFFFF}}) {
        board.fpga.words[0x6B29] = own;
        board.fpga.words[0x6B51] = 0xF00D;
        for_every_word([&](uint16_t id) {
            board.fpga.unit_words.clear();
            board.fpga.unit_words[{id, 1}] = {0xF123, 0};
            ASSERT_EQ(run(0x00A7, le16(id) + le16(0)), 0);
            ASSERT_EQ(record_bytes(), le16(id) + le16(id == own ? 0xF00D : 0x0123));
        });
    }
}

TEST_F(PortWordTest, TheDriverMayFill496BytesForTheOwnIdentifier)
{
    board.fpga.words[0x6B29] = 7;
    board.fpga.words[0x6B51] = 0xF345;
    board.fpga.unit_words[{8, 1}] = {0xF678, 0};
    board.fpga.filled[0x6B29] = 496;
    EXPECT_EQ(run(0x00A7, hex("07 00 5A A5")), 0);
    expect_record(hex("07 00 45 F3"));
    EXPECT_EQ(run(0x00A7, hex("08 00 5A A5")), 0);
    expect_record(hex("08 00 78 06"));
}

// An identifier that cannot be read counts as 0.
TEST_F(PortWordTest, AnUnreadOwnIdentifierIsZero)
{
    board.fpga.words[0x6B29] = 7;
    board.fpga.words[0x6B51] = 0xF345;
    board.fpga.unit_words[{7, 1}] = {0xF678, 0};
    const std::string opens = "open /dev/fpga O_RDONLY|O_NONBLOCK";
    struct Unread {
        size_t failing; // call
        Trace calls;
    };
    const Unread kUnread[] = {
        {2, {opens, opens + " -> failed"}},
        {3, {opens, opens, "ioctl 6B29 00 00 -> failed", "close /dev/fpga"}},
    };
    for (const Unread& unread : kUnread) {
        board.restart();
        board.fail_call(unread.failing);
        EXPECT_EQ(run(0x00A7, hex("07 00 5A A5")), 0);
        expect_record(hex("07 00 78 06"));
        Trace calls = unread.calls;
        calls.insert(calls.end(), {"ioctl 6B3E 07 00 00 00 00 00 00 00 01 00 00 00 00 00 00 00",
                                   "close /dev/fpga"});
        EXPECT_EQ(board.calls, calls);

        board.restart();
        board.fail_call(unread.failing);
        EXPECT_EQ(run(0x00A7, hex("00 00 5A A5")), 0);
        expect_record(hex("00 00 45 F3"));
        calls = unread.calls;
        calls.insert(calls.end(), {"ioctl 6B51 5A A5", "close /dev/fpga"});
        EXPECT_EQ(board.calls, calls);
    }
}

TEST_F(PortWordTest, TheChannelWordKeepsItsTopFourBits)
{
    device_put = [&] { board.fpga.words[0x6B51] = 0xA678; };
    prove_record(0x00A8, hex("07 12 45 03"),
                 {opens_to_write(), word_read(0x6B51), value_write(0x6B52, 0xA345, -2), closes()},
                 hex("07 12 45 03"));
    EXPECT_EQ(board.fpga.words[0x6B51], 0xA345U);
    // The caller's bits are not cut to 12.
    prove_record(0x00A8, hex("FF FF 45 53"),
                 {opens_to_write(), word_read(0x6B51), value_write(0x6B52, 0xF345, -2), closes()},
                 hex("FF FF 45 53"));
    EXPECT_EQ(board.fpga.words[0x6B51], 0xF345U);
}

TEST_F(PortWordTest, EveryChannelWordAndValueAreJoined)
{
    constexpr uint16_t kSamples[] = {0x0000, 0x0001, 0x0FFF, 0x1000, 0x8000,
                                     0x5A5A, 0xA5A5, 0xF000, 0xFFFF};
    const auto expect_joined = [&](uint16_t held, uint16_t value) {
        board.fpga.words[0x6B51] = held;
        ASSERT_EQ(run(0x00A8, le16(held ^ value) + le16(value)), 0);
        ASSERT_EQ(board.fpga.words[0x6B51], static_cast<uint32_t>(value | (held & 0xF000)));
        ASSERT_EQ(record_bytes(), le16(held ^ value) + le16(value));
    };
    for_every_word([&](uint16_t word) {
        for (const uint16_t sample : kSamples) {
            expect_joined(word, sample);
            expect_joined(sample, word);
        }
    });
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
