#include "device/access/flag_fields.h"

#include "maint/fpga.h"

BitChange flagFields_change(const uint16_t* bits, size_t count, unsigned mask, const uint8_t* flags)
{
    BitChange change = kNoChange;
    const unsigned selected = validMask_of(mask);
    for (size_t n = 0; n < count; ++n) {
        if ((selected & (1U << n)) != 0) {
            change = bitChange_join(change, bits_assign(bits[n], flags[n] == 1));
        }
    }
    return change;
}

void flagFields_extract(const uint16_t* bits, size_t count, uint16_t word, uint8_t* flags)
{
    for (size_t n = 0; n < count; ++n) {
        flags[n] = (word & bits[n]) != 0 ? 1 : 0;
    }
}

int32_t flags_store(int32_t wordOrStatus, const uint16_t* bits, size_t count, uint8_t* flags)
{
    if (wordOrStatus < 0) {
        return wordOrStatus;
    }
    flagFields_extract(bits, count, static_cast<uint16_t>(wordOrStatus), flags);
    return DEVICE_OK;
}
