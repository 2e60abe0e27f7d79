// Values of the configuration that stand before its first site section, and the numbers in them.
#pragma once

#include <cstdint>

#include "maint/ini_file.h"

using ConfigValue = char[INI_VALUE_SIZE];

// Whether the key was found; `value` counts only then, and can be empty.
bool configValue_find(const char* key, ConfigValue& value);

// The number that a value holds: white space, a sign, decimal digits up to the first other
// character; 0 without a digit. A number that no int32_t holds becomes the nearest one, as with the
// board's own atoi, whose long has 32 bits.
int32_t number_parse(const char* value);

// The key's number, or `missing` when the key is not found.
int32_t configNumber_get(const char* key, int32_t missing);
