// Whole programs on one unit and on many: together, killed at any moment, and each on its own.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <random>

#include "board/share.h"
#include "sim/units.h"

namespace
{

constexpr uint32_t kPairRead = 0x6B67;
constexpr uint32_t kPairWrite = 0x6B68;
constexpr uint32_t kRegisterRead = 0x6B42;
constexpr uint32_t kRegisterWrite = 0x6B43;

// The number that user_program makes of its answers.
class AnswerSum
{
  public:
    void add(const std::string& bytes, size_t from, size_t size)
    {
        for (const char byte : bytes.substr(from, size)) {
            sum_ = (sum_ ^ static_cast<uint8_t>(byte)) * 0x100000001B3;
        }
    }
    [[nodiscard]] std::string text() const
    {
        char text[32];
        snprintf(text, sizeof text, "%016llX\n", static_cast<unsigned long long>(sum_));
        return text;
    }

  private:
    uint64_t sum_ = 0xCBF29CE484222325;
};

// What a journal tells of programs, call by call.
class Journey
{
  public:
    // Looks at the calls that came since the last look; false: some of them are gone.
    void look(Unit* unit)
    {
        for (const UnitCall& call : unitCalls_get(unit, next_)) {
            ASSERT_EQ(call.head.sequence, next_); // none missing, none twice
            ++next_;
            take(call);
        }
    }

    [[nodiscard]] uint32_t commands(pid_t process) const
    {
        const auto found = of_.find(process);
        return found == of_.end() ? 0 : found->second.closes;
    }
    [[nodiscard]] std::string sum(pid_t process) const { return of_.at(process).sum.text(); }
    [[nodiscard]] uint64_t next() const { return next_; }

  private:
    struct OfProcess {
        uint32_t closes = 0;
        uint32_t writes = 0; // of its own pair
        AnswerSum sum;
    };

    void take(const UnitCall& call)
    {
        OfProcess& own = of_[call.head.process];
        if (call.head.kind == EntryKind::kClose) {
            ++own.closes;
        }
        if (call.head.kind != EntryKind::kRequest) {
            return;
        }
        EXPECT_EQ(call.head.result, 0);
        const std::string& record = call.before;
        const std::string& answer = call.after.empty() ? call.before : call.after;
        uint32_t key = 0;
        memcpy(&key, record.data(), sizeof key);
        switch (call.head.request) {
        case kPairWrite:
            if (key < 63) {
                uint32_t number = 0;
                memcpy(&number, record.data() + 8, sizeof number);
                ASSERT_EQ(number, 4 * own.writes); // each one's in its order
                ++own.writes;
            }
            pairs_[key] = record.substr(8, 10);
            break;
        case kPairRead:
            // In this one order, a read's answer is the last write.
            ASSERT_EQ(answer.substr(8, 10), pairs_[key]);
            own.sum.add(answer, 8, 10);
            break;
        case kRegisterWrite:
            word_ = record.substr(4, 2);
            break;
        case kRegisterRead:
            ASSERT_EQ(answer.substr(4, 2), word_);
            own.sum.add(answer, 4, 2);
            break;
        default:
            FAIL() << std::hex << call.head.request;
        }
    }

    uint64_t next_ = 2; // 1: the test's own
    std::map<pid_t, OfProcess> of_;
    std::map<uint32_t, std::string> pairs_{{63, std::string(10, '\0')}};
    std::string word_ = std::string(2, '\0');
};

TEST(Programs, OnOneUnitHaveEachItsAnswersAndOneOrder)
{
    constexpr uint32_t kPrograms = 8;
    const uint32_t kCommands = share_of(10000);
    constexpr uint32_t kPart = 200;  // user_program waits before each
    constexpr uint32_t kCalls = 3;   // of a command
    constexpr time_t kPatience = 20; // seconds without a call
    const Units units;
    const std::string folder = units.make("unit");
    Unit* unit = unit_reopen(folder);
    struct Program {
        Started started;
        uint32_t allowed = 0;
    };
    std::vector<Program> programs;
    for (uint32_t p = 0; p < kPrograms; ++p) {
        programs.push_back({program_start(
            on_unit(folder, {USER_PROGRAM, "many", std::to_string(p), std::to_string(kCommands)}),
            units.place("out" + std::to_string(p)))});
    }
    Journey journey;
    const uint64_t kAll = uint64_t{kPrograms} * kCommands * kCalls;
    time_t limit = time(nullptr) + kPatience;
    while (journey.next() < kAll + 2 && time(nullptr) < limit && !testing::Test::HasFailure()) {
        const uint64_t before = journey.next();
        for (Program& program : programs) {
            // Not too far ahead: a unit keeps so many calls and no more.
            while (program.allowed < kCommands &&
                   program.allowed < journey.commands(program.started.process) + 2 * kPart) {
                ASSERT_EQ(write(program.started.to, "x", 1), 1);
                program.allowed += kPart;
            }
        }
        journey.look(unit);
        limit = journey.next() > before ? time(nullptr) + kPatience : limit;
        usleep(5000);
    }
    EXPECT_EQ(journey.next(), kAll + 2);
    for (uint32_t p = 0; p < kPrograms; ++p) {
        EXPECT_EQ(program_end(programs[p].started), 0);
        EXPECT_EQ(journey.commands(programs[p].started.process), kCommands);
        // What the program was told is what the journal says.
        EXPECT_EQ(bytes_get(units.place("out" + std::to_string(p))),
                  journey.sum(programs[p].started.process));
    }
    unit_close(unit);
}

// A program that writes to a pair of its own, and what it tells of it.
struct Writer {
    Started started;
    std::string path;
    std::atomic<uint32_t>* told; // what it found at first, and its last answered write
};

constexpr uint32_t kNothing = UINT32_MAX;

Writer writer_make(const Units& units, uint32_t index)
{
    const std::string path = units.place("told" + std::to_string(index));
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    EXPECT_EQ(ftruncate(file, 8), 0);
    void* memory = mmap(nullptr, 8, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    return {{}, path, static_cast<std::atomic<uint32_t>*>(memory)};
}

void writer_start(Writer& writer, const std::string& folder, uint32_t index)
{
    writer.told[0] = kNothing;
    writer.told[1] = kNothing;
    writer.started =
        program_start(on_unit(folder, {USER_PROGRAM, "write", std::to_string(index), writer.path}));
}

TEST(Programs, KilledAtAnyMomentLeaveTheUnitWhole)
{
    const uint32_t kKills = share_of(500);
    constexpr uint32_t kWriters = 3;
    const Units units;
    const std::string folder = units.make("unit");
    Unit* watcher = unit_reopen(folder); // lives all along
    std::vector<Writer> writers;
    uint32_t before[kWriters] = {}; // what is answered of each at least; one more may be there
    for (uint32_t w = 0; w < kWriters; ++w) {
        writers.push_back(writer_make(units, w));
        writer_start(writers[w], folder, w);
    }
    std::mt19937 engine(20061101);
    uint32_t seen = 0;
    for (uint32_t kills = 0; kills < kKills; ++kills) {
        const uint32_t w = static_cast<uint32_t>(engine()) % kWriters;
        Writer& writer = writers[w];
        // At any moment: before it is a program of the unit, in its first look, in the middle; each
        // other time there, however slow the machine is.
        for (int tries = 0; kills % 2 == 0 && tries < 10000 && writer.told[1] == kNothing;
             ++tries) {
            usleep(1000);
        }
        usleep(static_cast<useconds_t>(engine() % 12000));
        ASSERT_EQ(kill(writer.started.process, SIGKILL), 0);
        const int status = program_end(writer.started);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
        const uint32_t found = writer.told[0];
        const uint32_t answered = writer.told[1];
        if (found != kNothing) {
            // The last write may have been served, and its answer not have come.
            ASSERT_GE(found, before[w]);
            ASSERT_LE(found, before[w] + 1);
            ++seen;
        }
        before[w] = answered == kNothing ? before[w] : answered;
        if (kills % 10 == 0) {
            const Ended next =
                program_run(units, on_unit(folder, {USER_PROGRAM, "read", std::to_string(w)}));
            ASSERT_EQ(next.status, 0) << next.err;
            const auto number = static_cast<uint32_t>(std::stoul(next.out));
            ASSERT_GE(number, before[w]);
            ASSERT_LE(number, before[w] + 1);
            before[w] = number;
        }
        writer_start(writer, folder, w);
    }
    // The writers that were left alone until now work, and end by a signal alone.
    for (Writer& writer : writers) {
        const uint32_t answered = writer.told[1];
        for (int tries = 0; tries < 500 && writer.told[1] == answered; ++tries) {
            usleep(10000);
        }
        EXPECT_NE(writer.told[1], answered);
        EXPECT_EQ(waitpid(writer.started.process, nullptr, WNOHANG), 0);
        kill(writer.started.process, SIGKILL);
        program_end(writer.started);
        munmap(writer.told, 8);
    }
    Unit* again = unit_reopen(folder);
    EXPECT_EQ(unitText_get(again), unitText_get(watcher));
    unit_close(again);
    unit_close(watcher);
    EXPECT_GT(seen, kKills / 4);
    EXPECT_GT(before[0] + before[1] + before[2], kKills * 4);
}

TEST(Programs, OnAHundredUnitsDoNotMeet)
{
    const uint32_t kUnits = share_of(100);
    const Units units;
    std::vector<std::string> folders;
    std::vector<Started> programs;
    for (uint32_t u = 1; u <= kUnits; ++u) {
        UnitState state;
        state.fpga.words[0x6B29] = u;
        folders.push_back(units.make("unit" + std::to_string(u), state));
    }
    for (uint32_t u = 1; u <= kUnits; ++u) {
        programs.push_back(
            program_start(on_unit(folders[u - 1], {USER_PROGRAM, "own", std::to_string(u)})));
    }
    for (uint32_t u = 1; u <= kUnits; ++u) {
        Started& program = programs[u - 1];
        EXPECT_EQ(program_end(program), 0) << u;
        const std::string& folder = folders[u - 1];
        char serial[16];
        snprintf(serial, sizeof serial, "A%08u", u);
        EXPECT_EQ(bytes_get(folder + "/files/tmp/serialno"), serial);
        Unit* unit = unit_reopen(folder);
        const std::vector<UnitCall> calls = unitCalls_get(unit);
        EXPECT_EQ(calls.size(), 1U + 20 * 3 * 3);
        for (size_t i = 1; i < calls.size(); ++i) {
            EXPECT_EQ(calls[i].head.process, program.process);
        }
        unit_close(unit);
    }
}

} // namespace
