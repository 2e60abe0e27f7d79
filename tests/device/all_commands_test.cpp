// What holds for every command: run over random records and device states, with every call failing
// in turn, a command returns one of its documented results, leaves no descriptor (but for the two
// that do on purpose), touches nothing outside its own record and asks the driver for its own
// requests, each of them at some time, and no other.
#include <map>
#include <random>

#include "device/command_facts.h"
#include "device/device_test.h"
#include "sim/device_state.h"

namespace
{

// The two commands that leave the device open when their request fails.
bool leaves_open(DeviceCommandCode command)
{
    return command == RD_DEVICE_WORD_21 || command == WR_DEVICE_WORD_22;
}

// The caller's memory: guard, record, guard.
constexpr size_t kGuard = 64;
constexpr int kDraws = 4000; // of a record, before a request is said to be out of reach

constexpr size_t kMemory = kGuard + kRecordMax + kGuard;

class AllCommands : public DeviceTest
{
  protected:
    uint32_t random(uint32_t limit = UINT32_MAX)
    {
        return std::uniform_int_distribution<uint32_t>(0, limit)(engine_);
    }

    void board_put()
    {
        deviceState_put(random(), board.fpga, board.rtc);
        files_put(stateFile_draw());
    }

    // The size of the LED state file; 0: there is none.
    size_t stateFile_draw() { return random(1) == 0 ? 0 : random(3) == 0 ? 43 : 44; }

    void files_put(size_t state_file)
    {
        for (const char* table : {"/tmp/ks8995_nor.dat", "/tmp/ks8995_pri.dat"}) {
            board.file_put(table, Bytes(128, '\x01'));
        }
        board.file_put("/conf/statistics", Bytes(496, '\x01'));
        board.file_put("/tmp/serialno", "123456789");
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

    void close_what_was_left()
    {
        for (int descriptor = Board::kFirstDevice; board.open_descriptors() > 0; ++descriptor) {
            if (board.path_of(descriptor) != "(closed)") {
                board.closing(descriptor);
            }
        }
    }

    // One run; returns how many calls it made.
    size_t run(const CommandFacts& command, const Bytes& record)
    {
        alignas(8) static char memory[kMemory];
        record.copy(memory, kMemory);
        const int32_t result = Fpga_Register_Set(command.number, memory + kGuard);
        EXPECT_EQ(command.results.count(result), 1U) << "result " << result;
        EXPECT_EQ(Bytes(memory, kGuard), record.substr(0, kGuard));
        const size_t behind = kGuard + command.record;
        EXPECT_EQ(Bytes(memory + behind, kMemory - behind), record.substr(behind));
        for (const uint32_t request : requests_issued()) {
            EXPECT_EQ(command.requests.count(request), 1U) << hex_number(request);
            issued_.insert(request);
        }
        succeeded_ = succeeded_ || result >= 0;
        if (leaves_open(command.number)) {
            EXPECT_LE(board.open_descriptors(), 2U);
            close_what_was_left();
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
    Run run_answered(const CommandFacts& command, const Bytes& record, uint32_t state,
                     size_t state_file, int answer)
    {
        alignas(8) static char memory[kMemory];
        record.copy(memory, kMemory);
        deviceState_put(state, board.fpga, board.rtc);
        for (const uint32_t request : command.requests) {
            board.fpga.results[request] = answer;
        }
        files_put(state_file);
        board.restart();
        const int32_t result = Fpga_Register_Set(command.number, memory + kGuard);
        issued_.merge(requests_issued());
        return {result, Bytes(memory, kMemory), board.calls};
    }

    // Bytes at random; or small numbers of one width all along, as most records hold them, some of
    // them alike.
    Bytes record_draw()
    {
        const uint32_t width = 1U << random(3); // 1, 2, 4; 8: any bytes
        const uint32_t first = random(8);
        const bool alike = random(1) == 0;
        Bytes record;
        while (record.size() < kMemory) {
            record +=
                width == 8 ? le16(random()) : le32(alike ? first : random(8)).substr(0, width);
        }
        return record.substr(0, kMemory);
    }

    // Long runs read many counters or PHY registers alike: of their middle not every call fails.
    static size_t next_failing(size_t failing, size_t calls)
    {
        constexpr size_t kEnds = 12;
        const bool middle = failing > kEnds && failing + 30 + kEnds < calls;
        return failing + (middle ? 29 : 1);
    }

    // Runs a command once, and then with its calls failing where that is asked for.
    void check(const CommandFacts& command, bool failing_calls)
    {
        SCOPED_TRACE(command_name(command.number));
        const Bytes record = record_draw();
        board_put();
        board.restart();
        const size_t made = run(command, record);
        const size_t calls = failing_calls ? made : 0;
        for (size_t failing = 1; failing <= calls && !HasFailure();
             failing = next_failing(failing, calls)) {
            SCOPED_TRACE(failing);
            for (const bool and_all_after : {false, true}) {
                board_put();
                board.restart();
                if (and_all_after) {
                    board.fail_from(failing);
                } else {
                    board.fail_call(failing);
                }
                run(command, record);
            }
        }
        board.restart();
    }

    // What all runs of a command together have shown.
    Requests issued_;
    bool succeeded_ = false;

  private:
    std::mt19937 engine_{20061101};
};

TEST_F(AllCommands, KeepTheirPromisesWhateverFails)
{
    Requests all;
    for (const CommandFacts& command : commandFacts_get()) {
        issued_.clear();
        succeeded_ = false;
        // As many records as it takes for the command to succeed and to issue all its requests.
        // Calls fail with the first hundred; under an emulator with one, and with others until a
        // run succeeds.
        constexpr int kFailing = kRoundsPerRound == 1 ? 100 : 1;
        for (int record = 0;
             record < 3 || (record < kDraws && (!succeeded_ || issued_ != command.requests));
             ++record) {
            check(command, record < kFailing || !succeeded_);
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_TRUE(succeeded_) << "never got anywhere: " << command.name;
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
            const Bytes record = record_draw();
            const uint32_t state = random();
            const size_t state_file = stateFile_draw();
            const Run zero = run_answered(command, record, state, state_file, 0);
            const Run positive = run_answered(command, record, state, state_file, 3);
            EXPECT_EQ(positive.result, zero.result);
            EXPECT_EQ(positive.record, zero.record);
            EXPECT_EQ(positive.calls, zero.calls);
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_EQ(difference_of(command.requests, issued_), "");
    }
}

} // namespace
