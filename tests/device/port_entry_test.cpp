// Indexed words and port entries.
#include "device/record_fixture.h"

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

// A driver that answers with a positive number has not failed.
TEST_F(PortEntryTest, PositiveResultOfTheDriverIsSuccess)
{
    for (const uint32_t request : {0x6B60U, 0x6B61U, 0x6B63U, 0x6B83U, 0x6B84U}) {
        board.fpga.results[request] = 3;
    }
    for (const DeviceCommandCode command : {0x0064U, 0x0065U, 0x009EU, 0x009FU, 0x00A6U}) {
        EXPECT_EQ(run(command, entry_of(1, 0, 0, 0)), 0);
    }
}

} // namespace
