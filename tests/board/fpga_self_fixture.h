// What the simulated device's own tests start from.
#pragma once

#include <fcntl.h>
#include <gtest/gtest-spi.h>

#include "board/calls.h"
#include "device/command_test.h"

constexpr const char* kFpga = "/dev/fpga";

// Longer than any record, to show what a request fills beyond its own.
constexpr size_t kRoom = 300;

class FpgaSelf : public CommandTest
{
  protected:
    int request(uint32_t number, Bytes& record)
    {
        const int fpga = board_open(kFpga, O_RDWR | O_NONBLOCK);
        const int result = board_ioctl(fpga, number, record.data());
        board_close(fpga);
        return result;
    }

    Bytes answer(uint32_t number, Bytes record)
    {
        EXPECT_EQ(request(number, record), 0);
        return record;
    }

    int send(uint32_t number, uint32_t value)
    {
        const int fpga = board_open(kFpga, O_RDWR | O_NONBLOCK);
        const int result = board_ioctl(fpga, number, static_cast<unsigned long>(value));
        board_close(fpga);
        return result;
    }

    // A word as the driver gives it for this request.
    uint32_t word(uint32_t number)
    {
        const Bytes record = answer(number, zeros(2));
        return static_cast<uint8_t>(record[0]) + 256U * static_cast<uint8_t>(record[1]);
    }

    // How many failures a proof reports, without being failed by them.
    static int failures_of(const std::function<void()>& proof)
    {
        testing::TestPartResultArray results;
        {
            const testing::ScopedFakeTestPartResultReporter reporter(
                testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &results);
            proof();
        }
        int failures = 0;
        for (int i = 0; i < results.size(); ++i) {
            failures += results.GetTestPartResult(i).failed() ? 1 : 0;
        }
        return failures;
    }
};

inline Bytes pattern(size_t size)
{
    Bytes bytes(size, '\xA5');
    bytes[2] = 5; // a PHY register's number
    bytes[3] = 0;
    return bytes;
}
