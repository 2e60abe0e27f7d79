// The commands of the mode in register 0x168, which bit 6 of register 0x158 can bracket.
#include "device/register_fixture.h"

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
    read_every_value(RD_REG168_MODE, 0x168, untouched(2), [](uint16_t word) {
        const uint32_t field = word / 0x1000 % 4;
        return le16(field == 0 ? 4 : field);
    });
}

TEST_F(RegisterMode, TheModeReplacesBits12And13)
{
    for (const auto& [value, bits] : {std::pair{1, 0x1000}, {2, 0x2000}, {3, 0x3000}}) {
        write_over_every_value(
            WR_REG168_MODE, 0x168, mode(static_cast<uint32_t>(value), 0),
            [bits = bits](uint16_t word) { return static_cast<uint16_t>((word & 0xCFFF) | bits); });
    }
}

TEST_F(RegisterMode, ModeFourIsStoredAsZeroAndTheCallersModeBecomesZero)
{
    for (const uint16_t bracket : {uint16_t{0}, uint16_t{1}}) {
        uint16_t& held = at(0x168);
        for_every_word([&](uint16_t word) {
            held = word;
            ASSERT_EQ(run(WR_REG168_MODE, mode(4, bracket)), 0);
            ASSERT_EQ(held, word & 0xCFFF);
            ASSERT_EQ(record(), mode(0, bracket));
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
            ASSERT_EQ(run(WR_REG168_MODE, mode(2, bracket)), 0);
            ASSERT_EQ(held, word | 0x0040);
            ASSERT_EQ(at(0x168), 0xEFFF);
            ASSERT_EQ(record(), mode(2, bracket));
        });
    }
}

TEST_F(RegisterMode, WithoutABracketRegister158IsLeftAlone)
{
    at(0x158) = 0x0000;
    expect_calls(WR_REG168_MODE, mode(3, 0), changes_register(0x168, 0x3000), mode(3, 0));
    EXPECT_EQ(at(0x158), 0x0000);
}

TEST_F(RegisterMode, AModeOutside1To4IsRefused)
{
    for (const uint32_t bracket : {0U, 1U}) {
        refuse_all_but(
            WR_REG168_MODE, [=](uint16_t value) { return mode(value, bracket); },
            [](uint16_t value) { return value >= 1 && value <= 4; });
    }
    for (const uint32_t value : {0U, 5U, 0x0101U, 0xFFFFU}) {
        expect_refused(WR_REG168_MODE, mode(value, 1));
    }
}

TEST_F(RegisterMode, TheModeReadsBackAsWritten)
{
    for (const uint32_t bracket : {0U, 1U}) {
        for (uint32_t value = 1; value <= 4; ++value) {
            EXPECT_EQ(run(WR_REG168_MODE, mode(value, bracket)), 0);
            expect_run(RD_REG168_MODE, untouched(2), 0, le16(value));
        }
    }
}

// A bracket: each of the three changes on a descriptor of its own ------------------------------

Course sets_mode(uint32_t value)
{
    return changes_register(0x168, static_cast<uint16_t>(0x8003 | value % 4 * 0x1000));
}

Course bracketed(const Course& course)
{
    return changes_register(0x158, 0xFFBF) + course + changes_register(0x158, 0xFFFF);
}

// The calls up to the failing one, and the close where a descriptor was open.
Trace trace_failing(const Course& course, size_t failing)
{
    const Trace all = calls_of(course);
    Trace trace(all.begin(), all.begin() + static_cast<ptrdiff_t>(failing) + 1);
    trace.back() += " -> failed";
    if (course[failing].failure == DEVICE_READ_FAILED ||
        course[failing].failure == DEVICE_WRITE_FAILED) {
        trace.push_back("close /dev/fpga");
    }
    return trace;
}

const Trace kRetry{"usleep 1"};
const Course kBracketed = bracketed(sets_mode(1));

class RegisterModeBracket : public RegisterTest
{
  protected:
    RegisterModeBracket()
    {
        device_put = [this] { board.fpga.registers = {{0x158, 0xFFFF}, {0x168, 0xA003}}; };
    }

    // A mode, its result, the calls and what is held afterwards, when some calls fail.
    void expect_failing(const Bytes& before, const std::set<size_t>& failing, int32_t result,
                        const Trace& calls, const Bytes& after, uint16_t held_158,
                        uint16_t held_168)
    {
        board.restart();
        board.fail_calls(failing);
        expect_run(WR_REG168_MODE, before, result, after);
        EXPECT_EQ(board.calls, calls);
        EXPECT_EQ(hex_number(at(0x158)), hex_number(held_158));
        EXPECT_EQ(hex_number(at(0x168)), hex_number(held_168));
    }
};

TEST_F(RegisterModeBracket, EveryBracketButZeroClearsBit6BeforeTheModeAndSetsItAfter)
{
    for (const uint32_t bracket : {1U, 2U, 0x0100U, 0x8000U, 0xFFFFU}) {
        expect_failing(mode(1, bracket), {}, 0, calls_of(kBracketed), mode(1, bracket), 0xFFFF,
                       0x9003);
    }
}

// The whole command is run twice; the clearing of bit 6 is not repeated for itself.
TEST_F(RegisterModeBracket, AFailureBeforeTheModeIsWrittenIsTheResult)
{
    for (size_t failing = 0; failing < 8; ++failing) {
        SCOPED_TRACE(failing);
        const int32_t failure = kBracketed[failing].failure;
        if (failure == kIgnored) {
            continue;
        }
        const Trace failed = trace_failing(kBracketed, failing);
        expect_failing(mode(1, 1), {failing + 1}, 0, failed + kRetry + calls_of(kBracketed),
                       mode(1, 1), 0xFFFF, 0x9003);
        // Once cleared, bit 6 stays so.
        expect_failing(mode(1, 1), {failing + 1, failed.size() + 1 + failing + 1}, failure,
                       failed + kRetry + failed + kRetry, mode(1, 1), failing < 3 ? 0xFFFF : 0xFFBF,
                       0xA003);
    }
}

TEST_F(RegisterModeBracket, AFailureAfterTheModeIsWrittenIsIgnored)
{
    for (size_t failing = 8; failing < 12; ++failing) {
        SCOPED_TRACE(failing);
        expect_failing(mode(1, 1), {failing + 1}, 0, trace_failing(kBracketed, failing), mode(1, 1),
                       failing < 11 ? 0xFFBF : 0xFFFF, 0x9003);
    }
}

TEST_F(RegisterModeBracket, AFailedCloseIsIgnored)
{
    for (const size_t failing : {3U, 7U, 11U}) {
        Trace expected = calls_of(kBracketed);
        expected[failing] += " -> failed";
        expect_failing(mode(1, 1), {failing + 1}, 0, expected, mode(1, 1), 0xFFFF, 0x9003);
    }
}

// The first run leaves a 0 in the caller's mode word, which the second finds out of range.
TEST_F(RegisterModeBracket, ModeFourIsRefusedByItsSecondRun)
{
    for (const uint32_t bracket : {0U, 1U}) {
        const Course course = bracket == 0 ? sets_mode(4) : bracketed(sets_mode(4));
        for (size_t failing = 0; failing < (bracket == 0 ? 3 : 7); ++failing) {
            SCOPED_TRACE(failing);
            if (course[failing].failure != kIgnored) {
                expect_failing(mode(4, bracket), {failing + 1}, DEVICE_BAD_ARGUMENT,
                               trace_failing(course, failing) + kRetry, mode(0, bracket),
                               bracket == 0 || failing < 3 ? 0xFFFF : 0xFFBF, 0xA003);
            }
        }
        expect_failing(mode(4, bracket), {}, 0, calls_of(course), mode(0, bracket), 0xFFFF, 0x8003);
    }
}

} // namespace
