// The Ethernet PHYs: status, configuration, single registers.
#pragma once

#include <cstdint>

#include "maint/commands/phy.h"

// The status of one port's PHY; also the base of the bandwidth commands.
int32_t read_phy(PhyStatus* status);
int32_t write_phy_config(const PhyConfig* config);
int32_t read_phy_register(PhyRegisterAccess* access);
int32_t write_phy_register(const PhyRegisterAccess* access);
