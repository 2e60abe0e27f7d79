// Bit 6 of device word 03, as the LED commands set it.
#include "device/commands/device_word.h"

#include "device/command_facts.h"
#include "device/device_test.h"

namespace
{

using DeviceWord03 = DeviceTest;

TEST_F(DeviceWord03, ReadsAndWritesTheWordOnOneDescriptor)
{
    board.fpga.words[0x6B03] = 0x1234;
    for (const auto& [flag, sent] : {std::pair{1, 0x1274U}, {0, 0x1234U}}) {
        board.restart();
        EXPECT_EQ(deviceWord03_setBit6(flag), 0);
        EXPECT_EQ(board.calls, calls_of({opens_to_write(), word_read(0x6B03),
                                         value_write(0x6B04, sent), closes()}));
    }
}

TEST_F(DeviceWord03, ReportsEachFailureAndClosesTheDevice)
{
    failure_sweep(
        board, [this] { board.fpga.words[0x6B03] = 0x0F00; },
        [] { return deviceWord03_setBit6(1); },
        [this](size_t call, const std::string&, int32_t result) {
            const int32_t results[] = {-1, -2, -4, 0};
            const size_t calls[] = {1, 3, 4, 4};
            ASSERT_LT(call, 4U);
            EXPECT_EQ(result, results[call]);
            EXPECT_EQ(board.calls.size(), calls[call]);
            EXPECT_EQ(board.fpga.words[0x6B03], call == 3 ? 0x0F40U : 0x0F00U);
        });
}

TEST_F(DeviceWord03, ChangesBit6AloneInEveryWord)
{
    for_every_word([this](uint16_t word) {
        for (const int32_t flag : {0, 1, 2, 255, -1, 257}) {
            board.fpga.words[0x6B03] = word;
            EXPECT_EQ(deviceWord03_setBit6(flag), 0);
            EXPECT_EQ(board.fpga.words[0x6B03], flag == 1 ? word | 0x0040U : word & 0xFFBFU)
                << flag << " into " << hex_number(word);
        }
    });
}

} // namespace
