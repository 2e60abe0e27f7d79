// The system log writer: records, ring, messages, locking.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "board/lock_holder.h"
#include "log/log_bytes.h"
#include "maint/system_log.h"

namespace
{

class SystemLog : public BoardTest
{
  protected:
    SystemLog() { board.file_put(kSystemLog, systemHeader_bytes(0, 0)); }

    Bytes log() const { return board.file_get(kSystemLog); }

    // The record that a put of the text appends to an empty log.
    Bytes record_of(const char* text)
    {
        board.file_put(kSystemLog, systemHeader_bytes(0, 0));
        EXPECT_EQ(systemLog_put(text), 0);
        EXPECT_EQ(log().substr(0, 12), systemHeader_bytes(1, 1));
        return log().substr(12);
    }
};

// Text -----------------------------------------------------------------------------------------

TEST_F(SystemLog, RecordIsStampBlankPaddedMessageNewline)
{
    EXPECT_EQ(record_of("fan stopped"),
              "2006/03/01 09:05:07 fan stopped                                                  "
              "                  \n");
    EXPECT_EQ(record_of("fan stopped").size(), 100U);
}

TEST_F(SystemLog, EmptyMessageIsBlanks)
{
    EXPECT_EQ(record_of(""), "2006/03/01 09:05:07 " + std::string(79, ' ') + "\n");
}

TEST_F(SystemLog, MessageIsCutAt79Bytes)
{
    for (const size_t length : {1U, 78U, 79U, 80U, 81U, 100U, 5000U}) {
        SCOPED_TRACE(length);
        std::string text;
        for (size_t i = 0; i < length; ++i) {
            text += static_cast<char>('!' + i % 90);
        }
        const size_t kept = length < 79 ? length : 79;
        EXPECT_EQ(record_of(text.c_str()), std::string(kStamp) + " " + text.substr(0, kept) +
                                               std::string(79 - kept, ' ') + "\n");
    }
}

TEST_F(SystemLog, EveryByteOfAMessageIsKept)
{
    for (unsigned first = 1; first < 256; first += 79) {
        SCOPED_TRACE(first);
        std::string text;
        for (unsigned byte = first; byte < first + 79 && byte < 256; ++byte) {
            text += static_cast<char>(byte);
        }
        EXPECT_EQ(record_of(text.c_str()), record_line(text));
    }
}

TEST_F(SystemLog, MultiByteCharactersAreCutByTheByte)
{
    const std::string text = std::string(78, '-') + "\xE6\x8B\xA0\xE7\x82\xB9"; // two characters
    EXPECT_EQ(record_of(text.c_str()), std::string(kStamp) + " " + std::string(78, '-') + "\xE6\n");
}

TEST_F(SystemLog, PercentSignsAreText)
{
    const char* text = "100% %s %n %d %% %-79s %1000000d %";
    EXPECT_EQ(record_of(text), record_line(text));
}

TEST_F(SystemLog, NewlineInAMessageStays)
{
    EXPECT_EQ(record_of("one\ntwo\n"), record_line("one\ntwo\n"));
}

// Time -----------------------------------------------------------------------------------------

TEST_F(SystemLog, StampIsLocalTime)
{
    struct Row {
        const char* zone;
        int64_t now;
        const char* stamp;
    };
    static constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
    static constexpr Row kRows[] = {
        {"UTC0", 0, "1970/01/01 00:00:00"},
        {"UTC0", 951782400, "2000/02/29 00:00:00"},
        {"UTC0", 1167609599, "2006/12/31 23:59:59"},
        {"UTC0", 2147483647, "2038/01/19 03:14:07"},
        {"JST-9", 1141203907, "2006/03/01 18:05:07"},
        {"JST-9", 1167609599, "2007/01/01 08:59:59"},
        {"EST5", 0, "1969/12/31 19:00:00"},
        {"IST-5:30", 1141203907, "2006/03/01 14:35:07"},
        {kCentralEurope, 1141203907, "2006/03/01 10:05:07"},
        {kCentralEurope, 1143334799, "2006/03/26 01:59:59"}, // summer time begins
        {kCentralEurope, 1143334800, "2006/03/26 03:00:00"},
        {kCentralEurope, 1151712000, "2006/07/01 02:00:00"},
        {kCentralEurope, 1162083599, "2006/10/29 02:59:59"}, // summer time ends
        {kCentralEurope, 1162083600, "2006/10/29 02:00:00"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.zone) + " " + std::to_string(row.now));
        setenv("TZ", row.zone, 1);
        board.now = static_cast<time_t>(row.now);
        EXPECT_EQ(record_of("x"), record_line("x", row.stamp));
    }
}

TEST_F(SystemLog, YearOfFiveDigitsKeepsTheRecordAt100Bytes)
{
    if (sizeof(time_t) < sizeof(int64_t)) {
        GTEST_SKIP() << "this clock does not reach the year 10000";
    }
    board.now = static_cast<time_t>(INT64_C(253402300799));
    EXPECT_EQ(record_of("last"), record_line("last", "9999/12/31 23:59:59"));
    for (const int64_t now : {INT64_C(253402300800), INT64_C(10000000000000), INT64_MAX}) {
        SCOPED_TRACE(now);
        board.now = static_cast<time_t>(now);
        EXPECT_EQ(record_of("far"), record_line("far", "*******************"));
    }
}

TEST_F(SystemLog, NegativeClockIsRefused)
{
    for (const time_t now : {static_cast<time_t>(-1), std::numeric_limits<time_t>::min()}) {
        SCOPED_TRACE(now);
        board.restart();
        board.now = now;
        EXPECT_EQ(systemLog_put("x"), -1);
        EXPECT_EQ(board.calls, (Trace{"time now", "puts systemLog_put : 001 : time() error"}));
        EXPECT_EQ(log(), systemHeader_bytes(0, 0));
    }
}

// Ring -----------------------------------------------------------------------------------------

TEST_F(SystemLog, AppendIsOneLockedReadModifyWrite)
{
    board.file_put(kSystemLog, systemHeader_bytes(2, 2) + std::string(200, 'r'));
    ASSERT_EQ(systemLog_put("x"), 0);
    EXPECT_EQ(board.calls, append_calls(2));
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(log(), systemHeader_bytes(3, 3) + std::string(200, 'r') + record_line("x"));
}

TEST_F(SystemLog, SlotAndHeaderFollowNumberAndLocation)
{
    struct Row {
        unsigned number, location;
        size_t offset;
        unsigned new_number, new_location;
    };
    // Only number 1000 with a location of 1000 or more wraps. A location of 65535 that does not
    // wrap is the last of its 16 bits and becomes 0.
    static constexpr Row kRows[] = {
        {0, 0, 12, 1, 1},
        {1, 1, 112, 2, 2},
        {0, 5, 512, 1, 6},
        {5, 0, 12, 6, 1},
        {998, 998, 99812, 999, 999},
        {999, 999, 99912, 1000, 1000},
        {1000, 1000, 12, 1000, 1},
        {1000, 0, 12, 1000, 1},
        {1000, 500, 50012, 1000, 501},
        {1000, 999, 99912, 1000, 1000},
        {1000, 1001, 12, 1000, 1},
        {1000, 65535, 12, 1000, 1},
        {5, 1000, 100012, 6, 1001},
        {999, 1000, 100012, 1000, 1001},
        {0, 1001, 100112, 1, 1002},
        {5, 65535, 6553512, 6, 0},
        {1001, 5, 512, 1001, 6},
        {1001, 1000, 100012, 1001, 1001},
        {65535, 65535, 6553512, 65535, 0},
    };
    const Bytes slots(100000, '#');
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.number << "/" << row.location);
        board.restart();
        board.file_put(kSystemLog, systemHeader_bytes(row.number, row.location) + slots);
        ASSERT_EQ(systemLog_put("here"), 0);
        EXPECT_EQ(board.calls, append_calls((row.offset - 12) / 100));
        Bytes expected = systemHeader_bytes(row.new_number, row.new_location) + slots;
        expected.resize(std::max(expected.size(), row.offset + 100), '\0');
        expected.replace(row.offset, 100, record_line("here"));
        EXPECT_TRUE(log() == expected);
    }
}

TEST_F(SystemLog, KeepsAnySequenceNumberVersionAndChecksum)
{
    for (const char filler : {'\x00', '\xFF', '\x01'}) {
        SCOPED_TRACE(static_cast<int>(filler));
        board.file_put(kSystemLog, framed_bytes(filler, 4, "03 00 03 00", 4));
        ASSERT_EQ(systemLog_put("x"), 0);
        EXPECT_EQ(log().substr(0, 12), framed_bytes(filler, 4, "04 00 04 00", 4));
    }
}

// The whole file is compared after each of the records, through two turns of the ring.
TEST_F(SystemLog, RingFillsThenWrapsEveryThousandRecords)
{
    Bytes expected = systemHeader_bytes(0, 0);
    for (unsigned count = 1; count <= 2345; ++count) {
        board.restart();
        const std::string text = "record " + std::to_string(count);
        ASSERT_EQ(systemLog_put(text.c_str()), 0);
        const unsigned slot = (count - 1) % 1000;
        expected.replace(0, 12, systemHeader_bytes(count < 1000 ? count : 1000, slot + 1));
        expected.replace(12 + 100 * slot, 100, record_line(text));
        ASSERT_TRUE(log() == expected) << "after record " << count;
    }
    EXPECT_EQ(log().size(), 100012U);
    EXPECT_EQ(log().substr(0, 12), systemHeader_bytes(1000, 345));
    EXPECT_EQ(log().substr(34512, 100), record_line("record 1346")) << "the oldest";
    EXPECT_EQ(log().substr(34412, 100), record_line("record 2345")) << "the newest";
}

// Failures -------------------------------------------------------------------------------------

TEST_F(SystemLog, MissingFileIsReportedAndNeverCreated)
{
    board.file_remove(kSystemLog);
    EXPECT_EQ(systemLog_put("x"), -1);
    EXPECT_EQ(board.calls, (Trace{"time now", "fopen /conf/system.log r+",
                                  "puts systemLog_put : 002 : /conf/system.log file open error"}));
    EXPECT_FALSE(board.file_exists(kSystemLog));
}

TEST_F(SystemLog, FileShorterThanAHeaderIsLeftAsItIs)
{
    for (const size_t length : {0U, 1U, 11U}) {
        SCOPED_TRACE(length);
        const Bytes stump = systemHeader_bytes(0, 0).substr(0, length);
        board.file_put(kSystemLog, stump);
        board.restart();
        EXPECT_EQ(systemLog_put("x"), -1);
        EXPECT_EQ(board.console, "systemLog_put : 004 : /conf/system.log file header read error\n");
        EXPECT_EQ(log(), stump);
    }
}

TEST_F(SystemLog, EachFailingCallHasItsResultMessageAndEffect)
{
    const Bytes old_header = systemHeader_bytes(2, 2);
    const Bytes new_header = systemHeader_bytes(3, 3);
    const Bytes old_slots(200, 'r');
    const Bytes record = record_line("x");
    const Trace good = append_calls(2);
    const std::string close = "fclose /conf/system.log";
    struct Row {
        const char* call;
        const char* message;
        int32_t result;
        bool closes; // before the message
        Bytes log;
    };
    const Row rows[] = {
        {"time now", "systemLog_put : 001 : time() error", -1, false, old_header + old_slots},
        {"fopen /conf/system.log r+", "systemLog_put : 002 : /conf/system.log file open error", -1,
         false, old_header + old_slots},
        {"flock /conf/system.log LOCK_EX", "systemLog_put : 003 : /conf/system.log file lock error",
         -1, true, old_header + old_slots},
        {"fread /conf/system.log 12",
         "systemLog_put : 004 : /conf/system.log file header read error", -1, true,
         old_header + old_slots},
        {"fseek /conf/system.log 212", "systemLog_put : 005 : /conf/system.log file seek error", -1,
         true, old_header + old_slots},
        // A record that could not be written is counted all the same.
        {"fprintf /conf/system.log 100", nullptr, 0, false, new_header + old_slots},
        {"fseek /conf/system.log 0", "systemLog_put : 007 : /conf/system.log file seek error", -1,
         true, old_header + old_slots + record},
        // The record is in place under the old header, and the append counts as done.
        {"fwrite /conf/system.log 12",
         "systemLog_put : 008 : /conf/system.log file header write error", 0, true,
         old_header + old_slots + record},
        {"fclose /conf/system.log", nullptr, 0, false, new_header + old_slots + record},
    };
    size_t runs = 0;
    failure_sweep(
        board, [&] { board.file_put(kSystemLog, old_header + old_slots); },
        [] { return systemLog_put("x"); },
        [&](size_t call, const std::string& text, int32_t result) {
            ASSERT_LT(call, std::size(rows));
            const Row& row = rows[call];
            EXPECT_EQ(text, row.call);
            EXPECT_EQ(result, row.result);
            EXPECT_EQ(log(), row.log);

            Trace expected(good.begin(), good.begin() + static_cast<long>(call));
            expected.push_back(text + " -> failed");
            if (row.message == nullptr) { // goes on as if nothing had happened
                expected.insert(expected.end(), good.begin() + static_cast<long>(call) + 1,
                                good.end());
                EXPECT_EQ(board.console, "");
            } else {
                if (row.closes) {
                    expected.push_back(close);
                }
                expected.push_back(std::string("puts ") + row.message);
                EXPECT_EQ(board.console, std::string(row.message) + "\n");
            }
            EXPECT_EQ(board.calls, expected);
            ++runs;
        });
    EXPECT_EQ(runs, std::size(rows));
}

TEST_F(SystemLog, NothingWorkingFromAnyCallOnEndsWithoutRecursion)
{
    struct Row {
        int32_t result;
        std::vector<const char*> rest; // every one of them failing
    };
    const char* close = "fclose /conf/system.log";
    const Row rows[] = {
        {-1, {"time now", "puts systemLog_put : 001 : time() error"}},
        {-1,
         {"fopen /conf/system.log r+",
          "puts systemLog_put : 002 : /conf/system.log file open error"}},
        {-1,
         {"flock /conf/system.log LOCK_EX", close,
          "puts systemLog_put : 003 : /conf/system.log file lock error"}},
        {-1,
         {"fread /conf/system.log 12", close,
          "puts systemLog_put : 004 : /conf/system.log file header read error"}},
        {-1,
         {"fseek /conf/system.log 12", close,
          "puts systemLog_put : 005 : /conf/system.log file seek error"}},
        {-1,
         {"fprintf /conf/system.log 100", "fseek /conf/system.log 0", close,
          "puts systemLog_put : 007 : /conf/system.log file seek error"}},
        {-1,
         {"fseek /conf/system.log 0", close,
          "puts systemLog_put : 007 : /conf/system.log file seek error"}},
        {0,
         {"fwrite /conf/system.log 12", close,
          "puts systemLog_put : 008 : /conf/system.log file header write error"}},
        {0, {close}},
    };
    const Trace good = append_calls(0);
    for (size_t call = 0; call < std::size(rows); ++call) {
        SCOPED_TRACE(good[call]);
        board.file_put(kSystemLog, systemHeader_bytes(0, 0));
        board.restart();
        board.fail_from(call + 1);
        EXPECT_EQ(systemLog_put("x"), rows[call].result);
        Trace expected(good.begin(), good.begin() + static_cast<long>(call));
        for (const char* const text : rows[call].rest) {
            expected.push_back(std::string(text) + " -> failed");
        }
        EXPECT_EQ(board.calls, expected);
        EXPECT_EQ(board.open_descriptors(), 0U);
        EXPECT_EQ(board.held_locks(), 0U);
    }
}

TEST_F(SystemLog, AppendAfterAStaleHeaderTakesTheSameSlot)
{
    board.fail_call(8);
    ASSERT_EQ(systemLog_put("first"), 0);
    EXPECT_EQ(log(), systemHeader_bytes(0, 0) + record_line("first"));
    ASSERT_EQ(systemLog_put("second"), 0);
    EXPECT_EQ(log(), systemHeader_bytes(1, 1) + record_line("second"));
}

// Lock -----------------------------------------------------------------------------------------

TEST_F(SystemLog, LockIsHeldFromTheReadToTheClose)
{
    Trace free;
    Trace held;
    board.before_call = [&](const std::string& call) {
        (lock_is_free(board, kSystemLog) ? free : held).push_back(call);
    };
    ASSERT_EQ(systemLog_put("x"), 0);
    const Trace good = append_calls(0);
    EXPECT_EQ(free, Trace(good.begin(), good.begin() + 3));
    EXPECT_EQ(held, Trace(good.begin() + 3, good.end()));
    EXPECT_TRUE(lock_is_free(board, kSystemLog));
}

TEST_F(SystemLog, LockIsFreeAgainWhenAFailureIsReported)
{
    int reports = 0;
    board.before_call = [&](const std::string& call) {
        if (call.rfind("puts ", 0) == 0) {
            EXPECT_TRUE(lock_is_free(board, kSystemLog)) << call;
            ++reports;
        }
    };
    for (const size_t call : {3U, 4U, 5U, 7U, 8U}) {
        board.restart();
        board.fail_call(call);
        systemLog_put("x");
    }
    EXPECT_EQ(reports, 5);
}

} // namespace
