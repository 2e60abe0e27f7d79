// The device behind /dev/fpga: the driver's requests and the state that they show and change.
// Knows nothing of how a request reaches it.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>

// How a request takes its argument.
enum class Argument {
    kWord,   // the address of a 16-bit word that the driver fills
    kMap,    // the address of a 32-bit word that the driver fills
    kRecord, // the address of a record
    kValue,  // the value itself
    kNothing // no argument
};

// What is known of one request.
struct RequestForm {
    uint32_t number;
    Argument argument;
    size_t size;        // bytes behind the address (of the value: 2 or 4)
    size_t fills;       // first byte that the driver fills
    size_t fills_count; // and how many; 0: it only reads
};

// The form of a request, or null for a number that the driver does not know.
const RequestForm* requestForm_find(uint32_t number);

class FpgaModel
{
  public:
    using Record = std::string; // bytes

    // Words and bitmaps, by the number of the request that reads them.
    std::map<uint32_t, uint32_t> words;
    std::map<uint32_t, uint16_t> registers;
    uint16_t register_high = 0; // the high half of the value that a register read answers with
    std::map<uint16_t, std::array<uint16_t, 32>> phys; // by PHY address: 9, 1..5, 8
    std::map<uint8_t, Record> switch_ports;            // 8 bytes each
    Record device_info = Record(8, '\0');
    Record own_address = Record(4, '\0');
    Record own_address_set = Record(16, '\0');
    std::map<uint32_t, Record> addresses;    // 4 bytes each, as a little-endian number
    std::map<uint32_t, Record> address_sets; // 16 bytes each, four numbers
    std::map<uint32_t, Record> id_entries;   // 12 bytes each
    std::map<uint32_t, uint16_t> id_values;
    std::map<std::pair<uint32_t, uint16_t>, std::pair<uint16_t, uint16_t>> unit_words; // unit, page
    std::map<uint32_t, Record> address_pairs;                   // 20 bytes each
    std::map<uint32_t, Record> address_table;                   // 24 bytes each
    std::map<uint16_t, uint16_t> port_entries;                  // by address
    std::map<uint16_t, Record> rules;                           // 80 bytes each
    std::map<uint32_t, uint32_t> indexed_words;                 // a write replaces the whole number
    std::map<std::pair<uint32_t, uint32_t>, uint32_t> counters; // index, selector; 0 when read
    std::map<std::pair<uint32_t, uint32_t>, uint32_t> counters_alt; // likewise
    std::map<uint32_t, Record> written; // the last record of each request that only writes
    std::map<uint32_t, int> results;    // what a request returns instead of 0
    // A request that `results` makes fail has done its work all the same.
    bool fills_when_failing = false;
    // How many bytes a request that reads a word or a bitmap fills, where the driver's record is
    // longer than that: those behind the word are 0xEE.
    std::map<uint32_t, size_t> filled;

    // Runs when a record request has been served; for answers that no state of the model gives.
    std::function<void(uint32_t request, char* record)> answered;

    // Serves one request of a known form; the driver's result.
    int serve(const RequestForm& form, char* record, uint32_t value);

  private:
    void long_fill(uint32_t request, char* record) const;
    void serve_record(const RequestForm& form, char* record);
};
