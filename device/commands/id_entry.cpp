#include "device/commands/id_entry.h"

#include <cstddef>

#include "device/access/driver_records.h"
#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/access/numbers.h"

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

// The selected fields into the request. One that is out of range makes the device fail: nothing is
// written then.
void idEntry_change(Fpga& fpga, const IdEntry& entry, IdEntryRequest& request)
{
    const unsigned selected = validMask_of(entry.mask);
    if ((selected & kFieldA) != 0) {
        request.field_a = entry.field_a;
    }
    if ((selected & kFieldB) != 0) {
        if (entry.field_b > kFieldBMax) {
            fpga_fail(fpga, DEVICE_BAD_ARGUMENT);
        }
        request.field_b = entry.field_b;
    }
    if ((selected & kFieldC) != 0) {
        if (entry.field_c > kFieldCMax) {
            fpga_fail(fpga, DEVICE_BAD_ARGUMENT);
        }
        request.field_c = entry.field_c;
    }
}

// Bitmap D excludes an identifier, bitmap E admits it.
void idMaps_check(Fpga& fpga, uint16_t id)
{
    uint32_t map_d = 0;
    record_read(fpga, kUnitMapDRead, &map_d);
    uint32_t map_e = 0;
    record_read(fpga, kUnitMapERead, &map_e);
    if ((map_e & ~map_d & unit_bit(id)) == 0) {
        fpga_fail(fpga, DEVICE_UNMAPPED);
    }
}

} // namespace

int32_t read_id_entry(const IdEntry* entry)
{
    if (!peerId_isValid(entry->id)) {
        return DEVICE_BAD_ARGUMENT;
    }
    IdEntryRequest request{};
    request.id = entry->id;
    const int32_t status = command_readRecord(kIdEntryRead, &request, FpgaAccess::kWrite);
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
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    IdEntryRequest request{};
    request.id = entry->id;
    record_read(fpga, kIdEntryRead, &request);
    idEntry_change(fpga, *entry, request);
    record_write(fpga, kIdEntryWrite, &request);
    return fpga_close(fpga);
}

// Opened for writing, although it only reads.
int32_t read_id_entry_value(IdEntryValue* record)
{
    if (!peerId_isValid(record->id) || record->id == record->own_id) {
        return DEVICE_BAD_ARGUMENT;
    }
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    idMaps_check(fpga, record->id);
    const uint16_t value = idValue_read(fpga, record->id);
    if (fpga_good(fpga)) {
        record->value = value;
    }
    return fpga_close(fpga);
}
