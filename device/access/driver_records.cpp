#include "device/access/driver_records.h"

namespace
{

// kUnitWordsRead
struct UnitWordsRequest {
    uint32_t unit;
    UnitWords words; // out
    UnitPage page;
    uint16_t reserved;
    uint8_t spare[4];
};
static_assert(sizeof(UnitWordsRequest) == 16);
static_assert(offsetof(UnitWordsRequest, words) == 4);
static_assert(offsetof(UnitWordsRequest, page) == 8);

// kIdValueRead
struct IdValueRequest {
    uint32_t id;
    uint8_t spare_4[6];
    uint16_t select; // always kIdValueSelect
    uint16_t value;  // out
    uint8_t spare_14[2];
};
static_assert(sizeof(IdValueRequest) == 16);
static_assert(offsetof(IdValueRequest, select) == 10);
static_assert(offsetof(IdValueRequest, value) == 12);

constexpr uint16_t kIdValueSelect = 1;

} // namespace

SwitchPortRequest switchPort4_read(Fpga& fpga)
{
    SwitchPortRequest port{};
    port.port = kSwitchPort4;
    record_read(fpga, kSwitchPortRead, &port);
    return port;
}

void switchPort4_write(Fpga& fpga, uint8_t full_duplex, uint8_t speed100, uint8_t link)
{
    const SwitchPortRequest port{kSwitchPort4, 0, full_duplex, speed100, link, {}};
    record_write(fpga, kSwitchPortWrite, &port);
}

UnitWords unitWords_read(Fpga& fpga, uint32_t unit, UnitPage page)
{
    UnitWordsRequest request{unit, {}, page, 0, {}};
    record_read(fpga, kUnitWordsRead, &request);
    return request.words;
}

uint16_t idValue_read(Fpga& fpga, uint32_t unit)
{
    IdValueRequest request{unit, {}, kIdValueSelect, 0, {}};
    record_read(fpga, kIdValueRead, &request);
    return request.value;
}
