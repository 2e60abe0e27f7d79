#include "sim/fpga_model.h"

#include <cstring>

namespace
{

constexpr int kFiller = 0xEE; // of what is longer than its word

template <class Number> Number number_at(const char* record, size_t offset)
{
    Number number;
    memcpy(&number, record + offset, sizeof number);
    return number;
}

template <class Number> void number_put(char* record, size_t offset, Number number)
{
    memcpy(record + offset, &number, sizeof number);
}

void bytes_put(char* record, size_t offset, const FpgaModel::Record& held, size_t from,
               size_t count)
{
    if (held.empty()) {
        memset(record + offset, 0, count);
    } else {
        memcpy(record + offset, held.data() + from, count);
    }
}

// What a table holds under a key. Reading adds no entry to it: a state is what was put or written.
template <class Table, class Key>
typename Table::mapped_type held(const Table& table, const Key& key)
{
    const auto entry = table.find(key);
    return entry == table.end() ? typename Table::mapped_type{} : entry->second;
}

// A word that is written with a request of its own shows under the request that reads it.
uint32_t word_of_write(uint32_t request)
{
    switch (request) {
    case 0x6B28: // 0x6B27, 0x6B29, 0x6B40 and 0x6B21 are read with the number before
    case 0x6B2A:
    case 0x6B41:
    case 0x6B22:
    case 0x6B04:
    case 0x6B08:
    case 0x6B0A:
    case 0x6B0C:
    case 0x6B10:
    case 0x6B12:
    case 0x6B2E:
    case 0x6B36:
    case 0x6B49:
    case 0x6B50:
    case 0x6B52:
    case 0x6B6F:
    case 0x6B8E:
    case 0x6BA4:
    case 0x6BA6:
        return request - 1;
    default:
        return request; // write-only: shows under its own number
    }
}

} // namespace

int FpgaModel::serve(const RequestForm& form, char* record, uint32_t value)
{
    const auto forced = results.find(form.number);
    if (forced != results.end() && forced->second < 0 && !fills_when_failing) {
        return forced->second;
    }
    switch (form.argument) {
    case Argument::kWord:
        long_fill(form.number, record);
        number_put(record, 0, static_cast<uint16_t>(held(words, form.number)));
        break;
    case Argument::kMap:
        long_fill(form.number, record);
        number_put(record, 0, held(words, form.number));
        break;
    case Argument::kValue:
        words[word_of_write(form.number)] =
            form.size == 4 ? value : value & ((1U << (8 * form.size)) - 1);
        break;
    case Argument::kRecord:
        serve_record(form, record);
        if (answered) {
            answered(form.number, record);
        }
        break;
    case Argument::kNothing:
        break;
    }
    return forced == results.end() ? 0 : forced->second;
}

void FpgaModel::long_fill(uint32_t request, char* record) const
{
    const auto longer = filled.find(request);
    if (longer != filled.end()) {
        memset(record, kFiller, longer->second);
    }
}

void FpgaModel::serve_record(const RequestForm& form, char* record)
{
    const uint32_t request = form.number;
    const auto first16 = number_at<uint16_t>(record, 0);
    const uint32_t key = form.size < sizeof key ? first16 : number_at<uint32_t>(record, 0);
    switch (request) {
    case 0x6B01:
        bytes_put(record, 0, device_info, 0, 8);
        break;
    case 0x6B22:
    case 0x6B41:
    case 0x6B62:
    case 0x6B6F:
    case 0x6BA4:
    case 0x6BA6:
        words[word_of_write(request)] = first16;
        break;
    case 0x6B23:
        bytes_put(record, 0, own_address, 0, 4);
        break;
    case 0x6B24:
        own_address.assign(record, 4);
        break;
    case 0x6B39:
        bytes_put(record, 8, held(addresses, key), 0, 4);
        break;
    case 0x6B3A:
        addresses[key].assign(record + 8, 4);
        written[request].assign(record, 36);
        break;
    case 0x6B3E: {
        const auto [first, second] =
            held(unit_words, std::pair(key, number_at<uint16_t>(record, 8)));
        number_put(record, 4, first);
        number_put(record, 6, second);
        break;
    }
    case 0x6B42:
        number_put(record, 4, static_cast<uint32_t>(register_high) << 16 | held(registers, key));
        break;
    case 0x6B43:
        registers[key] = number_at<uint16_t>(record, 4);
        break;
    case 0x6B4A:
        bytes_put(record, 2, held(id_entries, first16), 2, 10);
        break;
    case 0x6B4B:
        id_entries[first16].assign(record, 12);
        break;
    case 0x6B4C:
        number_put(record, 12, held(id_values, key));
        break;
    case 0x6B5C:
        bytes_put(record, 0, own_address_set, 0, 16);
        break;
    case 0x6B5D:
        own_address_set.assign(record, 16);
        break;
    case 0x6B5E:
        bytes_put(record, 12, held(address_sets, key), 0, 16);
        break;
    case 0x6B5F:
        address_sets[key].assign(record + 12, 16);
        written[request].assign(record, 36);
        break;
    case 0x6B60:
        number_put(record, 4, held(port_entries, first16));
        break;
    case 0x6B61:
    case 0x6B63:
        port_entries[first16] = number_at<uint16_t>(record, 4);
        written[request].assign(record, 8);
        break;
    case 0x6B67:
        bytes_put(record, 8, held(address_pairs, key), 8, 12);
        break;
    case 0x6B68:
        address_pairs[key].assign(record, 20);
        break;
    case 0x6B6A:
        bytes_put(record, 2, held(rules, first16), 2, 78);
        break;
    case 0x6B6B:
        rules[first16].assign(record, 80);
        break;
    case 0x6B72:
        bytes_put(record, 1, held(switch_ports, static_cast<uint8_t>(record[0])), 1, 7);
        break;
    case 0x6B73:
        switch_ports[static_cast<uint8_t>(record[0])].assign(record, 8);
        break;
    case 0x6B83:
        number_put(record, 4, held(indexed_words, key));
        break;
    case 0x6B84:
        indexed_words[key] = number_at<uint32_t>(record, 4);
        break;
    case 0x6B85:
        bytes_put(record, 4, held(address_table, key), 4, 20);
        break;
    case 0x6B86:
        address_table[key].assign(record, 24);
        break;
    case 0x6B87:
    case 0x6B98:
        number_put(record, 6, held(phys, first16).at(number_at<uint16_t>(record, 2)));
        break;
    case 0x6B88:
    case 0x6B99:
        held(phys, first16).at(number_at<uint16_t>(record, 2)); // else it has no such register
        phys[first16].at(number_at<uint16_t>(record, 2)) = number_at<uint16_t>(record, 4);
        break;
    case 0x6B9A:
    case 0x6BA0: {
        auto& table = request == 0x6B9A ? counters : counters_alt;
        const auto counter = table.find({key, number_at<uint32_t>(record, 8)});
        number_put(record, 4, counter == table.end() ? 0U : counter->second);
        if (counter != table.end()) {
            counter->second = 0; // a counter restarts when it is read
        }
        break;
    }
    case 0x6B9F:
    case 0x6BA1: {
        auto& table = request == 0x6B9F ? counters : counters_alt;
        table[{key, number_at<uint32_t>(record, 8)}] = number_at<uint32_t>(record, 4);
        break;
    }
    default:
        written[request].assign(record, form.size);
        break;
    }
}
