// Access to /dev/fpga, for every command: open, issue requests on that one descriptor, close on
// every path. The procedures here return the status that a command passes on: 0, -1 when the
// device cannot be opened, -2 when a read request and -4 when a write request failed.
#pragma once

#include <fcntl.h>

#include <cstdint>
#include <type_traits>

#include "device/access/requests.h"
#include "maint/fpga.h"

// The record of the register requests.
struct RegisterAccessRequest {
    uint32_t address;
    uint32_t value; // the 16-bit register in the low half
};
static_assert(sizeof(RegisterAccessRequest) == 8);

// An open descriptor on /dev/fpga.
struct Fpga {
    int descriptor;
};

enum class FpgaAccess : int { kRead = O_RDONLY, kWrite = O_RDWR };

// For fpga_run, and for the two commands that leave the device open when their request fails.
Fpga fpga_open(FpgaAccess access); // negative descriptor: not opened
void fpga_close(Fpga fpga);

int32_t fpga_runOpened(FpgaAccess access, int32_t (*work)(Fpga fpga, void* context), void* context);

// Opens the device (non-blocking), runs `work` on it, closes it and returns work's status.
template <class Work> int32_t fpga_run(FpgaAccess access, Work work)
{
    return fpga_runOpened(
        access, [](Fpga fpga, void* context) { return (*static_cast<Work*>(context))(fpga); },
        &work);
}

// One request with the address of a record, or with a value instead of it; the driver's result.
int fpga_request(Fpga fpga, FpgaRequest request, void* record);
int fpga_requestValue(Fpga fpga, FpgaRequest request, uint32_t value);

// A read request that fills a record, and a write request that sends one. The record is the
// driver's, or the caller's own where a command passes it through.
int32_t record_read(Fpga fpga, FpgaRequest request, void* record);
int32_t record_write(Fpga fpga, FpgaRequest request, const void* record);
int32_t value_write(Fpga fpga, FpgaRequest request, uint32_t value);

// A whole command that is one such request: opened, issued, closed.
int32_t command_readRecord(FpgaRequest request, void* record);
int32_t command_writeRecord(FpgaRequest request, const void* record);
int32_t command_writeValue(FpgaRequest request, uint32_t value);
// For the writes whose failure is reported as that of a read, -2.
int32_t status_failingAsRead(int32_t status);
int32_t command_writeRecordFailingAsRead(FpgaRequest request, const void* record);

// What a setter does to a word or a register: bits to clear, then bits to set.
struct BitChange {
    uint16_t clear;
    uint16_t set;
};

constexpr uint16_t bitChange_apply(BitChange change, uint16_t word)
{
    return static_cast<uint16_t>((word & ~change.clear) | change.set);
}

// `first`, and then `second`.
constexpr BitChange bitChange_join(BitChange first, BitChange second)
{
    return {static_cast<uint16_t>(first.clear | second.clear),
            static_cast<uint16_t>((first.set & ~second.clear) | second.set)};
}

// Sets all bits of the mask, or clears them.
constexpr BitChange bits_set(uint16_t mask, bool on)
{
    return {mask, on ? mask : uint16_t{0}};
}

// Replaces the field of the mask by the value's bits.
constexpr BitChange field_set(uint16_t mask, uint16_t value)
{
    return {mask, static_cast<uint16_t>(value & mask)};
}

// Words: read into a cleared word, written by value.
int32_t word_read(Fpga fpga, FpgaRequest request, uint16_t& word);
int32_t word_change(Fpga fpga, FpgaWord word, BitChange change);
int32_t command_changeWord(FpgaWord word, BitChange change);

// A whole command that reads one word; `word` is written on success only.
int32_t command_readWord(FpgaRequest request, uint16_t& word);

// Registers; `value` is written on success only. A change writes the record back as the driver
// returned it, but for the register's 16 bits.
int32_t register_read(Fpga fpga, uint32_t address, uint16_t& value);
int32_t register_write(Fpga fpga, uint32_t address, uint16_t value);
int32_t register_change(Fpga fpga, uint32_t address, BitChange change);
int32_t command_readRegister(uint32_t address, uint16_t& value);
int32_t command_writeRegister(uint32_t address, uint16_t value);
int32_t command_changeRegister(uint32_t address, BitChange change);
