// The commands of maint/commands/register.h.
#include "maint/commands/register.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Field kLatched[] = {hex(value_of<uint32_t>(), {0, 255})};

constexpr Field kRegister[] = {
    index(hex(FIELD(RegisterValue, address)), {0x0000, 0x01FE, 2}),
    hex(FIELD(RegisterValue, value)),
};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_REG_DA_LATCHED, {.summary = "low byte of register 0x00DA, taken while it is latched",
                                .fields = kLatched,
                                .out = all(kLatched),
                                .results = kChangeResults,
                                .reads = kFpga,
                                .changes = kFpga,
                                .stays = "Bit 5 of register 0x00D8 is set afterwards; it may stay "
                                         "clear after a failure."}),
    COMMAND(RD_REGISTER, {.summary = "one register of the FPGA",
                          .fields = kRegister,
                          .in = only(kRegister, "address"),
                          .out = only(kRegister, "value"),
                          .results = kReportResults,
                          .reads = kFpga}),
    COMMAND(WR_REGISTER, {.summary = "writes one register of the FPGA, whole",
                          .fields = kRegister,
                          .in = all(kRegister),
                          .results = kWriteAsReadResults,
                          .changes = kFpga,
                          .stays = kDeviceKeeps,
                          .note = "Any address is passed on."}),
};

} // namespace

constexpr CommandGroup kRegisterGroup = {"register", "Whole registers", kCommands};
