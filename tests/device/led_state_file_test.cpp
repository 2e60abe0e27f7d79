// The LED state file: its bytes, and the two procedures that make and change it.
#include "device/commands/led_state_file.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <csignal>

#include "board/lock_holder.h"
#include "device/led_panel_words.h"

namespace
{

const Course kMerged{
    {"stat /tmp/led_rewrite_inh", kElsewhere}, {"open /tmp/led_rewrite_inh O_RDWR", -1},
    {"read /tmp/led_rewrite_inh 44", -1},      {"lseek /tmp/led_rewrite_inh 0", -1},
    {"write /tmp/led_rewrite_inh 44", -1},     {"close /tmp/led_rewrite_inh", kIgnored}};

// While it lives no file grows beyond so many bytes, and a write that would is cut short.
class FileLimit
{
  public:
    explicit FileLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        signal_ = signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileLimit()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        (void)signal(SIGXFSZ, signal_);
    }
    FileLimit(const FileLimit&) = delete;
    FileLimit& operator=(const FileLimit&) = delete;

  private:
    rlimit before_{};
    void (*signal_)(int) = SIG_DFL;
};

// 44 bytes, each its own number, and others that differ from them everywhere.
Bytes counted(uint8_t first, size_t size = 44)
{
    Bytes bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>(first + i);
    }
    return bytes;
}
const Bytes kHeld = counted(0);
const Bytes kCallers = counted(100);

class LedStateFile : public LedTest
{
  protected:
    void SetUp() override { board.fpga.words[kOwnIdentifier] = 7; }

    void file_put(const Bytes& content) const { board.file_put(kLedFile, content); }
    [[nodiscard]] Bytes file_get() const { return board.file_get(kLedFile); }

    // The two procedures on a record of the caller's.
    int32_t record_put(int32_t command, const Bytes& callers)
    {
        return ledState_put(command, static_cast<LedStateRecord*>(put(callers)));
    }
    int32_t record_load() { return ledState_load(static_cast<LedStateRecord*>(put(kCallers))); }
};

// The record --------------------------------------------------------------------------------

TEST_F(LedStateFile, RecordHasItsFieldsAtTheirBytes)
{
    const auto& record = *static_cast<LedStateRecord*>(put(counted(0)));
    EXPECT_EQ(sizeof(LedStateRecord), 44U);
    EXPECT_EQ(record.ownId, 0x03020100U);
    EXPECT_EQ(record.targetId, 0x07060504U);
    EXPECT_EQ(record.ledA, 8);
    EXPECT_EQ(record.ledB, 9);
    EXPECT_EQ(record.ledC, 10);
    EXPECT_EQ(record.ledD, 11);
    EXPECT_EQ(record.ledE, 12);
    EXPECT_EQ(record.ledF, 13);
    EXPECT_EQ(record.reserved[0], 22);
    EXPECT_EQ(record.reserved[1], 23);
    const std::pair<const LedGroup*, int> groups[] = {
        {&record.group1, 14}, {&record.group2, 18}, {&record.group3, 24}, {&record.group4, 28},
        {&record.group5, 32}, {&record.group6, 36}, {&record.group7, 40}};
    for (const auto& [group, first] : groups) {
        EXPECT_EQ(group->valid, first);
        EXPECT_EQ(group->element[0], first + 1);
        EXPECT_EQ(group->element[1], first + 2);
        EXPECT_EQ(group->element[2], first + 3);
    }
}

// Saving ------------------------------------------------------------------------------------

TEST_F(LedStateFile, SavesTheLivePanelByteForByte)
{
    board.fpga.words[kOwnIdentifier] = 0x001E;
    panel_put(board, {0x4125, 0xB9D2, 0x0275, 0});
    EXPECT_EQ(ledState_save(), 0);
    EXPECT_EQ(file_get(), hex("1E 00 00 00 1E 00 00 00 " // own and target identifier
                              "02 02 01 02 01 02 "       // ledA to ledF
                              "00 01 01 00 "             // group 1
                              "00 01 01 00 "             // group 2
                              "00 00 "                   // reserved
                              "00 01 01 00 "             // group 3
                              "00 00 00 01 "             // group 4
                              "00 00 01 00 "             // group 5
                              "00 01 00 00 "             // group 6
                              "00 00 00 01"));           // group 7
}

TEST_F(LedStateFile, SavesWhatTheRegistersShow)
{
    std::mt19937 random(41);
    for (uint32_t round = 0; round < 600; ++round) {
        const PanelWords words = panel_random(random);
        const uint32_t own = 1 + round % 30;
        board.fpga.words[kOwnIdentifier] = own;
        panel_put(board, words);
        ASSERT_EQ(ledState_save(), 0);
        ASSERT_EQ(file_get(), snapshot_of(own, words)) << words;
        ASSERT_EQ(panel_get(board), words);
        board.file_remove(kLedFile);
    }
}

TEST_F(LedStateFile, TheDriverMayFill496BytesForTheIdentifier)
{
    const PanelWords words{0x4125, 0xB9D2, 0x0275, 0};
    panel_put(board, words);
    board.fpga.filled[kOwnIdentifier] = 496;
    EXPECT_EQ(ledState_save(), 0);
    EXPECT_EQ(file_get(), snapshot_of(7, words));
}

TEST_F(LedStateFile, SavingReportsEachFailure)
{
    const PanelWords words{0x1234, 0x5678, 0x9ABC, 0xDEF0};
    const LockedCourse course{kSnapshot, {}, 0, calls_of(kSnapshot, 1) + Trace{kRelease}, 0};
    prove_locked(
        [&] {
            board.file_remove(kLedFile);
            panel_put(board, words);
        },
        ledState_save, course,
        [&](size_t failing, const std::string&) {
            // The device's opens and requests and the file's open leave no file; a file that could
            // not be written is left empty.
            const bool panelUnread =
                failing >= 3 && failing <= 12 && kSnapshot[failing - 2].failure < 0;
            EXPECT_EQ(board.file_exists(kLedFile), !panelUnread);
            if (board.file_exists(kLedFile)) {
                EXPECT_EQ(file_get(), failing == 13 ? "" : snapshot_of(7, words));
            }
            EXPECT_EQ(panel_get(board), words);
        });
}

TEST_F(LedStateFile, SavesNothingForAnIdentifierOutsideItsRange)
{
    const Trace identifier{"stat /tmp/led_rewrite_inh", "open /dev/fpga O_RDONLY|O_NONBLOCK",
                           "ioctl 6B29 00 00", "close /dev/fpga"};
    for (const uint32_t own : {0U, 31U, 32U, 255U, 256U, 257U, 0xFFFFU}) {
        board.restart();
        board.fpga.words[kOwnIdentifier] = own;
        EXPECT_EQ(ledState_save(), -1) << own;
        EXPECT_FALSE(board.file_exists(kLedFile));
        EXPECT_EQ(board.calls, locked(identifier));
    }
    for (const uint32_t own : {1U, 30U}) {
        board.fpga.words[kOwnIdentifier] = own;
        EXPECT_EQ(ledState_save(), 0) << own;
        board.file_remove(kLedFile);
    }
}

TEST_F(LedStateFile, SavingAgainKeepsTheFirstState)
{
    panel_put(board, {0x1111, 0x2222, 0x3333, 0});
    ASSERT_EQ(ledState_save(), 0);
    const Bytes first = file_get();
    panel_put(board, {0xFFFF, 0xFFFF, 0xFFFF, 0});
    board.restart();
    EXPECT_EQ(ledState_save(), 0);
    EXPECT_EQ(file_get(), first);
    EXPECT_EQ(board.calls, kNotInhibited);
}

TEST_F(LedStateFile, AnyFileThereCountsAsSaved)
{
    for (const size_t size : {0U, 1U, 43U, 44U, 45U, 500U}) {
        const Bytes content = counted(1, size);
        file_put(content);
        EXPECT_EQ(ledState_save(), 0) << size;
        EXPECT_EQ(file_get(), content) << size;
        EXPECT_TRUE(ledState_isInhibited()) << size;
    }
    board.file_remove(kLedFile);
    std::filesystem::create_directory(board.host(kLedFile));
    EXPECT_EQ(ledState_save(), 0);
    EXPECT_TRUE(ledState_isInhibited());
    std::filesystem::remove(board.host(kLedFile));
    EXPECT_FALSE(ledState_isInhibited());
}

TEST_F(LedStateFile, AShortWriteOfTheSnapshotFailsAndLeavesWhatWasWritten)
{
    panel_put(board, {0x1111, 0x2222, 0x3333, 0});
    {
        const FileLimit limit(20);
        EXPECT_EQ(ledState_save(), -1);
    }
    EXPECT_EQ(file_get(), snapshot_of(7, {0x1111, 0x2222, 0x3333, 0}).substr(0, 20));
}

// Merging -----------------------------------------------------------------------------------

TEST_F(LedStateFile, WithoutTheFileNothingIsRecorded)
{
    for (int32_t command = 0; command <= 300; ++command) {
        board.restart();
        EXPECT_EQ(record_put(command, kCallers), -2) << command;
        EXPECT_EQ(board.calls, kNotInhibited);
        EXPECT_FALSE(board.file_exists(kLedFile));
    }
}

TEST_F(LedStateFile, EachCommandRecordsItsOwnBytesAndOthersNone)
{
    std::vector<int32_t> commands{-1, -17, INT32_MIN, INT32_MAX, 0x10000 + WR_LED_A};
    for (int32_t command = 0; command <= 300; ++command) {
        commands.push_back(command);
    }
    size_t recorded = 0;
    for (const int32_t command : commands) {
        SCOPED_TRACE(command);
        const Bytes expected =
            with_recorded(kHeld, static_cast<DeviceCommandCode>(command), kCallers);
        const bool known = expected != kHeld;
        recorded += known ? 1 : 0;
        file_put(kHeld);
        board.restart();
        EXPECT_EQ(record_put(command, kCallers), known ? 0 : -1);
        EXPECT_EQ(file_get(), expected);
        if (!known) {
            EXPECT_EQ(board.calls, kNotMerged);
        }
    }
    EXPECT_EQ(recorded, 12U);
}

TEST_F(LedStateFile, AGroupIsRecordedWholeWhateverItsMask)
{
    for (unsigned mask = 0; mask <= 255; ++mask) {
        Bytes callers = kCallers;
        callers[14] = static_cast<char>(mask);
        Bytes expected = kHeld;
        expected.replace(15, 3, callers, 15, 3);
        file_put(kHeld);
        EXPECT_EQ(record_put(WR_LED_GROUP_1, callers), 0);
        EXPECT_EQ(file_get(), expected) << mask;
    }
}

TEST_F(LedStateFile, LeavesTheCallersRecordAlone)
{
    for (int32_t command = 16; command <= 42; ++command) {
        file_put(kHeld);
        record_put(command, kCallers);
        EXPECT_EQ(record(), kCallers) << command;
    }
}

TEST_F(LedStateFile, RecordingReportsEachFailure)
{
    Bytes merged = kHeld;
    merged[12] = kCallers[12];
    const LockedCourse course{kMerged, {}, 0, {kRelease}, -2};
    prove_locked([&] { file_put(kHeld); }, [this] { return record_put(WR_LED_E, kCallers); },
                 course,
                 [&](size_t failing, const std::string&) {
                     // 2 stat, 3 open, 4 read, 5 lseek, 6 write
                     EXPECT_EQ(file_get(), failing >= 2 && failing <= 6 ? kHeld : merged);
                 });
}

TEST_F(LedStateFile, AShortFileIsNotChangedAndALongOneKeepsItsEnd)
{
    for (const size_t size : {0U, 1U, 20U, 43U}) {
        const Bytes content = counted(1, size);
        file_put(content);
        for (const RecordedBytes& row : kRecordedBytes) {
            EXPECT_EQ(record_put(static_cast<int32_t>(row.command), kCallers), -1) << size;
            EXPECT_EQ(file_get(), content) << size;
        }
    }
    file_put(counted(1, 45));
    EXPECT_EQ(record_put(WR_LED_A, kCallers), 0);
    Bytes expected = counted(1, 45);
    expected[8] = kCallers[8];
    EXPECT_EQ(file_get(), expected);
}

TEST_F(LedStateFile, AShortWriteOfTheRecordFails)
{
    file_put(kHeld);
    {
        const FileLimit limit(20);
        EXPECT_EQ(record_put(WR_LED_A, kCallers), -1);
    }
    Bytes expected = kHeld;
    expected[8] = kCallers[8];
    EXPECT_EQ(file_get(), expected);
}

// The lock ----------------------------------------------------------------------------------

TEST_F(LedStateFile, ALockThatCannotBeMadeStopsNothing)
{
    std::filesystem::create_directory(board.host(kSaveLock)); // in the way, even of root
    const char* messages = "fileAccess_lock : 001 : /tmp/Saveing file open error\n"
                           "fileAccess_unlock : 001 : /tmp/Saveing file pointer (==0) error\n";
    EXPECT_EQ(record_put(WR_LED_A, kCallers), -2);
    EXPECT_EQ(board.console, messages);

    board.restart();
    EXPECT_EQ(ledState_save(), 0);
    EXPECT_EQ(file_get(), snapshot_of(7, {}));
    EXPECT_EQ(board.console, messages);

    board.restart();
    file_put(kHeld);
    EXPECT_EQ(record_put(WR_LED_A, kCallers), 0);
    EXPECT_EQ(file_get()[8], kCallers[8]);
    EXPECT_EQ(board.console, messages);
}

// Without a standard input, and with nothing else open, the file's descriptor is 0.
TEST_F(LedStateFile, WorksOnDescriptorZero)
{
    std::filesystem::create_directory(board.host(kSaveLock)); // a lock would have it
    const int input = fcntl(STDIN_FILENO, F_DUPFD, STDERR_FILENO + 1);
    close(STDIN_FILENO);
    size_t closed = 0;
    board.before_call = [&](const std::string& call) {
        closed += call == "close /tmp/led_rewrite_inh" ? board.descriptors().count(0) : 0;
    };
    EXPECT_EQ(ledState_save(), 0);
    EXPECT_EQ(file_get(), snapshot_of(7, {}));
    EXPECT_EQ(record_put(WR_LED_A, kCallers), 0);
    Bytes expected = snapshot_of(7, {});
    expected[8] = kCallers[8];
    EXPECT_EQ(file_get(), expected);
    EXPECT_EQ(record_load(), 0);
    EXPECT_EQ(record(), expected);
    EXPECT_EQ(closed, 3U);
    board.before_call = nullptr;
    if (input >= 0) {
        dup2(input, STDIN_FILENO);
        close(input);
    }
}

TEST_F(LedStateFile, WaitsForTheLockAndHoldsItToTheEnd)
{
    const std::function<int32_t()> actions[] = {ledState_save,
                                                [this] { return record_put(WR_LED_A, kCallers); }};
    for (const auto& action : actions) {
        {
            LockHolder holder(board, kSaveLock);
            bool waited = false;
            holder.release_when_awaited();
            const auto release = board.before_call;
            board.before_call = [&](const std::string& call) {
                waited |= call == "stat /tmp/led_rewrite_inh" && holder.released();
                release(call);
            };
            EXPECT_EQ(action(), 0);
            EXPECT_TRUE(waited);
        }
        board.file_remove(kLedFile);
        file_put(kHeld);
        size_t calls = 0;
        board.before_call = [&](const std::string& call) {
            if (call.find(kSaveLock) == std::string::npos) {
                ++calls;
                EXPECT_FALSE(lock_is_free(board, kSaveLock)) << call;
            }
        };
        EXPECT_EQ(action(), 0);
        EXPECT_GE(calls, 1U);
        board.before_call = nullptr;
    }
}

TEST_F(LedStateFile, SavingHoldsTheLockWhileItReadsThePanelAndWrites)
{
    size_t calls = 0;
    board.before_call = [&](const std::string& call) {
        if (call.find(kSaveLock) == std::string::npos) {
            ++calls;
            EXPECT_FALSE(lock_is_free(board, kSaveLock)) << call;
        }
    };
    EXPECT_EQ(ledState_save(), 0);
    EXPECT_EQ(calls, kSnapshot.size());
    board.before_call = nullptr;
}

TEST_F(LedStateFile, LoadsTheFirst44BytesOrNothing)
{
    for (const size_t size : {0U, 43U, 44U, 45U}) {
        file_put(counted(1, size));
        EXPECT_EQ(record_load(), size < 44 ? -1 : 0);
        EXPECT_EQ(record(), size < 44 ? kCallers : counted(1));
    }
}

} // namespace
