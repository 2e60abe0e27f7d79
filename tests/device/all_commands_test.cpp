// What holds for all 189 commands: run over random records and device states, with every call
// failing in turn, a command returns one of its documented results, leaves no descriptor (but for
// the two that do on purpose), touches nothing outside its own record and asks the driver for
// nothing but its own requests.
#include <map>
#include <random>

#include "device/command_requests.h"
#include "device/command_table.h"
#include "device/device_test.h"

namespace
{

using Results = std::set<int32_t>;

// Codes with their documented results and the bytes of their record (in and out). Command 62
// returns whatever its request does, here 0 or a failure's -1.
struct Form {
    std::vector<uint32_t> codes;
    Results results;
    size_t record;
};

const Form kForms[] = {
    // Status, control, port flags, line bits, identity
    {{0x0000, 0x0008}, {0, -1, -2}, 12},
    {{0x0002, 0x000C}, {0, -1, -2}, 1},
    {{0x0004}, {0, -1, -2}, 4},
    {{0x0006}, {0, -1, -2}, 2},
    {{0x0007, 0x000D}, {0, -1, -4}, 3},
    {{0x0009}, {0, -1, -2, -4}, 12},
    {{0x001B, 0x001F}, {0, -1, -2, -4}, 44},
    {{0x002C}, {0, -1, -2}, 14},
    // PHYs and bandwidth
    {{0x002A}, {0, -1, -2, -5}, 9},
    {{0x002B}, {0, -1, -4, -5}, 9},
    {{0x0600}, {0, -1, -2, -5}, 8},
    {{0x0601}, {0, -1, -4, -5}, 8},
    {{0x000A}, {0, -1, -2, -3}, 2},
    {{0x000B}, {0, -1, -2, -4, -5}, 2},
    // MTU
    {{0x0048}, {0, -1, -2}, 6},
    {{0x0049}, {0, -1, -4}, 2},
    {{0x004A, 0x004E}, {0, -1, -2}, 2},
    {{0x004B, 0x004F}, {0, -1, -2, -4}, 2},
    {{0x004C}, {0, -1}, 20},
    {{0x004D}, {0, -1, -2}, 20},
    // Address entries and sets, identifier entries, latched register, mode
    {{0x002E}, {0, -1, -2, -5}, 32},
    {{0x002F}, {0, -1, -4, -5}, 32},
    {{0x0030}, {0, -1, -4}, 32},
    {{0x0032}, {0, -1, -2, -5}, 48},
    {{0x0033}, {0, -1, -4, -5}, 48},
    {{0x0034}, {0, -1, -4}, 48},
    {{0x0050}, {0, -1, -2, -4}, 4},
    {{0x0052}, {0, -1, -2, -3, -5}, 10},
    {{0x0053}, {0, -1, -2, -4, -5}, 10},
    {{0x0054}, {0, -1, -2, -3, -5}, 6},
    {{0x008E}, {0, -1, -2}, 2},
    {{0x008F}, {0, -1, -2, -4}, 2},
    // Device words
    {{0x0036, 0x0038, 0x0040, 0x0042, 0x0056, 0x009C}, {0, -1, -2}, 2},
    {{0x0046}, {0, -1, -2}, 4},
    {{0x0037, 0x0039, 0x003F, 0x0041, 0x0043}, {0, -1, -4}, 2},
    {{0x003A}, {0, -1, -2}, 1},
    {{0x003B}, {0, -1, -2, -4}, 1},
    {{0x003E}, {0, -1}, 2},
    {{0x0044}, {0, -1, -2, -3}, 2},
    {{0x0045}, {0, -1, -4, -5}, 2},
    {{0x009D}, {0, -1, -2, -4}, 2},
    // Front panel
    {{0x000E}, {0, -1, -2, -5}, 44},
    {{0x0011, 0x0013, 0x0015, 0x0017, 0x001D, 0x0021, 0x0023, 0x0025, 0x0027, 0x0029},
     {0, 1, -1, -2, -4},
     44},
    {{0x0019}, {0, 1, -1, -2}, 44},
    {{0x003C}, {0, -1, -2}, 4},
    {{0x0094, 0x0095, 0x0097}, {0, -1, -2, -4}, 0},
    {{0x0096}, {0, -1, -2, -4}, 44},
    {{0x00A9}, {0, -1, -2}, 6},
    // Register fields
    {{0x0058, 0x006A, 0x006E, 0x0092, 0x0098, 0x009A, 0x0606}, {0, -1, -2}, 2},
    {{0x0059, 0x006F}, {0, -1, -2, -4, -5}, 2},
    {{0x0093, 0x0099, 0x009B, 0x0607}, {0, -1, -2, -4}, 2},
    {{0x0062}, {0, -1, -2}, 4},
    {{0x0063}, {0, -1, -2, -4}, 4},
    {{0x0068}, {0, -1, -2}, 8},
    {{0x006B}, {0, -1, -2, -4, -5}, 4},
    {{0x006C}, {0, -1, -2, -5}, 4},
    {{0x006D}, {0, -1, -2, -4, -5}, 4},
    {{0x0070, 0x0071}, {0, -1, -2, -4, -5}, 12},
    {{0x0072, 0x0074, 0x0076, 0x0078, 0x007A, 0x007C, 0x007E, 0x0080, 0x0082, 0x0084, 0x0086,
      0x0090, 0x00AA, 0x00AC},
     {0, -1, -2},
     1},
    {{0x0073, 0x0075, 0x0077, 0x0079, 0x007B, 0x007F, 0x0081, 0x0083, 0x0085, 0x0087, 0x0091,
      0x00AB, 0x00AD},
     {0, -1, -2, -4},
     1},
    {{0x0088}, {0, -1, -2}, 4},
    {{0x0089}, {0, -1, -2, -4}, 4},
    {{0x008A}, {0, -1, -2}, 6},
    {{0x008B}, {0, -1, -4}, 6},
    {{0x00A4, 0x00A5}, {0, -1, -2, -3, -4}, 6},
    {{0x0122, 0x0123}, {0, -1, -2}, 6},
    // Maps and blocks
    {{0x005A}, {0, -1, -2, -5}, 14},
    {{0x005B}, {0, -1, -2, -4, -5}, 14},
    {{0x005C}, {0, -1, -4, -5}, 14},
    {{0x005E, 0x0060}, {0, -1, -2}, 16},
    {{0x005F, 0x0061}, {0, -1, -2, -3, -4}, 16},
    {{0x0066}, {0, -1, -2}, 22},
    {{0x0067}, {0, -1, -2, -4, -5}, 22},
    {{0x008C}, {0, -1, -2}, 12},
    {{0x008D}, {0, -1, -2, -4}, 12},
    // Statistics, counters, driver
    {{0x0100, 0x0102}, {0, -1, -2}, 496},
    {{0x0064}, {0, -1, -2}, 4},
    {{0x0065}, {0, -1, -4}, 4},
    {{0x009E}, {0, -1, -2}, 8},
    {{0x009F}, {0, -1, -4}, 8},
    {{0x00A6}, {0, -1, -2, -4}, 8},
    {{0x00A0}, {0, -1, -2}, 8},
    {{0x00A1}, {0, -1, -2, -4, -5}, 8},
    {{0x00A2}, {0, -1, -2}, 8},
    {{0x00A3}, {0, -1, -2}, 2},
    {{0x00A7, 0x00A8}, {0, -1, -2}, 4},
    {{0x0104}, {0, -1, -2, -5}, 9},
    {{0x0105}, {0, -1, -2, -4, -5}, 9},
    {{0x0106}, {0, -1, -2, -5}, 14},
    {{0x0107, 0x0108}, {0, -1, -4, -5}, 14},
    {{0x010B, 0x0117}, {0, -1, -4}, 1},
    {{0x010C}, {0, -1, -2}, 2},
    {{0x010F}, {0, -1, -4}, 16},
    {{0x0111}, {0, -1, -4}, 5},
    {{0x0114}, {0, -1, -2, -4}, 2},
    {{0x0119}, {0, -1, -4}, 8},
    {{0x011B}, {0, -1, -4}, 2},
    {{0x0401, 0x0402, 0x0403, 0x0404}, {0, -1, -2}, 12},
    {{0x0405}, {0, -1, -2}, 160},
    {{0x0406}, {0, -1, -2}, 68},
    {{0x0500}, {0, -1}, 2},
    {{0x0602, 0x0603, 0x0604, 0x0605}, {0, -1, -2}, 2},
    // Rules
    {{0x011C}, {0, -1, -2, -5}, 496},
    {{0x011D, 0x011E}, {0, -1, -4, -5}, 38},
    // Clock, switch tables, unit
    {{0x0200}, {0, -1, -2}, 14},
    {{0x0201}, {0, -1, -4}, 14},
    {{0x0202}, {0, -1, -2}, 4},
    {{0x0203}, {0, -1, -4}, 4},
    {{0x0120}, {0, -1, -2, -5}, 0},
    {{0x0121}, {0, -1, -2, -4, -5}, 0},
    {{0x0300}, {0, -1, -2, -3}, 9},
    {{0x0400}, {0, -1}, 4},
};

// The two commands that leave the device open when their request fails.
bool leaves_open(DeviceCommandCode command)
{
    return command == 0x0040 || command == 0x0041;
}

// The caller's memory: guard, record, guard.
constexpr size_t kGuard = 64;
constexpr size_t kMemory = kGuard + 496 + kGuard;

class AllCommands : public DeviceTest
{
  protected:
    uint32_t random(uint32_t limit = UINT32_MAX)
    {
        return std::uniform_int_distribution<uint32_t>(0, limit)(engine_);
    }

    // A state in which most commands get far: small numbers are as likely as any.
    uint16_t random_word() { return static_cast<uint16_t>(random(1) == 0 ? random(31) : random()); }

    void board_put()
    {
        board.fpga = FpgaModel();
        for (uint32_t request = 0x6B02; request <= 0x6BA6; ++request) {
            board.fpga.words[request] = random_word();
        }
        board.fpga.words[0x6B3B] = random();
        board.fpga.words[0x6B3D] = random();
        board.fpga.words[0x6B8D] = random();
        for (uint32_t address = 0; address < 0x200; address += 2) {
            board.fpga.registers[address] = random_word();
        }
        for (const uint16_t phy : std::initializer_list<uint16_t>{9, 1, 2, 3, 4, 5, 8}) {
            for (uint16_t& mii : board.fpga.phys[phy]) {
                mii = static_cast<uint16_t>(random());
            }
        }
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
    size_t run(const Form& form, DeviceCommandCode command, const Bytes& record)
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
    void check(const Form& form, DeviceCommandCode command, bool failing_calls)
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
    for (const Form& form : kForms) {
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
    for (const Form& form : kForms) {
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
