// Flag sets, address pairs and driver control: small repackings between the caller's record and
// the driver's.
#pragma once

#include <cstdint>

#include "device/access/pass_through.h"
#include "maint/commands/address_pair.h"
#include "maint/commands/driver.h"
#include "maint/commands/flag_set.h"

int32_t read_flag_set(FlagSet* record);
int32_t write_flag_set(const FlagSet* record);
int32_t read_addr_pair(AddressPair* record);
int32_t write_addr_pair(const AddressPair* record); // also WR_ADDR_PAIR_COPY
int32_t write_pair_enable(const uint8_t* enable);
int32_t write_key_bytes(const KeyBytes* record);
int32_t write_control_bit7_clear(uint16_t* word);

constexpr auto read_control_word = record_readThrough<kDriverControlRead, uint16_t>;
constexpr auto write_control_block = record_writeThrough<kControlBlockWrite, void>;
constexpr auto write_pair_words = record_writeCopy<kPairWordsWrite, PairWords>;
constexpr auto write_byte_action = value_writeThrough<kByteAction, uint8_t>;
constexpr auto write_word_action = value_writeThrough<kWordAction, uint16_t>;
