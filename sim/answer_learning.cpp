#include "sim/answer_learning.h"

#include <cstring>

namespace
{

template <class Number> Number number_at(const std::string& record, size_t offset)
{
    Number number;
    memcpy(&number, record.data() + offset, sizeof number);
    return number;
}

// What was asked for, and behind it what was told.
std::string joined(const std::string& before, const std::string& after, const RequestForm& form)
{
    std::string record = before;
    return record.replace(form.fills, form.fills_count, after, form.fills, form.fills_count);
}

void record_learn(FpgaModel& fpga, const RequestForm& form, const std::string& record)
{
    const auto first16 = number_at<uint16_t>(record, 0);
    const auto key = number_at<uint32_t>(record, 0);
    const std::string told = record.substr(form.fills, form.fills_count);
    switch (form.number) {
    case 0x6B01:
        fpga.device_info = told;
        break;
    case 0x6B23:
        fpga.own_address = told;
        break;
    case 0x6B39:
        fpga.addresses[key] = told;
        break;
    case 0x6B3E:
        fpga.unit_words[{key, number_at<uint16_t>(record, 8)}] = {number_at<uint16_t>(record, 4),
                                                                  number_at<uint16_t>(record, 6)};
        break;
    case 0x6B42:
        fpga.registers[key] = number_at<uint16_t>(record, 4);
        fpga.register_high = number_at<uint16_t>(record, 6);
        break;
    case 0x6B4A:
        fpga.id_entries[first16] = record;
        break;
    case 0x6B4C:
        fpga.id_values[key] = number_at<uint16_t>(record, 12);
        break;
    case 0x6B5C:
        fpga.own_address_set = told;
        break;
    case 0x6B5E:
        fpga.address_sets[key] = told;
        break;
    case 0x6B60:
        fpga.port_entries[first16] = number_at<uint16_t>(record, 4);
        break;
    case 0x6B67:
        fpga.address_pairs[key] = record;
        break;
    case 0x6B6A:
        fpga.rules[first16] = record;
        break;
    case 0x6B72:
        fpga.switch_ports[static_cast<uint8_t>(record[0])] = record;
        break;
    case 0x6B83:
        fpga.indexed_words[key] = number_at<uint32_t>(record, 4);
        break;
    case 0x6B85:
        fpga.address_table[key] = record;
        break;
    case 0x6B87:
    case 0x6B98:
        if (const auto number = number_at<uint16_t>(record, 2); number < 32) {
            fpga.phys[first16].at(number) = number_at<uint16_t>(record, 6);
        }
        break;
    case 0x6B9A:
    case 0x6BA0:
        (form.number == 0x6B9A ? fpga.counters
                               : fpga.counters_alt)[{key, number_at<uint32_t>(record, 8)}] =
            number_at<uint32_t>(record, 4);
        break;
    default:
        break;
    }
}

} // namespace

void fpgaAnswer_learn(FpgaModel& fpga, const RequestForm& form, const std::string& before,
                      const std::string& after)
{
    switch (form.argument) {
    case Argument::kWord:
        fpga.words[form.number] = number_at<uint16_t>(after, 0);
        break;
    case Argument::kMap:
        fpga.words[form.number] = number_at<uint32_t>(after, 0);
        break;
    case Argument::kRecord:
        if (form.fills_count > 0) {
            record_learn(fpga, form, joined(before, after, form));
        }
        break;
    case Argument::kValue:
    case Argument::kNothing:
        break;
    }
}
