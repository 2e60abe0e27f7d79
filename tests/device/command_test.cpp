#include "device/command_test.h"

Bytes untouched(size_t size)
{
    return Bytes(size, static_cast<char>(kUntouched));
}

void* CommandTest::put(const Bytes& record)
{
    EXPECT_LE(record.size(), kRecordMax);
    size_ = record.size();
    memset(memory_, kUntouched, sizeof memory_);
    record.copy(memory_ + kGuard, size_);
    return memory_ + kGuard;
}

Bytes CommandTest::record() const
{
    EXPECT_EQ(Bytes(memory_, kGuard), guard()) << "before the record: " << command_name(ran_);
    EXPECT_EQ(Bytes(memory_ + kGuard + size_, kGuard), guard())
        << "behind the record: " << command_name(ran_);
    return {memory_ + kGuard, size_};
}

void CommandTest::put_byte(size_t offset, unsigned value)
{
    ASSERT_LT(offset, size_);
    memory_[kGuard + offset] = static_cast<char>(static_cast<uint8_t>(value));
}

std::function<void*()> CommandTest::with(const Bytes& record)
{
    return [this, record] {
        if (device_put) {
            device_put();
        }
        return put(record);
    };
}

int32_t CommandTest::run(DeviceCommandCode command, const Bytes& record)
{
    if (device_put) {
        device_put();
    }
    put(record);
    return run(command);
}

int32_t CommandTest::run(DeviceCommandCode command)
{
    ran_ = command;
    return Fpga_Register_Set(command, memory_ + kGuard);
}

void CommandTest::expect_run(DeviceCommandCode command, const Bytes& before, int32_t result,
                             const Bytes& after)
{
    EXPECT_EQ(run(command, before), result)
        << command_name(command) << " of " << testing::PrintToString(before);
    EXPECT_EQ(record(), after) << command_name(command) << " of " << testing::PrintToString(before);
}

void CommandTest::expect_refused(DeviceCommandCode command, const Bytes& before)
{
    SCOPED_TRACE(command_name(command));
    expect_course(command, with(before)(), {}, DEVICE_BAD_ARGUMENT);
    EXPECT_EQ(record(), before);
}

void CommandTest::expect_kept(DeviceCommandCode command, const Bytes& before)
{
    SCOPED_TRACE(command_name(command));
    board.restart();
    EXPECT_GE(run(command, before), 0);
    const size_t calls = board.call_count();
    size_t failed = 0;
    for (size_t failing = 1; failing <= calls; ++failing) {
        SCOPED_TRACE("from call " + std::to_string(failing) + " on");
        board.restart();
        board.fail_from(failing);
        if (run(command, before) < 0) {
            EXPECT_EQ(record(), before);
            ++failed;
        }
    }
    EXPECT_NE(failed, 0U);
    board.restart();
}

void CommandTest::prove_record(DeviceCommandCode command, const Bytes& before, const Course& course,
                               const Bytes& after, int32_t result)
{
    prove(command, with(before), course, result);
    expect_run(command, before, result, after);
}

void CommandTest::close_left_open(size_t expected)
{
    EXPECT_EQ(board.open_descriptors(), expected);
    while (board.open_descriptors() > 0) {
        board.closing(board.descriptors().begin()->first);
    }
}

Bytes CommandTest::record_after(DeviceCommandCode command, const Bytes& before, int32_t result)
{
    EXPECT_EQ(run(command, before), result) << command_name(command);
    return record();
}

void CommandTest::expect_calls(DeviceCommandCode command, const Bytes& before, const Course& course,
                               const Bytes& after, int32_t result)
{
    SCOPED_TRACE(command_name(command));
    expect_course(command, with(before)(), course, result);
    EXPECT_EQ(record(), after);
}
