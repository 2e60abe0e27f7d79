// The commands of the mode in register 0x168, which bit 6 of register 0x158 can bracket.
#include "device/register_test.h"

namespace
{

class RegisterMode : public RegisterTest
{
};

Bytes mode(uint32_t mode, uint32_t bracket)
{
    return le16(mode) + le16(bracket);
}

TEST_F(RegisterMode, TheModeIsBits12And13AndZeroIsFour)
{
    read_every_value(0x006A, 0x168, le16(0xA5A5), [](uint16_t word) {
        const uint32_t field = word / 0x1000 % 4;
        return le16(field == 0 ? 4 : field);
    });
}

TEST_F(RegisterMode, TheModeReplacesBits12And13)
{
    for (const auto& [value, bits] : {std::pair{1, 0x1000}, {2, 0x2000}, {3, 0x3000}}) {
        write_over_every_value(
            0x006B, 0x168, mode(static_cast<uint32_t>(value), 0),
            [bits = bits](uint16_t word) { return static_cast<uint16_t>((word & 0xCFFF) | bits); });
    }
}

TEST_F(RegisterMode, ModeFourIsStoredAsZeroAndTheCallersModeBecomesZero)
{
    for (const uint16_t bracket : {uint16_t{0}, uint16_t{1}}) {
        uint16_t& held = at(0x168);
        for_every_word([&](uint16_t word) {
            held = word;
            put(mode(4, bracket));
            ASSERT_EQ(run(0x006B), 0);
            ASSERT_EQ(held, word & 0xCFFF);
            ASSERT_EQ(get(), mode(0, bracket));
        });
    }
}

TEST_F(RegisterMode, ABracketLeavesBit6SetAndKeepsTheOthers)
{
    at(0x168) = 0xFFFF;
    for (const uint16_t bracket : {uint16_t{1}, uint16_t{2}, uint16_t{0x0100}, uint16_t{0xFFFF}}) {
        uint16_t& held = at(0x158);
        for_every_word([&](uint16_t word) {
            held = word;
            put(mode(2, bracket));
            ASSERT_EQ(run(0x006B), 0);
            ASSERT_EQ(held, word | 0x0040);
            ASSERT_EQ(at(0x168), 0xEFFF);
            ASSERT_EQ(get(), mode(2, bracket));
        });
    }
}

TEST_F(RegisterMode, WithoutABracketRegister158IsLeftAlone)
{
    at(0x158) = 0x0000;
    expect_course(0x006B, put(mode(3, 0)), changes_register(0x168, 0x3000));
    EXPECT_EQ(at(0x158), 0x0000);
}

TEST_F(RegisterMode, AModeOutside1To4IsRefused)
{
    for (const uint32_t bracket : {0U, 1U}) {
        refuse_all_but(
            0x006B, [=](uint16_t value) { return mode(value, bracket); },
            [](uint16_t value) { return value >= 1 && value <= 4; });
    }
    for (const uint32_t value : {0U, 5U, 0x0101U, 0xFFFFU}) {
        expect_refused(0x006B, put(mode(value, 1)));
        EXPECT_EQ(get(), mode(value, 1));
    }
}

TEST_F(RegisterMode, TheModeReadsBackAsWritten)
{
    for (const uint32_t bracket : {0U, 1U}) {
        for (uint32_t value = 1; value <= 4; ++value) {
            put(mode(value, bracket));
            EXPECT_EQ(run(0x006B), 0);
            put(le16(0xA5A5));
            EXPECT_EQ(run(0x006A), 0);
            EXPECT_EQ(get(), le16(value));
        }
    }
}

// The course of a mode in its bracket: each of the three changes on a descriptor of its own.
const Course kClearsBit6{opens_to_write(), register_read(0x158), register_write(0x158, 0xCAFEFFBF),
                         closes()};
const Course kSetsMode1{opens_to_write(), register_read(0x168), register_write(0x168, 0xCAFE9003),
                        closes()};
const Course kSetsBit6{opens_to_write(), register_read(0x158), register_write(0x158, 0xCAFEFFFF),
                       closes()};

// The calls up to the failing one, and the close where a descriptor was open.
Trace trace_failing(const Course& course, size_t failing)
{
    const Trace all = calls_of(course);
    Trace trace(all.begin(), all.begin() + static_cast<ptrdiff_t>(failing) + 1);
    trace.back() += " -> failed";
    if (course[failing].failure == -2 || course[failing].failure == -4) {
        trace.push_back("close /dev/fpga");
    }
    return trace;
}

const Trace kRetry{"usleep 1"};

class RegisterModeBracket : public RegisterTest
{
  protected:
    void* start(uint32_t value)
    {
        board.restart();
        board.fpga.registers = {{0x158, 0xFFFF}, {0x168, 0xA003}};
        return put(mode(value, 1));
    }
};

TEST_F(RegisterModeBracket, ClearsBit6BeforeTheModeAndSetsItAfter)
{
    expect_course(0x006B, start(1), kClearsBit6 + kSetsMode1 + kSetsBit6);
    EXPECT_EQ(at(0x168), 0x9003);
    EXPECT_EQ(at(0x158), 0xFFFF);
    EXPECT_EQ(get(), mode(1, 1));
}

// The whole command is run twice; the clearing of bit 6 is not repeated for itself.
TEST_F(RegisterModeBracket, AFailureBeforeTheModeIsWrittenIsTheResult)
{
    const Course course = kClearsBit6 + kSetsMode1 + kSetsBit6;
    for (size_t failing = 0; failing < 8; ++failing) {
        SCOPED_TRACE(failing);
        if (course[failing].failure == kIgnored) {
            continue;
        }
        const Trace failed = trace_failing(course, failing);

        start(1);
        board.fail_call(failing + 1);
        EXPECT_EQ(run(0x006B), 0);
        EXPECT_EQ(board.calls, failed + kRetry + calls_of(course));
        EXPECT_EQ(at(0x168), 0x9003);
        EXPECT_EQ(at(0x158), 0xFFFF);

        start(1);
        board.fail_calls({failing + 1, failed.size() + 1 + failing + 1});
        EXPECT_EQ(run(0x006B), course[failing].failure);
        EXPECT_EQ(board.calls, failed + kRetry + failed + kRetry);
        EXPECT_EQ(get(), mode(1, 1));
        EXPECT_EQ(at(0x168), 0xA003);
        // Once cleared, bit 6 stays so.
        EXPECT_EQ(at(0x158), failing < 3 ? 0xFFFF : 0xFFBF);
    }
}

TEST_F(RegisterModeBracket, AFailureAfterTheModeIsWrittenIsIgnored)
{
    const Course course = kClearsBit6 + kSetsMode1 + kSetsBit6;
    for (size_t failing = 8; failing < 12; ++failing) {
        SCOPED_TRACE(failing);
        start(1);
        board.fail_call(failing + 1);
        EXPECT_EQ(run(0x006B), 0);
        EXPECT_EQ(board.calls, trace_failing(course, failing));
        EXPECT_EQ(at(0x168), 0x9003);
        EXPECT_EQ(at(0x158), failing < 11 ? 0xFFBF : 0xFFFF);
        EXPECT_EQ(get(), mode(1, 1));
    }
}

TEST_F(RegisterModeBracket, EveryBracketButZeroIsOne)
{
    for (const uint32_t bracket : {1U, 2U, 0x0100U, 0x8000U, 0xFFFFU}) {
        start(1);
        expect_course(0x006B, put(mode(1, bracket)), kClearsBit6 + kSetsMode1 + kSetsBit6);
        EXPECT_EQ(get(), mode(1, bracket));
    }
}

TEST_F(RegisterModeBracket, AFailedCloseIsIgnored)
{
    const Course course = kClearsBit6 + kSetsMode1 + kSetsBit6;
    for (const size_t failing : {3U, 7U, 11U}) {
        Trace expected = calls_of(course);
        expected[failing] += " -> failed";
        start(1);
        board.fail_call(failing + 1);
        EXPECT_EQ(run(0x006B), 0);
        EXPECT_EQ(board.calls, expected);
    }
}

// The first run leaves a 0 in the caller's mode word, which the second finds out of range.
TEST_F(RegisterModeBracket, ModeFourIsRefusedByItsSecondRun)
{
    const Course sets_mode{opens_to_write(), register_read(0x168),
                           register_write(0x168, 0xCAFE8003), closes()};
    const Course bracketed = kClearsBit6 + sets_mode + kSetsBit6;
    for (const uint32_t bracket : {0U, 1U}) {
        const Course& course = bracket == 0 ? sets_mode : bracketed;
        for (size_t failing = 0; failing < (bracket == 0 ? 3 : 7); ++failing) {
            SCOPED_TRACE(failing);
            if (course[failing].failure == kIgnored) {
                continue;
            }
            start(4);
            put(mode(4, bracket));
            board.fail_call(failing + 1);
            EXPECT_EQ(run(0x006B), -5);
            EXPECT_EQ(board.calls, trace_failing(course, failing) + kRetry);
            EXPECT_EQ(get(), mode(0, bracket));
            EXPECT_EQ(at(0x168), 0xA003);
        }
        expect_course(0x006B, (start(4), put(mode(4, bracket))), course);
        EXPECT_EQ(get(), mode(0, bracket));
    }
}

TEST_F(RegisterMode, EachCommandTakesItsCourse)
{
    prove_all(mode_proofs());
}

} // namespace

CommandProofs mode_proofs()
{
    return {
        {0x006A, le16(0xA5A5), {{0x168, 0xCFFF}}, reads_register(0x168), le16(4)},
        {0x006A, le16(0xA5A5), {{0x168, 0x3000}}, reads_register(0x168), le16(3)},
        {0x006B, mode(1, 0), {{0x168, 0xFFFF}}, changes_register(0x168, 0xDFFF), mode(1, 0)},
        {0x006B, mode(2, 0), {{0x168, 0x0000}}, changes_register(0x168, 0x2000), mode(2, 0)},
    };
}
