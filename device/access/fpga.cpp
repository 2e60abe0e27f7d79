#include "device/access/fpga.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

constexpr const char* kFpgaPath = "/dev/fpga";

constexpr uint32_t kBesideRegister = 0xFFFF0000; // of a register record's value

} // namespace

Fpga fpga_open(FpgaAccess access)
{
    return {open(kFpgaPath, static_cast<int>(access) | O_NONBLOCK)};
}

void fpga_close(Fpga fpga)
{
    close(fpga.descriptor);
}

int32_t fpga_runOpened(FpgaAccess access, int32_t (*work)(Fpga, void*), void* context)
{
    const Fpga fpga = fpga_open(access);
    if (fpga.descriptor < 0) {
        return DEVICE_OPEN_FAILED;
    }
    const int32_t status = work(fpga, context);
    fpga_close(fpga);
    return status;
}

int fpga_request(Fpga fpga, FpgaRequest request, void* record)
{
    return ioctl(fpga.descriptor, request, record);
}

int fpga_requestValue(Fpga fpga, FpgaRequest request, uint32_t value)
{
    return ioctl(fpga.descriptor, request, static_cast<unsigned long>(value));
}

int32_t record_read(Fpga fpga, FpgaRequest request, void* record)
{
    return fpga_request(fpga, request, record) < 0 ? DEVICE_READ_FAILED : DEVICE_OK;
}

int32_t record_write(Fpga fpga, FpgaRequest request, const void* record)
{
    // The driver only reads what a write request points to.
    return fpga_request(fpga, request, const_cast<void*>(record)) < 0 ? DEVICE_WRITE_FAILED
                                                                      : DEVICE_OK;
}

int32_t value_write(Fpga fpga, FpgaRequest request, uint32_t value)
{
    return fpga_requestValue(fpga, request, value) < 0 ? DEVICE_WRITE_FAILED : DEVICE_OK;
}

int32_t command_readRecord(FpgaRequest request, void* record)
{
    return fpga_run(FpgaAccess::kRead,
                    [=](Fpga fpga) { return record_read(fpga, request, record); });
}

int32_t command_writeRecord(FpgaRequest request, const void* record)
{
    return fpga_run(FpgaAccess::kWrite,
                    [=](Fpga fpga) { return record_write(fpga, request, record); });
}

int32_t status_failingAsRead(int32_t status)
{
    return status == DEVICE_WRITE_FAILED ? DEVICE_READ_FAILED : status;
}

int32_t command_writeRecordFailingAsRead(FpgaRequest request, const void* record)
{
    return status_failingAsRead(command_writeRecord(request, record));
}

int32_t command_writeValue(FpgaRequest request, uint32_t value)
{
    return fpga_run(FpgaAccess::kWrite,
                    [=](Fpga fpga) { return value_write(fpga, request, value); });
}

int32_t word_read(Fpga fpga, FpgaRequest request, uint16_t& word)
{
    word = 0;
    return record_read(fpga, request, &word);
}

int32_t word_change(Fpga fpga, FpgaWord word, BitChange change)
{
    uint16_t value = 0;
    const int32_t status = word_read(fpga, word.read, value);
    return status != DEVICE_OK ? status
                               : value_write(fpga, word.write, bitChange_apply(change, value));
}

int32_t command_changeWord(FpgaWord word, BitChange change)
{
    return fpga_run(FpgaAccess::kWrite, [=](Fpga fpga) { return word_change(fpga, word, change); });
}

int32_t command_readWord(FpgaRequest request, uint16_t& word)
{
    uint16_t value = 0;
    const int32_t status = command_readRecord(request, &value);
    if (status == DEVICE_OK) {
        word = value;
    }
    return status;
}

int32_t register_read(Fpga fpga, uint32_t address, uint16_t& value)
{
    RegisterAccessRequest access{address, 0};
    const int32_t status = record_read(fpga, kRegisterRead, &access);
    if (status == DEVICE_OK) {
        value = static_cast<uint16_t>(access.value);
    }
    return status;
}

int32_t register_write(Fpga fpga, uint32_t address, uint16_t value)
{
    const RegisterAccessRequest access{address, value};
    return record_write(fpga, kRegisterWrite, &access);
}

int32_t register_change(Fpga fpga, uint32_t address, BitChange change)
{
    RegisterAccessRequest access{address, 0};
    const int32_t status = record_read(fpga, kRegisterRead, &access);
    if (status != DEVICE_OK) {
        return status;
    }
    access.value = (access.value & kBesideRegister) |
                   bitChange_apply(change, static_cast<uint16_t>(access.value));
    return record_write(fpga, kRegisterWrite, &access);
}

int32_t command_readRegister(uint32_t address, uint16_t& value)
{
    return fpga_run(FpgaAccess::kRead,
                    [&](Fpga fpga) { return register_read(fpga, address, value); });
}

int32_t command_writeRegister(uint32_t address, uint16_t value)
{
    return fpga_run(FpgaAccess::kWrite,
                    [=](Fpga fpga) { return register_write(fpga, address, value); });
}

int32_t command_changeRegister(uint32_t address, BitChange change)
{
    return fpga_run(FpgaAccess::kWrite,
                    [=](Fpga fpga) { return register_change(fpga, address, change); });
}
