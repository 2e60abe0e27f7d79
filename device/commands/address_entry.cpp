#include "device/commands/address_entry.h"

#include <cstddef>
#include <cstring>

#include "device/access/big_endian.h"
#include "device/access/fpga.h"
#include "device/access/peer_id.h"

static_assert(sizeof(AddressEntry) == 32);
static_assert(offsetof(AddressEntry, bytes) == 8);
static_assert(offsetof(AddressEntry, number) == 28);
static_assert(sizeof(AddressSet) == 48);
static_assert(offsetof(AddressSet, bytes) == 12);
static_assert(offsetof(AddressSet, number) == 32);

namespace
{

constexpr size_t kSetSize = sizeof AddressSet{}.number / sizeof(uint32_t);

// kAddressRead and kAddressWrite use value, kAddressSetRead and kAddressSetWrite the set.
struct AddressEntryRequest {
    uint32_t id;
    uint32_t write_mode;
    uint32_t value;
    uint32_t set[kSetSize];
    uint8_t spare_28[8];
};
static_assert(sizeof(AddressEntryRequest) == 36);
static_assert(offsetof(AddressEntryRequest, value) == 8);
static_assert(offsetof(AddressEntryRequest, set) == 12);

// The write mode, whose meaning is the driver's: 0 from the writers of raw bytes, 1 from the
// others.
constexpr uint32_t kWriteBytes = 0;
constexpr uint32_t kWriteNumbers = 1;

uint32_t littleEndian_load(const uint8_t* bytes)
{
    return uint32_t{bytes[3]} << 24 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[1]} << 8 | bytes[0];
}

// Whether a raw writer has anything to do.
bool table_holds(uint32_t own_id, uint32_t id)
{
    return peerId_isValid(id) && id != own_id;
}

} // namespace

int32_t read_addr_entry(AddressEntry* entry)
{
    if (!peerId_isValid(entry->id)) {
        return DEVICE_BAD_ARGUMENT;
    }
    if (entry->id == entry->own_id) {
        const int32_t status = command_readRecord(kOwnAddressRead, entry->bytes);
        if (status == DEVICE_OK) {
            entry->number = bigEndian_load(entry->bytes);
        }
        return status;
    }
    AddressEntryRequest request{};
    request.id = entry->id;
    const int32_t status = command_readRecord(kAddressRead, &request);
    if (status == DEVICE_OK) {
        entry->number = request.value;
        bigEndian_store(request.value, entry->bytes);
    }
    return status;
}

int32_t write_addr_entry(const AddressEntry* entry)
{
    if (!peerId_isValid(entry->id)) {
        return DEVICE_BAD_ARGUMENT;
    }
    if (entry->id == entry->own_id) {
        return command_writeRecord(kOwnAddressWrite, entry->bytes);
    }
    AddressEntryRequest request{};
    request.id = entry->id;
    request.write_mode = kWriteNumbers;
    request.value = bigEndian_load(entry->bytes);
    return command_writeRecord(kAddressWrite, &request);
}

// Unlike write_addr_entry, an identifier that has no place in the table is no error.
int32_t write_addr_entry_value(const AddressEntry* entry)
{
    if (!table_holds(entry->own_id, entry->id)) {
        return DEVICE_OK;
    }
    AddressEntryRequest request{};
    request.id = entry->id;
    request.write_mode = kWriteBytes;
    memcpy(&request.value, entry->bytes, sizeof entry->bytes);
    return command_writeRecord(kAddressWrite, &request);
}

int32_t read_addr_set(AddressSet* set)
{
    if (!peerId_isValid(set->id)) {
        return DEVICE_BAD_ARGUMENT;
    }
    if (set->id == set->own_id) {
        const int32_t status = command_readRecord(kOwnAddressSetRead, set->bytes);
        if (status == DEVICE_OK) {
            // The opposite byte order of every other number here, kept as the system has it.
            for (size_t i = 0; i < kSetSize; ++i) {
                set->number[i] = littleEndian_load(set->bytes[i]);
            }
        }
        return status;
    }
    AddressEntryRequest request{};
    request.id = set->id;
    const int32_t status = command_readRecord(kAddressSetRead, &request);
    if (status == DEVICE_OK) {
        for (size_t i = 0; i < kSetSize; ++i) {
            set->number[i] = request.set[i];
            bigEndian_store(request.set[i], set->bytes[i]);
        }
    }
    return status;
}

int32_t write_addr_set(const AddressSet* set)
{
    if (!peerId_isValid(set->id)) {
        return DEVICE_BAD_ARGUMENT;
    }
    if (set->id == set->own_id) {
        return command_writeRecord(kOwnAddressSetWrite, set->bytes);
    }
    AddressEntryRequest request{};
    request.id = set->id;
    request.write_mode = kWriteNumbers;
    for (size_t i = 0; i < kSetSize; ++i) {
        request.set[i] = bigEndian_load(set->bytes[i]);
    }
    return command_writeRecord(kAddressSetWrite, &request);
}

// As write_addr_entry_value.
int32_t write_addr_set_value(const AddressSet* set)
{
    if (!table_holds(set->own_id, set->id)) {
        return DEVICE_OK;
    }
    AddressEntryRequest request{};
    request.id = set->id;
    request.write_mode = kWriteBytes;
    memcpy(request.set, set->bytes, sizeof set->bytes);
    return command_writeRecord(kAddressSetWrite, &request);
}
