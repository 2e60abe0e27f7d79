#include "device/commands/led_panel.h"

#include <cstddef>

static_assert(sizeof(LedStateRecord) == 44);
static_assert(offsetof(LedStateRecord, ledA) == 8);
static_assert(offsetof(LedStateRecord, ledF) == 13);
static_assert(offsetof(LedStateRecord, group1) == 14);
static_assert(offsetof(LedStateRecord, group2) == 18);
static_assert(offsetof(LedStateRecord, group3) == 24);
static_assert(offsetof(LedStateRecord, group7) == 40);

BitChange indicator_change(const LedIndicator& indicator, const LedStateRecord& record)
{
    return indicator_set(indicator, record.*indicator.value);
}

BitChange indicator_restore(const LedIndicator& indicator, const LedStateRecord& record)
{
    return record.*indicator.value <= 2 ? indicator_change(indicator, record) : BitChange{0, 0};
}

void indicator_decode(const LedIndicator& indicator, uint16_t word, LedStateRecord& record)
{
    const uint8_t low = (word & indicator.low) != 0 ? 1 : 0;
    record.*indicator.value = (word & indicator.high) != 0 ? uint8_t{2} : low;
}

uint8_t ledA_decode(uint16_t word)
{
    const bool low = (word & kLedALow) != 0;
    if ((word & kLedAHigh) != 0) {
        return low ? kLedACalm : kLedAAlert;
    }
    return low ? kLedAOn : kLedAOff;
}

BitChange group_change(const LedGroupPlace& place, const LedStateRecord& record)
{
    const LedGroup& group = record.*place.group;
    BitChange change{0, 0};
    for (unsigned n = 0; n < place.order.size(); ++n) {
        if (mask_selects(group.valid, n)) {
            const unsigned element = place.order[n];
            change = bitChange_join(
                change, bits_set(element_bit(place, element), group.element[element] == 1));
        }
    }
    return change;
}

BitChange group_restore(const LedGroupPlace& place, const LedStateRecord& record)
{
    LedStateRecord whole = record;
    (whole.*place.group).valid = 0;
    return group_change(place, whole);
}

void group_decode(const LedGroupPlace& place, uint16_t word, LedStateRecord& record)
{
    LedGroup& group = record.*place.group;
    for (unsigned element = 0; element < kElementBits.size(); ++element) {
        group.element[element] = (word & element_bit(place, element)) != 0 ? 1 : 0;
    }
}

void ledRegA_decode(uint16_t word, LedStateRecord& record)
{
    for (const LedGroupPlace& place : {kLedGroup3, kLedGroup4, kLedGroup5, kLedGroup6}) {
        group_decode(place, word, record);
    }
}

void ledRegB_decode(uint16_t word, LedStateRecord& record)
{
    record.ledA = ledA_decode(word);
    indicator_decode(kLedB, word, record);
    indicator_decode(kLedC, word, record);
    group_decode(kLedGroup1, word, record);
    group_decode(kLedGroup7, word, record);
}

void ledRegC_decode(uint16_t word, LedStateRecord& record)
{
    indicator_decode(kLedD, word, record);
    indicator_decode(kLedE, word, record);
    indicator_decode(kLedF, word, record);
    group_decode(kLedGroup2, word, record);
}
