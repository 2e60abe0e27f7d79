// Several processes at once: the logs are shared by every process of the appliance, and what each
// of them appended must stand in the file as if they had taken turns.
#include <sched.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "log/log_bytes.h"
#include "maint/system_log.h"
#include "maint/user_log.h"

namespace
{

constexpr unsigned kWriters = 8;
constexpr unsigned kCallsBetweenYields = 61; // no multiple of the calls of one append
constexpr unsigned kRing = 1000;

struct Pipe {
    Pipe()
    {
        if (pipe(ends.data()) != 0) {
            perror("pipe");
            abort();
        }
    }
    ~Pipe()
    {
        close(ends[0]);
        give_up();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    [[nodiscard]] bool take() const
    {
        char byte = 0;
        return read(ends[0], &byte, 1) == 1;
    }
    [[nodiscard]] bool give(size_t count) const
    {
        const Bytes bytes(count, '.');
        return write(ends[1], bytes.data(), count) == static_cast<ssize_t>(count);
    }

    // Keeps the reading end only: once every process has, a take no longer waits.
    void give_up()
    {
        if (ends[1] >= 0) {
            close(ends[1]);
            ends[1] = -1;
        }
    }

    std::array<int, 2> ends{};
};

class Concurrency : public BoardTest
{
  protected:
    // Runs `work` in kWriters processes, which all wait until the last of them is there and give
    // way to each other every few calls: at each of them would take minutes on a busy machine. Their
    // work says whether all went well.
    void run_together(const std::function<bool(unsigned writer)>& work)
    {
        Pipe ready;
        Pipe start;
        std::array<pid_t, kWriters> children{};
        for (unsigned writer = 0; writer < kWriters; ++writer) {
            children[writer] = child_start([&, writer] {
                board.before_call = [calls = 0U](const std::string&) mutable {
                    if (++calls % kCallsBetweenYields == 0) {
                        sched_yield();
                    }
                };
                start.give_up();
                alarm(100); // a writer that waits for ever fails the test and is gone
                return ready.give(1) && start.take() && work(writer) ? 0 : 1;
            });
            ASSERT_GT(children[writer], 0);
        }
        ready.give_up();
        for (unsigned writer = 0; writer < kWriters; ++writer) {
            ASSERT_TRUE(ready.take());
        }
        ASSERT_TRUE(start.give(kWriters));
        for (const pid_t child : children) {
            EXPECT_EQ(child_wait(child), 0);
        }
    }
};

// One writer's nth text. It fills the record, so that two torn ones cannot make a good one.
std::string text_of(unsigned writer, unsigned n)
{
    std::string text = "w" + std::to_string(writer) + " " + std::to_string(n) + " ";
    text.resize(79, static_cast<char>('a' + writer));
    return text;
}

// A writer's clock stands still at a second of its own.
time_t clock_of(unsigned writer)
{
    return 1141203900 + static_cast<time_t>(writer);
}

Bytes systemRecord_of(unsigned writer, unsigned n)
{
    return record_line(text_of(writer, n), "2006/03/01 09:05:0" + std::to_string(writer));
}

UserLogRecord user_record(unsigned writer, unsigned n)
{
    const auto low = static_cast<uint8_t>(n);
    const auto high = static_cast<uint8_t>(n >> 8);
    const auto mark = static_cast<uint8_t>(0x10 * writer + 7);
    return {0,
            {low, high, mark, mark},
            static_cast<uint16_t>(1 + writer),
            static_cast<uint8_t>(writer),
            static_cast<uint8_t>(30 - writer),
            {low, high, mark, mark}};
}

Bytes userRecord_of(unsigned writer, unsigned n)
{
    UserLogRecord record = user_record(writer, n);
    record.time = static_cast<uint32_t>(clock_of(writer));
    return bytes_of(record);
}

using RecordOf = std::function<Bytes(unsigned writer, unsigned n)>;

// The records of a ring behind its header, oldest first, are whole records of the writers, each
// writer's in its own order and without a gap up to its last.
void expect_newest(const Bytes& slots, size_t size, unsigned total, const RecordOf& record_of,
                   unsigned per_writer)
{
    const unsigned kept = total < kRing ? total : kRing;
    ASSERT_EQ(slots.size(), kept * size);
    std::map<Bytes, std::pair<unsigned, unsigned>> known;
    for (unsigned writer = 0; writer < kWriters; ++writer) {
        for (unsigned n = 0; n < per_writer; ++n) {
            known[record_of(writer, n)] = {writer, n};
        }
    }
    ASSERT_EQ(known.size(), size_t{kWriters} * per_writer);

    std::array<unsigned, kWriters> next;
    next.fill(per_writer); // nothing seen
    const unsigned oldest = total <= kRing ? 0 : total % kRing;
    for (unsigned i = 0; i < kept; ++i) {
        const unsigned slot = (oldest + i) % kRing;
        const auto found = known.find(slots.substr(slot * size, size));
        ASSERT_NE(found, known.end()) << "torn record in slot " << slot;
        const auto [writer, n] = found->second;
        if (next[writer] != per_writer) {
            ASSERT_EQ(n, next[writer]) << "writer " << writer << ", slot " << slot;
        } else if (total <= kRing) {
            ASSERT_EQ(n, 0U) << "writer " << writer << ", slot " << slot;
        }
        // A writer whose last record was seen is back at per_writer, and must not be seen again.
        ASSERT_EQ(known.erase(found->first), 1U);
        next[writer] = n + 1;
    }
    for (unsigned writer = 0; writer < kWriters; ++writer) {
        EXPECT_EQ(next[writer], per_writer) << "the last of writer " << writer << " is missing";
    }
}

struct Load {
    unsigned per_writer;
    unsigned number, location; // of the header afterwards
};
constexpr Load kLoads[] = {
    {100, 800, 800},   // nothing overwritten
    {125, 1000, 1000}, // just full
    {230, 1000, 840},  // 1840 records: 840 overwritten
    {280, 1000, 240},  // 2240 records: round twice
};

TEST_F(Concurrency, SystemLogTakesWholeRecordsAndLosesNone)
{
    for (const Load& load : kLoads) {
        SCOPED_TRACE(load.per_writer);
        board.file_put(kSystemLog, systemHeader_bytes(0, 0));
        run_together([&](unsigned writer) {
            board.now = clock_of(writer);
            bool good = true;
            for (unsigned n = 0; n < load.per_writer; ++n) {
                good = systemLog_put(text_of(writer, n).c_str()) == 0 && good;
            }
            return good && board.console.empty();
        });
        ASSERT_FALSE(HasFailure());
        const Bytes log = board.file_get(kSystemLog);
        EXPECT_EQ(log.substr(0, 12), systemHeader_bytes(load.number, load.location));
        expect_newest(log.substr(12), 100, kWriters * load.per_writer, systemRecord_of,
                      load.per_writer);
    }
}

TEST_F(Concurrency, UserLogTakesWholeRecordsAndLosesNone)
{
    board.file_put(kSystemLog, systemHeader_bytes(0, 0));
    for (const Load& load : kLoads) {
        SCOPED_TRACE(load.per_writer);
        board.file_put(kUserLog, userHeader_bytes(0, 0));
        run_together([&](unsigned writer) {
            board.now = clock_of(writer);
            bool good = true;
            for (unsigned n = 0; n < load.per_writer; ++n) {
                UserLogRecord record = user_record(writer, n);
                good = userLog_put(&record) == 0 && good;
            }
            return good && board.console.empty();
        });
        ASSERT_FALSE(HasFailure());
        const Bytes log = board.file_get(kUserLog);
        EXPECT_EQ(log.substr(0, 16), userHeader_bytes(load.number, load.location));
        expect_newest(log.substr(16), 16, kWriters * load.per_writer, userRecord_of,
                      load.per_writer);
        EXPECT_EQ(board.file_get(kFlashSave), hex("01"));
    }
    EXPECT_EQ(board.file_get(kSystemLog), systemHeader_bytes(0, 0)) << "no message";
}

// Each round is a good event, a message, and an event that is refused, whose message goes to the
// system log from within the user log's writer.
TEST_F(Concurrency, MessagesAndEventsMixed)
{
    constexpr unsigned kRounds = 60;
    board.file_put(kSystemLog, systemHeader_bytes(0, 0));
    board.file_put(kUserLog, userHeader_bytes(0, 0));
    run_together([&](unsigned writer) {
        board.now = clock_of(writer);
        std::string printed;
        bool good = true;
        for (unsigned n = 0; n < kRounds; ++n) {
            UserLogRecord record = user_record(writer, n);
            good = userLog_put(&record) == 0 && good;
            report_message(LOG_SINK_BOTH, text_of(writer, n).c_str());
            record.code = static_cast<uint16_t>(1000 * (writer + 1) + n);
            good = userLog_put(&record) == -1 && good;
            printed += text_of(writer, n) +
                       "\nuserLog_put : 004 : invalid code(= " + std::to_string(record.code) +
                       ")\n";
        }
        return good && board.console == printed;
    });

    const Bytes user = board.file_get(kUserLog);
    EXPECT_EQ(user.substr(0, 16), userHeader_bytes(480, 480));
    expect_newest(user.substr(16), 16, kWriters * kRounds, userRecord_of, kRounds);

    // A round's message and its refusal count as one writer's records 2n and 2n + 1.
    const Bytes system = board.file_get(kSystemLog);
    EXPECT_EQ(system.substr(0, 12), systemHeader_bytes(960, 960));
    expect_newest(
        system.substr(12), 100, 2 * kWriters * kRounds,
        [](unsigned writer, unsigned n) {
            return n % 2 == 0 ? systemRecord_of(writer, n / 2)
                              : record_line("userLog_put : 004 : invalid code(= " +
                                                std::to_string(1000 * (writer + 1) + n / 2) + ")",
                                            "2006/03/01 09:05:0" + std::to_string(writer));
        },
        2 * kRounds);
    EXPECT_EQ(board.file_get(kFlashSave), hex("01"));
}

} // namespace
