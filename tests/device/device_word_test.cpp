// Commands that move one word between the caller and the device.
#include "device/command_test.h"

namespace
{

using DeviceWord = CommandTest;

// Passed through to read --------------------------------------------------------------------

const Bytes kCallers = hex("87 E1 A5 C3"); // what the caller's bytes hold before a read

struct ReadThrough {
    DeviceCommandCode command;
    uint32_t request;
    size_t size;
    Step opens;
    bool leaves_open; // when the request fails

    [[nodiscard]] Bytes before() const { return kCallers.substr(0, size); }

    [[nodiscard]] Course course() const
    {
        return {opens, record_read(request, before(), command == RD_DEVICE_WORD_40 ? -1 : -2),
                closes()};
    }
};

const ReadThrough kReadThrough[] = {
    {RD_DEVICE_WORD_27, 0x6B27, 2, opens_to_read(), false},
    {RD_DEVICE_WORD_29, 0x6B29, 2, opens_to_read(), false},
    {RD_DEVICE_WORD_40, 0x6B40, 2, opens_to_read(), false},
    {RD_DEVICE_WORD_21, 0x6B21, 2, opens_to_read(), true},
    {RD_DEVICE_WORD_03, 0x6B03, 2, opens_to_read(), false},
    {RD_DEVICE_WORD_3B, 0x6B3B, 4, opens_to_read(), false},
    {RD_DEVICE_WORD_4E, 0x6B4E, 2, opens_to_write(), false},
};

TEST_F(DeviceWord, ReadsPassTheCallersPointerThrough)
{
    for (const ReadThrough& row : kReadThrough) {
        board.fpga.words[row.request] = 0x89AB4567;
        if (row.leaves_open) {
            expect_course(row.command, put(row.before()), row.course());
        } else {
            prove_record(row.command, row.before(), row.course(),
                         le32(0x89AB4567).substr(0, row.size));
        }
    }
}

TEST_F(DeviceWord, ReadsHandBackEveryWord)
{
    for (const ReadThrough& row : kReadThrough) {
        for_every_word([&](uint16_t word) {
            const uint32_t held = row.size == 4 ? word * 0x10001U ^ 0xFFFFU : word;
            board.fpga.words[row.request] = held;
            expect_run(row.command, row.before(), 0, le32(held).substr(0, row.size));
        });
    }
}

TEST_F(DeviceWord, AFailedReadLeavesTheCallersValue)
{
    for (const ReadThrough& row : kReadThrough) {
        board.fpga.results[row.request] = -7;
        expect_run(row.command, row.before(), row.command == RD_DEVICE_WORD_40 ? -7 : -2,
                   row.before());
        close_left_open(row.leaves_open ? 2 : 0);
    }
}

// Passed through to write -------------------------------------------------------------------

struct WriteThrough {
    DeviceCommandCode command;
    uint32_t request;
    DeviceCommandCode reader; // of the same word
    uint32_t shows;           // the reader's request
    bool by_value;
    bool leaves_open;
};

constexpr WriteThrough kWriteThrough[] = {
    {WR_DEVICE_WORD_28, 0x6B28, RD_DEVICE_WORD_27, 0x6B27, true, false},
    {WR_DEVICE_WORD_2A, 0x6B2A, RD_DEVICE_WORD_29, 0x6B29, true, false},
    {WR_DEVICE_WORD_41, 0x6B41, RD_DEVICE_WORD_40, 0x6B40, false, false},
    {WR_DEVICE_WORD_22, 0x6B22, RD_DEVICE_WORD_21, 0x6B21, false, true},
    {WR_DEVICE_WORD_04, 0x6B04, RD_DEVICE_WORD_03, 0x6B03, true, false},
};

TEST_F(DeviceWord, WritesSendTheCallersWord)
{
    for (const WriteThrough& row : kWriteThrough) {
        const Bytes word = le16(0x8123);
        const Course course{opens_to_write(),
                            row.by_value ? value_write(row.request, 0x8123)
                                         : record_write(row.request, word),
                            closes()};
        if (row.leaves_open) {
            expect_course(row.command, put(word), course);
        } else {
            prove_record(row.command, word, course, word);
        }
    }
}

TEST_F(DeviceWord, WritesReplaceTheWholeWord)
{
    for (const WriteThrough& row : kWriteThrough) {
        for_every_word([&](uint16_t word) {
            board.fpga.words[row.shows] = static_cast<uint16_t>(~word);
            expect_run(row.command, le16(word), 0, le16(word));
            EXPECT_EQ(board.fpga.words[row.shows], word);
            expect_run(row.reader, untouched(2), 0, le16(word));
        });
    }
}

TEST_F(DeviceWord, AFailedWriteChangesNothing)
{
    for (const WriteThrough& row : kWriteThrough) {
        board.fpga.words[row.shows] = 0x1111;
        board.fpga.results[row.request] = -9;
        expect_run(row.command, le16(0x2222), -4, le16(0x2222));
        EXPECT_EQ(board.fpga.words[row.shows], 0x1111U);
        close_left_open(row.leaves_open ? 2 : 0);
    }
}

// The two commands that leave the device open when their request fails -----------------------

struct LeavesOpen {
    DeviceCommandCode command;
    const char* open;
    const char* request;
    int32_t failure;
};

constexpr LeavesOpen kLeavesOpen[] = {
    {RD_DEVICE_WORD_21, "open /dev/fpga O_RDONLY|O_NONBLOCK", "ioctl 6B21 45 23", -2},
    {WR_DEVICE_WORD_22, "open /dev/fpga O_RDWR|O_NONBLOCK", "ioctl 6B22 45 23", -4},
};

TEST_F(DeviceWord, AFailedCallLeavesADescriptorForEachFailedRequest)
{
    for (const LeavesOpen& row : kLeavesOpen) {
        const std::string open = row.open;
        const std::string request = row.request;
        const std::string pause = "usleep 1";
        const struct {
            const char* name;
            std::set<size_t> failing;
            int32_t result;
            Trace calls;
            size_t left_open;
        } cases[] = {
            {"both requests",
             {2, 5},
             row.failure,
             {open, request + " -> failed", pause, open, request + " -> failed", pause},
             2},
            {"the first request",
             {2},
             0,
             {open, request + " -> failed", pause, open, request, "close /dev/fpga"},
             1},
            {"both opens", {1, 3}, -1, {open + " -> failed", pause, open + " -> failed", pause}, 0},
            {"the close", {3}, 0, {open, request, "close /dev/fpga -> failed"}, 0},
        };
        for (const auto& [name, failing, result, calls, left_open] : cases) {
            SCOPED_TRACE(name);
            board.restart();
            board.fpga.words[0x6B21] = 0x2345;
            board.fail_calls(failing);
            expect_run(row.command, le16(0x2345), result, le16(0x2345));
            EXPECT_EQ(board.calls, calls);
            close_left_open(left_open);
        }
    }
}

// A result of the driver's own ---------------------------------------------------------------

TEST_F(DeviceWord, Word40HandsBackTheRequestsOwnResultAndIsNeverRepeated)
{
    board.fpga.words[0x6B40] = 0x7788;
    for (const int result : {INT32_MIN, -100, -5, -4, -3, -2, -1, 0, 1, 62, INT32_MAX}) {
        SCOPED_TRACE(result);
        board.fpga.results[0x6B40] = result;
        expect_course(RD_DEVICE_WORD_40, put(le16(0x1234)),
                      {opens_to_read(), record_read(0x6B40, le16(0x1234)), closes()}, result);
        EXPECT_EQ(record(), le16(result < 0 ? 0x1234 : 0x7788));
    }
}

TEST_F(DeviceWord, Word40DoesNotRepeatAFailedOpenEither)
{
    board.fpga_present = false;
    expect_course(RD_DEVICE_WORD_40, put(le16(0x1234)), {opens_to_read()}, -1);
    EXPECT_EQ(record(), le16(0x1234));
}

// The one-hot code --------------------------------------------------------------------------

TEST_F(DeviceWord, ReadsTheCodeFromAClearedWord)
{
    board.fpga.words[0x6B48] = 0x0006;
    prove_record(RD_DEVICE_WORD_48, untouched(2), {opens_to_read(), word_read(0x6B48), closes()},
                 le16(4));
    expect_kept(RD_DEVICE_WORD_48, untouched(2));
}

TEST_F(DeviceWord, TheCodeComesFromTheTwoLowBits)
{
    for_every_word([&](uint16_t word) {
        board.fpga.words[0x6B48] = word;
        const std::array<Bytes, 4> codes{untouched(2), le16(2), le16(4), le16(8)};
        expect_run(RD_DEVICE_WORD_48, untouched(2), word % 4 == 0 ? -3 : 0, codes[word % 4]);
    });
}

TEST_F(DeviceWord, ACodeOfNoneIsReadTwice)
{
    board.fpga.words[0x6B48] = 0xFFFC;
    const Course run{opens_to_read(), word_read(0x6B48), closes(), {"usleep 1", kIgnored}};
    expect_course(RD_DEVICE_WORD_48, put(untouched(2)), run + run, -3);
}

TEST_F(DeviceWord, WritesTheDevicesCode)
{
    for (const auto& [caller, device] : {std::pair{2, 1U}, {4, 2U}, {8, 3U}}) {
        const Bytes code = le16(static_cast<uint32_t>(caller));
        prove_record(WR_DEVICE_WORD_49, code,
                     {opens_to_write(), value_write(0x6B49, device), closes()}, code);
        EXPECT_EQ(board.fpga.words[0x6B48], device);
        expect_run(RD_DEVICE_WORD_48, untouched(2), 0, code);
    }
}

TEST_F(DeviceWord, RefusesEveryOtherCodeBeforeOpening)
{
    expect_refused(WR_DEVICE_WORD_49, le16(3));
    for_every_word([&](uint16_t code) {
        const size_t before = board.call_count();
        board.fpga.words[0x6B48] = 0xAAAA;
        const bool known = code == 2 || code == 4 || code == 8;
        EXPECT_EQ(run(WR_DEVICE_WORD_49, le16(code)), known ? 0 : -5) << hex_number(code);
        EXPECT_EQ(board.call_count() - before, known ? 3U : 0U) << hex_number(code);
        EXPECT_EQ(board.fpga.words[0x6B48] == 0xAAAA, !known) << hex_number(code);
    });
}

} // namespace
