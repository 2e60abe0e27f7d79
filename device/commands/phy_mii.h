// The PHYs' registers (MII) as the driver reaches them.
#pragma once

#include <cstdint>

#include "device/access/fpga.h"

constexpr uint32_t kPhyPortMax = 6;
constexpr uint32_t kLinePort = 0; // the WAN line; its PHY has requests of its own
constexpr uint32_t kPort6 = 6;    // unlike ports 1..5 in what its registers hold
constexpr uint16_t kMiiRegisters = 32;

constexpr uint16_t kMiiControl = 0;
constexpr uint16_t kControlAutoneg = 0x1000;
constexpr uint16_t kControlSpeed100 = 0x2000;
constexpr uint16_t kControlFullDuplex = 0x0100;
constexpr uint16_t kControlExtra = 0x0008; // ports 1..5
constexpr uint16_t kMiiStatus = 1;
constexpr uint16_t kStatusLink = 0x0004;
constexpr uint16_t kStatusNegotiated = 0x0020;
constexpr uint16_t kMiiAdvertised = 4;
constexpr uint16_t kMiiPartner = 5;
constexpr uint16_t kMiiVendor = 31;
constexpr uint16_t kVendorExtra = 0x2000; // reported of ports 0 and 6, written on every port

// One MII register of the port's PHY. What cannot be read is 0.
uint16_t mii_read(Fpga& fpga, uint32_t port, uint16_t number);
void mii_write(Fpga& fpga, uint32_t port, uint16_t number, uint16_t value);
