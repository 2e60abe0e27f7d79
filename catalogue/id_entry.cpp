// The commands of maint/commands/id_entry.h.
#include "maint/commands/id_entry.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Range kIds = {1, 30};

// The check answers fields that are out of range with a result of its own.
constexpr Field kCheck[] = {
    index(number(FIELD(IdEntry, id), kIds)),
    number(FIELD(IdEntry, field_b), "checked: 0 to 4095"),
    number(FIELD(IdEntry, field_c), "checked: 0 to 7"),
};

constexpr Field kEntry[] = {
    number(FIELD(IdEntry, id), kIds),
    bits(FIELD(IdEntry, mask), 3, "bits 0, 1, 2 select field_a, field_b, field_c; 0: all"),
    number(FIELD(IdEntry, field_a)),
    number(FIELD(IdEntry, field_b), {0, 4095}),
    number(FIELD(IdEntry, field_c), {0, 7}),
};

constexpr Field kValue[] = {
    own_id(number(FIELD(IdEntryValue, own_id))),
    index(number(FIELD(IdEntryValue, id), kIds)),
    number(FIELD(IdEntryValue, value)),
};

constexpr ResultMeaning kCheckResults[] = {
    {0, "the entry can be read, and the fields are in range"},
    {-1, kNotOpened},
    {-2, kNotRead},
    {-3, "the entry can be read, but field_b is above 4095 or field_c above 7"},
    {-5, kOutOfRange}};

constexpr ResultMeaning kEntryResults[] = {
    {0, kDone},
    {-1, kNotOpened},
    {-2, kNotRead},
    {-4, kNotWritten},
    {-5, "the identifier or a selected field is out of range; nothing was written"}};

constexpr ResultMeaning kValueResults[] = {
    {0, kDone},
    {-1, kNotOpened},
    {-2, kNotRead},
    {-3, "the identifier is in bitmap D (RD_STATUS_BIT) or not in bitmap E (RD_DEVICE_WORD_3B)"},
    {-5, "the identifier is not within 1 to 30 or is the own one; no device was touched"}};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_ID_ENTRY, {.summary = "checks that an identifier's entry can be read",
                          .fields = kCheck,
                          .in = all(kCheck),
                          .results = kCheckResults,
                          .reads = kFpga,
                          .note = "Only the given fields are checked; the entry is not shown."}),
    COMMAND(WR_ID_ENTRY, {.summary = "sets fields of an identifier's entry",
                          .fields = kEntry,
                          .in = all(kEntry),
                          .results = kEntryResults,
                          .reads = kFpga,
                          .changes = kFpga,
                          .stays = kDeviceKeeps}),
    COMMAND(RD_ID_ENTRY_VALUE, {.summary = "VPN identity that the hardware holds for a unit",
                                .fields = kValue,
                                .in = but(kValue, "value"),
                                .out = only(kValue, "value"),
                                .results = kValueResults,
                                .reads = kFpga}),
};

} // namespace

constexpr CommandGroup kIdEntryGroup = {"id_entry", "Identifier entries", kCommands};
