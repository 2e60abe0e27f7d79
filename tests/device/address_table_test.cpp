// The indexed address tables.
#include "device/register_map_test.h"

namespace
{

// The driver's record of entry 0x1D as it is held, and as it is asked for.
const Bytes kHeld = hex("1D 00 00 00 00 00 00 00 01 00 00 00 "
                        "0A 0B 0C 0D 21 22 23 24 25 26 31 00");
const Bytes kAsked = le32(0x1D) + Bytes(20, '\0');

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

class AddressTable : public RegisterMapTest
{
  protected:
    void SetUp() override { board.fpga.address_table[0x1D] = kHeld; }

    // A fresh entry in the device, and the caller's.
    std::function<void*()> fresh(const Bytes& record)
    {
        return [this, record] {
            board.fpga.address_table = {{0x1D, kHeld}};
            return caller.put(record);
        };
    }
};

TEST_F(AddressTable, AReportGivesAddressesAndAttribute)
{
    for (const uint32_t table : {0U, 1U, 2U, 255U}) {
        for (const uint32_t valid : {0U, 1U, 0x5AU, 0xFFU}) { // no matter
            prove(RD_ADDR_TABLE_ENTRY, fresh(entry(valid, table)), kReads);
            EXPECT_EQ(run(RD_ADDR_TABLE_ENTRY, entry(valid, table)),
                      hex("1D") + byte(valid) + hex("0A 0B 0C 0D 21 22 23 24 25 26 31") +
                          byte(table));
        }
    }
    expect_untouched_on_failure(RD_ADDR_TABLE_ENTRY, entry(0, 0), kReads);
}

TEST_F(AddressTable, AReportOfAnEmptyEntryGivesZeros)
{
    board.fpga.address_table.clear();
    EXPECT_EQ(run(RD_ADDR_TABLE_ENTRY, entry(3, 1)),
              hex("1D 03 00 00 00 00 00 00 00 00 00 00 00 01"));
}

TEST_F(AddressTable, AWriteReplacesTheSelectedPartsOfTheEntry)
{
    for (uint32_t valid = 0; valid <= 0xFF; ++valid) {
        SCOPED_TRACE(valid);
        prove(WR_ADDR_TABLE_ENTRY, fresh(entry(valid, valid % 3)), writes(valid));
        board.fpga.address_table[0x1D] = kHeld;
        expect_sets(WR_ADDR_TABLE_ENTRY, entry(valid, valid % 3), writes(valid));
        EXPECT_EQ(board.fpga.address_table[0x1D], kSent[valid == 0 ? 7 : valid % 8]);
    }
}

// Also where nothing is selected.
TEST_F(AddressTable, AWriteMarksTheEntryAsValid)
{
    for (const uint32_t valid : {0U, 1U, 2U, 4U, 8U, 0x80U}) {
        Bytes deleted = kHeld;
        bytes_put(deleted, 8, le32(0));
        board.fpga.address_table[0x1D] = deleted;
        run(WR_ADDR_TABLE_ENTRY, entry(valid, 0));
        EXPECT_EQ(board.fpga.address_table[0x1D].substr(8, 4), le32(1));
    }
}

TEST_F(AddressTable, AFailedWriteLeavesTheEntry)
{
    for (const uint32_t failing : {0x6B85U, 0x6B86U}) {
        board.fpga.results = {{failing, -1}};
        run(WR_ADDR_TABLE_ENTRY, entry(0, 0), failing == 0x6B85 ? -2 : -4);
        EXPECT_EQ(board.fpga.address_table[0x1D], kHeld);
    }
    run(WR_ADDR_TABLE_DELETE, entry(0, 0), -4);
    EXPECT_EQ(board.fpga.address_table[0x1D], kHeld);
}

TEST_F(AddressTable, ADeleteSendsTheIndexAlone)
{
    for (const uint32_t table : {0U, 1U, 255U}) {
        for (const uint32_t valid : {0U, 1U, 0xFFU}) { // no matter
            prove(WR_ADDR_TABLE_DELETE, fresh(entry(valid, table)), kDeletes);
            expect_sets(WR_ADDR_TABLE_DELETE, entry(valid, table), kDeletes);
            EXPECT_EQ(board.fpga.address_table[0x1D], kAsked);
        }
    }
    EXPECT_EQ(run(RD_ADDR_TABLE_ENTRY, entry(0, 0)),
              hex("1D 00 00 00 00 00 00 00 00 00 00 00 00 00"));
}

TEST_F(AddressTable, TheIndexIsBoundedByItsTable)
{
    for (const uint32_t table : {0U, 1U, 2U, 127U, 128U, 254U, 255U}) {
        const uint32_t last = table == 0 ? 127 : 29;
        for (uint32_t index = 0; index <= 0xFF; ++index) {
            SCOPED_TRACE("index " + std::to_string(index) + ", table " + std::to_string(table));
            for (const DeviceCommandCode command :
                 {RD_ADDR_TABLE_ENTRY, WR_ADDR_TABLE_ENTRY, WR_ADDR_TABLE_DELETE}) {
                const Bytes record = byte(index) + Bytes(12, '\0') + byte(table);
                if (index > last) {
                    expect_refused(command, caller.put(record));
                    EXPECT_EQ(caller.get(), record);
                    continue;
                }
                board.fpga.address_table.clear();
                board.fpga.address_table[index] = le32(index) + kHeld.substr(4);
                run(command, record);
                const Bytes& held = board.fpga.address_table[index];
                EXPECT_EQ(held.substr(0, 4), le32(index));
                EXPECT_EQ(board.fpga.address_table.size(), 1U);
                if (command == RD_ADDR_TABLE_ENTRY) {
                    EXPECT_EQ(caller.get().substr(2, 11), kHeld.substr(12, 11));
                    EXPECT_EQ(held.substr(4), kHeld.substr(4));
                } else {
                    const uint32_t updated = command == WR_ADDR_TABLE_ENTRY ? 1 : 0;
                    EXPECT_EQ(held.substr(4), le32(0) + le32(updated) + Bytes(12, '\0'));
                }
            }
        }
    }
}

// What the driver holds beside the parts goes back as it came.
TEST_F(AddressTable, AnUpdateSendsWhatTheDriverAnswered)
{
    board.fpga.address_table[0x1D] = hex("1D 00 00 00 91 92 93 94 00 00 00 00 "
                                         "0A 0B 0C 0D 21 22 23 24 25 26 31 95");
    run(WR_ADDR_TABLE_ENTRY, entry(1, 0));
    EXPECT_EQ(board.fpga.address_table[0x1D], hex("1D 00 00 00 91 92 93 94 01 00 00 00 "
                                                  "C0 C1 C2 C3 21 22 23 24 25 26 31 95"));
}

// The entries of both tables are the same to the driver.
TEST_F(AddressTable, WhatWasWrittenIsReported)
{
    Bytes held = kHeld;
    for (uint32_t round = 0; round < share_of(20000); ++round) {
        const Bytes written = draw_bytes(11);
        const uint32_t valid = draw_byte();
        const uint32_t selected = valid == 0 ? 7 : valid % 8;
        run(WR_ADDR_TABLE_ENTRY, hex("1D") + byte(valid) + written + byte(draw()));
        if (selected % 2 != 0) {
            bytes_put(held, 12, written.substr(0, 4));
        }
        if (selected / 2 % 2 != 0) {
            bytes_put(held, 16, written.substr(4, 6));
        }
        if (selected / 4 != 0) {
            bytes_put(held, 22, written.substr(10));
        }
        ASSERT_EQ(board.fpga.address_table[0x1D], held);
        const Bytes asked = hex("1D") + draw_bytes(13);
        ASSERT_EQ(run(RD_ADDR_TABLE_ENTRY, asked),
                  asked.substr(0, 2) + held.substr(12, 11) + asked.substr(13));
        board.restart();
    }
}

} // namespace
