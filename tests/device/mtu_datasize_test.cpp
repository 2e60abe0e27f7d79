// The file of data sizes: /tmp/mtu_datasize.
#include <algorithm>

#include "device/library_calls.h"
#include "maint/commands/mtu.h"

namespace
{

using Messages = std::vector<std::string>;
using Sizes = std::array<uint16_t, 10>;

constexpr const char* kFile = "/tmp/mtu_datasize";
constexpr uint32_t kWord03 = 0x6B03;

constexpr const char* kReadOpenError = "read_mtu_datasize: /tmp/mtu_datasize open error.";
constexpr const char* kReadError = "read_mtu_datasize: /tmp/mtu_datasize read error.";
constexpr const char* kWriteOpenError = "write_mtu_datasize : /tmp/mtu_datasize open error.";
constexpr const char* kWriteError = "write_mtu_datasize : /tmp/mtu_datasize write error.";

const Trace kRetry{"usleep 1"};

Bytes file_of(const Sizes& sizes)
{
    Bytes bytes;
    for (const uint16_t size : sizes) {
        bytes += le16(size);
    }
    return bytes;
}

constexpr Sizes kHeld{1500, 1454, 1400, 1474, 1428, 1374, 1492, 1446, 1392, 0xABCD};
constexpr Sizes kUntouched{0x1111, 0x2222, 0x3333, 0x4444, 0x5555,
                           0x6666, 0x7777, 0x8888, 0x9999, 0xAAAA};

class MtuDatasizeFile : public DeviceTest
{
  protected:
    // The record between guards, as ten numbers.
    struct Guarded {
        uint32_t before = 0xDEADBEEF;
        Sizes sizes = kUntouched;
        uint32_t after = 0xCAFEF00D;
    } argument;

    void SetUp() override { log_clear(board); }

    void TearDown() override
    {
        EXPECT_EQ(argument.before, 0xDEADBEEF);
        EXPECT_EQ(argument.after, 0xCAFEF00D);
        EXPECT_EQ(board.console, "");
        DeviceTest::TearDown();
    }

    int32_t run(DeviceCommandCode command)
    {
        return Fpga_Register_Set(command, argument.sizes.data());
    }

    void* sizes_put(const Sizes& sizes)
    {
        argument.sizes = sizes;
        return argument.sizes.data();
    }
};

// Reading

const Trace kReadCalls{"fopen /tmp/mtu_datasize r", "fread /tmp/mtu_datasize 20",
                       "fclose /tmp/mtu_datasize"};

TEST_F(MtuDatasizeFile, IsReadWithoutTheDevice)
{
    board.file_put(kFile, file_of(kHeld));
    EXPECT_EQ(run(RD_MTU_DATASIZE), 0);
    EXPECT_EQ(board.calls, kReadCalls);
    EXPECT_EQ(argument.sizes, kHeld);
    EXPECT_EQ(log_messages(board), Messages{});
}

TEST_F(MtuDatasizeFile, IsReadAsTheFieldsOfTheRecord)
{
    board.file_put(kFile, file_of({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    MtuDatasize record;
    EXPECT_EQ(Fpga_Register_Set(RD_MTU_DATASIZE, &record), 0);
    EXPECT_EQ(record.size[0], 1);
    EXPECT_EQ(record.size[2], 3);
    EXPECT_EQ(record.data_size[0], 4);
    EXPECT_EQ(record.data_size[2], 6);
    EXPECT_EQ(record.line_size[0], 7);
    EXPECT_EQ(record.line_size[2], 9);
    EXPECT_EQ(record.kept, 10);
}

TEST_F(MtuDatasizeFile, ThatIsMissingIsLoggedAtBothRuns)
{
    EXPECT_EQ(run(RD_MTU_DATASIZE), -1);
    const Trace open{"fopen /tmp/mtu_datasize r"};
    EXPECT_EQ(board.calls, open + append_calls(0) + kRetry + open + append_calls(1) + kRetry);
    EXPECT_EQ(log_messages(board), (Messages{kReadOpenError, kReadOpenError}));
    EXPECT_EQ(argument.sizes, kUntouched);
}

TEST_F(MtuDatasizeFile, ThatAppearsBeforeTheSecondRunIsRead)
{
    board.file_put(kFile, file_of(kHeld));
    board.fail_call(1);
    EXPECT_EQ(run(RD_MTU_DATASIZE), 0);
    EXPECT_EQ(board.calls,
              Trace{"fopen /tmp/mtu_datasize r -> failed"} + append_calls(0) + kRetry + kReadCalls);
    EXPECT_EQ(log_messages(board), Messages{kReadOpenError});
    EXPECT_EQ(argument.sizes, kHeld);
}

TEST_F(MtuDatasizeFile, ThatCannotBeReadIsLoggedBeforeItIsClosed)
{
    board.file_put(kFile, file_of(kHeld));
    board.fail_call(2);
    EXPECT_EQ(run(RD_MTU_DATASIZE), 0);
    const Trace failed =
        Trace{"fopen /tmp/mtu_datasize r", "fread /tmp/mtu_datasize 20 -> failed"} +
        append_calls(0) + Trace{"fclose /tmp/mtu_datasize"};
    EXPECT_EQ(board.calls, failed + kRetry + kReadCalls);
    EXPECT_EQ(log_messages(board), Messages{kReadError});
    EXPECT_EQ(argument.sizes, kHeld);
}

TEST_F(MtuDatasizeFile, CountsAsReadWhenItsCloseFails)
{
    board.file_put(kFile, file_of(kHeld));
    board.fail_call(3);
    EXPECT_EQ(run(RD_MTU_DATASIZE), 0);
    EXPECT_EQ(board.call_count(), 3U);
    EXPECT_EQ(argument.sizes, kHeld);
}

TEST_F(MtuDatasizeFile, IsReadWhenItHasAtLeast20Bytes)
{
    const Bytes longer = file_of(kHeld) + "x";
    for (const size_t length : {0U, 1U, 19U, 20U, 21U}) {
        SCOPED_TRACE(length);
        log_clear(board);
        board.file_put(kFile, longer.substr(0, length));
        argument.sizes = kUntouched;
        const bool enough = length >= 20;
        EXPECT_EQ(run(RD_MTU_DATASIZE), enough ? 0 : -1);
        const Bytes read = longer.substr(0, std::min<size_t>(length, 20));
        EXPECT_EQ(file_of(argument.sizes), read + file_of(kUntouched).substr(read.size()));
        EXPECT_EQ(log_messages(board), enough ? Messages{} : (Messages{kReadError, kReadError}));
        EXPECT_EQ(board.file_get(kFile), longer.substr(0, length));
    }
}

// Writing

const Trace kWriteCalls{"fopen /tmp/mtu_datasize w+", "fwrite /tmp/mtu_datasize 20",
                        "fclose /tmp/mtu_datasize"};

const Trace kFlagCalls{"open /dev/fpga O_RDWR|O_NONBLOCK", "ioctl 6B03 00 00", "close /dev/fpga"};

constexpr Sizes kGiven{1500, 1454, 1400, 1, 2, 3, 4, 5, 6, 0xABCD};

TEST_F(MtuDatasizeFile, IsWrittenAfterTheDeviceIsClosed)
{
    prove(
        WR_MTU_DATASIZE, [this] { return sizes_put(kGiven); },
        Course{opens_to_write(), word_read(kWord03), closes()} + course_of(kWriteCalls));
    EXPECT_EQ(argument.sizes, kHeld);
    EXPECT_EQ(log_messages(board), Messages{});
}

TEST_F(MtuDatasizeFile, TakesSizesLess8WhileBit8IsClear)
{
    board.fpga.words[kWord03] = 0xFEFF;
    sizes_put(kGiven);
    EXPECT_EQ(run(WR_MTU_DATASIZE), 0);
    EXPECT_EQ(argument.sizes, kHeld);
    EXPECT_EQ(board.file_get(kFile), file_of(kHeld));
}

TEST_F(MtuDatasizeFile, TakesFullSizesWhileBit8IsSet)
{
    board.fpga.words[kWord03] = 0x0100;
    sizes_put(kGiven);
    EXPECT_EQ(run(WR_MTU_DATASIZE), 0);
    const Sizes expected{1500, 1454, 1400, 1474, 1428, 1374, 1500, 1454, 1400, 0xABCD};
    EXPECT_EQ(argument.sizes, expected);
    EXPECT_EQ(board.file_get(kFile), file_of(expected));
}

TEST_F(MtuDatasizeFile, HeedsBit8OfTheWordAlone)
{
    const auto last_size = [this](uint32_t word) {
        board.fpga.words[kWord03] = word;
        sizes_put(kGiven);
        EXPECT_EQ(run(WR_MTU_DATASIZE), 0);
        EXPECT_EQ(argument.sizes[5], 1374);
        return argument.sizes[8];
    };
    for (unsigned bit = 0; bit < 16; ++bit) {
        EXPECT_EQ(last_size(1U << bit), bit == 8 ? 1400 : 1392) << bit;
        EXPECT_EQ(last_size(0xFFFFU & ~(1U << bit)), bit == 8 ? 1392 : 1400) << bit;
    }
}

TEST_F(MtuDatasizeFile, HoldsDifferencesThatWrapAt16Bits)
{
    sizes_put({0, 7, 25, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(run(WR_MTU_DATASIZE), 0);
    EXPECT_EQ(argument.sizes, (Sizes{0, 7, 25, 65510, 65517, 65535, 65528, 65535, 17, 0}));
    sizes_put({8, 26, 65535, 0, 0, 0, 0, 0, 0, 65535});
    EXPECT_EQ(run(WR_MTU_DATASIZE), 0);
    const Sizes expected{8, 26, 65535, 65518, 0, 65509, 0, 18, 65527, 65535};
    EXPECT_EQ(argument.sizes, expected);
    EXPECT_EQ(board.file_get(kFile), file_of(expected));
}

TEST_F(MtuDatasizeFile, ReplacesALongerFile)
{
    board.file_put(kFile, Bytes(100, 'x'));
    sizes_put(kGiven);
    EXPECT_EQ(run(WR_MTU_DATASIZE), 0);
    EXPECT_EQ(board.file_get(kFile), file_of(kHeld));
}

TEST_F(MtuDatasizeFile, IsReadBackAsItWasWritten)
{
    sizes_put(kGiven);
    EXPECT_EQ(run(WR_MTU_DATASIZE), 0);
    argument.sizes = kUntouched;
    EXPECT_EQ(run(RD_MTU_DATASIZE), 0);
    EXPECT_EQ(argument.sizes, kHeld);
}

TEST_F(MtuDatasizeFile, IsNotTouchedWhenTheDeviceFails)
{
    for (const auto& [calls, result] :
         {std::pair{std::set<size_t>{1, 3}, -1}, std::pair{std::set<size_t>{2, 6}, -2}}) {
        board.restart();
        sizes_put(kUntouched);
        board.fail_calls(calls);
        EXPECT_EQ(run(WR_MTU_DATASIZE), result);
        EXPECT_EQ(argument.sizes, kUntouched);
        EXPECT_FALSE(board.file_exists(kFile));
        EXPECT_EQ(log_messages(board), Messages{});
    }
}

TEST_F(MtuDatasizeFile, ThatCannotBeCreatedIsLogged)
{
    sizes_put(kGiven);
    board.fail_call(4);
    EXPECT_EQ(run(WR_MTU_DATASIZE), 0);
    const Trace failed =
        kFlagCalls + Trace{"fopen /tmp/mtu_datasize w+ -> failed"} + append_calls(0);
    EXPECT_EQ(board.calls, failed + kRetry + kFlagCalls + kWriteCalls);
    EXPECT_EQ(log_messages(board), Messages{kWriteOpenError});
}

TEST_F(MtuDatasizeFile, ThatCannotBeCreatedTwiceLeavesTheRecordFilled)
{
    std::filesystem::create_directory(board.host(kFile));
    sizes_put(kGiven);
    EXPECT_EQ(run(WR_MTU_DATASIZE), -1);
    const Trace open = kFlagCalls + Trace{"fopen /tmp/mtu_datasize w+"};
    EXPECT_EQ(board.calls, open + append_calls(0) + kRetry + open + append_calls(1) + kRetry);
    EXPECT_EQ(log_messages(board), (Messages{kWriteOpenError, kWriteOpenError}));
    EXPECT_EQ(argument.sizes, kHeld);
}

TEST_F(MtuDatasizeFile, ThatCannotBeWrittenIsLoggedBeforeItIsClosed)
{
    sizes_put(kGiven);
    board.fail_calls({5, 5 + 11 + 5});
    EXPECT_EQ(run(WR_MTU_DATASIZE), -1);
    const auto failed = [](size_t slot) {
        return kFlagCalls +
               Trace{"fopen /tmp/mtu_datasize w+", "fwrite /tmp/mtu_datasize 20 -> failed"} +
               append_calls(slot) + Trace{"fclose /tmp/mtu_datasize"};
    };
    EXPECT_EQ(board.calls, failed(0) + kRetry + failed(1) + kRetry);
    EXPECT_EQ(log_messages(board), (Messages{kWriteError, kWriteError}));
    EXPECT_EQ(argument.sizes, kHeld);
    EXPECT_EQ(board.file_get(kFile), "");
}

TEST_F(MtuDatasizeFile, CountsAsWrittenWhenItsCloseFails)
{
    sizes_put(kGiven);
    board.fail_call(6);
    EXPECT_EQ(run(WR_MTU_DATASIZE), 0);
    EXPECT_EQ(board.call_count(), 6U);
    EXPECT_EQ(log_messages(board), Messages{});
}

} // namespace
