// The catalogue's fields against a table of what each command takes and gives, typed in a second
// time: direction, kind, range, codes, unit, and what a report sweeps.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "catalogue/catalogue.h"
#include "device/command_facts.h"

namespace
{

// The fields that a command uses, in the order of the record, with blanks between:
//   > in, < out, <> both; name; ':'; kind; range; '*' and how many; unit; role
// Kinds: n number, x hexadecimal number, f flag, bN bits 0 to N - 1, c(name=code,...) code,
// ip IPv4, mac six-byte address, tN N characters, byN N bytes. A range stands there where the width
// alone does not say it. !own: the unit's own identifier; @first-last/step: the sweep of a report;
// !any: as many bytes as the driver takes.
const std::string kFour = "c(off=0,on=1,calm=2,alert=3)";
const std::string kThree = "c(off=0,on=1,pattern=2)";
const std::string kSwitchPort = ">set:c(port1=1,port2=2,port4=4)";
const std::string kPhy = ">port:n[0-6]";
const std::string kOwnAndId = ">own_id:n!own >id:n[1-30]";
const std::string kTable = ">table:c(large=0,small=1)";
const std::string kTotals =
    "<kept_0:x*2 <kib_b:n*30KiB <kib_a:n*30KiB <kept_248:x*2 <rest_b:n[0-1023]*30bytes "
    "<rest_a:n[0-1023]*30bytes";
const std::string kRule =
    "address_a:ip address_b:ip address_6_a:mac address_6_b:mac value:x class_code:n[0-4] byte_e:x "
    "prefix_a:n prefix_b:n word_c:x word_d:x companion_c:x companion_d:x switches:f*4";

// The same, each with this direction before it.
std::string directed(const char* direction, const std::string& fields)
{
    std::string text = direction;
    for (const char c : fields) {
        text += c;
        text += c == ' ' ? direction : "";
    }
    return text;
}

const std::map<uint32_t, std::string> kFields{
    // unit
    {RD_DEVICE_INFO, "<bytes:by4 <text:t4"},
    {RD_ID_REGISTERS, "<value:x*7"},
    {RD_UNIT_STATUS_MAP, "<value:b32"},
    {RD_UNIT_STATUS_FLAG, "<status:f >unit:n@0-31"},
    {RD_SERIAL_NUMBER, "<text:t9"},
    // status
    {RD_STATUS_WORD_FLAG, "<value:f"},
    {RD_STATUS_INPUTS, "<input:f*4"},
    {RD_STATUS_BIT, ">bit:n[0-31]@0-31 <result:x"},
    {WR_STATUS_WORD, ">value:x"},
    // port
    {RD_PORT_FLAGS, "<flags:f*10"},
    {WR_PORT_FLAGS, ">mask:b10 >flags:f*10"},
    {RD_PORT_ENTRY, ">port:n@0-31 >flag:f >index:n@0-7 <value:x"},
    {WR_PORT_ENTRY, ">port:n >flag:f >index:n >value:x"},
    {WR_PORT_ENTRY_RANGED, ">port:n[1-29] >flag:f >index:n >value:x"},
    {RD_PORT_MASK, "<mask:b32"},
    {WR_PORT_MASK_BIT, ">port:n[1-29] >value:f <mask:b32"},
    {WR_PORT_BIT_SET, ">port:n[1-29]"},
    {WR_PORT_BIT_CLEAR, ">port:n[1-29]"},
    {RD_PORT_STATE_CODE, ">port:n[0-31]@0-31 <>code:n"},
    // phy
    {RD_PHY_STATUS, kPhy + "@0-6 <autoneg:f <link:f <>speed100:f <>full_duplex:f <extra:f"},
    {WR_PHY_CONFIG, kPhy + " >autoneg:f >switch_flag:n >speed100:f >full_duplex:f >extra:f"},
    {RD_PHY_REGISTER, kPhy + "@0-6 >number:n[0-31]@0-31 <value:x"},
    {WR_PHY_REGISTER, kPhy + " >number:n[0-31] >value:x"},
    // bandwidth
    {RD_BANDWIDTH, "<value:n[0-20]"},
    {WR_BANDWIDTH, ">value:n[0-20]"},
    // mtu
    {RD_MTU_LIMIT, "<frame_size:nbytes <limit:nbytes"},
    {WR_MTU_LIMIT, ">value:f"},
    {RD_MTU_DATASIZE, "<size:n*3bytes <data_size:n*3bytes <line_size:n*3bytes <kept:n"},
    {WR_MTU_DATASIZE, ">size:n*3bytes <data_size:n*3bytes <line_size:n*3bytes >kept:n"},
    // led
    {RD_LED_STATE,
     ">ownId:n[1-30]!own >targetId:n[1-30]@1-30 <ledA:" + kFour + " <ledB:" + kThree +
         " <ledC:" + kThree + " <ledD:" + kThree + " <ledE:" + kThree + " <ledF:" + kThree +
         " <group1.element:f*3 <group2.element:f*3 <group3.element:f*3 <group4.element:f*3 "
         "<group5.element:f*3 <group6.element:f*3 <group7.element:f*3"},
    {WR_LED_A, ">ledA:" + kFour},
    {WR_LED_B, ">ledB:" + kThree},
    {WR_LED_C, ">ledC:" + kThree},
    {WR_LED_D, ">ledD:" + kThree},
    {WR_LED_E, ">ledE:" + kThree},
    {WR_LINE_MODE, ">ledF:" + kThree},
    {WR_LED_GROUP_1, ">group1.valid:b3 >group1.element:f*3"},
    {WR_LINE_FLAGS, ">group2.valid:b3 >group2.element:f*3"},
    {WR_LED_GROUP_3, ">group3.valid:b3 >group3.element:f*3"},
    {WR_LED_GROUP_4, ">group4.valid:b3 >group4.element:f*3"},
    {WR_LED_GROUP_5, ">group5.valid:b3 >group5.element:f*3"},
    {WR_LED_GROUP_6, ">group6.valid:b3 >group6.element:f*3"},
    {WR_LED_GROUP_7, ">group7.valid:b3 >group7.element:f*3"},
    {WR_LED_PATTERN_1, ""},
    {WR_LED_PATTERN_2, ""},
    {WR_LED_PATTERN_3, ""},
    {WR_LED_RESTORE,
     "<ownId:n[1-30]!own <targetId:n[1-30] <ledA:" + kFour + " <ledB:" + kThree +
         " <ledC:" + kThree + " <ledD:" + kThree + " <ledE:" + kThree + " <ledF:" + kThree +
         " <group1.valid:b3 <group1.element:f*3 <group2.valid:b3 <group2.element:f*3 "
         "<group3.valid:b3 <group3.element:f*3 <group4.valid:b3 <group4.element:f*3 "
         "<group5.valid:b3 <group5.element:f*3 <group6.valid:b3 <group6.element:f*3 "
         "<group7.valid:b3 <group7.element:f*3"},
    // device_word
    {RD_CONTROL_BITS, "<flags:f*2"},
    {WR_CONTROL_BITS, ">flags:f*3"},
    {RD_ENABLE_FLAG, "<value:f"},
    {WR_ENABLE_FLAG, ">value:f"},
    {RD_DEVICE_WORD_27, "<value:x"},
    {WR_DEVICE_WORD_28, ">value:x"},
    {RD_DEVICE_WORD_29, "<value:n"},
    {WR_DEVICE_WORD_2A, ">value:x"},
    {RD_GROUP_FLAG, "<value:f"},
    {WR_GROUP_FLAG, ">value:f"},
    {RD_DEVICE_WORD_40, "<value:x"},
    {WR_DEVICE_WORD_41, ">value:x"},
    {RD_DEVICE_WORD_21, "<value:x"},
    {WR_DEVICE_WORD_22, ">value:x"},
    {RD_DEVICE_WORD_03, "<value:x"},
    {WR_DEVICE_WORD_04, ">value:x"},
    {RD_DEVICE_WORD_48, "<value:c(2=2,4=4,8=8)"},
    {WR_DEVICE_WORD_49, ">value:c(2=2,4=4,8=8)"},
    {RD_DEVICE_WORD_3B, "<value:b32"},
    {RD_DEVICE_WORD_35, "<value:f"},
    {WR_DEVICE_WORD_36, ">value:f"},
    {RD_VLANT_MAP_ENABLE, "<value:f"},
    {WR_VLANT_MAP_ENABLE, ">value:f"},
    {RD_DEVICE_WORD_4E, "<value:x"},
    {RD_INDEXED_WORD, ">index:n@0-15 <value:x"},
    {WR_INDEXED_WORD, ">index:n >value:x"},
    // channel_word, mode_switch, id_entry
    {RD_CHANNEL_WORD, ">id:n@1-30 <value:x"},
    {WR_CHANNEL_WORD, ">value:x"},
    {RD_MODE_SWITCH, "<value:f"},
    {WR_MODE_SWITCH, ">value:f"},
    {RD_ID_ENTRY, ">id:n[1-30]@1-30 >field_b:n >field_c:n"},
    {WR_ID_ENTRY, ">id:n[1-30] >mask:b3 >field_a:n >field_b:n[0-4095] >field_c:n[0-7]"},
    {RD_ID_ENTRY_VALUE, kOwnAndId + "@1-30 <value:n"},
    // address_entry, address_pair, address_table
    {RD_ADDR_ENTRY, kOwnAndId + "@1-30 <bytes:ip <number:x"},
    {WR_ADDR_ENTRY, kOwnAndId + " >bytes:ip"},
    {WR_ADDR_ENTRY_VALUE, kOwnAndId + " >bytes:ip"},
    {RD_ADDR_SET, kOwnAndId + "@1-30 <bytes:ip*4 <number:x*4"},
    {WR_ADDR_SET, kOwnAndId + " >bytes:ip*4"},
    {WR_ADDR_SET_VALUE, kOwnAndId + " >bytes:ip*4"},
    {RD_ADDR_PAIR, ">index:n[0-63]@0-63 <address:ip <address_6:mac"},
    {WR_ADDR_PAIR, ">index:n[0-63] >address:ip >address_6:mac"},
    {WR_ADDR_PAIR_COPY, ">index:n[0-63] >address:ip >address_6:mac"},
    {WR_PAIR_ENABLE, ">value:f"},
    {RD_ADDR_TABLE_ENTRY,
     ">index:n[0-127]@0-127 <address:ip <address_6:mac <attribute:x " + kTable + "@0-1"},
    {WR_ADDR_TABLE_ENTRY,
     ">index:n[0-127] >valid:b3 >address:ip >address_6:mac >attribute:x " + kTable},
    {WR_ADDR_TABLE_DELETE, ">index:n[0-127] " + kTable},
    // prefix, rule, flag_set
    {RD_PREFIX0_LENGTH, "<set0.length:n[0-32]"},
    {WR_PREFIX0, ">set0.valid:b2 >set0.address:ip >set0.length:n[0-32]"},
    {RD_PREFIX1, "<set1.address:ip <set1.length:n[0-32]"},
    {WR_PREFIX1, ">set1.valid:b2 >set1.address:ip >set1.length:n[0-32]"},
    {RD_RULE_ENTRY, "<>index:n[0-127]@0-127 <enabled:n " + directed("<", kRule)},
    {WR_RULE_ENTRY, ">index:n[0-127] " + directed(">", kRule)},
    {WR_RULE_DELETE, ">value:n[0-127]"},
    {RD_FLAG_SET, kSwitchPort + "@1-4 <flags:f*7"},
    {WR_FLAG_SET, kSwitchPort + " >valid:b7 >flags:f*7"},
    // switch_tables
    {WR_SWITCH_TABLES_1, ""},
    {WR_SWITCH_TABLES_2, ""},
    // register, register_field
    {RD_REG_DA_LATCHED, "<value:x[0-255]"},
    {RD_REGISTER, ">address:x@0-510/2 <value:x"},
    {WR_REGISTER, ">address:x >value:x"},
    {RD_REG132_VALUE, "<value:n[0-127]"},
    {WR_REG132_VALUE, ">value:n[0-127]"},
    {RD_REG110_BYTES, "<bytes:by4"},
    {WR_REG110_BYTES, ">bytes:by4"},
    {RD_REGF4_FLAGS, "<flags:f*8"},
    {RD_REG168_MODE, "<value:n[1-4]"},
    {WR_REG168_MODE, "<>mode:n[1-4] >bracket:n"},
    {RD_REG168_SELECT, ">index:n[0-3]@0-3 <value:f"},
    {WR_REG168_SELECT, ">index:n[0-3] >value:f"},
    {RD_REG168_VALUE, "<value:n[0-255]"},
    {WR_REG168_VALUE, ">value:n[0-255]"},
    {RD_REG158_BIT0, "<value:f"},
    {WR_REG158_BIT0, ">value:f"},
    {RD_REG158_BIT1, "<value:f"},
    {WR_REG158_BIT1, ">value:f"},
    {RD_REG158_BIT2, "<value:f"},
    {WR_REG158_BIT2, ">value:f"},
    {RD_REG158_BIT3, "<value:f"},
    {WR_REG158_BIT3, ">value:f"},
    {RD_REG158_BIT4, "<value:f"},
    {WR_REG158_BIT4, ">value:f"},
    {RD_REG158_BIT5, "<value:f"},
    {WR_REG158_BIT5, ">value:f"},
    {RD_REG158_BIT6, "<value:f"},
    {WR_REG158_BIT6, ">value:f"},
    {RD_REG158_BIT7, "<value:f"},
    {WR_REG158_BIT7, ">value:f"},
    {RD_REG158_BIT8, "<value:f"},
    {RD_REG158_BIT10, "<value:f"},
    {WR_REG158_BIT10, ">value:f"},
    {RD_REG158_BIT14, "<value:f"},
    {WR_REG158_BIT14, ">value:f"},
    {RD_REG158_BIT15, "<value:f"},
    {WR_REG158_BIT15, ">value:f"},
    {RD_REG158_STATE, "<value:n[0-2]"},
    {WR_REG158_STATE, ">value:n[0-2]"},
    {RD_REG15A_FIELDS, "<a:n[0-7] <b:x"},
    {WR_REG15A_FIELDS, ">valid:b2 >a:n[0-7] >b:x[0-7]"},
    {RD_REG15C_PAIR, "<a:x <b:x"},
    {WR_REG15C_PAIR, ">valid:b2 >a:x >b:x"},
    {RD_REG11E_BIT0, "<value:f"},
    {WR_REG11E_BIT0, ">value:f"},
    {RD_REGFE_MODE, "<value:n[0-2]"},
    {WR_REGFE_MODE, ">value:n[0-2]"},
    {RD_REGFE_NIBBLE, "<value:n[0-15]"},
    {WR_REGFE_NIBBLE, ">value:n[0-15]"},
    {RD_REG44_FLAG, "<value:f"},
    {WR_REG44_FLAG, ">value:f"},
    {RD_REG16C_ENABLE, "<value:f"},
    {WR_REG16C_ENABLE, ">value:f"},
    {RD_REG1B4_BIT0, "<value:f"},
    {WR_REG1B4_BIT0, ">value:f"},
    // register_block
    {RD_REGE0_BLOCK, "<enable:f <address:mac <word:x <first:x <second:x <field_3:n[0-7] "
                     "<field_5:n[0-31]"},
    {WR_REGE0_BLOCK, ">valid:b7 >enable:f >address:mac >word:x >first:x >second:x "
                     ">field_3:n[0-7] >field_5:n[0-31]"},
    {RD_REG16A_BLOCK, ">index:n[0-3]@0-3 <flag_a:f <flag_b:f <data:by6"},
    {WR_REG16A_BLOCK, ">index:n[0-3] >valid:b3 >flag_a:f >flag_b:f >data:by6"},
    {RD_REG16E_BLOCK, "<flag_a:f <flag_b:f <first:ip <second:ip"},
    {WR_REG16E_BLOCK, ">valid:b4 >flag_a:f >flag_b:f >first:ip >second:ip"},
    // counter, statistics
    {RD_COUNTER, ">index:n <value:n >selector:n"},
    {WR_COUNTER, ">index:n >value:n >selector:n"},
    {RD_COUNTER_ALT, ">index:n <value:n >selector:n"},
    {WR_COUNTER_ALT, ">index:n >value:n >selector:n"},
    {WR_COUNTER_BLOCK_LARGE, ">bytes:by160"},
    {WR_COUNTER_BLOCK_SMALL, ">bytes:by68"},
    {WR_STATISTICS_SAVE, kTotals},
    {WR_STATISTICS_CLEAR, kTotals},
    // driver
    {RD_CONTROL_WORD, "<value:x"},
    {WR_CONTROL_BLOCK, ">bytes:by496!any"},
    {WR_KEY_BYTES, ">number:n >bytes:by4"},
    {WR_CONTROL_BIT7_CLEAR, "<value:x"},
    {WR_BYTE_ACTION, ">value:x"},
    {WR_PAIR_WORDS, ">words:x*2"},
    {WR_WORD_ACTION, ">value:x"},
    {RD_DRIVER_STATE, "<value:x"},
    {RD_EXT_STATUS_A, "<value:x"},
    {WR_EXT_CONTROL_A, ">value:x"},
    {RD_EXT_STATUS_B, "<value:x"},
    {WR_EXT_CONTROL_B, ">value:x"},
    // rtc
    {RD_RTC_TIME, "<year:n <month:n[1-12] <day:n[1-31] <hour:n[0-23] <minute:n[0-59] "
                  "<second:n[0-59] <weekday:n[0-6]"},
    {WR_RTC_TIME, ">year:n >month:n[1-12] >day:n[1-31] >hour:n[0-23] >minute:n[0-59] "
                  ">second:n[0-59]"},
    {RD_RTC_STATUS, "<value:x"},
    {WR_RTC_STATUS, ">value:x"},
};

std::string kind_of(const Field& field)
{
    switch (field.kind) {
    case Kind::kNumber:
        return "n";
    case Kind::kHex:
        return "x";
    case Kind::kFlag:
        return "f";
    case Kind::kBits:
        for (unsigned bits = 1; bits <= 32; ++bits) {
            if (field.most == (uint64_t{1} << bits) - 1) {
                return "b" + std::to_string(bits);
            }
        }
        return "b?";
    case Kind::kCode: {
        std::string text;
        for (const CodeName& code : field.codes()) {
            text += (text.empty() ? "" : ",") + std::string(code.name) + "=" +
                    std::to_string(code.code);
        }
        return "c(" + text + ")";
    }
    case Kind::kIpv4:
        return "ip";
    case Kind::kAddress6:
        return "mac";
    case Kind::kText:
        return "t" + std::to_string(field.width);
    case Kind::kBytes:
        return "by" + std::to_string(field.width);
    }
    return "?";
}

std::string text_of(const CommandDescription& command, size_t number)
{
    const Field& field = command.fields()[number];
    const bool in = field_in(command.in, number);
    std::string text = field_in(command.out, number) ? "<" : "";
    text += in ? ">" : "";
    text += std::string(field.name) + ":" + kind_of(field);
    const bool is_number = field.kind == Kind::kNumber || field.kind == Kind::kHex;
    const uint64_t widest = is_number ? (uint64_t{1} << 8 * field.width) - 1 : 0;
    if (is_number && (field.least != 0 || field.most != widest)) {
        text += "[" + std::to_string(field.least) + "-" + std::to_string(field.most) + "]";
    }
    text += field.count != 1 ? "*" + std::to_string(field.count) : "";
    text += unit_name(field.unit);
    text += field.role == Role::kOwnId ? "!own" : "";
    text += field.role == Role::kDriverSized ? "!any" : "";
    if (field.role == Role::kIndex && in && command.name[0] == 'R') {
        text += "@" + std::to_string(field.sweep.first) + "-" + std::to_string(field.sweep.last);
        text += field.sweep.step != 1 ? "/" + std::to_string(field.sweep.step) : "";
    }
    return text;
}

TEST(CatalogueFields, AreWhatTheCommandsTakeAndGive)
{
    EXPECT_EQ(kFields.size(), commandFacts_get().size());
    for (const CommandFacts& facts : commandFacts_get()) {
        const CommandDescription* command = command_find(facts.number);
        ASSERT_NE(command, nullptr) << facts.name;
        const auto row = kFields.find(facts.number);
        ASSERT_NE(row, kFields.end()) << facts.name;
        std::string text;
        for (size_t i = 0; i < command->fields().size(); ++i) {
            if (field_in(command->in | command->out, i)) {
                text += (text.empty() ? "" : " ") + text_of(*command, i);
            }
        }
        EXPECT_EQ(text, row->second) << facts.name;
    }
}

} // namespace
