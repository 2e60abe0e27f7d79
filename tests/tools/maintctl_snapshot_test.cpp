// Everything that can be read, as lines of JSON.
#include <cstring>

#include "board/share.h"
#include "catalogue/catalogue.h"
#include "maint/device_commands.h"
#include "sim/device_state.h"
#include "tools/json_value.h"
#include "tools/maintctl/maintctl.h"
#include "tools/maintctl_unit_fixture.h"

namespace
{

struct Snapshot {
    Shown shown;
    std::vector<JsonValue> lines;
};

Snapshot snapshot_get()
{
    Snapshot snapshot{verb_run(snapshot_make), {}};
    for (const std::string& line : lines_of(snapshot.shown.out)) {
        snapshot.lines.push_back(json_parse(line));
    }
    return snapshot;
}

// The lines that have this member.
std::vector<JsonValue> lines_with(const Snapshot& snapshot, const std::string& member)
{
    std::vector<JsonValue> lines;
    for (const JsonValue& line : snapshot.lines) {
        if (line.has(member)) {
            lines.push_back(line);
        }
    }
    return lines;
}

std::string pairs_of(const std::string& digits)
{
    std::string pairs;
    for (size_t i = 0; i < digits.size(); i += 2) {
        pairs += " " + digits.substr(i, 2);
    }
    return pairs;
}

// The answers in order, as the board's texts of the requests, with what the driver got.
Trace asked_of(const Snapshot& snapshot)
{
    Trace answers;
    for (const JsonValue& line : lines_with(snapshot, "command")) {
        for (const JsonValue& answer : line["answers"].items) {
            answers.push_back(
                std::string(answer["device"].text == "/dev/rtc" ? "ioctl /dev/rtc " : "ioctl ") +
                answer["request"].text.substr(2) +
                pairs_of(answer.has("before") ? answer["before"].text : ""));
        }
    }
    return answers;
}

std::string lowercase(std::string text)
{
    for (char& character : text) {
        character = static_cast<char>(tolower(character));
    }
    return text;
}

class Snapshots : public MaintctlUnit
{
  protected:
    void TearDown() override
    {
        // Two commands leave the device open when they fail, as the library says.
        while (!board.descriptors().empty()) {
            board.closing(board.descriptors().begin()->first);
        }
    }

    // The requests that the board was asked since restart(), in lower case.
    [[nodiscard]] Trace requests() const
    {
        Trace requests;
        for (const std::string& call : board.calls) {
            // A PHY without an agreement is asked again when the device is closed: nobody answers.
            if (call.rfind("ioctl ", 0) == 0 && call.rfind("ioctl (closed)", 0) != 0) {
                requests.push_back(lowercase(call));
            }
        }
        return requests;
    }
};

// The model makes an empty entry of one that is only read.
template <class Table> void expect_same(const Table& after, const Table& before)
{
    for (const auto& [key, value] : after) {
        const auto entry = before.find(key);
        EXPECT_EQ(value, entry != before.end() ? entry->second : typename Table::mapped_type());
    }
    for (const auto& [key, value] : before) {
        EXPECT_EQ(after.count(key), 1U);
    }
}

// A field's number in a record's digits.
uint32_t number_in(const std::string& digits, const Field& field)
{
    uint32_t number = 0;
    for (unsigned n = 0; n < field.width; ++n) {
        const unsigned long byte =
            std::stoul(digits.substr(2U * (field.offset + n), 2), nullptr, 16);
        number |= static_cast<uint32_t>(byte) << 8U * n;
    }
    return number;
}

// The values that an index field is asked for.
std::vector<uint32_t> sweep_of(const Field& field)
{
    std::vector<uint32_t> values;
    for (uint32_t value = field.sweep.first; value <= field.sweep.last; value += field.sweep.step) {
        values.push_back(value);
    }
    return values;
}

TEST_F(Snapshots, HasEveryCommandAndIndex)
{
    const Snapshot snapshot = snapshot_get();
    EXPECT_EQ(snapshot.shown.status, 0);
    EXPECT_EQ(snapshot.shown.err, "");
    std::map<std::string, std::set<std::vector<int64_t>>> asked;
    size_t count = 0;
    for (const JsonValue& line : lines_with(snapshot, "command")) {
        const CommandDescription* command =
            command_find(static_cast<uint32_t>(line["code"].number));
        ASSERT_NE(command, nullptr);
        EXPECT_EQ(line["command"].text, command->name);
        EXPECT_EQ(line["record"].text.size(), 2U * command->record);
        ASSERT_EQ(line["asked"].text.size(), 2U * command->record);
        std::vector<int64_t> indexes;
        for (const Field& field : command->fields()) {
            if (field.role == Role::kIndex) {
                indexes.push_back(number_in(line["asked"].text, field));
            } else if (field.role == Role::kOwnId) {
                EXPECT_EQ(number_in(line["asked"].text, field), 3U);
            }
        }
        EXPECT_TRUE(asked[command->name].insert(indexes).second) << command->name;
        ++count;
    }
    EXPECT_GT(count, 1000U);
    size_t left_out = 0;
    for (const CommandGroup* group : catalogue_get()) {
        for (const CommandDescription& command : group->commands) {
            const bool reads = strncmp(command.name, "RD_", 3) == 0;
            const Places logs = place_bit(Place::kSystemLog);
            if (!reads || command.clears || (command.changes & ~logs) != 0) {
                EXPECT_EQ(asked.count(command.name), 0U) << command.name;
                left_out += reads ? 1 : 0;
                continue;
            }
            std::set<std::vector<int64_t>> expected{{}};
            for (const Field& field : command.fields()) {
                if (field.role == Role::kIndex) {
                    std::set<std::vector<int64_t>> longer;
                    for (const std::vector<int64_t>& before : expected) {
                        for (const uint32_t value : sweep_of(field)) {
                            std::vector<int64_t> indexes = before;
                            indexes.push_back(value);
                            longer.insert(indexes);
                        }
                    }
                    expected = longer;
                }
            }
            EXPECT_EQ(asked[command.name], expected) << command.name;
        }
    }
    EXPECT_EQ(left_out, 4U); // what latches, locks or restarts what it reads
    EXPECT_EQ(asked["RD_PHY_REGISTER"].size(), 7U * 32);
    EXPECT_EQ(asked["RD_LED_STATE"].size(), 30U);
}

TEST_F(Snapshots, BeginsAndEnds)
{
    const Snapshot snapshot = snapshot_get();
    const std::vector<std::string> lines = lines_of(snapshot.shown.out);
    EXPECT_EQ(lines.front(), R"({"snapshot":1,"program":"maintctl","version":"1.0.0","own_id":3})");
    EXPECT_EQ(lines[1], R"({"file":"/tmp/serialno","bytes":"414231323334353637"})");
    EXPECT_EQ(lines[2],
              R"({"file":"/tmp/mtu_datasize","bytes":"dc05ae057805c20594055e05d405a60570050900"})");
    EXPECT_EQ(lines[3], R"({"config":{"LAN_MTU":"1454","SELECT_MTU":"LAN_MTU","IPSEC_ENABLE":"3",)"
                        R"("OWN_VPN_ID":"7","PPPOEOFF_VPN_ID03":"103","PPPOEOFF_VPN_ID05":"105",)"
                        R"("PPPOEOFF_VPN_ID09":"0"}})");
    std::set<std::string> unknown;
    for (const JsonValue& one : snapshot.lines.back()["unknown"].items) {
        EXPECT_NE(one["why"].text, "");
        unknown.insert(one.has("command") ? one["command"].text : one["state"].text);
    }
    for (const char* name : {"RD_COUNTER", "RD_COUNTER_ALT", "RD_REG_DA_LATCHED", "RD_REG16A_BLOCK",
                             "WR_KEY_BYTES", "what has another index"}) {
        EXPECT_EQ(unknown.count(name), 1U) << name;
    }
    EXPECT_EQ(unknown.count("RD_REGISTER"), 0U);
}

// What the board was asked, all of it, in that order, and what the device left in each record.
TEST_F(Snapshots, HasTheDevicesAnswers)
{
    deviceState_put(11, board.fpga, board.rtc);
    Trace left;
    board.fpga.answered = [&](uint32_t request, const char* record) {
        char name[16];
        snprintf(name, sizeof name, "0x%04X", request);
        left.push_back(name + hex_pairs(Bytes(record, requestForm_find(request)->size)));
    };
    board.restart();
    const Snapshot snapshot = snapshot_get();
    Trace asked = requests();
    ASSERT_GT(asked.size(), 2000U);
    EXPECT_GT(board.call_count(), 5000U);
    asked.erase(asked.begin()); // the own identifier, for the first line
    Trace told = asked_of(snapshot);
    for (std::string& text : told) {
        text = lowercase(text);
    }
    EXPECT_EQ(told, asked);

    std::set<std::string> records;
    for (const std::string& text : left) {
        records.insert(text.substr(0, 6));
    }
    Trace told_left;
    for (const JsonValue& line : lines_with(snapshot, "command")) {
        for (const JsonValue& answer : line["answers"].items) {
            if (records.count(answer["request"].text) != 0) {
                std::string bytes = pairs_of(answer["after"].text);
                for (char& character : bytes) {
                    character = static_cast<char>(toupper(character));
                }
                told_left.push_back(answer["request"].text + bytes);
            }
        }
    }
    EXPECT_EQ(told_left, left);
}

// A driver that overwrites the record leaves no doubt about what was asked.
TEST_F(Snapshots, HasTheRecordThatWasAsked)
{
    board.fpga.answered = [](uint32_t request, char* record) {
        if (request == 0x6B60) { // the entry's address, and its value
            memset(record, 0xEE, requestForm_find(request)->size);
        }
    };
    std::set<std::string> asked;
    for (const JsonValue& line : lines_with(snapshot_get(), "command")) {
        if (line["command"].text == "RD_PORT_ENTRY") {
            asked.insert(line["asked"].text);
        }
    }
    EXPECT_GE(asked.size(), 256U);
    EXPECT_EQ(asked.count("1f00000007000000"), 1U); // port 31, index 7
}

TEST_F(Snapshots, HasFailuresOfBothRuns)
{
    board.fpga.results[0x6B01] = -1;
    const Snapshot snapshot = snapshot_get();
    EXPECT_EQ(snapshot.shown.status, 0); // the unit answered
    const JsonValue info = lines_with(snapshot, "command").at(0);
    EXPECT_EQ(info["command"].text, "RD_DEVICE_INFO");
    EXPECT_EQ(info["result"].number, -2);
    EXPECT_EQ(info["error"].text, "the device's answer cannot be read");
    ASSERT_EQ(info["answers"].items.size(), 2U);
    EXPECT_EQ(info["answers"].items[1]["result"].number, -1);
    EXPECT_EQ(info["answers"].items[1]["errno"].type, JsonValue::kNumber);
    EXPECT_FALSE(lines_with(snapshot, "command").at(1)["answers"].items.at(0).has("errno"));
}

TEST_F(Snapshots, WithoutTheOwnIdentifier)
{
    board.fpga.results[0x6B29] = -1;
    const Snapshot snapshot = snapshot_get();
    EXPECT_EQ(snapshot.lines.at(0)["own_id"].type, JsonValue::kNull);
    size_t refused = 0;
    for (const JsonValue& line : lines_with(snapshot, "command")) {
        if (line["command"].text == "RD_LED_STATE") {
            EXPECT_EQ(line["result"].number, -5);
            ++refused;
        }
    }
    EXPECT_EQ(refused, 30U);
    EXPECT_EQ(snapshot.shown.status, 0);
}

TEST_F(Snapshots, WithoutAnything)
{
    board.fpga_present = false;
    board.rtc_present = false;
    for (const char* path : {kSerial, kConfig, kDatasize}) {
        board.file_remove(path);
    }
    const Snapshot snapshot = snapshot_get();
    EXPECT_EQ(snapshot.shown.status, 1);
    for (const JsonValue& file : lines_with(snapshot, "file")) {
        EXPECT_EQ(file["error"].text, "cannot be opened");
    }
    EXPECT_EQ(lines_with(snapshot, "file").size(), 3U);
    board.rtc_present = true; // the clock alone is no unit, and its failure not the first
    board.rtc.result = -1;
    EXPECT_EQ(verb_run(snapshot_make).status, 1);
    EXPECT_FALSE(board.file_exists("/conf/system.log"));
}

// Keys that hide one another are written where a look-up finds the same again.
TEST_F(Snapshots, TellsTheConfigurationsNumbersAlone)
{
    const auto config = [&](const Bytes& text) {
        board.file_put(kConfig, text);
        return lines_of(verb_run(snapshot_make).out).at(3);
    };
    EXPECT_EQ(config("ADMIN='secret'\nOWN_VPN_ID='12geheim'\n[\xB5\xF2\xC5\xC0ID#1]\n"
                     "IPSEC_ENABLE='3'\n"),
              R"({"config":{"OWN_VPN_ID":"12"}})");
    EXPECT_EQ(config("SELECT_MTU='ADMIN'\nADMIN='secret'\nWAN_TYPE=''\n"),
              R"({"config":{"ADMIN":"0","SELECT_MTU":"ADMIN","WAN_TYPE":""}})");
    EXPECT_EQ(config("WAN_TYPE='1'\nWAN_TYPE_MTU='1400'\nSELECT_MTU='WAN_TYPE_MTU'\n"),
              R"({"config":{"SELECT_MTU":"WAN_TYPE_MTU","WAN_TYPE":"1","WAN_TYPE_MTU":"1400"}})");
    EXPECT_EQ(config("WAN='9'\nWAN_TYPE='1'\nSELECT_MTU='WAN'\n"),
              R"({"config":{"WAN":"9","SELECT_MTU":"WAN","WAN_TYPE":"1"}})");
    EXPECT_EQ(config("IPSEC_ENABLE='3'\nSELECT_MTU='IPSEC_ENABLE'\n"),
              R"({"config":{"SELECT_MTU":"IPSEC_ENABLE","IPSEC_ENABLE":"3"}})");
    EXPECT_EQ(config(""), R"({"config":{}})");
}

// Nothing is changed and nothing is waited for; the same unit gives the same bytes.
TEST_F(Snapshots, ChangesNothing)
{
    board.file_put("/conf/system.log", "log");
    for (uint32_t number = 0; number < share_of(20); ++number) {
        deviceState_put(number, board.fpga, board.rtc);
        const FpgaModel before = board.fpga;
        const RtcModel clock = board.rtc;
        const Bytes config = board.file_get(kConfig);
        board.restart();
        const Snapshot first = snapshot_get();
        for (const std::string& call : board.calls) {
            EXPECT_NE(call.rfind("sleep", 0), 0U) << call;
            EXPECT_NE(call.rfind("usleep", 0), 0U) << call;
            EXPECT_NE(call.rfind("unlink", 0), 0U) << call;
            EXPECT_NE(call.rfind("fwrite", 0), 0U) << call;
        }
        expect_same(board.fpga.words, before.words);
        expect_same(board.fpga.registers, before.registers);
        expect_same(board.fpga.phys, before.phys);
        expect_same(board.fpga.switch_ports, before.switch_ports);
        expect_same(board.fpga.addresses, before.addresses);
        expect_same(board.fpga.address_sets, before.address_sets);
        expect_same(board.fpga.id_entries, before.id_entries);
        expect_same(board.fpga.address_pairs, before.address_pairs);
        expect_same(board.fpga.address_table, before.address_table);
        expect_same(board.fpga.port_entries, before.port_entries);
        expect_same(board.fpga.rules, before.rules);
        expect_same(board.fpga.indexed_words, before.indexed_words);
        expect_same(board.fpga.counters, before.counters);
        expect_same(board.fpga.counters_alt, before.counters_alt);
        expect_same(board.fpga.written, before.written);
        EXPECT_EQ(board.rtc.time, clock.time);
        EXPECT_EQ(board.rtc.status, clock.status);
        EXPECT_EQ(board.file_get(kConfig), config);
        EXPECT_EQ(board.file_get("/conf/system.log"), "log");
        EXPECT_EQ(board.console, "");
        EXPECT_EQ(first.shown.out, verb_run(snapshot_make).out);
    }
}

TEST_F(Snapshots, EndsWithAnOutputThatIsFull)
{
    char room[100];
    FILE* out = fmemopen(room, sizeof room, "w");
    FILE* err = tmpfile();
    setvbuf(out, nullptr, _IONBF, 0);
    char program[] = "maintctl";
    char verb[] = "snapshot";
    char* const words[] = {program, verb, nullptr};
    board.restart();
    EXPECT_EQ(maintctl_run(2, words, out, err), 74);
    EXPECT_LT(board.call_count(), 1000U); // a whole snapshot makes several times as many
    fclose(out);
    fclose(err);
}

} // namespace
