// Finding a command and running it: at most twice, and once where a second run could not help.
#include "device/dispatch/dispatcher.h"

#include <array>

#include "device/device_test.h"

namespace
{

// What the handlers below do in turn, and what they were given.
struct Script {
    Board& board;
    std::vector<int32_t> answers;
    std::vector<void*> arguments;
};

Script* script = nullptr;

// A family whose member shows in the trace as "run n".
int32_t scripted(void* argument, Member number)
{
    script->board.begin("run " + std::to_string(number));
    script->arguments.push_back(argument);
    if (script->arguments.size() > script->answers.size()) {
        ADD_FAILURE() << "one run more than expected";
        return 0;
    }
    return script->answers[script->arguments.size() - 1];
}

constexpr CommandCall<void*> run(Member number)
{
    return call_of<scripted>(number);
}

constexpr DeviceCommand kTable[] = {
    {RD_REGISTER, run(0)},
    {WR_CONTROL_BITS, run(1)},
    {5, CommandCall<void*>{nullptr, 0}},
    {RD_DEVICE_WORD_40, run(2)},
    {WR_CONTROL_BITS, run(3)},
    {5, run(4)},
    {0x003D, run(5)},
    {WR_DEVICE_WORD_41, run(6)},
    {RD_DEVICE_INFO, run(UINT16_MAX)},
};

const Trace kTwoFailedRuns{"run 1", "usleep 1", "run 1", "usleep 1"};

class Dispatcher : public DeviceTest
{
  protected:
    Dispatcher() { script = &play; }
    ~Dispatcher() override { script = nullptr; }

    int32_t dispatch(DeviceCommandCode command, const std::vector<int32_t>& answers,
                     void* argument = nullptr)
    {
        play.answers = answers;
        play.arguments.clear();
        board.restart();
        return command_dispatch(kTable, command, argument);
    }

    Script play{board, {}, {}};
};

TEST_F(Dispatcher, RunsTheFirstRowOfTheCommand)
{
    EXPECT_EQ(dispatch(WR_CONTROL_BITS, {0}), 0);
    EXPECT_EQ(board.calls, (Trace{"run 1"}));
}

TEST_F(Dispatcher, FindsTheFirstAndTheLastRow)
{
    EXPECT_EQ(dispatch(RD_REGISTER, {0}), 0);
    EXPECT_EQ(board.calls, (Trace{"run 0"}));
    EXPECT_EQ(dispatch(RD_DEVICE_INFO, {0}), 0);
    EXPECT_EQ(board.calls, (Trace{"run 65535"}));
}

TEST_F(Dispatcher, RunsAFailedCommandTwiceAndSleepsAfterEachFailure)
{
    for (const int32_t failure : {-1, -2, -3, -4, -6, -100, INT32_MIN}) {
        SCOPED_TRACE(failure);
        EXPECT_EQ(dispatch(WR_CONTROL_BITS, {failure, failure}), failure);
        EXPECT_EQ(board.calls, kTwoFailedRuns);
    }
}

TEST_F(Dispatcher, ReturnsTheSecondRunsFailure)
{
    EXPECT_EQ(dispatch(WR_CONTROL_BITS, {-2, -4}), -4);
    EXPECT_EQ(board.calls, kTwoFailedRuns);
    EXPECT_EQ(dispatch(WR_CONTROL_BITS, {-4, -1}), -1);
    EXPECT_EQ(board.calls, kTwoFailedRuns);
}

TEST_F(Dispatcher, ReturnsTheSecondRunsSuccess)
{
    for (const int32_t failure : {-1, -2, -3, -4}) {
        for (const int32_t success : {0, 1, 77}) {
            EXPECT_EQ(dispatch(WR_CONTROL_BITS, {failure, success}), success);
            EXPECT_EQ(board.calls, (Trace{"run 1", "usleep 1", "run 1"}));
        }
    }
}

TEST_F(Dispatcher, NeverRepeatsABadArgument)
{
    EXPECT_EQ(dispatch(WR_CONTROL_BITS, {-5}), -5);
    EXPECT_EQ(board.calls, (Trace{"run 1"}));
    EXPECT_EQ(dispatch(WR_CONTROL_BITS, {-2, -5}), -5);
    EXPECT_EQ(board.calls, (Trace{"run 1", "usleep 1", "run 1"}));
}

TEST_F(Dispatcher, RunsDeviceWord40OnceWhateverItsResult)
{
    for (const int32_t result : {0, 1, 62, -1, -2, -3, -4, -5, -6, INT32_MIN, INT32_MAX}) {
        SCOPED_TRACE(result);
        EXPECT_EQ(dispatch(RD_DEVICE_WORD_40, {result}), result);
        EXPECT_EQ(board.calls, (Trace{"run 2"}));
    }
}

TEST_F(Dispatcher, RepeatsTheNeighboursOfDeviceWord40)
{
    EXPECT_EQ(dispatch(0x003D, {-2, -2}), -2);
    EXPECT_EQ(board.calls, (Trace{"run 5", "usleep 1", "run 5", "usleep 1"}));
    EXPECT_EQ(dispatch(WR_DEVICE_WORD_41, {-4, -4}), -4);
    EXPECT_EQ(board.calls, (Trace{"run 6", "usleep 1", "run 6", "usleep 1"}));
    EXPECT_EQ(dispatch(RD_DEVICE_INFO, {-3, 0}), 0);
    EXPECT_EQ(board.calls, (Trace{"run 65535", "usleep 1", "run 65535"}));
}

TEST_F(Dispatcher, PassesANonNegativeResultOn)
{
    for (const int32_t result : {0, 1, 2, 255, 65536, INT32_MAX}) {
        EXPECT_EQ(dispatch(WR_CONTROL_BITS, {result}), result);
        EXPECT_EQ(board.calls, (Trace{"run 1"}));
    }
}

// The scan ends at the first row, even where a later one has a handler.
TEST_F(Dispatcher, RefusesARowWithoutHandler)
{
    EXPECT_EQ(dispatch(5, {}), -1);
    EXPECT_EQ(board.calls, Trace{});
}

TEST_F(Dispatcher, RefusesACommandThatNoRowHas)
{
    for (const DeviceCommandCode command : {1U, 3U, 0xAEU, 0x7DU, 0xFFFFFFFFU, 0x10007U}) {
        EXPECT_EQ(dispatch(command, {}), -1) << command;
        EXPECT_EQ(board.calls, Trace{});
    }
    EXPECT_EQ(command_dispatch({}, 0, nullptr), -1);
    EXPECT_EQ(board.calls, Trace{});
}

TEST_F(Dispatcher, HandsTheArgumentOnUnchanged)
{
    std::array<char, 16> record;
    record.fill('\x5A');
    const std::array<char, 16> before = record;
    for (void* argument :
         {static_cast<void*>(nullptr), static_cast<void*>(record.data()),
          static_cast<void*>(record.data() + 1), reinterpret_cast<void*>(UINTPTR_MAX)}) {
        EXPECT_EQ(dispatch(WR_CONTROL_BITS, {-2, -2}, argument), -2);
        EXPECT_EQ(play.arguments, (std::vector<void*>{argument, argument}));
        EXPECT_EQ(dispatch(RD_DEVICE_WORD_40, {-2}, argument), -2);
        EXPECT_EQ(play.arguments, (std::vector<void*>{argument}));
    }
    EXPECT_EQ(record, before);
}

// A procedure that takes its own record alone is no family's, and gets the caller's pointer as well.
int32_t byte_increment(uint8_t* byte)
{
    ++*byte;
    return 1;
}

TEST_F(Dispatcher, HandsAProcedureItsRecord)
{
    constexpr DeviceCommand kOne[] = {{WR_BYTE_ACTION, call_of<byte_increment>()}};
    uint8_t byte = 7;
    EXPECT_EQ(command_dispatch(kOne, WR_BYTE_ACTION, &byte), 1);
    EXPECT_EQ(byte, 8);
}

// The public entry on the real table --------------------------------------------------------

TEST_F(Dispatcher, TheEntryRunsTheCommandsOfTheTable)
{
    board.fpga.words[0x6B03] = 0xBEEF;
    uint16_t word = 0;
    EXPECT_EQ(Fpga_Register_Set(RD_DEVICE_WORD_03, &word), 0);
    EXPECT_EQ(word, 0xBEEF);
    EXPECT_EQ(board.calls,
              (Trace{"open /dev/fpga O_RDONLY|O_NONBLOCK", "ioctl 6B03 00 00", "close /dev/fpga"}));
}

TEST_F(Dispatcher, TheEntryRepeatsAFailedCommandWithTheSameRecord)
{
    const Trace run{"open /dev/fpga O_RDWR|O_NONBLOCK", "ioctl 6B04 =1234 -> failed",
                    "close /dev/fpga", "usleep 1"};
    uint16_t word = 0x1234;
    board.fail_calls({2, 6});
    EXPECT_EQ(Fpga_Register_Set(WR_DEVICE_WORD_04, &word), -4);
    Trace both = run;
    both.insert(both.end(), run.begin(), run.end());
    EXPECT_EQ(board.calls, both);
}

TEST_F(Dispatcher, TheEntryRepeatsACommandWhoseDeviceIsMissing)
{
    board.fpga_present = false;
    uint16_t word = 0x1234;
    EXPECT_EQ(Fpga_Register_Set(RD_DEVICE_WORD_03, &word), -1);
    EXPECT_EQ(word, 0x1234);
    EXPECT_EQ(board.calls, (Trace{"open /dev/fpga O_RDONLY|O_NONBLOCK", "usleep 1",
                                  "open /dev/fpga O_RDONLY|O_NONBLOCK", "usleep 1"}));
}

TEST_F(Dispatcher, TheEntryRefusesNumbersThatAreNoCommand)
{
    Bytes record(512, '\x5A');
    for (const DeviceCommandCode command : {1U, 3U, 0xAEU, 0x7DU, 0xFFFFFFFFU}) {
        EXPECT_EQ(Fpga_Register_Set(command, record.data()), -1) << command;
    }
    EXPECT_EQ(board.calls, Trace{});
    EXPECT_EQ(record, Bytes(512, '\x5A'));
}

} // namespace
