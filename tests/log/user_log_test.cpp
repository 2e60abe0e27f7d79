// The user log writer: marker, checks, record, ring, messages, locking.
#include "maint/user_log.h"

#include <cstdint>
#include <limits>

#include "board/lock_holder.h"
#include "log/log_bytes.h"

namespace
{

// Both sinks: the console, then the first record of the system log.
Trace report_trace(const std::string& message)
{
    return Trace{"puts " + message} + append_calls(0);
}

// What UserLog::record becomes: stamped with the board's clock, 0x440563C3.
const Bytes kRecord = hex("C3 63 05 44 C1 C2 C3 C4 02 01 1E 07 D1 D2 D3 D4");

class UserLog : public BoardTest
{
  protected:
    UserLog() { files_put(2, 2, Bytes(32, 'r')); }

    void files_put(unsigned number, unsigned location, const Bytes& slots) const
    {
        board.file_put(kUserLog, userHeader_bytes(number, location) + slots);
        board.file_put(kSystemLog, systemHeader_bytes(0, 0));
        board.file_put(kFlashSave, "stale");
    }

    Bytes log() const { return board.file_get(kUserLog); }

    // What the system log holds after one message, or after none.
    static Bytes systemLog_with(const char* message)
    {
        return message == nullptr ? systemHeader_bytes(0, 0)
                                  : systemHeader_bytes(1, 1) + record_line(message);
    }

    // Refused with the message: marker raised, nothing else done, record untouched.
    void expect_refused(UserLogRecord refused, const std::string& message)
    {
        SCOPED_TRACE(message);
        files_put(2, 2, Bytes(32, 'r'));
        board.restart();
        const Bytes before = bytes_of(refused);
        EXPECT_EQ(userLog_put(&refused), -1);
        EXPECT_EQ(board.calls, kMarkerCalls + report_trace(message));
        EXPECT_EQ(board.console, message + "\n");
        EXPECT_EQ(board.file_get(kSystemLog), systemLog_with(message.c_str()));
        EXPECT_EQ(board.file_get(kFlashSave), hex("01"));
        EXPECT_EQ(log(), userHeader_bytes(2, 2) + Bytes(32, 'r'));
        EXPECT_EQ(bytes_of(refused), before);
    }

    UserLogRecord record{0xEEEEEEEE, {0xC1, 0xC2, 0xC3, 0xC4}, 258, 30,
                         7,          {0xD1, 0xD2, 0xD3, 0xD4}};
};

// Record ---------------------------------------------------------------------------------------

TEST_F(UserLog, RaisesTheMarkerThenAppendsTheStampedRecord)
{
    ASSERT_EQ(userLog_put(&record), 0);
    EXPECT_EQ(board.calls, event_calls(2));
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(log(), userHeader_bytes(3, 3) + Bytes(32, 'r') + kRecord);
    EXPECT_EQ(bytes_of(record), kRecord) << "the caller's record, with its time";
    EXPECT_EQ(board.file_get(kFlashSave), hex("01"));
    EXPECT_EQ(board.file_get(kSystemLog), systemLog_with(nullptr));
}

TEST_F(UserLog, EachFieldHasItsPlaceInTheRecord)
{
    struct Row {
        UserLogRecord record;
        const char* bytes;
    };
    static constexpr Row kRows[] = {
        {{0, {0, 0, 0, 0}, 1, 0, 0, {0, 0, 0, 0}},
         "04 03 02 01 00 00 00 00 01 00 00 00 00 00 00 00"},
        {{0, {0x11, 0, 0, 0x22}, 1, 0, 0, {0, 0, 0, 0}},
         "04 03 02 01 11 00 00 22 01 00 00 00 00 00 00 00"},
        {{0, {0, 0, 0, 0}, 300, 0, 0, {0, 0, 0, 0}},
         "04 03 02 01 00 00 00 00 2C 01 00 00 00 00 00 00"},
        {{0, {0, 0, 0, 0}, 1, 29, 0, {0, 0, 0, 0}},
         "04 03 02 01 00 00 00 00 01 00 1D 00 00 00 00 00"},
        {{0, {0, 0, 0, 0}, 1, 0, 28, {0, 0, 0, 0}},
         "04 03 02 01 00 00 00 00 01 00 00 1C 00 00 00 00"},
        {{0, {0, 0, 0, 0}, 1, 0, 0, {0x33, 0, 0, 0xFF}},
         "04 03 02 01 00 00 00 00 01 00 00 00 33 00 00 FF"},
    };
    board.now = 0x01020304;
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.bytes);
        board.file_put(kUserLog, userHeader_bytes(0, 0));
        record = row.record;
        EXPECT_EQ(userLog_put(&record), 0);
        EXPECT_EQ(log(), userHeader_bytes(1, 1) + hex(row.bytes));
    }
}

TEST_F(UserLog, TimeIsTheClocksLow32Bits)
{
    struct Row {
        int64_t now;
        uint32_t time;
    };
    static constexpr Row kRows[] = {{0, 0},
                                    {1, 1},
                                    {0x7FFFFFFF, 0x7FFFFFFF},
                                    {0x80000000, 0x80000000},
                                    {0xFFFFFFFF, 0xFFFFFFFF},
                                    {0x100000005, 5}};
    for (const Row& row : kRows) {
        if (row.now > std::numeric_limits<time_t>::max()) {
            continue;
        }
        SCOPED_TRACE(row.now);
        board.now = static_cast<time_t>(row.now);
        EXPECT_EQ(userLog_put(&record), 0);
        EXPECT_EQ(record.time, row.time);
    }
}

TEST_F(UserLog, CodesFrom1To300AreAccepted)
{
    for (const unsigned code : {1U, 2U, 255U, 256U, 299U, 300U}) {
        SCOPED_TRACE(code);
        board.restart();
        files_put(2, 2, Bytes(32, 'r'));
        record.code = static_cast<uint16_t>(code);
        EXPECT_EQ(userLog_put(&record), 0);
        EXPECT_EQ(board.console, "");
        EXPECT_EQ(log().substr(56, 2), le16(code));
    }
}

TEST_F(UserLog, OtherCodesAreRefused)
{
    struct Row {
        uint16_t code;
        const char* message;
    };
    static constexpr Row kRows[] = {
        {0, "userLog_put : 004 : invalid code(= 0)"},
        {301, "userLog_put : 004 : invalid code(= 301)"},
        {556, "userLog_put : 004 : invalid code(= 556)"}, // low byte of an accepted one
        {32768, "userLog_put : 004 : invalid code(= 32768)"},
        {65535, "userLog_put : 004 : invalid code(= 65535)"},
    };
    for (const Row& row : kRows) {
        record.code = row.code;
        expect_refused(record, row.message);
    }
}

TEST_F(UserLog, ValuesUpTo30AreAccepted)
{
    static constexpr uint8_t kValues[][2] = {{0, 0}, {30, 0}, {0, 30}, {30, 30}, {1, 29}};
    for (const auto& [val1, val2] : kValues) {
        SCOPED_TRACE(testing::Message() << +val1 << " " << +val2);
        board.restart();
        record.val1 = val1;
        record.val2 = val2;
        EXPECT_EQ(userLog_put(&record), 0);
        EXPECT_EQ(board.console, "");
    }
}

TEST_F(UserLog, OtherValuesAreRefused)
{
    struct Row {
        uint8_t val1, val2;
        const char* message;
    };
    static constexpr Row kRows[] = {
        {31, 0, "userLog_put : 005 : invalid val1[31] val2[0]"},
        {0, 31, "userLog_put : 005 : invalid val1[0] val2[31]"},
        {31, 30, "userLog_put : 005 : invalid val1[31] val2[30]"},
        {30, 31, "userLog_put : 005 : invalid val1[30] val2[31]"},
        {31, 32, "userLog_put : 005 : invalid val1[31] val2[32]"},
        {255, 128, "userLog_put : 005 : invalid val1[255] val2[128]"},
    };
    for (const Row& row : kRows) {
        record.val1 = row.val1;
        record.val2 = row.val2;
        expect_refused(record, row.message);
    }
}

TEST_F(UserLog, CodeIsCheckedBeforeTheValues)
{
    record.code = 0;
    record.val1 = record.val2 = 31;
    expect_refused(record, "userLog_put : 004 : invalid code(= 0)");
}

TEST_F(UserLog, NegativeClockIsRefusedByBothLogs)
{
    const Bytes before = bytes_of(record);
    const Trace refusals = {"time now", "puts userLog_put : 006 : invalid time()", "time now",
                            "puts systemLog_put : 001 : time() error"};
    for (const time_t now : {time_t{-1}, time_t{-2}, std::numeric_limits<time_t>::min()}) {
        SCOPED_TRACE(now);
        files_put(2, 2, Bytes(32, 'r'));
        board.restart();
        board.now = now;
        EXPECT_EQ(userLog_put(&record), -1);
        EXPECT_EQ(board.calls, kMarkerCalls + refusals);
        EXPECT_EQ(bytes_of(record), before);
        EXPECT_EQ(log(), userHeader_bytes(2, 2) + Bytes(32, 'r'));
        EXPECT_EQ(board.file_get(kSystemLog), systemLog_with(nullptr));
        EXPECT_EQ(board.file_get(kFlashSave), hex("01"));
    }
}

// Marker ---------------------------------------------------------------------------------------

TEST_F(UserLog, MarkerIsCreatedWhereThereIsNone)
{
    board.file_remove(kFlashSave);
    EXPECT_EQ(userLog_put(&record), 0);
    EXPECT_EQ(board.file_get(kFlashSave), hex("01"));
}

TEST_F(UserLog, MarkerIsRaisedWhenThereIsNoLog)
{
    board.file_remove(kUserLog);
    EXPECT_EQ(userLog_put(&record), -1);
    const Trace open = {"time now", "fopen /conf/user.log r+b"};
    EXPECT_EQ(board.calls, kMarkerCalls + open +
                               report_trace("userLog_put : 007 : /conf/user.log file open error"));
    EXPECT_EQ(board.file_get(kFlashSave), hex("01"));
    EXPECT_EQ(board.file_get(kSystemLog),
              systemLog_with("userLog_put : 007 : /conf/user.log file open error"));
    EXPECT_FALSE(board.file_exists(kUserLog)) << "the log is created by another program";
}

TEST_F(UserLog, MarkerThatFailsAltogetherStopsNothing)
{
    board.fail_call(2);
    board.before_call = [&](const std::string& call) {
        if (call == "fwrite /tmp/flashsave 1") {
            board.fail_call(1);
        }
    };
    EXPECT_EQ(userLog_put(&record), 0);
    EXPECT_EQ(board.console, "userLog_put : 002 : /tmp/flashsave file lock error\n"
                             "userLog_put : 003 : /tmp/flashsave file write error\n");
    EXPECT_EQ(log(), userHeader_bytes(3, 3) + Bytes(32, 'r') + kRecord);
}

TEST_F(UserLog, WithoutASystemLogTheConsoleGetsTheMessages)
{
    board.file_remove(kSystemLog);
    record.code = 0;
    EXPECT_EQ(userLog_put(&record), -1);
    EXPECT_EQ(board.console, "userLog_put : 004 : invalid code(= 0)\n"
                             "systemLog_put : 002 : /conf/system.log file open error\n");
    EXPECT_FALSE(board.file_exists(kSystemLog));
}

// Ring -----------------------------------------------------------------------------------------

TEST_F(UserLog, SlotAndHeaderFollowNumberAndLocation)
{
    struct Row {
        unsigned number, location;
        size_t offset;
        unsigned new_number, new_location;
    };
    // A location above 999 wraps whatever the number is, unlike the system log's.
    static constexpr Row kRows[] = {
        {0, 0, 16, 1, 1},
        {1, 1, 32, 2, 2},
        {0, 5, 96, 1, 6},
        {5, 0, 16, 6, 1},
        {998, 998, 15984, 999, 999},
        {999, 999, 16000, 1000, 1000},
        {1000, 1000, 16, 1000, 1},
        {1000, 0, 16, 1000, 1},
        {1000, 500, 8016, 1000, 501},
        {1000, 999, 16000, 1000, 1000},
        {1000, 1001, 16, 1000, 1},
        {1000, 65535, 16, 1000, 1},
        {5, 999, 16000, 6, 1000},
        {5, 1000, 16, 6, 1},
        {999, 1000, 16, 1000, 1},
        {0, 1001, 16, 1, 1},
        {5, 65535, 16, 6, 1},
        {1001, 5, 96, 1001, 6},
        {1001, 1000, 16, 1001, 1},
        {65535, 999, 16000, 65535, 1000},
        {65535, 65535, 16, 65535, 1},
    };
    const Bytes slots(16000, '#');
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.number << "/" << row.location);
        board.restart();
        files_put(row.number, row.location, slots);
        ASSERT_EQ(userLog_put(&record), 0);
        EXPECT_EQ(board.calls, event_calls((row.offset - 16) / 16));
        Bytes expected = userHeader_bytes(row.new_number, row.new_location) + slots;
        expected.replace(row.offset, 16, kRecord);
        EXPECT_TRUE(log() == expected);
    }
}

TEST_F(UserLog, KeepsWhateverElseTheHeaderHolds)
{
    for (const char filler : {'\x00', '\xFF', '\x01'}) {
        SCOPED_TRACE(static_cast<int>(filler));
        board.file_put(kUserLog, framed_bytes(filler, 4, "00 00 00 00", 8));
        ASSERT_EQ(userLog_put(&record), 0);
        EXPECT_EQ(log(), framed_bytes(filler, 4, "01 00 01 00", 8) + kRecord);
    }
}

// The whole file is compared after each of the records, through two turns of the ring.
TEST_F(UserLog, RingFillsThenWrapsEveryThousandRecords)
{
    Bytes expected = userHeader_bytes(0, 0);
    board.file_put(kUserLog, expected);
    for (unsigned count = 1; count <= 2345; ++count) {
        board.restart();
        board.now = count;
        ASSERT_EQ(userLog_put(&record), 0);
        const unsigned slot = (count - 1) % 1000;
        expected.replace(0, 16, userHeader_bytes(count < 1000 ? count : 1000, slot + 1));
        expected.replace(16 + 16 * slot, 16, le16(count) + hex("00 00") + kRecord.substr(4));
        ASSERT_TRUE(log() == expected) << "after record " << count;
    }
    EXPECT_EQ(log().size(), 16016U);
    EXPECT_EQ(log().substr(0, 16), userHeader_bytes(1000, 345));
}

// Failures -------------------------------------------------------------------------------------

TEST_F(UserLog, LogShorterThanAHeaderIsLeftAsItIs)
{
    for (const size_t length : {0U, 12U, 15U}) {
        SCOPED_TRACE(length);
        const Bytes stump = userHeader_bytes(0, 0).substr(0, length);
        board.file_put(kUserLog, stump);
        board.restart();
        EXPECT_EQ(userLog_put(&record), -1);
        EXPECT_EQ(board.console, "userLog_put : 009 : /conf/user.log file header read error\n");
        EXPECT_EQ(log(), stump);
    }
}

TEST_F(UserLog, EachFailingCallHasItsResultMessageAndEffect)
{
    const Bytes old_log = userHeader_bytes(2, 2) + Bytes(32, 'r');
    const Bytes stale_log = old_log + kRecord; // the record, but not the header
    const Bytes new_log = userHeader_bytes(3, 3) + Bytes(32, 'r') + kRecord;
    enum After { kGoesOn, kStops, kClosesAndStops, kSkipsTheMarker };
    struct Row {
        const char* call;
        const char* message;
        int32_t result;
        After after;
        const char* marker; // bytes of its file
        const Bytes& log;
    };
    const Row rows[] = {
        {"fopen /tmp/flashsave w+", "userLog_put : 001 : /tmp/flashsave file create error", 0,
         kSkipsTheMarker, "73 74 61 6C 65", new_log},
        {"flock /tmp/flashsave LOCK_EX", "userLog_put : 002 : /tmp/flashsave file lock error", 0,
         kGoesOn, "01", new_log},
        {"fwrite /tmp/flashsave 1", "userLog_put : 003 : /tmp/flashsave file write error", 0,
         kGoesOn, "", new_log},
        {"fclose /tmp/flashsave", nullptr, 0, kGoesOn, "01", new_log},
        {"time now", "userLog_put : 006 : invalid time()", -1, kStops, "01", old_log},
        {"fopen /conf/user.log r+b", "userLog_put : 007 : /conf/user.log file open error", -1,
         kStops, "01", old_log},
        {"flock /conf/user.log LOCK_EX", "userLog_put : 008 : /conf/user.log file lock error", -1,
         kClosesAndStops, "01", old_log},
        {"fread /conf/user.log 16", "userLog_put : 009 : /conf/user.log file header read error", -1,
         kClosesAndStops, "01", old_log},
        {"fseek /conf/user.log 48", "userLog_put : 010 : /conf/user.log file seek error", -1,
         kClosesAndStops, "01", old_log},
        {"fwrite /conf/user.log 16", "userLog_put : 011 : /conf/user.log file write error", -1,
         kClosesAndStops, "01", old_log},
        {"fseek /conf/user.log 0", "userLog_put : 012 : /conf/user.log file seek error", -1,
         kClosesAndStops, "01", stale_log},
        {"fwrite /conf/user.log 16", "userLog_put : 013 : /conf/user.log file header write error",
         -1, kClosesAndStops, "01", stale_log},
        {"fclose /conf/user.log", nullptr, 0, kGoesOn, "01", new_log},
    };
    const Trace good = event_calls(2);
    const Bytes unstamped = bytes_of(record);
    UserLogRecord put = record;
    size_t runs = 0;
    failure_sweep(
        board, [&] { files_put(2, 2, Bytes(32, 'r')); },
        [&] {
            put = record;
            return userLog_put(&put);
        },
        [&](size_t call, const std::string& text, int32_t result) {
            ASSERT_LT(call, std::size(rows));
            const Row& row = rows[call];
            EXPECT_EQ(text, row.call);
            EXPECT_EQ(result, row.result);
            EXPECT_EQ(log(), row.log);
            EXPECT_EQ(board.file_get(kFlashSave), hex(row.marker));
            EXPECT_EQ(board.file_get(kSystemLog), systemLog_with(row.message));
            EXPECT_EQ(bytes_of(put), text == "time now" ? unstamped : kRecord);

            const auto failed = good.begin() + static_cast<long>(call);
            Trace expected = Trace(good.begin(), failed) + Trace{text + " -> failed"};
            if (row.after == kClosesAndStops) {
                expected = expected + Trace{"fclose /conf/user.log"};
            }
            if (row.message != nullptr) {
                expected = expected + report_trace(row.message);
            }
            if (row.after == kGoesOn) {
                expected = expected + Trace(failed + 1, good.end());
            } else if (row.after == kSkipsTheMarker) {
                expected = expected + userAppend_calls(2);
            }
            EXPECT_EQ(board.calls, expected);
            EXPECT_EQ(board.console, row.message == nullptr ? "" : std::string(row.message) + "\n");
            ++runs;
        });
    EXPECT_EQ(runs, std::size(rows));
}

TEST_F(UserLog, AppendAfterAStaleHeaderTakesTheSameSlot)
{
    board.fail_call(12);
    ASSERT_EQ(userLog_put(&record), -1);
    EXPECT_EQ(log(), userHeader_bytes(2, 2) + Bytes(32, 'r') + kRecord);
    record.code = 1;
    ASSERT_EQ(userLog_put(&record), 0);
    EXPECT_EQ(log(), userHeader_bytes(3, 3) + Bytes(32, 'r') +
                         hex("C3 63 05 44 C1 C2 C3 C4 01 00 1E 07 D1 D2 D3 D4"));
}

// Locks ----------------------------------------------------------------------------------------

TEST_F(UserLog, EachFileIsLockedWhileItIsUsed)
{
    Trace marker_held;
    Trace log_held;
    board.before_call = [&](const std::string& call) {
        if (!lock_is_free(board, kFlashSave)) {
            marker_held.push_back(call);
        }
        if (!lock_is_free(board, kUserLog)) {
            log_held.push_back(call);
        }
    };
    ASSERT_EQ(userLog_put(&record), 0);
    EXPECT_EQ(marker_held, Trace(kMarkerCalls.begin() + 2, kMarkerCalls.end()));
    const Trace good = userAppend_calls(2);
    EXPECT_EQ(log_held, Trace(good.begin() + 3, good.end()));
    EXPECT_TRUE(lock_is_free(board, kFlashSave));
    EXPECT_TRUE(lock_is_free(board, kUserLog));
}

TEST_F(UserLog, LogIsUnlockedAgainWhenAFailureIsReported)
{
    int reports = 0;
    board.before_call = [&](const std::string& call) {
        if (call.rfind("puts ", 0) == 0) {
            EXPECT_TRUE(lock_is_free(board, kUserLog)) << call;
            ++reports;
        }
    };
    for (size_t call = 7; call <= 12; ++call) {
        board.restart();
        board.fail_call(call);
        userLog_put(&record);
    }
    EXPECT_EQ(reports, 6);
}

} // namespace
