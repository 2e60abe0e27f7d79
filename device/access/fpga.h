// The one way to /dev/fpga. A command opens the device, issues its requests on that one descriptor
// and closes it:
//
//     Fpga fpga = fpga_open(FpgaAccess::kRead);
//     const uint16_t word = word_read(fpga, kWord03);
//     const uint16_t value = register_read(fpga, kRegister158);
//     if (fpga_good(fpga)) {
//         *record = ...;
//     }
//     return fpga_close(fpga);
//
// The first failure stands: the open device carries it, requests after it are not issued, and the
// close tells it. So a sequence needs no test between its requests, and between open and close
// stands no return (a check of the repository looks). What else must not happen after a failure
// asks fpga_good: writing to the caller's record, a sleep, an event, a command within the command.
//
// The failures: -1 not opened, -2 a read request and -4 a write request failed.
#pragma once

#include <fcntl.h>

#include <cstddef>
#include <cstdint>

#include "device/access/bit_change.h"
#include "device/access/requests.h"
#include "maint/fpga.h"

struct Fpga {
    int descriptor;
    int32_t status; // DEVICE_OK or the first failure
};

enum class FpgaAccess : int { kRead = O_RDONLY, kWrite = O_RDWR };

// Non-blocking. A device that cannot be opened carries DEVICE_OPEN_FAILED.
[[nodiscard]] Fpga fpga_open(FpgaAccess access);
// Closes what was opened, and returns the status.
[[nodiscard]] int32_t fpga_close(const Fpga& fpga);

constexpr bool fpga_good(const Fpga& fpga)
{
    return fpga.status == DEVICE_OK;
}

// A failure that is no request's, such as a value out of range or a command within the command;
// DEVICE_OK is none.
constexpr void fpga_fail(Fpga& fpga, int32_t status)
{
    if (fpga_good(fpga)) {
        fpga.status = status;
    }
}

// Issues a request with the address of a record, or with a value. A negative result makes the
// device fail with `failure`; DEVICE_OK: it is ignored. Returns the driver's result; 0 when the
// request was not issued.
int record_issue(Fpga& fpga, RequestNumber request, void* record, int32_t failure);
int value_issue(Fpga& fpga, RequestNumber request, uint32_t value, int32_t failure);

// A read request that fills a record, and a write request that sends one. The record is the
// driver's, or the caller's own where a command passes it through.
void record_read(Fpga& fpga, RequestNumber request, void* record);
void record_write(Fpga& fpga, RequestNumber request, const void* record);
void value_write(Fpga& fpga, RequestNumber request, uint32_t value);

// Words. What cannot be read is 0.
uint16_t word_read(Fpga& fpga, RequestNumber request);
inline uint16_t word_read(Fpga& fpga, Word word)
{
    return word_read(fpga, request_reading(word));
}
void word_write(Fpga& fpga, Word word, uint16_t value);
void word_change(Fpga& fpga, Word word, BitChange change);

// The record of the register requests.
struct RegisterAccessRequest {
    uint32_t address;
    uint32_t value; // the 16-bit register in the low half
};
static_assert(sizeof(RegisterAccessRequest) == 8);

constexpr uint32_t kRegisterStep = 2; // from one register's address to the next

// Registers. What cannot be read is 0. A change writes the record back as the driver returned it,
// but for the register's 16 bits.
uint16_t register_read(Fpga& fpga, uint32_t address);
void register_write(Fpga& fpga, uint32_t address, uint16_t value);
void register_change(Fpga& fpga, uint32_t address, BitChange change);

// Consecutive registers. As bytes they stand two in a register, the earlier one in the high half.
void registers_read(Fpga& fpga, uint32_t address, uint16_t* values, size_t count);
void registerBytes_write(Fpga& fpga, uint32_t address, const uint8_t* bytes, size_t size);
void registerBytes_unpack(const uint16_t* values, uint8_t* bytes, size_t size);

template <size_t kCount>
void registers_read(Fpga& fpga, uint32_t address, uint16_t (&values)[kCount])
{
    registers_read(fpga, address, values, kCount);
}

template <size_t kSize>
void registerBytes_write(Fpga& fpga, uint32_t address, const uint8_t (&bytes)[kSize])
{
    static_assert(kSize % 2 == 0);
    registerBytes_write(fpga, address, bytes, kSize);
}

template <size_t kSize> void registerBytes_unpack(const uint16_t* values, uint8_t (&bytes)[kSize])
{
    static_assert(kSize % 2 == 0);
    registerBytes_unpack(values, bytes, kSize);
}

// Whole commands that are one step: opened, one request, closed. `access` is kWrite for the reports
// that open the device for writing although they only read, `failure` -2 for the setters whose
// failed write is told as that of a read.
int32_t command_readRecord(RequestNumber request, void* record,
                           FpgaAccess access = FpgaAccess::kRead);
int32_t command_writeRecord(RequestNumber request, const void* record,
                            int32_t failure = DEVICE_WRITE_FAILED);
int32_t command_writeValue(RequestNumber request, uint32_t value);
int32_t command_changeWord(Word word, BitChange change);
int32_t command_changeRegister(uint32_t address, BitChange change);
// The 16 bits, or the negative status.
int32_t command_readWord(RequestNumber request, FpgaAccess access = FpgaAccess::kRead);
inline int32_t command_readWord(Word word, FpgaAccess access = FpgaAccess::kRead)
{
    return command_readWord(request_reading(word), access);
}
int32_t command_readRegister(uint32_t address, FpgaAccess access = FpgaAccess::kRead);
// Consecutive registers; after a failure the values are none.
int32_t command_readRegisters(uint32_t address, uint16_t* values, size_t count);
template <size_t kCount> int32_t command_readRegisters(uint32_t address, uint16_t (&values)[kCount])
{
    return command_readRegisters(address, values, kCount);
}
// 1 if any of the bits is set, else 0; or the negative status.
int32_t command_readWordFlag(RequestNumber request, unsigned mask);
int32_t command_readRegisterFlag(uint32_t address, unsigned mask);

// Hands such a value to the caller, unless it is a negative status, which is returned.
template <class Value> int32_t value_store(int32_t valueOrStatus, Value* value)
{
    if (valueOrStatus < 0) {
        return valueOrStatus;
    }
    *value = static_cast<Value>(valueOrStatus);
    return DEVICE_OK;
}
