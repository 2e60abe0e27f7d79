// CounterStates by index and selector, and the blocks of counter settings.
#include "device/commands/counter.h"

#include "device/caller_memory_fixture.h"

namespace
{

class CounterRecords : public CallerMemoryTest
{
};

using CounterStates = std::map<std::pair<uint32_t, uint32_t>, uint32_t>;

Bytes counter_of(uint32_t index, uint32_t value, uint32_t selector)
{
    return le32(index) + le32(value) + le32(selector);
}

// No two bytes of it are alike.
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
    CounterStates FpgaModel::*held;
};

constexpr CounterRow kReads[] = {{RD_COUNTER, 0x6B9A, &FpgaModel::counters},
                                 {RD_COUNTER_ALT, 0x6BA0, &FpgaModel::counters_alt}};
constexpr CounterRow kWrites[] = {{WR_COUNTER, 0x6B9F, &FpgaModel::counters},
                                  {WR_COUNTER_ALT, 0x6BA1, &FpgaModel::counters_alt}};

TEST_F(CounterRecords, ReadSendsTheWholeRecordAndReturnsTheValue)
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
TEST_F(CounterRecords, ReadTakesAnyIndexAndSelector)
{
    for (const CounterRow& row : kReads) {
        for (const uint32_t index : {0U, 1U, 94U, 255U, 256U, 0x10001U, 0xFFFFFFFFU}) {
            for (const uint32_t selector : {0U, 1U, 32U, 33U, 0xFFFFFFFFU}) {
                const Bytes asked = counter_of(index, 1, selector);
                const uint32_t value = index ^ selector ^ 0x5A5A5A5A;
                (board.fpga.*row.held)[{index, selector}] = value;
                expect_run(row.command, asked, 0, counter_of(index, value, selector));
                // Read again, it has restarted.
                expect_run(row.command, asked, 0, counter_of(index, 0, selector));
            }
        }
    }
}

TEST_F(CounterRecords, FailedReadLeavesTheRecord)
{
    const Bytes record = counter_of(3, 0x11121314, 32);
    for (const CounterRow& row : kReads) {
        expect_kept(row.command, record);
        // Nor does it matter what the driver has filled by then.
        (board.fpga.*row.held)[{3, 32}] = 0xFEDCBA98;
        board.fpga.fills_when_failing = true;
        board.fpga.results[row.request] = -1;
        expect_run(row.command, record, -2, record);
        board.fpga.results.clear();
        EXPECT_EQ((board.fpga.*row.held).at({3, 32}), 0U) << "it has been read";
        board.fpga.fills_when_failing = false;
    }
}

TEST_F(CounterRecords, WriteSendsTheWholeRecord)
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
TEST_F(CounterRecords, TheDriverGetsACopyOfTheCallersRecord)
{
    const Bytes before = counter_of(1, 2, 32);
    const Bytes other = counter_of(7, 8, 33);
    for (const CounterRow& row : kWrites) {
        EXPECT_EQ(run_changing(row.command, before, row.request, other), 0);
        EXPECT_EQ((board.fpga.*row.held), (CounterStates{{{1, 32}, 2}}));
    }
    for (const CounterRow& row : kReads) {
        EXPECT_EQ(run_changing(row.command, before, row.request, other), 0);
        EXPECT_EQ(record(), counter_of(7, 2, 33));
    }
}

TEST_F(CounterRecords, WhatWasWrittenIsReadByTheCounterOfTheSameKind)
{
    EXPECT_EQ(run(WR_COUNTER, counter_of(5, 100, 32)), 0);
    EXPECT_EQ(run(WR_COUNTER_ALT, counter_of(5, 200, 32)), 0);
    expect_run(RD_COUNTER_ALT, counter_of(5, 0, 32), 0, counter_of(5, 200, 32));
    expect_run(RD_COUNTER, counter_of(5, 0, 32), 0, counter_of(5, 100, 32));
}

// Blocks ------------------------------------------------------------------------------------

struct Block {
    DeviceCommandCode command;
    uint32_t request;
    size_t size;
};

constexpr Block kBlocks[] = {{WR_COUNTER_BLOCK_LARGE, 0x6B9C, 160},
                             {WR_COUNTER_BLOCK_SMALL, 0x6B9B, 68}};

TEST_F(CounterRecords, BlocksGoToTheDriverInFullAndAsCopies)
{
    for (const auto& [command, request, size] : kBlocks) {
        const Bytes block = block_of(size);
        prove_record(command, block, {opens_to_write(), record_write(request, block, -2), closes()},
                     block);
        EXPECT_EQ(board.fpga.written[request], block);
        board.fpga.written.clear();
        EXPECT_EQ(run_changing(command, block, request, Bytes(size, '\xFF')), 0);
        EXPECT_EQ(board.fpga.written[request], block);
    }
}

// One counter, for the statistics -----------------------------------------------------------

TEST_F(CounterRecords, OneCounterIsReadWithTheDeviceOpenForWriting)
{
    Course course;
    for (const uint32_t index : {0U, 255U}) {
        for (const uint32_t selector : {32U, 33U}) {
            board.fpga.counters = {{{index, selector}, index + selector}};
            uint32_t value = 1;
            EXPECT_EQ(counter_read(index, CounterSelector{selector}, value), 0);
            EXPECT_EQ(value, index + selector);
            course = course + Course{opens_to_write(),
                                     record_read(0x6B9A, counter_of(index, 0, selector)), closes()};
        }
    }
    EXPECT_EQ(board.calls, calls_of(course));
}

TEST_F(CounterRecords, ACounterBeyondTheLastIsRefusedUnopened)
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

TEST_F(CounterRecords, ACounterThatCannotBeReadLeavesTheValue)
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
