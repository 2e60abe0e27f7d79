#include "device/commands/address_pair.h"

#include <cstddef>
#include <cstring>

#include "device/access/fpga.h"

static_assert(sizeof(AddressPair) == 16);
static_assert(offsetof(AddressPair, address) == 4);
static_assert(offsetof(AddressPair, address_6) == 8);

namespace
{

struct AddressPairRequest {
    uint32_t index;
    uint32_t zero;
    uint8_t address[4];
    uint8_t address_6[6];
    uint8_t spare[2];
};
static_assert(sizeof(AddressPairRequest) == 20);

struct PairEnableRequest {
    uint8_t enable[2];
    uint8_t spare_2[2];
    uint8_t select; // always 1
    uint8_t spare_5[3];
};
static_assert(sizeof(PairEnableRequest) == 8);

constexpr uint32_t kAddressPairLast = 63;

} // namespace

int32_t read_addr_pair(AddressPair* record)
{
    if (record->index > kAddressPairLast) {
        return DEVICE_BAD_ARGUMENT;
    }
    AddressPairRequest request{};
    request.index = record->index;
    const int32_t status = command_readRecord(kAddressPairRead, &request);
    if (status == DEVICE_OK) {
        memcpy(record->address, request.address, sizeof record->address);
        memcpy(record->address_6, request.address_6, sizeof record->address_6);
    }
    return status;
}

int32_t write_addr_pair(const AddressPair* record)
{
    if (record->index > kAddressPairLast) {
        return DEVICE_BAD_ARGUMENT;
    }
    AddressPairRequest request{};
    request.index = record->index;
    memcpy(request.address, record->address, sizeof request.address);
    memcpy(request.address_6, record->address_6, sizeof request.address_6);
    return command_writeRecord(kAddressPairWrite, &request);
}

int32_t write_pair_enable(const uint8_t* enable)
{
    const uint8_t on = *enable != 0 ? 1 : 0;
    const PairEnableRequest request{{on, on}, {}, 1, {}};
    return command_writeRecord(kPairEnableWrite, &request);
}
