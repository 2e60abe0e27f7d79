#include "device/access/families.h"

#include <cstring>

namespace
{

uint32_t address_of(RegisterBit which)
{
    return static_cast<unsigned>(which) >> 4;
}

uint16_t mask_of(RegisterBit which)
{
    return static_cast<uint16_t>(1U << (static_cast<unsigned>(which) & 15U));
}

int32_t bit_held(RegisterBit which)
{
    return command_readRegisterFlag(address_of(which), mask_of(which));
}

int32_t bit_assign(RegisterBit which, bool on)
{
    return command_changeRegister(address_of(which), bits_assign(mask_of(which), on));
}

uint32_t address_of(RegisterField which)
{
    return static_cast<unsigned>(which) >> 5;
}

uint16_t mask_of(RegisterField which)
{
    return static_cast<uint16_t>((1U << (static_cast<unsigned>(which) >> 1 & 15U)) - 1);
}

bool refuses(RegisterField which)
{
    return (static_cast<unsigned>(which) & 1U) != 0;
}

} // namespace

int32_t bit_read8(uint8_t* flag, RegisterBit which)
{
    return value_store(bit_held(which), flag);
}

int32_t bit_read16(uint16_t* flag, RegisterBit which)
{
    return value_store(bit_held(which), flag);
}

int32_t bit_write8(const uint8_t* flag, RegisterBit which)
{
    return bit_assign(which, *flag == 1);
}

int32_t bit_write16(const uint16_t* flag, RegisterBit which)
{
    return bit_assign(which, *flag == 1);
}

int32_t field_read(uint16_t* value, RegisterField which)
{
    const int32_t held = command_readRegister(address_of(which));
    if (held < 0) {
        return held;
    }
    // What is cut to the mask cannot be above it, so nothing is refused here.
    *value = static_cast<uint16_t>(held & mask_of(which));
    return DEVICE_OK;
}

int32_t field_write(const uint16_t* value, RegisterField which)
{
    if (refuses(which) && *value > mask_of(which)) {
        return DEVICE_BAD_ARGUMENT;
    }
    return command_changeRegister(address_of(which), field_assign(mask_of(which), *value));
}

int32_t record_passOut(void* record, FilledRequest which)
{
    const auto packed = static_cast<unsigned>(which);
    return command_readRecord(static_cast<RequestNumber>(packed & 0xFFU), record,
                              (packed & kSecondChoice) != 0 ? FpgaAccess::kWrite
                                                            : FpgaAccess::kRead);
}

int32_t record_passIn(const void* record, SentRequest which)
{
    return command_writeRecord(request_in(which), record, failure_in(which));
}

int32_t value_send8(const uint8_t* value, RequestNumber which)
{
    return command_writeValue(which, *value);
}

int32_t value_send16(const uint16_t* value, RequestNumber which)
{
    return command_writeValue(which, *value);
}

int32_t copy_send(const void* record, CopiedRequest which)
{
    const auto packed = static_cast<unsigned>(which);
    alignas(uint32_t) uint8_t copy[kCopyMax];
    memcpy(copy, record, size_t{packed >> 8 & 0x7FU} * 2);
    return command_writeRecord(static_cast<RequestNumber>(packed & 0xFFU), copy,
                               packed > 0x7FFF ? DEVICE_READ_FAILED : DEVICE_WRITE_FAILED);
}
