// Driver records that concern one unit or identifier and serve several command groups.
#pragma once

#include <cstddef>
#include <cstdint>

// kUnitWordsRead. Page 0: LED registers B and A, page 1: the channel word and LED register C.
struct UnitWordsRequest {
    uint32_t unit;
    uint16_t first;  // out
    uint16_t second; // out
    uint16_t page;
    uint16_t reserved;
    uint8_t spare[4];
};
static_assert(sizeof(UnitWordsRequest) == 16);
static_assert(offsetof(UnitWordsRequest, page) == 8);

// kIdValueRead
constexpr uint16_t kIdValueSelect = 1;

struct IdValueRequest {
    uint32_t id;
    uint8_t spare_4[6];
    uint16_t select; // always kIdValueSelect
    uint16_t value;  // out
    uint8_t spare_14[2];
};
static_assert(sizeof(IdValueRequest) == 16);
static_assert(offsetof(IdValueRequest, select) == 10);
static_assert(offsetof(IdValueRequest, value) == 12);
