// Whole commands that report one bit (or any of several) of a word or a register as 0 or 1.
#pragma once

#include <cstdint>

#include "device/access/fpga.h"

// `flag` is the caller's 8 or 16-bit value, written on success only.
template <class Flag> int32_t wordFlag_read(FpgaRequest request, uint16_t mask, Flag* flag)
{
    uint16_t word = 0;
    const int32_t status = command_readWord(request, word);
    if (status == DEVICE_OK) {
        *flag = (word & mask) != 0 ? 1 : 0;
    }
    return status;
}

template <class Flag> int32_t registerFlag_read(uint32_t address, uint16_t mask, Flag* flag)
{
    uint16_t value = 0;
    const int32_t status = command_readRegister(address, value);
    if (status == DEVICE_OK) {
        *flag = (value & mask) != 0 ? 1 : 0;
    }
    return status;
}
