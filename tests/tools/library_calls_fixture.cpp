#include "tools/library_calls_fixture.h"

namespace
{

std::string text_of(uint32_t number)
{
    return number == 0 ? "" : std::to_string(number);
}

std::string text_of(const Bytes& bytes)
{
    return bytes.find_first_not_of('\0') == std::string::npos ? "" : hex_pairs(bytes);
}

template <class First, class Second> std::string text_of(const std::pair<First, Second>& numbers)
{
    return text_of(numbers.first) + text_of(numbers.second);
}

template <class Element, size_t kCount>
std::string text_of(const std::array<Element, kCount>& numbers)
{
    std::string text;
    for (const Element number : numbers) {
        text += std::to_string(number) + ",";
    }
    return text;
}

std::string key_text(uint32_t key)
{
    return std::to_string(key);
}

template <class First, class Second> std::string key_text(const std::pair<First, Second>& key)
{
    return std::to_string(key.first) + "/" + std::to_string(key.second);
}

template <class Map> std::string map_text(const char* name, const Map& map)
{
    std::string text = name;
    for (const auto& [key, value] : map) {
        const std::string held = text_of(value);
        text += held.empty() ? "" : " " + key_text(key) + "=" + held;
    }
    return text + "\n";
}

} // namespace

std::string devices_text(const Board& board)
{
    const FpgaModel& fpga = board.fpga;
    std::ostringstream text;
    text << map_text("words", fpga.words) << map_text("registers", fpga.registers)
         << map_text("phys", fpga.phys) << map_text("switch_ports", fpga.switch_ports)
         << text_of(fpga.device_info) << text_of(fpga.own_address) << text_of(fpga.own_address_set)
         << map_text("addresses", fpga.addresses) << map_text("address_sets", fpga.address_sets)
         << map_text("id_entries", fpga.id_entries) << map_text("id_values", fpga.id_values)
         << map_text("unit_words", fpga.unit_words) << map_text("address_pairs", fpga.address_pairs)
         << map_text("address_table", fpga.address_table)
         << map_text("port_entries", fpga.port_entries) << map_text("rules", fpga.rules)
         << map_text("indexed_words", fpga.indexed_words) << map_text("counters", fpga.counters)
         << map_text("counters_alt", fpga.counters_alt) << map_text("written", fpga.written)
         << text_of(board.rtc.time) << " " << board.rtc.status << " " << board.now << "\n";
    return text.str();
}

std::map<std::string, Bytes> files_of(const Board& board)
{
    std::map<std::string, Bytes> files;
    for (const char* folder : {"/conf", "/tmp", "/dev"}) {
        const auto place = board.host(std::string(folder) + "/x").parent_path();
        for (const auto& entry : std::filesystem::directory_iterator(place)) {
            const std::string path = board.board_path(entry.path());
            if (path != "/tmp/Saveing") {
                files[path] = board.file_get(path);
            }
        }
    }
    return files;
}
