#include "board/board_test.h"

#include <sstream>

Bytes hex(const char* pairs)
{
    std::istringstream in(pairs);
    Bytes bytes;
    unsigned value = 0;
    while (in >> std::hex >> value) {
        bytes += static_cast<char>(value);
    }
    return bytes;
}

std::string hex_pairs(const Bytes& bytes)
{
    std::string text;
    for (const char byte : bytes) {
        char pair[4];
        snprintf(pair, sizeof pair, " %02X", static_cast<uint8_t>(byte));
        text += pair;
    }
    return text;
}

Bytes byte(uint32_t value)
{
    return Bytes(1, static_cast<char>(value));
}

Bytes le16(uint32_t value)
{
    return {static_cast<char>(value), static_cast<char>(value >> 8)};
}

Bytes le32(uint32_t value)
{
    return le16(value) + le16(value >> 16);
}

Bytes zeros(size_t size)
{
    return Bytes(size, '\0');
}

Trace operator+(Trace first, const Trace& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

void failure_sweep(Board& board, const std::function<void()>& prepare,
                   const std::function<int32_t()>& action,
                   const std::function<void(size_t, const std::string&, int32_t)>& check)
{
    prepare();
    board.restart();
    action();
    const Trace complete = board.calls;
    ASSERT_FALSE(complete.empty());

    for (size_t call = 0; call < complete.size(); ++call) {
        SCOPED_TRACE("failing call " + std::to_string(call) + ": " + complete[call]);
        prepare();
        board.restart();
        board.fail_call(call + 1);
        const int32_t result = action();
        ASSERT_GT(board.calls.size(), call);
        EXPECT_EQ(board.calls[call], complete[call] + " -> failed");
        EXPECT_EQ(board.open_descriptors(), 0U);
        EXPECT_EQ(board.held_locks(), 0U);
        check(call, complete[call], result);
    }
    board.restart();
}

pid_t child_start(const std::function<int()>& work)
{
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    int status = 255;
    try {
        status = work();
    } catch (...) {
    }
    _exit(status);
}

int child_wait(pid_t child)
{
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
        return -1;
    }
    return WEXITSTATUS(status);
}
