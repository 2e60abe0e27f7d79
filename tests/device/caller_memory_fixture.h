// Commands whose requests work in the caller's own memory, or in a copy of it.
#pragma once

#include "device/command_test.h"

class CallerMemoryTest : public CommandTest
{
  protected:
    // Runs a command and gives the caller's record other bytes just before the driver serves the
    // request: the driver gets these if, and only if, it was given the caller's own record.
    int32_t run_changing(DeviceCommandCode command, const Bytes& before, uint32_t request,
                         const Bytes& other)
    {
        char served[16];
        snprintf(served, sizeof served, "ioctl %04X", request);
        return run_stepping_in(command, before, served, [&] { put(other); });
    }

    // The caller's record as a run's requests have left it, when the device is about to be closed.
    Bytes record_before_close(DeviceCommandCode command, const Bytes& before)
    {
        Bytes bytes;
        EXPECT_EQ(run_stepping_in(command, before, "close", [&] { bytes = record(); }), 0);
        return bytes;
    }

    // A report that the driver fills in the caller's own memory, of which it gets the part from an
    // offset on.
    void prove_filled(DeviceCommandCode command, uint32_t request, const Bytes& before,
                      const Bytes& after, size_t offset = 0)
    {
        prove_record(command, before,
                     {opens_to_read(), record_read(request, before.substr(offset)), closes()},
                     after);
        EXPECT_EQ(record_before_close(command, before), after);
        expect_kept(command, before);
    }

    // A command that reads into the caller's own memory, changes it there and writes it. The record
    // that the second run starts from is the first one's.
    void prove_changed(DeviceCommandCode command, const Bytes& before, const Step& read,
                       const Step& write, const Step& second_read, const Bytes& after)
    {
        prove_record(command, before, {opens_to_write(), read, write, closes()}, after);
        EXPECT_EQ(record_before_close(command, before), after);
        // Until it has read, the record is left.
        for (const size_t open : {0U, 1U}) {
            board.restart();
            fail_in_both_runs(open + 1, open);
            expect_run(command, before, open == 0 ? -1 : -2, before);
        }
        // Its write fails in the first run, in both.
        const Trace first = {opens_to_write().call, read.call, write.call + " -> failed",
                             closes().call, "usleep 1"};
        board.restart();
        board.fail_call(3);
        expect_run(command, before, 0, after);
        EXPECT_EQ(board.calls, first + calls_of({opens_to_write(), second_read, write, closes()}));
        board.restart();
        fail_in_both_runs(3, 1);
        expect_run(command, before, -4, after);
        Trace second = first;
        second[1] = second_read.call;
        EXPECT_EQ(board.calls, first + second);
        EXPECT_EQ(board.open_descriptors(), 0U);
        board.restart();
    }

  private:
    // Runs a command with something done before each call that starts like this.
    int32_t run_stepping_in(DeviceCommandCode command, const Bytes& before, const std::string& call,
                            const std::function<void()>& action)
    {
        board.before_call = [&](const std::string& made) {
            if (made.rfind(call, 0) == 0) {
                action();
            }
        };
        const int32_t result = run(command, before);
        board.before_call = nullptr;
        return result;
    }
};
