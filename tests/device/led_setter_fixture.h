// What the tests of the LED setters start from: the caller's record, and the calls by which a
// setter asks whether the inhibit is on and records its change.
#pragma once

#include "device/caller_record.h"
#include "device/library_calls.h"

// Without the file.
inline const Trace kNotInhibited{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX",
                                 "stat /tmp/led_rewrite_inh", "fclose /tmp/Saveing"};

// With the file: the change is merged into it.
inline const Trace kRecorded{"fopen /tmp/Saveing w",
                             "flock /tmp/Saveing LOCK_EX",
                             "stat /tmp/led_rewrite_inh",
                             "open /tmp/led_rewrite_inh O_RDWR",
                             "read /tmp/led_rewrite_inh 44",
                             "lseek /tmp/led_rewrite_inh 0",
                             "write /tmp/led_rewrite_inh 44",
                             "close /tmp/led_rewrite_inh",
                             "fclose /tmp/Saveing"};

// With a file of less than 44 bytes.
inline const Trace kFileTooShort{"fopen /tmp/Saveing w",         "flock /tmp/Saveing LOCK_EX",
                                 "stat /tmp/led_rewrite_inh",    "open /tmp/led_rewrite_inh O_RDWR",
                                 "read /tmp/led_rewrite_inh 44", "close /tmp/led_rewrite_inh",
                                 "fclose /tmp/Saveing"};

// A setter's course while the inhibit is off. The failures of the lock are inhibit_test.cpp's.
inline Course without_inhibit(const Course& panel)
{
    return Course{{kNotInhibited[0], kElsewhere},
                  {kNotInhibited[1], kElsewhere},
                  {kNotInhibited[2], kIgnored},
                  {kNotInhibited[3], kElsewhere}} +
           panel;
}

// One read-modify-write of a word that ends in `value`.
inline Course changes_word(uint32_t read, uint32_t write, uint32_t value,
                           int32_t write_failure = DEVICE_WRITE_FAILED)
{
    return {opens_to_write(), word_read(read), value_write(write, value, write_failure), closes()};
}

class LedSetterTest : public DeviceTest
{
  protected:
    int32_t run(DeviceCommandCode command) { return Fpga_Register_Set(command, record.pointer()); }

    // Makes the next setter run with neither lock nor file, which stops none of them: loops over
    // every word leave the file system alone that way.
    void files_fail()
    {
        constexpr size_t kLock = 1; // followed by its message
        constexpr size_t kStat = 3;
        board.restart();
        board.fail_calls({kLock, kStat});
    }

    void record_fill(unsigned value)
    {
        record = CallerRecord(Bytes(44, static_cast<char>(static_cast<uint8_t>(value))));
    }

    CallerRecord record{Bytes(44, '\0')};
};
