// The status word, the status inputs and the bitmap of units.
#pragma once

#include <cstdint>

#include "device/access/families.h"
#include "maint/commands/status.h"

int32_t read_status_word_flag(uint8_t* flag);
int32_t read_status_inputs(StatusInputs* inputs);
int32_t read_status_bit(StatusBit* record);
constexpr CommandCall write_status_word = copy_sent<uint16_t>(kWord62Write, DEVICE_READ_FAILED);
