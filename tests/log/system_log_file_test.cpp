// Reading the headers of flash image and working file, creating the empty working file.
#include "log/console_lines.h"
#include "log/log_bytes.h"
#include "log/log_sweep.h"
#include "maint/system_log.h"

namespace
{

using namespace std::string_literals;

using ReadFlashHeader = BoardTest;
using ReadWorkingHeader = BoardTest;
using FileInit = BoardTest;
using EveryRoutine = BoardTest;

// Two bytes of each field differ, so that a wrong width, order or place shows.
constexpr const char* kTellingHeader = "04 03 02 81 06 05 08 07 0A 09 0C 8B";

void tellingHeader_expect(const SystemLogHeader& header)
{
    EXPECT_EQ(header.seq_num, 0x81020304U);
    EXPECT_EQ(header.number, 0x0506);
    EXPECT_EQ(header.location, 0x0708);
    EXPECT_EQ(header.version, 0x090A);
    EXPECT_EQ(header.checksum, 0x8B0C);
}

// --- read_systemlog_header ---

int32_t flashHeader_read()
{
    SystemLogHeader header;
    return read_systemlog_header(&header);
}

TEST_F(ReadFlashHeader, ReadsTwelveBytesWithoutALock)
{
    board.file_put(kFlashImage, hex(kTellingHeader) + "and what follows"s);
    SystemLogHeader header{};
    ASSERT_EQ(read_systemlog_header(&header), 0);
    tellingHeader_expect(header);
    EXPECT_EQ(board.calls, (Trace{"open /dev/mtd_systemlog O_RDONLY", "read /dev/mtd_systemlog 12",
                                  "close /dev/mtd_systemlog"}));
    EXPECT_EQ(board.console, "");
    EXPECT_FALSE(board.file_exists(kSystemLog));
}

TEST_F(ReadFlashHeader, ReportsAMissingImage)
{
    EXPECT_EQ(flashHeader_read(), -1);
    EXPECT_EQ(board.calls,
              (Trace{"open /dev/mtd_systemlog O_RDONLY", puts_of(kFlashUnopened)} + kUnlogged));
}

TEST_F(ReadFlashHeader, RefusesEveryShortImageClosingItFirst)
{
    for (size_t length = 0; length < kHeaderSize; ++length) {
        SCOPED_TRACE(length);
        board.file_put(kFlashImage, hex(kTellingHeader).substr(0, length));
        board.restart();
        EXPECT_EQ(flashHeader_read(), -1);
        EXPECT_EQ(board.calls,
                  (Trace{"open /dev/mtd_systemlog O_RDONLY", "read /dev/mtd_systemlog 12",
                         "close /dev/mtd_systemlog", puts_of(kFlashShort)} +
                   kUnlogged));
    }
    board.file_put(kFlashImage, hex(kTellingHeader));
    EXPECT_EQ(flashHeader_read(), 0) << "exactly 12 bytes";
}

TEST_F(ReadFlashHeader, ReportsToTheSystemLogAsWell)
{
    board.file_put(kSystemLog, fresh_log());
    EXPECT_EQ(flashHeader_read(), -1);
    board.file_put(kFlashImage, "short");
    EXPECT_EQ(flashHeader_read(), -1);
    EXPECT_EQ(board.console, kFlashUnopened + kFlashShort);
    EXPECT_EQ(
        board.file_get(kSystemLog),
        hex("00 00 00 00 02 00 02 00 01 00 00 00") +
            record_line("read_systemlog_header : 001 : /dev/mtd_systemlog file open error") +
            record_line("read_systemlog_header : 002 : /dev/mtd_systemlog file header read error"));
}

TEST_F(ReadFlashHeader, EachFailingCallHasItsResultMessageAndEffect)
{
    sweep_expect(
        board, [this] { board.file_put(kFlashImage, sample_image()); }, flashHeader_read,
        {{"open /dev/mtd_systemlog O_RDONLY", -1, kFlashUnopened + kLogAbsent, std::nullopt},
         {"read /dev/mtd_systemlog 12", -1, kFlashShort + kLogAbsent, std::nullopt},
         {"close /dev/mtd_systemlog", 0, "", std::nullopt}});
}

// --- zev_maintlog_head_read ---

int32_t workingHeader_read()
{
    SystemLogHeader header;
    return zev_maintlog_head_read(&header);
}

TEST_F(ReadWorkingHeader, ReadsTwelveBytesUnderAnExclusiveLock)
{
    const Bytes log = hex(kTellingHeader) + records_make(1);
    board.file_put(kSystemLog, log);
    SystemLogHeader header{};
    ASSERT_EQ(zev_maintlog_head_read(&header), 0);
    tellingHeader_expect(header);
    EXPECT_EQ(board.calls, (Trace{"fopen /conf/system.log rb", "flock /conf/system.log LOCK_EX",
                                  "fread /conf/system.log 12", "fclose /conf/system.log"}));
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(board.file_get(kSystemLog), log);
}

TEST_F(ReadWorkingHeader, ReportsAMissingFileOnTheConsoleAlone)
{
    EXPECT_EQ(workingHeader_read(), -1);
    EXPECT_EQ(board.calls, (Trace{"fopen /conf/system.log rb", puts_of(kHeadUnopened)}));
    EXPECT_FALSE(board.file_exists(kSystemLog));
}

TEST_F(ReadWorkingHeader, RefusesEveryShortFileClosingItFirst)
{
    const std::string report = puts_of(kHeadShort);
    for (size_t length = 0; length < kHeaderSize; ++length) {
        SCOPED_TRACE(length);
        board.file_put(kSystemLog, hex(kTellingHeader).substr(0, length));
        board.restart();
        EXPECT_EQ(workingHeader_read(), -1);
        EXPECT_EQ(board.calls,
                  (Trace{"fopen /conf/system.log rb", "flock /conf/system.log LOCK_EX",
                         "fread /conf/system.log 12", "fclose /conf/system.log", report}));
        EXPECT_EQ(board.file_get(kSystemLog), hex(kTellingHeader).substr(0, length));
    }
    board.file_put(kSystemLog, hex(kTellingHeader));
    EXPECT_EQ(workingHeader_read(), 0) << "exactly 12 bytes";
}

// Mask 1: the file is there and could take the message, but does not get it.
TEST_F(ReadWorkingHeader, EachFailingCallHasItsResultMessageAndEffect)
{
    sweep_expect(board, [this] { board.file_put(kSystemLog, fresh_log()); }, workingHeader_read,
                 {{"fopen /conf/system.log rb", -1, kHeadUnopened, fresh_log()},
                  {"flock /conf/system.log LOCK_EX", -1, kHeadUnlocked, fresh_log()},
                  {"fread /conf/system.log 12", -1, kHeadShort, fresh_log()},
                  {"fclose /conf/system.log", 0, "", fresh_log()}});
}

// --- systemLogFileInit ---

TEST_F(FileInit, CreatesTheEmptyLogUnderAnExclusiveLock)
{
    ASSERT_EQ(systemLogFileInit(), 0);
    EXPECT_EQ(board.file_get(kSystemLog), hex("00 00 00 00 00 00 00 00 01 00 00 00"));
    EXPECT_EQ(board.calls, (Trace{"fopen /conf/system.log w+b", "flock /conf/system.log LOCK_EX",
                                  "fwrite /conf/system.log 12", "fclose /conf/system.log"}));
    EXPECT_EQ(board.console, "");
}

TEST_F(FileInit, EmptiesALogThatIsThere)
{
    board.file_put(kSystemLog, sample_image());
    ASSERT_EQ(systemLogFileInit(), 0);
    EXPECT_EQ(board.file_get(kSystemLog), hex("00 00 00 00 00 00 00 00 01 00 00 00"));
}

TEST_F(FileInit, EachFailingCallHasItsResultMessageAndEffect)
{
    sweep_expect(board, [this] { board.file_remove(kSystemLog); }, systemLogFileInit,
                 {{"fopen /conf/system.log w+b", -1, kInit001 + kLogAbsent, std::nullopt},
                  {"flock /conf/system.log LOCK_EX", -1, kInit002 + kLogEmpty, ""},
                  {"fwrite /conf/system.log 12", -1, kInit003 + kLogEmpty, ""},
                  {"fclose /conf/system.log", 0, "", fresh_log()}});
}

TEST_F(FileInit, ReportsAFailedOpenToALogThatIsThere)
{
    board.file_put(kSystemLog, fresh_log());
    board.fail_call(1);
    EXPECT_EQ(systemLogFileInit(), -1);
    EXPECT_EQ(board.console, kInit001);
    EXPECT_EQ(board.file_get(kSystemLog),
              hex("00 00 00 00 01 00 01 00 01 00 00 00") +
                  record_line("systemLogFileInit : 001 : /conf/system.log file open error"));
}

// --- All of them ---

// When everything fails from some call on, only a failing last close goes unnoticed.
TEST_F(EveryRoutine, GivesUpCleanlyWhenCallsFailForGood)
{
    const std::pair<const char*, int32_t (*)()> routines[] = {
        {"read_systemlog_header", flashHeader_read},
        {"zev_maintlog_head_read", workingHeader_read},
        {"systemLogFileInit", systemLogFileInit},
        {"systemLogFileMake", systemLogFileMake}};
    for (const auto& [name, routine] : routines) {
        SCOPED_TRACE(name);
        size_t calls = 1;
        for (size_t failing = 1; failing <= calls; ++failing) {
            SCOPED_TRACE(failing);
            board.file_put(kFlashImage, sample_image());
            board.file_put(kSystemLog, sample_image());
            board.restart();
            ASSERT_EQ(routine(), 0);
            calls = board.calls.size();
            board.restart();
            board.fail_from(failing);
            EXPECT_EQ(routine(), failing == calls ? 0 : -1);
            EXPECT_EQ(board.open_descriptors(), 0U);
            EXPECT_EQ(board.held_locks(), 0U);
        }
    }
}

} // namespace
