// The commands of maint/commands/prefix.h.
#include "maint/commands/prefix.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Range kLengths = {0, 32};
constexpr const char* kValidNote = "bits 0, 1 select address, length; 0: both";

constexpr const char* kLengthNote = "leading ones of the mask";

constexpr Field kMap[] = {
    bits(FIELD(PrefixMap, set0.valid), 2, kValidNote),
    ipv4(FIELD(PrefixMap, set0.address)),
    number(FIELD(PrefixMap, set0.length), kLengths, kLengthNote),
    bits(FIELD(PrefixMap, set1.valid), 2, kValidNote),
    ipv4(FIELD(PrefixMap, set1.address)),
    number(FIELD(PrefixMap, set1.length), kLengths, kLengthNote),
};

constexpr ResultMeaning kSetResults[] = {{0, kDone},
                                         {-1, kNotOpened},
                                         {-2, kNotAllRead},
                                         {-3, "the length is above 32; nothing is written"},
                                         {-4, kPartlyWritten}};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_PREFIX0_LENGTH, {.summary = "prefix length of set 0, without its address",
                                .fields = kMap,
                                .out = only(kMap, "set0.length"),
                                .results = kReportResults,
                                .reads = kFpga}),
    COMMAND(WR_PREFIX0, {.summary = "writes address and prefix length of set 0",
                         .fields = kMap,
                         .in = only(kMap, "set0.valid set0.address set0.length"),
                         .results = kSetResults,
                         .reads = kFpga,
                         .changes = kFpga,
                         .stays = kDeviceKeeps}),
    COMMAND(RD_PREFIX1, {.summary = "address and prefix length of set 1",
                         .fields = kMap,
                         .out = only(kMap, "set1.address set1.length"),
                         .results = kReportResults,
                         .reads = kFpga}),
    COMMAND(WR_PREFIX1, {.summary = "writes address and prefix length of set 1",
                         .fields = kMap,
                         .in = only(kMap, "set1.valid set1.address set1.length"),
                         .results = kSetResults,
                         .reads = kFpga,
                         .changes = kFpga,
                         .stays = kDeviceKeeps}),
};

} // namespace

constexpr CommandGroup kPrefixGroup = {"prefix", "Address and prefix sets", kCommands};
