// The typed calls: what each takes, and that it does what Fpga_Register_Set does with its number.
#include <random>
#include <type_traits>

#include "device/command_test.h"
#include "maint/commands/address_entry.h"
#include "maint/commands/address_pair.h"
#include "maint/commands/address_table.h"
#include "maint/commands/bandwidth.h"
#include "maint/commands/channel_word.h"
#include "maint/commands/counter.h"
#include "maint/commands/device_word.h"
#include "maint/commands/driver.h"
#include "maint/commands/flag_set.h"
#include "maint/commands/id_entry.h"
#include "maint/commands/led.h"
#include "maint/commands/mode_switch.h"
#include "maint/commands/mtu.h"
#include "maint/commands/phy.h"
#include "maint/commands/port.h"
#include "maint/commands/prefix.h"
#include "maint/commands/register.h"
#include "maint/commands/register_block.h"
#include "maint/commands/register_field.h"
#include "maint/commands/rtc.h"
#include "maint/commands/rule.h"
#include "maint/commands/statistics.h"
#include "maint/commands/status.h"
#include "maint/commands/switch_tables.h"
#include "maint/commands/unit.h"
#include "sim/device_state.h"

namespace
{

struct TypedCall {
    DeviceCommandCode command;
    int32_t (*call)(void* record);
    size_t size; // of the record's type
};

template <class Record> constexpr size_t size_of()
{
    if constexpr (std::is_void_v<Record>) {
        return 0;
    } else {
        return sizeof(Record);
    }
}

// The rows below. A row whose command has another record, or does something else to it, does not
// compile.
template <DeviceCommandCode kCode, class Record, int32_t (*kCall)(Record*)>
consteval TypedCall changes()
{
    static_assert(std::is_same_v<typename maint::Command<kCode>::Record, Record>);
    static_assert(std::is_same_v<typename maint::Command<kCode>::Argument, Record*>);
    return {kCode, [](void* record) { return kCall(static_cast<Record*>(record)); },
            size_of<Record>()};
}

template <DeviceCommandCode kCode, class Record, int32_t (*kCall)(const Record*)>
consteval TypedCall reads()
{
    static_assert(std::is_same_v<typename maint::Command<kCode>::Record, Record>);
    static_assert(std::is_same_v<typename maint::Command<kCode>::Argument, const Record*>);
    return {kCode, [](void* record) { return kCall(static_cast<const Record*>(record)); },
            size_of<Record>()};
}

template <DeviceCommandCode kCode, int32_t (*kCall)()> consteval TypedCall alone()
{
    static_assert(std::is_void_v<typename maint::Command<kCode>::Record>);
    static_assert(std::is_same_v<typename maint::Command<kCode>::Argument, void*>);
    return {kCode, [](void* /*record*/) { return kCall(); }, 0};
}

template <DeviceCommandCode kCode> constexpr bool kHasTypes = requires
{
    sizeof(maint::Command<kCode>);
};

static_assert(kHasTypes<RD_DEVICE_INFO> && kHasTypes<WR_REG1B4_BIT0>);
static_assert(!kHasTypes<0x0001> && !kHasTypes<0x007D> && !kHasTypes<0x00FF> &&
              !kHasTypes<0x0608> && !kHasTypes<0x00010000>);

// Every command, in the order of the numbers. From the descriptions of the records, not from the
// headers' lines.
constexpr TypedCall kTypedCalls[] = {
    changes<RD_DEVICE_INFO, DeviceInfo, maint_rd_device_info>(),
    changes<RD_STATUS_WORD_FLAG, uint8_t, maint_rd_status_word_flag>(),
    changes<RD_STATUS_INPUTS, StatusInputs, maint_rd_status_inputs>(),
    changes<RD_CONTROL_BITS, ControlBits, maint_rd_control_bits>(),
    reads<WR_CONTROL_BITS, ControlBits, maint_wr_control_bits>(),
    changes<RD_PORT_FLAGS, PortFlags, maint_rd_port_flags>(),
    reads<WR_PORT_FLAGS, PortFlags, maint_wr_port_flags>(),
    changes<RD_BANDWIDTH, uint16_t, maint_rd_bandwidth>(),
    reads<WR_BANDWIDTH, uint16_t, maint_wr_bandwidth>(),
    changes<RD_ENABLE_FLAG, uint8_t, maint_rd_enable_flag>(),
    reads<WR_ENABLE_FLAG, uint8_t, maint_wr_enable_flag>(),
    changes<RD_LED_STATE, LedStateRecord, maint_rd_led_state>(),
    reads<WR_LED_A, LedStateRecord, maint_wr_led_a>(),
    reads<WR_LED_E, LedStateRecord, maint_wr_led_e>(),
    reads<WR_LED_B, LedStateRecord, maint_wr_led_b>(),
    reads<WR_LED_D, LedStateRecord, maint_wr_led_d>(),
    reads<WR_LED_C, LedStateRecord, maint_wr_led_c>(),
    reads<WR_LINE_MODE, LedStateRecord, maint_wr_line_mode>(),
    reads<WR_LED_GROUP_1, LedStateRecord, maint_wr_led_group_1>(),
    reads<WR_LINE_FLAGS, LedStateRecord, maint_wr_line_flags>(),
    reads<WR_LED_GROUP_3, LedStateRecord, maint_wr_led_group_3>(),
    reads<WR_LED_GROUP_4, LedStateRecord, maint_wr_led_group_4>(),
    reads<WR_LED_GROUP_5, LedStateRecord, maint_wr_led_group_5>(),
    reads<WR_LED_GROUP_6, LedStateRecord, maint_wr_led_group_6>(),
    reads<WR_LED_GROUP_7, LedStateRecord, maint_wr_led_group_7>(),
    changes<RD_PHY_STATUS, PhyStatus, maint_rd_phy_status>(),
    reads<WR_PHY_CONFIG, PhyConfig, maint_wr_phy_config>(),
    changes<RD_ID_REGISTERS, IdRegisters, maint_rd_id_registers>(),
    changes<RD_ADDR_ENTRY, AddressEntry, maint_rd_addr_entry>(),
    reads<WR_ADDR_ENTRY, AddressEntry, maint_wr_addr_entry>(),
    reads<WR_ADDR_ENTRY_VALUE, AddressEntry, maint_wr_addr_entry_value>(),
    changes<RD_ADDR_SET, AddressSet, maint_rd_addr_set>(),
    reads<WR_ADDR_SET, AddressSet, maint_wr_addr_set>(),
    reads<WR_ADDR_SET_VALUE, AddressSet, maint_wr_addr_set_value>(),
    changes<RD_DEVICE_WORD_27, uint16_t, maint_rd_device_word_27>(),
    reads<WR_DEVICE_WORD_28, uint16_t, maint_wr_device_word_28>(),
    changes<RD_DEVICE_WORD_29, uint16_t, maint_rd_device_word_29>(),
    reads<WR_DEVICE_WORD_2A, uint16_t, maint_wr_device_word_2a>(),
    changes<RD_GROUP_FLAG, uint8_t, maint_rd_group_flag>(),
    reads<WR_GROUP_FLAG, uint8_t, maint_wr_group_flag>(),
    changes<RD_UNIT_STATUS_MAP, uint32_t, maint_rd_unit_status_map>(),
    changes<RD_DEVICE_WORD_40, uint16_t, maint_rd_device_word_40>(),
    reads<WR_DEVICE_WORD_41, uint16_t, maint_wr_device_word_41>(),
    changes<RD_DEVICE_WORD_21, uint16_t, maint_rd_device_word_21>(),
    reads<WR_DEVICE_WORD_22, uint16_t, maint_wr_device_word_22>(),
    changes<RD_DEVICE_WORD_03, uint16_t, maint_rd_device_word_03>(),
    reads<WR_DEVICE_WORD_04, uint16_t, maint_wr_device_word_04>(),
    changes<RD_DEVICE_WORD_48, uint16_t, maint_rd_device_word_48>(),
    reads<WR_DEVICE_WORD_49, uint16_t, maint_wr_device_word_49>(),
    changes<RD_DEVICE_WORD_3B, uint32_t, maint_rd_device_word_3b>(),
    changes<RD_MTU_LIMIT, MtuLimit, maint_rd_mtu_limit>(),
    reads<WR_MTU_LIMIT, uint16_t, maint_wr_mtu_limit>(),
    changes<RD_DEVICE_WORD_35, uint16_t, maint_rd_device_word_35>(),
    reads<WR_DEVICE_WORD_36, uint16_t, maint_wr_device_word_36>(),
    changes<RD_MTU_DATASIZE, MtuDatasize, maint_rd_mtu_datasize>(),
    changes<WR_MTU_DATASIZE, MtuDatasize, maint_wr_mtu_datasize>(),
    changes<RD_VLANT_MAP_ENABLE, uint16_t, maint_rd_vlant_map_enable>(),
    reads<WR_VLANT_MAP_ENABLE, uint16_t, maint_wr_vlant_map_enable>(),
    changes<RD_REG_DA_LATCHED, uint32_t, maint_rd_reg_da_latched>(),
    reads<RD_ID_ENTRY, IdEntry, maint_rd_id_entry>(), // the entry read is not handed out
    reads<WR_ID_ENTRY, IdEntry, maint_wr_id_entry>(),
    changes<RD_ID_ENTRY_VALUE, IdEntryValue, maint_rd_id_entry_value>(),
    changes<RD_DEVICE_WORD_4E, uint16_t, maint_rd_device_word_4e>(),
    changes<RD_REG132_VALUE, uint16_t, maint_rd_reg132_value>(),
    reads<WR_REG132_VALUE, uint16_t, maint_wr_reg132_value>(),
    changes<RD_ADDR_TABLE_ENTRY, AddressTableEntry, maint_rd_addr_table_entry>(),
    reads<WR_ADDR_TABLE_ENTRY, AddressTableEntry, maint_wr_addr_table_entry>(),
    reads<WR_ADDR_TABLE_DELETE, AddressTableEntry, maint_wr_addr_table_delete>(),
    changes<RD_PREFIX0_LENGTH, PrefixMap, maint_rd_prefix0_length>(),
    reads<WR_PREFIX0, PrefixMap, maint_wr_prefix0>(),
    changes<RD_PREFIX1, PrefixMap, maint_rd_prefix1>(),
    reads<WR_PREFIX1, PrefixMap, maint_wr_prefix1>(),
    changes<RD_REG110_BYTES, Reg110Bytes, maint_rd_reg110_bytes>(),
    reads<WR_REG110_BYTES, Reg110Bytes, maint_wr_reg110_bytes>(),
    changes<RD_INDEXED_WORD, IndexedWord, maint_rd_indexed_word>(),
    reads<WR_INDEXED_WORD, IndexedWord, maint_wr_indexed_word>(),
    changes<RD_REGE0_BLOCK, RegE0Block, maint_rd_rege0_block>(),
    reads<WR_REGE0_BLOCK, RegE0Block, maint_wr_rege0_block>(),
    changes<RD_REGF4_FLAGS, RegF4Flags, maint_rd_regf4_flags>(),
    changes<RD_REG168_MODE, uint16_t, maint_rd_reg168_mode>(),
    changes<WR_REG168_MODE, Reg168Mode, maint_wr_reg168_mode>(), // mode 4 becomes 0
    changes<RD_REG168_SELECT, Reg168Select, maint_rd_reg168_select>(),
    reads<WR_REG168_SELECT, Reg168Select, maint_wr_reg168_select>(),
    changes<RD_REG168_VALUE, uint16_t, maint_rd_reg168_value>(),
    reads<WR_REG168_VALUE, uint16_t, maint_wr_reg168_value>(),
    changes<RD_REG16A_BLOCK, Reg16ABlock, maint_rd_reg16a_block>(),
    reads<WR_REG16A_BLOCK, Reg16ABlock, maint_wr_reg16a_block>(),
    changes<RD_REG158_BIT6, uint8_t, maint_rd_reg158_bit6>(),
    reads<WR_REG158_BIT6, uint8_t, maint_wr_reg158_bit6>(),
    changes<RD_REG158_BIT7, uint8_t, maint_rd_reg158_bit7>(),
    reads<WR_REG158_BIT7, uint8_t, maint_wr_reg158_bit7>(),
    changes<RD_REG158_BIT15, uint8_t, maint_rd_reg158_bit15>(),
    reads<WR_REG158_BIT15, uint8_t, maint_wr_reg158_bit15>(),
    changes<RD_REG158_BIT14, uint8_t, maint_rd_reg158_bit14>(),
    reads<WR_REG158_BIT14, uint8_t, maint_wr_reg158_bit14>(),
    changes<RD_REG158_STATE, uint8_t, maint_rd_reg158_state>(),
    reads<WR_REG158_STATE, uint8_t, maint_wr_reg158_state>(),
    changes<RD_REG158_BIT8, uint8_t, maint_rd_reg158_bit8>(),
    changes<RD_REG158_BIT4, uint8_t, maint_rd_reg158_bit4>(),
    reads<WR_REG158_BIT4, uint8_t, maint_wr_reg158_bit4>(),
    changes<RD_REG158_BIT3, uint8_t, maint_rd_reg158_bit3>(),
    reads<WR_REG158_BIT3, uint8_t, maint_wr_reg158_bit3>(),
    changes<RD_REG158_BIT2, uint8_t, maint_rd_reg158_bit2>(),
    reads<WR_REG158_BIT2, uint8_t, maint_wr_reg158_bit2>(),
    changes<RD_REG158_BIT1, uint8_t, maint_rd_reg158_bit1>(),
    reads<WR_REG158_BIT1, uint8_t, maint_wr_reg158_bit1>(),
    changes<RD_REG158_BIT0, uint8_t, maint_rd_reg158_bit0>(),
    reads<WR_REG158_BIT0, uint8_t, maint_wr_reg158_bit0>(),
    changes<RD_REG15A_FIELDS, Reg15AFields, maint_rd_reg15a_fields>(),
    reads<WR_REG15A_FIELDS, Reg15AFields, maint_wr_reg15a_fields>(),
    changes<RD_REG15C_PAIR, Reg15CPair, maint_rd_reg15c_pair>(),
    reads<WR_REG15C_PAIR, Reg15CPair, maint_wr_reg15c_pair>(),
    changes<RD_REG16E_BLOCK, Reg16EBlock, maint_rd_reg16e_block>(),
    reads<WR_REG16E_BLOCK, Reg16EBlock, maint_wr_reg16e_block>(),
    changes<RD_MODE_SWITCH, uint16_t, maint_rd_mode_switch>(),
    reads<WR_MODE_SWITCH, uint16_t, maint_wr_mode_switch>(),
    changes<RD_REG158_BIT5, uint8_t, maint_rd_reg158_bit5>(),
    reads<WR_REG158_BIT5, uint8_t, maint_wr_reg158_bit5>(),
    changes<RD_REG11E_BIT0, uint16_t, maint_rd_reg11e_bit0>(),
    reads<WR_REG11E_BIT0, uint16_t, maint_wr_reg11e_bit0>(),
    alone<WR_LED_PATTERN_3, maint_wr_led_pattern_3>(),
    alone<WR_LED_PATTERN_2, maint_wr_led_pattern_2>(),
    changes<WR_LED_RESTORE, LedStateRecord, maint_wr_led_restore>(), // the saved state
    alone<WR_LED_PATTERN_1, maint_wr_led_pattern_1>(),
    changes<RD_REGFE_MODE, uint16_t, maint_rd_regfe_mode>(),
    reads<WR_REGFE_MODE, uint16_t, maint_wr_regfe_mode>(),
    changes<RD_REGFE_NIBBLE, uint16_t, maint_rd_regfe_nibble>(),
    reads<WR_REGFE_NIBBLE, uint16_t, maint_wr_regfe_nibble>(),
    changes<RD_REG44_FLAG, uint16_t, maint_rd_reg44_flag>(),
    reads<WR_REG44_FLAG, uint16_t, maint_wr_reg44_flag>(),
    changes<RD_PORT_ENTRY, PortEntry, maint_rd_port_entry>(),
    reads<WR_PORT_ENTRY, PortEntry, maint_wr_port_entry>(),
    changes<RD_PORT_MASK, PortMask, maint_rd_port_mask>(),
    changes<WR_PORT_MASK_BIT, PortMask, maint_wr_port_mask_bit>(), // the new mask
    changes<RD_STATUS_BIT, StatusBit, maint_rd_status_bit>(),
    reads<WR_STATUS_WORD, uint16_t, maint_wr_status_word>(),
    reads<WR_PORT_BIT_SET, PortBit, maint_wr_port_bit_set>(),
    reads<WR_PORT_BIT_CLEAR, PortBit, maint_wr_port_bit_clear>(),
    reads<WR_PORT_ENTRY_RANGED, PortEntry, maint_wr_port_entry_ranged>(),
    changes<RD_CHANNEL_WORD, ChannelWord, maint_rd_channel_word>(),
    reads<WR_CHANNEL_WORD, ChannelWord, maint_wr_channel_word>(),
    changes<RD_UNIT_STATUS_FLAG, UnitStatusFlag, maint_rd_unit_status_flag>(),
    changes<RD_REG158_BIT10, uint8_t, maint_rd_reg158_bit10>(),
    reads<WR_REG158_BIT10, uint8_t, maint_wr_reg158_bit10>(),
    changes<RD_REG16C_ENABLE, uint8_t, maint_rd_reg16c_enable>(),
    reads<WR_REG16C_ENABLE, uint8_t, maint_wr_reg16c_enable>(),
    changes<WR_STATISTICS_SAVE, StatisticsFile, maint_wr_statistics_save>(),   // the new file
    changes<WR_STATISTICS_CLEAR, StatisticsFile, maint_wr_statistics_clear>(), // likewise
    changes<RD_FLAG_SET, FlagSet, maint_rd_flag_set>(),
    reads<WR_FLAG_SET, FlagSet, maint_wr_flag_set>(),
    changes<RD_ADDR_PAIR, AddressPair, maint_rd_addr_pair>(),
    reads<WR_ADDR_PAIR, AddressPair, maint_wr_addr_pair>(),
    reads<WR_ADDR_PAIR_COPY, AddressPair, maint_wr_addr_pair_copy>(),
    reads<WR_PAIR_ENABLE, uint8_t, maint_wr_pair_enable>(),
    changes<RD_CONTROL_WORD, uint16_t, maint_rd_control_word>(),
    reads<WR_CONTROL_BLOCK, void, maint_wr_control_block>(), // of the driver's own size
    reads<WR_KEY_BYTES, KeyBytes, maint_wr_key_bytes>(),
    changes<WR_CONTROL_BIT7_CLEAR, uint16_t, maint_wr_control_bit7_clear>(), // read into the record
    reads<WR_BYTE_ACTION, uint8_t, maint_wr_byte_action>(),
    reads<WR_PAIR_WORDS, PairWords, maint_wr_pair_words>(),
    reads<WR_WORD_ACTION, uint16_t, maint_wr_word_action>(),
    changes<RD_RULE_ENTRY, RuleEntry, maint_rd_rule_entry>(),
    reads<WR_RULE_ENTRY, RuleEntry, maint_wr_rule_entry>(),
    reads<WR_RULE_DELETE, uint8_t, maint_wr_rule_delete>(), // the index alone
    alone<WR_SWITCH_TABLES_1, maint_wr_switch_tables_1>(),
    alone<WR_SWITCH_TABLES_2, maint_wr_switch_tables_2>(),
    changes<RD_REGISTER, RegisterValue, maint_rd_register>(),
    reads<WR_REGISTER, RegisterValue, maint_wr_register>(),
    changes<RD_RTC_TIME, RtcDateTime, maint_rd_rtc_time>(),
    reads<WR_RTC_TIME, RtcDateTime, maint_wr_rtc_time>(),
    changes<RD_RTC_STATUS, uint32_t, maint_rd_rtc_status>(),
    reads<WR_RTC_STATUS, uint32_t, maint_wr_rtc_status>(),
    changes<RD_SERIAL_NUMBER, SerialNumber, maint_rd_serial_number>(),
    changes<RD_PORT_STATE_CODE, PortStateCode, maint_rd_port_state_code>(),
    changes<RD_COUNTER, CounterRecord, maint_rd_counter>(),
    reads<WR_COUNTER, CounterRecord, maint_wr_counter>(),
    changes<RD_COUNTER_ALT, CounterRecord, maint_rd_counter_alt>(),
    reads<WR_COUNTER_ALT, CounterRecord, maint_wr_counter_alt>(),
    reads<WR_COUNTER_BLOCK_LARGE, CounterBlockLarge, maint_wr_counter_block_large>(),
    reads<WR_COUNTER_BLOCK_SMALL, CounterBlockSmall, maint_wr_counter_block_small>(),
    changes<RD_DRIVER_STATE, uint16_t, maint_rd_driver_state>(),
    changes<RD_PHY_REGISTER, PhyRegisterAccess, maint_rd_phy_register>(),
    reads<WR_PHY_REGISTER, PhyRegisterAccess, maint_wr_phy_register>(),
    changes<RD_EXT_STATUS_A, uint16_t, maint_rd_ext_status_a>(),
    reads<WR_EXT_CONTROL_A, uint16_t, maint_wr_ext_control_a>(),
    changes<RD_EXT_STATUS_B, uint16_t, maint_rd_ext_status_b>(),
    reads<WR_EXT_CONTROL_B, uint16_t, maint_wr_ext_control_b>(),
    changes<RD_REG1B4_BIT0, uint16_t, maint_rd_reg1b4_bit0>(),
    reads<WR_REG1B4_BIT0, uint16_t, maint_wr_reg1b4_bit0>(),
};

class TypedCalls : public CommandTest
{
  protected:
    // What can be seen of a run.
    struct Run {
        int32_t result;
        Bytes record;
        Trace calls;
    };

    // One run on the state of this number, by the typed call or by its number.
    Run run_of(const TypedCall& row, const Bytes& before, uint32_t state, bool typed)
    {
        deviceState_put(state, board.fpga, board.rtc);
        board.file_put("/tmp/ks8995_nor.dat", Bytes(128, '\x01'));
        board.file_put("/tmp/ks8995_pri.dat", Bytes(128, '\x02'));
        board.file_put("/tmp/serialno", "123456789");
        board.file_put("/tmp/mtu_datasize", Bytes(20, '\x03'));
        board.file_put("/conf/statistics", Bytes(496, '\x04'));
        board.file_put("/conf/config", "OWN_VPN_ID='12'\nWAN_TYPE='5'\n");
        board.file_put("/tmp/led_rewrite_inh", Bytes(44, '\x01'));
        if (state % 2 == 0) {
            board.file_remove("/tmp/led_rewrite_inh");
        }
        board.restart();
        void* record_put = put(before);
        const int32_t result =
            typed ? row.call(record_put) : Fpga_Register_Set(row.command, record_put);
        Run run{result, record(), board.calls};
        close_left_open(board.open_descriptors());
        return run;
    }

    // Small numbers of one width, as most records hold them.
    static Bytes record_draw(size_t size, uint32_t state)
    {
        std::mt19937 engine(state);
        const uint32_t width = 1U << (state % 3);
        Bytes record;
        while (record.size() < size) {
            record += le32(static_cast<uint32_t>(engine() % 9)).substr(0, width);
        }
        return record.substr(0, size);
    }
};

TEST_F(TypedCalls, AreOneForEachCommandInOrder)
{
    std::set<uint32_t> known;
    for (const CommandFacts& command : commandFacts_get()) {
        known.insert(command.number);
    }
    std::set<uint32_t> rows;
    for (const TypedCall& row : kTypedCalls) {
        EXPECT_TRUE(rows.empty() || *rows.rbegin() < row.command) << command_name(row.command);
        rows.insert(row.command);
    }
    EXPECT_EQ(difference_of(known, rows), "");
}

// A record of the type has room for all that the command reads or writes.
TEST_F(TypedCalls, TakeRecordsThatAreLongEnough)
{
    for (const TypedCall& row : kTypedCalls) {
        if (row.command != WR_CONTROL_BLOCK) {
            const CommandFacts* facts = commandFacts_find(row.command);
            ASSERT_NE(facts, nullptr) << hex_number(row.command);
            EXPECT_GE(row.size, facts->record) << facts->name;
            EXPECT_EQ(row.size == 0, facts->record == 0) << facts->name;
        }
    }
}

TEST_F(TypedCalls, DoWhatTheCommandDoes)
{
    constexpr uint32_t kStates = 300; // before a command is said never to succeed
    for (const TypedCall& row : kTypedCalls) {
        SCOPED_TRACE(command_name(row.command));
        const CommandFacts* facts = commandFacts_find(row.command);
        ASSERT_NE(facts, nullptr);
        bool succeeded = false;
        for (uint32_t state = 0; state < 4 || (!succeeded && state < kStates); ++state) {
            const Bytes before = record_draw(facts->record, state);
            const Run plain = run_of(row, before, state, false);
            const Run typed = run_of(row, before, state, true);
            EXPECT_EQ(typed.result, plain.result);
            EXPECT_EQ(typed.record, plain.record);
            EXPECT_EQ(typed.calls, plain.calls);
            succeeded = succeeded || (plain.result >= 0 && !plain.calls.empty());
        }
        EXPECT_TRUE(succeeded);
    }
}

} // namespace
