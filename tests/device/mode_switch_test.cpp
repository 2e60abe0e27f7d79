// Sequences over several registers: the latched register and the mode switch.
#include "device/caller_record.h"
#include "device/device_test.h"

namespace
{

constexpr uint32_t kWord = 0x6B2D;

class LatchedRegisterTest : public DeviceTest
{
  protected:
    void* cleared()
    {
        record = CallerRecord();
        return record.pointer();
    }

    int32_t run() { return Fpga_Register_Set(RD_REG_DA_LATCHED, cleared()); }

    void expect_value(uint32_t value) const
    {
        EXPECT_EQ(record.bytes(), untouched_after(le32(value)));
    }

    CallerRecord record;
};

TEST_F(LatchedRegisterTest, ReadsWhileTheBitIsClearAndThenSetsIt)
{
    board.fpga.register_high = 0xCAFE;
    prove(RD_REG_DA_LATCHED,
          [this] {
              board.fpga.registers[0xD8] = 0xFFFF;
              board.fpga.registers[0xDA] = 0xBEEF;
              return cleared();
          },
          {opens_to_write(), register_read(0xD8), register_write(0xD8, 0xCAFEFFDF),
           register_read(0xDA), register_write(0xD8, 0xCAFEFFFF), register_read(0xDA), closes()});
    EXPECT_EQ(run(), 0);
    expect_value(0xEF);
}

TEST_F(LatchedRegisterTest, ReportsTheFirstOfTheTwoValues)
{
    board.fpga.registers[0xDA] = 0x1234;
    size_t reads = 0;
    board.before_call = [&](const std::string& call) {
        if (call.rfind("ioctl 6B42 DA", 0) == 0) {
            board.fpga.registers[0xDA] = reads++ == 0 ? 0x5678 : 0x9ABC;
        }
    };
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(reads, 2U);
    expect_value(0x78);
    board.before_call = nullptr;
}

TEST_F(LatchedRegisterTest, EveryValueOfBothRegisters)
{
    uint16_t while_read = 0;
    board.before_call = [&](const std::string&) {
        if (board.call_count() == 3) { // after the opening, a read and a write
            while_read = board.fpga.registers[0xD8];
        }
    };
    for_every_word([&](uint16_t value) {
        board.restart();
        board.fpga.registers[0xD8] = value;
        board.fpga.registers[0xDA] = value;
        EXPECT_EQ(run(), 0);
        EXPECT_EQ(while_read, value & 0xFFDF);
        EXPECT_EQ(board.fpga.registers[0xD8], value | 0x0020);
        EXPECT_EQ(board.fpga.registers[0xDA], value);
        expect_value(value & 0xFF);
    });
    board.before_call = nullptr;
}

TEST_F(LatchedRegisterTest, FailureStoresNothingAndLeavesTheBitAsItIs)
{
    // The call that fails in both runs (open 1, the requests 2..6), the result, and the register
    // afterwards. A failed run ends with a close, if it was opened, and a sleep.
    const struct {
        size_t call;
        int32_t result;
        uint16_t control;
    } cases[] = {{1, -1, 0x8020}, {2, -2, 0x8020}, {3, -4, 0x8020},
                 {4, -2, 0x8000}, {5, -4, 0x8000}, {6, -2, 0x8020}};
    for (const auto& [call, result, control] : cases) {
        SCOPED_TRACE(call);
        board.fpga.registers[0xD8] = 0x8020;
        board.fpga.registers[0xDA] = 0xBEEF;
        const size_t first_run = call == 1 ? 2 : call + 2;
        board.restart();
        board.fail_calls({call, first_run + call});
        EXPECT_EQ(run(), result);
        EXPECT_EQ(board.fpga.registers[0xD8], control);
        expect_value(0xA5A5A5A5);
    }
}

class ModeSwitchTest : public DeviceTest
{
  protected:
    struct Places {
        uint16_t word;
        uint16_t reg114;
        uint16_t reg158;
        bool operator==(const Places& other) const = default;
    };

    void put(Places places)
    {
        board.fpga.words[kWord] = places.word;
        board.fpga.registers[0x114] = places.reg114;
        board.fpga.registers[0x158] = places.reg158;
    }

    Places places()
    {
        return {static_cast<uint16_t>(board.fpga.words[kWord]), board.fpga.registers[0x114],
                board.fpga.registers[0x158]};
    }

    // The mode as the device reports it, into a record of which nothing else may change.
    uint32_t mode_read()
    {
        record = CallerRecord();
        EXPECT_EQ(Fpga_Register_Set(RD_MODE_SWITCH, record.pointer()), 0);
        const Bytes bytes = record.bytes();
        uint16_t mode;
        memcpy(&mode, bytes.data(), sizeof mode);
        EXPECT_EQ(bytes, untouched_after(le16(mode)));
        return mode;
    }

    int32_t mode_write(uint32_t mode)
    {
        record = CallerRecord(le16(mode));
        const int32_t result = Fpga_Register_Set(WR_MODE_SWITCH, record.pointer());
        EXPECT_EQ(record.bytes(), untouched_after(le16(mode)));
        return result;
    }

    CallerRecord record;
};

// The mode's bits in their three places, all others clear.
struct Bits {
    uint16_t word;
    uint16_t reg114;
    uint16_t reg158;
};
constexpr Bits kOn{0x0000, 0x0007, 0x0005};
constexpr Bits kOff{0x0003, 0x0000, 0x0000};

TEST_F(ModeSwitchTest, ReadsWordAndRegistersInOrder)
{
    board.fpga.register_high = 0xCAFE;
    put({0x0000, 0x0007, 0x0005});
    prove(
        RD_MODE_SWITCH,
        [this] {
            record = CallerRecord();
            return record.pointer();
        },
        {opens_to_read(), word_read(0x6B2D), register_read(0x114), register_read(0x158), closes()});
    EXPECT_EQ(mode_read(), 1U);
}

TEST_F(ModeSwitchTest, OneOnlyWhenAllSevenBitsAgree)
{
    for (const uint16_t high : {uint16_t{0}, uint16_t{0xFFFF}}) {
        board.fpga.register_high = high;
        for (const bool others : {false, true}) {
            for (unsigned bits = 0; bits < 128; ++bits) {
                // Bits 0, 1 of the word, 0, 1, 2 of register 0x114, 0 and 2 of register 0x158.
                const unsigned word = bits & 3U;
                const unsigned reg114 = bits >> 2 & 7U;
                const unsigned reg158 = (bits >> 5 & 1U) | (bits >> 6 & 1U) << 2;
                put({static_cast<uint16_t>((others ? 0xFFFCU : 0) | word),
                     static_cast<uint16_t>((others ? 0xFFF8U : 0) | reg114),
                     static_cast<uint16_t>((others ? 0xFFFAU : 0) | reg158)});
                EXPECT_EQ(mode_read(), bits == 0b1111100 ? 1U : 0U) << bits;
            }
        }
    }
}

TEST_F(ModeSwitchTest, ReportsEveryValueOfTheWordAndOfEachRegister)
{
    for_every_word([this](uint16_t value) {
        put({value, kOn.reg114, kOn.reg158});
        EXPECT_EQ(mode_read(), (value & 0x0003) == 0 ? 1U : 0U) << value;
        put({kOn.word, value, kOn.reg158});
        EXPECT_EQ(mode_read(), (value & 0x0007) == 0x0007 ? 1U : 0U) << value;
        put({kOn.word, kOn.reg114, value});
        EXPECT_EQ(mode_read(), (value & 0x0005) == 0x0005 ? 1U : 0U) << value;
    });
}

TEST_F(ModeSwitchTest, FailedReportStoresNothing)
{
    put({0x0000, 0x0007, 0x0005});
    for (const size_t call : {1U, 2U, 3U, 4U}) { // open and three reads, in both runs
        record = CallerRecord();
        const size_t first_run = call == 1 ? 2 : call + 2;
        board.restart();
        board.fail_calls({call, first_run + call});
        EXPECT_EQ(Fpga_Register_Set(RD_MODE_SWITCH, record.pointer()), call == 1 ? -1 : -2);
        EXPECT_EQ(record.bytes(), untouched_after(""));
    }
}

TEST_F(ModeSwitchTest, WritesWordAndRegistersInOrder)
{
    board.fpga.register_high = 0xCAFE;
    const struct {
        uint32_t mode;
        Places before;
        Places after;
    } cases[] = {{1, {0xFFFF, 0x1230, 0x5678}, {0xFFFC, 0x1237, 0x567D}},
                 {0, {0x4500, 0xFFFF, 0xFFFF}, {0x4503, 0xFFF8, 0xFFFA}}};
    for (const auto& [mode, before, after] : cases) {
        prove(WR_MODE_SWITCH,
              [this, mode = mode, before = before] {
                  put(before);
                  record = CallerRecord(le16(mode));
                  return record.pointer();
              },
              {opens_to_write(), word_read(0x6B2D), register_read(0x114), register_read(0x158),
               value_write(0x6B2E, after.word), register_write(0x114, 0xCAFE0000U | after.reg114),
               register_write(0x158, 0xCAFE0000U | after.reg158), closes()});
    }
}

TEST_F(ModeSwitchTest, WritesItsBitsAloneForEveryValueOfTheWordAndOfEachRegister)
{
    for_every_word([this](uint16_t value) {
        const auto other = static_cast<uint16_t>(value * 40503U); // another in each place
        const auto third = static_cast<uint16_t>(~value);
        put({value, other, third});
        EXPECT_EQ(mode_write(1), 0);
        EXPECT_EQ(places(), (Places{static_cast<uint16_t>(value & 0xFFFC),
                                    static_cast<uint16_t>(other | 0x0007),
                                    static_cast<uint16_t>(third | 0x0005)}))
            << value;
        put({value, other, third});
        EXPECT_EQ(mode_write(0), 0);
        EXPECT_EQ(places(), (Places{static_cast<uint16_t>(value | 0x0003),
                                    static_cast<uint16_t>(other & 0xFFF8),
                                    static_cast<uint16_t>(third & 0xFFFA)}))
            << value;
    });
}

TEST_F(ModeSwitchTest, OneAloneSwitchesOnAndIsReadBack)
{
    for_every_word([this](uint16_t mode) {
        put({kOff.word, kOff.reg114, kOff.reg158});
        EXPECT_EQ(mode_write(mode), 0);
        EXPECT_EQ(mode_read(), mode == 1 ? 1U : 0U) << mode;
        put({kOn.word, kOn.reg114, kOn.reg158});
        EXPECT_EQ(mode_write(mode), 0);
        EXPECT_EQ(mode_read(), mode == 1 ? 1U : 0U) << mode;
    });
}

TEST_F(ModeSwitchTest, FailedWriteKeepsTheEarlierOnes)
{
    const Places before{0x0003, 0x0000, 0x0000};
    const struct {
        size_t call; // open 1, reads 2..4, writes 5..7
        int32_t result;
        Places after;
    } cases[] = {{1, -1, {0x0003, 0x0000, 0x0000}}, {2, -2, {0x0003, 0x0000, 0x0000}},
                 {3, -2, {0x0003, 0x0000, 0x0000}}, {4, -2, {0x0003, 0x0000, 0x0000}},
                 {5, -4, {0x0003, 0x0000, 0x0000}}, {6, -4, {0x0000, 0x0000, 0x0000}},
                 {7, -4, {0x0000, 0x0007, 0x0000}}};
    for (const auto& [call, result, after] : cases) {
        SCOPED_TRACE(call);
        put(before);
        const size_t first_run = call == 1 ? 2 : call + 2;
        board.restart();
        board.fail_calls({call, first_run + call});
        EXPECT_EQ(mode_write(1), result);
        EXPECT_EQ(places(), after);
    }
}

} // namespace
