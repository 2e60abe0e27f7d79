// What the tests of the device commands start from: a command's course, the calls that it makes
// when all goes well and what it returns when one of them fails.
#pragma once

#include <climits>

#include "board/board_test.h"
#include "board/share.h"
#include "maint/fpga.h"

// The failure of a call that a command ignores.
constexpr int32_t kIgnored = INT32_MAX;

// The failure of a call that changes the course; prove leaves it to the command's own tests.
constexpr int32_t kElsewhere = INT32_MAX - 1;

struct Step {
    std::string call;
    int32_t failure; // what the command returns when this call fails
};

using Course = std::vector<Step>;

// The steps of which courses are made; requests by number, records as bytes before the driver
// fills them.
Step opens_to_read(int32_t failure = DEVICE_OPEN_FAILED);
Step opens_to_write(int32_t failure = DEVICE_OPEN_FAILED);
Step closes();
Step word_read(uint32_t request, int32_t failure = DEVICE_READ_FAILED);
Step map_read(uint32_t request, int32_t failure = DEVICE_READ_FAILED);
Step value_write(uint32_t request, uint32_t value, int32_t failure = DEVICE_WRITE_FAILED);
Step register_read(uint32_t address, int32_t failure = DEVICE_READ_FAILED);
Step register_write(uint32_t address, uint32_t value, int32_t failure = DEVICE_WRITE_FAILED);
Step record_read(uint32_t request, const Bytes& record, int32_t failure = DEVICE_READ_FAILED);
Step record_write(uint32_t request, const Bytes& record, int32_t failure = DEVICE_WRITE_FAILED);
Step sleeps(unsigned seconds);

// Courses one after the other.
Course operator+(Course first, const Course& second);

// The calls of a course, from a step on.
Trace calls_of(const Course& course, size_t from = 0);

// Bytes to build records from, numbers little-endian.
Bytes byte(uint32_t value);
Bytes le16(uint32_t value);
Bytes le32(uint32_t value);

class DeviceTest : public BoardTest
{
  protected:
    // Runs a command and compares the calls that it made and its result.
    void expect_course(DeviceCommandCode command, void* argument, const Course& course,
                       int32_t result = DEVICE_OK);

    // The whole proof of one command's course. `prepare` sets device, files and the caller's record
    // before each run and returns the record.
    //   - it makes exactly the calls of the course and returns `result`;
    //   - for each call that fails in the first run only: the open descriptors are closed, then
    //     usleep(1), then the whole course; the result is the second run's;
    //   - for each call that fails in both runs: twice as far as that call, and that call's
    //     failure as result (a bad argument, and RD_DEVICE_WORD_40, end after the first run);
    //   - a failure that the command ignores changes nothing in the course.
    // No run leaves a descriptor.
    void prove(DeviceCommandCode command, const std::function<void*()>& prepare,
               const Course& course, int32_t result = DEVICE_OK);

    // A value that must be refused before anything is opened.
    void expect_refused(DeviceCommandCode command, void* argument);

    // Plans the nth call to fail in both runs of a command, which closes that many descriptors
    // then.
    void fail_in_both_runs(size_t n, size_t descriptors);

    // Calls `check` for each of the 65,536 values of a word (under an emulator: see board/share.h),
    // without recording calls.
    void for_every_word(const std::function<void(uint16_t)>& check);

  private:
    void prove_failure(DeviceCommandCode command, const std::function<void*()>& prepare,
                       const Course& course, size_t failing, int32_t result);
};
