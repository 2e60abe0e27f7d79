// The commands of maint/commands/register_block.h.
#include "maint/commands/register_block.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr const char* kNoRegister = "a register cannot be read";

constexpr Field kE0[] = {
    bits(FIELD(RegE0Block, valid), 7, "bits 0 to 6 select enable to field_5, in order; 0: all"),
    flag(FIELD(RegE0Block, enable), "0x00F0: bit 0 is reported, bits 0..2 are written"),
    address6(FIELD(RegE0Block, address), "0x00E0, 0x00E2, 0x00E4"),
    hex(FIELD(RegE0Block, word), "0x00E6"),
    hex(FIELD(RegE0Block, first), "0x00E8, 0x00EA"),
    hex(FIELD(RegE0Block, second), "0x00EC, 0x00EE"),
    number(FIELD(RegE0Block, field_3), {0, 7}, "bits 8..10 of 0x00F2"),
    number(FIELD(RegE0Block, field_5), {0, 31}, "bits 0..4 of 0x00F2"),
};

constexpr Field k16A[] = {
    index(number(FIELD(Reg16ABlock, index), {0, 3})),
    bits(FIELD(Reg16ABlock, valid), 3, "bits 0, 1, 2 select flag_a, flag_b, data; 0: all"),
    flag(FIELD(Reg16ABlock, flag_a), "bit 1 of 0x0166"),
    flag(FIELD(Reg16ABlock, flag_b), "bit 0 of 0x0166"),
    bytes(FIELD(Reg16ABlock, data), "0x0160, 0x0162, 0x0164"),
};

constexpr Field k16E[] = {
    bits(FIELD(Reg16EBlock, valid), 4, "bits 0 to 3 select flag_a, flag_b, first, second; 0: all"),
    flag(FIELD(Reg16EBlock, flag_a), "bit 0 of 0x016E"),
    flag(FIELD(Reg16EBlock, flag_b), "bit 1 of 0x016E"),
    bytes(FIELD(Reg16EBlock, first), "0x0170, 0x0172"),
    bytes(FIELD(Reg16EBlock, second), "0x0174, 0x0176"),
};

constexpr ResultMeaning kE0WriteResults[] = {
    {0, kDone},
    {-1, kNotOpened},
    {-2, kNoRegister},
    {-4, kPartlyWritten},
    {-5, "field_3 or field_5 is out of range; all else that is selected is written"}};

constexpr ResultMeaning k16AReadResults[] = {{0, kDone},
                                             {-1, kNotOpened},
                                             {-2, kNoRegister},
                                             {-4, "the device refuses the selection of the block"},
                                             {-5, kOutOfRange}};

constexpr ResultMeaning k16AWriteResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, kNotAllRead}, {-4, kPartlyWritten}, {-5, kOutOfRange}};

constexpr ResultMeaning k16EWriteResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, kNoRegister}, {-4, kPartlyWritten}};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_REGE0_BLOCK, {.summary = "block of registers 0x00E0 to 0x00F2",
                             .fields = kE0,
                             .out = but(kE0, "valid"),
                             .results = kReportResults,
                             .reads = kFpga}),
    COMMAND(WR_REGE0_BLOCK, {.summary = "writes parts of registers 0x00E0 to 0x00F2",
                             .fields = kE0,
                             .in = all(kE0),
                             .results = kE0WriteResults,
                             .reads = kFpga,
                             .changes = kFpga,
                             .stays = kDeviceKeeps}),
    COMMAND(RD_REG16A_BLOCK, {.summary = "one of four blocks behind index register 0x016A",
                              .fields = k16A,
                              .in = only(k16A, "index"),
                              .out = only(k16A, "flag_a flag_b data"),
                              .results = k16AReadResults,
                              .reads = kFpga,
                              .changes = kFpga,
                              .stays = "Register 0x016A keeps the index, also after a failure."}),
    COMMAND(WR_REG16A_BLOCK, {.summary = "writes one of four blocks behind index register 0x016A",
                              .fields = k16A,
                              .in = all(k16A),
                              .results = k16AWriteResults,
                              .reads = kFpga,
                              .changes = kFpga,
                              .stays = "The block is kept, and the index in register 0x016A."}),
    COMMAND(RD_REG16E_BLOCK, {.summary = "block of registers 0x016E to 0x0176",
                              .fields = k16E,
                              .out = but(k16E, "valid"),
                              .results = kReportResults,
                              .reads = kFpga}),
    COMMAND(WR_REG16E_BLOCK, {.summary = "writes parts of registers 0x016E to 0x0176",
                              .fields = k16E,
                              .in = all(k16E),
                              .results = k16EWriteResults,
                              .reads = kFpga,
                              .changes = kFpga,
                              .stays = kDeviceKeeps}),
};

} // namespace

constexpr CommandGroup kRegisterBlockGroup = {"register_block", "Register blocks", kCommands};
