// Words and records that go to the driver, or come from it, as they are.
#pragma once

#include <cstdint>

#include "device/access/families.h"
#include "maint/commands/driver.h"

constexpr CommandCall read_control_word = record_passedOut<uint16_t>(kDriverControlRead);
constexpr CommandCall write_control_block = record_passedIn<void>(kControlBlockWrite);
constexpr CommandCall write_byte_action = value_sent<uint8_t>(kByteAction);
constexpr CommandCall write_word_action = value_sent<uint16_t>(kWordAction);
constexpr CommandCall write_pair_words = copy_sent<PairWords>(kPairWordsWrite);

constexpr CommandCall read_ext_status_a = record_passedOut<uint16_t>(kExtStatusARead);
constexpr CommandCall read_ext_status_b = record_passedOut<uint16_t>(kExtStatusBRead);
constexpr CommandCall write_ext_control_a =
    record_passedIn<uint16_t>(kExtControlAWrite, DEVICE_READ_FAILED);
constexpr CommandCall write_ext_control_b =
    record_passedIn<uint16_t>(kExtControlBWrite, DEVICE_READ_FAILED);

int32_t write_control_bit7_clear(uint16_t* word);
int32_t write_key_bytes(const KeyBytes* record);
int32_t read_driver_state(uint16_t* state);
