#include "device/periph/unit.h"

#include <fcntl.h>
#include <unistd.h>

#include "device/port/device_word.h"
#include "device/regs/port_entry.h"
#include "device/unit_bit.h"
#include "device/work_record.h"
#include "maint/fpga.h"

static_assert(sizeof(SerialNumber) == 9);
static_assert(sizeof(PortStateCode) == 4);

namespace
{

constexpr const char* kSerialNumberPath = "/tmp/serialno";

constexpr uint16_t kStateFault = 0xE000;
constexpr uint16_t kStateUp = 0x1000;
constexpr uint16_t kStateDetail = 0x0300;
constexpr unsigned kStateDetailShift = 8;

constexpr uint16_t kCodeNone = 0;
constexpr uint16_t kCodeFault = 2;
constexpr uint16_t kCodeKept = UINT16_MAX; // no code: the caller's stays
constexpr uint16_t kCodeByDetail[] = {1, 3, kCodeKept, 4};

// The code that a port's status stands for, or kCodeKept.
uint16_t code_of(uint16_t status)
{
    if ((status & kStateFault) != 0) {
        return kCodeFault;
    }
    if ((status & kStateUp) == 0) {
        return kCodeKept;
    }
    return kCodeByDetail[(status & kStateDetail) >> kStateDetailShift];
}

} // namespace

int32_t read_serial_number(SerialNumber* serial)
{
    const int file = open(kSerialNumberPath, O_RDONLY);
    if (file < 0) {
        return DEVICE_OPEN_FAILED;
    }
    const ssize_t got = read(file, serial->text, sizeof serial->text);
    close(file);
    if (got < 0) {
        return DEVICE_READ_FAILED;
    }
    return got == sizeof serial->text ? static_cast<int32_t>(DEVICE_OK)
                                      : static_cast<int32_t>(DEVICE_UNMAPPED);
}

int32_t read_port_state_code(PortStateCode* record)
{
    WorkRecord<uint32_t> map{};
    PortEntry entry{record->port, 0, 0, 0};
    if (read_device_word_3b(map.data()) < 0) {
        record->code = kCodeNone;
        return DEVICE_OPEN_FAILED;
    }
    // The bit's number is the low byte of the port.
    if ((map[0] & unit_bit(static_cast<uint8_t>(record->port))) == 0) {
        record->code = kCodeNone;
        return DEVICE_OK;
    }
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
