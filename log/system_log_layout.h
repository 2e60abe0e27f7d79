// Where the system log lives, and the layout of its files.
#pragma once

#include <bit>
#include <cstddef>

#include "maint/system_log.h"

constexpr const char* kSystemLogPath = "/conf/system.log";
constexpr const char* kFlashImagePath = "/dev/mtd_systemlog";

// The headers are read and written as they stand in memory.
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(SystemLogHeader) == 12);
static_assert(offsetof(SystemLogHeader, number) == 4);
static_assert(offsetof(SystemLogHeader, location) == 6);
static_assert(offsetof(SystemLogHeader, version) == 8);
static_assert(offsetof(SystemLogHeader, checksum) == 10);
