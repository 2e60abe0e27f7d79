// Every LED setter and the LED state file: what it records while the inhibit is on, and what it
// does when the file or the lock around it fails.
#include <algorithm>
#include <iterator>
#include <optional>

#include "device/led_setter_fixture.h"

namespace
{

// A setter, and one change that it makes to a panel of which every bit is set but the alert bit.
struct Setter {
    DeviceCommandCode command;
    PanelRegister panel;
    uint16_t written; // by the record that caller_bytes makes
};

constexpr Setter kSetters[] = {
    {WR_LED_A, kRegisterB, 0xEF7F},       {WR_LED_E, kRegisterC, 0xFF7F},
    {WR_LED_B, kRegisterB, 0xF77F},       {WR_LED_D, kRegisterC, 0xFD7F},
    {WR_LED_C, kRegisterB, 0xFD7F},       {WR_LINE_MODE, kRegisterC, 0xFF5F},
    {WR_LED_GROUP_1, kRegisterB, 0xFF7F}, {WR_LINE_FLAGS, kRegisterC, 0xFF7B},
    {WR_LED_GROUP_3, kRegisterA, 0xFF7B}, {WR_LED_GROUP_4, kRegisterA, 0xFF3F},
    {WR_LED_GROUP_5, kRegisterA, 0xFB7F}, {WR_LED_GROUP_6, kRegisterA, 0xBF7F},
    {WR_LED_GROUP_7, kRegisterB, 0xFF7B},
};
constexpr uint16_t kPanel = 0xFF7F;

void PrintTo(const Setter& setter, std::ostream* out)
{
    *out << command_name(setter.command);
}

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
    // A fresh start, with this LED state file or none.
    void start(const std::optional<Bytes>& held = std::nullopt)
    {
        panel_put(board, {kPanel, kPanel, kPanel, 0x1234});
        board.fpga.switch_ports[kMirrorPort] = hex("04 11 12 13 01 15 16 17");
        if (held) {
            board.file_put(kLedFile, *held);
        }
        board.restart();
    }

    [[nodiscard]] bool deferred() const { return !is_line(setter.command); }

    // The calls on /dev/fpga when the panel is driven.
    [[nodiscard]] Trace panel_calls() const
    {
        Course panel = changes_word(setter.panel.read, setter.panel.write, setter.written);
        if (setter.command == WR_LED_GROUP_7) {
            panel.pop_back();
            panel = panel + Course{record_read(0x6B72, hex("04 00 00 00 00 00 00 00")),
                                   record_write(0x6B73, hex("04 11 12 13 00 15 16 17")), closes()};
        }
        return calls_of(panel);
    }

    // And when they are not: group 1 looks at the register all the same.
    [[nodiscard]] Trace deferred_calls() const
    {
        return setter.command == WR_LED_GROUP_1
                   ? calls_of({opens_to_write(), word_read(setter.panel.read), closes()})
                   : Trace{};
    }

    // What the file holds when the change is recorded.
    [[nodiscard]] Bytes recorded_bytes() const
    {
        return deferred() ? with_recorded(saved_bytes(44), setter.command, caller_bytes())
                          : saved_bytes(44);
    }

    // The setter's run on the caller's bytes: its result, its calls, and the panel afterwards.
    void expect_setter(int32_t result, const Trace& calls, bool driven)
    {
        expect_run(setter.command, caller_bytes(), result, caller_bytes());
        EXPECT_EQ(board.calls, calls);
        PanelWords words{kPanel, kPanel, kPanel, 0x1234};
        if (driven) {
            words.*setter.panel.word = setter.written;
        }
        EXPECT_EQ(panel_get(board), words);
        const bool mirrored = driven && setter.command == WR_LED_GROUP_7;
        EXPECT_EQ(board.fpga.switch_ports[kMirrorPort],
                  mirrored ? hex("04 11 12 13 00 15 16 17") : hex("04 11 12 13 01 15 16 17"));
    }

    const Setter& setter = GetParam();
};

INSTANTIATE_TEST_SUITE_P(Led, Inhibit, testing::ValuesIn(kSetters), setter_name<Setter>);

class DeferredSetter : public Inhibit
{
};

std::vector<Setter> deferred_setters()
{
    std::vector<Setter> setters;
    std::copy_if(std::begin(kSetters), std::end(kSetters), std::back_inserter(setters),
                 [](const Setter& setter) { return !is_line(setter.command); });
    return setters;
}

INSTANTIATE_TEST_SUITE_P(Led, DeferredSetter, testing::ValuesIn(deferred_setters()),
                         setter_name<Setter>);

TEST_P(Inhibit, RecordsTheChangeAndLeavesThePanelAloneButForTheLine)
{
    start(saved_bytes(44));
    expect_setter(deferred() ? 1 : 0, deferred() ? kRecorded + deferred_calls() : panel_calls(),
                  !deferred());
    EXPECT_EQ(board.file_get(kLedFile), recorded_bytes());
}

TEST_P(Inhibit, DrivesThePanelWithoutAFileAndMakesNone)
{
    start();
    expect_setter(0, deferred() ? kNotInhibited + panel_calls() : panel_calls(), true);
    EXPECT_FALSE(board.file_exists(kLedFile));
}

TEST_P(Inhibit, DrivesThePanelWhenTheFileIsTooShort)
{
    for (const size_t size : {0U, 1U, 43U}) {
        start(saved_bytes(size));
        expect_setter(0, deferred() ? kNotMerged + panel_calls() : panel_calls(), true);
        EXPECT_EQ(board.file_get(kLedFile), saved_bytes(size));
    }
}

// The calls that follow a failure of one of kRecorded's, up to the lock's release.
struct FileFailure {
    size_t failing;
    Trace then;
    bool recorded;
};

const std::string kFileClose = "close /tmp/led_rewrite_inh";

const FileFailure kFileFailures[] = {
    {0, Trace{puts_of(kLockUnopened)} + kMerge + Trace{puts_of(kLockAbsent)}, true},
    {1, Trace{kRelease, puts_of(kLockUntaken)} + kMerge + Trace{puts_of(kLockAbsent)}, true},
    {2, {kRelease}, false},
    {3, {kRelease}, false},
    {4, {kFileClose, kRelease}, false},
    {5, {kFileClose, kRelease}, false},
    {6, {kFileClose, kRelease}, false},
    {7, {kRelease}, true},
    {8, {puts_of(kLockUnclosed)}, true},
};

// The calls up to one that fails.
Trace up_to(const Trace& calls, size_t failing)
{
    Trace failed(calls.begin(), calls.begin() + static_cast<ptrdiff_t>(failing) + 1);
    failed.back() += " -> failed";
    return failed;
}

TEST_P(DeferredSetter, DrivesThePanelWhenTheFileCannotBeUpdated)
{
    for (const FileFailure& failure : kFileFailures) {
        SCOPED_TRACE(kRecorded[failure.failing]);
        start(saved_bytes(44));
        board.fail_call(failure.failing + 1);
        expect_setter(failure.recorded ? 1 : 0,
                      up_to(kRecorded, failure.failing) + failure.then +
                          (failure.recorded ? deferred_calls() : panel_calls()),
                      !failure.recorded);
        EXPECT_EQ(board.file_get(kLedFile), failure.recorded ? recorded_bytes() : saved_bytes(44));
    }
}

TEST_P(DeferredSetter, DrivesThePanelWithoutTheLock)
{
    const std::pair<size_t, Trace> runs[] = {
        {0, {puts_of(kLockUnopened), kMerge[0], puts_of(kLockAbsent)}},
        {1, {kRelease, puts_of(kLockUntaken), kMerge[0], puts_of(kLockAbsent)}},
        {3, {puts_of(kLockUnclosed)}},
    };
    for (const auto& [failing, calls] : runs) {
        start();
        board.fail_call(failing + 1);
        expect_setter(0, up_to(kNotInhibited, failing) + calls + panel_calls(), true);
    }
}

// Only group 1 opens the device while the inhibit is on; when that fails, so does the command, and
// the retry records the change once more.
TEST_F(LedSetterTest, Group1FailsWithTheDeviceThoughTheChangeIsRecorded)
{
    const std::pair<size_t, int32_t> runs[] = {{1, -1}, {2, -2}};
    for (const auto& [call, result] : runs) {
        board.file_put(kLedFile, saved_bytes(44));
        board.fpga.words[0x6B11] = kPanel;
        board.restart();
        fail_in_both_runs(kRecorded.size() + call, call - 1);
        EXPECT_EQ(run(WR_LED_GROUP_1, caller_bytes()), result);
        EXPECT_EQ(board.file_get(kLedFile).substr(15, 3), hex("01 01 01"));
        EXPECT_EQ(board.fpga.words[0x6B11], kPanel);
    }
}

} // namespace
