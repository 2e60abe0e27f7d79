// The address entries of peers and of the appliance itself.
#include "device/command_test.h"

namespace
{

constexpr uint32_t kOwn = 7;
constexpr uint32_t kPeer = 12;
constexpr uint32_t kOutside[] = {0, 31, 32, 0x0000010C, 0x0001000C, 0x8000000C, 0xFFFFFFFF};

const Bytes kValue = hex("0A 00 00 01");
const Bytes kNumber = le32(0x0A000001);
const Bytes kSet = hex("0A 00 00 01 C0 A8 12 34 80 7F FE 01 11 22 33 44");
const Bytes kNumbers = le32(0x0A000001) + le32(0xC0A81234) + le32(0x807FFE01) + le32(0x11223344);

// What the parts of a caller's record hold before a report, all different from each other.
const Bytes kUnused16 = hex("E0 E1 E2 E3 E4 E5 E6 E7 E8 E9 EA EB EC ED EE EF");
const Bytes kUnused4 = hex("D0 D1 D2 D3");
const Bytes kUnusedGap = hex("D4 D5 D6 D7");
const Bytes kOldValue = hex("51 52 53 54");
const Bytes kOldSet = hex("51 52 53 54 55 56 57 58 59 5A 5B 5C 5D 5E 5F 60");
const Bytes kOldNumber = hex("71 72 73 74");
const Bytes kOldNumbers = hex("71 72 73 74 75 76 77 78 79 7A 7B 7C 7D 7E 7F 80");

Bytes entry_of(uint32_t own, uint32_t id, const Bytes& bytes, const Bytes& number = kOldNumber)
{
    return le32(own) + le32(id) + bytes + kUnused16 + number;
}

Bytes set_of(uint32_t own, uint32_t id, const Bytes& bytes, const Bytes& numbers = kOldNumbers)
{
    return le32(own) + le32(id) + kUnused4 + bytes + kUnusedGap + numbers;
}

Bytes reversed_fours(Bytes bytes)
{
    for (size_t i = 0; i < bytes.size(); i += 4) {
        std::swap(bytes[i], bytes[i + 3]);
        std::swap(bytes[i + 1], bytes[i + 2]);
    }
    return bytes;
}

class AddressEntryTest : public CommandTest
{
  protected:
    // A command that returns 0 and makes no call at all.
    void expect_nothing_done(DeviceCommandCode command, const Bytes& start)
    {
        expect_course(command, put(start), {});
        EXPECT_EQ(record(), start);
    }
};

TEST_F(AddressEntryTest, ReportsAreOneRequest)
{
    board.fpga.own_address = kValue;
    board.fpga.addresses[kPeer] = kNumber;
    board.fpga.own_address_set = kSet;
    board.fpga.address_sets[kPeer] = kNumbers;
    // A set's own numbers are in the opposite byte order.
    const Bytes own_numbers =
        le32(0x0100000A) + le32(0x3412A8C0) + le32(0x01FE7F80) + le32(0x44332211);
    const struct {
        DeviceCommandCode command;
        Bytes before;
        Step request;
        Bytes after;
    } rows[] = {
        {RD_ADDR_ENTRY, entry_of(kOwn, kPeer, kOldValue),
         record_read(0x6B39, le32(kPeer) + zeros(32)), entry_of(kOwn, kPeer, kValue, kNumber)},
        {RD_ADDR_ENTRY, entry_of(kOwn, kOwn, kOldValue), record_read(0x6B23, kOldValue),
         entry_of(kOwn, kOwn, kValue, kNumber)},
        {RD_ADDR_SET, set_of(kOwn, kPeer, kOldSet), record_read(0x6B5E, le32(kPeer) + zeros(32)),
         set_of(kOwn, kPeer, kSet, kNumbers)},
        {RD_ADDR_SET, set_of(kOwn, kOwn, kOldSet), record_read(0x6B5C, kOldSet),
         set_of(kOwn, kOwn, kSet, own_numbers)},
    };
    for (const auto& [command, before, request, after] : rows) {
        SCOPED_TRACE(request.call);
        prove_record(command, before, {opens_to_read(), request, closes()}, after);
        expect_kept(command, before);
    }
}

TEST_F(AddressEntryTest, SettersAreOneRequest)
{
    const Bytes entry = entry_of(kOwn, kPeer, kValue);
    const Bytes own_entry = entry_of(kOwn, kOwn, kValue);
    const Bytes set = set_of(kOwn, kPeer, kSet);
    const Bytes own_set = set_of(kOwn, kOwn, kSet);
    const struct {
        DeviceCommandCode command;
        Bytes before;
        Step request;
    } rows[] = {
        {WR_ADDR_ENTRY, entry,
         record_write(0x6B3A, le32(kPeer) + le32(1) + le32(0x0A000001) + zeros(24))},
        {WR_ADDR_ENTRY, own_entry, record_write(0x6B24, hex("0A 00 00 01"))},
        {WR_ADDR_ENTRY_VALUE, entry,
         record_write(0x6B3A, le32(kPeer) + le32(0) + hex("0A 00 00 01") + zeros(24))},
        {WR_ADDR_SET, set,
         record_write(0x6B5F, le32(kPeer) + le32(1) + zeros(4) + kNumbers + zeros(8))},
        {WR_ADDR_SET, own_set, record_write(0x6B5D, kSet)},
        {WR_ADDR_SET_VALUE, set,
         record_write(0x6B5F, le32(kPeer) + le32(0) + zeros(4) + kSet + zeros(8))},
    };
    for (const auto& [command, before, request] : rows) {
        prove_record(command, before, {opens_to_write(), request, closes()}, before);
    }
}

TEST_F(AddressEntryTest, RefusesIdentifiersOutsideTheRangeEvenIfOwn)
{
    for (const uint32_t id : kOutside) {
        for (const uint32_t own : {kOwn, id}) {
            for (const DeviceCommandCode command : {RD_ADDR_ENTRY, WR_ADDR_ENTRY}) {
                expect_refused(command, entry_of(own, id, kOldValue));
            }
            for (const DeviceCommandCode command : {RD_ADDR_SET, WR_ADDR_SET}) {
                expect_refused(command, set_of(own, id, kOldSet));
            }
        }
    }
}

TEST_F(AddressEntryTest, RawWritersDoNothingForIdentifiersOutsideTheRange)
{
    for (const uint32_t id : kOutside) {
        for (const uint32_t own : {kOwn, id}) {
            expect_nothing_done(WR_ADDR_ENTRY_VALUE, entry_of(own, id, kValue));
            expect_nothing_done(WR_ADDR_SET_VALUE, set_of(own, id, kSet));
        }
    }
}

TEST_F(AddressEntryTest, RawWritersDoNothingForTheOwnIdentifier)
{
    for (uint32_t id = 1; id <= 30; ++id) {
        expect_nothing_done(WR_ADDR_ENTRY_VALUE, entry_of(id, id, kValue));
        expect_nothing_done(WR_ADDR_SET_VALUE, set_of(id, id, kSet));
    }
}

// Each identifier of 1..30, beside an own identifier that is it or another, even one that no peer
// can have.
TEST_F(AddressEntryTest, AsksForEachIdentifierOfTheRange)
{
    for (uint32_t id = 1; id <= 30; ++id) {
        board.fpga.addresses.clear();
        board.fpga.addresses[id] = le32(0x01020304U * id);
        board.fpga.own_address = le32(0x11111111U * (id & 0xFU));
        board.fpga.address_sets.clear();
        board.fpga.address_sets[id] = kSet;
        board.fpga.own_address_set = kOldNumbers;
        for (const uint32_t own : {id, id % 30 + 1, 0U, 31U, 0x80000000U + id, id + 0x10000U}) {
            SCOPED_TRACE(std::to_string(id) + " own " + std::to_string(own));
            const bool is_own = own == id;
            const Bytes address =
                is_own ? board.fpga.own_address : reversed_fours(board.fpga.addresses[id]);
            expect_run(RD_ADDR_ENTRY, entry_of(own, id, kOldValue), 0,
                       entry_of(own, id, address, reversed_fours(address)));
            expect_run(RD_ADDR_SET, set_of(own, id, kOldSet), 0,
                       set_of(own, id, is_own ? kOldNumbers : reversed_fours(kSet),
                              is_own ? kOldNumbers : kSet));

            FpgaModel before = board.fpga;
            EXPECT_EQ(run(WR_ADDR_ENTRY, entry_of(own, id, kValue)), 0);
            EXPECT_EQ(run(WR_ADDR_SET, set_of(own, id, kOldSet)), 0);
            if (is_own) {
                EXPECT_EQ(board.fpga.own_address, kValue);
                EXPECT_EQ(board.fpga.own_address_set, kOldSet);
                EXPECT_EQ(board.fpga.addresses, before.addresses);
                EXPECT_EQ(board.fpga.address_sets, before.address_sets);
            } else {
                EXPECT_EQ(board.fpga.own_address, before.own_address);
                EXPECT_EQ(board.fpga.own_address_set, before.own_address_set);
                EXPECT_EQ(board.fpga.addresses[id], reversed_fours(kValue));
                EXPECT_EQ(board.fpga.address_sets[id], reversed_fours(kOldSet));
                EXPECT_EQ(run(WR_ADDR_ENTRY_VALUE, entry_of(own, id, kOldValue)), 0);
                EXPECT_EQ(run(WR_ADDR_SET_VALUE, set_of(own, id, kOldNumbers)), 0);
                EXPECT_EQ(board.fpga.addresses[id], kOldValue);
                EXPECT_EQ(board.fpga.address_sets[id], kOldNumbers);
                EXPECT_EQ(board.fpga.addresses.size(), 1U);
                EXPECT_EQ(board.fpga.address_sets.size(), 1U);
            }
            board.fpga = before;
        }
    }
}

// One bit at a time through all of a set, and through a single value.
TEST_F(AddressEntryTest, EachBitHasItsPlace)
{
    for (size_t bit = 0; bit < 128; ++bit) {
        SCOPED_TRACE(bit);
        Bytes bytes = zeros(16);
        bytes[bit / 8] = static_cast<char>(1U << bit % 8);
        const Bytes first = bytes.substr(0, 4);

        EXPECT_EQ(run(WR_ADDR_ENTRY, entry_of(kOwn, kPeer, first)), 0);
        EXPECT_EQ(board.fpga.addresses[kPeer], reversed_fours(first));
        EXPECT_EQ(run(WR_ADDR_SET, set_of(kOwn, kPeer, bytes)), 0);
        EXPECT_EQ(board.fpga.address_sets[kPeer], reversed_fours(bytes));

        expect_run(RD_ADDR_ENTRY, entry_of(kOwn, kPeer, kOldValue), 0,
                   entry_of(kOwn, kPeer, first, reversed_fours(first)));
        expect_run(RD_ADDR_SET, set_of(kOwn, kPeer, kOldSet), 0,
                   set_of(kOwn, kPeer, bytes, reversed_fours(bytes)));

        EXPECT_EQ(run(WR_ADDR_ENTRY, entry_of(kOwn, kOwn, first)), 0);
        expect_run(RD_ADDR_ENTRY, entry_of(kOwn, kOwn, kOldValue), 0,
                   entry_of(kOwn, kOwn, first, reversed_fours(first)));
        EXPECT_EQ(run(WR_ADDR_SET, set_of(kOwn, kOwn, bytes)), 0);
        expect_run(RD_ADDR_SET, set_of(kOwn, kOwn, kOldSet), 0, set_of(kOwn, kOwn, bytes, bytes));
    }
}

} // namespace
