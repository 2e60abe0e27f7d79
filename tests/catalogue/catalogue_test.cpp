// The catalogue against what the public headers and the facts of the commands say: it has every
// command, once, in its group; every byte of a record has its field; texts can be shown.
#include "catalogue/catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "device/command_facts.h"

namespace
{

struct ListedGroup {
    std::string title;
    std::string header;
    std::vector<std::string> commands;
};

// The groups as maint/device_commands.h has them.
std::vector<ListedGroup> listed_groups()
{
    std::vector<ListedGroup> groups;
    std::ifstream header(MAINT_SOURCE_DIR "/include/maint/device_commands.h");
    for (std::string line; std::getline(header, line);) {
        static const std::string kPath = ": maint/commands/";
        char name[64];
        uint32_t number = 0;
        const size_t path = line.find(kPath);
        if (path != std::string::npos) {
            const size_t title = line.find("/* ") + 3;
            const size_t file = path + kPath.size();
            groups.push_back({line.substr(title, path - title),
                              line.substr(file, line.find(".h", file) - file),
                              {}});
        } else if (sscanf(line.c_str(), " %63[A-Z0-9_] = 0x%4X", name, &number) == 2) {
            groups.back().commands.push_back(name);
        }
    }
    return groups;
}

// What a member of a record is.
struct Member {
    unsigned offset;
    unsigned bytes;
    std::string type; // of an element
};

struct Layout {
    unsigned bytes;
    std::map<std::string, Member> members;
};

// Records as they are laid out, with the members of those within them: "set0.valid".
std::map<std::string, Layout> record_layouts()
{
    std::map<std::string, Layout> layouts;
    layouts["uint8_t"] = {1, {{"value", {0, 1, "uint8_t"}}}};
    layouts["uint16_t"] = {2, {{"value", {0, 2, "uint16_t"}}}};
    layouts["uint32_t"] = {4, {{"value", {0, 4, "uint32_t"}}}};
    // the driver's own: a caller may give this much
    layouts["const void"] = {496, {{"bytes", {0, 496, "uint8_t"}}}};
    std::ifstream table(MAINT_SOURCE_DIR "/tests/package/record_layout.txt");
    for (std::string line; std::getline(table, line);) {
        char record[64];
        char name[64];
        char type[64];
        unsigned offset = 0;
        unsigned bytes = 0;
        if (sscanf(line.c_str(), "record %63s %u", record, &bytes) == 2) {
            layouts[record].bytes = bytes;
        } else if (sscanf(line.c_str(), "field %63s %63s %u %u %63s", record, name, &offset, &bytes,
                          type) == 5) {
            const std::string element = std::string(type).substr(0, strcspn(type, "["));
            const auto within = layouts.find(element);
            if (within == layouts.end() || element.find("int") != std::string::npos) {
                layouts[record].members[name] = {offset, bytes, element};
                continue;
            }
            for (const auto& [part, member] : within->second.members) {
                layouts[record].members[std::string(name) + "." + part] = {
                    offset + member.offset, member.bytes, member.type};
            }
        }
    }
    return layouts;
}

// The record of each command: what its typed call takes. Nothing: no argument.
std::map<std::string, std::string> command_records()
{
    std::map<std::string, std::string> records;
    for (const ListedGroup& group : listed_groups()) {
        std::ifstream header(MAINT_SOURCE_DIR "/include/maint/commands/" + group.header + ".h");
        for (std::string line; std::getline(header, line);) {
            char command[64];
            char function[64];
            char record[64];
            if (sscanf(line.c_str(), "MAINT_COMMAND(%63[^,], %63[^,], %63[^)])", command, function,
                       record) == 3) {
                records[command] = record;
            } else if (sscanf(line.c_str(), "MAINT_COMMAND_IN(%63[^,], %63[^,], %63[^)])", command,
                              function, record) == 3) {
                records[command] = strcmp(record, "void") == 0 ? "const void" : record;
            } else if (sscanf(line.c_str(), "MAINT_COMMAND_ALONE(%63[^,],", command) == 1) {
                records[command] = "";
            }
        }
    }
    return records;
}

// Bytes of records that no command reads and none fills with anything but zeros, and bytes that one
// command alone does not use; typed in by hand.
const std::map<std::string, std::set<std::pair<unsigned, unsigned>>> kSpare{
    // record or command, first byte, how many
    {"LedStateRecord", {{22, 2}}},
    {"UnitStatusFlag", {{6, 2}}},
    {"PortBit", {{0, 4}}},
    {"PhyStatus", {{9, 3}}},
    {"PhyConfig", {{9, 3}}},
    {"MtuLimit", {{0, 2}}},
    {"IdEntry", {{3, 1}}},
    {"AddressEntry", {{12, 16}}},
    {"AddressSet", {{8, 4}, {28, 4}}},
    {"AddressPair", {{14, 2}}},
    {"PrefixMap", {{1, 1}, {9, 1}}},
    {"RuleEntry", {{38, 458}}},
    {"RegisterValue", {{6, 2}}},
    {"Reg15AFields", {{1, 1}}},
    {"Reg15CPair", {{1, 1}}},
    {"RegE0Block", {{10, 2}, {22, 2}}},
    {"Reg16ABlock", {{5, 1}}},
    {"Reg16EBlock", {{1, 1}}},
    {"RD_CONTROL_BITS", {{2, 1}}},
    {"RD_ID_ENTRY", {{2, 1}, {4, 2}}},
};

bool is_joined(Kind kind)
{
    return kind == Kind::kIpv4 || kind == Kind::kAddress6 || kind == Kind::kText ||
           kind == Kind::kBytes;
}

template <class Check> void for_every_command(const Check& check)
{
    for (const CommandGroup* group : catalogue_get()) {
        for (const CommandDescription& command : group->commands) {
            SCOPED_TRACE(command.name);
            check(command);
        }
    }
}

TEST(Catalogue, HasTheGroupsAndCommandsOfThePublicHeaderInItsOrder)
{
    const std::vector<ListedGroup> listed = listed_groups();
    const auto groups = catalogue_get();
    ASSERT_EQ(groups.size(), listed.size());
    size_t commands = 0;
    for (size_t i = 0; i < listed.size(); ++i) {
        EXPECT_EQ(groups[i]->title, listed[i].title);
        EXPECT_EQ(groups[i]->name, listed[i].header);
        std::vector<std::string> names;
        for (const CommandDescription& command : groups[i]->commands) {
            names.emplace_back(command.name);
        }
        EXPECT_EQ(names, listed[i].commands);
        commands += names.size();
    }
    EXPECT_EQ(commands, commandFacts_get().size());
}

TEST(Catalogue, FindsEveryCommandOfTheFactsByItsNumber)
{
    for (const CommandFacts& facts : commandFacts_get()) {
        const CommandDescription* command = command_find(facts.number);
        ASSERT_NE(command, nullptr) << facts.name;
        EXPECT_STREQ(command->name, facts.name);
        EXPECT_EQ(command->code, facts.number) << facts.name;
        EXPECT_GE(command->record, facts.record) << facts.name;
    }
    EXPECT_EQ(command_find(0x007D), nullptr);
    EXPECT_EQ(command_find(0xFFFFFFFF), nullptr);
}

TEST(Catalogue, GivesEveryResultOfTheFactsAMeaning)
{
    for_every_command([](const CommandDescription& command) {
        std::set<int32_t> results;
        std::set<std::string> meanings;
        for (const ResultMeaning& result : command.results()) {
            results.insert(result.result);
            ASSERT_NE(result.meaning, nullptr);
            meanings.insert(result.meaning);
        }
        EXPECT_EQ(results, commandFacts_find(command.code)->results);
        EXPECT_EQ(meanings.size(), command.results().size()) << "two results mean the same";
    });
}

TEST(Catalogue, HasAFieldForEveryByteOfARecordButItsSpareOnes)
{
    const auto records = command_records();
    const auto layouts = record_layouts();
    for_every_command([&](const CommandDescription& command) {
        const std::string record = records.at(command.name);
        if (record.empty()) {
            EXPECT_EQ(command.record, 0U);
            return;
        }
        const Layout& layout = layouts.at(record);
        EXPECT_EQ(command.record, layout.bytes);
        std::vector<int> covered(layout.bytes, 0);
        for (const Field& field : command.fields()) {
            SCOPED_TRACE(field.name);
            ASSERT_EQ(layout.members.count(field.name), 1U);
            const Member& member = layout.members.at(field.name);
            EXPECT_EQ(field.offset, member.offset);
            const unsigned bytes = unsigned{field.width} * field.count;
            EXPECT_LE(bytes, member.bytes);
            const unsigned element = member.type == "uint32_t"   ? 4
                                     : member.type == "uint16_t" ? 2
                                                                 : 1;
            EXPECT_TRUE(is_joined(field.kind) ? element == 1 : field.width == element);
            for (unsigned byte = 0; byte < bytes; ++byte) {
                ++covered.at(field.offset + byte);
            }
        }
        for (const std::string& of : {record, std::string(command.name)}) {
            const auto spare = kSpare.find(of);
            if (spare == kSpare.end()) {
                continue;
            }
            for (const auto& [first, count] : spare->second) {
                for (unsigned byte = first; byte < first + count; ++byte) {
                    ++covered.at(byte);
                }
            }
        }
        EXPECT_EQ(covered, std::vector<int>(layout.bytes, 1));
    });
}

TEST(Catalogue, WritesFieldsInAWayThatFitsThem)
{
    for_every_command([](const CommandDescription& command) {
        for (const Field& field : command.fields()) {
            SCOPED_TRACE(field.name);
            EXPECT_EQ(field.kind == Kind::kCode, !field.codes().empty());
            EXPECT_EQ(field.role == Role::kIndex, field.sweep.step != 0);
            EXPECT_TRUE(field.kind != Kind::kIpv4 || field.width == 4);
            EXPECT_TRUE(field.kind != Kind::kAddress6 || field.width == 6);
            EXPECT_TRUE(field.kind != Kind::kFlag || (field.least == 0 && field.most == 1));
            EXPECT_EQ(is_joined(field.kind), field.most == 0);
            std::set<std::string> names;
            std::set<uint32_t> codes;
            for (const CodeName& code : field.codes()) {
                names.insert(code.name);
                codes.insert(code.code);
                EXPECT_LE(code.code, field.most);
                EXPECT_EQ(strcspn(code.name, " ,=[]#"), strlen(code.name)) << "is no word";
                EXPECT_TRUE(isdigit(code.name[0]) == 0 || code.name == std::to_string(code.code))
                    << code.name << " would be taken for a number";
            }
            EXPECT_EQ(names.size(), field.codes().size());
            EXPECT_EQ(codes.size(), field.codes().size());
        }
    });
}

// Setters share the fields of their reports, and nothing sweeps them.
TEST(Catalogue, SweepsOnlyWhatAReportReadsAndAllOfIt)
{
    size_t sweeps = 0;
    for_every_command([&](const CommandDescription& command) {
        for (size_t i = 0; i < command.fields().size(); ++i) {
            const Field& field = command.fields()[i];
            if (field.sweep.step == 0 || strncmp(command.name, "RD_", 3) != 0) {
                continue;
            }
            ++sweeps;
            EXPECT_TRUE(field_in(command.in, i)) << field.name;
            EXPECT_EQ((field.sweep.last - field.sweep.first) % field.sweep.step, 0) << field.name;
            const bool is_narrow = field.least != 0 || field.most < UINT8_MAX;
            if (!field.codes().empty()) {
                EXPECT_EQ(field.sweep.first, field.codes().front().code) << field.name;
                EXPECT_EQ(field.sweep.last, field.codes().back().code) << field.name;
                EXPECT_EQ(field.sweep.step, 1) << field.name;
            } else if (is_narrow) { // of others what is known
                EXPECT_EQ(field.sweep.first, field.least) << field.name;
                EXPECT_EQ(field.sweep.last, field.most) << field.name;
                EXPECT_EQ(field.sweep.step, 1) << field.name;
            }
        }
    });
    EXPECT_GT(sweeps, 20U);
}

// A text in lines of 80 columns: nothing that breaks a line, no end that cannot be seen, no word
// that takes half a line; short enough to be read.
void expect_shown(const char* text, size_t longest, bool sentence)
{
    ASSERT_NE(text, nullptr);
    SCOPED_TRACE(text);
    const std::string whole = text;
    ASSERT_FALSE(whole.empty());
    EXPECT_LE(whole.size(), longest);
    EXPECT_EQ(whole.find("  "), std::string::npos);
    EXPECT_NE(whole.front(), ' ');
    EXPECT_NE(whole.back(), ' ');
    EXPECT_EQ(whole.back() == '.', sentence);
    size_t word = 0;
    for (const char c : whole) {
        EXPECT_TRUE(c >= ' ' && c <= '~') << "character " << int{c};
        word = c == ' ' ? 0 : word + 1;
        EXPECT_LE(word, 32U);
    }
}

TEST(Catalogue, HasTextsThatCanBeShown)
{
    std::map<std::string, std::string> summaries;
    size_t bytes = 0;
    std::set<const void*> counted;
    const auto count = [&](const char* text) {
        if (counted.insert(text).second) {
            bytes += strlen(text) + 1;
        }
    };
    for_every_command([&](const CommandDescription& command) {
        expect_shown(command.summary, 60, false);
        const auto [other, isNew] = summaries.emplace(command.summary, command.name);
        EXPECT_TRUE(isNew) << "the same as of " << other->second;
        count(command.summary);
        for (const char* text : {command.stays, command.note}) {
            if (text != nullptr) {
                expect_shown(text, 440, true);
                count(text);
            }
        }
        for (const ResultMeaning& result : command.results()) {
            expect_shown(result.meaning, 160, false);
            count(result.meaning);
        }
        for (const Field& field : command.fields()) {
            if (field.note[0] != '\0') {
                expect_shown(field.note, 120, false);
                count(field.note);
            }
            if (unit_name(field.unit)[0] != '\0') {
                expect_shown(unit_name(field.unit), 8, false);
            }
        }
    });
    EXPECT_LT(bytes, 25000U);
}

// What a part of a command's name is in a summary: one of these texts, without case. A part that is
// not here, nor a register or a bit, is there itself. Typed in by hand.
const std::map<std::string, std::vector<const char*>> kSpoken{
    {"INFO", {"identity"}},
    {"ID", {"identity", "identifier"}},
    {"MAP", {"units that", "map"}},
    {"UNIT", {"unit"}},
    {"STATUS", {"status", "marked", "marks", "link"}},
    {"FLAG", {"flag", "whether", "bit 0", "bits 2", "enable"}},
    {"ENTRY", {"entry", "identity that the hardware"}},
    {"RANGED", {"1 to 29"}},
    {"CONFIG", {"autonegotiation"}},
    {"LIMIT", {"limit", "accepts", "demands"}},
    {"MTU", {"data size"}},
    {"DATASIZE", {"mtu_datasize"}},
    {"LED", {"panel", "led inhibit"}},
    {"LEDSTATE", {"front panel"}},
    {"A", {"indicator a", "word a", "control word a"}},
    {"B", {"indicator b", "word b", "control word b"}},
    {"C", {"indicator c"}},
    {"D", {"indicator d"}},
    {"E", {"indicator e"}},
    {"RESTORE", {"ends", "brings back"}},
    {"BITS", {"two flags", "three flags"}},
    {"DEVICE", {"device", "own identifier", "bitmap e"}},
    {"28", {"28"}},
    {"29", {"own identifier"}},
    {"3B", {"bitmap e"}},
    {"04", {"whole device word 03"}},
    {"03", {"03, which"}},
    {"36", {"35"}},
    {"WORD", {"word", "own identifier", "bitmap e"}},
    {"VLANT", {"vlan"}},
    {"INDEXED", {"indexed"}},
    {"ADDR", {"address"}},
    {"ADDRSET", {"four addresses"}},
    {"VALUE", {"as they stand", "bits 0 to 6", "bits 0 to 7", "hardware holds"}},
    {"COPY", {"the same as"}},
    {"TABLE", {"tables"}},
    {"DELETE", {"clears"}},
    {"FLAGSET", {"flags of a switch port"}},
    {"1", {"1", "6b79"}},
    {"2", {"2", "6b78"}},
    {"LATCHED", {"latched"}},
    {"DA", {"0x00da"}},
    {"REG", {"register"}},
    {"SELECT", {"one of bits"}},
    {"FIELDS", {"two fields"}},
    {"PAIR", {"pair", "0x015e"}},
    {"NIBBLE", {"as a number"}},
    {"BLOCK", {"block", "parts of registers"}},
    {"BYTES", {"bytes", "registers 0x0110 and 0x0112"}},
    {"ALT", {"second set"}},
    {"LARGE", {"160"}},
    {"SMALL", {"68"}},
    {"STATISTICS", {"totals"}},
    {"SAVE", {"adds"}},
    {"CLEAR", {"clears", "to 0"}},
    {"EXT", {"extended"}},
    {"RTC", {"clock"}},
    {"TIME", {"date", "system clock"}},
    {"SET", {"sets"}},
    {"WORDS", {"words"}},
    {"ENABLE", {"enable", "enables"}},
};

// Names of several parts that mean one thing.
std::vector<std::string> name_parts(std::string name)
{
    static constexpr std::pair<const char*, const char*> kJoined[] = {
        {"ADDR_SET", "ADDRSET"}, {"FLAG_SET", "FLAGSET"}, {"LED_STATE", "LEDSTATE"}};
    for (const auto& [parts, one] : kJoined) {
        if (const size_t at = name.find(parts); at != std::string::npos) {
            name.replace(at, strlen(parts), one);
        }
    }
    std::vector<std::string> parts;
    for (size_t from = 3; from < name.size();) { // behind RD_, WR_
        const size_t end = std::min(name.find('_', from), name.size());
        parts.push_back(name.substr(from, end - from));
        from = end + 1;
    }
    return parts;
}

std::string lower(std::string text)
{
    for (char& c : text) {
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    }
    return text;
}

// The first part of a name that a summary does not speak of; empty: it fits.
std::string unspoken(const std::string& name, const std::string& summary)
{
    const std::string text = lower(summary) + " ";
    static const std::set<std::string> kVerbs{"sets",     "writes",  "clears", "turns", "enables",
                                              "loads",    "sends",   "starts", "adds",  "ends",
                                              "replaces", "changes", "shows"};
    if ((kVerbs.count(text.substr(0, text.find(' '))) != 0) != (name[0] == 'W')) {
        return name.substr(0, 3);
    }
    for (const std::string& part : name_parts(name)) {
        std::vector<std::string> any{lower(part)};
        unsigned number = 0;
        int used = 0;
        if (sscanf(part.c_str(), "REG%x%n", &number, &used) == 1 && part.size() == size_t(used)) {
            any = {lower(hex_number(number))};
        } else if (sscanf(part.c_str(), "BIT%u", &number) == 1) {
            any = {"bit " + std::to_string(number) + " "};
        } else if (sscanf(part.c_str(), "PREFIX%u", &number) == 1) {
            any = {"set " + std::to_string(number)};
        } else if (const auto spoken = kSpoken.find(part); spoken != kSpoken.end()) {
            any.assign(spoken->second.begin(), spoken->second.end());
        }
        if (std::none_of(any.begin(), any.end(), [&](const std::string& word) {
                return text.find(word) != std::string::npos;
            })) {
            return part;
        }
    }
    return "";
}

TEST(Catalogue, HasSummariesThatFitTheNames)
{
    std::vector<const CommandDescription*> commands;
    for_every_command([&](const CommandDescription& command) {
        EXPECT_EQ(unspoken(command.name, command.summary), "") << command.summary;
        commands.push_back(&command);
    });
    // And no two could have changed places.
    for (const CommandDescription* one : commands) {
        for (const CommandDescription* other : commands) {
            EXPECT_TRUE(one == other || unspoken(one->name, other->summary) != "" ||
                        unspoken(other->name, one->summary) != "")
                << one->name << " and " << other->name;
        }
    }
}

TEST(Catalogue, NamesEveryPlace)
{
    std::set<std::string> names;
    for (unsigned place = 0; place < kPlaceCount; ++place) {
        names.insert(place_name(static_cast<Place>(place)));
    }
    EXPECT_EQ(names.size(), kPlaceCount);
}

// Lines that a failure adds to the system log change nothing for the next command.
TEST(Catalogue, SaysWhatStaysOfEveryCommandThatChangesMoreThanTheSystemLog)
{
    for_every_command([](const CommandDescription& command) {
        const bool changes = (command.changes & ~place_bit(Place::kSystemLog)) != 0;
        EXPECT_EQ(command.stays != nullptr, changes);
    });
}

} // namespace
