// Values of the configuration.
#include "config/config_value.h"

#include <algorithm>
#include <cstdlib>

#include "config/config_path.h"

namespace
{

constexpr int kDecimal = 10;

} // namespace

bool configValue_find(const char* key, ConfigValue& value)
{
    return GetIniFileString(kConfigPath, "", key, value) == 0;
}

int32_t number_parse(const char* value)
{
    // strtol, because atoi does not define what it makes of a number beyond int.
    const long number = strtol(value, nullptr, kDecimal);
    return static_cast<int32_t>(std::clamp<long>(number, INT32_MIN, INT32_MAX));
}

int32_t configNumber_get(const char* key, int32_t missing)
{
    ConfigValue value;
    return configValue_find(key, value) ? number_parse(value) : missing;
}
