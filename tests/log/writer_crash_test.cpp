// The log writers, killed before each of their system calls in turn, and the append after that.
//
// The record reaches the file before the header that counts it. A kill between the two leaves the
// record in place under the old header: the next append overwrites it. In a full ring the record
// has by then replaced the oldest one, and shows in its place until that append.
#include <gtest/gtest.h>

#include "board/traced_child.h"
#include "log/log_bytes.h"
#include "maint/system_log.h"
#include "maint/user_log.h"

namespace
{

using enum Often;

// A log file by its parts: what stands in the file while the parts are combined as named.
struct Append {
    Bytes header; // before
    Bytes header_after;
    Bytes header_afterNext; // one more
    Bytes records;          // before
    size_t slot;            // of the record
    Bytes record;
    Bytes next_record;
};

using WriterCrash = TracedTest;

Bytes records_with(const Append& append, size_t slot, const Bytes& record)
{
    Bytes records = append.records;
    records.resize(std::max(records.size(), (slot + 1) * record.size()));
    return records.replace(slot * record.size(), record.size(), record);
}

constexpr const char* kPreviousLog = "the previous log";
constexpr const char* kUncounted = "the record under the old header";
constexpr const char* kAppended = "the record appended";
constexpr const char* kInItsSlot = "the next record in its slot";
constexpr const char* kBehindIt = "the next record behind it";

Bytes log_in(const Append& append, const std::string& state)
{
    if (state == kPreviousLog) {
        return append.header + append.records;
    }
    if (state == kUncounted) {
        return append.header + records_with(append, append.slot, append.record);
    }
    if (state == kAppended) {
        return append.header_after + records_with(append, append.slot, append.record);
    }
    if (state == kInItsSlot) {
        return append.header_after + records_with(append, append.slot, append.next_record);
    }
    Append appended = append;
    appended.records = records_with(append, append.slot, append.record);
    return append.header_afterNext + records_with(appended, append.slot + 1, append.next_record);
}

// Killed before                    leaves      and after the next append
constexpr KillPoint kSystemLogPoints[] = {
    {"open /conf/system.log", kOnce, kPreviousLog, kInItsSlot},
    {"lock /conf/system.log", kOnce, kPreviousLog, kInItsSlot},
    {"read /conf/system.log", kEach, kPreviousLog, kInItsSlot},
    {"write /conf/system.log", kOnce, kPreviousLog, kInItsSlot},
    {"write /conf/system.log", kOnce, kUncounted, kInItsSlot},
    {"close /conf/system.log", kOnce, kAppended, kBehindIt},
    {"exit", kOnce, kAppended, kBehindIt},
};

void systemLog_sweep(Board& board, const Append& append)
{
    kill_sweep(
        board, [&] { board.file_put(kSystemLog, append.header + append.records); },
        [] { return systemLog_put("killed") == 0 ? 0 : 1; }, kSystemLogPoints,
        [&](const KillPoint& point) {
            EXPECT_TRUE(board.file_get(kSystemLog) == log_in(append, point.left))
                << "not left: " << point.left;
            EXPECT_EQ(systemLog_put("next"), 0);
            EXPECT_TRUE(board.file_get(kSystemLog) == log_in(append, point.then))
                << "not then: " << point.then;
        });
}

TEST_F(WriterCrash, SystemLogInAPartlyFilledRing)
{
    systemLog_sweep(board, {.header = systemHeader_bytes(3, 3),
                            .header_after = systemHeader_bytes(4, 4),
                            .header_afterNext = systemHeader_bytes(5, 5),
                            .records = records_make(3, "old"),
                            .slot = 3,
                            .record = record_line("killed"),
                            .next_record = record_line("next")});
}

TEST_F(WriterCrash, SystemLogInTheFirstSlotOfAFullRing)
{
    systemLog_sweep(board, {.header = systemHeader_bytes(1000, 1000),
                            .header_after = systemHeader_bytes(1000, 1),
                            .header_afterNext = systemHeader_bytes(1000, 2),
                            .records = records_make(1000, "old"),
                            .slot = 0,
                            .record = record_line("killed"),
                            .next_record = record_line("next")});
}

TEST_F(WriterCrash, SystemLogInTheMiddleOfAFullRing)
{
    systemLog_sweep(board, {.header = systemHeader_bytes(1000, 612),
                            .header_after = systemHeader_bytes(1000, 613),
                            .header_afterNext = systemHeader_bytes(1000, 614),
                            .records = records_make(1000, "old"),
                            .slot = 612,
                            .record = record_line("killed"),
                            .next_record = record_line("next")});
}

// The user log. A kill in the marker's write leaves the marker without its byte, whether it was
// raised before or not, until the next call.
struct UserLogPoint {
    KillPoint log;
    const char* marker; // null: as it was
};
constexpr UserLogPoint kUserLogPoints[] = {
    {{"create /tmp/flashsave", kOnce, kPreviousLog, kInItsSlot}, nullptr},
    {{"lock /tmp/flashsave", kOnce, kPreviousLog, kInItsSlot}, ""},
    {{"write /tmp/flashsave", kOnce, kPreviousLog, kInItsSlot}, ""},
    {{"close /tmp/flashsave", kOnce, kPreviousLog, kInItsSlot}, "\x01"},
    {{"open /conf/user.log", kOnce, kPreviousLog, kInItsSlot}, "\x01"},
    {{"lock /conf/user.log", kOnce, kPreviousLog, kInItsSlot}, "\x01"},
    {{"read /conf/user.log", kEach, kPreviousLog, kInItsSlot}, "\x01"},
    {{"write /conf/user.log", kOnce, kPreviousLog, kInItsSlot}, "\x01"},
    {{"write /conf/user.log", kOnce, kUncounted, kInItsSlot}, "\x01"},
    {{"close /conf/user.log", kOnce, kAppended, kBehindIt}, "\x01"},
    {{"exit", kOnce, kAppended, kBehindIt}, "\x01"},
};

// Code 17 with the values 30 and 0; the time is 2006-03-01 09:05:07.
const Bytes kKilledRecord = hex("C3 63 05 44 4B 49 4C 4C 11 00 1E 00 45 44 20 20");
const Bytes kNextRecord = hex("C3 63 05 44 4E 45 58 54 11 00 1E 00 20 20 20 20");

int32_t userRecord_put(const Bytes& bytes)
{
    UserLogRecord record;
    memcpy(&record, bytes.data(), sizeof record);
    record.time = 0;
    return userLog_put(&record);
}

void userLog_sweep(Board& board, const Append& append, bool raised)
{
    std::vector<KillPoint> points;
    for (const UserLogPoint& point : kUserLogPoints) {
        points.push_back(point.log);
    }
    kill_sweep(
        board,
        [&] {
            board.file_put(kUserLog, append.header + append.records);
            board.file_remove(kFlashSave);
            if (raised) {
                board.file_put(kFlashSave, "\x01");
            }
        },
        [] { return userRecord_put(kKilledRecord) == 0 ? 0 : 1; }, points,
        [&](const KillPoint& point) {
            const char* marker = kUserLogPoints[&point - points.data()].marker;
            if (marker != nullptr || raised) {
                EXPECT_EQ(board.file_get(kFlashSave), marker != nullptr ? marker : "\x01");
            } else {
                EXPECT_FALSE(board.file_exists(kFlashSave));
            }
            EXPECT_TRUE(board.file_get(kUserLog) == log_in(append, point.left))
                << "not left: " << point.left;

            EXPECT_EQ(userRecord_put(kNextRecord), 0);
            EXPECT_EQ(board.file_get(kFlashSave), "\x01");
            EXPECT_TRUE(board.file_get(kUserLog) == log_in(append, point.then))
                << "not then: " << point.then;
        });
}

TEST_F(WriterCrash, UserLogInAPartlyFilledRing)
{
    userLog_sweep(board,
                  {.header = userHeader_bytes(3, 3),
                   .header_after = userHeader_bytes(4, 4),
                   .header_afterNext = userHeader_bytes(5, 5),
                   .records = Bytes(3 * 16L, 'o'),
                   .slot = 3,
                   .record = kKilledRecord,
                   .next_record = kNextRecord},
                  false);
}

TEST_F(WriterCrash, UserLogInTheFirstSlotOfAFullRing)
{
    userLog_sweep(board,
                  {.header = userHeader_bytes(1000, 1000),
                   .header_after = userHeader_bytes(1000, 1),
                   .header_afterNext = userHeader_bytes(1000, 2),
                   .records = Bytes(1000 * 16L, 'o'),
                   .slot = 0,
                   .record = kKilledRecord,
                   .next_record = kNextRecord},
                  true);
}

} // namespace
