// The file of data sizes: /tmp/mtu_datasize.
#include "device/command_test.h"
#include "device/device_word_03.h"
#include "device/library_calls.h"
#include "maint/commands/mtu.h"

namespace
{

using Messages = std::vector<std::string>;

constexpr const char* kFile = "/tmp/mtu_datasize";

constexpr const char* kReadOpenError = "read_mtu_datasize: /tmp/mtu_datasize open error.";
constexpr const char* kReadError = "read_mtu_datasize: /tmp/mtu_datasize read error.";
constexpr const char* kWriteOpenError = "write_mtu_datasize : /tmp/mtu_datasize open error.";
constexpr const char* kWriteError = "write_mtu_datasize : /tmp/mtu_datasize write error.";

const Trace kRetry{"usleep 1"};

// Ten numbers, as the file and the record have them.
Bytes sizes_of(const std::array<uint32_t, 10>& numbers)
{
    Bytes sizes;
    for (const uint32_t number : numbers) {
        sizes += le16(number);
    }
    return sizes;
}

const Bytes kHeld = sizes_of({1500, 1454, 1400, 1474, 1428, 1374, 1492, 1446, 1392, 0xABCD});
const Bytes kBefore = untouched(20);

class MtuDatasizeFile : public CommandTest
{
  protected:
    void SetUp() override { log_clear(board); }

    void TearDown() override
    {
        EXPECT_EQ(board.console, "");
        CommandTest::TearDown();
    }

    // A run, its calls and what it has logged.
    void expect_logged(DeviceCommandCode command, const Bytes& before, int32_t result,
                       const Bytes& after, const Trace& calls, const Messages& messages)
    {
        expect_run(command, before, result, after);
        EXPECT_EQ(board.calls, calls);
        EXPECT_EQ(log_messages(board), messages);
    }
};

// Reading

const Trace kReadOpen{"fopen /tmp/mtu_datasize r"};
const Trace kReadRest{"fread /tmp/mtu_datasize 20", "fclose /tmp/mtu_datasize"};

TEST_F(MtuDatasizeFile, IsReadWithoutTheDevice)
{
    board.file_put(kFile, kHeld);
    expect_logged(RD_MTU_DATASIZE, kBefore, 0, kHeld, kReadOpen + kReadRest, {});
}

TEST_F(MtuDatasizeFile, IsReadAsTheFieldsOfTheRecord)
{
    board.file_put(kFile, sizes_of({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
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
    expect_logged(RD_MTU_DATASIZE, kBefore, -1, kBefore,
                  kReadOpen + append_calls(0) + kRetry + kReadOpen + append_calls(1) + kRetry,
                  {kReadOpenError, kReadOpenError});
}

TEST_F(MtuDatasizeFile, ThatAppearsBeforeTheSecondRunIsRead)
{
    board.file_put(kFile, kHeld);
    board.fail_call(1);
    expect_logged(RD_MTU_DATASIZE, kBefore, 0, kHeld,
                  Trace{"fopen /tmp/mtu_datasize r -> failed"} + append_calls(0) + kRetry +
                      kReadOpen + kReadRest,
                  {kReadOpenError});
}

TEST_F(MtuDatasizeFile, ThatCannotBeReadIsLoggedBeforeItIsClosed)
{
    board.file_put(kFile, kHeld);
    board.fail_call(2);
    expect_logged(RD_MTU_DATASIZE, kBefore, 0, kHeld,
                  kReadOpen + Trace{"fread /tmp/mtu_datasize 20 -> failed"} + append_calls(0) +
                      Trace{"fclose /tmp/mtu_datasize"} + kRetry + kReadOpen + kReadRest,
                  {kReadError});
}

TEST_F(MtuDatasizeFile, CountsAsReadWhenItsCloseFails)
{
    board.file_put(kFile, kHeld);
    board.fail_call(3);
    expect_run(RD_MTU_DATASIZE, kBefore, 0, kHeld);
    EXPECT_EQ(board.call_count(), 3U);
}

TEST_F(MtuDatasizeFile, IsReadWhenItHasAtLeast20Bytes)
{
    const Bytes longer = kHeld + "x";
    for (const size_t length : {0U, 1U, 19U, 20U, 21U}) {
        SCOPED_TRACE(length);
        log_clear(board);
        board.file_put(kFile, longer.substr(0, length));
        const bool enough = length >= 20;
        const Bytes read = kHeld.substr(0, length);
        expect_run(RD_MTU_DATASIZE, kBefore, enough ? 0 : -1, read + kBefore.substr(read.size()));
        EXPECT_EQ(log_messages(board), enough ? Messages{} : (Messages{kReadError, kReadError}));
        EXPECT_EQ(board.file_get(kFile), longer.substr(0, length));
    }
}

// Writing

const Trace kFlagCalls{"open /dev/fpga O_RDWR|O_NONBLOCK", "ioctl 6B03 00 00", "close /dev/fpga"};
const Trace kWriteOpen{"fopen /tmp/mtu_datasize w+"};
const Trace kWriteRest{"fwrite /tmp/mtu_datasize 20", "fclose /tmp/mtu_datasize"};

const Bytes kGiven = sizes_of({1500, 1454, 1400, 1, 2, 3, 4, 5, 6, 0xABCD});

TEST_F(MtuDatasizeFile, IsWrittenAfterTheDeviceIsClosed)
{
    prove_record(WR_MTU_DATASIZE, kGiven,
                 Course{opens_to_write(), word_read(kDeviceWord03), closes()} +
                     course_of(kWriteOpen + kWriteRest),
                 kHeld);
    EXPECT_EQ(log_messages(board), Messages{});
}

TEST_F(MtuDatasizeFile, TakesFullSizesWhileBit8IsSetAndSizesLess8WhileItIsClear)
{
    const Bytes full = sizes_of({1500, 1454, 1400, 1474, 1428, 1374, 1500, 1454, 1400, 0xABCD});
    for (unsigned bit = 0; bit < 16; ++bit) {
        for (const uint32_t word : {1U << bit, 0xFFFFU & ~(1U << bit)}) {
            SCOPED_TRACE("word " + hex_number(word));
            board.fpga.words[kDeviceWord03] = word;
            const Bytes& expected = (word & 0x0100) != 0 ? full : kHeld;
            expect_run(WR_MTU_DATASIZE, kGiven, 0, expected);
            EXPECT_EQ(board.file_get(kFile), expected);
        }
    }
}

TEST_F(MtuDatasizeFile, HoldsDifferencesThatWrapAt16Bits)
{
    expect_run(WR_MTU_DATASIZE, sizes_of({0, 7, 25, 0, 0, 0, 0, 0, 0, 0}), 0,
               sizes_of({0, 7, 25, 65510, 65517, 65535, 65528, 65535, 17, 0}));
    const Bytes expected = sizes_of({8, 26, 65535, 65518, 0, 65509, 0, 18, 65527, 65535});
    expect_run(WR_MTU_DATASIZE, sizes_of({8, 26, 65535, 0, 0, 0, 0, 0, 0, 65535}), 0, expected);
    EXPECT_EQ(board.file_get(kFile), expected);
}

TEST_F(MtuDatasizeFile, ReplacesALongerFileAndIsReadBack)
{
    board.file_put(kFile, Bytes(100, 'x'));
    expect_run(WR_MTU_DATASIZE, kGiven, 0, kHeld);
    EXPECT_EQ(board.file_get(kFile), kHeld);
    expect_run(RD_MTU_DATASIZE, kBefore, 0, kHeld);
}

TEST_F(MtuDatasizeFile, IsNotTouchedWhenTheDeviceFails)
{
    for (const auto& [calls, result] :
         {std::pair{std::set<size_t>{1, 3}, -1}, std::pair{std::set<size_t>{2, 6}, -2}}) {
        board.restart();
        board.fail_calls(calls);
        expect_run(WR_MTU_DATASIZE, kGiven, result, kGiven);
        EXPECT_FALSE(board.file_exists(kFile));
        EXPECT_EQ(log_messages(board), Messages{});
    }
}

TEST_F(MtuDatasizeFile, ThatCannotBeCreatedIsLogged)
{
    board.fail_call(4);
    expect_logged(WR_MTU_DATASIZE, kGiven, 0, kHeld,
                  kFlagCalls + Trace{"fopen /tmp/mtu_datasize w+ -> failed"} + append_calls(0) +
                      kRetry + kFlagCalls + kWriteOpen + kWriteRest,
                  {kWriteOpenError});
}

TEST_F(MtuDatasizeFile, ThatCannotBeCreatedTwiceLeavesTheRecordFilled)
{
    std::filesystem::create_directory(board.host(kFile));
    const Trace open = kFlagCalls + kWriteOpen;
    expect_logged(WR_MTU_DATASIZE, kGiven, -1, kHeld,
                  open + append_calls(0) + kRetry + open + append_calls(1) + kRetry,
                  {kWriteOpenError, kWriteOpenError});
}

TEST_F(MtuDatasizeFile, ThatCannotBeWrittenIsLoggedBeforeItIsClosed)
{
    board.fail_calls({5, 5 + 11 + 5});
    const auto failed = [](size_t slot) {
        return kFlagCalls + kWriteOpen + Trace{"fwrite /tmp/mtu_datasize 20 -> failed"} +
               append_calls(slot) + Trace{"fclose /tmp/mtu_datasize"};
    };
    expect_logged(WR_MTU_DATASIZE, kGiven, -1, kHeld, failed(0) + kRetry + failed(1) + kRetry,
                  {kWriteError, kWriteError});
    EXPECT_EQ(board.file_get(kFile), "");
}

TEST_F(MtuDatasizeFile, CountsAsWrittenWhenItsCloseFails)
{
    board.fail_call(6);
    EXPECT_EQ(run(WR_MTU_DATASIZE, kGiven), 0);
    EXPECT_EQ(board.call_count(), 6U);
    EXPECT_EQ(log_messages(board), Messages{});
}

} // namespace
