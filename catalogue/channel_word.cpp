// The commands of maint/commands/channel_word.h.
#include "maint/commands/channel_word.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Field kWord[] = {
    index(number(FIELD(ChannelWord, id), "a unit's identifier"), {1, 30, 1}),
    hex(FIELD(ChannelWord, value)),
};

constexpr ResultMeaning kWriteWordResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, "the device refuses the read or the write"}};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_CHANNEL_WORD, {.summary = "channel word of a unit",
                              .fields = kWord,
                              .in = only(kWord, "id"),
                              .out = only(kWord, "value"),
                              .results = kReportResults,
                              .reads = kFpga,
                              .note = "Of the own unit the whole word, of another one its low 12 "
                                      "bits. An own identifier that cannot be read counts as 0."}),
    COMMAND(WR_CHANNEL_WORD, {.summary = "sets the own unit's channel word",
                              .fields = kWord,
                              .in = only(kWord, "value"),
                              .results = kWriteWordResults,
                              .reads = kFpga,
                              .changes = kFpga,
                              .stays = kDeviceKeeps,
                              .note = "Written is value, ORed with the present word's top four "
                                      "bits."}),
};

} // namespace

constexpr CommandGroup kChannelWordGroup = {"channel_word", "Channel words", kCommands};
