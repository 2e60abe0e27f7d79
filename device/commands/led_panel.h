// Where each indicator of the front panel stands in the LED registers, and how its value becomes
// bits and back.
#pragma once

#include <array>
#include <cstdint>

#include "device/access/flag_fields.h"
#include "device/access/fpga.h"
#include "maint/led_state.h"

// Three-state indicators: a pair of bits.
struct LedIndicator {
    uint8_t LedStateRecord::*value;
    FpgaWord word;
    uint16_t low;
    uint16_t high;
};

constexpr LedIndicator kLedB{&LedStateRecord::ledB, kLedRegisterB, 0x0400, 0x0800};
constexpr LedIndicator kLedC{&LedStateRecord::ledC, kLedRegisterB, 0x0100, 0x0200};
constexpr LedIndicator kLedD{&LedStateRecord::ledD, kLedRegisterC, 0x0100, 0x0200};
constexpr LedIndicator kLedE{&LedStateRecord::ledE, kLedRegisterC, 0x0040, 0x0080};
constexpr LedIndicator kLedF{&LedStateRecord::ledF, kLedRegisterC, 0x0010, 0x0020};

// A setter's rule: 1 low alone, 2 high with low as it was, any other value neither.
constexpr BitChange indicator_set(const LedIndicator& indicator, uint8_t value)
{
    if (value == 2) {
        return bits_set(indicator.high, true);
    }
    return bitChange_join(bits_set(indicator.high, false), bits_set(indicator.low, value == 1));
}

BitChange indicator_change(const LedIndicator& indicator, const LedStateRecord& record);
// The restore's rule: as the setter's for 0, 1 and 2; any other value changes nothing.
BitChange indicator_restore(const LedIndicator& indicator, const LedStateRecord& record);
void indicator_decode(const LedIndicator& indicator, uint16_t word, LedStateRecord& record);

// The four-state indicator ledA and the alert bit beside it, in LED register B.
constexpr uint16_t kLedALow = 0x1000;
constexpr uint16_t kLedAHigh = 0x2000;
constexpr uint16_t kAlertBit = 0x0080;

enum LedAState : uint8_t { kLedAOff = 0, kLedAOn = 1, kLedACalm = 2, kLedAAlert = 3 };

// 0 neither, 1 low alone, 2 both, 3 high alone; any other value changes nothing.
constexpr BitChange ledA_change(uint8_t value)
{
    constexpr uint16_t kBoth = kLedALow | kLedAHigh;
    switch (value) {
    case kLedAOff:
        return field_set(kBoth, 0);
    case kLedAOn:
        return field_set(kBoth, kLedALow);
    case kLedACalm:
        return field_set(kBoth, kBoth);
    case kLedAAlert:
        return field_set(kBoth, kLedAHigh);
    default:
        return {0, 0};
    }
}
uint8_t ledA_decode(uint16_t word);

// Groups of three elements. Within a group's bits the first element is the highest, the second the
// lowest and the third the middle one.
constexpr std::array<uint8_t, 3> kElementBits = {0x4, 0x1, 0x2};

// Which element each bit of a valid mask selects.
using MaskOrder = std::array<uint8_t, 3>;
constexpr MaskOrder kElementsInOrder = {0, 1, 2}; // groups 1, 2, 3, 7
constexpr MaskOrder kElementsByBit = {0, 2, 1};   // groups 4, 5, 6

struct LedGroupPlace {
    LedGroup LedStateRecord::*group;
    FpgaWord word;
    uint8_t shift; // of the group's three bits
    MaskOrder order;
};

constexpr LedGroupPlace kLedGroup1{&LedStateRecord::group1, kLedRegisterB, 4, kElementsInOrder};
constexpr LedGroupPlace kLedGroup2{&LedStateRecord::group2, kLedRegisterC, 0, kElementsInOrder};
constexpr LedGroupPlace kLedGroup3{&LedStateRecord::group3, kLedRegisterA, 0, kElementsInOrder};
constexpr LedGroupPlace kLedGroup4{&LedStateRecord::group4, kLedRegisterA, 4, kElementsByBit};
constexpr LedGroupPlace kLedGroup5{&LedStateRecord::group5, kLedRegisterA, 8, kElementsByBit};
constexpr LedGroupPlace kLedGroup6{&LedStateRecord::group6, kLedRegisterA, 12, kElementsByBit};
constexpr LedGroupPlace kLedGroup7{&LedStateRecord::group7, kLedRegisterB, 0, kElementsInOrder};

constexpr uint16_t element_bit(const LedGroupPlace& place, unsigned element)
{
    return static_cast<uint16_t>(kElementBits[element] << place.shift);
}

// Whether a valid mask selects with its bit n.
constexpr bool mask_selects(uint8_t mask, unsigned n)
{
    return (validMask_of(mask) & (1U << n)) != 0;
}

// The elements that the record's valid mask selects.
BitChange group_change(const LedGroupPlace& place, const LedStateRecord& record);
// Every element, whatever the mask.
BitChange group_restore(const LedGroupPlace& place, const LedStateRecord& record);
void group_decode(const LedGroupPlace& place, uint16_t word, LedStateRecord& record);

// Everything that a register shows, into the record's own bytes of it.
void ledRegA_decode(uint16_t word, LedStateRecord& record);
void ledRegB_decode(uint16_t word, LedStateRecord& record);
void ledRegC_decode(uint16_t word, LedStateRecord& record);
