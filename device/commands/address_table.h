// The indexed address tables.
#pragma once

#include <cstdint>

#include "maint/commands/address_table.h"

int32_t read_addr_table_entry(AddressTableEntry* entry);
int32_t write_addr_table_entry(const AddressTableEntry* entry);
int32_t write_addr_table_delete(const AddressTableEntry* entry);
