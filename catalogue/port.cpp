// The commands of maint/commands/port.h.
#include "maint/commands/port.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Range kPorts = {1, 29};

constexpr Field kFlags[] = {
    bits(FIELD(PortFlags, mask), 10, "bit n selects flags[n]; 0: all ten"),
    flag(FIELD(PortFlags, flags), "bits 8, 1, 2, 0, 3, 4, 5, 6, 7, 12 of the port flags word"),
};

constexpr Field kEntry[] = {
    index(number(FIELD(PortEntry, port)), {0, 31, 1}),
    flag(FIELD(PortEntry, flag)),
    index(number(FIELD(PortEntry, index)), {0, 7, 1}),
    hex(FIELD(PortEntry, value)),
};

constexpr Field kEntryRanged[] = {
    number(FIELD(PortEntry, port), kPorts),
    flag(FIELD(PortEntry, flag)),
    number(FIELD(PortEntry, index)),
    hex(FIELD(PortEntry, value)),
};

constexpr Field kMask[] = {
    number(FIELD(PortMask, port), kPorts),
    flag(FIELD(PortMask, value), "1 sets the port's bit, 0 clears it"),
    bits(FIELD(PortMask, mask), 32, "bit n: port n"),
};

constexpr Field kBit[] = {
    number(FIELD(PortBit, port), kPorts,
           "1 to 15: bits 1 to 15 of register 0x005E; 16 to 29: bits 0 to 13 of 0x005C"),
};

constexpr Field kStateCode[] = {
    index(number(FIELD(PortStateCode, port), {0, 31})),
    number(FIELD(PortStateCode, code)),
};

constexpr const char* kPortRefused = "the port is not within 1 to 29; nothing was written";

constexpr ResultMeaning kRangedResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, kPortRefused}, {-4, kNotWritten}};

constexpr ResultMeaning kMaskBitResults[] = {
    {0, kDone},
    {-1, kNotOpened},
    {-2, kNotRead},
    {-4, "the device refuses the write; mask is what should have been written"},
    {-5, kOutOfRange}};

constexpr ResultMeaning kBitResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, kPortRefused}, {-3, kNotRead}, {-4, kNotWritten}};

constexpr ResultMeaning kStateCodeResults[] = {
    {0, kDone}, {-1, "the device cannot be opened or a reading failed; code is 0"}};

constexpr const char* kEntryNote = "The entry's address is index + 8 * port, in 16 bits.";

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_PORT_FLAGS, {.summary = "the ten port flags",
                            .fields = kFlags,
                            .out = only(kFlags, "flags"),
                            .results = kReportResults,
                            .reads = kFpga}),
    COMMAND(WR_PORT_FLAGS, {.summary = "sets the port flags, all or those that are selected",
                            .fields = kFlags,
                            .in = all(kFlags),
                            .results = kChangeResults,
                            .reads = kFpga,
                            .changes = kFpga,
                            .stays = kDeviceKeeps,
                            .note = "While RD_STATUS_WORD_FLAG gives 1, the record is ignored and "
                                    "the word becomes 0x10F0."}),
    COMMAND(RD_PORT_ENTRY, {.summary = "one entry of a port",
                            .fields = kEntry,
                            .in = but(kEntry, "value"),
                            .out = only(kEntry, "value"),
                            .results = kReportResults,
                            .reads = kFpga,
                            .note = kEntryNote}),
    COMMAND(WR_PORT_ENTRY, {.summary = "writes one entry of a port",
                            .fields = kEntry,
                            .in = all(kEntry),
                            .results = kWriteResults,
                            .changes = kFpga,
                            .stays = kDeviceKeeps,
                            .note = kEntryNote}),
    COMMAND(RD_PORT_MASK, {.summary = "the mask of ports",
                           .fields = kMask,
                           .out = only(kMask, "mask"),
                           .results = kReportResults,
                           .reads = kFpga}),
    COMMAND(WR_PORT_MASK_BIT, {.summary = "sets or clears a port's bit of the mask of ports",
                               .fields = kMask,
                               .in = only(kMask, "port value"),
                               .out = only(kMask, "mask"),
                               .results = kMaskBitResults,
                               .reads = kFpga,
                               .changes = kFpga,
                               .stays = kDeviceKeeps}),
    COMMAND(WR_PORT_BIT_SET, {.summary = "sets a port's bit of registers 0x005C and 0x005E",
                              .fields = kBit,
                              .in = all(kBit),
                              .results = kBitResults,
                              .reads = kFpga,
                              .changes = kFpga,
                              .stays = kDeviceKeeps}),
    COMMAND(WR_PORT_BIT_CLEAR, {.summary = "clears a port's bit of registers 0x005C and 0x005E",
                                .fields = kBit,
                                .in = all(kBit),
                                .results = kBitResults,
                                .reads = kFpga,
                                .changes = kFpga,
                                .stays = kDeviceKeeps}),
    COMMAND(WR_PORT_ENTRY_RANGED, {.summary = "writes one entry of a port of 1 to 29",
                                   .fields = kEntryRanged,
                                   .in = all(kEntryRanged),
                                   .results = kRangedResults,
                                   .changes = kFpga,
                                   .stays = kDeviceKeeps,
                                   .note = kEntryNote}),
    COMMAND(RD_PORT_STATE_CODE,
            {.summary = "state of a port as a code, of bits of its entry",
             .fields = kStateCode,
             .in = all(kStateCode),
             .out = only(kStateCode, "code"),
             .results = kStateCodeResults,
             .reads = kFpga,
             .note =
                 "0: the port is not in bitmap E (RD_DEVICE_WORD_3B). Else by its entry (flag 0, "
                 "index 0): any of bits 13 to 15 gives 2; bit 12 without them gives 1, 3 or 4 "
                 "when bits 9 and 8 are 00, 01 or 11. Otherwise code stays as given."}),
};

} // namespace

constexpr CommandGroup kPortGroup = {"port", "Ports", kCommands};
