// The INI reader's calls, messages and failures, and the save lock around it.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <vector>

#include "board/failure_table.h"
#include "board/lock_holder.h"
#include "log/console_lines.h"
#include "log/log_calls.h"
#include "maint/ini_file.h"

namespace
{

class IniFileCalls : public BoardTest
{
  protected:
    void SetUp() override
    {
        board.file_put(kConfig, "KEY='0'\n[A]\nX='1'\nKEY='2'\nKEY='3'\n");
        value.fill('~');
    }

    int32_t get(const char* path, const char* section, const char* key)
    {
        return GetIniFileString(path, section, key, value.data());
    }

    std::array<char, INI_VALUE_SIZE> value{};
};

// Nothing but a zero was written.
void expect_emptied(const std::array<char, INI_VALUE_SIZE>& value)
{
    EXPECT_STREQ(value.data(), "");
    EXPECT_EQ(value[1], '~');
}

TEST_F(IniFileCalls, ReadsLineByLineUnderTheSaveLockUpToTheKey)
{
    EXPECT_EQ(get(kConfig, "[A]", "KEY"), 0);
    EXPECT_STREQ(value.data(), "2");
    EXPECT_EQ(board.calls, lookup_calls(kConfig, 4));
}

TEST_F(IniFileCalls, ReadsToTheEndForAMissingKey)
{
    EXPECT_EQ(get(kConfig, "", "OTHER"), -1);
    expect_emptied(value);
    EXPECT_EQ(board.calls, lookup_calls(kConfig, 6));
    EXPECT_EQ(board.console, "");
}

TEST_F(IniFileCalls, StopsReadingAtASiteSection)
{
    board.file_put(kConfig, hex("5B B5 F2 C5 C0 49 44 23") + "01]\nKEY='1'\n");
    EXPECT_EQ(get(kConfig, "", "KEY"), -1);
    EXPECT_EQ(board.calls, lookup_calls(kConfig, 1));
}

TEST_F(IniFileCalls, NullSectionIsNoSection)
{
    EXPECT_EQ(get(kConfig, nullptr, "KEY"), 0);
    EXPECT_STREQ(value.data(), "0");
}

TEST_F(IniFileCalls, NullPathOrKeyOnlyEmptiesTheValue)
{
    struct Arguments {
        const char* path;
        const char* key;
    };
    for (const auto& [path, key] :
         {Arguments{nullptr, "KEY"}, Arguments{kConfig, nullptr}, Arguments{nullptr, nullptr}}) {
        value.fill('~');
        EXPECT_EQ(get(path, "", key), -1);
        expect_emptied(value);
    }
    EXPECT_EQ(board.calls, Trace{});
}

TEST_F(IniFileCalls, NullValueIsRefused)
{
    EXPECT_EQ(GetIniFileString(kConfig, "", "KEY", nullptr), -1);
    EXPECT_EQ(board.calls, Trace{});
}

TEST_F(IniFileCalls, ValueIsEmptiedBeforeAnythingElse)
{
    char first = '?';
    board.before_call = [&](const std::string&) {
        if (first == '?') {
            first = value[0];
        }
    };
    EXPECT_EQ(get(kConfig, "", "KEY"), 0);
    EXPECT_EQ(first, '\0');
}

TEST_F(IniFileCalls, FolderInPlaceOfTheFileHoldsNoKey)
{
    EXPECT_EQ(get("/tmp/.", "", "KEY"), -1);
    expect_emptied(value);
    EXPECT_EQ(board.console, "");
}

// The file cannot be opened --------------------------------------------------------------------

const Bytes kOneRecord = hex("00 00 00 00 01 00 01 00 01 00 00 00");

TEST_F(IniFileCalls, MissingFileIsReportedOnBothSinksAndTheLockReleased)
{
    board.file_put(kSystemLog, fresh_log());
    EXPECT_EQ(get("/tmp/none", "", "KEY"), -1);
    expect_emptied(value);
    EXPECT_EQ(board.console, "GetIniFileString : 001 : /tmp/none file open error\n");
    EXPECT_EQ(board.file_get(kSystemLog),
              kOneRecord +
                  "2006/03/01 09:05:07 GetIniFileString : 001 : /tmp/none file open error" +
                  Bytes(29, ' ') + "\n");
    EXPECT_EQ(board.calls,
              (Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX", "fopen /tmp/none r",
                     "puts GetIniFileString : 001 : /tmp/none file open error"} +
               append_calls(0) + Trace{"fclose /tmp/Saveing"}));
    EXPECT_TRUE(lock_is_free(board, kSaveLock));
}

TEST_F(IniFileCalls, MissingConfigurationIsReportedUnderItsPath)
{
    board.file_put(kSystemLog, fresh_log());
    board.file_remove(kConfig);
    EXPECT_EQ(get(kConfig, "", "KEY"), -1);
    EXPECT_EQ(board.console, "GetIniFileString : 001 : /conf/config file open error\n");
    EXPECT_EQ(board.file_get(kSystemLog).substr(32, 79),
              "GetIniFileString : 001 : /conf/config file open error" + Bytes(26, ' '));
}

TEST_F(IniFileCalls, LongPathIsWholeOnTheConsoleAndCutAt79InTheLog)
{
    for (const size_t length : {30U, 40U, 60U, 200U, 4000U}) {
        SCOPED_TRACE(length);
        board.restart();
        board.file_put(kSystemLog, fresh_log());
        const std::string path = "/tmp/" + std::string(length, 'p');
        const std::string text = "GetIniFileString : 001 : " + path + " file open error";
        EXPECT_EQ(get(path.c_str(), "", "KEY"), -1);
        EXPECT_EQ(board.console, text + "\n");
        const Bytes log = board.file_get(kSystemLog);
        ASSERT_EQ(log.size(), 112U);
        EXPECT_EQ(log.substr(32), (text + Bytes(79, ' ')).substr(0, 79) + "\n");
    }
}

TEST_F(IniFileCalls, PathLongerThanAnyFileNameKeepsTheMessagesBeginning)
{
    board.file_put(kSystemLog, fresh_log());
    const std::string path = "/tmp/" + std::string(10000, 'p');
    EXPECT_EQ(get(path.c_str(), "", "KEY"), -1);
    const std::string text = "GetIniFileString : 001 : " + path;
    EXPECT_EQ(board.console.substr(0, 4096), text.substr(0, 4096));
    EXPECT_EQ(board.file_get(kSystemLog).substr(32), text.substr(0, 79) + "\n");
}

TEST_F(IniFileCalls, PercentSignsInThePathAreText)
{
    board.file_put(kSystemLog, fresh_log());
    EXPECT_EQ(get("/tmp/%s%n%d", "", "KEY"), -1);
    EXPECT_EQ(board.console, "GetIniFileString : 001 : /tmp/%s%n%d file open error\n");
    EXPECT_EQ(board.file_get(kSystemLog).substr(32, 52),
              "GetIniFileString : 001 : /tmp/%s%n%d file open error");
}

// The save lock ---------------------------------------------------------------------------------

TEST_F(IniFileCalls, LockFileThatCannotBeOpenedEndsTheLookup)
{
    std::filesystem::create_directory(board.host(kSaveLock));
    EXPECT_EQ(get(kConfig, "", "KEY"), -1);
    expect_emptied(value);
    EXPECT_EQ(board.calls, (Trace{"fopen /tmp/Saveing w", puts_of(kLockUnopened)}));
}

TEST_F(IniFileCalls, WaitsForAnotherProcessAndReadsWhatItSaved)
{
    LockHolder holder(board, kSaveLock);
    holder.release_when_awaited([this] { board.file_put(kConfig, "KEY='saved'\n"); });
    EXPECT_EQ(get(kConfig, "", "KEY"), 0);
    EXPECT_TRUE(holder.released());
    EXPECT_STREQ(value.data(), "saved");
    EXPECT_EQ(board.console, "");
}

TEST_F(IniFileCalls, LockIsHeldFromBeforeTheOpenUntilAfterTheClose)
{
    std::string free;
    std::string held;
    board.before_call = [&](const std::string& call) {
        (lock_is_free(board, kSaveLock) ? free : held) += call + "\n";
    };
    board.file_put(kSaveLock, "");
    EXPECT_EQ(get(kConfig, "", "KEY"), 0);
    EXPECT_EQ(free, "fopen /tmp/Saveing w\nflock /tmp/Saveing LOCK_EX\n");
    // Seen before each call, so the lock is still there when its own stream is about to close.
    EXPECT_EQ(held, "fopen /conf/config r\nfgets /conf/config 1024\nfclose /conf/config\n"
                    "fclose /tmp/Saveing\n");
    EXPECT_TRUE(lock_is_free(board, kSaveLock));
}

TEST_F(IniFileCalls, LockIsReleasedWhateverTheOutcome)
{
    struct Outcome {
        const char* path;
        const char* section;
        const char* key;
        int32_t result;
    };
    for (const Outcome& outcome :
         {Outcome{kConfig, "", "KEY", 0}, Outcome{kConfig, "", "NONE", -1},
          Outcome{kConfig, "[A]", "KEY", 0}, Outcome{kConfig, "[B]", "KEY", -1},
          Outcome{kConfig, "", "[A]", -1}, Outcome{"/tmp/none", "", "KEY", -1},
          Outcome{"/tmp/.", "", "KEY", -1}}) {
        EXPECT_EQ(get(outcome.path, outcome.section, outcome.key), outcome.result);
        EXPECT_EQ(board.open_descriptors(), 0U);
        EXPECT_EQ(board.held_locks(), 0U);
        EXPECT_TRUE(lock_is_free(board, kSaveLock));
    }
}

TEST_F(IniFileCalls, FailedUnlockFailsTheCallAndLeavesTheValueInPlace)
{
    board.file_put(kSystemLog, fresh_log());
    board.fail_call(6);
    EXPECT_EQ(get(kConfig, "", "KEY"), -1);
    EXPECT_EQ(board.calls,
              (Trace{"fopen /tmp/Saveing w", "flock /tmp/Saveing LOCK_EX", "fopen /conf/config r",
                     "fgets /conf/config 1024", "fclose /conf/config",
                     "fclose /tmp/Saveing -> failed", puts_of(kLockUnclosed)}));
    EXPECT_STREQ(value.data(), "0");
    EXPECT_EQ(board.file_get(kSystemLog), fresh_log());
}

// Every call fails once --------------------------------------------------------------------------

struct Failure {
    std::string call;
    int32_t result;
    const char* value;
    std::string console;
};

TEST_F(IniFileCalls, EachFailingCallGivesItsResult)
{
    const std::vector<Failure> failures{
        {"fopen /tmp/Saveing w", -1, "", kLockUnopened},
        {"flock /tmp/Saveing LOCK_EX", -1, "", kLockUntaken},
        {"fopen /conf/config r", -1, "",
         "GetIniFileString : 001 : /conf/config file open error\n" + kLogAbsent},
        // A line that cannot be read is the end of the file.
        {"fgets /conf/config 1024", -1, "", ""},
        {"fgets /conf/config 1024", -1, "", ""},
        {"fgets /conf/config 1024", -1, "", ""},
        {"fgets /conf/config 1024", -1, "", ""},
        {"fclose /conf/config", 0, "2", ""},
        {"fclose /tmp/Saveing", -1, "2", kLockUnclosed},
    };
    failureTable_expect(
        board, [this] { value.fill('~'); }, [this] { return get(kConfig, "[A]", "KEY"); }, failures,
        [this](const Failure& row, size_t) {
            EXPECT_STREQ(value.data(), row.value);
            EXPECT_TRUE(lock_is_free(board, kSaveLock));
        });
}

} // namespace
