#include "device/commands/register_field.h"

int32_t field_read(const RegisterField& field, uint16_t* value)
{
    uint16_t held = 0;
    const int32_t status = command_readRegister(field.address, held);
    if (status == DEVICE_OK) {
        // What is cut to the mask cannot be above it, so nothing is refused here.
        *value = held & field.mask;
    }
    return status;
}

int32_t field_write(const RegisterField& field, uint16_t value)
{
    if (field.checked && value > field.mask) {
        return DEVICE_BAD_ARGUMENT;
    }
    return command_changeRegister(field.address, field_set(field.mask, value));
}
