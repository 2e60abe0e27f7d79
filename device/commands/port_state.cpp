// The state of a port as a code.
#include "device/access/numbers.h"
#include "device/commands/device_word.h"
#include "device/commands/port.h"
#include "maint/fpga.h"

static_assert(sizeof(PortStateCode) == 4);

namespace
{

// Bits of the port's entry.
constexpr uint16_t kEntryAny13To15 = 0xE000;
constexpr uint16_t kEntryBit12 = 0x1000;
constexpr uint16_t kEntryBits8And9 = 0x0300;
constexpr unsigned kEntryBit8Shift = 8;

constexpr uint16_t kCodeNone = 0;
constexpr uint16_t kCodeAny13To15 = 2;
constexpr uint16_t kCodeKept = UINT16_MAX; // no code: the caller's stays
constexpr uint16_t kCodeByBits8And9[] = {1, 3, kCodeKept, 4};

// The code that a port's entry stands for, or kCodeKept.
uint16_t code_of(uint16_t entry)
{
    if ((entry & kEntryAny13To15) != 0) {
        return kCodeAny13To15;
    }
    if ((entry & kEntryBit12) == 0) {
        return kCodeKept;
    }
    return kCodeByBits8And9[(entry & kEntryBits8And9) >> kEntryBit8Shift];
}

} // namespace

int32_t read_port_state_code(PortStateCode* record)
{
    uint32_t map = 0;
    if (unitMapE_read(map) < 0) {
        record->code = kCodeNone;
        return DEVICE_OPEN_FAILED;
    }
    // The bit's number is the low byte of the port.
    if ((map & unit_bit(static_cast<uint8_t>(record->port))) == 0) {
        record->code = kCodeNone;
        return DEVICE_OK;
    }
    PortEntry entry{record->port, 0, 0, 0};
    if (read_port_entry(&entry) < 0) {
        record->code = kCodeNone;
        return DEVICE_OPEN_FAILED;
    }
    const uint16_t code = code_of(entry.value);
    if (code != kCodeKept) {
        record->code = code;
    }
    return DEVICE_OK;
}
