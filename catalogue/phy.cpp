// The commands of maint/commands/phy.h.
#include "maint/commands/phy.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Range kPorts = {0, 6};

constexpr Field kStatus[] = {
    index(number(FIELD(PhyStatus, port), kPorts)),
    flag(FIELD(PhyStatus, autoneg), "autonegotiation is enabled"),
    flag(FIELD(PhyStatus, link), "the link is up"),
    flag(FIELD(PhyStatus, speed100), "1: 100 Mb/s, 0: 10 Mb/s"),
    flag(FIELD(PhyStatus, full_duplex)),
    flag(FIELD(PhyStatus, extra),
         "ports 0 and 6: bit 13 of register 31; 1 to 5: bit 3 of register 0"),
};

constexpr Field kConfig[] = {
    number(FIELD(PhyConfig, port), kPorts),
    flag(FIELD(PhyConfig, autoneg), "1: autonegotiate, whatever speed100 and full_duplex say"),
    number(FIELD(PhyConfig, switch_flag), "port 5 only: the link byte of switch port 4"),
    flag(FIELD(PhyConfig, speed100), "1: 100 Mb/s, 0: 10 Mb/s"),
    flag(FIELD(PhyConfig, full_duplex)),
    flag(FIELD(PhyConfig, extra),
         "1: register 31 gets 0x2500, 0: 0x0500; ports 1 to 5: also bit 3 of register 0"),
};

constexpr Field kRegister[] = {
    index(number(FIELD(PhyRegisterAccess, port), kPorts)),
    index(number(FIELD(PhyRegisterAccess, number), {0, 31}, "MII register")),
    hex(FIELD(PhyRegisterAccess, value)),
};

constexpr ResultMeaning kStatusResults[] = {
    {0, kDone},
    {-1, kNotOpened},
    {-2, "a register cannot be read; or the link is up, and autonegotiation has not completed or "
         "found nothing in common (autoneg and link are filled)"},
    {-5, kOutOfRange}};

constexpr ResultMeaning kConfigResults[] = {
    {0, kDone},
    {-1, kNotOpened},
    {-4, "a PHY or the switch port cannot be written; what was written before stays"},
    {-5, "the port is above 6, or port 0 without autonegotiation is not at 100 Mb/s full duplex; "
         "no device was touched"}};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_PHY_STATUS, {.summary = "link, speed and duplex of a port's PHY",
                            .fields = kStatus,
                            .in = only(kStatus, "port speed100 full_duplex"),
                            .out = but(kStatus, "port"),
                            .results = kStatusResults,
                            .reads = kFpga,
                            .note = "With the link down under autonegotiation, speed100 and "
                                    "full_duplex stay as given."}),
    COMMAND(WR_PHY_CONFIG,
            {.summary = "sets autonegotiation, or speed and duplex, of a PHY",
             .fields = kConfig,
             .in = all(kConfig),
             .results = kConfigResults,
             .reads = kFpga,
             .changes = kFpga,
             .stays = "The PHY, for port 5 also switch port 4, stays so.",
             .note = "Takes up to 4 seconds, on port 5 up to 7; the link may go down meanwhile."}),
    COMMAND(RD_PHY_REGISTER, {.summary = "one MII register of a port's PHY",
                              .fields = kRegister,
                              .in = only(kRegister, "port number"),
                              .out = only(kRegister, "value"),
                              .results = kIndexedReportResults,
                              .reads = kFpga}),
    COMMAND(WR_PHY_REGISTER, {.summary = "writes one MII register of a port's PHY",
                              .fields = kRegister,
                              .in = all(kRegister),
                              .results = kIndexedWriteResults,
                              .changes = kFpga,
                              .stays = kDeviceKeeps}),
};

} // namespace

constexpr CommandGroup kPhyGroup = {"phy", "Ethernet PHYs", kCommands};
