// What the tests of the LED setters start from: the caller's 44 bytes, and the courses of a setter.
#pragma once

#include "device/led_panel_words.h"

// A setter's course while the inhibit is off. The failures of the lock are led_inhibit_test.cpp's.
inline Course without_inhibit(const Course& panel)
{
    return Course{{kNotInhibited[0], kElsewhere},
                  {kNotInhibited[1], kElsewhere},
                  {kNotInhibited[2], kIgnored},
                  {kNotInhibited[3], kElsewhere}} +
           panel;
}

// The same where the setter asks for the inhibit at all.
inline Course course_of_setter(DeviceCommandCode command, const Course& panel)
{
    return is_line(command) ? panel : without_inhibit(panel);
}

// One read-modify-write of a word that ends in `value`.
inline Course changes_word(uint32_t read, uint32_t write, uint32_t value,
                           int32_t write_failure = DEVICE_WRITE_FAILED)
{
    return {opens_to_write(), word_read(read), value_write(write, value, write_failure), closes()};
}

class LedSetterTest : public LedTest
{
  protected:
    LedSetterTest() { put(zeros(44)); }

    // Makes the next setter run with neither lock nor file, which stops none of them: loops over
    // every word leave the file system alone that way.
    void files_fail(DeviceCommandCode command)
    {
        constexpr size_t kLock = 1; // followed by its message
        constexpr size_t kStat = 3;
        board.restart();
        if (!is_line(command)) {
            board.fail_calls({kLock, kStat});
        }
    }

    // A record of which every byte is so.
    void* record_fill(unsigned value) { return put(Bytes(44, static_cast<char>(value))); }
};
