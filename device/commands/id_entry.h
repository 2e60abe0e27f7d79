// Commands on the entries of peer identifiers.
#pragma once

#include <cstdint>

#include "maint/commands/id_entry.h"

int32_t read_id_entry(const IdEntry* entry);
int32_t write_id_entry(const IdEntry* entry);
int32_t read_id_entry_value(IdEntryValue* record);
