// Commands on the address entries of peers and of the appliance itself.
#pragma once

#include <cstdint>

#include "maint/commands/address_entry.h"

int32_t read_addr_entry(AddressEntry* entry);
int32_t write_addr_entry(const AddressEntry* entry);
int32_t write_addr_entry_value(const AddressEntry* entry);
int32_t read_addr_set(AddressSet* set);
int32_t write_addr_set(const AddressSet* set);
int32_t write_addr_set_value(const AddressSet* set);
