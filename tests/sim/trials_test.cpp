// The trials of all commands, made by a program on a simulated unit: what comes of each is what comes
// of it through the calls that the board answers.
#include <sys/wait.h>

#include <cstdio>
#include <ctime>

#include "board/share.h"
#include "device/device_trials.h"
#include "sim/call_text.h"
#include "sim/state_text.h"
#include "sim/units.h"

namespace
{

const size_t kEvery = kLoopShare.roundsPerRound; // trial: a program takes long to start

// Calls of a unit as the board writes them down.
std::string call_text(const UnitCall& call)
{
    const bool clock = call.head.device == static_cast<uint8_t>(UnitDevice::kRtc);
    const std::string path = clock ? "/dev/rtc" : "/dev/fpga";
    const EntryHead& head = call.head;
    switch (head.kind) {
    case EntryKind::kOpen:
        return "open " + path + " " + openFlags_text(static_cast<int>(head.argument));
    case EntryKind::kClose:
        return "close " + path;
    case EntryKind::kRequest: {
        const RequestForm* form =
            clock ? rtcRequestForm_find(head.request) : requestForm_find(head.request);
        return form == nullptr ? "unknown"
                               : (clock ? "ioctl /dev/rtc " : "ioctl ") +
                                     request_text(*form, call.before.data(), head.argument);
    }
    default:
        return "";
    }
}

// The first item that only one of two units has, but for the system clock's, which is the board's own
// matter; empty: none.
std::string other_item(const std::string& one, const std::string& other)
{
    std::istringstream ones(one);
    std::istringstream others(other);
    std::string line;
    std::string other_line;
    bool ended = false;
    do {
        if (line != other_line && !starts(line, "clock.")) {
            return line + " / " + other_line;
        }
        line.clear();
        other_line.clear();
        const bool more = !std::getline(ones, line).fail();
        ended = std::getline(others, other_line).fail() && !more;
    } while (!ended);
    return "";
}

class UnitTrials : public DeviceTrials
{
  protected:
    ~UnitTrials() override
    {
        if (program_.process > 0) {
            program_end(program_);
        }
        unit_close(unit_);
    }

    void unit_put(const Trial& trial)
    {
        UnitState state;
        deviceState_put(trial.state, state.fpga, state.rtc);
        state.fpga.results = trial.answers;
        unitState_put(unit_, state);
        for (const char* part : {"/conf", "/tmp"}) {
            std::filesystem::remove_all(files() + part);
            std::filesystem::create_directory(files() + part);
        }
        for (const auto& [path, bytes] : trial.files) {
            bytes_put(files() + path, bytes);
        }
    }

    // The program's answer: the result, then record and guards.
    std::string answer_get(const Trial& trial)
    {
        if (command_ != trial.command) {
            if (program_.process > 0) {
                EXPECT_EQ(program_end(program_), 0);
            }
            program_ = program_start(on_unit(folder_, {COMMANDS_PROGRAM}));
            command_ = trial.command;
        }
        char number[16];
        snprintf(number, sizeof number, "%X ", trial.command);
        const std::string line = number + pairs(trial.record) + "\n";
        EXPECT_EQ(write(program_.to, line.data(), line.size()), static_cast<ssize_t>(line.size()));
        std::string answer;
        char bytes[4096];
        for (ssize_t count = 1; count > 0 && (answer.empty() || answer.back() != '\n');) {
            count = read(program_.from, bytes, sizeof bytes);
            answer.append(bytes, count > 0 ? static_cast<size_t>(count) : 0);
        }
        return answer;
    }

    // What the unit was asked since it was put into its state; all of it by the program.
    Trace seen_get()
    {
        const std::vector<UnitCall> calls = unitCalls_get(unit_, next_);
        const auto mark = std::find_if(calls.rbegin(), calls.rend(), [](const UnitCall& call) {
            return call.head.kind == EntryKind::kMark;
        });
        next_ = calls.empty() ? next_ : calls.back().head.sequence + 1;
        Trace seen;
        for (auto call = mark.base(); call != calls.end(); ++call) {
            EXPECT_EQ(call->head.process, program_.process);
            EXPECT_STREQ(call->head.program, "commands_progra"); // as much as an entry keeps
            if (call->head.kind != EntryKind::kSet) {            // the system clock
                seen.push_back(call_text(*call));
            }
        }
        return seen;
    }

    // The names in /conf and /tmp with what is in them; of logs, which tell the time, the size.
    static std::map<std::string, std::string> files_get(const std::string& conf,
                                                        const std::string& tmp)
    {
        std::map<std::string, std::string> files;
        for (const std::string& folder : {conf, tmp}) {
            for (const auto& entry : std::filesystem::directory_iterator(folder)) {
                const std::string name =
                    (folder == conf ? "/conf/" : "/tmp/") + entry.path().filename().string();
                const auto* file = std::find_if(std::begin(kFiles), std::end(kFiles),
                                                [&](const TrialFile& f) { return f.path == name; });
                const bool tells_time = file != std::end(kFiles) && file->tells_time;
                const std::string bytes = bytes_get(entry.path());
                files[name] = tells_time ? std::to_string(bytes.size()) : pairs(bytes);
            }
        }
        return files;
    }

    // The time that the command has set, if it has, is the unit's.
    void expect_time()
    {
        for (const std::string& call : board.calls) {
            if (starts(call, "stime ")) {
                ++times_set_;
                const long set = std::stol(call.substr(6));
                const long difference = unit_clockDifference(unit_) / 1000000000;
                if (set < 0 || set >= 8277292036) {
                    EXPECT_EQ(difference, 0); // no kernel takes it
                    continue;
                }
                EXPECT_LE(labs(time(nullptr) + difference - set), 5);
            }
        }
    }

    void expect_alike(const Trial& trial, const Outcome& outcome)
    {
        unit_put(trial);
        const std::string guard = pairs(Bytes(kGuard, kGuardByte));
        EXPECT_EQ(answer_get(trial), std::to_string(outcome.result) + " " + guard +
                                         pairs(outcome.record) + guard + "\n");
        EXPECT_EQ(seen_get(), outcome.seen);
        EXPECT_EQ(files_get(files() + "/conf", files() + "/tmp"),
                  files_get(board.host("/conf/config").parent_path(),
                            board.host("/tmp/serialno").parent_path()));
        UnitState left;
        left.fpga = board.fpga;
        left.rtc = board.rtc;
        EXPECT_EQ(other_item(unitText_get(unit_), stateText_make(left, 0)), "");
        expect_time();
        requests_ += outcome.seen.size();
    }

    size_t requests_ = 0;
    size_t times_set_ = 0;

  private:
    [[nodiscard]] std::string files() const { return folder_ + "/files"; }

    Units units_;
    std::string folder_ = units_.make("unit");
    Unit* unit_ = unit_reopen(folder_);
    uint64_t next_ = 0; // call that was not looked at
    Started program_;
    uint32_t command_ = UINT32_MAX; // of this program
};

TEST_F(UnitTrials, AreAlikeThroughMaintsimAndThroughTheBoard)
{
    size_t count = 0;
    size_t made = 0;
    walk([&](const Trial& trial, const Outcome& outcome) {
        if (count++ % kEvery == 0 && !HasFailure()) {
            SCOPED_TRACE(text(trial, outcome));
            expect_alike(trial, outcome);
            ++made;
        }
    });
    EXPECT_EQ(count, 931U);
    EXPECT_EQ(made, (count + kEvery - 1) / kEvery);
    EXPECT_GT(requests_, 3 * made);
    EXPECT_TRUE(times_set_ > 0 || kEvery > 1);
}

} // namespace
