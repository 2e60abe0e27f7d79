// Port entries.
#include "device/command_test.h"

namespace
{

class PortEntries : public CommandTest
{
};

Bytes entry_of(uint32_t port, uint32_t flag, uint32_t index, uint32_t value)
{
    return le16(port) + le16(flag) + le16(index) + le16(value);
}

const Bytes kEntry = hex("03 00 01 00 05 00 5A A5");

TEST_F(PortEntries, ReadsAnEntry)
{
    board.fpga.port_entries[29] = 0x89AB;
    prove_record(RD_PORT_ENTRY, kEntry,
                 {opens_to_read(), record_read(0x6B60, hex("1D 00 01 00 00 00 00 00")), closes()},
                 hex("03 00 01 00 05 00 AB 89"));
    expect_kept(RD_PORT_ENTRY, kEntry);
}

TEST_F(PortEntries, WritesAnEntry)
{
    for (const auto& [command, request] :
         {std::pair{WR_PORT_ENTRY, 0x6B61U}, {WR_PORT_ENTRY_RANGED, 0x6B63U}}) {
        board.fpga.port_entries.clear();
        prove_record(
            command, kEntry,
            {opens_to_write(), record_write(request, hex("1D 00 01 00 5A A5 00 00")), closes()},
            kEntry);
        EXPECT_EQ(board.fpga.port_entries, (std::map<uint16_t, uint16_t>{{29, 0xA55A}}));
    }
}

struct Address {
    uint32_t port;
    uint32_t index;
    uint32_t address;
};

constexpr Address kAddresses[] = {{0, 0, 0},
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
                                  {0xFFFF, 0xFFFF, 0xFFF7}};

struct Flag {
    uint32_t callers;
    uint32_t sent;
};

constexpr Flag kEntryFlags[] = {{0, 0},     {1, 1},     {2, 0},     {255, 0},
                                {0x100, 0}, {0x101, 0}, {0xFFFF, 0}};

TEST_F(PortEntries, AnAddressIsTheIndexPlusEightForEachPort)
{
    for (const Address& row : kAddresses) {
        for (const Flag& flag : kEntryFlags) {
            const Bytes entry = entry_of(row.port, flag.callers, row.index, 0xC3D4);
            const Bytes address = le16(row.address) + le16(flag.sent);
            const Bytes written = address + le16(0xC3D4) + le16(0);
            expect_course(RD_PORT_ENTRY, put(entry),
                          {opens_to_read(), record_read(0x6B60, address + zeros(4)), closes()});
            expect_course(WR_PORT_ENTRY, put(entry),
                          {opens_to_write(), record_write(0x6B61, written), closes()});
            if (row.port >= 1 && row.port <= 29) {
                expect_course(WR_PORT_ENTRY_RANGED, put(entry),
                              {opens_to_write(), record_write(0x6B63, written), closes()});
            }
        }
    }
}

TEST_F(PortEntries, EveryValueIsReadBack)
{
    for_every_word([&](uint16_t value) {
        const uint32_t port = 1 + value % 29U;
        const Bytes entry = entry_of(port, 1, value % 8U, value);
        ASSERT_EQ(run(value % 2U == 0 ? WR_PORT_ENTRY : WR_PORT_ENTRY_RANGED, entry), 0);
        ASSERT_EQ(record_after(RD_PORT_ENTRY, entry_of(port, 1, value % 8U, ~value & 0xFFFFU)),
                  entry);
    });
}

// The failure of a read, although nothing is read, and after the device was opened: retried.
TEST_F(PortEntries, APortOutsideTheRangeFailsWithTheDeviceOpen)
{
    const Course once = {opens_to_write(), closes(), {"usleep 1", kIgnored}};
    for (const uint32_t port : {0U, 30U, 31U, 255U, 257U, 0x8001U, 0xFFFFU}) {
        const Bytes entry = entry_of(port, 1, 5, 6);
        expect_calls(WR_PORT_ENTRY_RANGED, entry, once + once, entry, -2);
        board.fpga_present = false;
        expect_run(WR_PORT_ENTRY_RANGED, entry, -1, entry);
        board.fpga_present = true;
    }
}

TEST_F(PortEntries, TheRangeIsOneToTwentyNine)
{
    for_every_word([&](uint16_t port) {
        board.fpga.port_entries.clear();
        const bool good = port >= 1 && port <= 29;
        ASSERT_EQ(run(WR_PORT_ENTRY_RANGED, entry_of(port, 0, 0, 6)), good ? 0 : -2);
        ASSERT_EQ(board.fpga.port_entries.size(), good ? 1U : 0U);
        // The other write has no range.
        ASSERT_EQ(run(WR_PORT_ENTRY, entry_of(port, 0, 0, 6)), 0);
    });
}

} // namespace
