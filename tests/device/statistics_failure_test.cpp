// What a save and a clear of the traffic statistics do when the device or the file fails.
#include <sys/resource.h>

#include <csignal>

#include "device/statistics_fixture.h"

namespace
{

// Device word 03 ----------------------------------------------------------------------------

TEST_F(StatisticsTest, AnUnreadWordCountsEighteenBytesAnItem)
{
    const Bytes file = file_sample();
    const Counters counters = counters_sample(5);
    board_put(file, counters, 0x0100);
    board.fpga.results[0x6B03] = -1;
    EXPECT_EQ(run_well(WR_STATISTICS_SAVE), saved(file, counters, 18));
    EXPECT_EQ(board.calls.size(), 368U);
    board.fpga.results.clear();

    // The same when the device cannot be opened for the word.
    board_put(file, counters, 0x0100);
    board.fail_call(3);
    EXPECT_EQ(run_well(WR_STATISTICS_SAVE), saved(file, counters, 18));
    EXPECT_EQ(board.calls.size(), 368U - 2);
    EXPECT_EQ(board.calls[2], "open /dev/fpga O_RDONLY|O_NONBLOCK -> failed");
    EXPECT_EQ(board.calls[3], "open /dev/fpga O_RDWR|O_NONBLOCK");

    board_put(file, counters, 0x0100);
    EXPECT_EQ(run_well(WR_STATISTICS_SAVE), saved(file, counters, 26));
}

// Failures of the counters ------------------------------------------------------------------

// Where a command's counters begin: the first one's open, its request and its close follow each
// other. The command's first call has number 1.
struct Failing {
    DeviceCommandCode command;
    size_t first_open;
};

constexpr Failing kFailing[] = {{WR_STATISTICS_SAVE, 6}, {WR_STATISTICS_CLEAR, 3}};

TEST_F(StatisticsTest, ACounterThatCannotBeReadLeavesTheFile)
{
    board.recording = false;
    const Bytes file = file_sample();
    for (const Failing& failing : kFailing) {
        for (size_t counter = 0; counter < 120; ++counter) {
            for (const bool opened : {false, true}) {
                SCOPED_TRACE("counter " + std::to_string(counter) + (opened ? " read" : " open"));
                board_put(file, counters_sample(2));
                // Closed after the failure: the file, and the device if it was opened.
                fail_in_both_runs(failing.first_open + 3 * counter + (opened ? 1 : 0),
                                  opened ? 2 : 1);
                ASSERT_EQ(run(failing.command, kCallers), opened ? -2 : -1);
                ASSERT_EQ(board.file_get(kFile), file);
                ASSERT_EQ(board.open_descriptors(), 0U);
            }
        }
    }
}

// Counters restart when they are read: those that the first run read before its failure are lost,
// and the second run adds only what is left.
TEST_F(StatisticsTest, ASecondRunAddsOnlyWhatTheFirstHasNotRead)
{
    board.recording = false;
    const Bytes file = file_sample();
    const auto order = reading_order();
    const Counters counters = counters_sample(9);
    for (size_t counter = 0; counter < order.size(); ++counter) {
        for (const size_t call : {0U, 1U}) {
            SCOPED_TRACE(counter);
            Counters left = counters;
            for (size_t lost = 0; lost < counter; ++lost) {
                left[order[lost]] = 0;
            }
            board_put(file, counters, 0x0100);
            board.fail_call(6 + 3 * counter + call);
            ASSERT_EQ(run_well(WR_STATISTICS_SAVE), saved(file, left, 26));
        }
    }
}

TEST_F(StatisticsTest, AClearSucceedsInItsSecondRun)
{
    board.recording = false;
    for (size_t counter = 0; counter < 120; ++counter) {
        board_put(file_sample(), counters_sample(9));
        board.fail_call(3 + 3 * counter + 1);
        ASSERT_EQ(run_well(WR_STATISTICS_CLEAR), cleared(file_sample()));
    }
}

// Failures of the file ----------------------------------------------------------------------

TEST_F(StatisticsTest, AShortFileIsNeitherRepairedNorCounted)
{
    for (const DeviceCommandCode command : {WR_STATISTICS_SAVE, WR_STATISTICS_CLEAR}) {
        for (const size_t size : {0U, 1U, 248U, 495U}) {
            SCOPED_TRACE(size);
            const Bytes file = file_sample().substr(0, size);
            const Counters counters = counters_sample(4);
            board_put(file, counters, 0x0100);
            EXPECT_EQ(run(command, kCallers), -1);
            const Trace once = {"open /conf/statistics O_RDWR", "read /conf/statistics 496",
                                "close /conf/statistics", "usleep 1"};
            EXPECT_EQ(board.calls, once + once);
            EXPECT_EQ(board.file_get(kFile), file);
            EXPECT_EQ(board.fpga.counters, counters);
            // What could be read is in the caller's buffer.
            EXPECT_EQ(record(), file + untouched(kFileSize - size));
        }
    }
}

TEST_F(StatisticsTest, AMissingFileIsNotMade)
{
    for (const DeviceCommandCode command : {WR_STATISTICS_SAVE, WR_STATISTICS_CLEAR}) {
        board.restart();
        EXPECT_EQ(run(command, kCallers), -1);
        EXPECT_EQ(board.calls, (Trace{"open /conf/statistics O_RDWR", "usleep 1",
                                      "open /conf/statistics O_RDWR", "usleep 1"}));
        EXPECT_FALSE(board.file_exists(kFile));
        EXPECT_EQ(record(), kCallers);
    }
}

TEST_F(StatisticsTest, BytesBehindTheStatisticsStay)
{
    const Bytes file = file_sample();
    const Counters counters = counters_sample(6);
    for (const Bytes& behind : {Bytes("x"), Bytes("behind the statistics")}) {
        board_put(file + behind, counters);
        EXPECT_EQ(run(WR_STATISTICS_SAVE, kCallers), 0);
        EXPECT_EQ(board.file_get(kFile), saved(file, counters, 18) + behind);
        EXPECT_EQ(record(), saved(file, counters, 18));
        EXPECT_EQ(run(WR_STATISTICS_CLEAR, kCallers), 0);
        EXPECT_EQ(board.file_get(kFile), cleared(file) + behind);
        EXPECT_EQ(record(), cleared(file));
    }
}

TEST_F(StatisticsTest, AFileThatCannotBeWrittenStaysAsItWas)
{
    const Bytes file = file_sample();
    for (const bool clears : {false, true}) {
        const DeviceCommandCode command = clears ? WR_STATISTICS_CLEAR : WR_STATISTICS_SAVE;
        const size_t seek = clears ? 363 : 366;
        for (const size_t failing : {seek, seek + 1}) {
            board_put(file, counters_sample(8));
            fail_in_both_runs(failing, 1);
            EXPECT_EQ(run(command, kCallers), -1);
            EXPECT_EQ(board.file_get(kFile), file);
            EXPECT_EQ(board.open_descriptors(), 0U);

            // The first run has read every counter: the second finds nothing to add.
            board_put(file, counters_sample(8));
            board.fail_call(failing);
            EXPECT_EQ(run_well(command), clears ? cleared(file) : file);
        }
    }
}

// A write that ends early, as on a full file system.
TEST_F(StatisticsTest, AShortWriteIsAFailure)
{
    const Bytes file = file_sample();
    const Counters counters = counters_sample(8);
    signal(SIGXFSZ, SIG_IGN); // a write that lies wholly beyond the limit fails like any other
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    for (const bool clears : {false, true}) {
        board_put(file, counters);
        rlimit limit = before;
        limit.rlim_cur = 100;
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        const int32_t result = run(clears ? WR_STATISTICS_CLEAR : WR_STATISTICS_SAVE, kCallers);
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_EQ(result, -1);
        const Bytes after = clears ? cleared(file) : saved(file, counters, 18);
        EXPECT_EQ(board.file_get(kFile), after.substr(0, 100) + file.substr(100));
        EXPECT_EQ(board.open_descriptors(), 0U);
    }
}

} // namespace
