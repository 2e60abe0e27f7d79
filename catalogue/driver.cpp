// The commands of maint/commands/driver.h.
#include "maint/commands/driver.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr const char* kDrivers = "what it means is the driver's";
constexpr const char* kDriverKeeps = "What becomes of it is the driver's, and may stay.";

constexpr Field kWord[] = {hex(value_of<uint16_t>(), kDrivers)};
constexpr Field kState[] = {
    hex(value_of<uint16_t>(), "the low half of it; 0xFFFF is a failure's -1")};
constexpr Field kByte[] = {hex(value_of<uint8_t>(), kDrivers)};
constexpr Field kBlock[] = {driver_sized("bytes", "size and layout are the driver's")};
constexpr Field kKey[] = {
    number(FIELD(KeyBytes, number)),
    bytes(FIELD(KeyBytes, bytes), kDrivers),
};
constexpr Field kPair[] = {hex(FIELD(PairWords, words), kDrivers)};

constexpr ResultMeaning kStateResults[] = {{0, kDone}, {-1, kNotOpened}};

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_CONTROL_WORD, {.summary = "the driver's control word",
                              .fields = kWord,
                              .out = all(kWord),
                              .results = kReportResults,
                              .reads = kFpga}),
    COMMAND(WR_CONTROL_BLOCK, {.summary = "sends the driver a control block",
                               .fields = kBlock,
                               .in = all(kBlock),
                               .results = kWriteResults,
                               .changes = kFpga,
                               .stays = kDriverKeeps}),
    COMMAND(WR_KEY_BYTES, {.summary = "sends the driver a number and four key bytes",
                           .fields = kKey,
                           .in = all(kKey),
                           .results = kWriteResults,
                           .changes = kFpga,
                           .stays = kDriverKeeps}),
    COMMAND(WR_CONTROL_BIT7_CLEAR, {.summary = "clears bit 7 of the driver's control word",
                                    .fields = kWord,
                                    .out = all(kWord),
                                    .results = kChangeResults,
                                    .reads = kFpga,
                                    .changes = kFpga,
                                    .stays = "Bit 7 stays clear."}),
    COMMAND(WR_BYTE_ACTION, {.summary = "starts an action of the driver, with a byte",
                             .fields = kByte,
                             .in = all(kByte),
                             .results = kWriteResults,
                             .changes = kFpga,
                             .stays = kDriverKeeps}),
    COMMAND(WR_PAIR_WORDS, {.summary = "sends the driver a pair of 32-bit words",
                            .fields = kPair,
                            .in = all(kPair),
                            .results = kWriteResults,
                            .changes = kFpga,
                            .stays = kDriverKeeps}),
    COMMAND(WR_WORD_ACTION, {.summary = "starts an action of the driver, with a 16-bit word",
                             .fields = kWord,
                             .in = all(kWord),
                             .results = kWriteResults,
                             .changes = kFpga,
                             .stays = kDriverKeeps}),
    COMMAND(RD_DRIVER_STATE, {.summary = "the driver's answer to the request for its state",
                              .fields = kState,
                              .out = all(kState),
                              .results = kStateResults,
                              .reads = kFpga}),
    COMMAND(RD_EXT_STATUS_A, {.summary = "extended status word A of the driver",
                              .fields = kWord,
                              .out = all(kWord),
                              .results = kReportResults,
                              .reads = kFpga}),
    COMMAND(WR_EXT_CONTROL_A, {.summary = "sends the driver extended control word A",
                               .fields = kWord,
                               .in = all(kWord),
                               .results = kWriteAsReadResults,
                               .changes = kFpga,
                               .stays = kDriverKeeps}),
    COMMAND(RD_EXT_STATUS_B, {.summary = "extended status word B of the driver",
                              .fields = kWord,
                              .out = all(kWord),
                              .results = kReportResults,
                              .reads = kFpga}),
    COMMAND(WR_EXT_CONTROL_B, {.summary = "sends the driver extended control word B",
                               .fields = kWord,
                               .in = all(kWord),
                               .results = kWriteAsReadResults,
                               .changes = kFpga,
                               .stays = kDriverKeeps}),
};

} // namespace

constexpr CommandGroup kDriverGroup = {"driver", "Driver words and records", kCommands};
