// The commands of maint/commands/device_word.h.
#include "maint/commands/device_word.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

// A report fills the first two of the three flags.
consteval Field first_two(Field field)
{
    field.count = 2;
    return field;
}

constexpr Field kControlShown[] = {
    first_two(flag(FIELD(ControlBits, flags), "bits 1 and 0 of the control word")),
};
constexpr Field kControl[] = {
    flag(FIELD(ControlBits, flags), "bits 1, 0, 2 of the control word"),
};

constexpr Field kFlag[] = {flag(value_of<uint8_t>())};
constexpr Field kWideFlag[] = {flag(value_of<uint16_t>())};
constexpr Field kWord[] = {hex(value_of<uint16_t>())};
constexpr Field kOwnId[] = {number(value_of<uint16_t>())};
constexpr Field kBitmap[] = {bits(value_of<uint32_t>(), 32, "bit n: unit or port n")};

// Any other number is refused; they have no names but themselves.
constexpr CodeName kOneHot[] = {{2, "2"}, {4, "4"}, {8, "8"}};
constexpr Field kOneHotCode[] = {code(value_of<uint16_t>(), kOneHot)};

// How many there are, the device knows; a sweep shows the first ones.
constexpr Field kIndexed[] = {
    index(number(FIELD(IndexedWord, index)), {0, 15, 1}),
    hex(FIELD(IndexedWord, value)),
};

constexpr ResultMeaning kDriverResults[] = {
    {0, kDone}, {-1, "the device cannot be opened, or the driver answers so"}};

constexpr ResultMeaning kOneHotReadResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, kNotRead}, {-3, "the device holds none of 2, 4 and 8"}};

constexpr const char* kLeftOpen =
    "A request that fails leaves the device open until the program ends.";

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_CONTROL_BITS, {.summary = "two flags of the control word",
                              .fields = kControlShown,
                              .out = all(kControlShown),
                              .results = kReportResults,
                              .reads = kFpga}),
    COMMAND(WR_CONTROL_BITS, {.summary = "writes the control word: three flags",
                              .fields = kControl,
                              .in = all(kControl),
                              .results = kWriteResults,
                              .changes = kFpga,
                              .stays = kDeviceKeeps,
                              .note = "Every other bit of the word becomes 0."}),
    COMMAND(RD_ENABLE_FLAG, {.summary = "bit 0 of the enable word",
                             .fields = kFlag,
                             .out = all(kFlag),
                             .results = kReportResults,
                             .reads = kFpga}),
    COMMAND(WR_ENABLE_FLAG, {.summary = "writes the enable word: 0 or 1",
                             .fields = kFlag,
                             .in = all(kFlag),
                             .results = kWriteResults,
                             .changes = kFpga,
                             .stays = kDeviceKeeps,
                             .note = "Every other bit of the word becomes 0."}),
    COMMAND(RD_DEVICE_WORD_27, {.summary = "device word 27",
                                .fields = kWord,
                                .out = all(kWord),
                                .results = kReportResults,
                                .reads = kFpga}),
    COMMAND(WR_DEVICE_WORD_28, {.summary = "writes device word 28",
                                .fields = kWord,
                                .in = all(kWord),
                                .results = kWriteResults,
                                .changes = kFpga,
                                .stays = kDeviceKeeps}),
    COMMAND(RD_DEVICE_WORD_29, {.summary = "the unit's own identifier",
                                .fields = kOwnId,
                                .out = all(kOwnId),
                                .results = kReportResults,
                                .reads = kFpga}),
    COMMAND(WR_DEVICE_WORD_2A, {.summary = "writes device word 2A",
                                .fields = kWord,
                                .in = all(kWord),
                                .results = kWriteResults,
                                .changes = kFpga,
                                .stays = kDeviceKeeps}),
    COMMAND(RD_GROUP_FLAG, {.summary = "whether the group word has bit 2, 6, 7 or 8",
                            .fields = kFlag,
                            .out = all(kFlag),
                            .results = kReportResults,
                            .reads = kFpga}),
    COMMAND(WR_GROUP_FLAG, {.summary = "sets or clears bits 2, 6, 7, 8 of the group word",
                            .fields = kFlag,
                            .in = all(kFlag),
                            .results = kChangeResults,
                            .reads = kFpga,
                            .changes = kFpga,
                            .stays = kDeviceKeeps}),
    COMMAND(RD_DEVICE_WORD_40, {.summary = "device word 40",
                                .fields = kWord,
                                .out = all(kWord),
                                .results = kDriverResults,
                                .reads = kFpga,
                                .note = "The result is the driver's own, whatever it is; a failure "
                                        "is not tried again."}),
    COMMAND(WR_DEVICE_WORD_41, {.summary = "writes device word 41",
                                .fields = kWord,
                                .in = all(kWord),
                                .results = kWriteResults,
                                .changes = kFpga,
                                .stays = kDeviceKeeps}),
    COMMAND(RD_DEVICE_WORD_21, {.summary = "device word 21",
                                .fields = kWord,
                                .out = all(kWord),
                                .results = kReportResults,
                                .reads = kFpga,
                                .note = kLeftOpen}),
    COMMAND(WR_DEVICE_WORD_22, {.summary = "writes device word 22",
                                .fields = kWord,
                                .in = all(kWord),
                                .results = kWriteResults,
                                .changes = kFpga,
                                .stays = kDeviceKeeps,
                                .note = kLeftOpen}),
    COMMAND(RD_DEVICE_WORD_03, {.summary = "device word 03, which holds flags of several commands",
                                .fields = kWord,
                                .out = all(kWord),
                                .results = kReportResults,
                                .reads = kFpga}),
    COMMAND(WR_DEVICE_WORD_04, {.summary = "replaces the whole device word 03",
                                .fields = kWord,
                                .in = all(kWord),
                                .results = kWriteResults,
                                .changes = kFpga,
                                .stays = kDeviceKeeps}),
    COMMAND(RD_DEVICE_WORD_48, {.summary = "device word 48: 2, 4 or 8",
                                .fields = kOneHotCode,
                                .out = all(kOneHotCode),
                                .results = kOneHotReadResults,
                                .reads = kFpga}),
    COMMAND(WR_DEVICE_WORD_49, {.summary = "writes device word 49: 2, 4 or 8",
                                .fields = kOneHotCode,
                                .in = all(kOneHotCode),
                                .results = kIndexedWriteResults,
                                .changes = kFpga,
                                .stays = kDeviceKeeps}),
    COMMAND(RD_DEVICE_WORD_3B, {.summary = "bitmap E: the units or ports that are present",
                                .fields = kBitmap,
                                .out = all(kBitmap),
                                .results = kReportResults,
                                .reads = kFpga}),
    COMMAND(RD_DEVICE_WORD_35, {.summary = "whether bit 6 or 7 of device word 35 is set",
                                .fields = kWideFlag,
                                .out = all(kWideFlag),
                                .results = kReportResults,
                                .reads = kFpga}),
    COMMAND(WR_DEVICE_WORD_36, {.summary = "sets or clears bits 6 and 7 of device word 35",
                                .fields = kWideFlag,
                                .in = all(kWideFlag),
                                .results = kChangeResults,
                                .reads = kFpga,
                                .changes = kFpga,
                                .stays = kDeviceKeeps}),
    COMMAND(RD_VLANT_MAP_ENABLE, {.summary = "whether the VLAN table map is enabled",
                                  .fields = kWideFlag,
                                  .out = all(kWideFlag),
                                  .results = kReportResults,
                                  .reads = kFpga,
                                  .note = "Bit 12 of device word 03."}),
    COMMAND(WR_VLANT_MAP_ENABLE, {.summary = "enables or disables the VLAN table map",
                                  .fields = kWideFlag,
                                  .in = all(kWideFlag),
                                  .results = kChangeResults,
                                  .reads = kFpga,
                                  .changes = kFpga,
                                  .stays = kDeviceKeeps,
                                  .note = "Bit 12 of device word 03."}),
    COMMAND(RD_DEVICE_WORD_4E, {.summary = "device word 4E",
                                .fields = kWord,
                                .out = all(kWord),
                                .results = kReportResults,
                                .reads = kFpga}),
    COMMAND(RD_INDEXED_WORD, {.summary = "one word of the indexed words",
                              .fields = kIndexed,
                              .in = only(kIndexed, "index"),
                              .out = only(kIndexed, "value"),
                              .results = kReportResults,
                              .reads = kFpga}),
    COMMAND(WR_INDEXED_WORD, {.summary = "writes one word of the indexed words",
                              .fields = kIndexed,
                              .in = all(kIndexed),
                              .results = kWriteResults,
                              .changes = kFpga,
                              .stays = kDeviceKeeps}),
};

} // namespace

constexpr CommandGroup kDeviceWordGroup = {"device_word", "Device words and flags in them",
                                           kCommands};
