#include "device/commands/address_entry.h"

#include <cstddef>
#include <cstring>

#include "device/access/fpga.h"
#include "device/access/numbers.h"

static_assert(sizeof(AddressEntry) == 32);
static_assert(offsetof(AddressEntry, bytes) == 8);
static_assert(offsetof(AddressEntry, number) == 28);
static_assert(sizeof(AddressSet) == 48);
static_assert(offsetof(AddressSet, bytes) == 12);
static_assert(offsetof(AddressSet, number) == 32);

namespace
{

constexpr size_t kSetSize = sizeof AddressSet{}.number / sizeof(uint32_t);

// The requests on the table take an entry's value in `value`, a set's in `set`.
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

// An entry has one value, a set four.
struct Kind {
    size_t count;
    RequestNumber ownRead; // the own one's bytes as they stand
    RequestNumber ownWrite;
    RequestNumber read;
    RequestNumber write;
};
constexpr Kind kEntry{1, kOwnAddressRead, kOwnAddressWrite, kAddressRead, kAddressWrite};
constexpr Kind kSet{kSetSize, kOwnAddressSetRead, kOwnAddressSetWrite, kAddressSetRead,
                    kAddressSetWrite};

using Bytes = uint8_t[sizeof(uint32_t)]; // a value in the caller's record

uint32_t* values_of(const Kind& kind, AddressEntryRequest& request)
{
    return kind.count == 1 ? &request.value : request.set;
}

uint32_t littleEndian_load(const Bytes& bytes)
{
    return uint32_t{bytes[3]} << 24 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[1]} << 8 | bytes[0];
}

// Of the own set, unlike of every other number here, the first byte is the least significant; kept
// as the system has it.
uint32_t ownNumber_of(const Kind& kind, const Bytes& bytes)
{
    return kind.count == 1 ? bigEndian_load(bytes) : littleEndian_load(bytes);
}

int32_t values_read(const Kind& kind, uint32_t own_id, uint32_t id, Bytes* bytes, uint32_t* numbers)
{
    if (!peerId_isValid(id)) {
        return DEVICE_BAD_ARGUMENT;
    }
    const bool own = id == own_id;
    AddressEntryRequest request{};
    request.id = id;
    const int32_t status =
        own ? command_readRecord(kind.ownRead, bytes) : command_readRecord(kind.read, &request);
    if (status != DEVICE_OK) {
        return status;
    }
    for (size_t i = 0; i < kind.count; ++i) {
        if (own) {
            numbers[i] = ownNumber_of(kind, bytes[i]);
        } else {
            numbers[i] = values_of(kind, request)[i];
            bigEndian_store(numbers[i], bytes[i]);
        }
    }
    return DEVICE_OK;
}

int32_t values_write(const Kind& kind, uint32_t own_id, uint32_t id, const Bytes* bytes)
{
    if (!peerId_isValid(id)) {
        return DEVICE_BAD_ARGUMENT;
    }
    if (id == own_id) {
        return command_writeRecord(kind.ownWrite, bytes);
    }
    AddressEntryRequest request{};
    request.id = id;
    request.write_mode = kWriteNumbers;
    for (size_t i = 0; i < kind.count; ++i) {
        values_of(kind, request)[i] = bigEndian_load(bytes[i]);
    }
    return command_writeRecord(kind.write, &request);
}

// Unlike with the other writer, an identifier that has no place in the table is no error.
int32_t values_writeBytes(const Kind& kind, uint32_t own_id, uint32_t id, const Bytes* bytes)
{
    if (!peerId_isValid(id) || id == own_id) {
        return DEVICE_OK;
    }
    AddressEntryRequest request{};
    request.id = id;
    request.write_mode = kWriteBytes;
    memcpy(values_of(kind, request), bytes, kind.count * sizeof(uint32_t));
    return command_writeRecord(kind.write, &request);
}

} // namespace

int32_t read_addr_entry(AddressEntry* entry)
{
    return values_read(kEntry, entry->own_id, entry->id, &entry->bytes, &entry->number);
}

int32_t write_addr_entry(const AddressEntry* entry)
{
    return values_write(kEntry, entry->own_id, entry->id, &entry->bytes);
}

int32_t write_addr_entry_value(const AddressEntry* entry)
{
    return values_writeBytes(kEntry, entry->own_id, entry->id, &entry->bytes);
}

int32_t read_addr_set(AddressSet* set)
{
    return values_read(kSet, set->own_id, set->id, set->bytes, set->number);
}

int32_t write_addr_set(const AddressSet* set)
{
    return values_write(kSet, set->own_id, set->id, set->bytes);
}

int32_t write_addr_set_value(const AddressSet* set)
{
    return values_writeBytes(kSet, set->own_id, set->id, set->bytes);
}
