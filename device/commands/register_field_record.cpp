#include "device/commands/register_field_record.h"

#include <cstddef>

#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "device/access/port_number.h"
#include "device/access/register_bytes.h"
#include "device/access/shared_registers.h"

static_assert(sizeof(Reg16ABlock) == 12 && offsetof(Reg16ABlock, data) == 6);
static_assert(sizeof(Reg15AFields) == 4);
static_assert(sizeof(Reg15CPair) == 6);
static_assert(sizeof(Reg110Bytes) == 4);
static_assert(sizeof(PortBit) == 6 && offsetof(PortBit, port) == 4);
static_assert(sizeof(RegisterValue) == 8 && offsetof(RegisterValue, value) == 4);

namespace
{

constexpr uint32_t kRegister110 = 0x0110;

constexpr uint32_t kIndexRegister16A = 0x016A;
constexpr uint16_t kIndex16AField = 0x0003;
constexpr uint32_t kBlock16AData = 0x0160;
constexpr uint32_t kBlock16AFlags = 0x0166;
constexpr FlagField kBlock16AFlagFields[] = {{0, 0x0002}, {1, 0x0001}}; // flag A, flag B
constexpr unsigned kValidBlock16AFlags = 0x03;
constexpr unsigned kValidBlock16AData = 0x04;

// The first and the second part of the two records with two.
constexpr unsigned kValidA = 0x01;
constexpr unsigned kValidB = 0x02;

constexpr uint32_t kRegister15A = 0x015A;
constexpr unsigned kField15AShiftA = 13;
constexpr unsigned kField15AShiftB = 5;
constexpr uint16_t kHighByte = 0xFF00;
constexpr uint16_t kLowByte = 0x00FF;

constexpr uint32_t kRegister15C = 0x015C;
constexpr uint32_t kRegister15E = 0x015E;

constexpr uint32_t kPortBitsLow = 0x005E;  // ports 1..15
constexpr uint32_t kPortBitsHigh = 0x005C; // ports 16..29
constexpr uint16_t kPortBitsPerRegister = 16;

int32_t block16A_select(Fpga fpga, uint16_t index)
{
    return register_change(fpga, kIndexRegister16A, field_set(kIndex16AField, index));
}

// A port out of range is found with the device open. The two codes differ from other commands'.
constexpr int32_t kPortOutOfRange = DEVICE_READ_FAILED;
constexpr int32_t kPortReadFailed = DEVICE_UNMAPPED;

int32_t portBit_change(uint16_t port, bool on)
{
    return fpga_run(FpgaAccess::kWrite, [=](Fpga fpga) -> int32_t {
        if (!port_isValid(port)) {
            return kPortOutOfRange;
        }
        const bool low = port < kPortBitsPerRegister;
        const auto bit = static_cast<uint16_t>(1U << (port % kPortBitsPerRegister));
        const int32_t status =
            register_change(fpga, low ? kPortBitsLow : kPortBitsHigh, bits_set(bit, on));
        return status == DEVICE_READ_FAILED ? kPortReadFailed : status;
    });
}

} // namespace

int32_t read_reg110_bytes(Reg110Bytes* record)
{
    uint16_t values[2] = {};
    const int32_t status = fpga_run(FpgaAccess::kRead, [&values](Fpga fpga) {
        return registers_read(fpga, kRegister110, values);
    });
    if (status == DEVICE_OK) {
        registerBytes_unpack(values, record->bytes);
    }
    return status;
}

int32_t write_reg110_bytes(const Reg110Bytes* record)
{
    return fpga_run(FpgaAccess::kWrite, [record](Fpga fpga) {
        const int32_t status = registerBytes_write(fpga, kRegister110, record->bytes);
        return status == DEVICE_OK
                   ? register_change(fpga, kRegister114, bits_set(kCommitReg110, true))
                   : status;
    });
}

int32_t read_reg16a_block(Reg16ABlock* record)
{
    if (record->index > kIndex16AField) {
        return DEVICE_BAD_ARGUMENT;
    }
    uint16_t data[3] = {};
    uint16_t flags = 0;
    // Opened for writing: the index selects the block.
    const int32_t status = fpga_run(FpgaAccess::kWrite, [&, record](Fpga fpga) {
        int32_t result = block16A_select(fpga, record->index);
        if (result == DEVICE_OK) {
            result = registers_read(fpga, kBlock16AData, data);
        }
        return result == DEVICE_OK ? register_read(fpga, kBlock16AFlags, flags) : result;
    });
    if (status == DEVICE_OK) {
        registerBytes_unpack(data, record->data);
        uint8_t pair[2];
        flagFields_extract(kBlock16AFlagFields, flags, pair);
        record->flag_a = pair[0];
        record->flag_b = pair[1];
    }
    return status;
}

int32_t write_reg16a_block(const Reg16ABlock* record)
{
    if (record->index > kIndex16AField) {
        return DEVICE_BAD_ARGUMENT;
    }
    return fpga_run(FpgaAccess::kWrite, [record](Fpga fpga) {
        const unsigned mask = validMask_of(record->valid);
        int32_t status = block16A_select(fpga, record->index);
        if (status == DEVICE_OK && (mask & kValidBlock16AData) != 0) {
            status = registerBytes_write(fpga, kBlock16AData, record->data);
        }
        if (status == DEVICE_OK && (mask & kValidBlock16AFlags) != 0) {
            const uint8_t pair[2] = {record->flag_a, record->flag_b};
            status = register_change(fpga, kBlock16AFlags,
                                     flagFields_change(kBlock16AFlagFields, mask, pair));
        }
        return status;
    });
}

int32_t read_reg15a_fields(Reg15AFields* record)
{
    uint16_t value = 0;
    const int32_t status = command_readRegister(kRegister15A, value);
    if (status == DEVICE_OK) {
        record->a = static_cast<uint8_t>(value >> kField15AShiftA);
        record->b = static_cast<uint8_t>(value >> kField15AShiftB);
    }
    return status;
}

// Each field takes a whole byte of the register with it, its neighbours' bits included.
int32_t write_reg15a_fields(const Reg15AFields* record)
{
    const unsigned mask = validMask_of(record->valid);
    BitChange change{0, 0};
    if ((mask & kValidA) != 0) {
        change = field_set(kHighByte, static_cast<uint16_t>(record->a << kField15AShiftA));
    }
    if ((mask & kValidB) != 0) {
        change = bitChange_join(
            change, field_set(kLowByte, static_cast<uint16_t>(record->b << kField15AShiftB)));
    }
    if (change.clear == 0) {
        uint16_t unused = 0;
        return fpga_run(FpgaAccess::kWrite,
                        [&unused](Fpga fpga) { return register_read(fpga, kRegister15A, unused); });
    }
    return command_changeRegister(kRegister15A, change);
}

int32_t read_reg15c_pair(Reg15CPair* record)
{
    uint16_t values[2] = {};
    const int32_t status = fpga_run(FpgaAccess::kRead, [&values](Fpga fpga) {
        return registers_read(fpga, kRegister15C, values);
    });
    if (status == DEVICE_OK) {
        record->b = values[0];
        record->a = values[1];
    }
    return status;
}

int32_t write_reg15c_pair(const Reg15CPair* record)
{
    return fpga_run(FpgaAccess::kWrite, [record](Fpga fpga) -> int32_t {
        const unsigned mask = validMask_of(record->valid);
        int32_t status = DEVICE_OK;
        if ((mask & kValidA) != 0) {
            status = register_write(fpga, kRegister15E, record->a);
        }
        if (status == DEVICE_OK && (mask & kValidB) != 0) {
            status = register_write(fpga, kRegister15C, record->b);
        }
        return status;
    });
}

int32_t write_port_bit_set(const PortBit* record)
{
    return portBit_change(record->port, true);
}

int32_t write_port_bit_clear(const PortBit* record)
{
    return portBit_change(record->port, false);
}

int32_t read_register(RegisterValue* record)
{
    return command_readRegister(record->address, record->value);
}

int32_t write_register(const RegisterValue* record)
{
    const RegisterAccessRequest access{record->address, record->value};
    return command_writeRecordFailingAsRead(kRegisterWrite, &access);
}
