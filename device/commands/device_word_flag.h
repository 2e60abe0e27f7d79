// The device flags that go with the MTU.
#pragma once

#include <cstdint>

int32_t read_device_word_35(uint16_t* flag);
int32_t write_device_word_36(const uint16_t* flag);
int32_t read_vlant_map_enable(uint16_t* flag);
int32_t write_vlant_map_enable(const uint16_t* flag);
