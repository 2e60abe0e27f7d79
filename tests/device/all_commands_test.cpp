// What holds for all 189 commands: run over random records and device states, with every call
// failing in turn, a command returns one of its documented results, leaves no descriptor (but for
// the two that do on purpose), touches nothing outside its own record and asks the driver for
// nothing but its own requests.
#include <map>
#include <random>

#include "device/command_forms.h"
#include "device/command_requests.h"
#include "device/device_test.h"
#include "device/dispatch/command_table.h"
#include "sim/device_state.h"

namespace
{

// The two commands that leave the device open when their request fails.
bool leaves_open(DeviceCommandCode command)
{
    return command == 0x0040 || command == 0x0041;
}

// The caller's memory: guard, record, guard.
constexpr size_t kGuard = 64;
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
        for (const char* table : {"/tmp/ks8995_nor.dat", "/tmp/ks8995_pri.dat"}) {
            board.file_put(table, Bytes(128, '\x01'));
        }
        board.file_put("/conf/statistics", Bytes(496, '\x01'));
        board.file_put("/tmp/serialno", "123456789");
        board.file_put("/tmp/mtu_datasize", Bytes(20, '\x02'));
        board.file_put("/conf/user.log", Bytes(16, '\0'));
        board.file_put("/conf/system.log", hex("00 00 00 00 00 00 00 00 01 00 00 00"));
        board.file_put("/conf/config", "OWN_VPN_ID='12'\nWAN_TYPE='5'\n");
        if (random(1) == 0) {
            board.file_put("/tmp/led_rewrite_inh", Bytes(random(3) == 0 ? 43 : 44, '\x01'));
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
    size_t run(const CommandForm& form, DeviceCommandCode command, const Bytes& record)
    {
        alignas(8) static char memory[kMemory];
        record.copy(memory, kMemory);
        const int32_t result = Fpga_Register_Set(command, memory + kGuard);
        EXPECT_EQ(form.results.count(result), 1U) << "result " << result;
        EXPECT_EQ(Bytes(memory, kGuard), record.substr(0, kGuard));
        const size_t behind = kGuard + form.record;
        EXPECT_EQ(Bytes(memory + behind, kMemory - behind), record.substr(behind));
        for (const uint32_t request : requests_issued()) {
            EXPECT_EQ(commandRequests_get(command).count(request), 1U) << std::hex << request;
            issued_.insert(request);
        }
        succeeded_ = succeeded_ || result >= 0;
        if (leaves_open(command)) {
            EXPECT_LE(board.open_descriptors(), 2U);
            close_what_was_left();
        }
        EXPECT_EQ(board.open_descriptors(), 0U);
        EXPECT_EQ(board.held_locks(), 0U);
        return board.calls.size();
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
    void check(const CommandForm& form, DeviceCommandCode command, bool failing_calls)
    {
        char name[32];
        snprintf(name, sizeof name, "command 0x%04X", command);
        SCOPED_TRACE(name);
        const Bytes record = record_draw();
        board_put();
        board.restart();
        const size_t made = run(form, command, record);
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
                run(form, command, record);
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

TEST_F(AllCommands, AreAllDescribedHere)
{
    std::set<uint32_t> described;
    for (const CommandForm& form : commandForms_get()) {
        for (const uint32_t code : form.codes) {
            EXPECT_TRUE(described.insert(code).second) << std::hex << code;
        }
    }
    std::set<uint32_t> known;
    for (const DeviceCommand& command : commandTable_get()) {
        known.insert(command.code);
    }
    EXPECT_EQ(described, known);
    EXPECT_EQ(described.size(), 189U);
}

TEST_F(AllCommands, KeepTheirPromisesWhateverFails)
{
    Requests all;
    for (const CommandForm& form : commandForms_get()) {
        for (const uint32_t code : form.codes) {
            issued_.clear();
            succeeded_ = false;
            // As many records as it takes for the command to succeed and to issue all its requests.
            // Under an emulator calls fail with one of them, and with others until a run succeeds.
            const Requests& own = commandRequests_get(code);
            for (uint32_t record = 0;
                 record < 3 || (record < 400 && (!succeeded_ || issued_.size() < own.size()));
                 ++record) {
                check(form, code, kRoundsPerRound == 1 || record == 0 || !succeeded_);
                ASSERT_FALSE(HasFailure());
            }
            EXPECT_TRUE(succeeded_) << "never got anywhere: command " << std::hex << code;
            all.insert(issued_.begin(), issued_.end());
        }
    }
    for (uint32_t request = 0x6B00; request <= 0x6BFF; ++request) {
        EXPECT_EQ(all.count(request) != 0, requestForm_find(request) != nullptr)
            << "request " << std::hex << request;
    }
}

} // namespace
