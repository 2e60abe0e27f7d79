// Commands that move one word between the caller and the device.
#pragma once

#include <cstdint>

#include "device/access/pass_through.h"

constexpr auto read_device_word_27 = record_readThrough<kWord27Read, uint16_t>;
constexpr auto write_device_word_28 = value_writeThrough<kWord28Write, uint16_t>;
constexpr auto read_device_word_29 = record_readThrough<kOwnIdRead, uint16_t>;
constexpr auto write_device_word_2a = value_writeThrough<kWord2AWrite, uint16_t>;
constexpr auto write_device_word_41 = record_writeThrough<kWord41Write, uint16_t>;
constexpr auto read_device_word_03 = record_readThrough<kWord03.read, uint16_t>;
constexpr auto write_device_word_04 = value_writeThrough<kWord03.write, uint16_t>;
constexpr auto read_device_word_3b = record_readThrough<kUnitMapERead, uint32_t>;

int32_t read_group_flag(uint8_t* flag);
int32_t write_group_flag(const uint8_t* flag);
int32_t read_device_word_40(uint16_t* word);
int32_t read_device_word_21(uint16_t* word);
int32_t write_device_word_22(const uint16_t* word);
int32_t read_device_word_48(uint16_t* code);
int32_t write_device_word_49(const uint16_t* code);
int32_t read_device_word_4e(uint16_t* word);
int32_t read_reg44_flag(uint16_t* flag);
int32_t write_reg44_flag(const uint16_t* flag);
