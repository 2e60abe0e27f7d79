// The file of data sizes for other programs.
#pragma once

#include <cstdint>

#include "maint/commands/mtu.h"

int32_t read_mtu_datasize(MtuDatasize* record);
int32_t write_mtu_datasize(MtuDatasize* record);
