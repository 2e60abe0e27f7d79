// The commands of maint/commands/address_pair.h.
#include "maint/commands/address_pair.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Field kPair[] = {
    index(number(FIELD(AddressPair, index), {0, 63})),
    ipv4(FIELD(AddressPair, address)),
    address6(FIELD(AddressPair, address_6)),
};

constexpr Field kEnable[] = {flag(value_of<uint8_t>(), "1 enables, 0 disables")};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_ADDR_PAIR, {.summary = "one pair of a 4-byte and a 6-byte address",
                           .fields = kPair,
                           .in = only(kPair, "index"),
                           .out = but(kPair, "index"),
                           .results = kIndexedReportResults,
                           .reads = kFpga}),
    COMMAND(WR_ADDR_PAIR, {.summary = "writes one pair of a 4-byte and a 6-byte address",
                           .fields = kPair,
                           .in = all(kPair),
                           .results = kIndexedWriteResults,
                           .changes = kFpga,
                           .stays = kDeviceKeeps}),
    COMMAND(WR_ADDR_PAIR_COPY, {.summary = "writes one address pair, the same as WR_ADDR_PAIR",
                                .fields = kPair,
                                .in = all(kPair),
                                .results = kIndexedWriteResults,
                                .changes = kFpga,
                                .stays = kDeviceKeeps}),
    COMMAND(WR_PAIR_ENABLE, {.summary = "enables or disables the address pairs",
                             .fields = kEnable,
                             .in = all(kEnable),
                             .results = kWriteResults,
                             .changes = kFpga,
                             .stays = kDeviceKeeps}),
};

} // namespace

constexpr CommandGroup kAddressPairGroup = {"address_pair", "Address pairs", kCommands};
