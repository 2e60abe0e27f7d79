// The commands of maint/commands/address_entry.h.
#include "maint/commands/address_entry.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Range kIds = {1, 30};
constexpr const char* kOwnIdNote = "the unit's own; an equal id stands for its own entry";

// The tables hold numbers in the device's byte order; these two commands do not turn the bytes.
constexpr const char* kReversed =
    "The bytes are stored in the order given: a report shows them reversed.";

constexpr Field kEntry[] = {
    own_id(number(FIELD(AddressEntry, own_id), kOwnIdNote)),
    index(number(FIELD(AddressEntry, id), kIds)),
    ipv4(FIELD(AddressEntry, bytes)),
    hex(FIELD(AddressEntry, number), "the same as a number"),
};

constexpr Field kSet[] = {
    own_id(number(FIELD(AddressSet, own_id), kOwnIdNote)),
    index(number(FIELD(AddressSet, id), kIds)),
    ipv4(FIELD(AddressSet, bytes)),
    hex(FIELD(AddressSet, number),
        "the same as numbers; of the unit's own entry with the bytes reversed"),
};

constexpr ResultMeaning kValueResults[] = {
    {0, "done; nothing is done for the own id, and for one outside 1..30"},
    {-1, kNotOpened},
    {-4, kNotWritten}};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_ADDR_ENTRY, {.summary = "the address entry of a peer, or the unit's own",
                            .fields = kEntry,
                            .in = only(kEntry, "own_id id"),
                            .out = only(kEntry, "bytes number"),
                            .results = kIndexedReportResults,
                            .reads = kFpga}),
    COMMAND(WR_ADDR_ENTRY, {.summary = "writes the address entry of a peer, or the unit's own",
                            .fields = kEntry,
                            .in = but(kEntry, "number"),
                            .results = kIndexedWriteResults,
                            .changes = kFpga,
                            .stays = kDeviceKeeps}),
    COMMAND(WR_ADDR_ENTRY_VALUE, {.summary = "writes the bytes of a peer's address entry",
                                  .fields = kEntry,
                                  .in = but(kEntry, "number"),
                                  .results = kValueResults,
                                  .changes = kFpga,
                                  .stays = kDeviceKeeps,
                                  .note = kReversed}),
    COMMAND(RD_ADDR_SET, {.summary = "the four addresses of a peer, or the unit's own",
                          .fields = kSet,
                          .in = only(kSet, "own_id id"),
                          .out = only(kSet, "bytes number"),
                          .results = kIndexedReportResults,
                          .reads = kFpga}),
    COMMAND(WR_ADDR_SET, {.summary = "writes the four addresses of a peer or the unit",
                          .fields = kSet,
                          .in = but(kSet, "number"),
                          .results = kIndexedWriteResults,
                          .changes = kFpga,
                          .stays = kDeviceKeeps}),
    COMMAND(WR_ADDR_SET_VALUE, {.summary = "writes a peer's four addresses, bytes as they stand",
                                .fields = kSet,
                                .in = but(kSet, "number"),
                                .results = kValueResults,
                                .changes = kFpga,
                                .stays = kDeviceKeeps,
                                .note = kReversed}),
};

} // namespace

constexpr CommandGroup kAddressEntryGroup = {"address_entry", "Address entries", kCommands};
