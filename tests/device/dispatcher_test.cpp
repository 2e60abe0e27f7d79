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

// A handler that shows in the trace as "run n".
template <int kNumber> int32_t scripted(void* argument)
{
    script->board.begin("run " + std::to_string(kNumber));
    script->arguments.push_back(argument);
    if (script->arguments.size() > script->answers.size()) {
        ADD_FAILURE() << "one run more than expected";
        return 0;
    }
    return script->answers[script->arguments.size() - 1];
}

constexpr DeviceCommand kTable[] = {
    {0x0122, scripted<0>}, {0x0007, scripted<1>}, {0x0005, nullptr},
    {0x003E, scripted<2>}, {0x0007, scripted<3>}, {0x0005, scripted<4>},
    {0x003D, scripted<5>}, {0x003F, scripted<6>}, {0x0000, scripted<7>},
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
    EXPECT_EQ(dispatch(0x0007, {0}), 0);
    EXPECT_EQ(board.calls, (Trace{"run 1"}));
}

TEST_F(Dispatcher, FindsTheFirstAndTheLastRow)
{
    EXPECT_EQ(dispatch(0x0122, {0}), 0);
    EXPECT_EQ(board.calls, (Trace{"run 0"}));
    EXPECT_EQ(dispatch(0x0000, {0}), 0);
    EXPECT_EQ(board.calls, (Trace{"run 7"}));
}

TEST_F(Dispatcher, RunsAFailedCommandTwiceAndSleepsAfterEachFailure)
{
    for (const int32_t failure : {-1, -2, -3, -4, -6, -100, INT32_MIN}) {
        SCOPED_TRACE(failure);
        EXPECT_EQ(dispatch(0x0007, {failure, failure}), failure);
        EXPECT_EQ(board.calls, kTwoFailedRuns);
    }
}

TEST_F(Dispatcher, ReturnsTheSecondRunsFailure)
{
    EXPECT_EQ(dispatch(0x0007, {-2, -4}), -4);
    EXPECT_EQ(board.calls, kTwoFailedRuns);
    EXPECT_EQ(dispatch(0x0007, {-4, -1}), -1);
    EXPECT_EQ(board.calls, kTwoFailedRuns);
}

TEST_F(Dispatcher, ReturnsTheSecondRunsSuccess)
{
    for (const int32_t failure : {-1, -2, -3, -4}) {
        for (const int32_t success : {0, 1, 77}) {
            EXPECT_EQ(dispatch(0x0007, {failure, success}), success);
            EXPECT_EQ(board.calls, (Trace{"run 1", "usleep 1", "run 1"}));
        }
    }
}

TEST_F(Dispatcher, NeverRepeatsABadArgument)
{
    EXPECT_EQ(dispatch(0x0007, {-5}), -5);
    EXPECT_EQ(board.calls, (Trace{"run 1"}));
    EXPECT_EQ(dispatch(0x0007, {-2, -5}), -5);
    EXPECT_EQ(board.calls, (Trace{"run 1", "usleep 1", "run 1"}));
}

TEST_F(Dispatcher, RunsCommand62OnceWhateverItsResult)
{
    for (const int32_t result : {0, 1, 62, -1, -2, -3, -4, -5, -6, INT32_MIN, INT32_MAX}) {
        SCOPED_TRACE(result);
        EXPECT_EQ(dispatch(62, {result}), result);
        EXPECT_EQ(board.calls, (Trace{"run 2"}));
    }
}

TEST_F(Dispatcher, RepeatsTheNeighboursOfCommand62)
{
    EXPECT_EQ(dispatch(61, {-2, -2}), -2);
    EXPECT_EQ(board.calls, (Trace{"run 5", "usleep 1", "run 5", "usleep 1"}));
    EXPECT_EQ(dispatch(63, {-4, -4}), -4);
    EXPECT_EQ(board.calls, (Trace{"run 6", "usleep 1", "run 6", "usleep 1"}));
    EXPECT_EQ(dispatch(0, {-3, 0}), 0);
    EXPECT_EQ(board.calls, (Trace{"run 7", "usleep 1", "run 7"}));
}

TEST_F(Dispatcher, PassesANonNegativeResultOn)
{
    for (const int32_t result : {0, 1, 2, 255, 65536, INT32_MAX}) {
        EXPECT_EQ(dispatch(0x0007, {result}), result);
        EXPECT_EQ(board.calls, (Trace{"run 1"}));
    }
}

// The scan ends at the first row, even where a later one has a handler.
TEST_F(Dispatcher, RefusesARowWithoutHandler)
{
    EXPECT_EQ(dispatch(0x0005, {}), -1);
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
        EXPECT_EQ(dispatch(0x0007, {-2, -2}, argument), -2);
        EXPECT_EQ(play.arguments, (std::vector<void*>{argument, argument}));
        EXPECT_EQ(dispatch(62, {-2}, argument), -2);
        EXPECT_EQ(play.arguments, (std::vector<void*>{argument}));
    }
    EXPECT_EQ(record, before);
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
