// Fields that come several in a record.
#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/commands/register_field.h"

static_assert(sizeof(Reg110Bytes) == 4);
static_assert(sizeof(Reg15AFields) == 4);
static_assert(sizeof(Reg15CPair) == 6);

namespace
{

constexpr uint32_t kRegister110 = 0x0110;

// The two parts of the records with a valid mask.
constexpr unsigned kValidA = 0x01;
constexpr unsigned kValidB = 0x02;

constexpr uint32_t kRegister15A = 0x015A;
constexpr unsigned kField15AShiftA = 13;
constexpr unsigned kField15AShiftB = 5;
constexpr uint16_t kHighByte = 0xFF00;
constexpr uint16_t kLowByte = 0x00FF;

constexpr uint32_t kRegister15C = 0x015C;
constexpr uint32_t kRegister15E = 0x015E;

} // namespace

int32_t read_reg110_bytes(Reg110Bytes* record)
{
    uint16_t values[2];
    const int32_t status = command_readRegisters(kRegister110, values);
    if (status == DEVICE_OK) {
        registerBytes_unpack(values, record->bytes);
    }
    return status;
}

int32_t write_reg110_bytes(const Reg110Bytes* record)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    registerBytes_write(fpga, kRegister110, record->bytes);
    register_change(fpga, kRegister114, bits_assign(kCommitReg110, true));
    return fpga_close(fpga);
}

int32_t read_reg15a_fields(Reg15AFields* record)
{
    const int32_t value = command_readRegister(kRegister15A);
    if (value < 0) {
        return value;
    }
    record->a = static_cast<uint8_t>(value >> kField15AShiftA);
    record->b = static_cast<uint8_t>(value >> kField15AShiftB);
    return DEVICE_OK;
}

// Each field takes a whole byte of the register with it, its neighbours' bits included.
int32_t write_reg15a_fields(const Reg15AFields* record)
{
    const unsigned valid = validMask_of(record->valid);
    BitChange change = kNoChange;
    if ((valid & kValidA) != 0) {
        change = field_assign(kHighByte, static_cast<unsigned>(record->a) << kField15AShiftA);
    }
    if ((valid & kValidB) != 0) {
        const unsigned field = static_cast<unsigned>(record->b) << kField15AShiftB;
        change = bitChange_join(change, field_assign(kLowByte, field));
    }
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    if ((valid & (kValidA | kValidB)) != 0) {
        register_change(fpga, kRegister15A, change);
    } else {
        register_read(fpga, kRegister15A); // and nothing to write
    }
    return fpga_close(fpga);
}

int32_t read_reg15c_pair(Reg15CPair* record)
{
    uint16_t values[2];
    const int32_t status = command_readRegisters(kRegister15C, values);
    if (status == DEVICE_OK) {
        record->b = values[0];
        record->a = values[1];
    }
    return status;
}

int32_t write_reg15c_pair(const Reg15CPair* record)
{
    const unsigned valid = validMask_of(record->valid);
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    if ((valid & kValidA) != 0) {
        register_write(fpga, kRegister15E, record->a);
    }
    if ((valid & kValidB) != 0) {
        register_write(fpga, kRegister15C, record->b);
    }
    return fpga_close(fpga);
}
