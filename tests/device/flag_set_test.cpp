// Flag sets of the switch ports.
#include "device/command_test.h"

namespace
{

constexpr uint8_t kSets[] = {1, 2, 4};

class FlagSets : public CommandTest
{
  protected:
    // What the driver holds of a set: the set's number, seven flags.
    void set_put(uint8_t set, const Bytes& flags)
    {
        board.fpga.switch_ports[set] = byte(set) + flags;
    }

    [[nodiscard]] Bytes set_get(uint8_t set) { return board.fpga.switch_ports[set].substr(1); }
};

TEST_F(FlagSets, FlagsAreReportedAsZeroOrOne)
{
    for (const uint8_t set : kSets) {
        set_put(set, hex("00 01 02 FF 01 80 01"));
        const Bytes start = byte(set) + hex("C3 11 12 13 14 15 16 17");
        prove_record(RD_FLAG_SET, start,
                     {opens_to_write(), record_read(0x6B72, byte(set) + zeros(7)), closes()},
                     byte(set) + hex("C3 00 01 00 00 01 00 01"));
        expect_kept(RD_FLAG_SET, start);
    }
}

TEST_F(FlagSets, OnlyAFlagOfOneIsReportedSet)
{
    for (size_t flag = 0; flag < 7; ++flag) {
        for (unsigned value = 0; value <= 255; ++value) {
            Bytes held = hex("01 01 01 01 01 01 01");
            held[flag] = static_cast<char>(value);
            set_put(2, held);
            held[flag] = value == 1 ? 1 : 0;
            expect_run(RD_FLAG_SET, hex("02 00 55 55 55 55 55 55 55"), 0, hex("02 00") + held);
        }
    }
}

TEST_F(FlagSets, NoOtherSetIsKnown)
{
    for (unsigned set = 0; set <= 255; ++set) {
        if (set != 1 && set != 2 && set != 4) {
            for (const DeviceCommandCode command : {RD_FLAG_SET, WR_FLAG_SET}) {
                expect_refused(command, byte(set) + hex("00 11 12 13 14 15 16 17"));
            }
        }
    }
}

TEST_F(FlagSets, SelectedFlagsAreWrittenAndOthersKeptAsRead)
{
    for (const uint8_t set : kSets) {
        device_put = [&] { set_put(set, hex("21 22 23 24 25 26 27")); };
        const Bytes start = byte(set) + hex("55 01 01 02 01 FF 01 00");
        prove_record(WR_FLAG_SET, start,
                     {opens_to_write(), record_read(0x6B72, byte(set) + zeros(7)),
                      record_write(0x6B73, byte(set) + hex("01 22 00 24 00 26 00")), closes()},
                     start);
        EXPECT_EQ(set_get(set), hex("01 22 00 24 00 26 00"));
    }
}

TEST_F(FlagSets, EveryMaskSelectsItsFlags)
{
    board.recording = false;
    for (unsigned mask = 0; mask <= 255; ++mask) {
        for (const unsigned flag : {0U, 1U, 2U, 255U}) {
            for (size_t odd = 0; odd < 7; ++odd) { // the flag at which another value stands
                Bytes flags(7, static_cast<char>(flag));
                flags[odd] = flag == 1 ? 0 : 1;
                const Bytes held = hex("31 01 00 34 01 00 37");
                Bytes expected = held;
                for (size_t n = 0; n < 7; ++n) {
                    if (mask == 0 || (mask >> n) % 2 == 1) {
                        expected[n] = flags[n] == 1 ? 1 : 0;
                    }
                }
                set_put(4, held);
                const Bytes record = hex("04") + byte(mask) + flags;
                ASSERT_EQ(record_after(WR_FLAG_SET, record), record);
                ASSERT_EQ(board.fpga.switch_ports[4], hex("04") + expected)
                    << "mask " << hex_number(mask) << " flag " << flag << " odd " << odd;
            }
        }
    }
}

TEST_F(FlagSets, OnlyAFlagOfOneIsWrittenSet)
{
    for (size_t flag = 0; flag < 7; ++flag) {
        for (unsigned value = 0; value <= 255; ++value) {
            Bytes flags = hex("01 01 01 01 01 01 01");
            flags[flag] = static_cast<char>(value);
            set_put(1, hex("00 00 00 00 00 00 00"));
            EXPECT_EQ(run(WR_FLAG_SET, hex("01 00") + flags), 0);
            flags[flag] = value == 1 ? 1 : 0;
            EXPECT_EQ(set_get(1), flags);
            expect_run(RD_FLAG_SET, hex("01 00 55 55 55 55 55 55 55"), 0, hex("01 00") + flags);
        }
    }
}

} // namespace
