// Address pairs.
#include "device/command_test.h"

namespace
{

class AddressPairs : public CommandTest
{
};

const Bytes kAddress = hex("C0 A8 01 FE");
const Bytes kAddress6 = hex("00 80 BD F0 12 34");
const Bytes kOld = hex("51 52 53 54 55 56 57 58 59 5A");

TEST_F(AddressPairs, TheAddressesOfEveryPairAreReported)
{
    for (uint32_t index = 0; index <= 63; ++index) {
        board.fpga.address_pairs[index] =
            le32(index) + zeros(4) + kAddress + kAddress6 + hex("E1 E2");
        const Bytes start = le32(index) + kOld + hex("D1 D2");
        prove_record(RD_ADDR_PAIR, start,
                     {opens_to_read(), record_read(0x6B67, le32(index) + zeros(16)), closes()},
                     le32(index) + kAddress + kAddress6 + hex("D1 D2"));
    }
    const Bytes start = le32(63) + kOld + hex("D1 D2");
    expect_kept(RD_ADDR_PAIR, start);
}

TEST_F(AddressPairs, BothWritesOfAPairAreTheSame)
{
    for (const DeviceCommandCode command : {WR_ADDR_PAIR, WR_ADDR_PAIR_COPY}) {
        for (uint32_t index = 0; index <= 63; ++index) {
            const Bytes record = le32(index) + kAddress + kAddress6 + hex("D1 D2");
            const Bytes sent = le32(index) + zeros(4) + kAddress + kAddress6 + zeros(2);
            board.fpga.address_pairs.clear();
            prove_record(command, record, {opens_to_write(), record_write(0x6B68, sent), closes()},
                         record);
            EXPECT_EQ(board.fpga.address_pairs, (std::map<uint32_t, Bytes>{{index, sent}}));
            expect_run(RD_ADDR_PAIR, le32(index) + kOld + hex("D1 D2"), 0, record);
        }
    }
}

TEST_F(AddressPairs, ThereAreSixtyFourPairs)
{
    for (const uint32_t index :
         {64U, 65U, 127U, 128U, 255U, 256U, 0x10000U, 0x80000000U, 0xFFFFFFFFU}) {
        for (const DeviceCommandCode command : {RD_ADDR_PAIR, WR_ADDR_PAIR, WR_ADDR_PAIR_COPY}) {
            expect_refused(command, le32(index) + kOld + hex("D1 D2"));
        }
    }
}

TEST_F(AddressPairs, AnyFlagButZeroEnablesThePair)
{
    for (unsigned flag = 0; flag <= 255; ++flag) {
        const Bytes sent = hex(flag == 0 ? "00 00 00 00 01 00 00 00" : "01 01 00 00 01 00 00 00");
        prove_record(WR_PAIR_ENABLE, byte(flag),
                     {opens_to_write(), record_write(0x6B69, sent), closes()}, byte(flag));
        EXPECT_EQ(board.fpga.written[0x6B69], sent);
    }
}

} // namespace
