// Block 0x16E: registers 0x016E to 0x0176: flags, then two addresses.
#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/commands/register_block.h"

static_assert(sizeof(Reg16EBlock) == 12);

namespace
{

constexpr uint32_t kFlags = 0x016E;
constexpr uint32_t kFirst = 0x0170;
constexpr uint32_t kSecond = 0x0174;
constexpr uint16_t kFlagBits[] = {0x0001, 0x0002}; // flag A, flag B
using Block = uint16_t[5];                         // all of them

constexpr unsigned kValidFlags = 0x03;
constexpr unsigned kValidFirst = 0x04;
constexpr unsigned kValidSecond = 0x08;

} // namespace

int32_t read_reg16e_block(Reg16EBlock* record)
{
    Block held;
    const int32_t status = command_readRegisters(kFlags, held);
    if (status != DEVICE_OK) {
        return status;
    }
    uint8_t flags[2];
    flagFields_extract(kFlagBits, held[0], flags);
    record->flag_a = flags[0];
    record->flag_b = flags[1];
    registerBytes_unpack(held + 1, record->first);
    registerBytes_unpack(held + 3, record->second);
    return DEVICE_OK;
}

int32_t write_reg16e_block(const Reg16EBlock* record)
{
    Block held;
    const int32_t status = command_readRegisters(kFlags, held);
    if (status != DEVICE_OK) {
        return status;
    }
    const unsigned valid = validMask_of(record->valid);
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    if ((valid & kValidFlags) != 0) {
        const uint8_t flags[] = {record->flag_a, record->flag_b};
        const BitChange change = flagFields_change(kFlagBits, valid, flags);
        register_write(fpga, kFlags, bitChange_apply(change, held[0]));
    }
    if ((valid & kValidFirst) != 0) {
        registerBytes_write(fpga, kFirst, record->first);
    }
    if ((valid & kValidSecond) != 0) {
        registerBytes_write(fpga, kSecond, record->second);
    }
    return fpga_close(fpga);
}
