// Counters by index and selector, the blocks of counter settings and the driver's own state.
#include "device/commands/counter.h"

#include <climits>

#include "device/record_fixture.h"

namespace
{

using Counters = std::map<std::pair<uint32_t, uint32_t>, uint32_t>;

class CounterTest : public RecordTest
{
};

Bytes counter_of(uint32_t index, uint32_t value, uint32_t selector)
{
    return le32(index) + le32(value) + le32(selector);
}

// Bytes of a block, no two of them alike.
Bytes block_of(size_t size)
{
    Bytes block;
    for (size_t i = 0; i < size; ++i) {
        block += static_cast<char>(i ^ 0x5A);
    }
    return block;
}

// Counter records ---------------------------------------------------------------------------

struct CounterRow {
    DeviceCommandCode command;
    uint32_t request;
    Counters FpgaModel::*held;
};

constexpr CounterRow kReads[] = {{0x0401, 0x6B9A, &FpgaModel::counters},
                                 {0x0403, 0x6BA0, &FpgaModel::counters_alt}};
constexpr CounterRow kWrites[] = {{0x0402, 0x6B9F, &FpgaModel::counters},
                                  {0x0404, 0x6BA1, &FpgaModel::counters_alt}};

TEST_F(CounterTest, ReadSendsTheWholeRecordAndReturnsTheValue)
{
    const Bytes record = counter_of(0x01020304, 0x11121314, 0x21222324);
    for (const CounterRow& row : kReads) {
        device_put = [&] {
            board.fpga.counters.clear();
            board.fpga.counters_alt.clear();
            (board.fpga.*row.held)[{0x01020304, 0x21222324}] = 0xFEDCBA98;
        };
        prove_record(row.command, record,
                     {opens_to_read(), record_read(row.request, record), closes()},
                     counter_of(0x01020304, 0xFEDCBA98, 0x21222324));
    }
}

// The record's index and selector are the driver's to judge.
TEST_F(CounterTest, ReadTakesAnyIndexAndSelector)
{
    for (const CounterRow& row : kReads) {
        for (const uint32_t index : {0U, 1U, 94U, 255U, 256U, 0x10001U, 0xFFFFFFFFU}) {
            for (const uint32_t selector : {0U, 1U, 32U, 33U, 0xFFFFFFFFU}) {
                (board.fpga.*row.held)[{index, selector}] = index ^ selector ^ 0x5A5A5A5A;
                EXPECT_EQ(run(row.command, counter_of(index, 1, selector)), 0);
                expect_record(counter_of(index, index ^ selector ^ 0x5A5A5A5A, selector));
                // Read again, it has restarted.
                EXPECT_EQ(run(row.command, counter_of(index, 1, selector)), 0);
                expect_record(counter_of(index, 0, selector));
            }
        }
    }
}

TEST_F(CounterTest, FailedReadLeavesTheRecord)
{
    const Bytes record = counter_of(3, 0x11121314, 32);
    for (const CounterRow& row : kReads) {
        expect_kept_unopened(row.command, record);
        expect_after_failed(row.command, record, row.request, -2, record);
        // Nor does it matter what the driver has filled by then.
        (board.fpga.*row.held)[{3, 32}] = 0xFEDCBA98;
        board.fpga.fills_when_failing = true;
        expect_after_failed(row.command, record, row.request, -2, record);
        EXPECT_EQ((board.fpga.*row.held).at({3, 32}), 0U) << "it has been read";
        board.fpga.fills_when_failing = false;
    }
}

TEST_F(CounterTest, WriteSendsTheWholeRecord)
{
    const Bytes record = counter_of(0x01020304, 0x11121314, 0x21222324);
    for (const CounterRow& row : kWrites) {
        prove_record(row.command, record,
                     {opens_to_write(), record_write(row.request, record, -2), closes()}, record);
        const auto held = board.fpga.*row.held;
        EXPECT_EQ(held.size(), 1U);
        EXPECT_EQ(held.at({0x01020304, 0x21222324}), 0x11121314U);
    }
}

// The driver works on copies: it neither sees nor changes the caller's record.
TEST_F(CounterTest, TheDriverGetsACopyOfTheCallersRecord)
{
    const Bytes record = counter_of(1, 2, 32);
    const Bytes other = counter_of(7, 8, 33);
    for (const CounterRow& row : kWrites) {
        EXPECT_EQ(run_changing(row.command, record, row.request, other), 0);
        EXPECT_EQ((board.fpga.*row.held), (Counters{{{1, 32}, 2}}));
    }
    for (const CounterRow& row : kReads) {
        EXPECT_EQ(run_changing(row.command, record, row.request, other), 0);
        expect_record(counter_of(7, 2, 33));
    }
}

TEST_F(CounterTest, WhatWasWrittenIsReadByTheCounterOfTheSameKind)
{
    EXPECT_EQ(run(WR_COUNTER, counter_of(5, 100, 32)), 0);
    EXPECT_EQ(run(WR_COUNTER_ALT, counter_of(5, 200, 32)), 0);
    EXPECT_EQ(run(RD_COUNTER_ALT, counter_of(5, 0, 32)), 0);
    expect_record(counter_of(5, 200, 32));
    EXPECT_EQ(run(RD_COUNTER, counter_of(5, 0, 32)), 0);
    expect_record(counter_of(5, 100, 32));
}

// Blocks ------------------------------------------------------------------------------------

struct Block {
    DeviceCommandCode command;
    uint32_t request;
    size_t size;
};

constexpr Block kBlocks[] = {{0x0405, 0x6B9C, 160}, {0x0406, 0x6B9B, 68}};

TEST_F(CounterTest, BlocksGoToTheDriverInFull)
{
    for (const Block& row : kBlocks) {
        const Bytes block = block_of(row.size);
        prove_record(row.command, block,
                     {opens_to_write(), record_write(row.request, block, -2), closes()}, block);
        EXPECT_EQ(board.fpga.written[row.request], block);
    }
}

TEST_F(CounterTest, BlocksGoToTheDriverAsCopies)
{
    for (const Block& row : kBlocks) {
        const Bytes block = block_of(row.size);
        EXPECT_EQ(run_changing(row.command, block, row.request, Bytes(row.size, '\xFF')), 0);
        EXPECT_EQ(board.fpga.written[row.request], block);
    }
}

// The driver's state ------------------------------------------------------------------------

TEST_F(CounterTest, DriverStateIsWhateverTheRequestReturns)
{
    struct Result {
        int returned;
        const char* stored;
    };
    constexpr Result kResults[] = {
        {0, "00 00"},      {1, "01 00"},      {-1, "FF FF"},      {-2, "FE FF"},
        {0x1234, "34 12"}, {32767, "FF 7F"},  {-32768, "00 80"},  {65535, "FF FF"},
        {65536, "00 00"},  {-65537, "FF FF"}, {INT_MAX, "FF FF"}, {INT_MIN, "00 00"},
        {-100, "9C FF"},   {70000, "70 11"},  {-70000, "90 EE"},
    };
    const Course course = {opens_to_write(), {"ioctl 6BA2", kIgnored}, closes()};
    for (const Result& result : kResults) {
        device_put = [&] { board.fpga.results[0x6BA2] = result.returned; };
        prove_record(RD_DRIVER_STATE, hex("C3 A5"), course, hex(result.stored));
    }
}

TEST_F(CounterTest, DriverStateThatCannotBeAskedForIsLeft)
{
    expect_kept_unopened(RD_DRIVER_STATE, hex("C3 A5"));
    EXPECT_EQ(RD_DRIVER_STATE, 0x0500U);
}

// Status and control words ------------------------------------------------------------------

struct Word {
    DeviceCommandCode command;
    uint32_t request;
    uint32_t shows; // the request under which a written word shows
};

constexpr Word kStatusWords[] = {{0x0602, 0x6BA3, 0}, {0x0604, 0x6BA5, 0}};
constexpr Word kControlWords[] = {{0x0603, 0x6BA4, 0x6BA3}, {0x0605, 0x6BA6, 0x6BA5}};

TEST_F(CounterTest, StatusWordsAreFilledInTheCallersMemory)
{
    for (const Word& row : kStatusWords) {
        board.fpga.words[row.request] = 0x89AB;
        prove_record(row.command, hex("C3 A5"),
                     {opens_to_read(), record_read(row.request, hex("C3 A5")), closes()},
                     hex("AB 89"));
        EXPECT_EQ(record_before_close(row.command, hex("C3 A5")), hex("AB 89"));
        expect_kept_unopened(row.command, hex("C3 A5"));
        expect_after_failed(row.command, hex("C3 A5"), row.request, -2, hex("C3 A5"));
    }
}

TEST_F(CounterTest, ControlWordsAreReadFromTheCallersMemory)
{
    for (const Word& row : kControlWords) {
        prove_record(row.command, hex("C3 A5"),
                     {opens_to_write(), record_write(row.request, hex("C3 A5"), -2), closes()},
                     hex("C3 A5"));
        EXPECT_EQ(board.fpga.words[row.shows], 0xA5C3U);
        EXPECT_EQ(run_changing(row.command, hex("C3 A5"), row.request, hex("34 12")), 0);
        EXPECT_EQ(board.fpga.words[row.shows], 0x1234U);
    }
}

TEST_F(CounterTest, EveryControlWordIsReadBackAsStatus)
{
    for_every_word([&](uint16_t word) {
        for (size_t i = 0; i < std::size(kStatusWords); ++i) {
            ASSERT_EQ(run(kControlWords[i].command, le16(word)), 0);
            ASSERT_EQ(run(kStatusWords[i].command, hex("C3 A5")), 0);
            ASSERT_EQ(record_bytes(), le16(word));
        }
    });
}

// A driver that answers with a positive number has not failed.
TEST_F(CounterTest, PositiveResultOfTheDriverIsSuccess)
{
    for (const uint32_t request : {0x6B9AU, 0x6B9BU, 0x6B9CU, 0x6B9FU, 0x6BA0U, 0x6BA1U, 0x6BA3U,
                                   0x6BA4U, 0x6BA5U, 0x6BA6U}) {
        board.fpga.results[request] = 3;
    }
    for (const DeviceCommandCode command : {0x0401U, 0x0402U, 0x0403U, 0x0404U, 0x0405U, 0x0406U,
                                            0x0602U, 0x0603U, 0x0604U, 0x0605U}) {
        EXPECT_EQ(run(command, Bytes(160, '\0')), 0);
    }
}

// One counter, for the statistics -----------------------------------------------------------

TEST_F(CounterTest, OneCounterIsReadWithTheDeviceOpenForWriting)
{
    board.fpga.counters = {{{0, 32}, 10}, {{0, 33}, 11}, {{255, 32}, 12}, {{255, 33}, 13}};
    uint32_t value = 1;
    EXPECT_EQ(counter_read(0, CounterSelector::kBytes, value), 0);
    EXPECT_EQ(value, 10U);
    EXPECT_EQ(counter_read(0, CounterSelector::kItems, value), 0);
    EXPECT_EQ(value, 11U);
    EXPECT_EQ(counter_read(255, CounterSelector::kBytes, value), 0);
    EXPECT_EQ(value, 12U);
    EXPECT_EQ(counter_read(255, CounterSelector::kItems, value), 0);
    EXPECT_EQ(value, 13U);
    const std::string opens = "open /dev/fpga O_RDWR|O_NONBLOCK";
    EXPECT_EQ(board.calls,
              (Trace{opens, "ioctl 6B9A 00 00 00 00 00 00 00 00 20 00 00 00", "close /dev/fpga",
                     opens, "ioctl 6B9A 00 00 00 00 00 00 00 00 21 00 00 00", "close /dev/fpga",
                     opens, "ioctl 6B9A FF 00 00 00 00 00 00 00 20 00 00 00", "close /dev/fpga",
                     opens, "ioctl 6B9A FF 00 00 00 00 00 00 00 21 00 00 00", "close /dev/fpga"}));
}

TEST_F(CounterTest, ACounterBeyondTheLastIsRefusedUnopened)
{
    for (const uint32_t index : {256U, 257U, 0x10000U, 0x80000000U, 0xFFFFFFFFU}) {
        for (const CounterSelector selector : {CounterSelector::kBytes, CounterSelector::kItems}) {
            uint32_t value = 0xC3A5E187;
            EXPECT_EQ(counter_read(index, selector, value), -5);
            EXPECT_EQ(value, 0xC3A5E187U);
        }
    }
    EXPECT_EQ(board.calls, Trace{});
}

TEST_F(CounterTest, ACounterThatCannotBeReadLeavesTheValue)
{
    uint32_t value = 0xC3A5E187;
    board.fpga.counters[{1, 32}] = 5;
    board.fail_call(1);
    EXPECT_EQ(counter_read(1, CounterSelector::kBytes, value), -1);
    board.fail_call(2);
    EXPECT_EQ(counter_read(1, CounterSelector::kBytes, value), -2);
    EXPECT_EQ(value, 0xC3A5E187U);
    EXPECT_EQ(board.open_descriptors(), 0U);
    EXPECT_EQ(counter_read(1, CounterSelector::kBytes, value), 0);
    EXPECT_EQ(value, 5U);
}

} // namespace
