// The panel's three LED registers and device word 03 beside them, and what a record says of them:
// the map of the indicators once more, in bytes and bits.
#pragma once

#include <array>
#include <ostream>
#include <random>

#include "device/library_calls.h"

constexpr uint32_t kRegisterA = 0x6B0F;
constexpr uint32_t kRegisterB = 0x6B11;
constexpr uint32_t kRegisterC = 0x6B4F;
constexpr uint32_t kDeviceWord03 = 0x6B03;
constexpr uint32_t kChannel = 0x6B51;
constexpr uint32_t kOwnIdentifier = 0x6B29;

constexpr const char* kSaveLock = "/tmp/Saveing";

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

// An on/off element: its byte of the record and its bit.
struct ElementPlace {
    size_t byte;
    uint16_t PanelWords::*word;
    uint16_t bit;
};
extern const std::array<ElementPlace, 21> kElements;

// A three-state indicator: its byte of the record and its two bits.
struct IndicatorPlace {
    size_t byte;
    uint16_t PanelWords::*word;
    uint16_t low;
    uint16_t high;
};
extern const std::array<IndicatorPlace, 5> kIndicators; // ledB to ledF
constexpr size_t kLedFByte = 13;

// The record's bytes that the words show, 8 to 43; bytes that no word shows stay.
void panel_decode(const PanelWords& words, Bytes& record);

// The 44 bytes of a snapshot.
Bytes snapshot_of(uint32_t identifier, const PanelWords& words);

// The calls by which the snapshot is taken and saved, under the save lock.
extern const Course kSnapshot;

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
constexpr PatternBits kPattern1{0x97, 0x2000 | 0x0800 | 0x0200, 0x1000 | 0x0400 | 0x0100, 0x0080,
                                0x0200 | 0x0040};
constexpr PatternBits kPattern2{0x95, 0x2000 | 0x0200, 0x1000 | 0x0800 | 0x0100, 0x0200,
                                0x0100 | 0x0080};
constexpr PatternBits kPattern3{0x94, 0, 0x1000 | 0x2000 | 0x0800 | 0x0200, 0x0200,
                                0x0100 | 0x0080};
constexpr std::array<PatternBits, 3> kPatterns{kPattern1, kPattern2, kPattern3};
PanelWords shown(const PatternBits& pattern, PanelWords words);

// A procedure that works under the save lock.
struct LockedCourse {
    Course work;          // under the lock, with the stat of the LED state file first
    Course after;         // once the lock is released
    int32_t result;       // of the whole course
    Trace unseen;         // what follows a stat that fails, down to the last call
    int32_t unseenResult; // and its result
};

class LedTest : public DeviceTest
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

    // A record of the caller's as the commands take it, from 44 bytes.
    static Bytes record_random(std::mt19937& random, unsigned values = 256);
};

// Runs a command on 44 bytes, aligned as a record is, and takes over what it left in them.
int32_t command_run(DeviceCommandCode command, Bytes& record);
int32_t command_run(DeviceCommandCode command, Bytes&& record);
