// Indexed words, port entries, the port mask, status bits and channel words.
#include "device/regs/record_fixture.h"

namespace
{

class PortEntryTest : public RecordTest
{
};

// Indexed words -----------------------------------------------------------------------------

TEST_F(PortEntryTest, ReadsTheLowHalfOfAnIndexedNumber)
{
    board.fpga.indexed_words[0x1234] = 0x9ABC5678;
    prove_record(0x0064, hex("34 12 CD AB"),
                 {opens_to_write(), record_read(0x6B83, hex("34 12 00 00 00 00 00 00")), closes()},
                 hex("34 12 78 56"));
    expect_kept_unopened(0x0064, hex("34 12 CD AB"));
    expect_after_failed(0x0064, hex("34 12 CD AB"), 0x6B83, -2, hex("34 12 CD AB"));
}

TEST_F(PortEntryTest, WritesAnIndexedWord)
{
    prove_record(0x0065, hex("34 12 CD AB"),
                 {opens_to_write(), record_write(0x6B84, hex("34 12 00 00 CD AB 00 00")), closes()},
                 hex("34 12 CD AB"));
    EXPECT_EQ(board.fpga.indexed_words[0x1234], 0xABCDU);
}

TEST_F(PortEntryTest, EveryIndexHasItsOwnWord)
{
    for_every_word([&](uint16_t index) {
        ASSERT_EQ(run(0x0065, le16(index) + le16(index ^ 0xA5A5U)), 0);
        ASSERT_EQ(record_bytes(), le16(index) + le16(index ^ 0xA5A5U));
    });
    for_every_word([&](uint16_t index) {
        ASSERT_EQ(run(0x0064, le16(index) + le16(0)), 0);
        ASSERT_EQ(record_bytes(), le16(index) + le16(index ^ 0xA5A5U));
    });
}

// Port entries ------------------------------------------------------------------------------

Bytes entry_of(uint32_t port, uint32_t flag, uint32_t index, uint32_t value)
{
    return le16(port) + le16(flag) + le16(index) + le16(value);
}

TEST_F(PortEntryTest, ReadsAnEntry)
{
    board.fpga.port_entries[29] = 0x89AB;
    prove_record(0x009E, hex("03 00 01 00 05 00 5A A5"),
                 {opens_to_read(), record_read(0x6B60, hex("1D 00 01 00 00 00 00 00")), closes()},
                 hex("03 00 01 00 05 00 AB 89"));
    expect_kept_unopened(0x009E, hex("03 00 01 00 05 00 5A A5"));
    expect_after_failed(0x009E, hex("03 00 01 00 05 00 5A A5"), 0x6B60, -2,
                        hex("03 00 01 00 05 00 5A A5"));
}

TEST_F(PortEntryTest, WritesAnEntry)
{
    prove_record(0x009F, hex("03 00 01 00 05 00 5A A5"),
                 {opens_to_write(), record_write(0x6B61, hex("1D 00 01 00 5A A5 00 00")), closes()},
                 hex("03 00 01 00 05 00 5A A5"));
    EXPECT_EQ(board.fpga.port_entries, (std::map<uint16_t, uint16_t>{{29, 0xA55A}}));
}

TEST_F(PortEntryTest, WritesAnEntryOfARangedPort)
{
    prove_record(0x00A6, hex("03 00 01 00 05 00 5A A5"),
                 {opens_to_write(), record_write(0x6B63, hex("1D 00 01 00 5A A5 00 00")), closes()},
                 hex("03 00 01 00 05 00 5A A5"));
    EXPECT_EQ(board.fpga.port_entries, (std::map<uint16_t, uint16_t>{{29, 0xA55A}}));
}

struct Address {
    uint32_t port;
    uint32_t index;
    uint32_t address;
};

constexpr Address kAddresses[] = {
    {0, 0, 0},
    {0, 7, 7},
    {0, 0xFFFF, 0xFFFF},
    {1, 0, 8},
    {1, 7, 15},
    {1, 8, 16},
    {1, 0xFFFF, 7},
    {2, 3, 19},
    {29, 7, 239},
    {29, 0xFFFF, 231},
    {30, 0, 240},
    {0x1FFF, 7, 0xFFFF},
    {0x1FFF, 8, 0},
    {0x2000, 0, 0},
    {0x2001, 1, 9},
    {0xFFFF, 0, 0xFFF8},
    {0xFFFF, 0xFFFF, 0xFFF7},
};

struct Flag {
    uint32_t callers;
    uint32_t sent;
};

constexpr Flag kEntryFlags[] = {{0, 0},     {1, 1},     {2, 0},     {255, 0},
                                {0x100, 0}, {0x101, 0}, {0xFFFF, 0}};

TEST_F(PortEntryTest, AnAddressIsTheIndexPlusEightForEachPort)
{
    for (const Address& row : kAddresses) {
        for (const Flag& flag : kEntryFlags) {
            const Bytes entry = entry_of(row.port, flag.callers, row.index, 0xC3D4);
            const Bytes address = le16(row.address) + le16(flag.sent);
            board.restart();
            expect_course(
                0x009E, with(entry)(),
                {opens_to_read(), record_read(0x6B60, address + le16(0) + le16(0)), closes()});
            const Bytes write = address + le16(0xC3D4) + le16(0);
            board.restart();
            expect_course(0x009F, with(entry)(),
                          {opens_to_write(), record_write(0x6B61, write), closes()});
            if (row.port >= 1 && row.port <= 29) {
                board.restart();
                expect_course(0x00A6, with(entry)(),
                              {opens_to_write(), record_write(0x6B63, write), closes()});
            }
        }
    }
}

TEST_F(PortEntryTest, EveryValueIsReadBack)
{
    for_every_word([&](uint16_t value) {
        const uint32_t port = 1 + value % 29U;
        ASSERT_EQ(run(value % 2U == 0 ? 0x009F : 0x00A6, entry_of(port, 1, value % 8U, value)), 0);
        ASSERT_EQ(run(0x009E, entry_of(port, 1, value % 8U, ~value & 0xFFFFU)), 0);
        ASSERT_EQ(record_bytes(), entry_of(port, 1, value % 8U, value));
    });
}

// The failure of a read, although nothing is read, and after the device was opened: retried.
TEST_F(PortEntryTest, APortOutsideTheRangeFailsWithTheDeviceOpen)
{
    const std::string opens = "open /dev/fpga O_RDWR|O_NONBLOCK";
    for (const uint32_t port : {0U, 30U, 31U, 255U, 257U, 0x8001U, 0xFFFFU}) {
        board.restart();
        EXPECT_EQ(run(0x00A6, entry_of(port, 1, 5, 6)), -2);
        EXPECT_EQ(board.calls, (Trace{opens, "close /dev/fpga", "usleep 1", opens,
                                      "close /dev/fpga", "usleep 1"}));
        expect_record(entry_of(port, 1, 5, 6));
        expect_kept_unopened(0x00A6, entry_of(port, 1, 5, 6));
    }
}

TEST_F(PortEntryTest, TheRangeIsOneToTwentyNine)
{
    for_every_word([&](uint16_t port) {
        board.fpga.port_entries.clear();
        const bool good = port >= 1 && port <= 29;
        ASSERT_EQ(run(0x00A6, entry_of(port, 0, 0, 6)), good ? 0 : -2);
        ASSERT_EQ(board.fpga.port_entries.size(), good ? 1U : 0U);
        // The other write has no range.
        ASSERT_EQ(run(0x009F, entry_of(port, 0, 0, 6)), 0);
    });
}

// The port mask -----------------------------------------------------------------------------

TEST_F(PortEntryTest, TheMaskIsFilledInTheCallersRecord)
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

TEST_F(PortEntryTest, APortsBitIsSetInTheCallersMask)
{
    device_put = [&] { board.fpga.words[0x6B8D] = 0x81234567; };
    prove_record(0x00A1, hex("03 00 01 00 11 22 33 44"),
                 {opens_to_write(), record_read(0x6B8D, hex("11 22 33 44")),
                  value_write(0x6B8E, 0x8123456F, kElsewhere), closes()},
                 hex("03 00 01 00 6F 45 23 81"));
    EXPECT_EQ(board.fpga.words[0x6B8D], 0x8123456FU);
}

TEST_F(PortEntryTest, APortsBitIsClearedInTheCallersMask)
{
    device_put = [&] { board.fpga.words[0x6B8D] = 0xFFFFFFFF; };
    prove_record(0x00A1, hex("01 00 02 00 11 22 33 44"),
                 {opens_to_write(), record_read(0x6B8D, hex("11 22 33 44")),
                  value_write(0x6B8E, 0xFFFFFFFD, kElsewhere), closes()},
                 hex("01 00 02 00 FD FF FF FF"));
    EXPECT_EQ(board.fpga.words[0x6B8D], 0xFFFFFFFDU);
}

TEST_F(PortEntryTest, AMaskThatCannotBeWrittenIsReadOnceMore)
{
    device_put = [&] { board.fpga.words[0x6B8D] = 0x81234567; };
    const std::string opens = "open /dev/fpga O_RDWR|O_NONBLOCK";
    prove_write_failure(
        0x00A1, hex("03 00 01 00 11 22 33 44"), hex("03 00 01 00 6F 45 23 81"),
        {opens, "ioctl 6B8D 11 22 33 44", "ioctl 6B8E =8123456F", "close /dev/fpga"},
        {opens, "ioctl 6B8D 6F 45 23 81", "ioctl 6B8E =8123456F", "close /dev/fpga"});
}

TEST_F(PortEntryTest, TheMaskIsReadIntoTheCallersRecordAndStaysThereWhenItsWriteFails)
{
    const Bytes start = hex("04 00 01 00 11 22 33 44");
    board.fpga.words[0x6B8D] = 0x80000001;
    expect_kept_unopened(0x00A1, start);
    expect_after_failed(0x00A1, start, 0x6B8D, -2, start);
    expect_after_failed(0x00A1, start, 0x6B8E, -4, hex("04 00 01 00 11 00 00 80"));
    EXPECT_EQ(board.fpga.words[0x6B8D], 0x80000001U);
    EXPECT_EQ(record_before_close(0x00A1, start), hex("04 00 01 00 11 00 00 80"));
}

TEST_F(PortEntryTest, EveryPortHasItsBit)
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

TEST_F(PortEntryTest, OnlyTheValueOneSetsABit)
{
    for_every_word([&](uint16_t value) {
        board.fpga.words[0x6B8D] = 0x00FF00FF;
        ASSERT_EQ(run(0x00A1, le16(7) + le16(value) + le32(0)), 0);
        ASSERT_EQ(board.fpga.words[0x6B8D], value == 1 ? 0x00FF00FFU : 0x00FF007FU);
    });
}

TEST_F(PortEntryTest, NoOtherPortHasABit)
{
    for (const uint32_t port : {0U, 30U, 31U, 32U, 33U, 255U, 256U, 257U, 0x8001U, 0xFFFFU}) {
        expect_refused_record(0x00A1, le16(port) + le16(1) + le32(0x44332211));
    }
    for_every_word([&](uint16_t port) {
        ASSERT_EQ(run(0x00A1, le16(port) + le16(1) + le32(0)), port >= 1 && port <= 29 ? 0 : -5);
    });
}

// Status bits -------------------------------------------------------------------------------

TEST_F(PortEntryTest, BitNumberZeroReportsTheWholeStatusWord)
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

TEST_F(PortEntryTest, EveryOtherStatusBitIsReportedAlone)
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

TEST_F(PortEntryTest, BitNumbersBeyondTheWordReportZero)
{
    board.fpga.words[0x6B3D] = 0xFFFFFFFF;
    for (const uint32_t bit :
         {32U, 33U, 63U, 64U, 255U, 256U, 257U, 0x10001U, 0x80000000U, 0x80000001U, 0xFFFFFFFFU}) {
        prove_record(0x00A2, le32(bit) + le32(0x44332211),
                     {opens_to_read(), map_read(0x6B3D), closes()}, le32(bit) + le32(0));
    }
}

// The status word ---------------------------------------------------------------------------

TEST_F(PortEntryTest, TheStatusWordIsWrittenFromACopy)
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

TEST_F(PortEntryTest, TheOwnChannelWordIsFilledInTheCallersRecord)
{
    board.fpga.words[0x6B29] = 0x1207;
    board.fpga.words[0x6B51] = 0xF345;
    const Bytes start = hex("07 12 5A A5");
    prove_record(0x00A7, start, own_course(hex("5A A5")), hex("07 12 45 F3"));
    EXPECT_EQ(record_before_close(0x00A7, start), start); // after the identifier
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

TEST_F(PortEntryTest, AnotherUnitsChannelWordIsTwelveBits)
{
    board.fpga.words[0x6B29] = 0x1207;
    board.fpga.unit_words[{0x1208, 1}] = {0xF345, 0xFFFF};
    board.fpga.unit_words[{0x1208, 0}] = {0x0111, 0x0222};
    const Bytes start = hex("08 12 5A A5");
    prove_record(0x00A7, start, other_course(0x1208), hex("08 12 45 03"));
    expect_kept_unopened(0x00A7, start);
    expect_after_failed(0x00A7, start, 0x6B3E, -2, start);
}

TEST_F(PortEntryTest, EveryOwnChannelWordIsReportedWhole)
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

TEST_F(PortEntryTest, EveryIdentifierButTheOwnIsAnotherUnits)
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

// An identifier that cannot be read counts as 0.
TEST_F(PortEntryTest, AnUnreadOwnIdentifierIsZero)
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

TEST_F(PortEntryTest, TheChannelWordKeepsItsTopFourBits)
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

TEST_F(PortEntryTest, EveryChannelWordAndValueAreJoined)
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
TEST_F(PortEntryTest, PositiveResultOfTheDriverIsSuccess)
{
    for (const uint32_t request : {0x6B29U, 0x6B3DU, 0x6B3EU, 0x6B51U, 0x6B52U, 0x6B60U, 0x6B61U,
                                   0x6B62U, 0x6B63U, 0x6B83U, 0x6B84U, 0x6B8DU, 0x6B8EU}) {
        board.fpga.results[request] = 3;
    }
    for (const DeviceCommandCode command :
         {0x0064, 0x0065, 0x009E, 0x009F, 0x00A6, 0x00A0, 0x00A1, 0x00A2, 0x00A3, 0x00A7, 0x00A8}) {
        EXPECT_EQ(run(command, entry_of(1, 0, 0, 0)), 0);
    }
    board.fpga.words[0x6B29] = 1; // read in spite of the result 3: the own identifier
    board.fpga.words[0x6B51] = 0xF345;
    EXPECT_EQ(run(0x00A7, le16(1) + le16(0)), 0);
    expect_record(le16(1) + le16(0xF345));
}

} // namespace
