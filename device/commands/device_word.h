// Commands that move one word between the caller and the device, or flags in it.
#pragma once

#include <cstdint>

#include "device/access/families.h"
#include "maint/commands/device_word.h"

constexpr CommandCall read_device_word_27 = record_passedOut<uint16_t>(kWord27Read);
constexpr CommandCall read_device_word_29 = record_passedOut<uint16_t>(kOwnIdRead);
constexpr CommandCall read_device_word_03 = record_passedOut<uint16_t>(request_reading(kWord03));
constexpr CommandCall read_device_word_3b = record_passedOut<uint32_t>(kUnitMapERead);
constexpr CommandCall read_device_word_4e =
    record_passedOut<uint16_t>(kWord4ERead, FpgaAccess::kWrite);
constexpr CommandCall write_device_word_41 = record_passedIn<uint16_t>(kWord41Write);
constexpr CommandCall write_device_word_28 = value_sent<uint16_t>(kWord28Write);
constexpr CommandCall write_device_word_2a = value_sent<uint16_t>(kWord2AWrite);
constexpr CommandCall write_device_word_04 = value_sent<uint16_t>(request_writing(kWord03));

int32_t read_device_word_40(uint16_t* word);
int32_t read_device_word_21(uint16_t* word);
int32_t write_device_word_22(const uint16_t* word);
int32_t read_device_word_48(uint16_t* code);
int32_t write_device_word_49(const uint16_t* code);
int32_t read_indexed_word(IndexedWord* record);
int32_t write_indexed_word(const IndexedWord* record);

int32_t read_enable_flag(uint8_t* flag);
int32_t write_enable_flag(const uint8_t* flag);
int32_t read_group_flag(uint8_t* flag);
int32_t write_group_flag(const uint8_t* flag);
int32_t read_device_word_35(uint16_t* flag);
int32_t write_device_word_36(const uint16_t* flag);
int32_t read_vlant_map_enable(uint16_t* flag);
int32_t write_vlant_map_enable(const uint16_t* flag);
int32_t read_control_bits(ControlBits* bits);
int32_t write_control_bits(const ControlBits* bits);

// RD_DEVICE_WORD_29, RD_DEVICE_WORD_03 and RD_DEVICE_WORD_3B for other commands: 0, -1, -2. A
// number that cannot be read is 0, unless the driver has filled it.
int32_t ownId_read(uint16_t& id);
int32_t deviceWord03_read(uint16_t& word);
int32_t unitMapE_read(uint32_t& map);

// Bit 6 of device word 03, which follows the alert state of the front panel: set when flag is 1,
// cleared otherwise; -1, -2, -4 as any setter.
int32_t deviceWord03_setBit6(int32_t flag);
