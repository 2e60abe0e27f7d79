#include "sim/device_state.h"

#include <iterator>
#include <random>

namespace
{

// The engine's numbers are the same everywhere; those of the library's distributions are not.
class Draw
{
  public:
    explicit Draw(uint32_t number) : engine_(number) {}

    uint32_t number() { return static_cast<uint32_t>(engine_()); }
    uint32_t below(uint32_t limit) { return number() % limit; }
    uint16_t word() { return static_cast<uint16_t>(below(2) == 0 ? below(32) : number()); }
    FpgaModel::Record record(size_t size)
    {
        FpgaModel::Record bytes;
        while (bytes.size() < size) {
            bytes += static_cast<char>(number());
        }
        return bytes;
    }

  private:
    std::mt19937 engine_;
};

// Entries of tables, enough for the small numbers that records mostly hold.
constexpr uint32_t kEntries = 16;
constexpr uint32_t kSelectors[] = {0, 1, 32, 33};

void tables_draw(Draw& draw, FpgaModel& fpga)
{
    for (uint32_t entry = 0; entry < kEntries; ++entry) {
        const auto short_entry = static_cast<uint16_t>(entry);
        fpga.addresses[entry] = draw.record(4);
        fpga.address_sets[entry] = draw.record(16);
        fpga.id_entries[entry] = draw.record(12);
        fpga.id_values[entry] = draw.word();
        fpga.address_pairs[entry] = draw.record(20);
        fpga.address_table[entry] = draw.record(24);
        fpga.port_entries[short_entry] = draw.word();
        fpga.rules[short_entry] = draw.record(80);
        fpga.indexed_words[entry] = draw.number();
        fpga.switch_ports[static_cast<uint8_t>(entry)] = draw.record(8);
        for (const uint32_t selector : kSelectors) {
            fpga.counters[{entry, selector}] = draw.word();
            fpga.counters_alt[{entry, selector}] = draw.word();
        }
    }
}

} // namespace

void deviceState_put(uint32_t number, FpgaModel& fpga, RtcModel& rtc)
{
    Draw draw(number);
    fpga = FpgaModel();
    for (uint32_t request = 0x6B02; request <= 0x6BA6; ++request) {
        fpga.words[request] = draw.word();
    }
    for (const uint32_t bitmap : {0x6B3BU, 0x6B3DU, 0x6B8DU}) {
        fpga.words[bitmap] = draw.number();
    }
    for (uint32_t address = 0; address < 0x200; address += 2) {
        fpga.registers[address] = draw.word();
    }
    // The line's divider: any number is too seldom one that stands for a bandwidth.
    static constexpr uint16_t kDividers[] = {21333, 1066, 640, 64};
    if (draw.below(2) == 0) {
        fpga.registers[0x12] = kDividers[draw.below(std::size(kDividers))];
    }
    for (const uint16_t phy : std::initializer_list<uint16_t>{9, 1, 2, 3, 4, 5, 8}) {
        for (uint16_t& mii : fpga.phys[phy]) {
            mii = static_cast<uint16_t>(draw.number());
        }
    }
    fpga.device_info = draw.record(8);
    fpga.own_address = draw.record(4);
    fpga.own_address_set = draw.record(16);
    tables_draw(draw, fpga);

    rtc = RtcModel();
    const auto below = [&](uint32_t limit) { return static_cast<int32_t>(draw.below(limit)); };
    rtc.time = {below(60),       below(60), below(24), 1 + below(28), below(12), below(138),
                /* to 2037 */ 0, 0,         0};
    rtc.status = draw.number();
}
