#include "device/access/register_bytes.h"

int32_t registers_read(Fpga fpga, uint32_t address, std::span<uint16_t> values)
{
    for (uint16_t& value : values) {
        const int32_t status = register_read(fpga, address, value);
        if (status != DEVICE_OK) {
            return status;
        }
        address += kRegisterStep;
    }
    return DEVICE_OK;
}

void registerBytes_unpack(std::span<const uint16_t> values, uint8_t* bytes)
{
    for (const uint16_t value : values) {
        *bytes++ = byte_high(value);
        *bytes++ = byte_low(value);
    }
}

int32_t registerBytes_write(Fpga fpga, uint32_t address, std::span<const uint8_t> bytes)
{
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto value = static_cast<uint16_t>(bytes[i] * 256U + bytes[i + 1]);
        const int32_t status = register_write(fpga, address, value);
        if (status != DEVICE_OK) {
            return status;
        }
        address += kRegisterStep;
    }
    return DEVICE_OK;
}
