// The commands of maint/commands/register_field.h.
#include "maint/commands/register_field.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Field kFlag8[] = {flag(value_of<uint8_t>())};
constexpr Field kFlag16[] = {flag(value_of<uint16_t>())};
constexpr Field kNumber7[] = {number(value_of<uint16_t>(), {0, 127})};
constexpr Field kNumber8[] = {number(value_of<uint16_t>(), {0, 255})};
constexpr Field kNibble[] = {number(value_of<uint16_t>(), {0, 15})};
constexpr Field kState[] = {
    number(value_of<uint8_t>(), {0, 2}, "2: bit 13 is set, 1: bit 12 alone, 0: neither")};
constexpr Field kModeFE[] = {number(value_of<uint16_t>(), {0, 2},
                                    "bits 0..3 are 1: 8, 2: 0 (also 1, 2), 0: other; 0 writes 15")};
constexpr Field kEnable[] = {flag(value_of<uint8_t>(), "1: both bits are clear; 0 sets both")};
constexpr Field kMode168Read[] = {number(value_of<uint16_t>(), {1, 4}, "4: the bits are 0")};

constexpr Field kBytes110[] = {bytes(FIELD(Reg110Bytes, bytes), "two of each, the high one first")};
constexpr Field kFlagsF4[] = {flag(FIELD(RegF4Flags, flags), "bits 7, 6 .. 0")};

constexpr Field kMode168[] = {
    number(FIELD(Reg168Mode, mode), {1, 4}, "4 writes 0; the record then has 0"),
    number(FIELD(Reg168Mode, bracket), "not 0: bit 6 of 0x0158 is cleared before and set after"),
};

constexpr Field kSelect[] = {
    index(number(FIELD(Reg168Select, index), {0, 3}, "of bit 8 + index")),
    flag(FIELD(Reg168Select, value)),
};

constexpr const char* kValidNote = "bits 0, 1 select a, b; 0: both";

constexpr Field k15ARead[] = {
    bits(FIELD(Reg15AFields, valid), 2),
    number(FIELD(Reg15AFields, a), {0, 7}, "bits 13..15"),
    hex(FIELD(Reg15AFields, b), "bits 5..12"),
};

constexpr Field k15AWrite[] = {
    bits(FIELD(Reg15AFields, valid), 2, kValidNote),
    number(FIELD(Reg15AFields, a), {0, 7}, "bits 13..15; clears bits 8..12"),
    hex(FIELD(Reg15AFields, b), {0, 7}, "bits 5..7; clears bits 0..4"),
};

constexpr Field k15C[] = {
    bits(FIELD(Reg15CPair, valid), 2, kValidNote),
    hex(FIELD(Reg15CPair, a), "register 0x015E"),
    hex(FIELD(Reg15CPair, b), "register 0x015C"),
};

constexpr ResultMeaning k110Results[] = {
    {0, kDone},
    {-1, kNotOpened},
    {-2, "register 0x0114 cannot be read; the bytes are written"},
    {-4, kPartlyWritten}};

constexpr ResultMeaning kMode168Results[] = {
    {0, kDone},
    {-1, kNotOpened},
    {-2, kNotAllRead},
    {-4, kPartlyWritten},
    {-5, "the mode is not 1..4 (no device was touched), or mode 4 failed in any other way"}};

constexpr ResultMeaning k15CResults[] = {{0, kDone}, {-1, kNotOpened}, {-4, kPartlyWritten}};

// The whole record is reported.
consteval Said reported(std::span<const Field> fields, const char* summary)
{
    return {.summary = summary,
            .fields = fields,
            .out = all(fields),
            .results = kReportResults,
            .reads = kFpga};
}

// The whole record is taken; the register is read first.
consteval Said changed(std::span<const Field> fields, std::span<const ResultMeaning> results,
                       const char* summary)
{
    return {.summary = summary,
            .fields = fields,
            .in = all(fields),
            .results = results,
            .reads = kFpga,
            .changes = kFpga,
            .stays = kDeviceKeeps};
}

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_REG132_VALUE, {reported(kNumber7, "bits 0 to 6 of register 0x0132")}),
    COMMAND(WR_REG132_VALUE,
            {changed(kNumber7, kIndexedChangeResults, "writes bits 0 to 6 of register 0x0132")}),
    COMMAND(RD_REG110_BYTES,
            {reported(kBytes110, "the four bytes of registers 0x0110 and 0x0112")}),
    COMMAND(WR_REG110_BYTES, {changed(kBytes110, k110Results,
                                      "writes registers 0x0110 and 0x0112, then bit 2 of 0x0114")}),
    COMMAND(RD_REGF4_FLAGS, {reported(kFlagsF4, "eight flags of register 0x00F4")}),
    COMMAND(RD_REG168_MODE, {reported(kMode168Read, "mode in bits 12 and 13 of register 0x0168")}),
    COMMAND(WR_REG168_MODE, {.summary = "sets the mode in bits 12 and 13 of register 0x0168",
                             .fields = kMode168,
                             .in = all(kMode168),
                             .out = only(kMode168, "mode"),
                             .results = kMode168Results,
                             .reads = kFpga,
                             .changes = kFpga,
                             .stays = kDeviceKeeps,
                             .note = "A failure with a bracket may leave bit 6 of register 0x0158 "
                                     "clear."}),
    COMMAND(RD_REG168_SELECT, {.summary = "one of bits 8 to 11 of register 0x0168",
                               .fields = kSelect,
                               .in = only(kSelect, "index"),
                               .out = only(kSelect, "value"),
                               .results = kIndexedReportResults,
                               .reads = kFpga}),
    COMMAND(WR_REG168_SELECT, {changed(kSelect, kIndexedChangeResults,
                                       "sets or clears one of bits 8 to 11 of register 0x0168")}),
    COMMAND(RD_REG168_VALUE, {reported(kNumber8, "bits 0 to 7 of register 0x0168")}),
    COMMAND(WR_REG168_VALUE,
            {changed(kNumber8, kIndexedChangeResults, "writes bits 0 to 7 of register 0x0168")}),
    COMMAND(RD_REG158_BIT6, {reported(kFlag8, "bit 6 of register 0x0158")}),
    COMMAND(WR_REG158_BIT6,
            {changed(kFlag8, kChangeResults, "sets or clears bit 6 of register 0x0158")}),
    COMMAND(RD_REG158_BIT7, {reported(kFlag8, "bit 7 of register 0x0158")}),
    COMMAND(WR_REG158_BIT7,
            {changed(kFlag8, kChangeResults, "sets or clears bit 7 of register 0x0158")}),
    COMMAND(RD_REG158_BIT15, {reported(kFlag8, "bit 15 of register 0x0158")}),
    COMMAND(WR_REG158_BIT15,
            {changed(kFlag8, kChangeResults, "sets or clears bit 15 of register 0x0158")}),
    COMMAND(RD_REG158_BIT14, {reported(kFlag8, "bit 14 of register 0x0158")}),
    COMMAND(WR_REG158_BIT14,
            {changed(kFlag8, kChangeResults, "sets or clears bit 14 of register 0x0158")}),
    COMMAND(RD_REG158_STATE, {reported(kState, "state in bits 12 and 13 of register 0x0158")}),
    COMMAND(WR_REG158_STATE, {changed(kState, kChangeResults,
                                      "sets the state in bits 12 and 13 of register 0x0158")}),
    COMMAND(RD_REG158_BIT8, {reported(kFlag8, "bit 8 of register 0x0158")}),
    COMMAND(RD_REG158_BIT4, {reported(kFlag8, "bit 4 of register 0x0158")}),
    COMMAND(WR_REG158_BIT4,
            {changed(kFlag8, kChangeResults, "sets or clears bit 4 of register 0x0158")}),
    COMMAND(RD_REG158_BIT3, {reported(kFlag8, "bit 3 of register 0x0158")}),
    COMMAND(WR_REG158_BIT3,
            {changed(kFlag8, kChangeResults, "sets or clears bit 3 of register 0x0158")}),
    COMMAND(RD_REG158_BIT2, {reported(kFlag8, "bit 2 of register 0x0158")}),
    COMMAND(WR_REG158_BIT2,
            {changed(kFlag8, kChangeResults, "sets or clears bit 2 of register 0x0158")}),
    COMMAND(RD_REG158_BIT1, {reported(kFlag8, "bit 1 of register 0x0158")}),
    COMMAND(WR_REG158_BIT1,
            {changed(kFlag8, kChangeResults, "sets or clears bit 1 of register 0x0158")}),
    COMMAND(RD_REG158_BIT0, {reported(kFlag8, "bit 0 of register 0x0158")}),
    COMMAND(WR_REG158_BIT0,
            {changed(kFlag8, kChangeResults, "sets or clears bit 0 of register 0x0158")}),
    COMMAND(RD_REG15A_FIELDS, {.summary = "two fields of register 0x015A",
                               .fields = k15ARead,
                               .out = but(k15ARead, "valid"),
                               .results = kReportResults,
                               .reads = kFpga}),
    COMMAND(WR_REG15A_FIELDS,
            {changed(k15AWrite, kChangeResults, "writes two fields of register 0x015A")}),
    COMMAND(RD_REG15C_PAIR, {.summary = "registers 0x015C and 0x015E",
                             .fields = k15C,
                             .out = but(k15C, "valid"),
                             .results = kReportResults,
                             .reads = kFpga}),
    COMMAND(WR_REG15C_PAIR, {.summary = "writes registers 0x015C and 0x015E, whole",
                             .fields = k15C,
                             .in = all(k15C),
                             .results = k15CResults,
                             .changes = kFpga,
                             .stays = kDeviceKeeps}),
    COMMAND(RD_REG158_BIT5, {reported(kFlag8, "bit 5 of register 0x0158")}),
    COMMAND(WR_REG158_BIT5,
            {changed(kFlag8, kChangeResults, "sets or clears bit 5 of register 0x0158")}),
    COMMAND(RD_REG11E_BIT0, {reported(kFlag16, "bit 0 of register 0x011E")}),
    COMMAND(WR_REG11E_BIT0,
            {changed(kFlag16, kChangeResults, "sets or clears bit 0 of register 0x011E")}),
    COMMAND(RD_REGFE_MODE, {reported(kModeFE, "mode in bits 0 to 3 of register 0x00FE")}),
    COMMAND(WR_REGFE_MODE,
            {changed(kModeFE, kChangeResults, "sets the mode in bits 0 to 3 of register 0x00FE")}),
    COMMAND(RD_REGFE_NIBBLE, {reported(kNibble, "bits 0 to 3 of register 0x00FE as a number")}),
    COMMAND(WR_REGFE_NIBBLE, {changed(kNibble, kChangeResults,
                                      "writes bits 0 to 3 of register 0x00FE as a number")}),
    COMMAND(RD_REG44_FLAG, {reported(kFlag16, "bit 0 of register 0x0044")}),
    COMMAND(WR_REG44_FLAG,
            {changed(kFlag16, kChangeResults, "sets or clears bit 0 of register 0x0044")}),
    COMMAND(RD_REG158_BIT10, {reported(kFlag8, "bit 10 of register 0x0158")}),
    COMMAND(WR_REG158_BIT10,
            {changed(kFlag8, kChangeResults, "sets or clears bit 10 of register 0x0158")}),
    COMMAND(RD_REG16C_ENABLE,
            {reported(kEnable, "enable flag in bits 0 and 1 of register 0x016C")}),
    COMMAND(WR_REG16C_ENABLE, {changed(kEnable, kChangeResults,
                                       "sets the enable flag in bits 0 and 1 of register 0x016C")}),
    COMMAND(RD_REG1B4_BIT0, {reported(kFlag16, "bit 0 of register 0x01B4")}),
    COMMAND(WR_REG1B4_BIT0,
            {changed(kFlag16, kChangeResults, "sets or clears bit 0 of register 0x01B4")}),
};

} // namespace

constexpr CommandGroup kRegisterFieldGroup = {"register_field", "Register fields", kCommands};
