// The device commands in stored order. The order is the system's own and is kept: the dispatcher
// scans from the top.
#include "device/dispatch/command_table.h"

#include "device/commands/address_entry.h"
#include "device/commands/address_pair.h"
#include "device/commands/address_table.h"
#include "device/commands/bandwidth.h"
#include "device/commands/channel_word.h"
#include "device/commands/counter.h"
#include "device/commands/device_word.h"
#include "device/commands/driver.h"
#include "device/commands/flag_set.h"
#include "device/commands/id_entry.h"
#include "device/commands/led_pattern.h"
#include "device/commands/led_read.h"
#include "device/commands/led_setter.h"
#include "device/commands/mode_switch.h"
#include "device/commands/mtu_datasize.h"
#include "device/commands/mtu_limit.h"
#include "device/commands/phy.h"
#include "device/commands/port.h"
#include "device/commands/prefix.h"
#include "device/commands/register.h"
#include "device/commands/register_block.h"
#include "device/commands/register_field.h"
#include "device/commands/rtc.h"
#include "device/commands/rule.h"
#include "device/commands/statistics.h"
#include "device/commands/status.h"
#include "device/commands/switch_tables.h"
#include "device/commands/unit.h"
#include "maint/commands/bandwidth.h"
#include "maint/commands/switch_tables.h"
#include "maint/typed_call.h"

namespace
{

// A row. Its procedure takes what the command's typed call takes, or it does not compile.
template <DeviceCommandCode kCode>
consteval DeviceCommand row(CommandCall<typename maint::Command<kCode>::Argument> call)
{
    static_assert(kCode <= UINT16_MAX);
    return {kCode, call};
}

template <class Call> constexpr bool kTaken = requires(Call call)
{
    row<WR_REGISTER>(call);
};
static_assert(kTaken<CommandCall<const RegisterValue*>>);
static_assert(!kTaken<CommandCall<RegisterValue*>> && !kTaken<CommandCall<const uint16_t*>>);

constexpr DeviceCommand kCommands[] = {
    row<RD_REGISTER>(call_of<read_register>()),
    row<WR_REGISTER>(call_of<write_register>()),
    row<RD_DEVICE_INFO>(call_of<read_device_info>()),
    row<RD_STATUS_WORD_FLAG>(call_of<read_status_word_flag>()),
    row<RD_STATUS_INPUTS>(call_of<read_status_inputs>()),
    row<RD_CONTROL_BITS>(call_of<read_control_bits>()),
    row<WR_CONTROL_BITS>(call_of<write_control_bits>()),
    row<RD_PORT_FLAGS>(call_of<read_port_flags>()),
    row<WR_PORT_FLAGS>(call_of<write_port_flags>()),
    row<RD_BANDWIDTH>(call_of<read_bandwidth>()),
    row<WR_BANDWIDTH>(call_of<write_bandwidth>()),
    row<RD_ENABLE_FLAG>(call_of<read_enable_flag>()),
    row<WR_ENABLE_FLAG>(call_of<write_enable_flag>()),
    row<RD_LED_STATE>(call_of<read_led_state>()),
    row<WR_LED_A>(call_of<write_led_a>()),
    row<WR_LED_B>(write_led_b),
    row<WR_LED_C>(call_of<write_led_c>()),
    row<WR_LED_D>(write_led_d),
    row<WR_LED_E>(write_led_e),
    row<WR_LINE_MODE>(call_of<write_line_mode>()),
    row<WR_LED_GROUP_1>(call_of<write_led_group_1>()),
    row<WR_LED_GROUP_3>(write_led_group_3),
    row<WR_LED_GROUP_4>(write_led_group_4),
    row<WR_LED_GROUP_5>(write_led_group_5),
    row<WR_LED_GROUP_6>(write_led_group_6),
    row<WR_LED_GROUP_7>(call_of<write_led_group_7>()),
    row<WR_LINE_FLAGS>(call_of<write_line_flags>()),
    row<RD_CHANNEL_WORD>(call_of<read_channel_word>()),
    row<WR_CHANNEL_WORD>(call_of<write_channel_word>()),
    row<RD_PHY_STATUS>(call_of<read_phy>()),
    row<WR_PHY_CONFIG>(call_of<write_phy_config>()),
    row<RD_ID_REGISTERS>(call_of<read_id_registers>()),
    row<RD_ADDR_ENTRY>(call_of<read_addr_entry>()),
    row<WR_ADDR_ENTRY>(call_of<write_addr_entry>()),
    row<WR_ADDR_ENTRY_VALUE>(call_of<write_addr_entry_value>()),
    row<RD_ADDR_SET>(call_of<read_addr_set>()),
    row<WR_ADDR_SET>(call_of<write_addr_set>()),
    row<WR_ADDR_SET_VALUE>(call_of<write_addr_set_value>()),
    row<RD_DEVICE_WORD_27>(read_device_word_27),
    row<WR_DEVICE_WORD_28>(write_device_word_28),
    row<RD_DEVICE_WORD_29>(read_device_word_29),
    row<WR_DEVICE_WORD_2A>(write_device_word_2a),
    row<RD_GROUP_FLAG>(call_of<read_group_flag>()),
    row<WR_GROUP_FLAG>(call_of<write_group_flag>()),
    row<RD_UNIT_STATUS_MAP>(call_of<read_unit_status_map>()),
    row<RD_UNIT_STATUS_FLAG>(call_of<read_unit_status_flag>()),
    row<RD_DEVICE_WORD_40>(call_of<read_device_word_40>()),
    row<WR_DEVICE_WORD_41>(write_device_word_41),
    row<RD_DEVICE_WORD_21>(call_of<read_device_word_21>()),
    row<WR_DEVICE_WORD_22>(call_of<write_device_word_22>()),
    row<RD_DEVICE_WORD_03>(read_device_word_03),
    row<WR_DEVICE_WORD_04>(write_device_word_04),
    row<RD_DEVICE_WORD_48>(call_of<read_device_word_48>()),
    row<WR_DEVICE_WORD_49>(call_of<write_device_word_49>()),
    row<RD_DEVICE_WORD_3B>(read_device_word_3b),
    row<RD_MTU_LIMIT>(call_of<read_mtu_limit>()),
    row<WR_MTU_LIMIT>(call_of<write_mtu_limit>()),
    row<RD_DEVICE_WORD_35>(call_of<read_device_word_35>()),
    row<WR_DEVICE_WORD_36>(call_of<write_device_word_36>()),
    row<RD_MTU_DATASIZE>(call_of<read_mtu_datasize>()),
    row<WR_MTU_DATASIZE>(call_of<write_mtu_datasize>()),
    row<RD_VLANT_MAP_ENABLE>(call_of<read_vlant_map_enable>()),
    row<WR_VLANT_MAP_ENABLE>(call_of<write_vlant_map_enable>()),
    row<RD_REG_DA_LATCHED>(call_of<read_reg_da_latched>()),
    row<RD_ID_ENTRY>(call_of<read_id_entry>()),
    row<WR_ID_ENTRY>(call_of<write_id_entry>()),
    row<RD_ID_ENTRY_VALUE>(call_of<read_id_entry_value>()),
    row<RD_DEVICE_WORD_4E>(read_device_word_4e),
    row<RD_MODE_SWITCH>(call_of<read_mode_switch>()),
    row<WR_MODE_SWITCH>(call_of<write_mode_switch>()),
    row<RD_REG132_VALUE>(read_reg132_value),
    row<WR_REG132_VALUE>(write_reg132_value),
    row<RD_ADDR_TABLE_ENTRY>(call_of<read_addr_table_entry>()),
    row<WR_ADDR_TABLE_ENTRY>(call_of<write_addr_table_entry>()),
    row<WR_ADDR_TABLE_DELETE>(call_of<write_addr_table_delete>()),
    row<RD_PREFIX0_LENGTH>(call_of<read_prefix0_length>()),
    row<WR_PREFIX0>(write_prefix0),
    row<RD_PREFIX1>(call_of<read_prefix1>()),
    row<WR_PREFIX1>(write_prefix1),
    row<RD_REG110_BYTES>(call_of<read_reg110_bytes>()),
    row<WR_REG110_BYTES>(call_of<write_reg110_bytes>()),
    row<RD_REG11E_BIT0>(read_reg11e_bit0),
    row<WR_REG11E_BIT0>(write_reg11e_bit0),
    row<RD_INDEXED_WORD>(call_of<read_indexed_word>()),
    row<WR_INDEXED_WORD>(call_of<write_indexed_word>()),
    row<RD_REGE0_BLOCK>(call_of<read_rege0_block>()),
    row<WR_REGE0_BLOCK>(call_of<write_rege0_block>()),
    row<RD_REGF4_FLAGS>(call_of<read_regf4_flags>()),
    row<RD_REG168_MODE>(call_of<read_reg168_mode>()),
    row<WR_REG168_MODE>(call_of<write_reg168_mode>()),
    row<RD_REG168_SELECT>(call_of<read_reg168_select>()),
    row<WR_REG168_SELECT>(call_of<write_reg168_select>()),
    row<RD_REG168_VALUE>(read_reg168_value),
    row<WR_REG168_VALUE>(write_reg168_value),
    row<RD_REG16A_BLOCK>(call_of<read_reg16a_block>()),
    row<WR_REG16A_BLOCK>(call_of<write_reg16a_block>()),
    row<RD_REG158_BIT5>(read_reg158_bit5),
    row<WR_REG158_BIT5>(write_reg158_bit5),
    row<RD_REG158_BIT6>(read_reg158_bit6),
    row<WR_REG158_BIT6>(write_reg158_bit6),
    row<RD_REG158_BIT7>(read_reg158_bit7),
    row<WR_REG158_BIT7>(write_reg158_bit7),
    row<RD_REG158_BIT15>(read_reg158_bit15),
    row<WR_REG158_BIT15>(write_reg158_bit15),
    row<RD_REG158_BIT14>(read_reg158_bit14),
    row<WR_REG158_BIT14>(write_reg158_bit14),
    row<RD_REG158_STATE>(call_of<read_reg158_state>()),
    row<WR_REG158_STATE>(call_of<write_reg158_state>()),
    row<RD_REG158_BIT8>(read_reg158_bit8),
    row<RD_REG158_BIT4>(read_reg158_bit4),
    row<WR_REG158_BIT4>(write_reg158_bit4),
    row<RD_REG158_BIT3>(read_reg158_bit3),
    row<WR_REG158_BIT3>(write_reg158_bit3),
    row<RD_REG158_BIT2>(read_reg158_bit2),
    row<WR_REG158_BIT2>(write_reg158_bit2),
    row<RD_REG158_BIT1>(read_reg158_bit1),
    row<WR_REG158_BIT1>(write_reg158_bit1),
    row<RD_REG158_BIT0>(read_reg158_bit0),
    row<WR_REG158_BIT0>(write_reg158_bit0),
    row<RD_REG15A_FIELDS>(call_of<read_reg15a_fields>()),
    row<WR_REG15A_FIELDS>(call_of<write_reg15a_fields>()),
    row<RD_REG15C_PAIR>(call_of<read_reg15c_pair>()),
    row<WR_REG15C_PAIR>(call_of<write_reg15c_pair>()),
    row<RD_REG16E_BLOCK>(call_of<read_reg16e_block>()),
    row<WR_REG16E_BLOCK>(call_of<write_reg16e_block>()),
    row<WR_LED_PATTERN_3>(write_led_pattern_3),
    row<WR_LED_PATTERN_2>(write_led_pattern_2),
    row<WR_LED_RESTORE>(call_of<write_led_restore>()),
    row<WR_LED_PATTERN_1>(write_led_pattern_1),
    row<RD_REGFE_MODE>(call_of<read_regfe_mode>()),
    row<WR_REGFE_MODE>(call_of<write_regfe_mode>()),
    row<RD_REGFE_NIBBLE>(read_regfe_nibble),
    row<WR_REGFE_NIBBLE>(write_regfe_nibble),
    row<RD_REG44_FLAG>(read_reg44_flag),
    row<WR_REG44_FLAG>(write_reg44_flag),
    row<RD_PORT_ENTRY>(call_of<read_port_entry>()),
    row<WR_PORT_ENTRY>(call_of<write_port_entry>()),
    row<WR_PORT_ENTRY_RANGED>(call_of<write_port_entry_ranged>()),
    row<RD_PORT_MASK>(call_of<read_port_mask>()),
    row<WR_PORT_MASK_BIT>(call_of<write_port_mask_bit>()),
    row<WR_STATISTICS_SAVE>(call_of<write_statistics_save>()),
    row<WR_STATISTICS_CLEAR>(call_of<write_statistics_clear>()),
    row<RD_FLAG_SET>(call_of<read_flag_set>()),
    row<WR_FLAG_SET>(call_of<write_flag_set>()),
    row<RD_ADDR_PAIR>(call_of<read_addr_pair>()),
    row<WR_ADDR_PAIR>(call_of<write_addr_pair>()),
    row<WR_ADDR_PAIR_COPY>(call_of<write_addr_pair>()),
    row<WR_PAIR_ENABLE>(call_of<write_pair_enable>()),
    row<RD_CONTROL_WORD>(read_control_word),
    row<WR_CONTROL_BLOCK>(write_control_block),
    row<WR_KEY_BYTES>(call_of<write_key_bytes>()),
    row<WR_CONTROL_BIT7_CLEAR>(call_of<write_control_bit7_clear>()),
    row<WR_BYTE_ACTION>(write_byte_action),
    row<WR_PAIR_WORDS>(write_pair_words),
    row<WR_WORD_ACTION>(write_word_action),
    row<RD_RULE_ENTRY>(call_of<read_rule_entry>()),
    row<WR_RULE_ENTRY>(call_of<write_rule_entry>()),
    row<WR_RULE_DELETE>(call_of<write_rule_delete>()),
    row<WR_SWITCH_TABLES_1>(write_switch_tables_1),
    row<WR_SWITCH_TABLES_2>(write_switch_tables_2),
    row<RD_RTC_TIME>(call_of<read_rtc_time>()),
    row<WR_RTC_TIME>(call_of<write_rtc_time>()),
    row<RD_RTC_STATUS>(call_of<read_rtc_status>()),
    row<WR_RTC_STATUS>(call_of<write_rtc_status>()),
    row<RD_SERIAL_NUMBER>(call_of<read_serial_number>()),
    row<RD_PORT_STATE_CODE>(call_of<read_port_state_code>()),
    row<RD_STATUS_BIT>(call_of<read_status_bit>()),
    row<WR_STATUS_WORD>(write_status_word),
    row<RD_COUNTER>(read_counter),
    row<WR_COUNTER>(write_counter),
    row<RD_COUNTER_ALT>(read_counter_alt),
    row<WR_COUNTER_ALT>(write_counter_alt),
    row<WR_COUNTER_BLOCK_SMALL>(write_counter_block_small),
    row<WR_COUNTER_BLOCK_LARGE>(write_counter_block_large),
    row<WR_PORT_BIT_SET>(write_port_bit_set),
    row<WR_PORT_BIT_CLEAR>(write_port_bit_clear),
    row<RD_PHY_REGISTER>(call_of<read_phy_register>()),
    row<WR_PHY_REGISTER>(call_of<write_phy_register>()),
    row<RD_EXT_STATUS_A>(read_ext_status_a),
    row<WR_EXT_CONTROL_A>(write_ext_control_a),
    row<RD_EXT_STATUS_B>(read_ext_status_b),
    row<WR_EXT_CONTROL_B>(write_ext_control_b),
    row<RD_REG1B4_BIT0>(read_reg1b4_bit0),
    row<WR_REG1B4_BIT0>(write_reg1b4_bit0),
    row<RD_DRIVER_STATE>(call_of<read_driver_state>()),
    row<RD_REG158_BIT10>(read_reg158_bit10),
    row<WR_REG158_BIT10>(write_reg158_bit10),
    row<RD_REG16C_ENABLE>(call_of<read_reg16c_enable>()),
    row<WR_REG16C_ENABLE>(call_of<write_reg16c_enable>()),
};

} // namespace

std::span<const DeviceCommand> commandTable_get()
{
    return kCommands;
}
