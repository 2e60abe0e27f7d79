// The channel words of the own and of other units.
#include "device/record_fixture.h"

namespace
{

class ChannelWordTest : public RecordTest
{
};

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

TEST_F(ChannelWordTest, TheOwnChannelWordIsFilledInTheCallersRecord)
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

TEST_F(ChannelWordTest, AnotherUnitsChannelWordIsTwelveBits)
{
    board.fpga.words[0x6B29] = 0x1207;
    board.fpga.unit_words[{0x1208, 1}] = {0xF345, 0xFFFF};
    board.fpga.unit_words[{0x1208, 0}] = {0x0111, 0x0222};
    const Bytes start = hex("08 12 5A A5");
    prove_record(0x00A7, start, other_course(0x1208), hex("08 12 45 03"));
    expect_kept_unopened(0x00A7, start);
    expect_after_failed(0x00A7, start, 0x6B3E, -2, start);
}

TEST_F(ChannelWordTest, EveryOwnChannelWordIsReportedWhole)
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

TEST_F(ChannelWordTest, EveryIdentifierButTheOwnIsAnotherUnits)
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

TEST_F(ChannelWordTest, TheDriverMayFill496BytesForTheOwnIdentifier)
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
TEST_F(ChannelWordTest, AnUnreadOwnIdentifierIsZero)
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

TEST_F(ChannelWordTest, TheChannelWordKeepsItsTopFourBits)
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

TEST_F(ChannelWordTest, EveryChannelWordAndValueAreJoined)
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

} // namespace
