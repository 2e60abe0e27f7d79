// The flags that go with the MTU.
#include "device/device_test.h"

namespace
{

constexpr uint32_t kWord35 = 0x6B35;
constexpr uint32_t kWord36 = 0x6B36;
constexpr uint32_t kWord03 = 0x6B03;
constexpr uint32_t kWord04 = 0x6B04;

class MtuFlags : public DeviceTest
{
  protected:
    // A flag between guards.
    struct Guarded {
        uint16_t before = 0xAAAA;
        uint16_t flag = 0x5555;
        uint16_t after = 0xBBBB;
    } argument;

    void set(uint32_t word, uint32_t value) { board.fpga.words[word] = value; }

    void* report_of(uint32_t word, uint32_t value)
    {
        set(word, value);
        argument.flag = 0x5555;
        return &argument.flag;
    }

    void* setting(uint32_t word, uint32_t value, uint16_t flag)
    {
        set(word, value);
        argument.flag = flag;
        return &argument.flag;
    }

    // The word after a command with this flag.
    uint32_t word_after(DeviceCommandCode command, uint32_t word, uint32_t value, uint16_t flag)
    {
        void* record = setting(word, value, flag);
        EXPECT_EQ(Fpga_Register_Set(command, record), 0);
        EXPECT_EQ(argument.flag, flag);
        return board.fpga.words[word];
    }

    uint16_t report(DeviceCommandCode command, uint32_t word, uint32_t value)
    {
        EXPECT_EQ(Fpga_Register_Set(command, report_of(word, value)), 0);
        return argument.flag;
    }

    void TearDown() override
    {
        EXPECT_EQ(argument.before, 0xAAAA);
        EXPECT_EQ(argument.after, 0xBBBB);
        DeviceTest::TearDown();
    }
};

TEST_F(MtuFlags, ReadWord35)
{
    prove(RD_DEVICE_WORD_35, [this] { return report_of(kWord35, 0x0040); },
          {opens_to_read(), word_read(kWord35), closes()});
    EXPECT_EQ(argument.flag, 1);
}

TEST_F(MtuFlags, WriteWord36)
{
    prove(WR_DEVICE_WORD_36, [this] { return setting(kWord35, 0x8001, 1); },
          {opens_to_write(), word_read(kWord35), value_write(kWord36, 0x80C1), closes()});
    prove(WR_DEVICE_WORD_36, [this] { return setting(kWord35, 0xFFFF, 0); },
          {opens_to_write(), word_read(kWord35), value_write(kWord36, 0xFF3F), closes()});
}

TEST_F(MtuFlags, ReadVlantMapEnable)
{
    prove(RD_VLANT_MAP_ENABLE, [this] { return report_of(kWord03, 0x1000); },
          {opens_to_read(), word_read(kWord03), closes()});
    EXPECT_EQ(argument.flag, 1);
}

TEST_F(MtuFlags, WriteVlantMapEnable)
{
    prove(WR_VLANT_MAP_ENABLE, [this] { return setting(kWord03, 0x8140, 1); },
          {opens_to_write(), word_read(kWord03), value_write(kWord04, 0x9140), closes()});
    prove(WR_VLANT_MAP_ENABLE, [this] { return setting(kWord03, 0xFFFF, 0); },
          {opens_to_write(), word_read(kWord03), value_write(kWord04, 0xEFFF), closes()});
}

TEST_F(MtuFlags, AFailedReportStoresNothing)
{
    for (const auto& [command, word] :
         {std::pair{RD_DEVICE_WORD_35, kWord35}, std::pair{RD_VLANT_MAP_ENABLE, kWord03}}) {
        for (const size_t call : {1U, 2U}) {
            board.restart();
            void* record = report_of(word, 0xFFFF);
            board.fail_from(call);
            EXPECT_LT(Fpga_Register_Set(command, record), 0);
            EXPECT_EQ(argument.flag, 0x5555);
        }
    }
    board.restart();
}

TEST_F(MtuFlags, Word35IsReportedSetByEitherBitForEveryWord)
{
    for_every_word([this](uint16_t word) {
        const bool bit6 = (word >> 6) % 2 == 1;
        const bool bit7 = (word >> 7) % 2 == 1;
        EXPECT_EQ(report(RD_DEVICE_WORD_35, kWord35, word), bit6 || bit7 ? 1 : 0) << word;
    });
}

TEST_F(MtuFlags, Word36ChangesItsTwoBitsOfEveryWord)
{
    for_every_word([this](uint16_t word) {
        ASSERT_EQ(word_after(WR_DEVICE_WORD_36, kWord35, word, 1), word | 0x00C0U);
        ASSERT_EQ(report(RD_DEVICE_WORD_35, kWord35, board.fpga.words[kWord35]), 1);
        ASSERT_EQ(word_after(WR_DEVICE_WORD_36, kWord35, word, 0), word & 0xFF3FU);
        ASSERT_EQ(report(RD_DEVICE_WORD_35, kWord35, board.fpga.words[kWord35]), 0);
    });
}

TEST_F(MtuFlags, Word36IsSetByEveryFlagButZero)
{
    for_every_word([this](uint16_t flag) {
        EXPECT_EQ(word_after(WR_DEVICE_WORD_36, kWord35, 0x1240, flag),
                  flag == 0 ? 0x1200U : 0x12C0U)
            << flag;
    });
}

TEST_F(MtuFlags, VlantMapEnableIsBit12OfEveryWord)
{
    for_every_word([this](uint16_t word) {
        ASSERT_EQ(report(RD_VLANT_MAP_ENABLE, kWord03, word), word / 4096 % 2);
        ASSERT_EQ(word_after(WR_VLANT_MAP_ENABLE, kWord03, word, 1), word | 0x1000U);
        ASSERT_EQ(report(RD_VLANT_MAP_ENABLE, kWord03, board.fpga.words[kWord03]), 1);
        ASSERT_EQ(word_after(WR_VLANT_MAP_ENABLE, kWord03, word, 0), word & 0xEFFFU);
        ASSERT_EQ(report(RD_VLANT_MAP_ENABLE, kWord03, board.fpga.words[kWord03]), 0);
    });
}

TEST_F(MtuFlags, VlantMapEnableIsSetByTheFlag1Alone)
{
    for_every_word([this](uint16_t flag) {
        EXPECT_EQ(word_after(WR_VLANT_MAP_ENABLE, kWord03, 0x1234, flag),
                  flag == 1 ? 0x1234U : 0x0234U)
            << flag;
    });
}

} // namespace
