// What came of a command, as it is shown.
#pragma once

#include <cstdint>

#include "catalogue/catalogue.h"
#include "tools/maintctl/json.h"

// The meaning that the description gives a result.
const char* result_meaning(const CommandDescription& command, int32_t result);

// Members of an open JSON object: command, code; then result, record, fields; on failure error.
// `record` has DEVICE_RECORD_MAX bytes.
void command_json(Json& json, const CommandDescription& command);
void outcome_json(Json& json, const CommandDescription& command, int32_t result,
                  const uint8_t* record);
// All of them.
void result_json(Json& json, const CommandDescription& command, int32_t result,
                 const uint8_t* record);

// A field's value: numbers as numbers, codes by name, all else as text; elements as an array.
void value_json(Json& json, const Field& field, const uint8_t* record);
