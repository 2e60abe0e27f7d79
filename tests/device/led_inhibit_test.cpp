// Every LED setter and the LED state file: what it records while the inhibit is on, and what it
// does when the file or the lock around it fails.
#include <algorithm>
#include <iterator>

#include "device/led_setter_fixture.h"

namespace
{

// A setter, and one change that it makes to a panel of which every bit is set but the alert bit.
struct Setter {
    const char* name;
    DeviceCommandCode command;
    size_t first_recorded; // byte of the record
    size_t recorded;       // 0: never deferred
    uint32_t read;
    uint32_t write;
    uint16_t written; // by the record that caller_bytes makes
};

constexpr Setter kSetters[] = {
    {"LedA", 17, 8, 1, 0x6B11, 0x6B12, 0xEF7F},    {"LedE", 19, 12, 1, 0x6B4F, 0x6B50, 0xFF7F},
    {"LedB", 21, 9, 1, 0x6B11, 0x6B12, 0xF77F},    {"LedD", 23, 11, 1, 0x6B4F, 0x6B50, 0xFD7F},
    {"LedC", 25, 10, 1, 0x6B11, 0x6B12, 0xFD7F},   {"LineMode", 27, 13, 0, 0x6B4F, 0x6B50, 0xFF5F},
    {"Group1", 29, 15, 3, 0x6B11, 0x6B12, 0xFF7F}, {"LineFlags", 31, 19, 0, 0x6B4F, 0x6B50, 0xFF7B},
    {"Group3", 33, 25, 3, 0x6B0F, 0x6B10, 0xFF7B}, {"Group4", 35, 29, 3, 0x6B0F, 0x6B10, 0xFF3F},
    {"Group5", 37, 33, 3, 0x6B0F, 0x6B10, 0xFB7F}, {"Group6", 39, 37, 3, 0x6B0F, 0x6B10, 0xBF7F},
    {"Group7", 41, 41, 3, 0x6B11, 0x6B12, 0xFF7B},
};
constexpr uint16_t kPanel = 0xFF7F;
constexpr DeviceCommandCode kGroup1 = 29;
constexpr DeviceCommandCode kGroup7 = 41;

// ledA 3, the others 1; group 1 all on, the others' first element off, their second on and third
// on; each mask selects the first element alone.
Bytes caller_bytes()
{
    return hex("01 00 00 00 02 00 00 00 03 01 01 01 01 01"
               " 01 01 01 01  01 00 01 01  A1 A2"
               " 01 00 01 01  01 00 01 01  01 00 01 01  01 00 01 01  01 00 01 01");
}

// What the file holds before: byte n is 0x40 + n.
Bytes saved_bytes(size_t size)
{
    Bytes bytes;
    for (size_t n = 0; n < size; ++n) {
        bytes += static_cast<char>(0x40 + n);
    }
    return bytes;
}

class Inhibit : public LedSetterTest, public testing::WithParamInterface<Setter>
{
  protected:
    void SetUp() override
    {
        record = CallerRecord(caller_bytes());
        for (const uint32_t word : {0x6B0FU, 0x6B11U, 0x6B4FU}) {
            board.fpga.words[word] = kPanel;
        }
        board.fpga.words[0x6B03] = 0x1234;
        board.fpga.switch_ports[4] = hex("04 11 12 13 01 15 16 17");
    }

    [[nodiscard]] bool deferred() const { return setter.recorded != 0; }

    // The calls on /dev/fpga when the panel is driven.
    [[nodiscard]] Trace panel_calls() const
    {
        Course panel = changes_word(setter.read, setter.write, setter.written);
        if (setter.command == kGroup7) {
            panel.pop_back();
            panel = panel + Course{record_read(0x6B72, hex("04 00 00 00 00 00 00 00")),
                                   record_write(0x6B73, hex("04 11 12 13 00 15 16 17")), closes()};
        }
        return calls_of(panel);
    }

    // And when they are not: group 1 looks at the register all the same.
    [[nodiscard]] Trace deferred_calls() const
    {
        return setter.command == kGroup1
                   ? calls_of({opens_to_write(), word_read(setter.read), closes()})
                   : Trace{};
    }

    [[nodiscard]] Bytes recorded_bytes() const
    {
        return saved_bytes(44).replace(setter.first_recorded, setter.recorded, caller_bytes(),
                                       setter.first_recorded, setter.recorded);
    }

    void expect_panel(bool driven)
    {
        for (const uint32_t word : {0x6B0FU, 0x6B11U, 0x6B4FU}) {
            const bool changed = driven && word == setter.read;
            EXPECT_EQ(board.fpga.words[word], changed ? setter.written : kPanel)
                << std::hex << word;
        }
        EXPECT_EQ(board.fpga.words[0x6B03], 0x1234U);
        const bool mirrored = driven && setter.command == kGroup7;
        EXPECT_EQ(board.fpga.switch_ports[4],
                  mirrored ? hex("04 11 12 13 00 15 16 17") : hex("04 11 12 13 01 15 16 17"));
        EXPECT_EQ(record.bytes(), untouched_after(caller_bytes()));
    }

    const Setter& setter = GetParam();
};

INSTANTIATE_TEST_SUITE_P(Led, Inhibit, testing::ValuesIn(kSetters),
                         [](const auto& row) { return row.param.name; });

class DeferredSetter : public Inhibit
{
};

std::vector<Setter> deferred_setters()
{
    std::vector<Setter> setters;
    std::copy_if(std::begin(kSetters), std::end(kSetters), std::back_inserter(setters),
                 [](const Setter& setter) { return setter.recorded != 0; });
    return setters;
}

INSTANTIATE_TEST_SUITE_P(Led, DeferredSetter, testing::ValuesIn(deferred_setters()),
                         [](const auto& row) { return row.param.name; });

TEST_P(Inhibit, RecordsTheChangeAndLeavesThePanelAloneButForTheLine)
{
    board.file_put(kLedFile, saved_bytes(44));
    EXPECT_EQ(run(setter.command), deferred() ? 1 : 0);
    EXPECT_EQ(board.calls, deferred() ? kRecorded + deferred_calls() : panel_calls());
    EXPECT_EQ(board.file_get(kLedFile), recorded_bytes());
    expect_panel(!deferred());
}

TEST_P(Inhibit, DrivesThePanelWithoutAFileAndMakesNone)
{
    EXPECT_EQ(run(setter.command), 0);
    EXPECT_EQ(board.calls, deferred() ? kNotInhibited + panel_calls() : panel_calls());
    EXPECT_FALSE(board.file_exists(kLedFile));
    expect_panel(true);
}

TEST_P(Inhibit, DrivesThePanelWhenTheFileIsTooShort)
{
    for (const size_t size : {0U, 1U, 43U}) {
        SetUp();
        board.file_put(kLedFile, saved_bytes(size));
        board.restart();
        EXPECT_EQ(run(setter.command), 0);
        EXPECT_EQ(board.calls, deferred() ? kFileTooShort + panel_calls() : panel_calls());
        EXPECT_EQ(board.file_get(kLedFile), saved_bytes(size));
        expect_panel(true);
    }
}

// The calls that follow a failure of one of kRecorded's, up to the lock's release.
struct FileFailure {
    size_t failing;
    Trace then;
    bool recorded;
};

const Trace kMerge(kRecorded.begin() + 2, kRecorded.end() - 1);
const std::string kRelease = "fclose /tmp/Saveing";
const std::string kFileClose = "close /tmp/led_rewrite_inh";
const std::string kNullHandle =
    "puts fileAccess_unlock : 001 : /tmp/Saveing file pointer (==0) error";

const FileFailure kFileFailures[] = {
    {0,
     Trace{"puts fileAccess_lock : 001 : /tmp/Saveing file open error"} + kMerge +
         Trace{kNullHandle},
     true},
    {1,
     Trace{kRelease, "puts fileAccess_lock : 002 : /tmp/Saveing file lock (blocking) error"} +
         kMerge + Trace{kNullHandle},
     true},
    {2, {kRelease}, false},
    {3, {kRelease}, false},
    {4, {kFileClose, kRelease}, false},
    {5, {kFileClose, kRelease}, false},
    {6, {kFileClose, kRelease}, false},
    {7, {kRelease}, true},
    {8, {"puts fileAccess_unlock : 002 : /tmp/Saveing file close error"}, true},
};

TEST_P(DeferredSetter, DrivesThePanelWhenTheFileCannotBeUpdated)
{
    for (const FileFailure& failure : kFileFailures) {
        SCOPED_TRACE(kRecorded[failure.failing]);
        SetUp();
        board.file_put(kLedFile, saved_bytes(44));
        board.restart();
        board.fail_call(failure.failing + 1);
        EXPECT_EQ(run(setter.command), failure.recorded ? 1 : 0);

        Trace expected(kRecorded.begin(),
                       kRecorded.begin() + static_cast<ptrdiff_t>(failure.failing) + 1);
        expected.back() += " -> failed";
        EXPECT_EQ(board.calls,
                  expected + failure.then + (failure.recorded ? deferred_calls() : panel_calls()));
        EXPECT_EQ(board.file_get(kLedFile), failure.recorded ? recorded_bytes() : saved_bytes(44));
        expect_panel(!failure.recorded);
    }
}

TEST_P(DeferredSetter, DrivesThePanelWithoutTheLock)
{
    const struct {
        size_t failing;
        Trace calls;
    } runs[] = {
        {1,
         {"fopen /tmp/Saveing w -> failed",
          "puts fileAccess_lock : 001 : /tmp/Saveing file open error", kNotInhibited[2],
          kNullHandle}},
        {2,
         {kNotInhibited[0], "flock /tmp/Saveing LOCK_EX -> failed", kRelease,
          "puts fileAccess_lock : 002 : /tmp/Saveing file lock (blocking) error", kNotInhibited[2],
          kNullHandle}},
        {4,
         {kNotInhibited[0], kNotInhibited[1], kNotInhibited[2], kRelease + " -> failed",
          "puts fileAccess_unlock : 002 : /tmp/Saveing file close error"}},
    };
    for (const auto& [failing, calls] : runs) {
        SetUp();
        board.restart();
        board.fail_call(failing);
        EXPECT_EQ(run(setter.command), 0);
        EXPECT_EQ(board.calls, calls + panel_calls());
        expect_panel(true);
    }
}

// Only group 1 opens the device while the inhibit is on; when that fails, so does the command, and
// the retry records the change once more.
TEST_F(LedSetterTest, Group1FailsWithTheDeviceThoughTheChangeIsRecorded)
{
    const std::pair<size_t, int32_t> runs[] = {{1, -1}, {2, -2}};
    for (const auto& [call, result] : runs) {
        record = CallerRecord(caller_bytes());
        board.file_put(kLedFile, saved_bytes(44));
        board.fpga.words[0x6B11] = kPanel;
        board.restart();
        fail_in_both_runs(kRecorded.size() + call, call - 1);
        EXPECT_EQ(run(WR_LED_GROUP_1), result);
        EXPECT_EQ(board.file_get(kLedFile).substr(15, 3), hex("01 01 01"));
        EXPECT_EQ(board.fpga.words[0x6B11], kPanel);
    }
}

} // namespace
