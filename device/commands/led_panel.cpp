#include "device/commands/led_panel.h"

#include <cstddef>
#include <cstring>

static_assert(sizeof(LedStateRecord) == 44);
static_assert(offsetof(LedStateRecord, ledA) == 8);
static_assert(offsetof(LedStateRecord, ledF) == 13);
static_assert(offsetof(LedStateRecord, group1) == 14);
static_assert(offsetof(LedStateRecord, group2) == 18);
static_assert(offsetof(LedStateRecord, group3) == 24);
static_assert(offsetof(LedStateRecord, group7) == 40);

namespace
{

// In the order of IndicatorId, and then the line mode, which is neither recorded nor restored.
constexpr LedIndicator kIndicators[] = {kLedB, kLedC, kLedD, kLedE, kLedF};
constexpr unsigned kIndicatorsKept = 4;

// In the order of GroupId, and then those that have a setter of their own.
constexpr LedGroupPlace kGroups[] = {kLedGroup3, kLedGroup4, kLedGroup5, kLedGroup6,
                                     kLedGroup1, kLedGroup2, kLedGroup7};

BitChange elements_assign(const LedGroupPlace& place, const LedGroup& group, uint8_t mask)
{
    BitChange change = kNoChange;
    for (unsigned element = 0; element < kGroupElements; ++element) {
        if (element_isSelected(place, mask, element)) {
            change = bitChange_join(
                change, bits_assign(element_bit(place, element), group.element[element] == 1));
        }
    }
    return change;
}

void register_decode(Word shows, uint16_t word, LedStateRecord& record)
{
    for (const LedIndicator& indicator : kIndicators) {
        if (indicator.word == shows) {
            const uint8_t low = (word & indicator.low) != 0 ? 1 : 0;
            record.*indicator.value = (word & 2U * indicator.low) != 0 ? uint8_t{2} : low;
        }
    }
    for (const LedGroupPlace& place : kGroups) {
        if (place.word == shows) {
            for (unsigned element = 0; element < kGroupElements; ++element) {
                (record.*place.group).element[element] =
                    (word & element_bit(place, element)) != 0 ? 1 : 0;
            }
        }
    }
}

} // namespace

const LedIndicator& indicator_get(IndicatorId which)
{
    return kIndicators[static_cast<unsigned>(which)];
}

const LedGroupPlace& group_get(GroupId which)
{
    return kGroups[static_cast<unsigned>(which)];
}

uint8_t ledA_decode(uint16_t word)
{
    const bool low = (word & kLedALow) != 0;
    if ((word & kLedAHigh) != 0) {
        return low ? kLedACalm : kLedAAlert;
    }
    return low ? kLedAOn : kLedAOff;
}

bool element_isSelected(const LedGroupPlace& place, uint8_t mask, unsigned element)
{
    const bool other = place.order == MaskOrder::kByBit && element != 0;
    const unsigned bit = other ? kGroupElements - element : element; // second and third exchanged
    return (validMask_of(mask) & (1U << bit)) != 0;
}

BitChange group_change(const LedGroupPlace& place, const LedStateRecord& record)
{
    const LedGroup& group = record.*place.group;
    return elements_assign(place, group, group.valid);
}

bool recorded_copy(int32_t command, const LedStateRecord& from, LedStateRecord& into)
{
    if (command == WR_LED_A) {
        into.ledA = from.ledA;
        return true;
    }
    for (unsigned n = 0; n < kIndicatorsKept; ++n) {
        const LedIndicator& indicator = kIndicators[n];
        if (indicator.command == command) {
            into.*indicator.value = from.*indicator.value;
            return true;
        }
    }
    for (const LedGroupPlace& place : kGroups) {
        if (place.command == command) {
            LedGroup& group = into.*place.group;
            memcpy(group.element, (from.*place.group).element, sizeof group.element);
            return true;
        }
    }
    return false;
}

BitChange panel_restored(Word word, const LedStateRecord& record)
{
    BitChange change = kNoChange;
    for (const LedGroupPlace& place : kGroups) {
        if (place.word == word) {
            change = bitChange_join(change, elements_assign(place, record.*place.group, 0));
        }
    }
    for (unsigned n = 0; n < kIndicatorsKept; ++n) {
        const LedIndicator& indicator = kIndicators[n];
        const uint8_t value = record.*indicator.value;
        if (indicator.word == word && value <= 2) {
            change = bitChange_join(change, indicator_assign(indicator, value));
        }
    }
    return change;
}

void ledRegA_decode(uint16_t word, LedStateRecord& record)
{
    register_decode(kLedRegisterA, word, record);
}

void ledRegB_decode(uint16_t word, LedStateRecord& record)
{
    record.ledA = ledA_decode(word);
    register_decode(kLedRegisterB, word, record);
}

void ledRegC_decode(uint16_t word, LedStateRecord& record)
{
    register_decode(kLedRegisterC, word, record);
}
