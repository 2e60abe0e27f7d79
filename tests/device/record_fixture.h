// Commands that carry a record between the caller and one or two requests of the driver. The
// caller's record is bytes here, at the offsets that the commands document.
#pragma once

#include "device/device_test.h"

inline Bytes zeros(size_t count)
{
    return Bytes(count, '\0');
}

// The flags that a setter may be given: 1 sets, the others clear.
constexpr uint8_t kFlags[] = {0, 1, 2, 255};

class RecordTest : public DeviceTest
{
  protected:
    // Sets the device before each run, where a run changes it.
    std::function<void()> device_put;

    void record_put(const Bytes& start) { memory_ = kGuard + start + kGuard; }

    void* record() { return &memory_[kGuard.size()]; }

    [[nodiscard]] Bytes record_bytes() const
    {
        return memory_.substr(kGuard.size(), memory_.size() - 2 * kGuard.size());
    }

    // Prepares a run of a command on such a record.
    std::function<void*()> with(const Bytes& start)
    {
        return [this, start] {
            if (device_put) {
                device_put();
            }
            record_put(start);
            return record();
        };
    }

    int32_t run(DeviceCommandCode command, const Bytes& start)
    {
        return Fpga_Register_Set(command, with(start)());
    }

    // The caller's record, and nothing changed before and behind it.
    void expect_record(const Bytes& expected) const
    {
        EXPECT_EQ(memory_, kGuard + expected + kGuard);
    }

    void prove_record(DeviceCommandCode command, const Bytes& start, const Course& course,
                      const Bytes& after)
    {
        prove(command, with(start), course);
        EXPECT_EQ(run(command, start), 0);
        expect_record(after);
    }

    // The third call of a command, its write, fails: in the first run, in both. The record that the
    // second run starts from is the first run's.
    void prove_write_failure(DeviceCommandCode command, const Bytes& start, const Bytes& after,
                             const Trace& first, const Trace& second)
    {
        ASSERT_EQ(first.size(), 4U);
        Trace once = first;
        once[2] += " -> failed";
        once.emplace_back("usleep 1");
        once.insert(once.end(), second.begin(), second.end());
        board.restart();
        board.fail_call(3);
        EXPECT_EQ(run(command, start), 0);
        EXPECT_EQ(board.calls, once);
        expect_record(after);

        Trace twice = once;
        twice[7] += " -> failed";
        twice.emplace_back("usleep 1");
        board.restart();
        fail_in_both_runs(3, 1);
        EXPECT_EQ(run(command, start), -4);
        EXPECT_EQ(board.calls, twice);
        expect_record(after);
        EXPECT_EQ(board.open_descriptors(), 0U);
    }

    void expect_refused_record(DeviceCommandCode command, const Bytes& start)
    {
        board.restart();
        expect_refused(command, with(start)());
        expect_record(start);
    }

    // The caller's record after a run that cannot open the device.
    void expect_kept_unopened(DeviceCommandCode command, const Bytes& start)
    {
        board.fpga_present = false;
        EXPECT_EQ(run(command, start), -1);
        board.fpga_present = true;
        expect_record(start);
    }

    // The caller's record after a run whose request fails.
    void expect_after_failed(DeviceCommandCode command, const Bytes& start, uint32_t request,
                             int32_t failure, const Bytes& after)
    {
        SCOPED_TRACE(request);
        board.fpga.results[request] = -1;
        EXPECT_EQ(run(command, start), failure);
        board.fpga.results.erase(request);
        expect_record(after);
    }

    // Runs a command and gives the caller's record other bytes just before the driver serves the
    // request: the driver gets these if, and only if, it was given the caller's own record.
    int32_t run_changing(DeviceCommandCode command, const Bytes& start, uint32_t request,
                         const Bytes& other)
    {
        char served[16];
        snprintf(served, sizeof served, "ioctl %04X", request);
        board.before_call = [this, &other, &served](const std::string& call) {
            if (call.rfind(served, 0) == 0) {
                memory_.replace(kGuard.size(), other.size(), other);
            }
        };
        const int32_t result = run(command, start);
        board.before_call = nullptr;
        return result;
    }

    // The caller's record as a run's requests have left it, when the device is about to be closed.
    Bytes record_before_close(DeviceCommandCode command, const Bytes& start)
    {
        Bytes bytes;
        board.before_call = [this, &bytes](const std::string& call) {
            if (call == "close /dev/fpga") {
                bytes = record_bytes();
            }
        };
        EXPECT_EQ(run(command, start), 0);
        board.before_call = nullptr;
        return bytes;
    }

  private:
    const Bytes kGuard = Bytes(16, '\xA5');
    Bytes memory_;
};
