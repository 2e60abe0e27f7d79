// What the tests of the commands with records of several parts start from.
#pragma once

#include <random>

#include "device/device_test.h"

// A caller's record between guard bytes, aligned as any record.
class GuardedRecord
{
  public:
    void* put(const Bytes& record)
    {
        bytes_ = kGuard + record + kGuard;
        return bytes_.data() + kGuard.size();
    }

    // The record's bytes, after a check that none beside them was written.
    [[nodiscard]] Bytes get() const
    {
        EXPECT_EQ(bytes_.substr(0, kGuard.size()), kGuard);
        EXPECT_EQ(bytes_.substr(bytes_.size() - kGuard.size()), kGuard);
        return bytes_.substr(kGuard.size(), bytes_.size() - 2 * kGuard.size());
    }

  private:
    const Bytes kGuard = Bytes(32, '\xA7');
    Bytes bytes_;
};

// Replaces bytes of a record.
inline void bytes_put(Bytes& record, size_t offset, const Bytes& bytes)
{
    record.replace(offset, bytes.size(), bytes);
}

inline uint8_t byte_at(const Bytes& record, size_t offset)
{
    return static_cast<uint8_t>(record[offset]);
}

inline uint16_t word_at(const Bytes& record, size_t offset)
{
    return static_cast<uint16_t>(byte_at(record, offset) | byte_at(record, offset + 1) << 8);
}

class RegisterMapTest : public DeviceTest
{
  protected:
    // Runs a command on a fresh guarded record and returns the record afterwards.
    Bytes run(DeviceCommandCode command, const Bytes& record, int32_t result = DEVICE_OK)
    {
        EXPECT_EQ(Fpga_Register_Set(command, caller.put(record)), result);
        return caller.get();
    }

    // The calls of a command on a fresh guarded record, which it leaves as it is.
    void expect_sets(DeviceCommandCode command, const Bytes& record, const Course& course,
                     int32_t result = DEVICE_OK)
    {
        expect_course(command, caller.put(record), course, result);
        EXPECT_EQ(caller.get(), record);
    }

    // For each register write of the course that fails in both runs: the registers hold what was
    // written before it and nothing else changed. `prepare` sets every register that is touched.
    void expect_earlier_writes_stay(DeviceCommandCode command,
                                    const std::function<void*()>& prepare, const Course& course)
    {
        size_t failed = 0;
        for (size_t i = 0; i < course.size(); ++i) {
            if (course[i].call.rfind("ioctl 6B43", 0) != 0) {
                continue;
            }
            SCOPED_TRACE("failing call " + std::to_string(i) + ": " + course[i].call);
            board.restart();
            void* argument = prepare();
            auto expected = board.fpga.registers;
            for (size_t earlier = 0; earlier < i; ++earlier) {
                write_apply(course[earlier].call, expected);
            }
            // Behind the failed call: the close and the dispatcher's pause.
            board.fail_calls({i + 1, i + 3 + i + 1});
            EXPECT_EQ(Fpga_Register_Set(command, argument), DEVICE_WRITE_FAILED);
            EXPECT_EQ(board.fpga.registers, expected);
            ++failed;
        }
        EXPECT_NE(failed, 0U);
        board.restart();
    }

    // A failed getter leaves the caller's record, whichever of its calls fails.
    void expect_untouched_on_failure(DeviceCommandCode command, const Bytes& record,
                                     const Course& course)
    {
        for (size_t i = 0; i + 1 < course.size(); ++i) {
            for (const size_t failing : {i, size_t{0}}) { // the second run fails early, or later
                board.restart();
                void* argument = caller.put(record);
                const size_t first_run = i == 0 ? 2 : i + 3;
                board.fail_calls({i + 1, first_run + failing + 1});
                EXPECT_LT(Fpga_Register_Set(command, argument), 0);
                EXPECT_EQ(caller.get(), record);
            }
        }
        board.restart();
    }

    uint8_t draw_byte() { return static_cast<uint8_t>(random_()); }
    uint32_t draw() { return static_cast<uint32_t>(random_()); }
    Bytes draw_bytes(size_t count)
    {
        Bytes bytes;
        while (bytes.size() < count) {
            bytes += byte(draw());
        }
        return bytes;
    }

    GuardedRecord caller;

  private:
    static void write_apply(const std::string& call, std::map<uint32_t, uint16_t>& registers)
    {
        unsigned a[4];
        unsigned v[2];
        if (sscanf(call.c_str(), "ioctl 6B43 %x %x %x %x %x %x", &a[0], &a[1], &a[2], &a[3], &v[0],
                   &v[1]) == 6) {
            registers[a[0] | a[1] << 8 | a[2] << 16 | a[3] << 24] =
                static_cast<uint16_t>(v[0] | v[1] << 8);
        }
    }

    std::mt19937 random_{20060302}; // every run draws the same values
};

// Reads of consecutive registers.
inline Course registers_read(uint32_t address, unsigned count)
{
    Course course;
    for (unsigned i = 0; i < count; ++i) {
        course.push_back(register_read(address + 2 * i));
    }
    return course;
}
