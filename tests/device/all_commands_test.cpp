// What holds for every command: run over random records and device states, with every call failing
// in turn, a command returns its documented results, each of them at some time, and no other,
// leaves no descriptor (but for the two that do on purpose), touches nothing outside its own record
// and asks the driver for its own requests, each of them at some time, and no other.
#include <map>
#include <random>

#include "device/command_test.h"
#include "sim/device_state.h"

namespace
{

// The two commands that leave the device open when their request fails.
bool leaves_open(DeviceCommandCode command)
{
    return command == RD_DEVICE_WORD_21 || command == WR_DEVICE_WORD_22;
}

constexpr int kDraws = 4000; // of a record, before a request or result is said to be out of reach

class AllCommands : public CommandTest
{
  protected:
    uint32_t random(uint32_t limit = UINT32_MAX)
    {
        return std::uniform_int_distribution<uint32_t>(0, limit)(engine_);
    }

    // The size of the LED state file; 0: there is none. Where it is cut, so is the serial number.
    size_t stateFile_draw() { return random(1) == 0 ? 0 : random(3) == 0 ? 43 : 44; }

    void files_put(size_t state_file)
    {
        for (const char* table : {"/tmp/ks8995_nor.dat", "/tmp/ks8995_pri.dat"}) {
            board.file_put(table, Bytes(128, '\x01'));
        }
        board.file_put("/conf/statistics", Bytes(496, '\x01'));
        board.file_put("/tmp/serialno", state_file == 43 ? "12345678" : "123456789");
        board.file_put("/tmp/mtu_datasize", Bytes(20, '\x02'));
        board.file_put("/conf/user.log", Bytes(16, '\0'));
        board.file_put("/conf/system.log", hex("00 00 00 00 00 00 00 00 01 00 00 00"));
        board.file_put("/conf/config", "OWN_VPN_ID='12'\nWAN_TYPE='5'\n");
        if (state_file != 0) {
            board.file_put("/tmp/led_rewrite_inh", Bytes(state_file, '\x01'));
        } else {
            board.file_remove("/tmp/led_rewrite_inh");
        }
    }

    // What a run may have asked of the driver.
    [[nodiscard]] Requests requests_issued() const
    {
        Requests requests;
        for (const std::string& call : board.calls) {
            const size_t at = call.rfind("ioctl (closed) ", 0) == 0 ? 15 : 6;
            if (call.rfind("ioctl ", 0) == 0 && call.find("/dev/rtc") == std::string::npos) {
                requests.insert(static_cast<uint32_t>(std::stoul(call.substr(at, 4), nullptr, 16)));
            }
        }
        return requests;
    }

    // One run; returns how many calls it made.
    size_t check_run(const CommandFacts& command, const Bytes& before)
    {
        const int32_t result = run(command.number, before);
        EXPECT_EQ(command.results.count(result), 1U) << "result " << result;
        results_.insert(result);
        static_cast<void>(record()); // looks at what lies beside it
        const Requests requests = requests_issued();
        for (const uint32_t request : requests) {
            EXPECT_EQ(command.requests.count(request), 1U) << hex_number(request);
        }
        issued_.insert(requests.begin(), requests.end());
        if (leaves_open(command.number)) {
            EXPECT_LE(board.open_descriptors(), 2U);
            close_left_open(board.open_descriptors());
        }
        EXPECT_EQ(board.open_descriptors(), 0U);
        EXPECT_EQ(board.held_locks(), 0U);
        return board.calls.size();
    }

    // What can be seen of a run.
    struct Run {
        int32_t result;
        Bytes record;
        Trace calls;
    };

    // One run in which the driver answers every request with this number.
    Run run_answered(const CommandFacts& command, const Bytes& before, uint32_t state,
                     size_t state_file, int answer)
    {
        deviceState_put(state, board.fpga, board.rtc);
        for (const uint32_t request : command.requests) {
            board.fpga.results[request] = answer;
        }
        files_put(state_file);
        board.restart();
        const int32_t result = run(command.number, before);
        issued_.merge(requests_issued());
        return {result, record(), board.calls};
    }

    // Bytes at random; or small numbers of one width all along, as most records hold them, some of
    // them alike.
    Bytes record_draw(size_t size)
    {
        const uint32_t width = 1U << random(3); // 1, 2, 4; 8: any bytes
        const uint32_t first = random(8);
        const bool alike = random(1) == 0;
        Bytes record;
        while (record.size() < size) {
            record +=
                width == 8 ? le16(random()) : le32(alike ? first : random(8)).substr(0, width);
        }
        return record.substr(0, size);
    }

    // Long runs read many counters or PHY registers alike: of their middle not every call fails.
    static size_t next_failing(size_t failing, size_t calls)
    {
        constexpr size_t kEnds = 12;
        const bool middle = failing > kEnds && failing + 30 + kEnds < calls;
        return failing + (middle ? 29 : 1);
    }

    // Runs a command once, and then with its calls failing where that is asked for: in the first
    // run, in both, and all from one on.
    void check(const CommandFacts& command, bool failing_calls)
    {
        SCOPED_TRACE(command_name(command.number));
        const Bytes before = record_draw(command.record);
        const uint32_t state = random();
        const size_t state_file = stateFile_draw();
        const auto start = [&] {
            deviceState_put(state, board.fpga, board.rtc);
            files_put(state_file);
            board.restart();
        };
        start();
        const size_t made = check_run(command, before);
        const size_t calls = failing_calls ? made : 0;
        for (size_t failing = 1; failing <= calls && !HasFailure();
             failing = next_failing(failing, calls)) {
            SCOPED_TRACE(failing);
            start();
            board.fail_call(failing);
            check_run(command, before);
            const auto pause = std::find(board.calls.begin(), board.calls.end(), "usleep 1");
            const auto first_run = static_cast<size_t>(pause - board.calls.begin()) + 1;
            start();
            board.fail_calls({failing, first_run + failing});
            check_run(command, before);
            start();
            board.fail_from(failing);
            check_run(command, before);
        }
        board.restart();
    }

    // What all runs of a command together have shown.
    Requests issued_;
    std::set<int32_t> results_;

  private:
    std::mt19937 engine_{20061101};
};

TEST_F(AllCommands, KeepTheirPromisesWhateverFails)
{
    Requests all;
    for (const CommandFacts& command : commandFacts_get()) {
        issued_.clear();
        results_.clear();
        // As many records as it takes. Calls fail with the first hundred, under an emulator with
        // three, and with others until every result has been seen.
        const int kFailing = kLoopShare.roundsPerRound == 1 ? 100 : 3;
        for (int record = 0; record < 3 || (record < kDraws && (results_ != command.results ||
                                                                issued_ != command.requests));
             ++record) {
            check(command, record < kFailing || results_ != command.results);
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_EQ(results_, command.results) << command.name;
        EXPECT_EQ(difference_of(command.requests, issued_), "") << command.name;
        all.insert(issued_.begin(), issued_.end());
    }
    Requests known;
    for (uint32_t request = 0x6B00; request <= 0x6BFF; ++request) {
        if (requestForm_find(request) != nullptr) {
            known.insert(request);
        }
    }
    EXPECT_EQ(difference_of(known, all), "");
}

// Requests are refused with a negative number alone. Three commands make something else of the
// number: RD_DEVICE_WORD_40 and RD_DRIVER_STATE hand it on, WR_MTU_LIMIT takes any but 0 for a
// failure.
TEST_F(AllCommands, TakeAPositiveResultOfTheDriverForSuccess)
{
    for (const CommandFacts& command : commandFacts_get()) {
        if (command.number == RD_DEVICE_WORD_40 || command.number == RD_DRIVER_STATE ||
            command.number == WR_MTU_LIMIT) {
            continue;
        }
        SCOPED_TRACE(command_name(command.number));
        issued_.clear();
        for (int round = 0; round < kDraws && (round < 3 || issued_ != command.requests); ++round) {
            const Bytes before = record_draw(command.record);
            const uint32_t state = random();
            const size_t state_file = stateFile_draw();
            const Run zero = run_answered(command, before, state, state_file, 0);
            const Run positive = run_answered(command, before, state, state_file, 3);
            EXPECT_EQ(positive.result, zero.result);
            EXPECT_EQ(positive.record, zero.record);
            EXPECT_EQ(positive.calls, zero.calls);
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_EQ(difference_of(command.requests, issued_), "");
    }
}

} // namespace
