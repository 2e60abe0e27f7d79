// The traffic statistics: the calls of a save and a clear, the file's layout, and the sums.
#include "device/statistics_fixture.h"

namespace
{

Course counters_course()
{
    Course course;
    for (const auto& [index, selector] : reading_order()) {
        course =
            course + Course{opens_to_write(),
                            record_read(0x6B9A, le32(index) + le32(0) + le32(selector)), closes()};
    }
    return course;
}

const Course kReadFile = {{"open /conf/statistics O_RDWR", -1}, {"read /conf/statistics 496", -1}};
const Course kWriteFile = {{"lseek /conf/statistics 0", -1},
                           {"write /conf/statistics 496", -1},
                           {"close /conf/statistics", kIgnored}};
// Without the word, 18 bytes an item; what its failed open leaves out is tested apart.
const Course kReadWord = {opens_to_read(kElsewhere), record_read(0x6B03, le16(0), kIgnored),
                          closes()};

Course save_course()
{
    return kReadFile + kReadWord + counters_course() + kWriteFile;
}

Course clear_course()
{
    return kReadFile + counters_course() + kWriteFile;
}

// Course ------------------------------------------------------------------------------------

TEST_F(StatisticsTest, ReadsTheFourCountersOfEachPortWithAnOpenEach)
{
    ASSERT_EQ(reading_order().size(), 120U);
    ASSERT_EQ(save_course().size(), 2U + 3 + 360 + 3);
    ASSERT_EQ(clear_course().size(), 2U + 360 + 3);
    // The first and the last calls, letter by letter.
    board_put(file_sample(), counters_sample(1));
    EXPECT_EQ(run(WR_STATISTICS_SAVE, kCallers), 0);
    const Trace calls = board.calls;
    ASSERT_EQ(calls.size(), 368U);
    const std::string opens = "open /dev/fpga O_RDWR|O_NONBLOCK";
    EXPECT_EQ(Trace(calls.begin(), calls.begin() + 20),
              (Trace{"open /conf/statistics O_RDWR",
                     "read /conf/statistics 496",
                     "open /dev/fpga O_RDONLY|O_NONBLOCK",
                     "ioctl 6B03 00 00",
                     "close /dev/fpga",
                     opens,
                     "ioctl 6B9A 01 00 00 00 00 00 00 00 20 00 00 00",
                     "close /dev/fpga",
                     opens,
                     "ioctl 6B9A 01 00 00 00 00 00 00 00 21 00 00 00",
                     "close /dev/fpga",
                     opens,
                     "ioctl 6B9A 41 00 00 00 00 00 00 00 20 00 00 00",
                     "close /dev/fpga",
                     opens,
                     "ioctl 6B9A 41 00 00 00 00 00 00 00 21 00 00 00",
                     "close /dev/fpga",
                     opens,
                     "ioctl 6B9A 02 00 00 00 00 00 00 00 20 00 00 00",
                     "close /dev/fpga"}));
    EXPECT_EQ(Trace(calls.end() - 6, calls.end()),
              (Trace{opens, "ioctl 6B9A 5E 00 00 00 00 00 00 00 21 00 00 00", "close /dev/fpga",
                     "lseek /conf/statistics 0", "write /conf/statistics 496",
                     "close /conf/statistics"}));
}

TEST_F(StatisticsTest, EachTakesItsCourseAndEveryFailureHasItsCode)
{
    device_put = [this] { board.file_put(kFile, file_sample()); };
    prove(WR_STATISTICS_SAVE, with(kCallers), save_course());
    prove(WR_STATISTICS_CLEAR, with(kCallers), clear_course());
}

// Layout ------------------------------------------------------------------------------------

struct Place {
    uint32_t index; // of the counter
    size_t kib;
    size_t rest;
};

constexpr Place kPlaces[] = {
    {1, 128, 376},  {2, 132, 380},  {3, 136, 384},  {4, 140, 388},  {5, 144, 392},  {6, 148, 396},
    {7, 152, 400},  {8, 156, 404},  {9, 160, 408},  {10, 164, 412}, {11, 168, 416}, {12, 172, 420},
    {13, 176, 424}, {14, 180, 428}, {15, 184, 432}, {16, 188, 436}, {17, 192, 440}, {18, 196, 444},
    {19, 200, 448}, {20, 204, 452}, {21, 208, 456}, {22, 212, 460}, {23, 216, 464}, {24, 220, 468},
    {25, 224, 472}, {26, 228, 476}, {27, 232, 480}, {28, 236, 484}, {29, 240, 488}, {30, 244, 492},
    {65, 8, 256},   {66, 12, 260},  {67, 16, 264},  {68, 20, 268},  {69, 24, 272},  {70, 28, 276},
    {71, 32, 280},  {72, 36, 284},  {73, 40, 288},  {74, 44, 292},  {75, 48, 296},  {76, 52, 300},
    {77, 56, 304},  {78, 60, 308},  {79, 64, 312},  {80, 68, 316},  {81, 72, 320},  {82, 76, 324},
    {83, 80, 328},  {84, 84, 332},  {85, 88, 336},  {86, 92, 340},  {87, 96, 344},  {88, 100, 348},
    {89, 104, 352}, {90, 108, 356}, {91, 112, 360}, {92, 116, 364}, {93, 120, 368}, {94, 124, 372},
};

TEST_F(StatisticsTest, EachCounterHasItsPlaceInTheFile)
{
    const Bytes before = file_sample();
    for (const Place& place : kPlaces) {
        SCOPED_TRACE(hex_number(place.index));
        board_put(before, {{{place.index, 32}, 0x01020304}});
        Bytes after = before;
        const uint32_t sum = 0x01020304 + total_at(before, place.rest);
        total_put(after, place.kib, total_at(before, place.kib) + sum / 1024);
        total_put(after, place.rest, sum % 1024);
        EXPECT_EQ(run_well(WR_STATISTICS_SAVE), after);

        board_put(before, {{{place.index, 33}, 1024}}); // 18 KiB
        after = before;
        total_put(after, place.kib, total_at(before, place.kib) + 18);
        EXPECT_EQ(run_well(WR_STATISTICS_SAVE), after);
    }
}

TEST_F(StatisticsTest, CountersThatAreNobodysAreNotRead)
{
    Counters others;
    for (const uint32_t index : {0U, 31U, 32U, 63U, 64U, 95U, 128U, 255U}) {
        others[{index, 32}] = others[{index, 33}] = 5000;
    }
    for (const uint32_t index : {1U, 30U, 65U, 94U}) {
        others[{index, 0}] = others[{index, 31}] = others[{index, 34}] = 5000;
    }
    for (const DeviceCommandCode command : {WR_STATISTICS_SAVE, WR_STATISTICS_CLEAR}) {
        board_put(cleared(file_sample()), others);
        EXPECT_EQ(run_well(command), cleared(file_sample()));
        for (const auto& [key, count] : others) {
            EXPECT_EQ(board.fpga.counters[key], count);
        }
    }
}

// Sums --------------------------------------------------------------------------------------

struct Sum {
    uint16_t word; // 03
    uint32_t bytes;
    uint32_t items;
    uint32_t kib;
    uint32_t rest;
    uint32_t kib_after;
    uint32_t rest_after;
};

constexpr Sum kSums[] = {
    {0x0000, 100, 0, 7, 1000, 8, 76},
    {0x0000, 0, 1, 0, 0, 0, 18},
    {0x0100, 0, 1, 0, 0, 0, 26},
    {0xFEFF, 0, 1, 0, 0, 0, 18},
    {0xFFFF, 0, 1, 0, 0, 0, 26},
    {0x0000, 0, 0, 7, 1023, 7, 1023},
    {0x0000, 23, 0, 7, 1000, 7, 1023},
    {0x0000, 24, 0, 7, 1000, 8, 0},
    {0x0000, 1023, 0, 7, 0, 7, 1023},
    {0x0000, 1024, 0, 7, 0, 8, 0},
    {0x0000, 1, 0, 7, 1023, 8, 0},
    {0x0000, 2, 3, 7, 1000, 8, 32},
    {0x0100, 2, 3, 7, 1000, 8, 56},
    // Sums wrap at 32 bits
    {0x0000, 0xFFFFFFFF, 0, 7, 0, 0x400006, 1023},
    {0x0000, 0xFFFFFFFF, 0, 7, 1, 7, 0},
    {0x0000, 0xFFFFFFFF, 1, 7, 0, 7, 17},
    {0x0100, 0xFFFFFFFF, 1, 7, 0, 7, 25},
    {0x0000, 0, 0x10000000, 0, 5, 0x80000, 5},
    {0x0100, 0, 0x10000000, 0, 5, 0x280000, 5},
    // and so do the totals
    {0x0000, 1024, 0, 0xFFFFFFFF, 3, 0, 3},
    {0x0000, 0xFFFFFFFF, 0, 0xFFFFFFFF, 0, 0x3FFFFE, 1023},
    // A remainder that is none
    {0x0000, 0, 0, 7, 5000, 11, 904},
    {0x0000, 1, 0, 7, 0xFFFFFFFF, 7, 0},
};

TEST_F(StatisticsTest, SaveAddsBytesAndItemsToEveryTotal)
{
    for (const Sum& sum : kSums) {
        for (const Stream& stream : kStreams) {
            for (const uint32_t i : {0U, 16U, 29U}) {
                SCOPED_TRACE(std::string("stream ") + stream.name + " port " +
                             std::to_string(i + 1) + " bytes " + hex_number(sum.bytes) + " items " +
                             hex_number(sum.items));
                Bytes file = file_sample();
                total_put(file, stream.kib + 4 * i, sum.kib);
                total_put(file, stream.rest + 4 * i, sum.rest);
                board_put(
                    file,
                    {{{stream.index + i, 32}, sum.bytes}, {{stream.index + i, 33}, sum.items}},
                    sum.word);
                total_put(file, stream.kib + 4 * i, sum.kib_after);
                total_put(file, stream.rest + 4 * i, sum.rest_after);
                ASSERT_EQ(run_well(WR_STATISTICS_SAVE), file);
            }
        }
    }
}

TEST_F(StatisticsTest, TheDriverMayFill496BytesForTheWord)
{
    const Bytes file = file_sample();
    board_put(file, counters_sample(5), 0x0100);
    board.fpga.filled[0x6B03] = 496;
    EXPECT_EQ(run_well(WR_STATISTICS_SAVE), saved(file, counters_sample(5), 26));
}

TEST_F(StatisticsTest, SavesFollowTheModel)
{
    std::mt19937 random(20060301);
    Bytes file = file_sample(7);
    for (uint32_t round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        const Counters counters = counters_sample(round);
        const auto word = static_cast<uint16_t>(random());
        board_put(file, counters, word);
        file = saved(file, counters, (word & 0x0100) != 0 ? 26 : 18);
        ASSERT_EQ(run_well(WR_STATISTICS_SAVE), file);
        for (const auto& [key, count] : board.fpga.counters) {
            ASSERT_EQ(count, 0U);
        }
        // Nothing has been counted since.
        ASSERT_EQ(run_well(WR_STATISTICS_SAVE), file);
    }
}

TEST_F(StatisticsTest, ClearZeroesEveryTotalAndEveryCounter)
{
    for (uint32_t round = 0; round < 20; ++round) {
        const Bytes file = round == 0 ? Bytes(496, '\xFF') : file_sample(round);
        board_put(file, counters_sample(round), static_cast<uint16_t>(round << 8));
        EXPECT_EQ(run_well(WR_STATISTICS_CLEAR), cleared(file));
        EXPECT_EQ(board.fpga.counters.size(), 120U);
        for (const auto& [key, count] : board.fpga.counters) {
            EXPECT_EQ(count, 0U);
        }
        // The clear has discarded what was counted before it.
        EXPECT_EQ(run_well(WR_STATISTICS_SAVE), cleared(file));
    }
}

// Words 0, 1, 62 and 63 belong to others.
TEST_F(StatisticsTest, KeepsTheWordsThatAreNotItsOwn)
{
    for (const DeviceCommandCode command : {WR_STATISTICS_SAVE, WR_STATISTICS_CLEAR}) {
        for (const uint32_t kept : {0U, 0x12345678U, 0xFFFFFFFFU}) {
            Bytes file = file_sample();
            for (const size_t offset : {0U, 4U, 248U, 252U}) {
                total_put(file, offset, kept + static_cast<uint32_t>(offset));
            }
            board_put(file, counters_sample(3));
            const Bytes after = run_well(command);
            EXPECT_EQ(after.substr(0, 8), file.substr(0, 8));
            EXPECT_EQ(after.substr(248, 8), file.substr(248, 8));
        }
    }
}

} // namespace
