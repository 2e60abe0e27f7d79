// Pairs of a 4-byte and a 6-byte address.
#pragma once

#include <cstdint>

#include "maint/commands/address_pair.h"

int32_t read_addr_pair(AddressPair* record);
int32_t write_addr_pair(const AddressPair* record); // also WR_ADDR_PAIR_COPY
int32_t write_pair_enable(const uint8_t* enable);
