// The commands of maint/commands/led.h.
#include "maint/commands/led.h"

#include "catalogue/describe.h"
#include "catalogue/groups.h"

namespace
{

constexpr Places kStateFile = place_bit(Place::kLedState);
constexpr Places kSystemLog = place_bit(Place::kSystemLog);
constexpr Places kPanelReads = kFpga | kStateFile | place_bit(Place::kSaveLock);
constexpr Places kPanelChanges = kFpga | kStateFile;

constexpr Range kUnits = {1, 30};

constexpr CodeName kFourStates[] = {{0, "off"}, {1, "on"}, {2, "calm"}, {3, "alert"}};
constexpr CodeName kThreeStates[] = {{0, "off"}, {1, "on"}, {2, "pattern"}};

constexpr const char* kInOrder = "bits 0, 1, 2 select element[0], [1], [2]; 0: all";
constexpr const char* kCrossed = "bits 0, 1, 2 select element[0], [2], [1]; 0: all";

constexpr Field kState[] = {
    own_id(number(FIELD(LedStateRecord, ownId), kUnits)),
    index(number(FIELD(LedStateRecord, targetId), kUnits, "the unit that is shown")),
    code(FIELD(LedStateRecord, ledA), kFourStates),
    code(FIELD(LedStateRecord, ledB), kThreeStates),
    code(FIELD(LedStateRecord, ledC), kThreeStates),
    code(FIELD(LedStateRecord, ledD), kThreeStates),
    code(FIELD(LedStateRecord, ledE), kThreeStates),
    code(FIELD(LedStateRecord, ledF), kThreeStates, "the line mode"),
    bits(FIELD(LedStateRecord, group1.valid), 3, kInOrder),
    flag(FIELD(LedStateRecord, group1.element)),
    bits(FIELD(LedStateRecord, group2.valid), 3, kInOrder),
    flag(FIELD(LedStateRecord, group2.element), "the line flags"),
    bits(FIELD(LedStateRecord, group3.valid), 3, kInOrder),
    flag(FIELD(LedStateRecord, group3.element)),
    bits(FIELD(LedStateRecord, group4.valid), 3, kCrossed),
    flag(FIELD(LedStateRecord, group4.element)),
    bits(FIELD(LedStateRecord, group5.valid), 3, kCrossed),
    flag(FIELD(LedStateRecord, group5.element)),
    bits(FIELD(LedStateRecord, group6.valid), 3, kCrossed),
    flag(FIELD(LedStateRecord, group6.element)),
    bits(FIELD(LedStateRecord, group7.valid), 3, kInOrder),
    flag(FIELD(LedStateRecord, group7.element)),
};

constexpr const char* kShown = "written to the panel";
constexpr const char* kRecorded = "recorded in the LED state file only, for WR_LED_RESTORE";

constexpr ResultMeaning kStateResults[] = {{0, kDone},
                                           {-1, kNotOpened},
                                           {-2, "a read failed; what was read before is filled"},
                                           {-5, kOutOfRange}};

constexpr ResultMeaning kSetterResults[] = {
    {0, kShown}, {1, kRecorded}, {-1, kNotOpened}, {-2, kNotRead}, {-4, kNotWritten}};

constexpr ResultMeaning kLedCResults[] = {{0, kShown},
                                          {1, kRecorded},
                                          {-1, "the device cannot be opened, or refuses the write"},
                                          {-2, kNotRead}};

constexpr ResultMeaning kGroup1Results[] = {
    {0, kShown},
    {1, kRecorded},
    {-1, "the device cannot be opened; the group may have been recorded"},
    {-2, "the panel cannot be read (the group may have been recorded), or device word 03 (the "
         "panel has changed)"},
    {-4, "the panel cannot be written, or device word 03 (the panel has changed)"}};

constexpr ResultMeaning kGroup7Results[] = {
    {0, kShown},
    {1, kRecorded},
    {-1, kNotOpened},
    {-2, "the panel cannot be read, or switch port 4 (the panel has changed)"},
    {-4, "the panel cannot be written, or switch port 4 (the panel has changed)"}};

constexpr ResultMeaning kPatternResults[] = {
    {0, kDone},
    {-1, "the panel cannot be saved, or the device cannot be opened"},
    {-2, "the device's answer cannot be read; what was written before stays"},
    {-4, kPartlyWritten}};

constexpr ResultMeaning kRestoreResults[] = {
    {0, "done; also with no inhibit on, and when the file cannot be removed (the inhibit stays)"},
    {-1, "device or file cannot be opened, or the file has less than 44 bytes (remove it)"},
    {-2, "the device's answer cannot be read; what was restored before stays"},
    {-4, "the device refuses a write; what was restored before stays"}};

constexpr const char* kPanelStays =
    "The panel keeps it; after result 1, WR_LED_RESTORE brings it to the panel.";
constexpr const char* kPatternStays =
    "The pattern and bit 7 of device word 03 stay, and setters only record (result 1), until "
    "WR_LED_RESTORE; also after a failure, once the panel was saved.";

constexpr const char* kGroupNote = "Result 1 records all three elements, whatever valid says.";

constexpr CommandDescription kCommands[] = {
    COMMAND(RD_LED_STATE,
            {.summary = "front panel of this unit or of another one",
             .fields = kState,
             .in = only(kState, "ownId targetId"),
             .out = only(kState, "ledA ledB ledC ledD ledE ledF group1.element group2.element "
                                 "group3.element group4.element group5.element group6.element "
                                 "group7.element"),
             .results = kStateResults,
             .reads = kFpga | kConfigLocked,
             .changes = kSystemLog,
             .note = "Another unit is shown dark (only ledA and ledB as they are) when the "
                     "hardware says so or its VPN identity is not the configured one."}),
    COMMAND(WR_LED_A, {.summary = "sets indicator A of the panel",
                       .fields = kState,
                       .in = only(kState, "ledA"),
                       .results = kSetterResults,
                       .reads = kPanelReads,
                       .changes = kPanelChanges,
                       .stays = kPanelStays,
                       .note = "State calm, written to the panel, also clears the alert bit."}),
    COMMAND(WR_LED_E, {.summary = "sets indicator E of the panel",
                       .fields = kState,
                       .in = only(kState, "ledE"),
                       .results = kSetterResults,
                       .reads = kPanelReads,
                       .changes = kPanelChanges,
                       .stays = kPanelStays}),
    COMMAND(WR_LED_B, {.summary = "sets indicator B of the panel",
                       .fields = kState,
                       .in = only(kState, "ledB"),
                       .results = kSetterResults,
                       .reads = kPanelReads,
                       .changes = kPanelChanges,
                       .stays = kPanelStays}),
    COMMAND(WR_LED_D, {.summary = "sets indicator D of the panel",
                       .fields = kState,
                       .in = only(kState, "ledD"),
                       .results = kSetterResults,
                       .reads = kPanelReads,
                       .changes = kPanelChanges,
                       .stays = kPanelStays}),
    COMMAND(WR_LED_C, {.summary = "sets indicator C of the panel",
                       .fields = kState,
                       .in = only(kState, "ledC"),
                       .results = kLedCResults,
                       .reads = kPanelReads,
                       .changes = kPanelChanges,
                       .stays = kPanelStays}),
    COMMAND(WR_LINE_MODE,
            {.summary = "sets the line mode (indicator F)",
             .fields = kState,
             .in = only(kState, "ledF"),
             .results = kChangeResults,
             .reads = kFpga,
             .changes = kFpga,
             .stays = kDeviceKeeps,
             .note = "Of the line control word, off clears bits 4 and 5, on sets bit 4 alone, "
                     "pattern sets bit 5 and keeps bit 4. No inhibit defers or undoes it."}),
    COMMAND(WR_LED_GROUP_1,
            {.summary = "sets group 1 of the panel, and begins or ends the alert",
             .fields = kState,
             .in = only(kState, "group1.valid group1.element"),
             .results = kGroup1Results,
             .reads = kPanelReads,
             .changes = kPanelChanges | kSystemLog | place_bit(Place::kUserLog) |
                        place_bit(Place::kFlashSave),
             .stays =
                 "The panel and bit 6 of device word 03 keep it, the user log keeps the event; "
                 "after result 1, WR_LED_RESTORE brings it to the panel.",
             .note = "valid bit 2 turns element[2] on, whatever it says; only WR_LED_RESTORE turns "
                     "it off. Elements 0,x,x end the alert, 1,1,1 end it with user log event 256, "
                     "others begin it with event 257; ledA becomes calm (from alert) or alert "
                     "(unless off), bit 6 of word 03 follows. With result 1 alert bit and word 03 "
                     "stay, and each call logs again; after a failure, too, it may."}),
    COMMAND(WR_LINE_FLAGS, {.summary = "sets the line flags (group 2)",
                            .fields = kState,
                            .in = only(kState, "group2.valid group2.element"),
                            .results = kChangeResults,
                            .reads = kFpga,
                            .changes = kFpga,
                            .stays = kDeviceKeeps,
                            .note = "No inhibit defers it, but WR_LED_RESTORE brings back the "
                                    "flags saved when the inhibit began."}),
    COMMAND(WR_LED_GROUP_3, {.summary = "sets group 3 of the panel",
                             .fields = kState,
                             .in = only(kState, "group3.valid group3.element"),
                             .results = kSetterResults,
                             .reads = kPanelReads,
                             .changes = kPanelChanges,
                             .stays = kPanelStays,
                             .note = kGroupNote}),
    COMMAND(WR_LED_GROUP_4, {.summary = "sets group 4 of the panel",
                             .fields = kState,
                             .in = only(kState, "group4.valid group4.element"),
                             .results = kSetterResults,
                             .reads = kPanelReads,
                             .changes = kPanelChanges,
                             .stays = kPanelStays,
                             .note = kGroupNote}),
    COMMAND(WR_LED_GROUP_5, {.summary = "sets group 5 of the panel",
                             .fields = kState,
                             .in = only(kState, "group5.valid group5.element"),
                             .results = kSetterResults,
                             .reads = kPanelReads,
                             .changes = kPanelChanges,
                             .stays = kPanelStays,
                             .note = kGroupNote}),
    COMMAND(WR_LED_GROUP_6, {.summary = "sets group 6 of the panel",
                             .fields = kState,
                             .in = only(kState, "group6.valid group6.element"),
                             .results = kSetterResults,
                             .reads = kPanelReads,
                             .changes = kPanelChanges,
                             .stays = kPanelStays,
                             .note = kGroupNote}),
    COMMAND(WR_LED_GROUP_7,
            {.summary = "sets group 7 of the panel, and switch port 4 after it",
             .fields = kState,
             .in = only(kState, "group7.valid group7.element"),
             .results = kGroup7Results,
             .reads = kPanelReads,
             .changes = kPanelChanges,
             .stays = "Panel and switch port 4 keep it; after result 1, WR_LED_RESTORE brings it "
                      "to the panel only.",
             .note = "The selected elements become link, speed and duplex of switch port 4. Result "
                     "1 records all three elements, whatever valid says."}),
    COMMAND(WR_LED_PATTERN_3,
            {.summary = "shows the fixed pattern 3 and begins the LED inhibit",
             .results = kPatternResults,
             .reads = kPanelReads,
             .changes = kPanelChanges,
             .stays = kPatternStays,
             .note = "ledA calm, ledB pattern, ledC pattern, ledD on, ledE pattern."}),
    COMMAND(WR_LED_PATTERN_2, {.summary = "shows the fixed pattern 2 and begins the LED inhibit",
                               .results = kPatternResults,
                               .reads = kPanelReads,
                               .changes = kPanelChanges,
                               .stays = kPatternStays,
                               .note = "ledA on, ledB pattern, ledC on, ledD on, ledE pattern."}),
    COMMAND(WR_LED_RESTORE,
            {.summary = "ends the LED inhibit and brings back the saved panel",
             .fields = kState,
             .out = all(kState),
             .results = kRestoreResults,
             .reads = kPanelReads,
             .changes = kPanelChanges,
             .stays = "The panel keeps what was restored; after a failure the inhibit stays on.",
             .note = "With no inhibit on, nothing is touched, nor the record. Line flags set "
                     "meanwhile are lost; ledF, the alert bit and switch port 4 are left alone. "
                     "Bit 7 of device word 03 is cleared; a ledA of alert sets bit 6."}),
    COMMAND(WR_LED_PATTERN_1, {.summary = "shows the fixed pattern 1 and begins the LED inhibit",
                               .results = kPatternResults,
                               .reads = kPanelReads,
                               .changes = kPanelChanges,
                               .stays = kPatternStays,
                               .note = "ledA on, ledB on, ledC on, ledD pattern, ledE on."}),
};

} // namespace

constexpr CommandGroup kLedGroup = {"led", "Front panel, line mode and line flags", kCommands};
