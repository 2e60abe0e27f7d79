// Where the configuration lives.
#pragma once

// GetIniFileString knows the configuration, whose values are quoted, by this very text.
constexpr const char* kConfigPath = "/conf/config";
