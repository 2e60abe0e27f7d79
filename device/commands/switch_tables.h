// The configuration tables of the Ethernet switch.
#pragma once

#include <cstdint>

int32_t write_switch_tables_1(void* unused);
int32_t write_switch_tables_2(void* unused);
