// The commands of maint/commands/rule.h.
#include "maint/commands/rule.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Range kIndexes = {0, 127};
constexpr const char* kAddressNote = "absent if the first byte is 0";
constexpr const char* kAbsentNote = "absent if 0";

constexpr Field kEntry[] = {
    index(number(FIELD(RuleEntry, index), kIndexes)),
    number(FIELD(RuleEntry, enabled), "0: disabled"),
    ipv4(FIELD(RuleEntry, address_a), kAddressNote),
    ipv4(FIELD(RuleEntry, address_b), kAddressNote),
    address6(FIELD(RuleEntry, address_6_a), kAbsentNote),
    address6(FIELD(RuleEntry, address_6_b), kAbsentNote),
    hex(FIELD(RuleEntry, value), kAbsentNote),
    number(FIELD(RuleEntry, class_code), {0, 4}, kAbsentNote),
    hex(FIELD(RuleEntry, byte_e), kAbsentNote),
    number(FIELD(RuleEntry, prefix_a), "goes with address_a"),
    number(FIELD(RuleEntry, prefix_b), "goes with address_b"),
    hex(FIELD(RuleEntry, word_c), kAbsentNote),
    hex(FIELD(RuleEntry, word_d), kAbsentNote),
    hex(FIELD(RuleEntry, companion_c), "goes with word_c"),
    hex(FIELD(RuleEntry, companion_d), "goes with word_d"),
    flag(FIELD(RuleEntry, switches)),
};

constexpr Field kIndex[] = {number(value_of<uint8_t>(), kIndexes, "of the entry")};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_RULE_ENTRY, {.summary = "one entry of the rule table",
                            .fields = kEntry,
                            .in = only(kEntry, "index"),
                            .out = all(kEntry),
                            .results = kIndexedReportResults,
                            .reads = kFpga,
                            .note = "Of a disabled entry all but the index is 0."}),
    COMMAND(WR_RULE_ENTRY, {.summary = "writes one entry of the rule table and enables it",
                            .fields = kEntry,
                            .in = but(kEntry, "enabled"),
                            .results = kIndexedWriteResults,
                            .changes = kFpga,
                            .stays = "The rule stays enabled.",
                            .note = "The whole entry is replaced."}),
    COMMAND(WR_RULE_DELETE, {.summary = "clears and disables one entry of the rule table",
                             .fields = kIndex,
                             .in = all(kIndex),
                             .results = kIndexedWriteResults,
                             .changes = kFpga,
                             .stays = "The rule stays disabled."}),
};

} // namespace

constexpr CommandGroup kRuleGroup = {"rule", "Rule entries", kCommands};
