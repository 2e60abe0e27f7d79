// A unit is read by maintctl, and another one made of what it wrote: that one is read the same, and
// answers every reading command the same.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <random>
#include <sstream>

#include "board/share.h"
#include "catalogue/catalogue.h"
#include "sim/device_state.h"
#include "sim/programs.h"
#include "sim/state_text.h"

namespace
{

const uint32_t kStates = share_of(20);
constexpr uint32_t kRounds = 4; // of all commands on a state

class Draw
{
  public:
    explicit Draw(uint32_t seed) : engine_(seed) {}
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(engine_()) % limit; }

  private:
    std::mt19937 engine_;
};

UnitState state_draw(uint32_t number, uint32_t own_id)
{
    UnitState state;
    deviceState_put(number, state.fpga, state.rtc);
    state.fpga.words[0x6B29] = own_id;
    Draw draw(number);
    if (number % 2 == 1) {
        // Requests that fail, and one that answers with a number.
        uint32_t request = 0x6B02 + draw.below(30);
        while (requestForm_find(request) == nullptr) {
            ++request;
        }
        state.failures[request] = {1, 0, EBUSY};
        state.failures[0x6B5E] = {1, 0, EIO};
        state.fpga.results[0x6B28] = static_cast<int>(1 + draw.below(9));
    }
    return state;
}

void unit_make(const TestFolder& top, const std::string& folder, const UnitState& state)
{
    EXPECT_EQ(program_run(top, on_unit(folder, {"new", "--blank"})).status, 0);
    Words words{"set"};
    std::istringstream items(stateText_make(state));
    for (std::string item; std::getline(items, item);) {
        words.push_back(item);
    }
    const Ended set = program_run(top, on_unit(folder, words));
    EXPECT_EQ(set.status, 0) << set.err;
}

void files_put(const std::string& files, uint32_t number)
{
    Draw draw(number);
    bytes_put(files + "/conf/config", "OWN_VPN_ID='" + std::to_string(draw.below(40)) +
                                          "'\nWAN_TYPE='" + std::to_string(draw.below(7)) +
                                          "'\nPPPOEOFF_VPN_ID05='7'\nSELECT_MTU='PPPOE_MTU'\n"
                                          "PPPOE_MTU='1454'\n");
    if (number % 3 != 0) {
        bytes_put(files + "/tmp/serialno", "A0000" + std::to_string(1000 + draw.below(9000)));
    }
    if (number % 4 != 0) {
        bytes_put(files + "/tmp/mtu_datasize",
                  std::string(20, static_cast<char>(1 + draw.below(99))));
    }
}

// As the snapshot itself asks: whatever changes nothing.
bool only_reads(const CommandDescription& command)
{
    return strncmp(command.name, "RD_", 3) == 0 && !command.clears && command.changes == 0;
}

std::string record_draw(Draw& draw, const CommandDescription& command, uint32_t own_id)
{
    std::string record(command.record, '\0');
    for (char& byte : record) {
        byte = static_cast<char>(draw.below(256));
    }
    // Of a table, an entry that the snapshot asked for.
    for (const Field& field : command.fields()) {
        if (field.role == Role::kIndex || field.role == Role::kOwnId) {
            const Sweep& sweep = field.sweep;
            const uint32_t number =
                field.role == Role::kOwnId
                    ? own_id
                    : sweep.first +
                          sweep.step * draw.below((sweep.last - sweep.first) / sweep.step + 1U);
            memcpy(record.data() + field.offset, &number, field.width);
        }
    }
    return record;
}

std::string line_of(const CommandDescription& command, const std::string& record)
{
    char text[8];
    snprintf(text, sizeof text, "%X ", command.code);
    std::string line = text;
    for (const char byte : record) {
        snprintf(text, sizeof text, "%02X", static_cast<unsigned char>(byte));
        line += text;
    }
    return line + "\n";
}

// A program that runs commands on a unit.
class Commands
{
  public:
    explicit Commands(const std::string& folder)
        : program_(program_start(on_unit(folder, {COMMANDS_PROGRAM})))
    {
    }
    ~Commands() { EXPECT_EQ(program_end(program_), 0); }
    Commands(const Commands&) = delete;
    Commands& operator=(const Commands&) = delete;

    std::string ask(const std::string& line)
    {
        EXPECT_EQ(write(program_.to, line.data(), line.size()), static_cast<ssize_t>(line.size()));
        std::string answer;
        char bytes[4096];
        for (ssize_t count = 1; count > 0 && (answer.empty() || answer.back() != '\n');) {
            count = read(program_.from, bytes, sizeof bytes);
            answer.append(bytes, count > 0 ? static_cast<size_t>(count) : 0);
        }
        return answer;
    }

  private:
    Started program_;
};

size_t expect_answersAlike(const std::string& one, const std::string& other, uint32_t number,
                           uint32_t own_id)
{
    Commands first(one);
    Commands second(other);
    Draw draw(number);
    size_t good = 0;
    for (uint32_t round = 0; round < kRounds; ++round) {
        for (const CommandGroup* group : catalogue_get()) {
            for (const CommandDescription& command : group->commands) {
                if (only_reads(command)) {
                    const std::string line = line_of(command, record_draw(draw, command, own_id));
                    const std::string answer = first.ask(line);
                    EXPECT_EQ(second.ask(line), answer) << command.name << " " << line;
                    good += !answer.empty() && answer[0] != '-' ? 1 : 0;
                }
            }
        }
    }
    return good;
}

TEST(SnapshotRound, MakesAUnitThatIsReadTheSameAndAnswersTheSame)
{
    const TestFolder top;
    std::string last;
    size_t answered = 0;
    for (uint32_t number = 0; number < kStates && !testing::Test::HasFailure(); ++number) {
        SCOPED_TRACE(number);
        const uint32_t own_id = 1 + number % 30;
        const std::string name = std::to_string(number);
        const std::string one = top.place("one" + name);
        unit_make(top, one, state_draw(number, own_id));
        files_put(one + "/files", number);
        const Ended first = program_run(top, on_unit(one, {MAINTCTL, "snapshot"}));
        EXPECT_EQ(first.status, 0);
        EXPECT_EQ(first.err, "");
        EXPECT_GT(first.out.size(), 100000U);
        EXPECT_NE(first.out, last); // of another unit
        last = first.out;
        const std::string file = top.place("snapshot" + name);
        bytes_put(file, first.out);
        const std::string other = top.place("other" + name);
        const Ended made = program_run(top, on_unit(other, {"new", "--snapshot", file}));
        EXPECT_EQ(made.status, 0);
        EXPECT_EQ(made.out + made.err, "");
        const Ended second = program_run(top, on_unit(other, {MAINTCTL, "snapshot"}));
        EXPECT_EQ(second.status, 0);
        EXPECT_EQ(second.err, "");
        const auto differs =
            std::mismatch(first.out.begin(), first.out.end(), second.out.begin(), second.out.end());
        const auto at = static_cast<size_t>(differs.first - first.out.begin());
        EXPECT_TRUE(differs.first == first.out.end() && differs.second == second.out.end())
            << first.out.substr(at - std::min<size_t>(at, 300), 400) << "\n"
            << second.out.substr(at - std::min<size_t>(at, 300), 400);
        answered += expect_answersAlike(one, other, number, own_id);
    }
    EXPECT_GT(answered, size_t{kStates} * kRounds * 50);
}

} // namespace
