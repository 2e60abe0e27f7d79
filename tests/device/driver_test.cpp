// Flag sets, address pairs and driver control.
#include "device/record_fixture.h"

namespace
{

class DriverRecordTest : public RecordTest
{
  protected:
    // What the driver holds of a set: the set's number, seven flags.
    void set_put(uint8_t set, const Bytes& flags)
    {
        board.fpga.switch_ports[set] = Bytes(1, static_cast<char>(set)) + flags;
    }

    [[nodiscard]] Bytes set_get(uint8_t set) { return board.fpga.switch_ports[set].substr(1); }
};

Bytes byte_of(unsigned value)
{
    return Bytes(1, static_cast<char>(static_cast<uint8_t>(value)));
}

// Flag sets ---------------------------------------------------------------------------------

constexpr uint8_t kSets[] = {1, 2, 4};

TEST_F(DriverRecordTest, FlagsAreReportedAsZeroOrOne)
{
    for (const uint8_t set : kSets) {
        set_put(set, hex("00 01 02 FF 01 80 01"));
        const Bytes start = byte_of(set) + hex("C3 11 12 13 14 15 16 17");
        prove_record(0x0104, start,
                     {opens_to_write(), record_read(0x6B72, byte_of(set) + zeros(7)), closes()},
                     byte_of(set) + hex("C3 00 01 00 00 01 00 01"));
        expect_kept_unopened(0x0104, start);
        expect_after_failed(0x0104, start, 0x6B72, -2, start);
    }
}

TEST_F(DriverRecordTest, OnlyAFlagOfOneIsReportedSet)
{
    for (size_t flag = 0; flag < 7; ++flag) {
        for (unsigned value = 0; value <= 255; ++value) {
            Bytes held = hex("01 01 01 01 01 01 01");
            held[flag] = static_cast<char>(value);
            set_put(2, held);
            EXPECT_EQ(run(0x0104, hex("02 00 55 55 55 55 55 55 55")), 0);
            held[flag] = value == 1 ? 1 : 0;
            expect_record(hex("02 00") + held);
        }
    }
}

TEST_F(DriverRecordTest, NoOtherSetIsKnown)
{
    for (unsigned set = 0; set <= 255; ++set) {
        if (set != 1 && set != 2 && set != 4) {
            expect_refused_record(0x0104, byte_of(set) + hex("00 11 12 13 14 15 16 17"));
            expect_refused_record(0x0105, byte_of(set) + hex("00 11 12 13 14 15 16 17"));
        }
    }
}

TEST_F(DriverRecordTest, SelectedFlagsAreWrittenAndOthersKeptAsRead)
{
    for (const uint8_t set : kSets) {
        device_put = [&] { set_put(set, hex("21 22 23 24 25 26 27")); };
        const Bytes start = byte_of(set) + hex("55 01 01 02 01 FF 01 00");
        prove_record(0x0105, start,
                     {opens_to_write(), record_read(0x6B72, byte_of(set) + zeros(7)),
                      record_write(0x6B73, byte_of(set) + hex("01 22 00 24 00 26 00")), closes()},
                     start);
        EXPECT_EQ(set_get(set), hex("01 22 00 24 00 26 00"));
    }
}

TEST_F(DriverRecordTest, EveryMaskSelectsItsFlags)
{
    board.recording = false;
    for (unsigned mask = 0; mask <= 255; ++mask) {
        for (const uint8_t flag : kFlags) {
            for (size_t odd = 0; odd < 7; ++odd) { // the flag at which another value stands
                const uint8_t other = flag == 1 ? 0 : 1;
                Bytes flags(7, static_cast<char>(flag));
                flags[odd] = static_cast<char>(other);
                const Bytes held = hex("31 01 00 34 01 00 37");
                Bytes expected = held;
                for (size_t n = 0; n < 7; ++n) {
                    if (mask == 0 || (mask >> n) % 2 == 1) {
                        expected[n] = flags[n] == 1 ? 1 : 0;
                    }
                }
                set_put(4, held);
                ASSERT_EQ(run(0x0105, hex("04") + byte_of(mask) + flags), 0);
                ASSERT_EQ(board.fpga.switch_ports[4], hex("04") + expected)
                    << "mask " << mask << " flag " << unsigned{flag} << " odd " << odd;
                ASSERT_EQ(record_bytes(), hex("04") + byte_of(mask) + flags);
            }
        }
    }
}

TEST_F(DriverRecordTest, OnlyAFlagOfOneIsWrittenSet)
{
    for (size_t flag = 0; flag < 7; ++flag) {
        for (unsigned value = 0; value <= 255; ++value) {
            Bytes flags = hex("01 01 01 01 01 01 01");
            flags[flag] = static_cast<char>(value);
            set_put(1, hex("00 00 00 00 00 00 00"));
            EXPECT_EQ(run(0x0105, hex("01 00") + flags), 0);
            flags[flag] = value == 1 ? 1 : 0;
            EXPECT_EQ(set_get(1), flags);
            EXPECT_EQ(run(0x0104, hex("01 00 55 55 55 55 55 55 55")), 0);
            expect_record(hex("01 00") + flags);
        }
    }
}

// Address pairs -----------------------------------------------------------------------------

const Bytes kAddress = hex("C0 A8 01 FE");
const Bytes kAddress6 = hex("00 80 BD F0 12 34");
const Bytes kOld = hex("51 52 53 54 55 56 57 58 59 5A");

TEST_F(DriverRecordTest, TheAddressesOfEveryPairAreReported)
{
    for (uint32_t index = 0; index <= 63; ++index) {
        board.fpga.address_pairs[index] =
            le32(index) + zeros(4) + kAddress + kAddress6 + hex("E1 E2");
        const Bytes start = le32(index) + kOld + hex("D1 D2");
        prove_record(0x0106, start,
                     {opens_to_read(), record_read(0x6B67, le32(index) + zeros(16)), closes()},
                     le32(index) + kAddress + kAddress6 + hex("D1 D2"));
    }
    const Bytes start = le32(63) + kOld + hex("D1 D2");
    expect_kept_unopened(0x0106, start);
    expect_after_failed(0x0106, start, 0x6B67, -2, start);
}

TEST_F(DriverRecordTest, BothWritesOfAPairAreTheSame)
{
    for (const DeviceCommandCode command : {0x0107U, 0x0108U}) {
        for (uint32_t index = 0; index <= 63; ++index) {
            const Bytes record = le32(index) + kAddress + kAddress6 + hex("D1 D2");
            const Bytes sent = le32(index) + zeros(4) + kAddress + kAddress6 + zeros(2);
            board.fpga.address_pairs.clear();
            prove_record(command, record, {opens_to_write(), record_write(0x6B68, sent), closes()},
                         record);
            EXPECT_EQ(board.fpga.address_pairs, (std::map<uint32_t, Bytes>{{index, sent}}));
            EXPECT_EQ(run(0x0106, le32(index) + kOld + hex("D1 D2")), 0);
            expect_record(record);
        }
    }
}

TEST_F(DriverRecordTest, ThereAreSixtyFourPairs)
{
    for (const uint32_t index :
         {64U, 65U, 127U, 128U, 255U, 256U, 0x10000U, 0x80000000U, 0xFFFFFFFFU}) {
        for (const DeviceCommandCode command : {0x0106U, 0x0107U, 0x0108U}) {
            expect_refused_record(command, le32(index) + kOld + hex("D1 D2"));
        }
    }
}

TEST_F(DriverRecordTest, AnyFlagButZeroEnablesThePair)
{
    for (unsigned flag = 0; flag <= 255; ++flag) {
        const Bytes sent = hex(flag == 0 ? "00 00 00 00 01 00 00 00" : "01 01 00 00 01 00 00 00");
        prove_record(0x010B, byte_of(flag),
                     {opens_to_write(), record_write(0x6B69, sent), closes()}, byte_of(flag));
        EXPECT_EQ(board.fpga.written[0x6B69], sent);
    }
}

// Driver control ----------------------------------------------------------------------------

TEST_F(DriverRecordTest, TheControlWordIsFilledInTheCallersMemory)
{
    board.fpga.words[0x6B6E] = 0x89AB;
    prove_record(0x010C, hex("C3 A5"),
                 {opens_to_read(), record_read(0x6B6E, hex("C3 A5")), closes()}, hex("AB 89"));
    EXPECT_EQ(record_before_close(0x010C, hex("C3 A5")), hex("AB 89"));
    expect_kept_unopened(0x010C, hex("C3 A5"));
    expect_after_failed(0x010C, hex("C3 A5"), 0x6B6E, -2, hex("C3 A5"));
}

TEST_F(DriverRecordTest, TheControlBlockIsReadFromTheCallersMemory)
{
    const Bytes block = hex("00 11 22 33 44 55 66 77 88 99 AA BB CC DD EE FF");
    prove_record(0x010F, block, {opens_to_write(), record_write(0x6B70, block), closes()}, block);
    EXPECT_EQ(board.fpga.written[0x6B70], block);
    const Bytes other = hex("F0 E0 D0 C0 B0 A0 90 80 70 60 50 40 30 20 10 00");
    EXPECT_EQ(run_changing(0x010F, block, 0x6B70, other), 0);
    EXPECT_EQ(board.fpga.written[0x6B70], other);
}

TEST_F(DriverRecordTest, KeyBytesFollowTheirNumber)
{
    const Bytes key = hex("81 92 A3 B4 C5");
    const Bytes sent = hex("81 92 A3 B4 C5 00 00 00 00 00 00 00");
    prove_record(0x0111, key, {opens_to_write(), record_write(0x6B71, sent), closes()}, key);
    EXPECT_EQ(board.fpga.written[0x6B71], sent);
}

TEST_F(DriverRecordTest, BitSevenOfTheControlWordIsClearedInTheCallersWord)
{
    device_put = [&] { board.fpga.words[0x6B6E] = 0x81FF; };
    prove_record(0x0114, hex("C3 A5"),
                 {opens_to_write(), record_read(0x6B6E, hex("C3 A5")),
                  record_write(0x6B6F, hex("7F 81"), kElsewhere), closes()},
                 hex("7F 81"));
    EXPECT_EQ(board.fpga.words[0x6B6E], 0x817FU);
    expect_kept_unopened(0x0114, hex("C3 A5"));
    expect_after_failed(0x0114, hex("C3 A5"), 0x6B6E, -2, hex("C3 A5"));
    expect_after_failed(0x0114, hex("C3 A5"), 0x6B6F, -4, hex("7F 81"));
    // The driver reads the caller's own word.
    EXPECT_EQ(run_changing(0x0114, hex("C3 A5"), 0x6B6F, hex("34 12")), 0);
    EXPECT_EQ(board.fpga.words[0x6B6E], 0x1234U);
}

TEST_F(DriverRecordTest, AControlWordThatCannotBeWrittenIsReadOnceMore)
{
    device_put = [&] { board.fpga.words[0x6B6E] = 0x81FF; };
    const std::string opens = "open /dev/fpga O_RDWR|O_NONBLOCK";
    prove_write_failure(0x0114, hex("C3 A5"), hex("7F 81"),
                        {opens, "ioctl 6B6E C3 A5", "ioctl 6B6F 7F 81", "close /dev/fpga"},
                        {opens, "ioctl 6B6E 7F 81", "ioctl 6B6F 7F 81", "close /dev/fpga"});
}

TEST_F(DriverRecordTest, NoOtherBitOfTheControlWordChanges)
{
    for_every_word([&](uint16_t word) {
        board.fpga.words[0x6B6E] = word;
        const uint32_t expected = word % 256U >= 128 ? word - 128U : word;
        ASSERT_EQ(run(0x0114, hex("C3 A5")), 0);
        ASSERT_EQ(board.fpga.words[0x6B6E], expected);
        ASSERT_EQ(record_bytes(), le16(expected));
        ASSERT_EQ(run(0x010C, hex("C3 A5")), 0);
        ASSERT_EQ(record_bytes(), le16(expected));
    });
}

TEST_F(DriverRecordTest, TheByteActionIsTheCallersByte)
{
    for (unsigned value = 0; value <= 255; ++value) {
        // Of the bytes at the caller's pointer, the first.
        prove_record(0x0117, byte_of(value) + hex("C3 A5 5A"),
                     {opens_to_write(), value_write(0x6B74, value), closes()},
                     byte_of(value) + hex("C3 A5 5A"));
    }
}

TEST_F(DriverRecordTest, TheWordActionIsTheCallersWord)
{
    for (const uint32_t value : {0x0000U, 0x0001U, 0x7FFFU, 0x8000U, 0xA5C3U, 0xFFFFU}) {
        prove_record(0x011B, le16(value) + hex("5A 96"),
                     {opens_to_write(), value_write(0x6B7A, value), closes()},
                     le16(value) + hex("5A 96"));
    }
    for_every_word([&](uint16_t word) {
        ASSERT_EQ(run(0x011B, le16(word) + hex("5A 96")), 0);
        ASSERT_EQ(board.fpga.words[0x6B7A], word);
    });
}

TEST_F(DriverRecordTest, PairWordsGoToTheDriverAsACopy)
{
    const Bytes words = hex("81 92 A3 B4 C5 D6 E7 F8");
    prove_record(0x0119, words, {opens_to_write(), record_write(0x6B77, words), closes()}, words);
    EXPECT_EQ(board.fpga.written[0x6B77], words);
    EXPECT_EQ(run_changing(0x0119, words, 0x6B77, Bytes(8, '\xFF')), 0);
    EXPECT_EQ(board.fpga.written[0x6B77], words);
}

// A driver that answers with a positive number has not failed.
TEST_F(DriverRecordTest, PositiveResultOfTheDriverIsSuccess)
{
    for (const uint32_t request : {0x6B67U, 0x6B68U, 0x6B69U, 0x6B6EU, 0x6B6FU, 0x6B70U, 0x6B71U,
                                   0x6B72U, 0x6B73U, 0x6B74U, 0x6B77U, 0x6B7AU}) {
        board.fpga.results[request] = 3;
    }
    for (const DeviceCommandCode command :
         {0x0104U, 0x0105U, 0x0106U, 0x0107U, 0x0108U, 0x010BU, 0x010CU, 0x010FU, 0x0111U, 0x0114U,
          0x0117U, 0x0119U, 0x011BU}) {
        EXPECT_EQ(run(command, hex("01 00 00 00") + zeros(12)), 0);
    }
}

} // namespace
