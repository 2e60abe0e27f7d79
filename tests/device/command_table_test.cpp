// The command table: its order, its codes and its handlers.
#include "device/dispatch/command_table.h"

#include <set>

#include "device/device_test.h"

namespace
{

struct Row {
    uint32_t code;
    uint32_t named; // the public constant
    const char* name;
};

#define ROW(code, name)                                                                            \
    {                                                                                              \
        code, name, #name                                                                          \
    }

// The whole table once more, in stored order.
constexpr Row kRows[] = {
    ROW(0x0122, RD_REGISTER),
    ROW(0x0123, WR_REGISTER),
    ROW(0x0000, RD_DEVICE_INFO),
    ROW(0x0002, RD_STATUS_WORD_FLAG),
    ROW(0x0004, RD_STATUS_INPUTS),
    ROW(0x0006, RD_CONTROL_BITS),
    ROW(0x0007, WR_CONTROL_BITS),
    ROW(0x0008, RD_PORT_FLAGS),
    ROW(0x0009, WR_PORT_FLAGS),
    ROW(0x000A, RD_BANDWIDTH),
    ROW(0x000B, WR_BANDWIDTH),
    ROW(0x000C, RD_ENABLE_FLAG),
    ROW(0x000D, WR_ENABLE_FLAG),
    ROW(0x000E, RD_LED_STATE),
    ROW(0x0011, WR_LED_A),
    ROW(0x0015, WR_LED_B),
    ROW(0x0019, WR_LED_C),
    ROW(0x0017, WR_LED_D),
    ROW(0x0013, WR_LED_E),
    ROW(0x001B, WR_LINE_MODE),
    ROW(0x001D, WR_LED_GROUP_1),
    ROW(0x0021, WR_LED_GROUP_3),
    ROW(0x0023, WR_LED_GROUP_4),
    ROW(0x0025, WR_LED_GROUP_5),
    ROW(0x0027, WR_LED_GROUP_6),
    ROW(0x0029, WR_LED_GROUP_7),
    ROW(0x001F, WR_LINE_FLAGS),
    ROW(0x00A7, RD_CHANNEL_WORD),
    ROW(0x00A8, WR_CHANNEL_WORD),
    ROW(0x002A, RD_PHY_STATUS),
    ROW(0x002B, WR_PHY_CONFIG),
    ROW(0x002C, RD_ID_REGISTERS),
    ROW(0x002E, RD_ADDR_ENTRY),
    ROW(0x002F, WR_ADDR_ENTRY),
    ROW(0x0030, WR_ADDR_ENTRY_VALUE),
    ROW(0x0032, RD_ADDR_SET),
    ROW(0x0033, WR_ADDR_SET),
    ROW(0x0034, WR_ADDR_SET_VALUE),
    ROW(0x0036, RD_DEVICE_WORD_27),
    ROW(0x0037, WR_DEVICE_WORD_28),
    ROW(0x0038, RD_DEVICE_WORD_29),
    ROW(0x0039, WR_DEVICE_WORD_2A),
    ROW(0x003A, RD_GROUP_FLAG),
    ROW(0x003B, WR_GROUP_FLAG),
    ROW(0x003C, RD_UNIT_STATUS_MAP),
    ROW(0x00A9, RD_UNIT_STATUS_FLAG),
    ROW(0x003E, RD_DEVICE_WORD_40),
    ROW(0x003F, WR_DEVICE_WORD_41),
    ROW(0x0040, RD_DEVICE_WORD_21),
    ROW(0x0041, WR_DEVICE_WORD_22),
    ROW(0x0042, RD_DEVICE_WORD_03),
    ROW(0x0043, WR_DEVICE_WORD_04),
    ROW(0x0044, RD_DEVICE_WORD_48),
    ROW(0x0045, WR_DEVICE_WORD_49),
    ROW(0x0046, RD_DEVICE_WORD_3B),
    ROW(0x0048, RD_MTU_LIMIT),
    ROW(0x0049, WR_MTU_LIMIT),
    ROW(0x004A, RD_DEVICE_WORD_35),
    ROW(0x004B, WR_DEVICE_WORD_36),
    ROW(0x004C, RD_MTU_DATASIZE),
    ROW(0x004D, WR_MTU_DATASIZE),
    ROW(0x004E, RD_VLANT_MAP_ENABLE),
    ROW(0x004F, WR_VLANT_MAP_ENABLE),
    ROW(0x0050, RD_REG_DA_LATCHED),
    ROW(0x0052, RD_ID_ENTRY),
    ROW(0x0053, WR_ID_ENTRY),
    ROW(0x0054, RD_ID_ENTRY_VALUE),
    ROW(0x0056, RD_DEVICE_WORD_4E),
    ROW(0x008E, RD_MODE_SWITCH),
    ROW(0x008F, WR_MODE_SWITCH),
    ROW(0x0058, RD_REG132_VALUE),
    ROW(0x0059, WR_REG132_VALUE),
    ROW(0x005A, RD_ADDR_TABLE_ENTRY),
    ROW(0x005B, WR_ADDR_TABLE_ENTRY),
    ROW(0x005C, WR_ADDR_TABLE_DELETE),
    ROW(0x005E, RD_PREFIX0_LENGTH),
    ROW(0x005F, WR_PREFIX0),
    ROW(0x0060, RD_PREFIX1),
    ROW(0x0061, WR_PREFIX1),
    ROW(0x0062, RD_REG110_BYTES),
    ROW(0x0063, WR_REG110_BYTES),
    ROW(0x0092, RD_REG11E_BIT0),
    ROW(0x0093, WR_REG11E_BIT0),
    ROW(0x0064, RD_INDEXED_WORD),
    ROW(0x0065, WR_INDEXED_WORD),
    ROW(0x0066, RD_REGE0_BLOCK),
    ROW(0x0067, WR_REGE0_BLOCK),
    ROW(0x0068, RD_REGF4_FLAGS),
    ROW(0x006A, RD_REG168_MODE),
    ROW(0x006B, WR_REG168_MODE),
    ROW(0x006C, RD_REG168_SELECT),
    ROW(0x006D, WR_REG168_SELECT),
    ROW(0x006E, RD_REG168_VALUE),
    ROW(0x006F, WR_REG168_VALUE),
    ROW(0x0070, RD_REG16A_BLOCK),
    ROW(0x0071, WR_REG16A_BLOCK),
    ROW(0x0090, RD_REG158_BIT5),
    ROW(0x0091, WR_REG158_BIT5),
    ROW(0x0072, RD_REG158_BIT6),
    ROW(0x0073, WR_REG158_BIT6),
    ROW(0x0074, RD_REG158_BIT7),
    ROW(0x0075, WR_REG158_BIT7),
    ROW(0x0076, RD_REG158_BIT15),
    ROW(0x0077, WR_REG158_BIT15),
    ROW(0x0078, RD_REG158_BIT14),
    ROW(0x0079, WR_REG158_BIT14),
    ROW(0x007A, RD_REG158_STATE),
    ROW(0x007B, WR_REG158_STATE),
    ROW(0x007C, RD_REG158_BIT8),
    ROW(0x007E, RD_REG158_BIT4),
    ROW(0x007F, WR_REG158_BIT4),
    ROW(0x0080, RD_REG158_BIT3),
    ROW(0x0081, WR_REG158_BIT3),
    ROW(0x0082, RD_REG158_BIT2),
    ROW(0x0083, WR_REG158_BIT2),
    ROW(0x0084, RD_REG158_BIT1),
    ROW(0x0085, WR_REG158_BIT1),
    ROW(0x0086, RD_REG158_BIT0),
    ROW(0x0087, WR_REG158_BIT0),
    ROW(0x0088, RD_REG15A_FIELDS),
    ROW(0x0089, WR_REG15A_FIELDS),
    ROW(0x008A, RD_REG15C_PAIR),
    ROW(0x008B, WR_REG15C_PAIR),
    ROW(0x008C, RD_REG16E_BLOCK),
    ROW(0x008D, WR_REG16E_BLOCK),
    ROW(0x0094, WR_LED_PATTERN_3),
    ROW(0x0095, WR_LED_PATTERN_2),
    ROW(0x0096, WR_LED_RESTORE),
    ROW(0x0097, WR_LED_PATTERN_1),
    ROW(0x0098, RD_REGFE_MODE),
    ROW(0x0099, WR_REGFE_MODE),
    ROW(0x009A, RD_REGFE_NIBBLE),
    ROW(0x009B, WR_REGFE_NIBBLE),
    ROW(0x009C, RD_REG44_FLAG),
    ROW(0x009D, WR_REG44_FLAG),
    ROW(0x009E, RD_PORT_ENTRY),
    ROW(0x009F, WR_PORT_ENTRY),
    ROW(0x00A6, WR_PORT_ENTRY_RANGED),
    ROW(0x00A0, RD_PORT_MASK),
    ROW(0x00A1, WR_PORT_MASK_BIT),
    ROW(0x0100, WR_STATISTICS_SAVE),
    ROW(0x0102, WR_STATISTICS_CLEAR),
    ROW(0x0104, RD_FLAG_SET),
    ROW(0x0105, WR_FLAG_SET),
    ROW(0x0106, RD_ADDR_PAIR),
    ROW(0x0107, WR_ADDR_PAIR),
    ROW(0x0108, WR_ADDR_PAIR_COPY),
    ROW(0x010B, WR_PAIR_ENABLE),
    ROW(0x010C, RD_CONTROL_WORD),
    ROW(0x010F, WR_CONTROL_BLOCK),
    ROW(0x0111, WR_KEY_BYTES),
    ROW(0x0114, WR_CONTROL_BIT7_CLEAR),
    ROW(0x0117, WR_BYTE_ACTION),
    ROW(0x0119, WR_PAIR_WORDS),
    ROW(0x011B, WR_WORD_ACTION),
    ROW(0x011C, RD_RULE_ENTRY),
    ROW(0x011D, WR_RULE_ENTRY),
    ROW(0x011E, WR_RULE_DELETE),
    ROW(0x0120, WR_SWITCH_TABLES_1),
    ROW(0x0121, WR_SWITCH_TABLES_2),
    ROW(0x0200, RD_RTC_TIME),
    ROW(0x0201, WR_RTC_TIME),
    ROW(0x0202, RD_RTC_STATUS),
    ROW(0x0203, WR_RTC_STATUS),
    ROW(0x0300, RD_SERIAL_NUMBER),
    ROW(0x0400, RD_PORT_STATE_CODE),
    ROW(0x00A2, RD_STATUS_BIT),
    ROW(0x00A3, WR_STATUS_WORD),
    ROW(0x0401, RD_COUNTER),
    ROW(0x0402, WR_COUNTER),
    ROW(0x0403, RD_COUNTER_ALT),
    ROW(0x0404, WR_COUNTER_ALT),
    ROW(0x0406, WR_COUNTER_BLOCK_SMALL),
    ROW(0x0405, WR_COUNTER_BLOCK_LARGE),
    ROW(0x00A4, WR_PORT_BIT_SET),
    ROW(0x00A5, WR_PORT_BIT_CLEAR),
    ROW(0x0600, RD_PHY_REGISTER),
    ROW(0x0601, WR_PHY_REGISTER),
    ROW(0x0602, RD_EXT_STATUS_A),
    ROW(0x0603, WR_EXT_CONTROL_A),
    ROW(0x0604, RD_EXT_STATUS_B),
    ROW(0x0605, WR_EXT_CONTROL_B),
    ROW(0x0606, RD_REG1B4_BIT0),
    ROW(0x0607, WR_REG1B4_BIT0),
    ROW(0x0500, RD_DRIVER_STATE),
    ROW(0x00AA, RD_REG158_BIT10),
    ROW(0x00AB, WR_REG158_BIT10),
    ROW(0x00AC, RD_REG16C_ENABLE),
    ROW(0x00AD, WR_REG16C_ENABLE),
};

class CommandTable : public DeviceTest
{
};

TEST_F(CommandTable, HoldsEveryCommandInStoredOrder)
{
    const auto table = commandTable_get();
    ASSERT_EQ(table.size(), 189U);
    ASSERT_EQ(std::size(kRows), 189U);
    for (size_t i = 0; i < std::size(kRows); ++i) {
        EXPECT_EQ(table[i].code, kRows[i].code) << "position " << i << ", " << kRows[i].name;
    }
}

TEST_F(CommandTable, GivesEveryNumberItsPublicName)
{
    for (const Row& row : kRows) {
        EXPECT_EQ(row.named, row.code) << row.name;
    }
}

TEST_F(CommandTable, UsesNoNumberTwice)
{
    std::set<uint32_t> codes;
    for (const DeviceCommand& command : commandTable_get()) {
        EXPECT_TRUE(codes.insert(command.code).second) << std::hex << command.code;
    }
}

// No command is bound to its neighbour's procedure. WR_ADDR_PAIR_COPY alone may share one: it does
// what WR_ADDR_PAIR does.
TEST_F(CommandTable, GivesEveryCommandAHandlerOfItsOwn)
{
    std::set<CommandHandler> handlers;
    size_t provided = 0;
    for (const DeviceCommand& command : commandTable_get()) {
        if (command.code != 0x0108) {
            ++provided;
            handlers.insert(command.handler);
        }
    }
    EXPECT_EQ(handlers.size(), provided);
}

TEST_F(CommandTable, HasAHandlerInEveryRow)
{
    for (const DeviceCommand& command : commandTable_get()) {
        EXPECT_NE(command.handler, nullptr) << std::hex << command.code;
    }
}

TEST_F(CommandTable, KnowsNoOtherNumber)
{
    std::set<uint32_t> known;
    for (const Row& row : kRows) {
        known.insert(row.code);
    }
    for (uint32_t code = 0; code <= 0x10000; ++code) {
        if (known.count(code) == 0) {
            ASSERT_EQ(Fpga_Register_Set(code, nullptr), -1) << std::hex << code;
        }
    }
    // The same low half does not make it the command.
    EXPECT_EQ(Fpga_Register_Set(0x80000000U | RD_GROUP_FLAG, nullptr), -1);
    EXPECT_EQ(board.call_count(), 0U);
}

} // namespace
