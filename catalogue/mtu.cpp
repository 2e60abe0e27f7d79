// The commands of maint/commands/mtu.h.
#include "maint/commands/mtu.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Places kDatasize = place_bit(Place::kMtuDatasize);
constexpr Places kSystemLog = place_bit(Place::kSystemLog);

constexpr Field kLimit[] = {
    in_unit(number(FIELD(MtuLimit, frame_size), "what the limit takes in a frame"), Unit::kBytes),
    in_unit(number(FIELD(MtuLimit, limit), "register 0x0056"), Unit::kBytes),
};

constexpr Field kCap[] = {
    flag(value_of<uint16_t>(), "1: under PPPoE, a limit that is set is never raised"),
};

constexpr Field kSizes[] = {
    in_unit(number(FIELD(MtuDatasize, size)), Unit::kBytes),
    in_unit(number(FIELD(MtuDatasize, data_size), "size - 26, modulo 65536"), Unit::kBytes),
    in_unit(number(FIELD(MtuDatasize, line_size),
                   "size; while bit 8 of device word 03 is clear, size - 8, modulo 65536"),
            Unit::kBytes),
    number(FIELD(MtuDatasize, kept), "written as given"),
};

constexpr ResultMeaning kSetResults[] = {
    {0, kDone}, {-1, kNotOpened}, {-4, "a register cannot be written; 0x0054 may have been"}};

constexpr ResultMeaning kReadSizesResults[] = {
    {0, kDone},
    {-1, "the file cannot be opened, or has less than 20 bytes; those that it has are filled"}};

constexpr ResultMeaning kWriteSizesResults[] = {
    {0, kDone},
    {-1, "the device or the file cannot be opened, or the file cannot be written"},
    {-2, kNotRead}};

constexpr CommandDescription kCommands[] = {
    COMMAND(
        RD_MTU_LIMIT,
        {.summary = "data size that the device accepts on the WAN side",
         .fields = kLimit,
         .out = all(kLimit),
         .results = kReportResults,
         .reads = kFpga | kConfigLocked,
         .changes = kSystemLog,
         .note =
             "frame_size is limit + 24; with IPsec on (IPSEC_ENABLE), limit + 82 and padding."}),
    COMMAND(WR_MTU_LIMIT,
            {.summary = "sets the WAN data size as the configuration demands",
             .fields = kCap,
             .in = all(kCap),
             .results = kSetResults,
             .reads = kFpga | kConfigLocked | place_bit(Place::kMtuNegotiated),
             .changes = kFpga | kSystemLog,
             .stays = "Registers 0x0054 and 0x0056 keep the new limit.",
             .note = "Computed of SELECT_MTU and the key that it names, WAN_TYPE and IPSEC_ENABLE, "
                     "under PPPoE also of the negotiated MRU. What is missing never fails the "
                     "command: MTU 1390, PPPoE, no IPsec. A present limit that cannot be read "
                     "counts as none."}),
    COMMAND(RD_MTU_DATASIZE, {.summary = "the data sizes in the file /tmp/mtu_datasize",
                              .fields = kSizes,
                              .out = all(kSizes),
                              .results = kReadSizesResults,
                              .reads = kDatasize,
                              .changes = kSystemLog,
                              .note = "A failure adds two lines to the system log."}),
    COMMAND(WR_MTU_DATASIZE, {.summary = "writes data sizes to the file /tmp/mtu_datasize",
                              .fields = kSizes,
                              .in = only(kSizes, "size kept"),
                              .out = only(kSizes, "data_size line_size"),
                              .results = kWriteSizesResults,
                              .reads = kFpga,
                              .changes = kDatasize | kSystemLog,
                              .stays = "The file keeps the sizes; the device is not changed.",
                              .note = "A failure of the file adds two lines to the system log. "
                                      "Result 0 does not promise that a full disk took it."}),
};

} // namespace

constexpr CommandGroup kMtuGroup = {"mtu", "MTU and data sizes", kCommands};
