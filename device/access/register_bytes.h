// Runs of bytes over consecutive registers, two bytes a register, the earlier one in the high half.
#pragma once

#include <cstdint>
#include <span>

#include "device/access/fpga.h"

constexpr uint32_t kRegisterStep = 2; // from one register's address to the next

constexpr uint8_t byte_high(uint16_t value)
{
    return static_cast<uint8_t>(value >> 8);
}

constexpr uint8_t byte_low(uint16_t value)
{
    return static_cast<uint8_t>(value);
}

// Reads consecutive registers, one for each value.
int32_t registers_read(Fpga fpga, uint32_t address, std::span<uint16_t> values);

// The registers' bytes, and whole registers from bytes; an even number of bytes.
void registerBytes_unpack(std::span<const uint16_t> values, uint8_t* bytes);
int32_t registerBytes_write(Fpga fpga, uint32_t address, std::span<const uint8_t> bytes);
