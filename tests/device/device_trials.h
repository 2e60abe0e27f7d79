// Trials of all commands that can be made again on a real device: each with the devices' state,
// the files and the record that it starts from, and what came of it here. The board's client
// repeats them through the kernel; both texts must be alike.
//
//   trial 0042                      the command
//   state 17                        of the devices, by number
//   answers 6B03 -1                 what a request returns, if not 0
//   file /conf/config 31 4F574E..   a file: size and bytes, or "none"
//   record 0000                     the caller's record
//   saw open /dev/fpga O_RDONLY|O_NONBLOCK      what the devices saw
//   saw ioctl 6B03 00 00
//   saw close /dev/fpga
//   result 0
//   gives 1200                      the record afterwards
//   left /conf/config 31 4F574E..   the files afterwards; of logs, which tell the time, the size
//                                   an empty line ends the trial
#pragma once

#include <cstdlib>
#include <functional>
#include <map>
#include <random>

#include "device/command_facts.h"
#include "device/device_test.h"
#include "sim/device_state.h"

constexpr size_t kGuard = 8;
constexpr char kGuardByte = '\xA5';

// Files that commands read or change, by how much of them does not depend on the time.
struct TrialFile {
    const char* path;
    bool tells_time;
};

constexpr TrialFile kFiles[] = {
    {"/conf/config", false},        {"/conf/statistics", false},    {"/conf/system.log", true},
    {"/conf/user.log", true},       {"/tmp/Saveing", false},        {"/tmp/flashsave", false},
    {"/tmp/ks8995_nor.dat", false}, {"/tmp/ks8995_pri.dat", false}, {"/tmp/led_rewrite_inh", false},
    {"/tmp/mtu_datasize", false},   {"/tmp/serialno", false},       {"/tmp/vornapppoe.mtu", false},
};

struct Trial {
    uint32_t command;
    uint32_t state;
    Bytes record;
    std::map<uint32_t, int> answers;
    std::map<std::string, Bytes> files;
};

struct Outcome {
    int32_t result;
    Bytes record;
    Trace seen;  // by the devices
    Trace shape; // the same without what records hold
    std::set<std::string> paths;
    Requests requests;
    unsigned sleeps = 0; // seconds
};

inline std::string pairs(const Bytes& bytes)
{
    std::string text;
    for (const char byte : bytes) {
        char pair[4];
        snprintf(pair, sizeof pair, "%02X", static_cast<unsigned char>(byte));
        text += pair;
    }
    return text;
}

inline bool starts(const std::string& text, const char* with)
{
    return text.rfind(with, 0) == 0;
}

class DeviceTrials : public DeviceTest
{
  protected:
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(engine_()) % limit; }

    // Small numbers of one width all along, as most records hold them, some of them alike; or any
    // bytes.
    Bytes record_draw(size_t size)
    {
        const uint32_t width = 1U << below(4); // 1, 2, 4; 8: any bytes
        const uint32_t first = below(9);
        const bool alike = below(2) == 0;
        Bytes record;
        while (record.size() < size) {
            const uint32_t value = width == 8 ? static_cast<uint32_t>(engine_())
                                   : alike    ? first
                                              : below(9);
            record += width == 8 ? le16(value) : le32(value).substr(0, width);
        }
        return record.substr(0, size);
    }

    std::map<std::string, Bytes> files_draw()
    {
        std::map<std::string, Bytes> files{
            {"/conf/config", "OWN_VPN_ID='12'\nWAN_TYPE='5'\n"},
            {"/conf/statistics", Bytes(496, '\x01')},
            {"/conf/system.log", hex("00 00 00 00 00 00 00 00 01 00 00 00")},
            {"/conf/user.log", Bytes(16, '\0')},
            {"/tmp/ks8995_nor.dat", Bytes(128, static_cast<char>(below(256)))},
            {"/tmp/ks8995_pri.dat", Bytes(128, static_cast<char>(below(256)))},
            {"/tmp/mtu_datasize", Bytes(20, '\x02')},
            {"/tmp/serialno", "123456789"}};
        const uint32_t inhibit = below(4);
        if (inhibit != 0) {
            files["/tmp/led_rewrite_inh"] = Bytes(inhibit == 1 ? 43 : 44, '\x01');
        }
        return files;
    }

    Trial trial_draw(uint32_t command, size_t record)
    {
        return {command, below(10000), record_draw(record), {}, files_draw()};
    }

    void board_put(const Trial& trial)
    {
        deviceState_put(trial.state, board.fpga, board.rtc);
        board.fpga.results = trial.answers;
        for (const TrialFile& file : kFiles) {
            const auto content = trial.files.find(file.path);
            if (content == trial.files.end()) {
                board.file_remove(file.path);
            } else {
                board.file_put(file.path, content->second);
            }
        }
        board.restart();
    }

    // The part of the calls that reaches a device.
    static void calls_sort(const Trace& calls, Outcome& outcome)
    {
        for (const std::string& call : calls) {
            const bool clock = call.find("/dev/rtc") != std::string::npos;
            const bool request = starts(call, "ioctl ");
            if (call.find("(closed)") != std::string::npos) {
                continue; // nobody's
            }
            if (request || clock || call.find("/dev/fpga") != std::string::npos) {
                outcome.seen.push_back(call);
                outcome.shape.push_back(request && !clock ? call.substr(0, 10) : call);
            }
            if (request && !clock) {
                outcome.requests.insert(
                    static_cast<uint32_t>(std::stoul(call.substr(6, 4), nullptr, 16)));
            }
            if (starts(call, "sleep ")) {
                outcome.sleeps += static_cast<unsigned>(std::stoul(call.substr(6)));
            }
            for (const TrialFile& file : kFiles) {
                if (call.find(file.path) != std::string::npos) {
                    outcome.paths.insert(file.path);
                }
            }
        }
    }

    // What runs a trial's command on the record behind the pointer.
    using Run = std::function<int32_t(uint32_t command, void* record)>;

    Outcome make(const Trial& trial, const Run& run = Fpga_Register_Set)
    {
        board_put(trial);
        alignas(8) static char memory[kGuard + kRecordMax + kGuard];
        memset(memory, kGuardByte, sizeof memory);
        trial.record.copy(memory + kGuard, trial.record.size());
        Outcome outcome{};
        outcome.result = run(trial.command, memory + kGuard);
        outcome.record.assign(memory + kGuard, trial.record.size());
        calls_sort(board.calls, outcome);
        // Two commands leave the device open when their request fails.
        while (board.open_descriptors() > 0) {
            board.closing(board.descriptors().begin()->first);
        }
        return outcome;
    }

    // Call after make.
    std::string text(const Trial& trial, const Outcome& outcome) const
    {
        std::ostringstream text;
        char number[16];
        snprintf(number, sizeof number, "%04X", trial.command);
        text << "trial " << number << "\nstate " << trial.state << "\n";
        for (const auto& [request, result] : trial.answers) {
            snprintf(number, sizeof number, "%04X", request);
            text << "answers " << number << " " << result << "\n";
        }
        for (const TrialFile& file : kFiles) {
            const auto content = trial.files.find(file.path);
            if (outcome.paths.count(file.path) == 0) {
                continue;
            }
            text << "file " << file.path;
            if (content == trial.files.end()) {
                text << " none\n";
            } else {
                text << " " << content->second.size() << " " << pairs(content->second) << "\n";
            }
        }
        text << "record " << pairs(trial.record) << "\n";
        for (const std::string& call : outcome.seen) {
            text << "saw " << call << "\n";
        }
        text << "result " << outcome.result << "\ngives " << pairs(outcome.record) << "\n";
        for (const TrialFile& file : kFiles) {
            if (outcome.paths.count(file.path) == 0) {
                continue;
            }
            text << "left " << file.path;
            if (!board.file_exists(file.path)) {
                text << " none\n";
            } else {
                const Bytes content = board.file_get(file.path);
                text << " " << content.size() << (file.tells_time ? "" : " " + pairs(content))
                     << "\n";
            }
        }
        text << "\n";
        return text.str();
    }

    // Makes the trials of all commands, in stored order, and hands on each that counts.
    void walk(const std::function<void(const Trial&, const Outcome&)>& keep);

  private:
    std::mt19937 engine_{20061101};
};

// What makes a trial worth its time: another course or another result.
using Kind = std::pair<int32_t, Trace>;

// The trials of one command: every course that draws show, up to a few of them, and then each
// request once refused and once answered with a number.
class CommandTrials
{
  public:
    explicit CommandTrials(const CommandFacts& command) : command_(command) {}

    [[nodiscard]] bool wants_more() const
    {
        constexpr int kDraws = 4000;   // before a command is said to get nowhere
        constexpr int kVainDraws = 40; // after which no more courses are looked for
        const bool complete = succeeded_ && reached_.size() == command_.requests.size();
        return draws_ < kDraws && (!complete || vain_draws_ < kVainDraws);
    }

    // Whether the outcome shows something new.
    bool takes(const Trial& trial, const Outcome& outcome)
    {
        constexpr size_t kCourses = 6;
        ++draws_;
        ++vain_draws_;
        const bool reaches_more = !std::includes(reached_.begin(), reached_.end(),
                                                 outcome.requests.begin(), outcome.requests.end());
        const bool needed = reaches_more || (outcome.result >= 0 && !succeeded_);
        const bool other = courses_.size() < kCourses &&
                           courses_.count({outcome.result, outcome.shape}) == 0 &&
                           sleeps_ + outcome.sleeps <= kSleeps;
        if (!needed && !other) {
            return false;
        }
        vain_draws_ = 0;
        sleeps_ += outcome.sleeps;
        courses_.insert({outcome.result, outcome.shape});
        reached_.insert(outcome.requests.begin(), outcome.requests.end());
        succeeded_ = succeeded_ || outcome.result >= 0;
        for (const uint32_t request : outcome.requests) {
            examples_.emplace(request, trial);
        }
        return true;
    }

    bool takes_answered(int answer, const Outcome& outcome)
    {
        if (answer < 0) {
            EXPECT_EQ(command_.results.count(outcome.result), 1U) << "result " << outcome.result;
        } else if (sleeps_ + outcome.sleeps > kSleeps) {
            return false;
        }
        sleeps_ += outcome.sleeps;
        return true;
    }

    void expect_complete() const
    {
        EXPECT_TRUE(succeeded_);
        EXPECT_EQ(difference_of(command_.requests, reached_), "");
    }

    // For each request a trial that reaches it.
    [[nodiscard]] const std::map<uint32_t, Trial>& examples() const { return examples_; }

  private:
    static constexpr unsigned kSleeps = 8; // seconds that a command's trials may take on a board

    const CommandFacts& command_;
    std::set<Kind> courses_;
    Requests reached_;
    std::map<uint32_t, Trial> examples_;
    bool succeeded_ = false;
    int draws_ = 0;
    int vain_draws_ = 0;
    unsigned sleeps_ = 0;
};

inline void DeviceTrials::walk(const std::function<void(const Trial&, const Outcome&)>& keep)
{
    for (const CommandFacts& command : commandFacts_get()) {
        SCOPED_TRACE(command_name(command.number));
        CommandTrials trials(command);
        while (trials.wants_more()) {
            const Trial trial = trial_draw(command.number, command.record);
            const Outcome outcome = make(trial);
            if (trials.takes(trial, outcome)) {
                keep(trial, outcome);
            }
        }
        trials.expect_complete();
        for (const auto& [request, example] : trials.examples()) {
            for (const int answer : {-1, 3}) {
                Trial trial = example;
                trial.answers = {{request, answer}};
                const Outcome outcome = make(trial);
                if (trials.takes_answered(answer, outcome)) {
                    keep(trial, outcome);
                }
            }
        }
    }
}
