// The command table and the public numbers: each command's place, number and name.
#include "device/dispatch/command_table.h"

#include <cstdio>
#include <fstream>

#include "device/command_facts.h"
#include "device/device_test.h"

namespace
{

class CommandTable : public DeviceTest
{
};

std::set<uint32_t> known_numbers()
{
    std::set<uint32_t> numbers;
    for (const CommandFacts& command : commandFacts_get()) {
        numbers.insert(command.number);
    }
    return numbers;
}

TEST_F(CommandTable, HoldsEveryCommandInStoredOrder)
{
    const auto table = commandTable_get();
    const auto facts = commandFacts_get();
    std::set<uint32_t> numbers;
    for (size_t i = 0; i < table.size(); ++i) {
        numbers.insert(table[i].code);
        if (i < facts.size()) {
            EXPECT_EQ(hex_number(table[i].code), hex_number(facts[i].number))
                << "position " << i << ", " << facts[i].name;
        }
    }
    EXPECT_EQ(difference_of(known_numbers(), numbers), "");
    EXPECT_EQ(table.size(), facts.size());
    EXPECT_EQ(numbers.size(), table.size()) << "a number is used twice";
}

// Every number of the public header has its name, its row, and its facts.
TEST_F(CommandTable, HoldsEveryNumberOfThePublicHeader)
{
    std::ifstream header(MAINT_SOURCE_DIR "/include/maint/device_commands.h");
    std::set<uint32_t> numbers;
    for (std::string line; std::getline(header, line);) {
        char name[64];
        uint32_t number = 0;
        if (sscanf(line.c_str(), " %63[A-Z0-9_] = 0x%4X", name, &number) == 2) {
            numbers.insert(number);
            const CommandFacts* facts = commandFacts_find(number);
            EXPECT_EQ(std::string(facts == nullptr ? "" : facts->name), name) << hex_number(number);
        }
    }
    EXPECT_EQ(difference_of(known_numbers(), numbers), "");
}

TEST_F(CommandTable, GivesEveryNumberItsPublicName)
{
    for (const CommandFacts& command : commandFacts_get()) {
        EXPECT_EQ(hex_number(command.named), hex_number(command.number)) << command.name;
    }
}

// No command is bound to its neighbour's procedure, or is its neighbour's member of the family.
// WR_ADDR_PAIR_COPY alone may share one: it does what WR_ADDR_PAIR does.
TEST_F(CommandTable, GivesEveryCommandAHandlerOfItsOwn)
{
    std::set<std::pair<CommandHandler, Member>> handlers;
    size_t provided = 0;
    for (const DeviceCommand& command : commandTable_get()) {
        EXPECT_NE(command.handler, nullptr) << command_name(command.code);
        if (command.code != WR_ADDR_PAIR_COPY) {
            ++provided;
            handlers.insert({command.handler, command.member});
        }
    }
    EXPECT_EQ(handlers.size(), provided);
}

TEST_F(CommandTable, KnowsNoOtherNumber)
{
    const std::set<uint32_t> known = known_numbers();
    for (const DeviceCommand& command : commandTable_get()) {
        ASSERT_EQ(known.count(command.code), 1U) << hex_number(command.code);
    }
    for (uint32_t number = 0; number <= 0x10000; ++number) {
        if (known.count(number) == 0) {
            ASSERT_EQ(Fpga_Register_Set(number, nullptr), -1) << hex_number(number);
        }
    }
    // The same low half does not make it the command.
    EXPECT_EQ(Fpga_Register_Set(0x80000000U | RD_GROUP_FLAG, nullptr), -1);
    EXPECT_EQ(Fpga_Register_Set(0x00010000U | RD_GROUP_FLAG, nullptr), -1);
    EXPECT_EQ(board.call_count(), 0U);
}

} // namespace
