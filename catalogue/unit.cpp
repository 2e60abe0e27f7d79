// The commands of maint/commands/unit.h.
#include "maint/commands/unit.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Places kSystemLog = place_bit(Place::kSystemLog);

constexpr Field kInfo[] = {
    bytes(FIELD(DeviceInfo, bytes), "identity words 0 and 1, each with its bytes exchanged"),
    text(FIELD(DeviceInfo, text), "identity word 2, its bytes exchanged, in hexadecimal digits"),
};

constexpr Field kRegisters[] = {
    hex(FIELD(IdRegisters, value), "registers 0x0180, 0x0182 .. 0x018C"),
};

constexpr Field kMap[] = {bits(value_of<uint32_t>(), 32, "bit n: unit n")};

constexpr Field kFlag[] = {
    flag(FIELD(UnitStatusFlag, status),
         "1: marked in bitmap D, or another VPN identity than the configured one"),
    index(number(FIELD(UnitStatusFlag, unit), "above 31 there is no mark"), {0, 31, 1}),
};

constexpr Field kSerial[] = {text(FIELD(SerialNumber, text))};

constexpr ResultMeaning kRegistersResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, "a register cannot be read; those before it are filled"}};

constexpr ResultMeaning kMapResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-2, "a read failed; the value may be the device's own map"}};

constexpr ResultMeaning kSerialResults[] = {
    {0, kDone},
    {-1, "the file cannot be opened"},
    {-2, "the file cannot be read"},
    {-3, "the file has less than 9 bytes; those that it has are filled"}};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_DEVICE_INFO, {.summary = "identity words of the device",
                             .fields = kInfo,
                             .out = all(kInfo),
                             .results = kReportResults,
                             .reads = kFpga}),
    COMMAND(RD_ID_REGISTERS, {.summary = "the seven identity registers",
                              .fields = kRegisters,
                              .out = all(kRegisters),
                              .results = kRegistersResults,
                              .reads = kFpga}),
    COMMAND(RD_UNIT_STATUS_MAP,
            {.summary = "units that are marked or have another VPN identity",
             .fields = kMap,
             .out = all(kMap),
             .results = kMapResults,
             .reads = kFpga | kConfigLocked,
             .changes = kSystemLog,
             .note = "Only units that are present (RD_DEVICE_WORD_3B), never the own one: those "
                     "in the port mask (RD_PORT_MASK), and of 1 to 30 those with another VPN "
                     "identity than the configured one."}),
    COMMAND(RD_UNIT_STATUS_FLAG,
            {.summary = "whether a unit is marked or has another VPN identity",
             .fields = kFlag,
             .in = only(kFlag, "unit"),
             .out = only(kFlag, "status"),
             .results = kReportResults,
             .reads = kFpga | kConfigLocked,
             .changes = kSystemLog,
             .note = "Does not ask whether the unit is present. For bitmap D see RD_STATUS_BIT."}),
    COMMAND(RD_SERIAL_NUMBER, {.summary = "serial number of the unit",
                               .fields = kSerial,
                               .out = all(kSerial),
                               .results = kSerialResults,
                               .reads = place_bit(Place::kSerialNumber)}),
};

} // namespace

constexpr CommandGroup kUnitGroup = {"unit", "Identity and status of the units", kCommands};
