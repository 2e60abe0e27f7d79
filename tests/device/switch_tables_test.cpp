// Loading the tables of the Ethernet switch.
#include <algorithm>

#include "device/device_test.h"

namespace
{

constexpr const char* kNormal = "/tmp/ks8995_nor.dat";
constexpr const char* kPriority = "/tmp/ks8995_pri.dat";

struct Load {
    DeviceCommandCode command;
    uint32_t request;
    int32_t refused;
};
constexpr Load kLoads[] = {{0x0120, 0x6B79, -2}, {0x0121, 0x6B78, -4}};

// Bytes that tell their place.
Bytes table_of(unsigned seed, size_t length)
{
    Bytes bytes;
    for (size_t i = 0; i < length; ++i) {
        bytes += static_cast<char>(seed + 3 * i);
    }
    return bytes;
}

Bytes record_of(uint16_t status, const Bytes& normal, const Bytes& priority)
{
    return le16(status) + normal + priority + Bytes(2, '\0');
}

class SwitchTables : public DeviceTest
{
  protected:
    void files_put(size_t normal, size_t priority)
    {
        board.file_put(kNormal, table_of(1, normal));
        board.file_put(kPriority, table_of(100, priority));
    }

    static Course course_of(const Load& load, uint16_t status)
    {
        Course course{
            opens_to_write(),
            word_read(0x6B02),
            {std::string("fopen ") + kNormal + " r", -5},
            {std::string("fread ") + kNormal + " 128", -5},
            {std::string("fclose ") + kNormal, kIgnored},
            {std::string("fopen ") + kPriority + " r", -5},
            {std::string("fread ") + kPriority + " 128", -5},
            {std::string("fclose ") + kPriority, kIgnored},
            record_write(load.request, record_of(status, table_of(1, 128), table_of(100, 128)),
                         load.refused),
            closes(),
        };
        return course;
    }
};

TEST_F(SwitchTables, AreLoadedWithTheStatusBit)
{
    for (const Load& load : kLoads) {
        for (const auto& [word, status] : {std::pair<uint32_t, uint16_t>{0x0F3F, 0x0100},
                                           {0xFEFF, 0},
                                           {0xFFFF, 0x0100},
                                           {0, 0}}) {
            files_put(128, 128);
            board.fpga.words[0x6B02] = word;
            expect_course(load.command, nullptr, course_of(load, status));
            EXPECT_EQ(board.fpga.written.at(load.request),
                      record_of(status, table_of(1, 128), table_of(100, 128)));
        }
    }
}

TEST_F(SwitchTables, OnlyTheFirst128BytesCount)
{
    for (const Load& load : kLoads) {
        files_put(200, 200);
        board.fpga.words[0x6B02] = 0;
        expect_course(load.command, nullptr, course_of(load, 0));
    }
}

TEST_F(SwitchTables, EveryFailingCall)
{
    for (const Load& load : kLoads) {
        const Course course = course_of(load, 0x0100);
        for (size_t failing = 0; failing < course.size(); ++failing) {
            SCOPED_TRACE(course[failing].call);
            const int32_t failure = course[failing].failure;
            const bool retried = failure == -1 || failure == -2 || failure == -4;
            board.restart();
            files_put(128, 128);
            board.fpga.words[0x6B02] = 0x0100;
            board.fail_call(failing + 1);
            const int32_t result = failure == kIgnored || retried ? 0 : failure;
            EXPECT_EQ(Fpga_Register_Set(load.command, nullptr), result);
            EXPECT_EQ(board.open_descriptors(), 0U);

            // The failed run goes as far as the call; then its file, if it is open, and the device
            // are closed.
            Trace expected;
            for (size_t i = 0; i <= failing; ++i) {
                expected.push_back(course[i].call);
            }
            expected.back() += " -> failed";
            if (failure == kIgnored) {
                for (size_t i = failing + 1; i < course.size(); ++i) {
                    expected.push_back(course[i].call);
                }
            } else {
                if (failing == 3 || failing == 6) {
                    expected.push_back(course[failing + 1].call);
                }
                if (failing > 0) {
                    expected.emplace_back("close /dev/fpga");
                }
                if (retried) {
                    expected.emplace_back("usleep 1");
                    for (const Step& step : course) {
                        expected.push_back(step.call);
                    }
                }
            }
            EXPECT_EQ(board.calls, expected);
            const bool sent = result == 0;
            size_t deliveries = 0;
            for (const std::string& call : board.calls) {
                deliveries += call.rfind(course[8].call, 0) == 0 ? 1 : 0;
            }
            EXPECT_EQ(deliveries, failing == 8 ? 2U : (sent ? 1U : 0U));
        }
    }
}

TEST_F(SwitchTables, RefusedInBothRuns)
{
    for (const Load& load : kLoads) {
        files_put(128, 128);
        board.fpga.results[load.request] = -1;
        EXPECT_EQ(Fpga_Register_Set(load.command, nullptr), load.refused);
        board.fpga.results.clear();
        board.fpga.results[0x6B02] = -1;
        EXPECT_EQ(Fpga_Register_Set(load.command, nullptr), -2);
        board.fpga.results.clear();
        board.fpga_present = false;
        EXPECT_EQ(Fpga_Register_Set(load.command, nullptr), -1);
        board.fpga_present = true;
    }
}

TEST_F(SwitchTables, MissingOrShortFilesSendNothing)
{
    for (const Load& load : kLoads) {
        for (const bool normal : {true, false}) {
            for (const int length : {-1, 0, 1, 127}) { // -1: no file
                SCOPED_TRACE(length);
                files_put(128, 128);
                const char* file = normal ? kNormal : kPriority;
                board.file_put(file, table_of(1, static_cast<size_t>(std::max(length, 0))));
                if (length < 0) {
                    board.file_remove(file);
                }
                board.restart();
                EXPECT_EQ(Fpga_Register_Set(load.command, nullptr), -5);
                EXPECT_EQ(board.fpga.written.count(load.request), 0U);
                // A bad argument's code: not run twice.
                EXPECT_EQ(std::count(board.calls.begin(), board.calls.end(),
                                     "open /dev/fpga O_RDWR|O_NONBLOCK"),
                          1);
                EXPECT_EQ(board.calls.back(), "close /dev/fpga");
            }
        }
    }
}

} // namespace
