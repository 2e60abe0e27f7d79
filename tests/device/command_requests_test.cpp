// What the commands ask of the driver, all together: every command is run with many arguments and
// device states, and must issue its own requests, each of them at least once, and no other.
#include "device/command_requests.h"

#include <array>

#include "device/device_test.h"
#include "device/dispatch/command_table.h"

namespace
{

using Words = std::initializer_list<uint16_t>;

class CommandRequests : public DeviceTest
{
  protected:
    // The requests on /dev/fpga in the calls so far, also those on a closed descriptor.
    [[nodiscard]] Requests issued() const
    {
        Requests requests;
        for (const std::string& call : board.calls) {
            for (const char* on : {"ioctl ", "ioctl (closed) "}) {
                const size_t length = strlen(on);
                if (call.compare(0, length, on) == 0 && isxdigit(call[length]) != 0) {
                    requests.insert(
                        static_cast<uint32_t>(std::stoul(call.substr(length, 4), nullptr, 16)));
                }
            }
        }
        return requests;
    }

    CommandRequests()
    {
        board.file_put("/tmp/ks8995_nor.dat", Bytes(128, '\x01'));
        board.file_put("/tmp/ks8995_pri.dat", Bytes(128, '\x02'));
        board.file_put("/conf/statistics", Bytes(496, '\0'));
    }

    // A device on which every command finds what it needs; `words` is what each word holds, but
    // for the bitmaps.
    void device_put(uint16_t words, bool inhibited)
    {
        board.fpga = FpgaModel();
        for (uint32_t request = 0x6B02; request <= 0x6BA6; ++request) {
            board.fpga.words[request] = words;
        }
        board.fpga.words[0x6B29] = 1; // the own identifier
        board.fpga.words[0x6B3B] = 0xFFFFFFFF;
        board.fpga.words[0x6B3D] = 0;
        board.fpga.words[0x6B8D] = 0;
        const bool present = board.file_exists("/tmp/led_rewrite_inh");
        if (inhibited && !present) {
            board.file_put("/tmp/led_rewrite_inh", Bytes(44, '\0'));
        } else if (!inhibited && present) {
            board.file_remove("/tmp/led_rewrite_inh");
        }
    }

    Requests run(DeviceCommandCode command, const std::array<uint16_t, 4>& argument)
    {
        alignas(uint32_t) std::array<uint16_t, 256> record{};
        std::copy(argument.begin(), argument.end(), record.begin());
        board.restart();
        Fpga_Register_Set(command, record.data());
        return issued();
    }

    // Everything that the command issues in all the runs.
    Requests run_all(DeviceCommandCode command)
    {
        Requests all;
        for (const bool inhibited : {false, true}) {
            for (const uint16_t first : Words{0, 1, 2, 5}) {
                for (const uint16_t second : Words{0, 2}) {
                    for (const uint16_t third : Words{0, 1}) {
                        for (const uint16_t words : Words{0, 0x3000}) {
                            device_put(words, inhibited);
                            all.merge(run(command, {first, second, third, 0}));
                        }
                    }
                }
            }
        }
        return all;
    }
};

std::string text_of(const Requests& requests)
{
    std::string text;
    for (const uint32_t request : requests) {
        char number[8];
        snprintf(number, sizeof number, "%04X ", request);
        text += number;
    }
    return text;
}

TEST_F(CommandRequests, EveryCommandIssuesItsOwnRequestsAndNoOther)
{
    for (const DeviceCommand& command : commandTable_get()) {
        EXPECT_EQ(text_of(run_all(command.code)), text_of(commandRequests_get(command.code)))
            << "command " << std::hex << command.code;
    }
}

TEST_F(CommandRequests, OnlyTheseCommandsLeaveTheDriverAlone)
{
    std::set<DeviceCommandCode> without;
    for (const DeviceCommand& command : commandTable_get()) {
        if (commandRequests_get(command.code).empty()) {
            without.insert(command.code);
        }
    }
    EXPECT_EQ(without,
              (std::set<DeviceCommandCode>{0x004C, 0x0200, 0x0201, 0x0202, 0x0203, 0x0300}));
}

TEST_F(CommandRequests, EveryRequestOfTheDriverHasACommand)
{
    Requests used;
    for (const DeviceCommand& command : commandTable_get()) {
        const Requests& requests = commandRequests_get(command.code);
        used.insert(requests.begin(), requests.end());
    }
    for (uint32_t request = 0x6B00; request <= 0x6BFF; ++request) {
        EXPECT_EQ(requestForm_find(request) != nullptr, used.count(request) != 0)
            << std::hex << request;
    }
}

// The rows that the command's own procedure does not show: its requests come from elsewhere.
TEST_F(CommandRequests, TellsWhatACommandIssuesThroughOthers)
{
    EXPECT_EQ(commandRequests_get(RD_PORT_STATE_CODE), (Requests{0x6B3B, 0x6B60}));
    EXPECT_EQ(commandRequests_get(WR_PAIR_WORDS), (Requests{0x6B77}));
    EXPECT_EQ(commandRequests_get(RD_BANDWIDTH), (Requests{0x6B42, 0x6B98}));
    EXPECT_EQ(commandRequests_get(WR_LED_GROUP_1), (Requests{0x6B03, 0x6B04, 0x6B11, 0x6B12}));
    EXPECT_EQ(commandRequests_get(0x0001), Requests{});
}

} // namespace
