/*
 * The device commands, by number, as Fpga_Register_Set takes them. Numbers are sparse and no number
 * is used twice. RD_ commands report, WR_ commands change something.
 *
 * Each group's record types, fields and result codes are described in the header named with it.
 */
#ifndef MAINT_DEVICE_COMMANDS_H
#define MAINT_DEVICE_COMMANDS_H

#include <stdint.h>

typedef uint32_t DeviceCommandCode;

enum {
    /* Identity and status of the units: maint/commands/unit.h */
    RD_DEVICE_INFO = 0x0000,
    RD_ID_REGISTERS = 0x002C,
    RD_UNIT_STATUS_MAP = 0x003C,
    RD_UNIT_STATUS_FLAG = 0x00A9,
    RD_SERIAL_NUMBER = 0x0300,

    /* Status word, inputs, bitmap of units: maint/commands/status.h */
    RD_STATUS_WORD_FLAG = 0x0002,
    RD_STATUS_INPUTS = 0x0004,
    RD_STATUS_BIT = 0x00A2,
    WR_STATUS_WORD = 0x00A3,

    /* Ports: maint/commands/port.h */
    RD_PORT_FLAGS = 0x0008,
    WR_PORT_FLAGS = 0x0009,
    RD_PORT_ENTRY = 0x009E,
    WR_PORT_ENTRY = 0x009F,
    RD_PORT_MASK = 0x00A0,
    WR_PORT_MASK_BIT = 0x00A1,
    WR_PORT_BIT_SET = 0x00A4,
    WR_PORT_BIT_CLEAR = 0x00A5,
    WR_PORT_ENTRY_RANGED = 0x00A6,
    RD_PORT_STATE_CODE = 0x0400,

    /* Ethernet PHYs: maint/commands/phy.h */
    RD_PHY_STATUS = 0x002A,
    WR_PHY_CONFIG = 0x002B,
    RD_PHY_REGISTER = 0x0600,
    WR_PHY_REGISTER = 0x0601,

    /* Line bandwidth: maint/commands/bandwidth.h */
    RD_BANDWIDTH = 0x000A,
    WR_BANDWIDTH = 0x000B,

    /* MTU and data sizes: maint/commands/mtu.h */
    RD_MTU_LIMIT = 0x0048,
    WR_MTU_LIMIT = 0x0049,
    RD_MTU_DATASIZE = 0x004C,
    WR_MTU_DATASIZE = 0x004D,

    /* Front panel, line mode and line flags: maint/commands/led.h */
    RD_LED_STATE = 0x000E,
    WR_LED_A = 0x0011,
    WR_LED_E = 0x0013,
    WR_LED_B = 0x0015,
    WR_LED_D = 0x0017,
    WR_LED_C = 0x0019,
    WR_LINE_MODE = 0x001B,
    WR_LED_GROUP_1 = 0x001D,
    WR_LINE_FLAGS = 0x001F,
    WR_LED_GROUP_3 = 0x0021,
    WR_LED_GROUP_4 = 0x0023,
    WR_LED_GROUP_5 = 0x0025,
    WR_LED_GROUP_6 = 0x0027,
    WR_LED_GROUP_7 = 0x0029,
    WR_LED_PATTERN_3 = 0x0094,
    WR_LED_PATTERN_2 = 0x0095,
    WR_LED_RESTORE = 0x0096,
    WR_LED_PATTERN_1 = 0x0097,

    /* Device words and flags in them: maint/commands/device_word.h */
    RD_CONTROL_BITS = 0x0006,
    WR_CONTROL_BITS = 0x0007,
    RD_ENABLE_FLAG = 0x000C,
    WR_ENABLE_FLAG = 0x000D,
    RD_DEVICE_WORD_27 = 0x0036,
    WR_DEVICE_WORD_28 = 0x0037,
    RD_DEVICE_WORD_29 = 0x0038,
    WR_DEVICE_WORD_2A = 0x0039,
    RD_GROUP_FLAG = 0x003A,
    WR_GROUP_FLAG = 0x003B,
    RD_DEVICE_WORD_40 = 0x003E,
    WR_DEVICE_WORD_41 = 0x003F,
    RD_DEVICE_WORD_21 = 0x0040,
    WR_DEVICE_WORD_22 = 0x0041,
    RD_DEVICE_WORD_03 = 0x0042,
    WR_DEVICE_WORD_04 = 0x0043,
    RD_DEVICE_WORD_48 = 0x0044,
    WR_DEVICE_WORD_49 = 0x0045,
    RD_DEVICE_WORD_3B = 0x0046,
    RD_DEVICE_WORD_35 = 0x004A,
    WR_DEVICE_WORD_36 = 0x004B,
    RD_VLANT_MAP_ENABLE = 0x004E,
    WR_VLANT_MAP_ENABLE = 0x004F,
    RD_DEVICE_WORD_4E = 0x0056,
    RD_INDEXED_WORD = 0x0064,
    WR_INDEXED_WORD = 0x0065,

    /* Channel words: maint/commands/channel_word.h */
    RD_CHANNEL_WORD = 0x00A7,
    WR_CHANNEL_WORD = 0x00A8,

    /* Mode switch: maint/commands/mode_switch.h */
    RD_MODE_SWITCH = 0x008E,
    WR_MODE_SWITCH = 0x008F,

    /* Identifier entries: maint/commands/id_entry.h */
    RD_ID_ENTRY = 0x0052,
    WR_ID_ENTRY = 0x0053,
    RD_ID_ENTRY_VALUE = 0x0054,

    /* Address entries: maint/commands/address_entry.h */
    RD_ADDR_ENTRY = 0x002E,
    WR_ADDR_ENTRY = 0x002F,
    WR_ADDR_ENTRY_VALUE = 0x0030,
    RD_ADDR_SET = 0x0032,
    WR_ADDR_SET = 0x0033,
    WR_ADDR_SET_VALUE = 0x0034,

    /* Address pairs: maint/commands/address_pair.h */
    RD_ADDR_PAIR = 0x0106,
    WR_ADDR_PAIR = 0x0107,
    WR_ADDR_PAIR_COPY = 0x0108,
    WR_PAIR_ENABLE = 0x010B,

    /* Address tables: maint/commands/address_table.h */
    RD_ADDR_TABLE_ENTRY = 0x005A,
    WR_ADDR_TABLE_ENTRY = 0x005B,
    WR_ADDR_TABLE_DELETE = 0x005C,

    /* Address and prefix sets: maint/commands/prefix.h */
    RD_PREFIX0_LENGTH = 0x005E,
    WR_PREFIX0 = 0x005F,
    RD_PREFIX1 = 0x0060,
    WR_PREFIX1 = 0x0061,

    /* Rule entries: maint/commands/rule.h */
    RD_RULE_ENTRY = 0x011C,
    WR_RULE_ENTRY = 0x011D,
    WR_RULE_DELETE = 0x011E,

    /* Flag sets of the switch ports: maint/commands/flag_set.h */
    RD_FLAG_SET = 0x0104,
    WR_FLAG_SET = 0x0105,

    /* Ethernet switch tables: maint/commands/switch_tables.h */
    WR_SWITCH_TABLES_1 = 0x0120,
    WR_SWITCH_TABLES_2 = 0x0121,

    /* Whole registers: maint/commands/register.h */
    RD_REG_DA_LATCHED = 0x0050,
    RD_REGISTER = 0x0122,
    WR_REGISTER = 0x0123,

    /* Register fields: maint/commands/register_field.h */
    RD_REG132_VALUE = 0x0058,
    WR_REG132_VALUE = 0x0059,
    RD_REG110_BYTES = 0x0062,
    WR_REG110_BYTES = 0x0063,
    RD_REGF4_FLAGS = 0x0068,
    RD_REG168_MODE = 0x006A,
    WR_REG168_MODE = 0x006B,
    RD_REG168_SELECT = 0x006C,
    WR_REG168_SELECT = 0x006D,
    RD_REG168_VALUE = 0x006E,
    WR_REG168_VALUE = 0x006F,
    RD_REG158_BIT6 = 0x0072,
    WR_REG158_BIT6 = 0x0073,
    RD_REG158_BIT7 = 0x0074,
    WR_REG158_BIT7 = 0x0075,
    RD_REG158_BIT15 = 0x0076,
    WR_REG158_BIT15 = 0x0077,
    RD_REG158_BIT14 = 0x0078,
    WR_REG158_BIT14 = 0x0079,
    RD_REG158_STATE = 0x007A,
    WR_REG158_STATE = 0x007B,
    RD_REG158_BIT8 = 0x007C,
    RD_REG158_BIT4 = 0x007E,
    WR_REG158_BIT4 = 0x007F,
    RD_REG158_BIT3 = 0x0080,
    WR_REG158_BIT3 = 0x0081,
    RD_REG158_BIT2 = 0x0082,
    WR_REG158_BIT2 = 0x0083,
    RD_REG158_BIT1 = 0x0084,
    WR_REG158_BIT1 = 0x0085,
    RD_REG158_BIT0 = 0x0086,
    WR_REG158_BIT0 = 0x0087,
    RD_REG15A_FIELDS = 0x0088,
    WR_REG15A_FIELDS = 0x0089,
    RD_REG15C_PAIR = 0x008A,
    WR_REG15C_PAIR = 0x008B,
    RD_REG158_BIT5 = 0x0090,
    WR_REG158_BIT5 = 0x0091,
    RD_REG11E_BIT0 = 0x0092,
    WR_REG11E_BIT0 = 0x0093,
    RD_REGFE_MODE = 0x0098,
    WR_REGFE_MODE = 0x0099,
    RD_REGFE_NIBBLE = 0x009A,
    WR_REGFE_NIBBLE = 0x009B,
    RD_REG44_FLAG = 0x009C,
    WR_REG44_FLAG = 0x009D,
    RD_REG158_BIT10 = 0x00AA,
    WR_REG158_BIT10 = 0x00AB,
    RD_REG16C_ENABLE = 0x00AC,
    WR_REG16C_ENABLE = 0x00AD,
    RD_REG1B4_BIT0 = 0x0606,
    WR_REG1B4_BIT0 = 0x0607,

    /* Register blocks: maint/commands/register_block.h */
    RD_REGE0_BLOCK = 0x0066,
    WR_REGE0_BLOCK = 0x0067,
    RD_REG16A_BLOCK = 0x0070,
    WR_REG16A_BLOCK = 0x0071,
    RD_REG16E_BLOCK = 0x008C,
    WR_REG16E_BLOCK = 0x008D,

    /* Counters: maint/commands/counter.h */
    RD_COUNTER = 0x0401,
    WR_COUNTER = 0x0402,
    RD_COUNTER_ALT = 0x0403,
    WR_COUNTER_ALT = 0x0404,
    WR_COUNTER_BLOCK_LARGE = 0x0405,
    WR_COUNTER_BLOCK_SMALL = 0x0406,

    /* Traffic statistics: maint/commands/statistics.h */
    WR_STATISTICS_SAVE = 0x0100,
    WR_STATISTICS_CLEAR = 0x0102,

    /* Driver words and records: maint/commands/driver.h */
    RD_CONTROL_WORD = 0x010C,
    WR_CONTROL_BLOCK = 0x010F,
    WR_KEY_BYTES = 0x0111,
    WR_CONTROL_BIT7_CLEAR = 0x0114,
    WR_BYTE_ACTION = 0x0117,
    WR_PAIR_WORDS = 0x0119,
    WR_WORD_ACTION = 0x011B,
    RD_DRIVER_STATE = 0x0500,
    RD_EXT_STATUS_A = 0x0602,
    WR_EXT_CONTROL_A = 0x0603,
    RD_EXT_STATUS_B = 0x0604,
    WR_EXT_CONTROL_B = 0x0605,

    /* Real-time clock: maint/commands/rtc.h */
    RD_RTC_TIME = 0x0200,
    WR_RTC_TIME = 0x0201,
    RD_RTC_STATUS = 0x0202,
    WR_RTC_STATUS = 0x0203
};

#endif
