#include "device/commands/id_entry.h"

#include <cstddef>

#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/access/peer_id.h"
#include "device/access/unit_bit.h"
#include "device/access/unit_records.h"

static_assert(sizeof(IdEntry) == 10);
static_assert(offsetof(IdEntry, field_a) == 4);
static_assert(sizeof(IdEntryValue) == 6);

namespace
{

// kIdEntryRead and kIdEntryWrite. What is spare goes back as the driver returned it.
struct IdEntryRequest {
    uint16_t id;
    uint16_t field_a;
    uint16_t spare_4;
    uint16_t field_b;
    uint16_t field_c;
    uint16_t spare_10;
};
static_assert(sizeof(IdEntryRequest) == 12);
static_assert(offsetof(IdEntryRequest, field_b) == 6);

constexpr unsigned kFieldA = 0x01; // of the mask
constexpr unsigned kFieldB = 0x02;
constexpr unsigned kFieldC = 0x04;

constexpr uint16_t kFieldBMax = 4095;
constexpr uint16_t kFieldCMax = 7;

// The selected fields into the request, as far as they are in range.
int32_t idEntry_change(const IdEntry& entry, IdEntryRequest& request)
{
    const unsigned selected = validMask_of(entry.mask);
    if ((selected & kFieldA) != 0) {
        request.field_a = entry.field_a;
    }
    if ((selected & kFieldB) != 0) {
        if (entry.field_b > kFieldBMax) {
            return DEVICE_BAD_ARGUMENT;
        }
        request.field_b = entry.field_b;
    }
    if ((selected & kFieldC) != 0) {
        if (entry.field_c > kFieldCMax) {
            return DEVICE_BAD_ARGUMENT;
        }
        request.field_c = entry.field_c;
    }
    return DEVICE_OK;
}

// Bitmap D excludes an identifier, bitmap E admits it.
int32_t idMaps_check(Fpga fpga, uint16_t id)
{
    uint32_t map_d = 0;
    int32_t status = record_read(fpga, kUnitMapDRead, &map_d);
    if (status != DEVICE_OK) {
        return status;
    }
    uint32_t map_e = 0;
    status = record_read(fpga, kUnitMapERead, &map_e);
    if (status != DEVICE_OK) {
        return status;
    }
    const uint32_t bit = unit_bit(id);
    return (map_d & bit) == 0 && (map_e & bit) != 0 ? DEVICE_OK : DEVICE_UNMAPPED;
}

} // namespace

// Opened for writing, although it only reads.
int32_t read_id_entry(const IdEntry* entry)
{
    if (!peerId_isValid(entry->id)) {
        return DEVICE_BAD_ARGUMENT;
    }
    const int32_t status = fpga_run(FpgaAccess::kWrite, [entry](Fpga fpga) {
        IdEntryRequest request{};
        request.id = entry->id;
        return record_read(fpga, kIdEntryRead, &request);
    });
    if (status != DEVICE_OK) {
        return status;
    }
    // The caller's own fields are checked; what was read only shows that the entry can be read.
    const bool in_range = entry->field_b <= kFieldBMax && entry->field_c <= kFieldCMax;
    return in_range ? DEVICE_OK : DEVICE_UNMAPPED;
}

int32_t write_id_entry(const IdEntry* entry)
{
    if (!peerId_isValid(entry->id)) {
        return DEVICE_BAD_ARGUMENT;
    }
    return fpga_run(FpgaAccess::kWrite, [entry](Fpga fpga) -> int32_t {
        IdEntryRequest request{};
        request.id = entry->id;
        int32_t status = record_read(fpga, kIdEntryRead, &request);
        if (status == DEVICE_OK) {
            status = idEntry_change(*entry, request);
        }
        return status == DEVICE_OK ? record_write(fpga, kIdEntryWrite, &request) : status;
    });
}

// Opened for writing, although it only reads.
int32_t read_id_entry_value(IdEntryValue* record)
{
    if (!peerId_isValid(record->id) || record->id == record->own_id) {
        return DEVICE_BAD_ARGUMENT;
    }
    return fpga_run(FpgaAccess::kWrite, [record](Fpga fpga) -> int32_t {
        int32_t status = idMaps_check(fpga, record->id);
        if (status != DEVICE_OK) {
            return status;
        }
        IdValueRequest request{};
        request.id = record->id;
        request.select = kIdValueSelect;
        status = record_read(fpga, kIdValueRead, &request);
        if (status == DEVICE_OK) {
            record->value = request.value;
        }
        return status;
    });
}
