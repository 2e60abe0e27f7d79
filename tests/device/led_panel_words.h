// The panel's three LED registers and device word 03 beside them, and what a record says of them:
// the map of the indicators once more, in bytes and bits.
#pragma once

#include <array>
#include <ostream>
#include <random>

#include "device/command_test.h"
#include "device/device_word_03.h"
#include "device/library_calls.h"
#include "log/console_lines.h"

constexpr uint32_t kChannel = 0x6B51;
constexpr uint32_t kOwnIdentifier = 0x6B29;
constexpr uint8_t kMirrorPort = 4; // the switch port that shows group 7, too

struct PanelWords {
    uint16_t a = 0;
    uint16_t b = 0;
    uint16_t c = 0;
    uint16_t word03 = 0;

    bool operator==(const PanelWords&) const = default;
};
std::ostream& operator<<(std::ostream& out, const PanelWords& words);

void panel_put(Board& board, const PanelWords& words);
PanelWords panel_get(Board& board);
PanelWords panel_random(std::mt19937& random);

struct PanelRegister {
    uint32_t read;
    uint32_t write;
    uint16_t PanelWords::*word;
};
constexpr PanelRegister kRegisterA{0x6B0F, 0x6B10, &PanelWords::a};
constexpr PanelRegister kRegisterB{0x6B11, 0x6B12, &PanelWords::b};
constexpr PanelRegister kRegisterC{0x6B4F, 0x6B50, &PanelWords::c};

// An indicator: its setter, its byte of the record and its two bits.
struct Indicator {
    DeviceCommandCode command;
    size_t byte;
    PanelRegister panel;
    uint16_t low;
    uint16_t high;
};
constexpr Indicator kLedA{WR_LED_A, 8, kRegisterB, 0x1000, 0x2000}; // four states
constexpr std::array<Indicator, 5> kIndicators{{
    // ledB to ledF: three
    {WR_LED_B, 9, kRegisterB, 0x0400, 0x0800},
    {WR_LED_C, 10, kRegisterB, 0x0100, 0x0200},
    {WR_LED_D, 11, kRegisterC, 0x0100, 0x0200},
    {WR_LED_E, 12, kRegisterC, 0x0040, 0x0080},
    {WR_LINE_MODE, 13, kRegisterC, 0x0010, 0x0020},
}};

struct Element {
    size_t byte; // of the record
    uint16_t bit;
    bool one_way = false; // its setter sets it whenever it is selected and never clears it
};

// A group: its setter, the byte of its mask, and its elements in the order of the mask bits that
// select them.
struct Group {
    DeviceCommandCode command;
    size_t mask;
    PanelRegister panel;
    std::array<Element, 3> elements;
};
constexpr std::array<Group, 7> kGroups{{
    {WR_LED_GROUP_1, 14, kRegisterB, {{{15, 0x0040}, {16, 0x0010}, {17, 0x0020, true}}}},
    {WR_LINE_FLAGS, 18, kRegisterC, {{{19, 0x0004}, {20, 0x0001}, {21, 0x0002}}}},
    {WR_LED_GROUP_3, 24, kRegisterA, {{{25, 0x0004}, {26, 0x0001}, {27, 0x0002}}}},
    {WR_LED_GROUP_4, 28, kRegisterA, {{{29, 0x0040}, {31, 0x0020}, {30, 0x0010}}}},
    {WR_LED_GROUP_5, 32, kRegisterA, {{{33, 0x0400}, {35, 0x0200}, {34, 0x0100}}}},
    {WR_LED_GROUP_6, 36, kRegisterA, {{{37, 0x4000}, {39, 0x2000}, {38, 0x1000}}}},
    {WR_LED_GROUP_7, 40, kRegisterB, {{{41, 0x0004}, {42, 0x0001}, {43, 0x0002}}}},
}};

// The setters that drive the panel even while the inhibit is on.
constexpr bool is_line(DeviceCommandCode command)
{
    return command == WR_LINE_MODE || command == WR_LINE_FLAGS;
}

// The bytes that a setter puts into the LED state file. WR_LINE_FLAGS is here although it never
// records; WR_LINE_MODE is not.
struct RecordedBytes {
    DeviceCommandCode command;
    size_t first;
    size_t count;
};
constexpr std::array<RecordedBytes, 12> kRecordedBytes{{{WR_LED_A, 8, 1},
                                                        {WR_LED_B, 9, 1},
                                                        {WR_LED_C, 10, 1},
                                                        {WR_LED_D, 11, 1},
                                                        {WR_LED_E, 12, 1},
                                                        {WR_LED_GROUP_1, 15, 3},
                                                        {WR_LINE_FLAGS, 19, 3},
                                                        {WR_LED_GROUP_3, 25, 3},
                                                        {WR_LED_GROUP_4, 29, 3},
                                                        {WR_LED_GROUP_5, 33, 3},
                                                        {WR_LED_GROUP_6, 37, 3},
                                                        {WR_LED_GROUP_7, 41, 3}}};
// What the file then holds; as before, where the setter has no bytes in it.
Bytes with_recorded(Bytes held, DeviceCommandCode command, const Bytes& callers);

// For tests with a setter as their value.
template <class Row> std::string setter_name(const testing::TestParamInfo<Row>& row)
{
    return commandFacts_find(row.param.command)->name;
}
void PrintTo(const Indicator& indicator, std::ostream* out);
void PrintTo(const Group& group, std::ostream* out);

// What the setters make of their register's word. Any value that is none is off.
uint16_t ledA_word(uint16_t word, uint8_t value); // without the alert bit
uint16_t indicator_word(const Indicator& indicator, uint16_t word, uint8_t value);
uint16_t group_word(const Group& group, uint16_t word, const Bytes& record);
bool selects(unsigned mask, unsigned bit);

// The record's bytes that the words show, 8 to 43; bytes that no word shows stay.
void panel_decode(const PanelWords& words, Bytes& record);

// The 44 bytes of a snapshot.
Bytes snapshot_of(uint32_t identifier, const PanelWords& words);

// What the restore of a record makes of the words.
PanelWords restored(const Bytes& record, PanelWords words);

// A pattern command and what it makes of the words.
struct PatternBits {
    DeviceCommandCode command;
    uint16_t clearB;
    uint16_t setB;
    uint16_t clearC;
    uint16_t setC;
};
constexpr PatternBits kPattern1{WR_LED_PATTERN_1, 0x2000 | 0x0800 | 0x0200,
                                0x1000 | 0x0400 | 0x0100, 0x0080, 0x0200 | 0x0040};
constexpr PatternBits kPattern2{WR_LED_PATTERN_2, 0x2000 | 0x0200, 0x1000 | 0x0800 | 0x0100, 0x0200,
                                0x0100 | 0x0080};
constexpr PatternBits kPattern3{WR_LED_PATTERN_3, 0, 0x1000 | 0x2000 | 0x0800 | 0x0200, 0x0200,
                                0x0100 | 0x0080};
constexpr std::array<PatternBits, 3> kPatterns{kPattern1, kPattern2, kPattern3};
PanelWords shown(const PatternBits& pattern, PanelWords words);

// Calls under the save lock.
constexpr const char* kRelease = "fclose /tmp/Saveing";
Trace locked(const Trace& calls);

// The calls by which the snapshot is taken and saved, and a change merged into the file, under the
// save lock.
extern const Course kSnapshot;
inline const Trace kMerge{"stat /tmp/led_rewrite_inh",     "open /tmp/led_rewrite_inh O_RDWR",
                          "read /tmp/led_rewrite_inh 44",  "lseek /tmp/led_rewrite_inh 0",
                          "write /tmp/led_rewrite_inh 44", "close /tmp/led_rewrite_inh"};
inline const Trace kRecorded = locked(kMerge);
inline const Trace kNotInhibited = locked({kMerge[0]}); // without the file
inline const Trace kNotMerged = locked({kMerge[0], kMerge[1], kMerge[2], kMerge[5]});

// A procedure that works under the save lock.
struct LockedCourse {
    Course work;          // under the lock, with the stat of the LED state file first
    Course after;         // once the lock is released
    int32_t result;       // of the whole course
    Trace unseen;         // what follows a stat that fails, down to the last call
    int32_t unseenResult; // and its result
};

class LedTest : public CommandTest
{
  protected:
    // Runs the procedure on a fresh `prepare`, then once more for each call with that call failing,
    // and compares calls, result and messages each time:
    //   - without the lock the work goes on, and the unlock reports its null handle;
    //   - a close that fails is ignored, that of the lock with its message;
    //   - any other failure closes what is open, releases the lock and ends the procedure.
    // `check` sees what each failing call left: its number from 0 and its text.
    void prove_locked(const std::function<void()>& prepare, const std::function<int32_t()>& action,
                      const LockedCourse& course,
                      const std::function<void(size_t, const std::string&)>& check);

    // A record of the caller's, 44 bytes.
    static Bytes record_random(std::mt19937& random, unsigned values = 256);
};
