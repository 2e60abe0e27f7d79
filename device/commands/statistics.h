// The persistent traffic statistics.
#pragma once

#include <cstdint>

#include "maint/commands/statistics.h"

int32_t write_statistics_save(StatisticsFile* statistics);
int32_t write_statistics_clear(StatisticsFile* statistics);
