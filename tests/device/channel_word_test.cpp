// The channel words of the own and of other units.
#include "device/command_test.h"

namespace
{

class ChannelWords : public CommandTest
{
};

// The own identifier is read by another open, while the device is open already.
const Course kOwnIdAsked = {opens_to_read(), opens_to_read(kElsewhere),
                            record_read(0x6B29, le16(0), kElsewhere), closes()};

Bytes unit_request(uint32_t id)
{
    return le32(id) + zeros(4) + hex("01 00 00 00 00 00 00 00");
}

Course own_course(const Bytes& callers)
{
    return kOwnIdAsked + Course{record_read(0x6B51, callers), closes()};
}

Course other_course(uint32_t id)
{
    return kOwnIdAsked + Course{record_read(0x6B3E, unit_request(id)), closes()};
}

TEST_F(ChannelWords, TheOwnChannelWordIsFilledInTheCallersRecord)
{
    board.fpga.words[0x6B29] = 0x1207;
    board.fpga.words[0x6B51] = 0xF345;
    const Bytes start = hex("07 12 5A A5");
    prove_record(RD_CHANNEL_WORD, start, own_course(hex("5A A5")), hex("07 12 45 F3"));
    std::vector<Bytes> at_close;
    board.before_call = [&](const std::string& call) {
        if (call == "close /dev/fpga") {
            at_close.push_back(record());
        }
    };
    EXPECT_EQ(run(RD_CHANNEL_WORD, start), 0);
    board.before_call = nullptr;
    EXPECT_EQ(at_close, (std::vector<Bytes>{start, hex("07 12 45 F3")}));
    expect_kept(RD_CHANNEL_WORD, start);
}

TEST_F(ChannelWords, AnotherUnitsChannelWordIsTwelveBits)
{
    board.fpga.words[0x6B29] = 0x1207;
    board.fpga.unit_words[{0x1208, 1}] = {0xF345, 0xFFFF};
    board.fpga.unit_words[{0x1208, 0}] = {0x0111, 0x0222};
    const Bytes start = hex("08 12 5A A5");
    prove_record(RD_CHANNEL_WORD, start, other_course(0x1208), hex("08 12 45 03"));
    expect_kept(RD_CHANNEL_WORD, start);
}

TEST_F(ChannelWords, EveryOwnChannelWordIsReportedWhole)
{
    board.fpga.words[0x6B29] = 9;
    for_every_word([&](uint16_t word) {
        board.fpga.words[0x6B51] = word;
        ASSERT_EQ(record_after(RD_CHANNEL_WORD, le16(9) + le16(~word & 0xFFFFU)),
                  le16(9) + le16(word));
        board.fpga.unit_words[{10, 1}] = {word, ~word & 0xFFFFU};
        ASSERT_EQ(record_after(RD_CHANNEL_WORD, le16(10) + le16(~word & 0xFFFFU)),
                  le16(10) + le16(word % 0x1000U));
    });
}

TEST_F(ChannelWords, EveryIdentifierButTheOwnIsAnotherUnits)
{
    for (const uint16_t own : {uint16_t{0}, uint16_t{1}, uint16_t{0x1234}, uint16_t{0xFFFF}}) {
        board.fpga.words[0x6B29] = own;
        board.fpga.words[0x6B51] = 0xF00D;
        for_every_word([&](uint16_t id) {
            board.fpga.unit_words.clear();
            board.fpga.unit_words[{id, 1}] = {0xF123, 0};
            ASSERT_EQ(record_after(RD_CHANNEL_WORD, le16(id) + le16(0)),
                      le16(id) + le16(id == own ? 0xF00D : 0x0123));
        });
    }
}

TEST_F(ChannelWords, TheDriverMayFill496BytesForTheOwnIdentifier)
{
    board.fpga.words[0x6B29] = 7;
    board.fpga.words[0x6B51] = 0xF345;
    board.fpga.unit_words[{8, 1}] = {0xF678, 0};
    board.fpga.filled[0x6B29] = 496;
    expect_run(RD_CHANNEL_WORD, hex("07 00 5A A5"), 0, hex("07 00 45 F3"));
    expect_run(RD_CHANNEL_WORD, hex("08 00 5A A5"), 0, hex("08 00 78 06"));
}

// An identifier that cannot be read counts as 0.
TEST_F(ChannelWords, AnUnreadOwnIdentifierIsZero)
{
    board.fpga.words[0x6B29] = 7;
    board.fpga.words[0x6B51] = 0xF345;
    board.fpga.unit_words[{7, 1}] = {0xF678, 0};
    const std::string opens = opens_to_read().call;
    struct Unread {
        size_t failing; // call
        Trace calls;
    };
    const Unread kUnread[] = {
        {2, {opens, opens + " -> failed"}},
        {3, {opens, opens, "ioctl 6B29 00 00 -> failed", closes().call}},
    };
    struct Id {
        Bytes asked;
        Bytes reported;
        Step read;
    };
    const Id kIds[] = {
        {hex("07 00 5A A5"), hex("07 00 78 06"), record_read(0x6B3E, unit_request(7))},
        {hex("00 00 5A A5"), hex("00 00 45 F3"), record_read(0x6B51, hex("5A A5"))},
    };
    for (const Unread& unread : kUnread) {
        for (const Id& id : kIds) {
            board.restart();
            board.fail_call(unread.failing);
            expect_run(RD_CHANNEL_WORD, id.asked, 0, id.reported);
            EXPECT_EQ(board.calls, unread.calls + calls_of({id.read, closes()}));
        }
    }
}

// What the driver filled counts, although the request failed.
TEST_F(ChannelWords, AnOwnIdentifierFilledByAFailedReadCounts)
{
    board.fpga.words[0x6B29] = 7;
    board.fpga.words[0x6B51] = 0xF345;
    board.fpga.unit_words[{7, 1}] = {0xF678, 0};
    board.fpga.unit_words[{0, 1}] = {0xF9AB, 0};
    board.fpga.results = {{0x6B29, -1}};
    board.fpga.fills_when_failing = true;
    expect_calls(RD_CHANNEL_WORD, hex("07 00 5A A5"), own_course(hex("5A A5")), hex("07 00 45 F3"));
    expect_calls(RD_CHANNEL_WORD, hex("00 00 5A A5"), other_course(0), hex("00 00 AB 09"));
}

TEST_F(ChannelWords, TheChannelWordKeepsItsTopFourBits)
{
    device_put = [&] { board.fpga.words[0x6B51] = 0xA678; };
    prove_record(WR_CHANNEL_WORD, hex("07 12 45 03"),
                 {opens_to_write(), word_read(0x6B51), value_write(0x6B52, 0xA345, -2), closes()},
                 hex("07 12 45 03"));
    EXPECT_EQ(board.fpga.words[0x6B51], 0xA345U);
    // The caller's bits are not cut to 12.
    prove_record(WR_CHANNEL_WORD, hex("FF FF 45 53"),
                 {opens_to_write(), word_read(0x6B51), value_write(0x6B52, 0xF345, -2), closes()},
                 hex("FF FF 45 53"));
    EXPECT_EQ(board.fpga.words[0x6B51], 0xF345U);
    expect_kept(WR_CHANNEL_WORD, hex("FF FF 45 53"));
}

TEST_F(ChannelWords, EveryChannelWordAndValueAreJoined)
{
    constexpr uint16_t kSamples[] = {0x0000, 0x0001, 0x0FFF, 0x1000, 0x8000,
                                     0x5A5A, 0xA5A5, 0xF000, 0xFFFF};
    const auto expect_joined = [&](uint16_t held, uint16_t value) {
        board.fpga.words[0x6B51] = held;
        const Bytes asked = le16(held ^ value) + le16(value);
        ASSERT_EQ(record_after(WR_CHANNEL_WORD, asked), asked);
        ASSERT_EQ(board.fpga.words[0x6B51], static_cast<uint32_t>(value | (held & 0xF000)));
    };
    for_every_word([&](uint16_t word) {
        for (const uint16_t sample : kSamples) {
            expect_joined(word, sample);
            expect_joined(sample, word);
        }
    });
}

} // namespace
