// Where each indicator of the front panel stands in the LED registers, and how its value becomes
// bits and back.
#pragma once

#include <cstdint>

#include "device/access/bit_change.h"
#include "device/access/flag_fields.h"
#include "device/access/requests.h"
#include "maint/device_commands.h"
#include "maint/led_state.h"

// Three-state indicators: a pair of bits, the high one above the low one.
struct LedIndicator {
    uint16_t command; // its setter
    uint16_t low;
    Word word;
    uint8_t LedStateRecord::*value;
};

constexpr LedIndicator kLedB{WR_LED_B, 0x0400, kLedRegisterB, &LedStateRecord::ledB};
constexpr LedIndicator kLedC{WR_LED_C, 0x0100, kLedRegisterB, &LedStateRecord::ledC};
constexpr LedIndicator kLedD{WR_LED_D, 0x0100, kLedRegisterC, &LedStateRecord::ledD};
constexpr LedIndicator kLedE{WR_LED_E, 0x0040, kLedRegisterC, &LedStateRecord::ledE};
constexpr LedIndicator kLedF{WR_LINE_MODE, 0x0010, kLedRegisterC, &LedStateRecord::ledF};

// In this order, and the line mode last, which is neither recorded nor restored.
enum class Indicator : uint16_t { kB, kC, kD, kE, kLineMode };
extern const LedIndicator kLedIndicators[5];
constexpr unsigned kLedIndicatorsKept = 4;

// A setter's rule: 1 low alone, 2 high with low as it was, any other value neither.
constexpr BitChange indicator_assign(const LedIndicator& indicator, uint8_t value)
{
    const unsigned high = unsigned{indicator.low} << 1;
    if (value == 2) {
        return bits_assign(high, true);
    }
    return bitChange_join(bits_assign(high, false), bits_assign(indicator.low, value == 1));
}

// The four-state indicator ledA and the alert bit beside it, in LED register B.
constexpr uint16_t kLedALow = 0x1000;
constexpr uint16_t kLedAHigh = 0x2000;
constexpr uint16_t kAlertBit = 0x0080;

enum LedAState : uint8_t { kLedAOff = 0, kLedAOn = 1, kLedACalm = 2, kLedAAlert = 3 };

// 0 neither, 1 low alone, 2 both, 3 high alone; any other value changes nothing.
constexpr BitChange ledA_assign(uint8_t value)
{
    constexpr uint16_t kBoth = kLedALow | kLedAHigh;
    constexpr uint16_t kBits[] = {0, kLedALow, kBoth, kLedAHigh};
    return value <= kLedAAlert ? field_assign(kBoth, kBits[value]) : kNoChange;
}
uint8_t ledA_decode(uint16_t word);

// Groups of three elements. Within a group's bits the first element is the highest, the second the
// lowest and the third the middle one.
constexpr unsigned kGroupElements = 3;
constexpr uint8_t kElementBits[kGroupElements] = {0x4, 0x1, 0x2};

// Which element each bit of a valid mask selects.
enum class MaskOrder : uint8_t {
    kByElement, // first, second, third: groups 1, 2, 3, 7
    kByBit,     // first, third, second: groups 4, 5, 6
};

struct LedGroupPlace {
    uint16_t command; // its setter
    Word word;
    uint8_t shift; // of the group's three bits
    MaskOrder order;
    LedGroup LedStateRecord::*group;
};

constexpr LedGroupPlace kLedGroup1{WR_LED_GROUP_1, kLedRegisterB, 4, MaskOrder::kByElement,
                                   &LedStateRecord::group1};
constexpr LedGroupPlace kLedGroup2{WR_LINE_FLAGS, kLedRegisterC, 0, MaskOrder::kByElement,
                                   &LedStateRecord::group2};
constexpr LedGroupPlace kLedGroup3{WR_LED_GROUP_3, kLedRegisterA, 0, MaskOrder::kByElement,
                                   &LedStateRecord::group3};
constexpr LedGroupPlace kLedGroup4{WR_LED_GROUP_4, kLedRegisterA, 4, MaskOrder::kByBit,
                                   &LedStateRecord::group4};
constexpr LedGroupPlace kLedGroup5{WR_LED_GROUP_5, kLedRegisterA, 8, MaskOrder::kByBit,
                                   &LedStateRecord::group5};
constexpr LedGroupPlace kLedGroup6{WR_LED_GROUP_6, kLedRegisterA, 12, MaskOrder::kByBit,
                                   &LedStateRecord::group6};
constexpr LedGroupPlace kLedGroup7{WR_LED_GROUP_7, kLedRegisterB, 0, MaskOrder::kByElement,
                                   &LedStateRecord::group7};

enum class Group : uint16_t { k1, kLineFlags, k3, k4, k5, k6, k7 };
extern const LedGroupPlace kLedGroups[7]; // in this order

constexpr unsigned element_bit(const LedGroupPlace& place, unsigned element)
{
    return static_cast<unsigned>(kElementBits[element]) << place.shift;
}

// Whether the valid mask of a group selects the element.
bool element_isSelected(const LedGroupPlace& place, uint8_t mask, unsigned element);

// The elements that the record's valid mask selects.
BitChange group_change(const LedGroupPlace& place, const LedStateRecord& record);

// What the end of the inhibit does to a register: every element of its groups, whatever their
// masks; its three-state indicators by the setter's rule, but a value above 2 changes nothing.
BitChange panel_restored(Word word, const LedStateRecord& record);

// Everything that a register shows, into the record's own bytes of it.
void ledRegA_decode(uint16_t word, LedStateRecord& record);
void ledRegB_decode(uint16_t word, LedStateRecord& record);
void ledRegC_decode(uint16_t word, LedStateRecord& record);
