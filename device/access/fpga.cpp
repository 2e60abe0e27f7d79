#include "device/access/fpga.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

constexpr const char* kFpgaPath = "/dev/fpga";

constexpr uint32_t kBesideRegister = 0xFFFF0000; // of a register record's value

int request_issue(Fpga& fpga, RequestNumber request, unsigned long argument, int32_t failure)
{
    if (!fpga_good(fpga)) {
        return 0;
    }
    const int result =
        ioctl(fpga.descriptor, kRequestBase + static_cast<unsigned>(request), argument);
    if (result < 0) {
        fpga.status = failure;
    }
    return result;
}

int32_t command_issue(RequestNumber request, unsigned long argument, FpgaAccess access,
                      int32_t failure)
{
    Fpga fpga = fpga_open(access);
    request_issue(fpga, request, argument, failure);
    return fpga_close(fpga);
}

// A record's address as a request's argument. What a read request fills comes here from a pointer
// that may be written to; what a write request points to the driver only reads.
unsigned long argument_of(const void* record)
{
    return reinterpret_cast<unsigned long>(record);
}

int32_t fpga_closeGiving(const Fpga& fpga, uint16_t value)
{
    const int32_t status = fpga_close(fpga);
    return status == DEVICE_OK ? value : status;
}

} // namespace

Fpga fpga_open(FpgaAccess access)
{
    const int descriptor = open(kFpgaPath, static_cast<int>(access) | O_NONBLOCK);
    return {descriptor, descriptor < 0 ? DEVICE_OPEN_FAILED : DEVICE_OK};
}

int32_t fpga_close(const Fpga& fpga)
{
    if (fpga.descriptor >= 0) {
        close(fpga.descriptor);
    }
    return fpga.status;
}

int record_issue(Fpga& fpga, RequestNumber request, void* record, int32_t failure)
{
    return request_issue(fpga, request, argument_of(record), failure);
}

int value_issue(Fpga& fpga, RequestNumber request, uint32_t value, int32_t failure)
{
    return request_issue(fpga, request, value, failure);
}

void record_read(Fpga& fpga, RequestNumber request, void* record)
{
    request_issue(fpga, request, argument_of(record), DEVICE_READ_FAILED);
}

void record_write(Fpga& fpga, RequestNumber request, const void* record)
{
    request_issue(fpga, request, argument_of(record), DEVICE_WRITE_FAILED);
}

void value_write(Fpga& fpga, RequestNumber request, uint32_t value)
{
    request_issue(fpga, request, value, DEVICE_WRITE_FAILED);
}

uint16_t word_read(Fpga& fpga, RequestNumber request)
{
    uint16_t value = 0;
    record_read(fpga, request, &value);
    return fpga_good(fpga) ? value : 0;
}

void word_write(Fpga& fpga, Word word, uint16_t value)
{
    value_write(fpga, request_writing(word), value);
}

void word_change(Fpga& fpga, Word word, BitChange change)
{
    word_write(fpga, word, bitChange_apply(change, word_read(fpga, word)));
}

uint16_t register_read(Fpga& fpga, uint32_t address)
{
    RegisterAccessRequest access{address, 0};
    record_read(fpga, kRegisterRead, &access);
    return fpga_good(fpga) ? static_cast<uint16_t>(access.value) : 0;
}

void register_write(Fpga& fpga, uint32_t address, uint16_t value)
{
    const RegisterAccessRequest access{address, value};
    record_write(fpga, kRegisterWrite, &access);
}

void register_change(Fpga& fpga, uint32_t address, BitChange change)
{
    RegisterAccessRequest access{address, 0};
    record_read(fpga, kRegisterRead, &access);
    access.value = (access.value & kBesideRegister) | bitChange_apply(change, access.value);
    record_write(fpga, kRegisterWrite, &access);
}

void registers_read(Fpga& fpga, uint32_t address, uint16_t* values, size_t count)
{
    for (; count > 0; --count) {
        *values++ = register_read(fpga, address);
        address += kRegisterStep;
    }
}

void registerBytes_write(Fpga& fpga, uint32_t address, const uint8_t* bytes, size_t size)
{
    for (; size > 0; size -= 2) {
        register_write(fpga, address, static_cast<uint16_t>(bytes[0] * 256U + bytes[1]));
        bytes += 2;
        address += kRegisterStep;
    }
}

void registerBytes_unpack(const uint16_t* values, uint8_t* bytes, size_t size)
{
    for (; size > 0; size -= 2) {
        *bytes++ = static_cast<uint8_t>(*values >> 8);
        *bytes++ = static_cast<uint8_t>(*values++);
    }
}

int32_t command_readRecord(RequestNumber request, void* record, FpgaAccess access)
{
    return command_issue(request, argument_of(record), access, DEVICE_READ_FAILED);
}

int32_t command_writeRecord(RequestNumber request, const void* record, int32_t failure)
{
    return command_issue(request, argument_of(record), FpgaAccess::kWrite, failure);
}

int32_t command_writeValue(RequestNumber request, uint32_t value)
{
    return command_issue(request, value, FpgaAccess::kWrite, DEVICE_WRITE_FAILED);
}

int32_t command_changeWord(Word word, BitChange change)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    word_change(fpga, word, change);
    return fpga_close(fpga);
}

int32_t command_changeRegister(uint32_t address, BitChange change)
{
    Fpga fpga = fpga_open(FpgaAccess::kWrite);
    register_change(fpga, address, change);
    return fpga_close(fpga);
}

int32_t command_readWord(RequestNumber request, FpgaAccess access)
{
    Fpga fpga = fpga_open(access);
    const uint16_t value = word_read(fpga, request);
    return fpga_closeGiving(fpga, value);
}

int32_t command_readRegister(uint32_t address, FpgaAccess access)
{
    Fpga fpga = fpga_open(access);
    const uint16_t value = register_read(fpga, address);
    return fpga_closeGiving(fpga, value);
}

int32_t command_readRegisters(uint32_t address, uint16_t* values, size_t count)
{
    Fpga fpga = fpga_open(FpgaAccess::kRead);
    registers_read(fpga, address, values, count);
    return fpga_close(fpga);
}

int32_t command_readWordFlag(RequestNumber request, unsigned mask)
{
    const int32_t value = command_readWord(request);
    return value < 0 ? value : (value & static_cast<int32_t>(mask)) != 0 ? 1 : 0;
}

int32_t command_readRegisterFlag(uint32_t address, unsigned mask)
{
    const int32_t value = command_readRegister(address);
    return value < 0 ? value : (value & static_cast<int32_t>(mask)) != 0 ? 1 : 0;
}
