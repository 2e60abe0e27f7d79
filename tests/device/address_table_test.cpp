// The indexed address tables.
#include "device/command_test.h"
#include "device/record_bytes.h"

namespace
{

// The driver's record of entry 0x1D as it is held, and as it is asked for.
const Bytes kHeld = hex("1D 00 00 00 00 00 00 00 01 00 00 00 "
                        "0A 0B 0C 0D 21 22 23 24 25 26 31 00");
const Bytes kAsked = le32(0x1D) + zeros(20);

// The caller's entry 0x1D in either table, with its valid mask.
Bytes entry(uint32_t valid, uint32_t table)
{
    return hex("1D") + byte(valid) + hex("C0 C1 C2 C3 D0 D1 D2 D3 D4 D5 E0") + byte(table);
}

// What a write with each choice of parts sends: bit 0 the address, bit 1 the long one, bit 2 the
// attribute.
const Bytes kSent[] = {
    hex("1D 00 00 00 00 00 00 00 01 00 00 00 0A 0B 0C 0D 21 22 23 24 25 26 31 00"),
    hex("1D 00 00 00 00 00 00 00 01 00 00 00 C0 C1 C2 C3 21 22 23 24 25 26 31 00"),
    hex("1D 00 00 00 00 00 00 00 01 00 00 00 0A 0B 0C 0D D0 D1 D2 D3 D4 D5 31 00"),
    hex("1D 00 00 00 00 00 00 00 01 00 00 00 C0 C1 C2 C3 D0 D1 D2 D3 D4 D5 31 00"),
    hex("1D 00 00 00 00 00 00 00 01 00 00 00 0A 0B 0C 0D 21 22 23 24 25 26 E0 00"),
    hex("1D 00 00 00 00 00 00 00 01 00 00 00 C0 C1 C2 C3 21 22 23 24 25 26 E0 00"),
    hex("1D 00 00 00 00 00 00 00 01 00 00 00 0A 0B 0C 0D D0 D1 D2 D3 D4 D5 E0 00"),
    hex("1D 00 00 00 00 00 00 00 01 00 00 00 C0 C1 C2 C3 D0 D1 D2 D3 D4 D5 E0 00"),
};

const Course kReads{opens_to_read(), record_read(0x6B85, kAsked), closes()};
const Course kDeletes{opens_to_write(), record_write(0x6B86, kAsked), closes()};

Course writes(uint32_t valid)
{
    return {opens_to_write(), record_read(0x6B85, kAsked),
            record_write(0x6B86, kSent[valid == 0 ? 7 : valid % 8]), closes()};
}

class AddressTable : public CommandTest
{
  protected:
    AddressTable()
    {
        device_put = [this] { board.fpga.address_table = {{0x1D, held_}}; };
    }

    Bytes& entry_held() { return board.fpga.address_table[0x1D]; }
    Bytes held_ = kHeld; // before each run
};

TEST_F(AddressTable, AReportGivesAddressesAndAttribute)
{
    for (const uint32_t table : {0U, 1U, 2U, 255U}) {
        for (const uint32_t valid : {0U, 1U, 0x5AU, 0xFFU}) { // no matter
            prove_record(RD_ADDR_TABLE_ENTRY, entry(valid, table), kReads,
                         hex("1D") + byte(valid) + hex("0A 0B 0C 0D 21 22 23 24 25 26 31") +
                             byte(table));
        }
    }
    expect_kept(RD_ADDR_TABLE_ENTRY, entry(0, 0));
}

TEST_F(AddressTable, AReportOfAnEmptyEntryGivesZeros)
{
    device_put = [this] { board.fpga.address_table.clear(); };
    expect_run(RD_ADDR_TABLE_ENTRY, entry(3, 1), 0, hex("1D 03") + zeros(11) + hex("01"));
}

TEST_F(AddressTable, AWriteReplacesTheSelectedPartsOfTheEntry)
{
    for (uint32_t valid = 0; valid <= 0xFF; ++valid) {
        SCOPED_TRACE(hex_number(valid));
        const Bytes record = entry(valid, valid % 3);
        prove_record(WR_ADDR_TABLE_ENTRY, record, writes(valid), record);
        EXPECT_EQ(entry_held(), kSent[valid == 0 ? 7 : valid % 8]);
    }
}

// Also where nothing is selected, and whatever the entry held.
TEST_F(AddressTable, AWriteMarksTheEntryAsValid)
{
    for (const uint32_t held : {0U, 2U, 0xFFFFFFFFU}) {
        bytes_put(held_, 8, le32(held));
        for (const uint32_t valid : {0U, 1U, 2U, 4U, 8U, 0x80U}) {
            EXPECT_EQ(run(WR_ADDR_TABLE_ENTRY, entry(valid, 0)), 0);
            EXPECT_EQ(entry_held().substr(8, 4), le32(1));
        }
    }
}

TEST_F(AddressTable, AFailedWriteLeavesTheEntry)
{
    for (const uint32_t failing : {0x6B85U, 0x6B86U}) {
        board.fpga.results = {{failing, -1}};
        expect_run(WR_ADDR_TABLE_ENTRY, entry(0, 0), failing == 0x6B85 ? -2 : -4, entry(0, 0));
        EXPECT_EQ(entry_held(), kHeld);
    }
    expect_run(WR_ADDR_TABLE_DELETE, entry(0, 0), -4, entry(0, 0));
    EXPECT_EQ(entry_held(), kHeld);
}

TEST_F(AddressTable, ADeleteSendsTheIndexAlone)
{
    for (const uint32_t table : {0U, 1U, 255U}) {
        for (const uint32_t valid : {0U, 1U, 0xFFU}) { // no matter
            prove_record(WR_ADDR_TABLE_DELETE, entry(valid, table), kDeletes, entry(valid, table));
            EXPECT_EQ(entry_held(), kAsked);
        }
    }
    held_ = kAsked;
    expect_run(RD_ADDR_TABLE_ENTRY, entry(0, 0), 0, hex("1D") + zeros(13));
}

TEST_F(AddressTable, TheIndexIsBoundedByItsTable)
{
    device_put = nullptr;
    for (const uint32_t table : {0U, 1U, 2U, 127U, 128U, 254U, 255U}) {
        const uint32_t last = table == 0 ? 127 : 29;
        for (uint32_t index = 0; index <= 0xFF; ++index) {
            SCOPED_TRACE("index " + hex_number(index) + ", table " + hex_number(table));
            for (const DeviceCommandCode command :
                 {RD_ADDR_TABLE_ENTRY, WR_ADDR_TABLE_ENTRY, WR_ADDR_TABLE_DELETE}) {
                const Bytes before = byte(index) + zeros(12) + byte(table);
                if (index > last) {
                    expect_refused(command, before);
                    continue;
                }
                board.fpga.address_table = {{index, le32(index) + kHeld.substr(4)}};
                EXPECT_EQ(run(command, before), 0);
                const Bytes& held = board.fpga.address_table[index];
                EXPECT_EQ(held.substr(0, 4), le32(index));
                EXPECT_EQ(board.fpga.address_table.size(), 1U);
                if (command == RD_ADDR_TABLE_ENTRY) {
                    EXPECT_EQ(record().substr(2, 11), kHeld.substr(12, 11));
                    EXPECT_EQ(held.substr(4), kHeld.substr(4));
                } else {
                    const uint32_t updated = command == WR_ADDR_TABLE_ENTRY ? 1 : 0;
                    EXPECT_EQ(held.substr(4), le32(0) + le32(updated) + zeros(12));
                }
            }
        }
    }
}

// What the driver holds beside the parts goes back as it came.
TEST_F(AddressTable, AnUpdateSendsWhatTheDriverAnswered)
{
    held_ = hex("1D 00 00 00 91 92 93 94 00 00 00 00 0A 0B 0C 0D 21 22 23 24 25 26 31 95");
    EXPECT_EQ(run(WR_ADDR_TABLE_ENTRY, entry(1, 0)), 0);
    EXPECT_EQ(entry_held(),
              hex("1D 00 00 00 91 92 93 94 01 00 00 00 C0 C1 C2 C3 21 22 23 24 25 26 31 95"));
}

// The entries of both tables are the same to the driver.
TEST_F(AddressTable, WhatWasWrittenIsReported)
{
    Draws draw;
    Bytes held = kHeld;
    device_put = nullptr;
    entry_held() = held;
    for (uint32_t round = 0; round < share_of(20000); ++round) {
        const Bytes written = draw.bytes(11);
        const uint32_t valid = draw() % 256;
        const uint32_t selected = valid == 0 ? 7 : valid % 8;
        ASSERT_EQ(run(WR_ADDR_TABLE_ENTRY, hex("1D") + byte(valid) + written + byte(draw())), 0);
        if (selected % 2 != 0) {
            bytes_put(held, 12, written.substr(0, 4));
        }
        if (selected / 2 % 2 != 0) {
            bytes_put(held, 16, written.substr(4, 6));
        }
        if (selected / 4 != 0) {
            bytes_put(held, 22, written.substr(10));
        }
        ASSERT_EQ(entry_held(), held);
        const Bytes asked = hex("1D") + draw.bytes(13);
        ASSERT_EQ(record_after(RD_ADDR_TABLE_ENTRY, asked),
                  asked.substr(0, 2) + held.substr(12, 11) + asked.substr(13));
        board.restart();
    }
}

} // namespace
