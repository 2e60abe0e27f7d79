#include "device/commands/address_table.h"

#include <cstddef>
#include <cstring>

#include "device/access/flag_fields.h"
#include "device/access/fpga.h"

static_assert(sizeof(AddressTableEntry) == 14);

namespace
{

// The record of the address table requests.
struct AddressTableRequest {
    uint32_t index;
    uint32_t zero;
    uint32_t valid; // 1 on an update, 0 on a delete
    uint8_t address[4];
    uint8_t address_6[6];
    uint8_t attribute;
    uint8_t spare;
};
static_assert(sizeof(AddressTableRequest) == 24);
static_assert(offsetof(AddressTableRequest, address) == 12);
static_assert(offsetof(AddressTableRequest, address_6) == 16);
static_assert(offsetof(AddressTableRequest, attribute) == 22);

constexpr uint8_t kLargeTableLast = 127;
constexpr uint8_t kSmallTableLast = 29;

constexpr unsigned kValidAddress = 0x01;
constexpr unsigned kValidAddress6 = 0x02;
constexpr unsigned kValidAttribute = 0x04;

// The table only bounds the index; the driver is not told of it.
bool index_isValid(const AddressTableEntry& entry)
{
    return entry.index <= (entry.table == 0 ? kLargeTableLast : kSmallTableLast);
}

AddressTableRequest request_for(const AddressTableEntry& entry)
{
    AddressTableRequest request{};
    request.index = entry.index;
    return request;
}

} // namespace

int32_t read_addr_table_entry(AddressTableEntry* entry)
{
    if (!index_isValid(*entry)) {
        return DEVICE_BAD_ARGUMENT;
    }
    AddressTableRequest request = request_for(*entry);
    const int32_t status = command_readRecord(kAddressTableRead, &request);
    if (status == DEVICE_OK) {
        memcpy(entry->address, request.address, sizeof entry->address);
        memcpy(entry->address_6, request.address_6, sizeof entry->address_6);
        entry->attribute = request.attribute;
    }
    return status;
}

int32_t write_addr_table_entry(const AddressTableEntry* entry)
{
    if (!index_isValid(*entry)) {
        return DEVICE_BAD_ARGUMENT;
    }
    const unsigned valid = validMask_of(entry->valid);
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    AddressTableRequest request = request_for(*entry);
    record_read(fpga, kAddressTableRead, &request);
    if ((valid & kValidAddress) != 0) {
        memcpy(request.address, entry->address, sizeof request.address);
    }
    if ((valid & kValidAddress6) != 0) {
        memcpy(request.address_6, entry->address_6, sizeof request.address_6);
    }
    if ((valid & kValidAttribute) != 0) {
        request.attribute = entry->attribute;
    }
    request.valid = 1;
    record_write(fpga, kAddressTableWrite, &request);
    return fpga_close(fpga);
}

int32_t write_addr_table_delete(const AddressTableEntry* entry)
{
    if (!index_isValid(*entry)) {
        return DEVICE_BAD_ARGUMENT;
    }
    const AddressTableRequest request = request_for(*entry);
    return command_writeRecord(kAddressTableWrite, &request);
}
