// Commands that move one word between the caller and the device.
#include "device/device_test.h"

namespace
{

class DeviceWord : public DeviceTest
{
  protected:
    // Fresh caller's bytes: a value between guards.
    void* caller_put(uint32_t value)
    {
        record_ = Bytes(8, '\x5A') + le32(value) + Bytes(8, '\x5A');
        return record_.data() + 8;
    }

    // The caller's value of so many bytes, after a check that nothing else was written. The bytes
    // behind it were set from `put`.
    uint32_t caller_get(size_t size, uint32_t put)
    {
        EXPECT_EQ(record_.substr(0, 8), Bytes(8, '\x5A'));
        EXPECT_EQ(record_.substr(8 + size), le32(put).substr(size) + Bytes(8, '\x5A'));
        uint32_t value = 0;
        memcpy(&value, record_.data() + 8, size);
        return value;
    }

    int32_t run(DeviceCommandCode command) { return Fpga_Register_Set(command, &record_[8]); }

    // What two failed runs of a command leave open; closed by the end of the process.
    void close_left_open(size_t expected)
    {
        EXPECT_EQ(board.descriptors().size(), expected);
        while (!board.descriptors().empty()) {
            board.closing(board.descriptors().begin()->first);
        }
    }

  private:
    Bytes record_;
};

// Passed through to read --------------------------------------------------------------------

constexpr uint32_t kCallers = 0xC3A5E187; // what the caller's bytes hold before a read

struct ReadThrough {
    DeviceCommandCode command;
    uint32_t request;
    size_t size;
    bool opens_to_write;
    bool leaves_open; // when the request fails
};

constexpr ReadThrough kReadThrough[] = {
    {0x0036, 0x6B27, 2, false, false}, {0x0038, 0x6B29, 2, false, false},
    {0x003E, 0x6B40, 2, false, false}, {0x0040, 0x6B21, 2, false, true},
    {0x0042, 0x6B03, 2, false, false}, {0x0046, 0x6B3B, 4, false, false},
    {0x0056, 0x6B4E, 2, true, false},
};

Course read_course(const ReadThrough& row)
{
    return {row.opens_to_write ? opens_to_write() : opens_to_read(),
            record_read(row.request, le32(kCallers).substr(0, row.size),
                        row.command == 0x003E ? -1 : -2),
            closes()};
}

TEST_F(DeviceWord, ReadsPassTheCallersPointerThrough)
{
    for (const ReadThrough& row : kReadThrough) {
        const auto prepare = [&] {
            board.fpga.words[row.request] = 0x89AB4567;
            return caller_put(kCallers);
        };
        if (row.leaves_open) {
            expect_course(row.command, prepare(), read_course(row));
        } else {
            prove(row.command, prepare, read_course(row));
        }
    }
}

TEST_F(DeviceWord, ReadsHandBackEveryWord)
{
    for (const ReadThrough& row : kReadThrough) {
        for_every_word([&](uint16_t word) {
            const uint32_t held = row.size == 4 ? word * 0x10001U ^ 0xFFFFU : word;
            board.fpga.words[row.request] = held;
            caller_put(kCallers);
            ASSERT_EQ(run(row.command), 0);
            ASSERT_EQ(caller_get(row.size, kCallers), held);
        });
    }
}

TEST_F(DeviceWord, AFailedReadLeavesTheCallersValue)
{
    for (const ReadThrough& row : kReadThrough) {
        SCOPED_TRACE(row.request);
        board.fpga.results[row.request] = -7;
        caller_put(kCallers);
        EXPECT_EQ(run(row.command), row.command == 0x003E ? -7 : -2);
        EXPECT_EQ(caller_get(row.size, kCallers), kCallers & (row.size == 4 ? ~0U : 0xFFFFU));
        close_left_open(row.leaves_open ? 2 : 0);
    }
}

// A request counts as failed when its result is negative, and only then.
TEST_F(DeviceWord, AReadWithAPositiveResultHasSucceeded)
{
    for (const ReadThrough& row : kReadThrough) {
        board.fpga.results[row.request] = 3;
        expect_course(row.command, caller_put(kCallers), read_course(row),
                      row.command == 0x003E ? 3 : 0);
    }
}

// Passed through to write -------------------------------------------------------------------

struct WriteThrough {
    DeviceCommandCode command;
    uint32_t request;
    uint32_t shows; // the request under which the written word shows
    bool by_value;
    bool leaves_open;
};

constexpr WriteThrough kWriteThrough[] = {
    {0x0037, 0x6B28, 0x6B27, true, false},  {0x0039, 0x6B2A, 0x6B29, true, false},
    {0x003F, 0x6B41, 0x6B40, false, false}, {0x0041, 0x6B22, 0x6B21, false, true},
    {0x0043, 0x6B04, 0x6B03, true, false},
};

Course write_course(const WriteThrough& row, uint32_t value)
{
    return {opens_to_write(),
            row.by_value ? value_write(row.request, value) : record_write(row.request, le16(value)),
            closes()};
}

TEST_F(DeviceWord, WritesSendTheCallersWord)
{
    for (const WriteThrough& row : kWriteThrough) {
        // The bytes behind the caller's 16 bits are no part of it.
        const auto prepare = [&] { return caller_put(0xFFFF8123); };
        if (row.leaves_open) {
            expect_course(row.command, prepare(), write_course(row, 0x8123));
        } else {
            prove(row.command, prepare, write_course(row, 0x8123));
        }
    }
}

TEST_F(DeviceWord, WritesReplaceTheWholeWord)
{
    for (const WriteThrough& row : kWriteThrough) {
        for_every_word([&](uint16_t word) {
            board.fpga.words[row.shows] = static_cast<uint16_t>(~word);
            caller_put(word | 0x77770000U);
            ASSERT_EQ(run(row.command), 0);
            ASSERT_EQ(board.fpga.words[row.shows], word);
            ASSERT_EQ(caller_get(2, word | 0x77770000U), word);
        });
    }
}

TEST_F(DeviceWord, AFailedWriteChangesNothing)
{
    for (const WriteThrough& row : kWriteThrough) {
        board.fpga.words[row.shows] = 0x1111;
        board.fpga.results[row.request] = -9;
        caller_put(0x2222);
        EXPECT_EQ(run(row.command), -4);
        EXPECT_EQ(board.fpga.words[row.shows], 0x1111U);
        close_left_open(row.leaves_open ? 2 : 0);
        board.fpga.results[row.request] = 1;
        EXPECT_EQ(run(row.command), 0);
        EXPECT_EQ(board.fpga.words[row.shows], 0x2222U);
    }
}

TEST_F(DeviceWord, TheWordsOf03And04AreOne)
{
    caller_put(0x5AF0);
    EXPECT_EQ(run(WR_DEVICE_WORD_04), 0);
    caller_put(0);
    EXPECT_EQ(run(RD_DEVICE_WORD_03), 0);
    EXPECT_EQ(caller_get(2, 0), 0x5AF0U);
}

// The two commands that leave the device open when their request fails -----------------------

struct LeavesOpen {
    DeviceCommandCode command;
    const char* open;
    const char* request;
    int32_t failure;
};

constexpr LeavesOpen kLeavesOpen[] = {
    {0x0040, "open /dev/fpga O_RDONLY|O_NONBLOCK", "ioctl 6B21 45 23", -2},
    {0x0041, "open /dev/fpga O_RDWR|O_NONBLOCK", "ioctl 6B22 45 23", -4},
};

TEST_F(DeviceWord, AFailedRequestLeavesADescriptorForEachRun)
{
    for (const LeavesOpen& row : kLeavesOpen) {
        SCOPED_TRACE(row.request);
        const std::string failed = std::string(row.request) + " -> failed";
        board.restart();
        caller_put(0x2345);
        board.fail_calls({2, 5});
        EXPECT_EQ(run(row.command), row.failure);
        EXPECT_EQ(board.calls, (Trace{row.open, failed, "usleep 1", row.open, failed, "usleep 1"}));
        close_left_open(2);
    }
}

TEST_F(DeviceWord, ASecondRunThatSucceedsClosesItsOwnDescriptorOnly)
{
    for (const LeavesOpen& row : kLeavesOpen) {
        SCOPED_TRACE(row.request);
        board.restart();
        caller_put(0x2345);
        board.fail_call(2);
        EXPECT_EQ(run(row.command), 0);
        EXPECT_EQ(board.calls, (Trace{row.open, std::string(row.request) + " -> failed", "usleep 1",
                                      row.open, row.request, "close /dev/fpga"}));
        close_left_open(1);
    }
}

TEST_F(DeviceWord, AFailedOpenOrCloseLeavesNothing)
{
    for (const LeavesOpen& row : kLeavesOpen) {
        SCOPED_TRACE(row.request);
        const std::string failed = std::string(row.open) + " -> failed";
        board.restart();
        caller_put(0x2345);
        board.fail_calls({1, 3});
        EXPECT_EQ(run(row.command), -1);
        EXPECT_EQ(board.calls, (Trace{failed, "usleep 1", failed, "usleep 1"}));
        EXPECT_EQ(caller_get(2, 0x2345), 0x2345U);
        close_left_open(0);

        board.restart();
        board.fail_call(3);
        EXPECT_EQ(run(row.command), 0);
        EXPECT_EQ(board.calls, (Trace{row.open, row.request, "close /dev/fpga -> failed"}));
        close_left_open(0);
    }
}

// Command 62 --------------------------------------------------------------------------------

TEST_F(DeviceWord, Word40HandsBackTheRequestsOwnResultAndIsNeverRepeated)
{
    board.fpga.words[0x6B40] = 0x7788;
    for (const int result : {INT32_MIN, -100, -5, -4, -3, -2, -1, 0, 1, 62, INT32_MAX}) {
        SCOPED_TRACE(result);
        board.fpga.results[0x6B40] = result;
        expect_course(RD_DEVICE_WORD_40, caller_put(0x1234),
                      {opens_to_read(), record_read(0x6B40, le16(0x1234)), closes()}, result);
        EXPECT_EQ(caller_get(2, 0x1234), result < 0 ? 0x1234U : 0x7788U);
    }
}

TEST_F(DeviceWord, Word40DoesNotRepeatAFailedOpenEither)
{
    board.fpga_present = false;
    expect_course(RD_DEVICE_WORD_40, caller_put(0x1234), {opens_to_read()}, -1);
    EXPECT_EQ(caller_get(2, 0x1234), 0x1234U);
}

// The group flag ----------------------------------------------------------------------------

TEST_F(DeviceWord, ReadsTheGroupFlagFromAClearedWord)
{
    prove(RD_GROUP_FLAG,
          [this] {
              board.fpga.words[0x6B2D] = 0xFFFF;
              return caller_put(0x99);
          },
          {opens_to_read(), word_read(0x6B2D), closes()});
}

TEST_F(DeviceWord, WritesTheGroupFlagByReadingFirst)
{
    const Course course{opens_to_write(), word_read(0x6B2D), value_write(0x6B2E, 0xFFFF), closes()};
    prove(
        WR_GROUP_FLAG,
        [this] {
            board.fpga.words[0x6B2D] = 0xFE3B;
            return caller_put(1);
        },
        course);
}

TEST_F(DeviceWord, TheGroupFlagIsOneIfAnyOfBits2And6To8IsSet)
{
    for_every_word([&](uint16_t word) {
        board.fpga.words[0x6B2D] = word;
        caller_put(0x99);
        ASSERT_EQ(run(RD_GROUP_FLAG), 0);
        const bool any = (word >> 2 & 1) + (word >> 6 & 1) + (word >> 7 & 1) + (word >> 8 & 1) > 0;
        ASSERT_EQ(caller_get(1, 0x99), any ? 1U : 0U);
    });
}

TEST_F(DeviceWord, OnlyOneSetsTheGroupFlagAndOtherBitsAreKept)
{
    for (const uint32_t flag : {0U, 1U, 2U, 0x81U, 255U}) {
        for_every_word([&](uint16_t word) {
            board.fpga.words[0x6B2D] = word;
            caller_put(flag | 0x01010100U); // what lies behind the flag is not read
            ASSERT_EQ(run(WR_GROUP_FLAG), 0);
            uint32_t expected = word;
            for (const unsigned bit : {2U, 6U, 7U, 8U}) {
                expected = flag == 1 ? expected | 1U << bit : expected & ~(1U << bit);
            }
            ASSERT_EQ(board.fpga.words[0x6B2D], expected);
        });
    }
}

TEST_F(DeviceWord, AGroupFlagThatCannotBeReadLeavesTheCallersValue)
{
    board.fpga.results[0x6B2D] = -1;
    caller_put(0x99);
    EXPECT_EQ(run(RD_GROUP_FLAG), -2);
    EXPECT_EQ(caller_get(4, 0), 0x99U);
}

// The one-hot code --------------------------------------------------------------------------

TEST_F(DeviceWord, ReadsTheCodeFromAClearedWord)
{
    prove(RD_DEVICE_WORD_48,
          [this] {
              board.fpga.words[0x6B48] = 0x0006;
              return caller_put(0x99);
          },
          {opens_to_read(), word_read(0x6B48), closes()});
}

TEST_F(DeviceWord, TheCodeComesFromTheTwoLowBits)
{
    for_every_word([&](uint16_t word) {
        board.fpga.words[0x6B48] = word;
        caller_put(kCallers);
        const int32_t result = run(RD_DEVICE_WORD_48);
        const uint32_t code = caller_get(2, kCallers);
        switch (word % 4) {
        case 1:
            ASSERT_EQ(result, 0);
            ASSERT_EQ(code, 2U);
            break;
        case 2:
            ASSERT_EQ(result, 0);
            ASSERT_EQ(code, 4U);
            break;
        case 3:
            ASSERT_EQ(result, 0);
            ASSERT_EQ(code, 8U);
            break;
        default:
            ASSERT_EQ(result, -3);
            ASSERT_EQ(code, kCallers & 0xFFFFU);
        }
    });
}

TEST_F(DeviceWord, ACodeOfNoneIsReadTwice)
{
    board.fpga.words[0x6B48] = 0xFFFC;
    const Trace run{"open /dev/fpga O_RDONLY|O_NONBLOCK", "ioctl 6B48 00 00", "close /dev/fpga",
                    "usleep 1"};
    Trace both = run;
    both.insert(both.end(), run.begin(), run.end());
    EXPECT_EQ(Fpga_Register_Set(RD_DEVICE_WORD_48, caller_put(0x99)), -3);
    EXPECT_EQ(board.calls, both);
}

TEST_F(DeviceWord, ACodeThatCannotBeReadLeavesTheCallersValue)
{
    board.fpga.results[0x6B48] = -1;
    caller_put(kCallers);
    EXPECT_EQ(run(RD_DEVICE_WORD_48), -2);
    EXPECT_EQ(caller_get(4, 0), kCallers);
}

constexpr std::pair<uint16_t, uint16_t> kCodes[] = {{2, 1}, {4, 2}, {8, 3}}; // caller, device

TEST_F(DeviceWord, WritesTheDevicesCode)
{
    for (const auto& [caller, device] : kCodes) {
        prove(WR_DEVICE_WORD_49, [this, caller = caller] { return caller_put(caller); },
              {opens_to_write(), value_write(0x6B49, device), closes()});
    }
}

TEST_F(DeviceWord, RefusesEveryOtherCodeBeforeOpening)
{
    caller_put(3);
    EXPECT_EQ(run(WR_DEVICE_WORD_49), -5);
    EXPECT_EQ(board.calls, Trace{});
    for_every_word([&](uint16_t code) {
        const size_t before = board.call_count();
        board.fpga.words[0x6B48] = 0xAAAA;
        caller_put(code | 0x00020000U);
        const int32_t result = run(WR_DEVICE_WORD_49);
        const bool known = code == 2 || code == 4 || code == 8;
        ASSERT_EQ(result, known ? 0 : -5) << code;
        ASSERT_EQ(board.call_count() - before, known ? 3U : 0U);
        ASSERT_EQ(board.fpga.words[0x6B48] == 0xAAAA, !known);
    });
}

TEST_F(DeviceWord, TheCodeReadsBackAsWritten)
{
    for (const auto& [caller, device] : kCodes) {
        caller_put(caller);
        EXPECT_EQ(run(WR_DEVICE_WORD_49), 0);
        EXPECT_EQ(board.fpga.words[0x6B48], device);
        caller_put(0);
        EXPECT_EQ(run(RD_DEVICE_WORD_48), 0);
        EXPECT_EQ(caller_get(2, 0), caller);
    }
}

// Register 0x44 -----------------------------------------------------------------------------

TEST_F(DeviceWord, ReadsRegister44)
{
    prove(RD_REG44_FLAG, [this] { return caller_put(0x99); },
          {opens_to_read(), register_read(0x0044), closes()});
}

// What the driver returned beside the register's 16 bits is written back with them.
TEST_F(DeviceWord, ChangesRegister44InTheRecordThatWasRead)
{
    prove(WR_REG44_FLAG,
          [this] {
              board.fpga.register_high = 0xCAFE;
              board.fpga.registers[0x0044] = 0x1230;
              return caller_put(1);
          },
          {opens_to_write(), register_read(0x0044), register_write(0x0044, 0xCAFE1231), closes()});
}

TEST_F(DeviceWord, TheFlagIsBit0OfRegister44)
{
    board.fpga.register_high = 0xFFFF;
    for_every_word([&](uint16_t word) {
        board.fpga.registers[0x0044] = word;
        caller_put(kCallers);
        ASSERT_EQ(run(RD_REG44_FLAG), 0);
        ASSERT_EQ(caller_get(2, kCallers), word % 2U);
    });
}

TEST_F(DeviceWord, OnlyOneSetsTheFlagOfRegister44AndOtherBitsAreKept)
{
    for (const uint32_t flag : {0U, 1U, 2U, 255U, 0x0101U, 0x0100U, 0xFFFFU}) {
        for_every_word([&](uint16_t word) {
            board.fpga.registers[0x0044] = word;
            caller_put(flag | 0x00010000U);
            ASSERT_EQ(run(WR_REG44_FLAG), 0);
            ASSERT_EQ(board.fpga.registers[0x0044], flag == 1 ? word | 1 : word & 0xFFFE);
        });
    }
    EXPECT_EQ(board.fpga.registers.size(), 1U);
}

TEST_F(DeviceWord, ARegister44ThatCannotBeReadLeavesTheCallersValue)
{
    board.fpga.results[0x6B42] = -1;
    caller_put(kCallers);
    EXPECT_EQ(run(RD_REG44_FLAG), -2);
    EXPECT_EQ(caller_get(4, 0), kCallers);
}

TEST_F(DeviceWord, EverythingWrittenReadsBack)
{
    for (const uint32_t flag : {1U, 0U}) {
        caller_put(flag);
        EXPECT_EQ(run(WR_REG44_FLAG), 0);
        EXPECT_EQ(run(WR_GROUP_FLAG), 0);
        caller_put(0x99);
        EXPECT_EQ(run(RD_REG44_FLAG), 0);
        EXPECT_EQ(caller_get(2, 0), flag);
        caller_put(0x99);
        EXPECT_EQ(run(RD_GROUP_FLAG), 0);
        EXPECT_EQ(caller_get(1, 0), flag);
    }
}

} // namespace
