#include "device/access/flag_fields.h"

BitChange flagFields_change(std::span<const FlagField> fields, unsigned mask, const uint8_t* flags)
{
    BitChange change{0, 0};
    const unsigned selected = validMask_of(mask);
    unsigned selector = 1;
    for (const FlagField& field : fields) {
        if ((selected & selector) != 0) {
            change = bitChange_join(change, bits_set(field.bit, flags[field.flag] == 1));
        }
        selector <<= 1;
    }
    return change;
}

void flagFields_extract(std::span<const FlagField> fields, uint16_t word, uint8_t* flags)
{
    for (const FlagField& field : fields) {
        flags[field.flag] = (word & field.bit) != 0 ? 1 : 0;
    }
}
