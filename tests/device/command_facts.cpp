#include "device/command_facts.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace
{

#define NAMED(command) #command, command

// As the system's description has it, typed in apart from the product's own table: for each command
// its name, number, bytes of its record, results and requests. WR_CONTROL_BLOCK's record is the
// driver's, here as long as the simulated driver takes it.
const CommandFacts kCommands[] = {
    // clang-format off
    {NAMED(RD_REGISTER), 0x0122, 6, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REGISTER), 0x0123, 6, {0, -1, -2}, {0x6B43}},
    {NAMED(RD_DEVICE_INFO), 0x0000, 8, {0, -1, -2}, {0x6B01}},
    {NAMED(RD_STATUS_WORD_FLAG), 0x0002, 1, {0, -1, -2}, {0x6B02}},
    {NAMED(RD_STATUS_INPUTS), 0x0004, 4, {0, -1, -2}, {0x6B02}},
    {NAMED(RD_CONTROL_BITS), 0x0006, 2, {0, -1, -2}, {0x6B07}},
    {NAMED(WR_CONTROL_BITS), 0x0007, 3, {0, -1, -4}, {0x6B08}},
    {NAMED(RD_PORT_FLAGS), 0x0008, 12, {0, -1, -2}, {0x6B09}},
    {NAMED(WR_PORT_FLAGS), 0x0009, 12, {0, -1, -2, -4}, {0x6B02, 0x6B09, 0x6B0A}},
    {NAMED(RD_BANDWIDTH), 0x000A, 2, {0, -1, -2, -3}, {0x6B42, 0x6B98}},
    {NAMED(WR_BANDWIDTH), 0x000B, 2, {0, -1, -2, -4, -5}, {0x6B43, 0x6B98}},
    {NAMED(RD_ENABLE_FLAG), 0x000C, 1, {0, -1, -2}, {0x6B0B}},
    {NAMED(WR_ENABLE_FLAG), 0x000D, 1, {0, -1, -4}, {0x6B0C}},
    {NAMED(RD_LED_STATE), 0x000E, 44, {0, -1, -2, -5}, {0x6B03, 0x6B0F, 0x6B11, 0x6B3D, 0x6B3E, 0x6B4C, 0x6B4F, 0x6B51}},
    {NAMED(WR_LED_A), 0x0011, 9, {0, 1, -1, -2, -4}, {0x6B11, 0x6B12}},
    {NAMED(WR_LED_B), 0x0015, 10, {0, 1, -1, -2, -4}, {0x6B11, 0x6B12}},
    {NAMED(WR_LED_C), 0x0019, 11, {0, 1, -1, -2}, {0x6B11, 0x6B12}},
    {NAMED(WR_LED_D), 0x0017, 12, {0, 1, -1, -2, -4}, {0x6B4F, 0x6B50}},
    {NAMED(WR_LED_E), 0x0013, 13, {0, 1, -1, -2, -4}, {0x6B4F, 0x6B50}},
    {NAMED(WR_LINE_MODE), 0x001B, 14, {0, -1, -2, -4}, {0x6B4F, 0x6B50}},
    {NAMED(WR_LED_GROUP_1), 0x001D, 18, {0, 1, -1, -2, -4}, {0x6B03, 0x6B04, 0x6B11, 0x6B12}},
    {NAMED(WR_LED_GROUP_3), 0x0021, 28, {0, 1, -1, -2, -4}, {0x6B0F, 0x6B10}},
    {NAMED(WR_LED_GROUP_4), 0x0023, 32, {0, 1, -1, -2, -4}, {0x6B0F, 0x6B10}},
    {NAMED(WR_LED_GROUP_5), 0x0025, 36, {0, 1, -1, -2, -4}, {0x6B0F, 0x6B10}},
    {NAMED(WR_LED_GROUP_6), 0x0027, 40, {0, 1, -1, -2, -4}, {0x6B0F, 0x6B10}},
    {NAMED(WR_LED_GROUP_7), 0x0029, 44, {0, 1, -1, -2, -4}, {0x6B11, 0x6B12, 0x6B72, 0x6B73}},
    {NAMED(WR_LINE_FLAGS), 0x001F, 22, {0, -1, -2, -4}, {0x6B4F, 0x6B50}},
    {NAMED(RD_CHANNEL_WORD), 0x00A7, 4, {0, -1, -2}, {0x6B29, 0x6B3E, 0x6B51}},
    {NAMED(WR_CHANNEL_WORD), 0x00A8, 4, {0, -1, -2}, {0x6B51, 0x6B52}},
    {NAMED(RD_PHY_STATUS), 0x002A, 9, {0, -1, -2, -5}, {0x6B87, 0x6B98}},
    {NAMED(WR_PHY_CONFIG), 0x002B, 9, {0, -1, -4, -5}, {0x6B72, 0x6B73, 0x6B87, 0x6B88, 0x6B99}},
    {NAMED(RD_ID_REGISTERS), 0x002C, 14, {0, -1, -2}, {0x6B42}},
    {NAMED(RD_ADDR_ENTRY), 0x002E, 32, {0, -1, -2, -5}, {0x6B23, 0x6B39}},
    {NAMED(WR_ADDR_ENTRY), 0x002F, 12, {0, -1, -4, -5}, {0x6B24, 0x6B3A}},
    {NAMED(WR_ADDR_ENTRY_VALUE), 0x0030, 12, {0, -1, -4}, {0x6B3A}},
    {NAMED(RD_ADDR_SET), 0x0032, 48, {0, -1, -2, -5}, {0x6B5C, 0x6B5E}},
    {NAMED(WR_ADDR_SET), 0x0033, 28, {0, -1, -4, -5}, {0x6B5D, 0x6B5F}},
    {NAMED(WR_ADDR_SET_VALUE), 0x0034, 28, {0, -1, -4}, {0x6B5F}},
    {NAMED(RD_DEVICE_WORD_27), 0x0036, 2, {0, -1, -2}, {0x6B27}},
    {NAMED(WR_DEVICE_WORD_28), 0x0037, 2, {0, -1, -4}, {0x6B28}},
    {NAMED(RD_DEVICE_WORD_29), 0x0038, 2, {0, -1, -2}, {0x6B29}},
    {NAMED(WR_DEVICE_WORD_2A), 0x0039, 2, {0, -1, -4}, {0x6B2A}},
    {NAMED(RD_GROUP_FLAG), 0x003A, 1, {0, -1, -2}, {0x6B2D}},
    {NAMED(WR_GROUP_FLAG), 0x003B, 1, {0, -1, -2, -4}, {0x6B2D, 0x6B2E}},
    {NAMED(RD_UNIT_STATUS_MAP), 0x003C, 4, {0, -1, -2}, {0x6B03, 0x6B29, 0x6B3B, 0x6B4C, 0x6B8D}},
    {NAMED(RD_UNIT_STATUS_FLAG), 0x00A9, 6, {0, -1, -2}, {0x6B03, 0x6B3D, 0x6B4C}},
    {NAMED(RD_DEVICE_WORD_40), 0x003E, 2, {0, -1}, {0x6B40}},
    {NAMED(WR_DEVICE_WORD_41), 0x003F, 2, {0, -1, -4}, {0x6B41}},
    {NAMED(RD_DEVICE_WORD_21), 0x0040, 2, {0, -1, -2}, {0x6B21}},
    {NAMED(WR_DEVICE_WORD_22), 0x0041, 2, {0, -1, -4}, {0x6B22}},
    {NAMED(RD_DEVICE_WORD_03), 0x0042, 2, {0, -1, -2}, {0x6B03}},
    {NAMED(WR_DEVICE_WORD_04), 0x0043, 2, {0, -1, -4}, {0x6B04}},
    {NAMED(RD_DEVICE_WORD_48), 0x0044, 2, {0, -1, -2, -3}, {0x6B48}},
    {NAMED(WR_DEVICE_WORD_49), 0x0045, 2, {0, -1, -4, -5}, {0x6B49}},
    {NAMED(RD_DEVICE_WORD_3B), 0x0046, 4, {0, -1, -2}, {0x6B3B}},
    {NAMED(RD_MTU_LIMIT), 0x0048, 6, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_MTU_LIMIT), 0x0049, 2, {0, -1, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_DEVICE_WORD_35), 0x004A, 2, {0, -1, -2}, {0x6B35}},
    {NAMED(WR_DEVICE_WORD_36), 0x004B, 2, {0, -1, -2, -4}, {0x6B35, 0x6B36}},
    {NAMED(RD_MTU_DATASIZE), 0x004C, 20, {0, -1}, {}},
    {NAMED(WR_MTU_DATASIZE), 0x004D, 20, {0, -1, -2}, {0x6B03}},
    {NAMED(RD_VLANT_MAP_ENABLE), 0x004E, 2, {0, -1, -2}, {0x6B03}},
    {NAMED(WR_VLANT_MAP_ENABLE), 0x004F, 2, {0, -1, -2, -4}, {0x6B03, 0x6B04}},
    {NAMED(RD_REG_DA_LATCHED), 0x0050, 4, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_ID_ENTRY), 0x0052, 10, {0, -1, -2, -3, -5}, {0x6B4A}},
    {NAMED(WR_ID_ENTRY), 0x0053, 10, {0, -1, -2, -4, -5}, {0x6B4A, 0x6B4B}},
    {NAMED(RD_ID_ENTRY_VALUE), 0x0054, 6, {0, -1, -2, -3, -5}, {0x6B3B, 0x6B3D, 0x6B4C}},
    {NAMED(RD_DEVICE_WORD_4E), 0x0056, 2, {0, -1, -2}, {0x6B4E}},
    {NAMED(RD_MODE_SWITCH), 0x008E, 2, {0, -1, -2}, {0x6B2D, 0x6B42}},
    {NAMED(WR_MODE_SWITCH), 0x008F, 2, {0, -1, -2, -4}, {0x6B2D, 0x6B2E, 0x6B42, 0x6B43}},
    {NAMED(RD_REG132_VALUE), 0x0058, 2, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG132_VALUE), 0x0059, 2, {0, -1, -2, -4, -5}, {0x6B42, 0x6B43}},
    {NAMED(RD_ADDR_TABLE_ENTRY), 0x005A, 14, {0, -1, -2, -5}, {0x6B85}},
    {NAMED(WR_ADDR_TABLE_ENTRY), 0x005B, 14, {0, -1, -2, -4, -5}, {0x6B85, 0x6B86}},
    {NAMED(WR_ADDR_TABLE_DELETE), 0x005C, 14, {0, -1, -4, -5}, {0x6B86}},
    {NAMED(RD_PREFIX0_LENGTH), 0x005E, 8, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_PREFIX0), 0x005F, 8, {0, -1, -2, -3, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_PREFIX1), 0x0060, 16, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_PREFIX1), 0x0061, 16, {0, -1, -2, -3, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG110_BYTES), 0x0062, 4, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG110_BYTES), 0x0063, 4, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG11E_BIT0), 0x0092, 2, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG11E_BIT0), 0x0093, 2, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_INDEXED_WORD), 0x0064, 4, {0, -1, -2}, {0x6B83}},
    {NAMED(WR_INDEXED_WORD), 0x0065, 4, {0, -1, -4}, {0x6B84}},
    {NAMED(RD_REGE0_BLOCK), 0x0066, 22, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REGE0_BLOCK), 0x0067, 22, {0, -1, -2, -4, -5}, {0x6B42, 0x6B43}},
    {NAMED(RD_REGF4_FLAGS), 0x0068, 8, {0, -1, -2}, {0x6B42}},
    {NAMED(RD_REG168_MODE), 0x006A, 2, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG168_MODE), 0x006B, 4, {0, -1, -2, -4, -5}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG168_SELECT), 0x006C, 4, {0, -1, -2, -5}, {0x6B42}},
    {NAMED(WR_REG168_SELECT), 0x006D, 4, {0, -1, -2, -4, -5}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG168_VALUE), 0x006E, 2, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG168_VALUE), 0x006F, 2, {0, -1, -2, -4, -5}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG16A_BLOCK), 0x0070, 12, {0, -1, -2, -4, -5}, {0x6B42, 0x6B43}},
    {NAMED(WR_REG16A_BLOCK), 0x0071, 12, {0, -1, -2, -4, -5}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG158_BIT5), 0x0090, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_BIT5), 0x0091, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG158_BIT6), 0x0072, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_BIT6), 0x0073, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG158_BIT7), 0x0074, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_BIT7), 0x0075, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG158_BIT15), 0x0076, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_BIT15), 0x0077, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG158_BIT14), 0x0078, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_BIT14), 0x0079, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG158_STATE), 0x007A, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_STATE), 0x007B, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG158_BIT8), 0x007C, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(RD_REG158_BIT4), 0x007E, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_BIT4), 0x007F, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG158_BIT3), 0x0080, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_BIT3), 0x0081, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG158_BIT2), 0x0082, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_BIT2), 0x0083, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG158_BIT1), 0x0084, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_BIT1), 0x0085, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG158_BIT0), 0x0086, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_BIT0), 0x0087, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG15A_FIELDS), 0x0088, 4, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG15A_FIELDS), 0x0089, 4, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG15C_PAIR), 0x008A, 6, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG15C_PAIR), 0x008B, 6, {0, -1, -4}, {0x6B43}},
    {NAMED(RD_REG16E_BLOCK), 0x008C, 12, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG16E_BLOCK), 0x008D, 12, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(WR_LED_PATTERN_3), 0x0094, 0, {0, -1, -2, -4}, {0x6B03, 0x6B04, 0x6B0F, 0x6B11, 0x6B12, 0x6B29, 0x6B4F, 0x6B50, 0x6B51}},
    {NAMED(WR_LED_PATTERN_2), 0x0095, 0, {0, -1, -2, -4}, {0x6B03, 0x6B04, 0x6B0F, 0x6B11, 0x6B12, 0x6B29, 0x6B4F, 0x6B50, 0x6B51}},
    {NAMED(WR_LED_RESTORE), 0x0096, 44, {0, -1, -2, -4}, {0x6B03, 0x6B04, 0x6B0F, 0x6B10, 0x6B11, 0x6B12, 0x6B4F, 0x6B50}},
    {NAMED(WR_LED_PATTERN_1), 0x0097, 0, {0, -1, -2, -4}, {0x6B03, 0x6B04, 0x6B0F, 0x6B11, 0x6B12, 0x6B29, 0x6B4F, 0x6B50, 0x6B51}},
    {NAMED(RD_REGFE_MODE), 0x0098, 2, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REGFE_MODE), 0x0099, 2, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REGFE_NIBBLE), 0x009A, 2, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REGFE_NIBBLE), 0x009B, 2, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG44_FLAG), 0x009C, 2, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG44_FLAG), 0x009D, 2, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_PORT_ENTRY), 0x009E, 8, {0, -1, -2}, {0x6B60}},
    {NAMED(WR_PORT_ENTRY), 0x009F, 8, {0, -1, -4}, {0x6B61}},
    {NAMED(WR_PORT_ENTRY_RANGED), 0x00A6, 8, {0, -1, -2, -4}, {0x6B63}},
    {NAMED(RD_PORT_MASK), 0x00A0, 8, {0, -1, -2}, {0x6B8D}},
    {NAMED(WR_PORT_MASK_BIT), 0x00A1, 8, {0, -1, -2, -4, -5}, {0x6B8D, 0x6B8E}},
    {NAMED(WR_STATISTICS_SAVE), 0x0100, 496, {0, -1, -2}, {0x6B03, 0x6B9A}},
    {NAMED(WR_STATISTICS_CLEAR), 0x0102, 496, {0, -1, -2}, {0x6B9A}},
    {NAMED(RD_FLAG_SET), 0x0104, 9, {0, -1, -2, -5}, {0x6B72}},
    {NAMED(WR_FLAG_SET), 0x0105, 9, {0, -1, -2, -4, -5}, {0x6B72, 0x6B73}},
    {NAMED(RD_ADDR_PAIR), 0x0106, 14, {0, -1, -2, -5}, {0x6B67}},
    {NAMED(WR_ADDR_PAIR), 0x0107, 14, {0, -1, -4, -5}, {0x6B68}},
    {NAMED(WR_ADDR_PAIR_COPY), 0x0108, 14, {0, -1, -4, -5}, {0x6B68}},
    {NAMED(WR_PAIR_ENABLE), 0x010B, 1, {0, -1, -4}, {0x6B69}},
    {NAMED(RD_CONTROL_WORD), 0x010C, 2, {0, -1, -2}, {0x6B6E}},
    {NAMED(WR_CONTROL_BLOCK), 0x010F, 16, {0, -1, -4}, {0x6B70}},
    {NAMED(WR_KEY_BYTES), 0x0111, 5, {0, -1, -4}, {0x6B71}},
    {NAMED(WR_CONTROL_BIT7_CLEAR), 0x0114, 2, {0, -1, -2, -4}, {0x6B6E, 0x6B6F}},
    {NAMED(WR_BYTE_ACTION), 0x0117, 1, {0, -1, -4}, {0x6B74}},
    {NAMED(WR_PAIR_WORDS), 0x0119, 8, {0, -1, -4}, {0x6B77}},
    {NAMED(WR_WORD_ACTION), 0x011B, 2, {0, -1, -4}, {0x6B7A}},
    {NAMED(RD_RULE_ENTRY), 0x011C, 496, {0, -1, -2, -5}, {0x6B6A}},
    {NAMED(WR_RULE_ENTRY), 0x011D, 38, {0, -1, -4, -5}, {0x6B6B}},
    {NAMED(WR_RULE_DELETE), 0x011E, 1, {0, -1, -4, -5}, {0x6B6B}},
    {NAMED(WR_SWITCH_TABLES_1), 0x0120, 0, {0, -1, -2, -5}, {0x6B02, 0x6B79}},
    {NAMED(WR_SWITCH_TABLES_2), 0x0121, 0, {0, -1, -2, -4, -5}, {0x6B02, 0x6B78}},
    {NAMED(RD_RTC_TIME), 0x0200, 14, {0, -1, -2}, {}},
    {NAMED(WR_RTC_TIME), 0x0201, 12, {0, -1, -4}, {}},
    {NAMED(RD_RTC_STATUS), 0x0202, 4, {0, -1, -2}, {}},
    {NAMED(WR_RTC_STATUS), 0x0203, 4, {0, -1, -4}, {}},
    {NAMED(RD_SERIAL_NUMBER), 0x0300, 9, {0, -1, -2, -3}, {}},
    {NAMED(RD_PORT_STATE_CODE), 0x0400, 4, {0, -1}, {0x6B3B, 0x6B60}},
    {NAMED(RD_STATUS_BIT), 0x00A2, 8, {0, -1, -2}, {0x6B3D}},
    {NAMED(WR_STATUS_WORD), 0x00A3, 2, {0, -1, -2}, {0x6B62}},
    {NAMED(RD_COUNTER), 0x0401, 12, {0, -1, -2}, {0x6B9A}},
    {NAMED(WR_COUNTER), 0x0402, 12, {0, -1, -2}, {0x6B9F}},
    {NAMED(RD_COUNTER_ALT), 0x0403, 12, {0, -1, -2}, {0x6BA0}},
    {NAMED(WR_COUNTER_ALT), 0x0404, 12, {0, -1, -2}, {0x6BA1}},
    {NAMED(WR_COUNTER_BLOCK_SMALL), 0x0406, 68, {0, -1, -2}, {0x6B9B}},
    {NAMED(WR_COUNTER_BLOCK_LARGE), 0x0405, 160, {0, -1, -2}, {0x6B9C}},
    {NAMED(WR_PORT_BIT_SET), 0x00A4, 6, {0, -1, -2, -3, -4}, {0x6B42, 0x6B43}},
    {NAMED(WR_PORT_BIT_CLEAR), 0x00A5, 6, {0, -1, -2, -3, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_PHY_REGISTER), 0x0600, 8, {0, -1, -2, -5}, {0x6B87, 0x6B98}},
    {NAMED(WR_PHY_REGISTER), 0x0601, 8, {0, -1, -4, -5}, {0x6B88, 0x6B99}},
    {NAMED(RD_EXT_STATUS_A), 0x0602, 2, {0, -1, -2}, {0x6BA3}},
    {NAMED(WR_EXT_CONTROL_A), 0x0603, 2, {0, -1, -2}, {0x6BA4}},
    {NAMED(RD_EXT_STATUS_B), 0x0604, 2, {0, -1, -2}, {0x6BA5}},
    {NAMED(WR_EXT_CONTROL_B), 0x0605, 2, {0, -1, -2}, {0x6BA6}},
    {NAMED(RD_REG1B4_BIT0), 0x0606, 2, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG1B4_BIT0), 0x0607, 2, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_DRIVER_STATE), 0x0500, 2, {0, -1}, {0x6BA2}},
    {NAMED(RD_REG158_BIT10), 0x00AA, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG158_BIT10), 0x00AB, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    {NAMED(RD_REG16C_ENABLE), 0x00AC, 1, {0, -1, -2}, {0x6B42}},
    {NAMED(WR_REG16C_ENABLE), 0x00AD, 1, {0, -1, -2, -4}, {0x6B42, 0x6B43}},
    // clang-format on
};

} // namespace

std::span<const CommandFacts> commandFacts_get()
{
    return kCommands;
}

const CommandFacts* commandFacts_find(uint32_t number)
{
    for (const CommandFacts& command : kCommands) {
        if (command.number == number) {
            return &command;
        }
    }
    return nullptr;
}

std::string command_name(uint32_t number)
{
    const CommandFacts* facts = commandFacts_find(number);
    return (facts == nullptr ? "" : std::string(facts->name) + " ") + "(" + hex_number(number) +
           ")";
}

std::string hex_number(uint32_t number)
{
    char text[16];
    snprintf(text, sizeof text, "0x%04X", number);
    return text;
}

std::string hex_list(const std::set<uint32_t>& numbers)
{
    std::string text;
    for (const uint32_t number : numbers) {
        text += (text.empty() ? "" : " ") + hex_number(number);
    }
    return text;
}

std::string difference_of(const std::set<uint32_t>& expected, const std::set<uint32_t>& found)
{
    std::set<uint32_t> missing;
    std::set<uint32_t> more;
    std::set_difference(expected.begin(), expected.end(), found.begin(), found.end(),
                        std::inserter(missing, missing.end()));
    std::set_difference(found.begin(), found.end(), expected.begin(), expected.end(),
                        std::inserter(more, more.end()));
    return (missing.empty() ? "" : "missing: " + hex_list(missing)) +
           (more.empty()
                ? ""
                : (missing.empty() ? "" : "; ") + std::string("too many: ") + hex_list(more));
}
