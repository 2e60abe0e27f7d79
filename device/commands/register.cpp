#include "device/commands/register.h"

#include <cstddef>

#include "device/access/fpga.h"

static_assert(sizeof(RegisterValue) == 8 && offsetof(RegisterValue, value) == 4);

namespace
{

// The latched register is taken while the bit is clear; the bit is set again afterwards.
constexpr uint32_t kLatchControlRegister = 0x00D8;
constexpr uint16_t kLatchBit = 0x0020;
constexpr uint32_t kLatchedRegister = 0x00DA;
constexpr uint16_t kLatchedMask = 0x00FF;

} // namespace

int32_t read_register(RegisterValue* record)
{
    return value_store(command_readRegister(record->address), &record->value);
}

int32_t write_register(const RegisterValue* record)
{
    const RegisterAccessRequest access{record->address, record->value};
    return command_writeRecord(kRegisterWrite, &access, DEVICE_READ_FAILED);
}

int32_t read_reg_da_latched(uint32_t* value)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    RegisterAccessRequest control{kLatchControlRegister, 0};
    record_read(fpga, kRegisterRead, &control);
    control.value &= ~uint32_t{kLatchBit};
    record_write(fpga, kRegisterWrite, &control);
    const uint16_t latched = register_read(fpga, kLatchedRegister);
    control.value |= kLatchBit;
    record_write(fpga, kRegisterWrite, &control);
    register_read(fpga, kLatchedRegister); // of no use, but the read belongs to the sequence
    if (fpga_good(fpga)) {
        *value = latched & kLatchedMask;
    }
    return fpga_close(fpga);
}
