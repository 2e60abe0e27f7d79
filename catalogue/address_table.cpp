// The commands of maint/commands/address_table.h.
#include "maint/commands/address_table.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr CodeName kTables[] = {{0, "large"}, {1, "small"}};

constexpr Field kEntry[] = {
    index(number(FIELD(AddressTableEntry, index), {0, 127}, "of the small table 0..29")),
    bits(FIELD(AddressTableEntry, valid), 3,
         "bits 0, 1, 2 select address, address_6, attribute; 0: all"),
    ipv4(FIELD(AddressTableEntry, address)),
    address6(FIELD(AddressTableEntry, address_6)),
    hex(FIELD(AddressTableEntry, attribute)),
    index(code(FIELD(AddressTableEntry, table), kTables, "only the index is tested with it"),
          {0, 1, 1}),
};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_ADDR_TABLE_ENTRY, {.summary = "one entry of the address tables",
                                  .fields = kEntry,
                                  .in = only(kEntry, "index table"),
                                  .out = only(kEntry, "address address_6 attribute"),
                                  .results = kIndexedReportResults,
                                  .reads = kFpga}),
    COMMAND(WR_ADDR_TABLE_ENTRY, {.summary = "changes an entry of an address table, marks it valid",
                                  .fields = kEntry,
                                  .in = all(kEntry),
                                  .results = kIndexedChangeResults,
                                  .reads = kFpga,
                                  .changes = kFpga,
                                  .stays = kDeviceKeeps}),
    COMMAND(WR_ADDR_TABLE_DELETE, {.summary = "clears an entry of the address tables",
                                   .fields = kEntry,
                                   .in = only(kEntry, "index table"),
                                   .results = kIndexedWriteResults,
                                   .changes = kFpga,
                                   .stays = "The entry stays cleared and invalid."}),
};

} // namespace

constexpr CommandGroup kAddressTableGroup = {"address_table", "Address tables", kCommands};
