// A caller's record as bytes, at the offsets that the commands document, and the memory behind it.
#pragma once

#include "board/board_test.h"

constexpr uint8_t kUntouched = 0xA5; // what a caller's memory holds unless a test says otherwise

class CallerRecord
{
  public:
    explicit CallerRecord(const Bytes& start = "")
    {
        memset(memory_, kUntouched, sizeof memory_);
        start.copy(memory_, sizeof memory_);
    }

    void* pointer() { return memory_; }

    void put(size_t offset, unsigned value)
    {
        memory_[offset] = static_cast<char>(static_cast<uint8_t>(value));
    }

    // Record and memory behind it.
    [[nodiscard]] Bytes bytes() const { return {memory_, sizeof memory_}; }

  private:
    alignas(8) char memory_[64];
};

// What a record that starts like this must hold, with everything behind it untouched.
inline Bytes untouched_after(const Bytes& start)
{
    return CallerRecord(start).bytes();
}
