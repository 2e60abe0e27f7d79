// Block 0x16A: registers 0x0160 to 0x0166, of which index register 0x016A selects one set of four.
#include <cstddef>

#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/commands/register_block.h"

static_assert(sizeof(Reg16ABlock) == 12 && offsetof(Reg16ABlock, data) == 6);

namespace
{

constexpr uint32_t kIndexRegister = 0x016A;
constexpr uint16_t kIndexField = 0x0003;
constexpr uint32_t kData = 0x0160;
constexpr uint32_t kFlags = 0x0166;
constexpr uint16_t kFlagBits[] = {0x0002, 0x0001}; // flag A, flag B

constexpr unsigned kValidFlags = 0x03;
constexpr unsigned kValidData = 0x04;

void block_select(Fpga& fpga, uint16_t index)
{
    register_change(fpga, kIndexRegister, field_assign(kIndexField, index));
}

} // namespace

// Opened for writing: the index selects the block.
int32_t read_reg16a_block(Reg16ABlock* record)
{
    if (record->index > kIndexField) {
        return DEVICE_BAD_ARGUMENT;
    }
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    block_select(fpga, record->index);
    uint16_t data[3];
    registers_read(fpga, kData, data);
    const uint16_t flags = register_read(fpga, kFlags);
    if (fpga_good(fpga)) {
        registerBytes_unpack(data, record->data);
        uint8_t pair[2];
        flagFields_extract(kFlagBits, flags, pair);
        record->flag_a = pair[0];
        record->flag_b = pair[1];
    }
    return fpga_close(fpga);
}

int32_t write_reg16a_block(const Reg16ABlock* record)
{
    if (record->index > kIndexField) {
        return DEVICE_BAD_ARGUMENT;
    }
    const unsigned valid = validMask_of(record->valid);
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    block_select(fpga, record->index);
    if ((valid & kValidData) != 0) {
        registerBytes_write(fpga, kData, record->data);
    }
    if ((valid & kValidFlags) != 0) {
        const uint8_t pair[] = {record->flag_a, record->flag_b};
        register_change(fpga, kFlags, flagFields_change(kFlagBits, valid, pair));
    }
    return fpga_close(fpga);
}
