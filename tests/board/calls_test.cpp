// The board's calls one by one: what each does to the files, says in the record, and answers when
// it has to fail; and that what the product leaves behind fails the test.
#include "board/calls.h"

#include <fcntl.h>
#include <gtest/gtest-spi.h>
#include <sys/file.h>

#include <array>
#include <cerrno>

#include "board/board_test.h"

namespace
{

constexpr const char* kFile = "/tmp/file";

class BoardCalls : public BoardTest
{
  protected:
    // The calls of this test so far end with this one.
    void expect_last(const std::string& call) { EXPECT_EQ(board.calls.back(), call); }
};

TEST_F(BoardCalls, StatSeesTheBoardsFiles)
{
    struct stat status {
    };
    EXPECT_EQ(board_stat(kFile, &status), -1);
    EXPECT_EQ(errno, ENOENT);
    board.file_put(kFile, "12345");
    EXPECT_EQ(board_stat(kFile, &status), 0);
    EXPECT_EQ(status.st_size, 5);
    board.fail_call(1);
    EXPECT_EQ(board_stat(kFile, &status), -1);
    EXPECT_EQ(errno, EIO);
    expect_last("stat /tmp/file -> failed");
}

TEST_F(BoardCalls, UnlinkRemovesAFileUnlessItFails)
{
    board.file_put(kFile, "");
    board.fail_call(1);
    EXPECT_EQ(board_unlink(kFile), -1);
    expect_last("unlink /tmp/file -> failed");
    EXPECT_TRUE(board.file_exists(kFile));
    EXPECT_EQ(board_unlink(kFile), 0);
    expect_last("unlink /tmp/file");
    EXPECT_FALSE(board.file_exists(kFile));
}

TEST_F(BoardCalls, DescriptorIsReadWrittenAndMoved)
{
    const int file = board_open(kFile, O_RDWR | O_CREAT, 0600);
    ASSERT_GE(file, 0);
    expect_last("open /tmp/file O_RDWR|O_CREAT 0600");
    EXPECT_EQ(board_write(file, "abcdef", 6), 6);
    expect_last("write /tmp/file 6");
    EXPECT_EQ(board_lseek(file, 2, SEEK_SET), 2);
    expect_last("lseek /tmp/file 2");
    std::array<char, 8> data{};
    EXPECT_EQ(board_read(file, data.data(), 3), 3);
    expect_last("read /tmp/file 3");
    EXPECT_STREQ(data.data(), "cde");
    EXPECT_EQ(board_lseek(file, -1, SEEK_END), 5);
    expect_last("lseek /tmp/file -1 from 2");

    board.fail_from(1);
    EXPECT_EQ(board_write(file, "X", 1), -1);
    EXPECT_EQ(board_lseek(file, 0, SEEK_SET), -1);
    EXPECT_EQ(board_read(file, data.data(), 1), -1);
    EXPECT_EQ(board_close(file), -1);
    expect_last("close /tmp/file -> failed");
    EXPECT_EQ(board.open_descriptors(), 0U) << "closed all the same";
    EXPECT_STREQ(data.data(), "cde");
    EXPECT_EQ(board.file_get(kFile), "abcdef");
}

TEST_F(BoardCalls, StreamIsReadWrittenAndMoved)
{
    FILE* stream = board_fopen(kFile, "w+");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(board_fwrite("one\ntwo\n", 4, 2, stream), 2U);
    expect_last("fwrite /tmp/file 8");
    EXPECT_EQ(board_fprintf(stream, "%d\n", 345), 4);
    expect_last("fprintf /tmp/file 4");
    EXPECT_EQ(board_fseek(stream, 4, SEEK_SET), 0);
    expect_last("fseek /tmp/file 4");
    std::array<char, 16> data{};
    EXPECT_EQ(board_fgets(data.data(), 16, stream), data.data());
    expect_last("fgets /tmp/file 16");
    EXPECT_STREQ(data.data(), "two\n");
    EXPECT_EQ(board_fread(data.data(), 1, 16, stream), 4U);
    expect_last("fread /tmp/file 16");
    EXPECT_STREQ(data.data(), "345\n");
    EXPECT_EQ(board_fclose(stream), 0);
    EXPECT_EQ(board.file_get(kFile), "one\ntwo\n345\n");
}

TEST_F(BoardCalls, StreamThatFailsMovesNothing)
{
    board.file_put(kFile, "one\ntwo\n");
    FILE* stream = board_fopen(kFile, "r+");
    ASSERT_NE(stream, nullptr);
    std::array<char, 16> data{};
    board.fail_from(1);
    EXPECT_EQ(board_fseek(stream, 4, SEEK_SET), -1);
    EXPECT_EQ(board_fgets(data.data(), 16, stream), nullptr);
    EXPECT_EQ(board_fprintf(stream, "X"), -1);
    // As if half way through: 6 of 12 bytes, none of one record, 1 of 3 words.
    EXPECT_EQ(board_fread(data.data(), 1, 12, stream), 6U);
    EXPECT_EQ(board_fread(data.data(), 12, 1, stream), 0U);
    EXPECT_EQ(board_fread(data.data(), 4, 3, stream), 1U);
    EXPECT_EQ(board_fwrite("XXXXXXXXXXXX", 1, 12, stream), 6U);
    EXPECT_EQ(board_fwrite("XXXXXXXXXXXX", 12, 1, stream), 0U);
    EXPECT_EQ(board_fwrite("X", 1, 1, stream), 0U);
    EXPECT_EQ(ftell(stream), 0);
    EXPECT_EQ(board_fclose(stream), EOF);
    EXPECT_EQ(data[0], '\0');
    EXPECT_EQ(board.open_descriptors(), 0U);
    EXPECT_EQ(board.file_get(kFile), "one\ntwo\n");
}

TEST_F(BoardCalls, ConsoleAnswersTheLengthOfWhatItPrinted)
{
    EXPECT_EQ(board_printf("%s = %d\n", "x", 12), 7);
    EXPECT_EQ(board_puts("line"), 5);
    EXPECT_EQ(board.console, "x = 12\nline\n");
    EXPECT_EQ(board.calls, (Trace{"printf x = 12", "puts line"}));
    board.fail_from(1);
    EXPECT_EQ(board_printf("lost"), -1);
    EXPECT_EQ(board_puts("lost"), EOF);
    EXPECT_EQ(board.console, "x = 12\nline\n");
}

TEST_F(BoardCalls, UnlockedFileIsNoHeldLock)
{
    const int file = board_open(kFile, O_RDWR | O_CREAT, 0600);
    ASSERT_GE(file, 0);
    EXPECT_EQ(board_flock(file, LOCK_EX), 0);
    EXPECT_EQ(board.held_locks(), 1U);
    board.fail_call(1);
    EXPECT_EQ(board_flock(file, LOCK_UN), -1);
    expect_last("flock /tmp/file LOCK_UN -> failed");
    EXPECT_EQ(board.held_locks(), 1U);
    EXPECT_EQ(board_flock(file, LOCK_UN), 0);
    expect_last("flock /tmp/file LOCK_UN");
    EXPECT_EQ(board.held_locks(), 0U);
    EXPECT_EQ(board_close(file), 0);
}

TEST_F(BoardCalls, RestartForgetsCallsConsoleAndPlansAlone)
{
    board.file_put(kFile, "stays");
    board.now = 5;
    board_puts("forgotten");
    board.fail_call(2);
    board.fail_from(3);
    board.restart();
    EXPECT_EQ(board.calls, Trace{});
    EXPECT_EQ(board.call_count(), 0U);
    EXPECT_EQ(board.console, "");
    for (int call = 0; call < 4; ++call) {
        EXPECT_EQ(board_time(nullptr), 5);
    }
    EXPECT_EQ(board.file_get(kFile), "stays");
}

// The clock behind /dev/rtc ---------------------------------------------------------------------

TEST_F(BoardCalls, RtcKeepsTimeAndStatusApart)
{
    constexpr unsigned long kTimeRead = 0x80247009;
    constexpr unsigned long kTimeWrite = 0x4024700A;
    constexpr unsigned long kStatusRead = 0x80047013;
    constexpr unsigned long kStatusWrite = 0x40047014;
    const int clock = board_open("/dev/rtc", O_RDWR);
    ASSERT_GE(clock, 0);
    const std::array<int32_t, 9> time{7, 5, 9, 1, 2, 106, 3, 59, 0};
    const uint32_t status = 0x01020304;
    EXPECT_EQ(board_ioctl(clock, kTimeWrite, time.data()), 0);
    EXPECT_EQ(board.rtc.status, 0U);
    EXPECT_EQ(board_ioctl(clock, kStatusWrite, &status), 0);
    expect_last("ioctl /dev/rtc 40047014 04 03 02 01");
    EXPECT_EQ(board.rtc.time, time);
    EXPECT_EQ(board.rtc.status, status);

    std::array<int32_t, 9> time_read{};
    uint32_t status_read = 0;
    EXPECT_EQ(board_ioctl(clock, kStatusRead, &status_read), 0);
    expect_last("ioctl /dev/rtc 80047013 00 00 00 00");
    EXPECT_EQ(board_ioctl(clock, kTimeRead, time_read.data()), 0);
    EXPECT_EQ(time_read, time);
    EXPECT_EQ(status_read, status);

    time_read.fill(-1);
    board.fail_from(1);
    EXPECT_EQ(board_ioctl(clock, kTimeRead, time_read.data()), -1);
    EXPECT_EQ(time_read[0], -1);
    EXPECT_EQ(board_ioctl(clock, kTimeWrite, time_read.data()), -1);
    EXPECT_EQ(board.rtc.time, time);
    board.restart();

    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(board_ioctl(clock, 0x6B42, nullptr), -1),
                            "no driver knows request 6b42 on /dev/rtc");
    EXPECT_EQ(board_close(clock), 0);
}

TEST_F(BoardCalls, RtcThatIsAbsentCannotBeOpened)
{
    board.rtc_present = false;
    EXPECT_EQ(board_open("/dev/rtc", O_RDONLY), -1);
    EXPECT_EQ(errno, ENOENT);
}

// What is left behind ---------------------------------------------------------------------------

class BoardLeaks : public BoardTest
{
  protected:
    // Two calls; a failing second one leaves the first one's descriptor open.
    int32_t leak()
    {
        left_ = board_open(kFile, O_RDONLY);
        if (left_ < 0) {
            return -1;
        }
        struct stat status {
        };
        if (board_stat(kFile, &status) != 0) {
            return -2;
        }
        board_close(left_);
        left_ = -1;
        return 0;
    }

    void clean()
    {
        board.file_put(kFile, "");
        if (left_ >= 0) {
            board_close(left_);
            left_ = -1;
        }
    }

    int left_ = -1;
};

TEST_F(BoardLeaks, OpenDescriptorFailsTheTest)
{
    board.file_put(kFile, "");
    const int file = board_open(kFile, O_RDONLY);
    EXPECT_NONFATAL_FAILURE(BoardTest::TearDown(), "board.open_descriptors()");
    board_close(file);
}

TEST_F(BoardLeaks, HeldLockFailsTheTest)
{
    board.locked(3);
    EXPECT_NONFATAL_FAILURE(BoardTest::TearDown(), "board.held_locks()");
    board.unlocked(3);
}

TEST_F(BoardLeaks, SweepFindsADescriptorLeftByOneFailingCall)
{
    std::vector<int32_t> results;
    EXPECT_NONFATAL_FAILURE(
        failure_sweep(
            board, [this] { clean(); }, [this] { return leak(); },
            [&](size_t, const std::string&, int32_t result) { results.push_back(result); }),
        "failing call 1: stat /tmp/file");
    EXPECT_EQ(results, (std::vector<int32_t>{-1, -2, 0}));
}

TEST_F(BoardLeaks, SweepFindsALockLeftByOneFailingCall)
{
    EXPECT_NONFATAL_FAILURE(failure_sweep(
                                board, [this] { board.unlocked(3); },
                                [this] {
                                    const int32_t result = board_puts("x") < 0 ? -1 : 0;
                                    if (result != 0) {
                                        board.locked(3);
                                    }
                                    return result;
                                },
                                [](size_t, const std::string&, int32_t) {}),
                            "board.held_locks()");
    board.unlocked(3);
}

} // namespace
