// One bit a port: the port mask, and the bits in registers.
#include <cstddef>

#include "device/access/fpga.h"
#include "device/access/numbers.h"
#include "device/commands/port.h"

static_assert(offsetof(PortMask, mask) == 4);
static_assert(sizeof(PortBit) == 6 && offsetof(PortBit, port) == 4);

namespace
{

constexpr uint32_t kPortBitsLow = 0x005E;  // ports 1..15
constexpr uint32_t kPortBitsHigh = 0x005C; // ports 16..29
constexpr uint16_t kPortBitsPerRegister = 16;

} // namespace

int32_t read_port_mask(PortMask* record)
{
    return command_readRecord(kPortMaskRead, &record->mask);
}

// Works in the caller's mask.
int32_t write_port_mask_bit(PortMask* record)
{
    if (!port_isValid(record->port)) {
        return DEVICE_BAD_ARGUMENT;
    }
    const uint32_t bit = unit_bit(record->port);
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    record_read(fpga, kPortMaskRead, &record->mask);
    if (fpga_good(fpga)) {
        record->mask = record->value == 1 ? record->mask | bit : record->mask & ~bit;
    }
    value_write(fpga, kPortMaskWrite, record->mask);
    return fpga_close(fpga);
}

// A port out of range is found with the device open. This and a failed read have codes that differ
// from other commands'.
int32_t portBit_write(const PortBit* record, bool on)
{
    const uint16_t port = record->port;
    const bool low = port < kPortBitsPerRegister;
    const unsigned bit = 1U << (port % kPortBitsPerRegister);
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    const bool valid = port_isValid(port);
    if (!valid) {
        fpga_fail(fpga, DEVICE_READ_FAILED);
    }
    register_change(fpga, low ? kPortBitsLow : kPortBitsHigh, bits_assign(bit, on));
    const int32_t status = fpga_close(fpga);
    return valid && status == DEVICE_READ_FAILED ? DEVICE_UNMAPPED : status;
}
