/*
 * The Ethernet PHYs of ports 0..6. All on /dev/fpga, which the reports open for writing, too.
 */
#ifndef MAINT_COMMANDS_PHY_H
#define MAINT_COMMANDS_PHY_H

#include <stdint.h>

#include "maint/typed_call.h"

/*
 * RD_PHY_STATUS (0x002A): port in, the flags out (0 or 1). Clear the record before the call: with
 * the link down under autonegotiation, speed100 and full_duplex keep what they held.
 *
 * Results: 0; -1 device not opened; -2 a register cannot be read, or the link is up under
 * autonegotiation that has not completed or found no common ability (autoneg and link are filled
 * then); 0 or -3 instead of that -2, should another thread open the device in the middle of the
 * call; -5 port above 6.
 */
typedef struct PhyStatus {
    uint32_t port;       /* 0: 0..6 */
    uint8_t autoneg;     /* 4: autonegotiation is enabled */
    uint8_t link;        /* 5: the link is up */
    uint8_t speed100;    /* 6: 1: 100 Mb/s, 0: 10 Mb/s */
    uint8_t full_duplex; /* 7 */
    uint8_t extra;       /* 8: ports 0 and 6: bit 13 of register 31; 1..5: bit 3 of register 0 */
    uint8_t spare[3];    /* 9: not touched */
} PhyStatus;
MAINT_COMMAND(RD_PHY_STATUS, maint_rd_phy_status, PhyStatus)

/*
 * WR_PHY_CONFIG (0x002B), in. Sleeps 1 second (ports 1..6, no autonegotiation) or 2 (port 0), once
 * more if a failure makes it run again. On port 5 switch port 4 first gets the record's
 * full_duplex, speed100 and switch_flag bytes as they stand, and then, within 1 to 5 seconds more,
 * what the PHY reports (with autonegotiation: 1 second, and nothing is copied); a failure of that
 * following does not fail the command.
 *
 * Results: 0; -1 device not opened; -4 a PHY or the switch port cannot be written (what was written
 * before stays); -5 port above 6, or port 0 set to anything but autonegotiation or 100 Mb/s full
 * duplex (both bytes exactly 1).
 */
typedef struct PhyConfig {
    uint32_t port;       /* 0: 0..6 */
    uint8_t autoneg;     /* 4: 1: autonegotiate; any other value: as the next fields say */
    uint8_t switch_flag; /* 5: port 5 only: the link byte of switch port 4 */
    uint8_t speed100;    /* 6: not 0: 100 Mb/s */
    uint8_t full_duplex; /* 7: not 0: full duplex */
    uint8_t extra;       /* 8: 1: register 31 gets 0x2500, else 0x0500; ports 1..5: 1 also sets
                               bit 3 of register 0 */
    uint8_t spare[3];    /* 9: not used */
} PhyConfig;
MAINT_COMMAND_IN(WR_PHY_CONFIG, maint_wr_phy_config, PhyConfig)

/*
 * RD_PHY_REGISTER (0x0600): port and number in, value out.
 * WR_PHY_REGISTER (0x0601): all in.
 *
 * Results: 0; -1 device not opened; -2 read failed; -4 write failed; -5 port above 6 or register
 * number above 31.
 */
typedef struct PhyRegisterAccess {
    uint32_t port;   /* 0: 0..6 */
    uint16_t number; /* 4: MII register, 0..31 */
    uint16_t value;  /* 6 */
} PhyRegisterAccess;
MAINT_COMMAND(RD_PHY_REGISTER, maint_rd_phy_register, PhyRegisterAccess)
MAINT_COMMAND_IN(WR_PHY_REGISTER, maint_wr_phy_register, PhyRegisterAccess)

#endif
