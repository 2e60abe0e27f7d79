// WR_LED_GROUP_1: the alert bit, ledA, the user log and bit 6 of device word 03, beside the
// elements themselves.
#include <optional>

#include "device/led_setter_fixture.h"

namespace
{

constexpr uint32_t kWord03Held = 0x5A1A; // without bit 6
constexpr uint32_t kBit6 = 0x0040;

const Bytes kSaved(44, '\x55');

// What the command makes of the panel, told step by step.
struct Outcome {
    uint32_t word;
    std::optional<unsigned> ledA; // its new value
    unsigned event = 0;
};

unsigned ledA_shown(uint32_t word)
{
    switch (word & 0x3000U) {
    case 0x3000:
        return 2;
    case 0x2000:
        return 3;
    case 0x1000:
        return 1;
    default:
        return 0;
    }
}

// `ledA_recorded`: the file takes ledA's new value, so the register does not.
Outcome outcome_of(uint32_t word, const Bytes& caller, bool ledA_recorded)
{
    Outcome outcome{word, std::nullopt};
    const unsigned shown = ledA_shown(word);
    const bool both = caller[16] == 1 && caller[17] == 1;
    const bool alert = (word & 0x0080U) != 0;
    if (caller[15] == 0) {
        outcome.word &= 0xFF7FU;
        if (shown == 2 || shown == 3) {
            outcome.ledA = 2;
        }
    } else if (both && alert) {
        outcome.word &= 0xFF7FU;
        outcome.event = 256;
        if (shown == 2 || shown == 3) {
            outcome.ledA = 2;
        }
    } else if (!both && !alert) {
        outcome.word |= 0x0080U;
        outcome.event = 257;
        if (shown != 0) {
            outcome.ledA = 3;
        }
    }
    if (outcome.ledA == 2U && !ledA_recorded) {
        outcome.word |= 0x3000U;
    }
    if (outcome.ledA == 3U && !ledA_recorded) {
        outcome.word = (outcome.word & 0xEFFFU) | 0x2000U;
    }
    const unsigned mask = caller[14] == 0 ? 0xFFU : static_cast<uint8_t>(caller[14]);
    if ((mask & 1U) != 0) {
        outcome.word = caller[15] == 1 ? outcome.word | 0x0040U : outcome.word & 0xFFBFU;
    }
    if ((mask & 2U) != 0) {
        outcome.word = caller[16] == 1 ? outcome.word | 0x0010U : outcome.word & 0xFFEFU;
    }
    if ((mask & 4U) != 0) {
        outcome.word |= 0x0020U;
    }
    return outcome;
}

// An event as the user log holds it at the board's time, 0x440563C3.
Bytes event_bytes(unsigned code)
{
    return hex("C3 63 05 44  00 00 07 00") + le16(code) + hex("00 00  00 00 00 00");
}

Bytes userLog_with(const std::vector<unsigned>& events)
{
    const auto count = static_cast<uint32_t>(events.size());
    Bytes log = le32(0) + le16(count) + le16(count) + le32(0) + le32(0);
    for (const unsigned code : events) {
        log += event_bytes(code);
    }
    return log;
}

constexpr size_t kFileOpen = 4; // of the calls that record a change

enum class File { kAbsent, kWhole, kTooShort };

class Alert : public LedSetterTest
{
  protected:
    Alert() { board.file_put(kUserLog, userLog_with({})); }

    void* caller_put(unsigned mask, unsigned first, unsigned second, unsigned third)
    {
        return put(zeros(14) + byte(mask) + byte(first) + byte(second) + byte(third) + zeros(26));
    }

    void words_put(uint32_t word, uint32_t word03)
    {
        board.fpga.words[0x6B11] = word;
        board.fpga.words[kDeviceWord03] = word03;
    }
    void expect_words(uint32_t word, uint32_t word03)
    {
        EXPECT_EQ(hex_number(board.fpga.words[0x6B11]), hex_number(word));
        EXPECT_EQ(hex_number(board.fpga.words[kDeviceWord03]), hex_number(word03));
    }

    // A calm panel, and a record that raises the alert: ledA 1 becomes 3.
    void alert_prepare(File file)
    {
        file_put(file);
        board.file_put(kUserLog, userLog_with({}));
        words_put(0x1000, kWord03Held);
        caller_put(0, 1, 0, 0);
        board.restart();
    }

    void file_put(File file)
    {
        board.file_remove(kLedFile);
        if (file != File::kAbsent) {
            board.file_put(kLedFile, kSaved.substr(0, file == File::kWhole ? 44 : 43));
        }
    }

    static const Trace& put_calls(File file)
    {
        return file == File::kAbsent  ? kNotInhibited
               : file == File::kWhole ? kRecorded
                                      : kNotMerged;
    }

    // One run, against the outcome in every place where it shows.
    void expect_outcome(uint32_t word, File file)
    {
        const bool inhibited = file == File::kWhole;
        const Bytes caller = record();
        const Outcome outcome = outcome_of(word, caller, inhibited);
        const bool bit6_before = outcome.ledA == 2U; // so that a change of it shows
        file_put(file);
        board.file_put(kUserLog, userLog_with({}));
        words_put(word, kWord03Held | (bit6_before ? kBit6 : 0));
        board.restart();

        EXPECT_EQ(run(WR_LED_GROUP_1), inhibited ? 1 : 0);

        EXPECT_EQ(board.calls, calls_expected(outcome, file));
        const bool bit6 = inhibited ? bit6_before : outcome.ledA == 3U;
        expect_words(inhibited ? word : outcome.word, kWord03Held | (bit6 ? kBit6 : 0));
        EXPECT_EQ(board.file_get(kUserLog),
                  outcome.event == 0 ? userLog_with({}) : userLog_with({outcome.event}));
        if (file == File::kAbsent) {
            EXPECT_FALSE(board.file_exists(kLedFile));
        } else {
            EXPECT_EQ(board.file_get(kLedFile), file_expected(outcome, caller, file));
        }
        EXPECT_EQ(record(), caller);
    }

    static Trace calls_expected(const Outcome& outcome, File file)
    {
        Trace calls = put_calls(file) + calls_of({opens_to_write(), word_read(0x6B11)});
        if (outcome.event != 0) {
            calls = calls + event_calls(0);
        }
        if (outcome.ledA) {
            calls = calls + put_calls(file);
        }
        if (file != File::kWhole) {
            calls = calls + calls_of({value_write(0x6B12, outcome.word)});
            if (outcome.ledA) {
                const uint32_t word = kWord03Held | (outcome.ledA == 3U ? kBit6 : 0);
                calls = calls + calls_of(changes_word(kDeviceWord03, 0x6B04, word));
            }
        }
        return calls + calls_of({closes()});
    }

    static Bytes file_expected(const Outcome& outcome, const Bytes& caller, File file)
    {
        if (file == File::kTooShort) {
            return kSaved.substr(0, 43);
        }
        Bytes bytes = kSaved;
        bytes.replace(15, 3, caller, 15, 3);
        if (outcome.ledA) {
            bytes[8] = static_cast<char>(*outcome.ledA);
        }
        return bytes;
    }

    // Every state of the panel's ledA and alert bit with every combination of elements.
    void expect_all(File file)
    {
        for (const unsigned mask : {0U, 1U, 2U, 4U, 8U}) {
            for (unsigned pattern = 0; pattern < 27; ++pattern) {
                caller_put(mask, pattern % 3, pattern / 3 % 3, pattern / 9);
                for (unsigned shown = 0; shown < 8 && !HasFailure(); ++shown) {
                    const unsigned word = (shown >> 1) << 12 | (shown & 1U) << 7;
                    SCOPED_TRACE("mask " + std::to_string(mask) + " pattern " +
                                 std::to_string(pattern) + " word " + hex_number(word));
                    expect_outcome(word, file);
                    expect_outcome(word | 0xCF7FU, file);
                }
            }
        }
    }
};

TEST_F(Alert, FollowsTheElementsWhileThereIsNoInhibit)
{
    expect_all(File::kAbsent);
}

TEST_F(Alert, GoesToTheFileAndTheUserLogWhileTheInhibitIsOn)
{
    expect_all(File::kWhole);
}

TEST_F(Alert, DrivesThePanelWhenTheFileIsTooShort)
{
    expect_all(File::kTooShort);
}

// One of each, typed out.
TEST_F(Alert, RaisesTheAlert)
{
    words_put(0x1000, kWord03Held);
    expect_course(WR_LED_GROUP_1, caller_put(7, 1, 1, 0),
                  course_of(kNotInhibited) + Course{opens_to_write(), word_read(0x6B11)} +
                      course_of(event_calls(0) + kNotInhibited) +
                      Course{value_write(0x6B12, 0x20F0), opens_to_write(), word_read(0x6B03),
                             value_write(0x6B04, 0x5A5A), closes(), closes()});
    EXPECT_EQ(board.file_get(kUserLog), hex("00 00 00 00 01 00 01 00 00 00 00 00 00 00 00 00"
                                            " C3 63 05 44 00 00 07 00 01 01 00 00 00 00 00 00"));
    EXPECT_EQ(board.file_get("/tmp/flashsave"), hex("01"));
}

TEST_F(Alert, EndsTheAlert)
{
    words_put(0x20C0, 0x5A5A);
    expect_course(WR_LED_GROUP_1, caller_put(0, 1, 1, 1),
                  course_of(kNotInhibited) + Course{opens_to_write(), word_read(0x6B11)} +
                      course_of(event_calls(0) + kNotInhibited) +
                      Course{value_write(0x6B12, 0x3070), opens_to_write(), word_read(0x6B03),
                             value_write(0x6B04, 0x5A1A), closes(), closes()});
    EXPECT_EQ(board.file_get(kUserLog), hex("00 00 00 00 01 00 01 00 00 00 00 00 00 00 00 00"
                                            " C3 63 05 44 00 00 07 00 00 01 00 00 00 00 00 00"));
}

TEST_F(Alert, KeepsEveryOtherBitOfTheRegisterWhenItRaisesAndEndsTheAlert)
{
    for (unsigned bit = 0; bit < 16; ++bit) {
        for (const unsigned word : {1U << bit, 0xFFFFU & ~(1U << bit)}) {
            caller_put(8, 1, 0, 0);
            expect_outcome(word & 0xFF7FU, File::kAbsent);
            caller_put(8, 1, 1, 1);
            expect_outcome(word | 0x0080U, File::kAbsent);
        }
    }
}

// Failures ----------------------------------------------------------------------------------

// A panel calm before and after: the same course in every run, however often it is repeated.
TEST_F(Alert, ReturnsEachFailureOfTheRegisterAndOfDeviceWord03)
{
    prove(
        WR_LED_GROUP_1,
        [this] {
            words_put(0x2080, 0x5A5A);
            return caller_put(0, 0, 1, 0);
        },
        without_inhibit({opens_to_write(), word_read(0x6B11)}) + course_of(kNotInhibited) +
            Course{value_write(0x6B12, 0x3030), opens_to_write(), word_read(0x6B03),
                   value_write(0x6B04, 0x5A1A), closes(), closes()});
}

// The retry finds the alert raised already, so neither failure of device word 03 shows.
TEST_F(Alert, ForgetsAFailureOfDeviceWord03InTheRetry)
{
    const size_t calls_before = calls_expected({0, 3, 257}, File::kAbsent).size() - 5;
    for (size_t failing = 1; failing <= 3; ++failing) {
        alert_prepare(File::kAbsent);
        board.fail_call(calls_before + failing);
        EXPECT_EQ(run(WR_LED_GROUP_1), 0);
        expect_words(0x20E0, kWord03Held);
        EXPECT_EQ(board.file_get(kUserLog), userLog_with({257}));
    }
}

// A register that cannot be written has the event logged by each of the two runs.
TEST_F(Alert, LogsTheEventOnceMoreInTheRetry)
{
    alert_prepare(File::kAbsent);
    const size_t write = calls_expected({0, 3, 257}, File::kAbsent).size() - 5;
    fail_in_both_runs(write, 1);
    EXPECT_EQ(run(WR_LED_GROUP_1), -4);
    expect_words(0x1000, kWord03Held);
    EXPECT_EQ(board.file_get(kUserLog), userLog_with({257, 257}));
}

TEST_F(Alert, GoesOnWithoutAUserLog)
{
    log_clear(board);
    alert_prepare(File::kAbsent);
    board.file_remove(kUserLog);
    EXPECT_EQ(run(WR_LED_GROUP_1), 0);
    expect_words(0x20E0, kWord03Held | kBit6);
    EXPECT_EQ(board.console, "userLog_put : 007 : /conf/user.log file open error\n");
    EXPECT_FALSE(board.file_exists(kUserLog));
}

TEST_F(Alert, GoesOnWhateverFailsInTheUserLog)
{
    const size_t first = kNotInhibited.size() + 3; // behind the device's open and read
    for (size_t call = 0; call < event_calls(0).size(); ++call) {
        SCOPED_TRACE(event_calls(0)[call]);
        log_clear(board);
        alert_prepare(File::kAbsent);
        board.fail_call(first + call);
        EXPECT_EQ(run(WR_LED_GROUP_1), 0);
        EXPECT_EQ(board.calls[first + call - 1], event_calls(0)[call] + " -> failed");
        expect_words(0x20E0, kWord03Held | kBit6);
    }
}

// The two changes of the file are recorded apart, each as its own attempt turns out.
TEST_F(Alert, DrivesTheGroupButNotLedAWhenOnlyTheGroupCannotBeRecorded)
{
    alert_prepare(File::kWhole);
    board.fail_call(kFileOpen);
    EXPECT_EQ(run(WR_LED_GROUP_1), 0);
    expect_words(0x10E0, kWord03Held | kBit6); // ledA as it was
    EXPECT_EQ(board.file_get(kLedFile), Bytes(kSaved).replace(8, 1, hex("03")));
}

TEST_F(Alert, LeavesThePanelAloneWhenOnlyLedACannotBeRecorded)
{
    alert_prepare(File::kWhole);
    board.fail_call(kRecorded.size() + 2 + event_calls(0).size() + kFileOpen);
    EXPECT_EQ(run(WR_LED_GROUP_1), 1);
    expect_words(0x1000, kWord03Held);
    EXPECT_EQ(board.file_get(kLedFile), Bytes(kSaved).replace(15, 3, hex("01 00 00")));
}

} // namespace
