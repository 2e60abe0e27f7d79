// The commands of maint/commands/status.h.
#include "maint/commands/status.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Field kFlag[] = {flag(value_of<uint8_t>(), "bit 8 of the status word")};

constexpr Field kInputs[] = {
    flag(FIELD(StatusInputs, input), "bits 4, 5, 6, 7 of the status word; 1: the bit is clear"),
};

constexpr Field kBit[] = {
    index(number(FIELD(StatusBit, bit), {0, 31}, "1 to 31: that bit; 0: the whole word")),
    hex(FIELD(StatusBit, result)),
};

constexpr Field kWord[] = {hex(value_of<uint16_t>(), "what it means is the driver's")};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_STATUS_WORD_FLAG,
            {.summary = "the flag of the status word that fixes the port flags",
             .fields = kFlag,
             .out = all(kFlag),
             .results = kReportResults,
             .reads = kFpga,
             .note = "While it is 1, WR_PORT_FLAGS ignores its record."}),
    COMMAND(RD_STATUS_INPUTS, {.summary = "the four inputs of the status word",
                               .fields = kInputs,
                               .out = all(kInputs),
                               .results = kReportResults,
                               .reads = kFpga}),
    COMMAND(RD_STATUS_BIT, {.summary = "a bit of bitmap D, in which the hardware marks units",
                            .fields = kBit,
                            .in = only(kBit, "bit"),
                            .out = only(kBit, "result"),
                            .results = kReportResults,
                            .reads = kFpga,
                            .note = "Bit 0 alone cannot be asked for."}),
    COMMAND(WR_STATUS_WORD, {.summary = "writes a status word of the driver",
                             .fields = kWord,
                             .in = all(kWord),
                             .results = kWriteAsReadResults,
                             .changes = kFpga,
                             .stays = kDeviceKeeps}),
};

} // namespace

constexpr CommandGroup kStatusGroup = {"status", "Status word, inputs, bitmap of units", kCommands};
