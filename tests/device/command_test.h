// What a test of a device command starts from: the caller's record, as bytes at the offsets that
// the commands document, between guards that no command may touch.
#pragma once

#include "device/command_facts.h"
#include "device/device_test.h"

constexpr uint8_t kUntouched = 0xA5; // what a caller's memory holds unless a test says otherwise

// So many bytes of it.
Bytes untouched(size_t size);

class CommandTest : public DeviceTest
{
  protected:
    // Sets the device before each run, where a run changes it.
    std::function<void()> device_put;

    // A fresh record, aligned as any record of a caller's would be.
    void* put(const Bytes& record);
    // The record as it stands; the test fails when a byte beside it has been written.
    [[nodiscard]] Bytes record() const;
    // Replaces a byte of the record, the rest stays.
    void put_byte(size_t offset, unsigned value);

    // Sets the device and a fresh record before a run; for prove().
    std::function<void*()> with(const Bytes& record);

    // Runs a command on a fresh record, or on the record as it stands.
    int32_t run(DeviceCommandCode command, const Bytes& record);
    int32_t run(DeviceCommandCode command);

    // A run, its result and the record afterwards.
    void expect_run(DeviceCommandCode command, const Bytes& before, int32_t result,
                    const Bytes& after);

    // A record that must be refused before anything is opened, and is left as it was.
    void expect_refused(DeviceCommandCode command, const Bytes& record);

    // Whichever call of the command fails, and all after it: it fails, and leaves the record as it
    // was. Calls whose failure the command ignores are passed over.
    void expect_kept(DeviceCommandCode command, const Bytes& record);

    // prove(), and the record afterwards.
    void prove_record(DeviceCommandCode command, const Bytes& before, const Course& course,
                      const Bytes& after, int32_t result = DEVICE_OK);

    // Closes what the two commands that leave the device open have left.
    void close_left_open(size_t expected);

    // The record after a run on a fresh one.
    Bytes record_after(DeviceCommandCode command, const Bytes& before, int32_t result = DEVICE_OK);

    // The calls of a run on a fresh record, its result, and the record afterwards.
    void expect_calls(DeviceCommandCode command, const Bytes& before, const Course& course,
                      const Bytes& after, int32_t result = DEVICE_OK);

  private:
    static constexpr size_t kGuard = 64;
    [[nodiscard]] Bytes guard() const { return untouched(kGuard); }

    alignas(8) char memory_[kGuard + kRecordMax + kGuard] = {};
    size_t size_ = 0;
    DeviceCommandCode ran_ = UINT32_MAX; // for messages
};
