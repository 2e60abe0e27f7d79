// The commands of maint/commands/bandwidth.h.
#include "maint/commands/bandwidth.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Field kLimit[] = {
    number(value_of<uint16_t>(), {0, BANDWIDTH_ID_MAX},
           "identifier; a greater one is a higher limit, 12 to 20 only while port 0 is at 100 "
           "Mb/s, else as 11"),
};

constexpr const char* kNotOpenedAgain =
    "the device cannot be opened again after the PHY of port 0 was read";

constexpr ResultMeaning kReadResults[] = {
    {0, kDone},
    {-1, kNotOpenedAgain},
    {-2, "the PHY of port 0 (also: no device) or the register cannot be read"},
    {-3, "the register holds no limit for the speed of port 0; 20 is stored"}};

constexpr ResultMeaning kSetResults[] = {{0, kDone},
                                         {-1, kNotOpenedAgain},
                                         {-2, "the PHY of port 0 cannot be read (also: no device)"},
                                         {-4, kNotWritten},
                                         {-5, kOutOfRange}};

constexpr const char* kPhyNote =
    "Reads the PHY of port 0 first, as RD_PHY_STATUS does, and fails where that gives -2.";

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_BANDWIDTH, {.summary = "bandwidth limit of the line",
                           .fields = kLimit,
                           .out = all(kLimit),
                           .results = kReadResults,
                           .reads = kFpga,
                           .note = kPhyNote}),
    COMMAND(WR_BANDWIDTH, {.summary = "sets the bandwidth limit of the line",
                           .fields = kLimit,
                           .in = all(kLimit),
                           .results = kSetResults,
                           .reads = kFpga,
                           .changes = kFpga,
                           .stays = kDeviceKeeps,
                           .note = kPhyNote}),
};

} // namespace

constexpr CommandGroup kBandwidthGroup = {"bandwidth", "Line bandwidth", kCommands};
