#include "device/device_test.h"

#include "device/command_facts.h"

namespace
{

std::string request_line(uint32_t request)
{
    char text[32];
    snprintf(text, sizeof text, "ioctl %04X", request);
    return text;
}

std::string record_line(uint32_t request, const Bytes& record)
{
    return request_line(request) + hex_pairs(record);
}

// Of a device or a file.
bool is_open(const std::string& call)
{
    return call.rfind("open ", 0) == 0 || call.rfind("fopen ", 0) == 0;
}

bool is_close(const std::string& call)
{
    return call.rfind("close ", 0) == 0 || call.rfind("fclose ", 0) == 0;
}

std::string close_of(const std::string& open)
{
    const size_t path = open.find(' ') + 1;
    return (open[0] == 'f' ? "fclose " : "close ") + open.substr(path, open.find(' ', path) - path);
}

bool is_sleep(const std::string& call)
{
    return call.rfind("sleep ", 0) == 0 || call.rfind("usleep ", 0) == 0;
}

// The calls of a run in which the given step fails, and the closes that must follow it.
Trace failed_run(const Course& course, size_t failing)
{
    Trace calls;
    std::vector<std::string> open;
    for (size_t i = 0; i <= failing; ++i) {
        const std::string& call = course[i].call;
        calls.push_back(call);
        if (is_open(call) && i != failing) {
            open.push_back(close_of(call));
        } else if (is_close(call)) {
            open.pop_back();
        }
    }
    calls.back() += " -> failed";
    calls.insert(calls.end(), open.rbegin(), open.rend());
    return calls;
}

const Trace kRetry{"usleep 1"};

} // namespace

Step opens_to_read(int32_t failure)
{
    return {"open /dev/fpga O_RDONLY|O_NONBLOCK", failure};
}

Step opens_to_write(int32_t failure)
{
    return {"open /dev/fpga O_RDWR|O_NONBLOCK", failure};
}

Step closes()
{
    return {"close /dev/fpga", kIgnored};
}

Step word_read(uint32_t request, int32_t failure)
{
    return record_read(request, le16(0), failure);
}

Step map_read(uint32_t request, int32_t failure)
{
    return record_read(request, le32(0), failure);
}

Step value_write(uint32_t request, uint32_t value, int32_t failure)
{
    char text[16];
    snprintf(text, sizeof text, " =%04X", value);
    return {request_line(request) + text, failure};
}

Step register_read(uint32_t address, int32_t failure)
{
    return record_read(0x6B42, le32(address) + le32(0), failure);
}

Step register_write(uint32_t address, uint32_t value, int32_t failure)
{
    return record_write(0x6B43, le32(address) + le32(value), failure);
}

Step record_read(uint32_t request, const Bytes& record, int32_t failure)
{
    return {record_line(request, record), failure};
}

Step record_write(uint32_t request, const Bytes& record, int32_t failure)
{
    return {record_line(request, record), failure};
}

Step sleeps(unsigned seconds)
{
    return {"sleep " + std::to_string(seconds), kIgnored};
}

Course operator+(Course first, const Course& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Trace calls_of(const Course& course, size_t from)
{
    Trace calls;
    for (size_t i = from; i < course.size(); ++i) {
        calls.push_back(course[i].call);
    }
    return calls;
}

void DeviceTest::expect_course(DeviceCommandCode command, void* argument, const Course& course,
                               int32_t result)
{
    board.restart();
    EXPECT_EQ(Fpga_Register_Set(command, argument), result);
    EXPECT_EQ(board.calls, calls_of(course));
    EXPECT_EQ(board.open_descriptors(), 0U);
}

void DeviceTest::prove_failure(DeviceCommandCode command, const std::function<void*()>& prepare,
                               const Course& course, size_t failing, int32_t result)
{
    SCOPED_TRACE("failing call " + std::to_string(failing) + ": " + course[failing].call);
    const int32_t failure = course[failing].failure;
    if (failure == kIgnored) {
        board.restart();
        void* argument = prepare();
        board.fail_call(failing + 1);
        EXPECT_EQ(Fpga_Register_Set(command, argument), result);
        Trace expected = calls_of(course);
        expected[failing] += " -> failed";
        EXPECT_EQ(board.calls, expected);
        EXPECT_EQ(board.open_descriptors(), 0U);
        return;
    }
    const Trace failed = failed_run(course, failing);
    const bool retried = failure != DEVICE_BAD_ARGUMENT && command != RD_DEVICE_WORD_40;

    board.restart();
    void* argument = prepare();
    board.fail_call(failing + 1);
    EXPECT_EQ(Fpga_Register_Set(command, argument), retried ? result : failure);
    EXPECT_EQ(board.calls, retried ? failed + kRetry + calls_of(course) : failed);
    EXPECT_EQ(board.open_descriptors(), 0U);

    board.restart();
    argument = prepare();
    board.fail_calls({failing + 1, failed.size() + 1 + failing + 1});
    EXPECT_EQ(Fpga_Register_Set(command, argument), failure);
    EXPECT_EQ(board.calls, retried ? failed + kRetry + failed + kRetry : failed);
    EXPECT_EQ(board.open_descriptors(), 0U);
}

void DeviceTest::prove(DeviceCommandCode command, const std::function<void*()>& prepare,
                       const Course& course, int32_t result)
{
    SCOPED_TRACE(command_name(command));
    board.restart();
    expect_course(command, prepare(), course, result);
    for (size_t failing = 0; failing < course.size(); ++failing) {
        if (!is_sleep(course[failing].call) && course[failing].failure != kElsewhere) {
            prove_failure(command, prepare, course, failing, result);
        }
    }
    board.restart();
}

void DeviceTest::expect_refused(DeviceCommandCode command, void* argument)
{
    expect_course(command, argument, {}, DEVICE_BAD_ARGUMENT);
}

void DeviceTest::fail_in_both_runs(size_t n, size_t descriptors)
{
    const size_t first_run = n + descriptors;
    board.fail_calls({n, first_run + kRetry.size() + n});
}

void DeviceTest::for_every_word(const std::function<void(uint16_t)>& check)
{
    board.recording = false;
    for (uint32_t word = 0; word <= UINT16_MAX && !HasFailure(); word = wordTried_after(word)) {
        check(static_cast<uint16_t>(word));
    }
    board.recording = true;
    EXPECT_EQ(board.open_descriptors(), 0U);
}
