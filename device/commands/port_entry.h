// Port entries, port mask, status bits, channel words and indexed words.
#pragma once

#include <cstdint>

#include "device/access/pass_through.h"
#include "maint/commands/channel_word.h"
#include "maint/commands/device_word.h"
#include "maint/commands/port.h"
#include "maint/commands/status.h"

int32_t read_indexed_word(IndexedWord* record);
int32_t write_indexed_word(const IndexedWord* record);
int32_t read_port_entry(PortEntry* entry);
int32_t write_port_entry(const PortEntry* entry);
int32_t write_port_entry_ranged(const PortEntry* entry);
int32_t read_port_mask(PortMask* record);
int32_t write_port_mask_bit(PortMask* record);
int32_t read_status_bit(StatusBit* record);
int32_t read_channel_word(ChannelWord* record);
int32_t write_channel_word(const ChannelWord* record);

constexpr auto write_status_word = record_writeCopyFailingAsRead<kStatusWordWrite, uint16_t>;
