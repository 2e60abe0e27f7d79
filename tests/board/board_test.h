// What tests on the simulated board start from.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <type_traits>

#include "board/board.h"

// Each test has a board of its own and leaves no descriptor and no lock.
class BoardTest : public testing::Test
{
  protected:
    void TearDown() override
    {
        EXPECT_EQ(board.open_descriptors(), 0U);
        EXPECT_EQ(board.held_locks(), 0U);
    }

    Board board;
};

// The bytes of a record.
template <class Record> Bytes bytes_of(const Record& record)
{
    static_assert(std::is_trivially_copyable_v<Record>);
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

// The bytes that a text of hex pairs stands for: hex("FF 00").
Bytes hex(const char* pairs);
// And the other way round, each pair behind a blank: " FF 00".
std::string hex_pairs(const Bytes& bytes);

// Bytes to build records from, numbers little-endian.
Bytes byte(uint32_t value);
Bytes le16(uint32_t value);
Bytes le32(uint32_t value);
Bytes zeros(size_t size);

// Calls one after the other.
Trace operator+(Trace first, const Trace& second);

// The failure sweep. Runs `action` once on a fresh start and counts its calls; then once more for
// each of them with that call failing, and hands the number of the failed call (from 0), its text
// without " -> failed" and the action's result to `check`. `prepare` sets up the files before each
// run. Every run must leave no descriptor and no lock.
void failure_sweep(
    Board& board, const std::function<void()>& prepare, const std::function<int32_t()>& action,
    const std::function<void(size_t call, const std::string& text, int32_t result)>& check);

// Runs `work` in a forked child, which ends with its result as exit status (255: an exception).
pid_t child_start(const std::function<int()>& work);
int child_wait(pid_t child);
