// A unit's journal: a file that all processes map, with what was asked and answered since the state
// was last written. The lock in its head makes an order of it. An entry counts once the head's
// position has passed it: one store. Whoever is killed before that has changed nothing.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

enum class EntryKind : uint8_t {
    kOpen,    // argument: the flags
    kClose,   //
    kRequest, // a request, its record before and after
    kSet,     // items, a line each, instead of a record
    kMark     // a restart: its name instead of a record
};

// An entry as it lies in the journal; the bytes of both records follow, then zeros up to a multiple
// of eight.
struct EntryHead {
    uint32_t size; // with all that follows
    uint32_t checksum;
    uint64_t sequence;
    int64_t time; // the machine's, in nanoseconds
    int32_t process;
    EntryKind kind;
    uint8_t device;
    uint16_t spare;
    char program[16];
    uint32_t before; // bytes of the record
    uint32_t after;  // bytes of the record that came back; 0: it was the same
    uint32_t request;
    int32_t result;
    int32_t error;
    uint32_t spare_word;
    uint64_t argument;
};
static_assert(sizeof(EntryHead) == 80);

struct Entry {
    EntryHead head;
    std::string_view before;
    std::string_view after;
};

// The place in a journal up to which entries count. Each time that it starts anew, it is of another
// generation.
struct JournalPosition {
    uint32_t generation;
    uint32_t length; // bytes of entries

    bool operator==(const JournalPosition&) const = default;
};

struct JournalHead;

struct Journal {
    JournalHead* head = nullptr;
    char* entries = nullptr;
    uint32_t capacity = 0; // bytes of entries
};

// An empty journal in a new file, with all its room: a disk that is full later does no harm. False:
// errno says why not.
bool journal_create(const std::string& path, uint32_t generation);

// Maps the file and takes the lock. False: `fault` says why not.
bool journal_open(const std::string& path, Journal& journal, std::string& fault);
void journal_close(Journal& journal);

enum class LockResult {
    kHeld,
    kHeldAfterDeath, // who held it was killed, in the middle of something
    kLost            // it cannot be had any more (errno)
};

LockResult journal_lock(Journal& journal);
void journal_unlock(Journal& journal);

JournalPosition journal_position(const Journal& journal);
void journal_setPosition(Journal& journal, JournalPosition position);

// The unit's system clock, as a difference to the machine's, beside the entries: whoever holds the lock
// keeps it as the state has it, and anybody may read it at any time.
std::atomic<int64_t>& journal_clock(Journal& journal);
// The same of a journal that is not open. It neither waits nor allocates: a signal handler may ask. Null:
// there is no journal.
const std::atomic<int64_t>* journal_clockMap(const char* path);

// The entry at this place of a text of entries; false: there is none, or it is damaged.
bool entry_read(std::string_view entries, size_t offset, Entry& entry);
size_t entry_size(size_t before, size_t after);
// Writes an entry of entry_size(), its size and checksum too.
void entry_write(char* place, EntryHead head, std::string_view before, std::string_view after);
