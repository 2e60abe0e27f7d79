// Flags in device words.
#include "device/command_test.h"

namespace
{

class DeviceWordFlag : public CommandTest
{
  protected:
    uint32_t& word(uint32_t request) { return board.fpga.words[request]; }
};

// A flag as the caller has it.
Bytes flag_of(size_t size, uint32_t value)
{
    return le16(value).substr(0, size);
}

// Flags that are read, and changed, in a word of other bits. -------------------------------------

struct Flag {
    DeviceCommandCode reader;
    DeviceCommandCode writer;
    size_t size;
    uint32_t read; // the requests
    uint32_t write;
    uint32_t bits; // any of them is the flag; it is written to all
    bool set_by_one_only;
};

constexpr Flag kFlags[] = {
    {RD_GROUP_FLAG, WR_GROUP_FLAG, 1, 0x6B2D, 0x6B2E, 0x01C4, true},
    {RD_DEVICE_WORD_35, WR_DEVICE_WORD_36, 2, 0x6B35, 0x6B36, 0x00C0, false},
    {RD_VLANT_MAP_ENABLE, WR_VLANT_MAP_ENABLE, 2, 0x6B03, 0x6B04, 0x1000, true},
};

TEST_F(DeviceWordFlag, IsReadFromAClearedWord)
{
    for (const Flag& flag : kFlags) {
        word(flag.read) = flag.bits;
        const Bytes before = untouched(flag.size);
        prove_record(flag.reader, before, {opens_to_read(), word_read(flag.read), closes()},
                     flag_of(flag.size, 1));
        expect_kept(flag.reader, before);
    }
}

TEST_F(DeviceWordFlag, IsWrittenByReadingItsWordFirst)
{
    for (const Flag& flag : kFlags) {
        for (const auto& [value, held, sent] :
             {std::tuple{1U, 0x8001U, 0x8001U | flag.bits}, {0U, 0xFFFFU, 0xFFFFU & ~flag.bits}}) {
            device_put = [this, &flag, held = held] { word(flag.read) = held; };
            const Bytes record = flag_of(flag.size, value);
            prove_record(
                flag.writer, record,
                {opens_to_write(), word_read(flag.read), value_write(flag.write, sent), closes()},
                record);
        }
    }
}

TEST_F(DeviceWordFlag, IsAnyOfItsBitsInEveryWordAndChangesThemAlone)
{
    for (const Flag& flag : kFlags) {
        for_every_word([&](uint16_t held) {
            SCOPED_TRACE("word " + hex_number(held));
            word(flag.read) = held;
            expect_run(flag.reader, untouched(flag.size), 0,
                       flag_of(flag.size, (held & flag.bits) != 0 ? 1 : 0));
            for (const uint32_t value : {0U, 1U, 2U, 0x81U, 255U}) {
                word(flag.read) = held;
                const Bytes record = flag_of(flag.size, value);
                expect_run(flag.writer, record, 0, record);
                const bool set = flag.set_by_one_only ? value == 1 : value != 0;
                EXPECT_EQ(word(flag.read), set ? held | flag.bits : held & ~flag.bits) << value;
                if (value <= 1) {
                    expect_run(flag.reader, untouched(flag.size), 0, record);
                }
            }
        });
    }
}

TEST_F(DeviceWordFlag, IsSetByEveryValueThatCountsAsSet)
{
    for (const Flag& flag : kFlags) {
        for_every_word([&](uint16_t value) {
            word(flag.read) = 0x1244;
            const Bytes record = flag_of(flag.size, value);
            expect_run(flag.writer, record, 0, record);
            const uint32_t given = flag.size == 1 ? value & 0xFFU : value;
            const bool set = flag.set_by_one_only ? given == 1 : given != 0;
            EXPECT_EQ(word(flag.read), set ? 0x1244 | flag.bits : 0x1244 & ~flag.bits)
                << hex_number(given);
        });
    }
}

// The enable flag, whose word is written without a read ------------------------------------------

TEST_F(DeviceWordFlag, TheEnableFlagIsOneRequest)
{
    prove_record(RD_ENABLE_FLAG, untouched(1), {opens_to_read(), word_read(0x6B0B), closes()},
                 byte(0));
    expect_kept(RD_ENABLE_FLAG, untouched(1));
    word(0x6B0B) = 0xFFFE;
    prove_record(WR_ENABLE_FLAG, byte(1), {opens_to_write(), value_write(0x6B0C, 1), closes()},
                 byte(1));
}

TEST_F(DeviceWordFlag, TheEnableFlagIsBit0OfEveryWord)
{
    for_every_word([this](uint16_t held) {
        word(0x6B0B) = held;
        expect_run(RD_ENABLE_FLAG, untouched(1), 0, byte(held & 1U));
    });
}

TEST_F(DeviceWordFlag, TheEnableWordIsOneOrZeroForEveryByte)
{
    for (unsigned flag = 0; flag < 256; ++flag) {
        word(0x6B0B) = 0xFFFF;
        expect_run(WR_ENABLE_FLAG, byte(flag), 0, byte(flag));
        EXPECT_EQ(word(0x6B0B), flag == 1 ? 1U : 0U) << flag;
    }
}

// The control bits, likewise ----------------------------------------------------------------------

TEST_F(DeviceWordFlag, TheControlBitsAreOneRequest)
{
    word(0x6B07) = 0xFFFD;
    prove_record(RD_CONTROL_BITS, untouched(3), {opens_to_read(), word_read(0x6B07), closes()},
                 hex("00 01") + untouched(1));
    expect_kept(RD_CONTROL_BITS, untouched(3));
    prove_record(WR_CONTROL_BITS, hex("01 00 01"),
                 {opens_to_write(), value_write(0x6B08, 0x0006), closes()}, hex("01 00 01"));
}

TEST_F(DeviceWordFlag, TheControlBitsReportTwoBitsOfEveryWord)
{
    for_every_word([this](uint16_t held) {
        word(0x6B07) = held;
        expect_run(RD_CONTROL_BITS, untouched(3), 0,
                   byte((held >> 1) & 1U) + byte(held & 1U) + untouched(1));
    });
}

TEST_F(DeviceWordFlag, TheControlWordIsMadeOfExactlyOnes)
{
    constexpr unsigned kValues[] = {0, 1, 2, 255};
    for (const unsigned first : kValues) {
        for (const unsigned second : kValues) {
            for (const unsigned third : kValues) {
                word(0x6B07) = 0xFFFF;
                const Bytes bits = byte(first) + byte(second) + byte(third);
                expect_run(WR_CONTROL_BITS, bits, 0, bits);
                EXPECT_EQ(word(0x6B07), (first == 1 ? 2U : 0U) | (second == 1 ? 1U : 0U) |
                                            (third == 1 ? 4U : 0U));
            }
        }
    }
}

} // namespace
