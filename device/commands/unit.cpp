// The own unit's identity.
#include "device/commands/unit.h"

#include <fcntl.h>
#include <unistd.h>

#include "device/access/fpga.h"

static_assert(sizeof(DeviceInfo) == 8);
static_assert(sizeof(IdRegisters) == 14);
static_assert(sizeof(SerialNumber) == 9);

namespace
{

constexpr uint32_t kIdRegister = 0x0180;
constexpr const char* kSerialNumberPath = "/tmp/serialno";

char hex_digit(unsigned value)
{
    return "0123456789abcdef"[value & 0xFU];
}

} // namespace

int32_t read_device_info(DeviceInfo* info)
{
    uint16_t words[sizeof(DeviceInfo) / sizeof(uint16_t)] = {};
    const int32_t status = command_readRecord(kDeviceInfoRead, words);
    if (status != DEVICE_OK) {
        return status;
    }
    // The bytes of each word are exchanged, which is to say that the high one comes first. Of the
    // third word that is its hexadecimal text.
    registerBytes_unpack(words, info->bytes);
    for (unsigned n = 0; n < sizeof info->text; ++n) {
        info->text[n] = hex_digit(static_cast<unsigned>(words[2]) >> (12 - 4 * n));
    }
    return DEVICE_OK;
}

int32_t read_id_registers(IdRegisters* registers)
{
    Fpga fpga = fpga_open(FpgaAccess::kRead);
    uint32_t address = kIdRegister;
    for (uint16_t& value : registers->value) {
        const uint16_t held = register_read(fpga, address);
        if (fpga_good(fpga)) {
            value = held;
        }
        address += kRegisterStep;
    }
    return fpga_close(fpga);
}

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
    if (got != sizeof serial->text) {
        return DEVICE_UNMAPPED;
    }
    return DEVICE_OK;
}
