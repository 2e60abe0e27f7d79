#include "tools/maintsim/unit_tool.h"

#include <pthread.h>
#include <signal.h> // NOLINT(modernize-deprecated-headers): sigset_t is POSIX's
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "sim/state_text.h"
#include "tools/maintsim/files.h"

// A copy of the devices, kept as new as the journal.
struct Unit {
    std::string folder; // from the root on: the program may go elsewhere
    std::string shown;  // as it was given, for people
    Journal journal;
    // Threads of this process one after the other, and none of them while it forks.
    pthread_mutex_t threads = PTHREAD_MUTEX_INITIALIZER;
    UnitState state;
    JournalPosition position{};    // what the state has seen
    uint64_t sequence = 0;         // of the next entry
    uint32_t entries = 0;          // in the journal, up to the position
    uint32_t tries_from = 0;       // entries at which the journal is started anew
    std::atomic<bool> told{false}; // why requests fail, on standard error
    Unit* next = nullptr;
};

namespace
{

constexpr char kUnitLine[] = "maintsim unit 1\n";
constexpr char kStateLine[] = "maintsim state 1 generation ";
constexpr uint32_t kEntriesMost = 16384;        // before the journal starts anew
constexpr size_t kCallsMost = size_t{10} << 20; // as long as the longest requests, so many, are
constexpr uint32_t kTriesEvery = 256;           // while it cannot
constexpr size_t kRecordMost = 512;
constexpr uintptr_t kFirstPage = 4096; // no record lies there

// All units of this process, for the moment of a fork.
pthread_mutex_t units_lock = PTHREAD_MUTEX_INITIALIZER;
Unit* units = nullptr;

void units_hold()
{
    pthread_mutex_lock(&units_lock);
    for (Unit* unit = units; unit != nullptr; unit = unit->next) {
        pthread_mutex_lock(&unit->threads);
    }
}

void units_release()
{
    for (Unit* unit = units; unit != nullptr; unit = unit->next) {
        pthread_mutex_unlock(&unit->threads);
    }
    pthread_mutex_unlock(&units_lock);
}

// Before anybody else does so: who opens a unit under a lock of his own, which he holds for a fork, too,
// gets his lock first then, as when he opens it.
[[gnu::constructor(200)]] void forks_prepare()
{
    pthread_atfork(units_hold, units_release, units_release);
}

void unit_enlist(Unit* unit)
{
    pthread_mutex_lock(&units_lock);
    unit->next = units;
    units = unit;
    pthread_mutex_unlock(&units_lock);
}

void unit_delist(const Unit* unit)
{
    pthread_mutex_lock(&units_lock);
    Unit** place = &units;
    while (*place != nullptr && *place != unit) {
        place = &(*place)->next;
    }
    if (*place != nullptr) {
        *place = unit->next;
    }
    pthread_mutex_unlock(&units_lock);
}

// A call that succeeds leaves errno as it was.
class ErrnoKeep
{
  public:
    ErrnoKeep() : error_(errno) {}
    ~ErrnoKeep() { errno = error_; }
    ErrnoKeep(const ErrnoKeep&) = delete;
    ErrnoKeep& operator=(const ErrnoKeep&) = delete;

    // The call fails with this error.
    void fail(int error) { error_ = error; }

  private:
    int error_;
};

// This thread has the unit to itself; no signal takes it away in the middle, since a handler could
// leave by a jump, or ask for a request itself.
class Turn
{
  public:
    explicit Turn(Unit& unit) : unit_(unit)
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &signals_);
        pthread_mutex_lock(&unit_.threads);
        result_ = journal_lock(unit_.journal);
    }
    ~Turn()
    {
        const int error = errno;
        if (held()) {
            journal_unlock(unit_.journal);
        }
        pthread_mutex_unlock(&unit_.threads);
        pthread_sigmask(SIG_SETMASK, &signals_, nullptr);
        errno = error;
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    bool held() const { return result_ != LockResult::kLost; }
    bool heldAfterDeath() const { return result_ == LockResult::kHeldAfterDeath; }

  private:
    Unit& unit_;
    sigset_t signals_{};
    LockResult result_ = LockResult::kLost;
};

// The state's file ----------------------------------------------------------------------------

struct StateHead {
    uint64_t generation = 0;
    uint64_t sequence = 0;
    uint64_t items = 0;
};

std::string state_path(const std::string& folder)
{
    return folder + "/state";
}

std::string calls_path(const std::string& folder)
{
    return folder + "/calls";
}

std::string stateFile_text(const UnitState& state, uint64_t generation, uint64_t sequence)
{
    const std::string items = stateText_make(state);
    return kStateLine + std::to_string(generation) + " sequence " + std::to_string(sequence) +
           " items " + std::to_string(std::ranges::count(items, '\n')) + "\n" + items;
}

bool words_take(std::string_view& text, std::string_view words)
{
    if (!text.starts_with(words)) {
        return false;
    }
    text.remove_prefix(words.size());
    return true;
}

bool number_take(std::string_view& text, char end, uint64_t limit, uint64_t& number)
{
    const size_t length = text.find(end);
    std::string fault;
    if (length == std::string_view::npos ||
        !number_parse(text.substr(0, length), limit, number, fault)) {
        return false;
    }
    text.remove_prefix(length + 1);
    return true;
}

// The first line, which is taken from the text.
bool stateHead_take(std::string_view& text, StateHead& head, std::string& fault)
{
    static constexpr std::string_view kAnyVersion = "maintsim state ";
    if (!words_take(text, kStateLine)) {
        const bool another = text.starts_with(kAnyVersion);
        fault = another ? "of another version: " + text_shown(text.substr(0, text.find('\n')))
                        : "not the state of a simulated unit";
        return false;
    }
    if (!number_take(text, ' ', UINT32_MAX, head.generation) || !words_take(text, "sequence ") ||
        !number_take(text, ' ', INT64_MAX, head.sequence) || !words_take(text, "items ") ||
        !number_take(text, '\n', UINT32_MAX, head.items)) {
        fault = "damaged: line 1";
        return false;
    }
    return true;
}

bool stateFile_parse(std::string_view text, StateHead& head, UnitState& state, std::string& fault)
{
    state = UnitState();
    if (!stateHead_take(text, head, fault)) {
        return false;
    }
    uint64_t items = 0;
    while (!text.empty()) {
        const size_t length = text.find('\n');
        ++items;
        fault.clear();
        if (length == std::string_view::npos ||
            !stateText_put(state, text.substr(0, length), 0, fault)) {
            const std::string line = "damaged: line " + std::to_string(items + 1);
            fault.insert(0, length == std::string_view::npos ? " has no end" : ": ");
            fault.insert(0, line);
            return false;
        }
        text.remove_prefix(length + 1);
    }
    if (items != head.items) {
        fault =
            "damaged: " + std::to_string(items) + " items instead of " + std::to_string(head.items);
        return false;
    }
    return true;
}

// Replaying -----------------------------------------------------------------------------------

const RequestForm* form_find(uint8_t device, uint32_t request)
{
    return device == static_cast<uint8_t>(UnitDevice::kFpga) ? requestForm_find(request)
                                                             : rtcRequestForm_find(request);
}

UnitAnswer request_serve(UnitState& state, uint8_t device, const RequestForm& form, char* record,
                         uint64_t argument, int64_t now)
{
    return device == static_cast<uint8_t>(UnitDevice::kFpga)
               ? unitState_serveFpga(state, form, record, static_cast<uint32_t>(argument), now)
               : unitState_serveRtc(state, form, record, now);
}

// Bytes that the caller has at the argument's address.
size_t record_size(const RequestForm& form)
{
    return form.argument == Argument::kValue ? 0 : form.size;
}

bool items_put(UnitState& state, std::string_view items, int64_t now, std::string& fault)
{
    while (!items.empty()) {
        const size_t length = std::min(items.find('\n'), items.size());
        if (!stateText_put(state, items.substr(0, length), now, fault)) {
            return false;
        }
        items.remove_prefix(std::min(length + 1, items.size()));
    }
    return true;
}

bool entry_replay(UnitState& state, const Entry& entry, std::string& fault)
{
    switch (entry.head.kind) {
    case EntryKind::kOpen:
    case EntryKind::kClose:
    case EntryKind::kMark:
        return true;
    case EntryKind::kSet:
        return items_put(state, entry.before, entry.head.time, fault);
    case EntryKind::kRequest:
        break;
    default:
        fault = "of no known kind";
        return false;
    }
    const RequestForm* form = form_find(entry.head.device, entry.head.request);
    if (form == nullptr) {
        return true; // the driver does not know it
    }
    if (entry.before.size() != record_size(*form)) {
        fault = "has a record of another size";
        return false;
    }
    char record[kRecordMost] = {};
    entry.before.copy(record, sizeof record);
    request_serve(state, entry.head.device, *form, record, entry.head.argument, entry.head.time);
    return true;
}

std::string_view entries_of(const Unit& unit, uint32_t length)
{
    return {unit.journal.entries, length};
}

bool state_load(Unit& unit, std::string& error)
{
    const std::string path = state_path(unit.shown);
    std::string text;
    if (!file_read(state_path(unit.folder), text)) {
        error = path + ": " + strerror(errno);
        return false;
    }
    StateHead head;
    UnitState state;
    if (!stateFile_parse(text, head, state, error)) {
        error = path + ": " + error;
        return false;
    }
    const JournalPosition now = journal_position(unit.journal);
    if (head.generation == uint64_t{now.generation} + 1) {
        // Somebody wrote the state and was killed before the journal started anew.
        journal_setPosition(unit.journal, {now.generation + 1, 0});
    } else if (head.generation != now.generation) {
        error = path + ": damaged: of generation " + std::to_string(head.generation) +
                ", and the journal is of " + std::to_string(now.generation);
        return false;
    }
    unit.state = std::move(state);
    unit.position = {static_cast<uint32_t>(head.generation), 0};
    unit.sequence = head.sequence;
    unit.entries = 0;
    unit.tries_from = kEntriesMost;
    return true;
}

// Whether the state was written and its writer killed before it said so to the journal. Such a
// state is the newer one.
bool state_newer(const Unit& unit)
{
    std::string text;
    StateHead head;
    std::string fault;
    if (!file_read(state_path(unit.folder), text)) {
        return false;
    }
    std::string_view rest = text;
    return stateHead_take(rest, head, fault) &&
           head.generation == uint64_t{journal_position(unit.journal).generation} + 1;
}

// What others have done since.
bool unit_catchUp(Unit& unit, std::string& error)
{
    const JournalPosition position = journal_position(unit.journal);
    if (position == unit.position) {
        return true;
    }
    if (position.generation != unit.position.generation && !state_load(unit, error)) {
        return false;
    }
    const uint32_t length = journal_position(unit.journal).length;
    const std::string path = unit.shown + "/journal";
    if (length > unit.journal.capacity || length < unit.position.length) {
        error = path + ": damaged: its length is " + std::to_string(length);
        return false;
    }
    while (unit.position.length < length) {
        Entry entry;
        std::string fault = "damaged";
        if (!entry_read(entries_of(unit, length), unit.position.length, entry) ||
            entry.head.sequence != unit.sequence || !entry_replay(unit.state, entry, fault)) {
            error = path;
            error.append(": damaged: entry ").append(std::to_string(unit.entries + 1));
            error.append(": ").append(fault);
            return false;
        }
        unit.position.length += entry.head.size;
        ++unit.sequence;
        ++unit.entries;
    }
    return true;
}

void clock_publish(Unit& unit)
{
    std::atomic<int64_t>& clock = journal_clock(unit.journal);
    if (clock.load(std::memory_order_relaxed) != unit.state.clock_difference) {
        clock.store(unit.state.clock_difference, std::memory_order_relaxed);
    }
}

// Appending -----------------------------------------------------------------------------------

// The calls of before the journal that are still to be told: a restart starts the journal anew when it
// is short, and long records when it has few. Who was killed at that may have kept the journal's, too.
std::string earlierCalls_keep(const Unit& unit)
{
    std::string text;
    if (unit.entries >= kEntriesMost || !file_read(calls_path(unit.folder), text)) {
        return "";
    }
    size_t begin = 0;
    size_t end = 0;
    Entry entry;
    while (entry_read(text, end, entry) && entry.head.sequence + unit.entries < unit.sequence) {
        const bool old = entry.head.sequence + kEntriesMost < unit.sequence;
        const bool too_long = text.size() - end > kCallsMost;
        end += entry.head.size;
        begin = old || too_long ? end : begin;
    }
    return text.substr(begin, end - begin);
}

// The state goes to its file, and the journal starts anew. What it held stays to be looked at. False:
// errno says why not, and all is as it was.
bool journal_renew(Unit& unit)
{
    const uint32_t generation = unit.position.generation + 1;
    const std::string text = stateFile_text(unit.state, generation, unit.sequence);
    // A disk that is full refuses the state before anything is changed.
    if (!file_prepare(state_path(unit.folder), text)) {
        return false;
    }
    // The calls first: once the state is there, the journal's entries do not count. Without room for
    // them, the earlier ones stay.
    file_replace(calls_path(unit.folder),
                 earlierCalls_keep(unit).append(entries_of(unit, unit.position.length)));
    if (!file_takePrepared(state_path(unit.folder))) {
        return false;
    }
    unit.position = {generation, 0};
    unit.entries = 0;
    unit.tries_from = kEntriesMost;
    journal_setPosition(unit.journal, unit.position);
    return true;
}

// Room for an entry of this size. False: errno says why not.
bool room_make(Unit& unit, size_t size)
{
    const bool fits = size <= unit.journal.capacity - unit.position.length;
    if (fits && unit.entries < unit.tries_from) {
        return true;
    }
    if (journal_renew(unit)) {
        if (size > unit.journal.capacity) {
            errno = EMSGSIZE;
            return false;
        }
        return true;
    }
    unit.tries_from = unit.entries + kTriesEvery;
    return fits;
}

// The time comes with the turn: calls have their times in their order.
EntryHead entryHead_make(EntryKind kind)
{
    EntryHead head{};
    head.kind = kind;
    head.process = process_id();
    const std::string_view program = program_invocation_short_name;
    program.copy(head.program, sizeof head.program - 1);
    return head;
}

void entry_append(Unit& unit, EntryHead head, std::string_view before, std::string_view after)
{
    head.sequence = unit.sequence;
    entry_write(unit.journal.entries + unit.position.length, head, before, after);
    unit.position.length += static_cast<uint32_t>(entry_size(before.size(), after.size()));
    ++unit.sequence;
    ++unit.entries;
    journal_setPosition(unit.journal, unit.position);
}

// A turn begins: the state is the newest, and there is room. Why it cannot be, the program does not
// say: this does, once.
bool turn_begin(Unit& unit, const Turn& turn, size_t size, std::string& error)
{
    if (!turn.held()) {
        error = unit.shown + ": the lock is lost: " + strerror(errno);
        errno = EIO;
        return false;
    }
    if (turn.heldAfterDeath() && state_newer(unit)) {
        journal_setPosition(unit.journal, {journal_position(unit.journal).generation + 1, 0});
    }
    if (!unit_catchUp(unit, error)) {
        errno = EIO;
        return false;
    }
    clock_publish(unit); // who set it may have been killed before
    if (!room_make(unit, size)) {
        const int reason = errno;
        error = unit.shown + ": " + strerror(reason);
        errno = reason;
        return false;
    }
    return true;
}

void error_tell(Unit& unit, const std::string& error)
{
    const int reason = errno;
    if (!unit.told.exchange(true)) {
        standardError_write("maintsim: " + error + "\n");
    }
    errno = reason;
}

bool turn_beginTold(Unit& unit, const Turn& turn, size_t size)
{
    std::string error;
    if (turn_begin(unit, turn, size, error)) {
        return true;
    }
    error_tell(unit, error);
    return false;
}

int openOrClose_note(Unit* unit, EntryKind kind, UnitDevice device, int flags)
{
    ErrnoKeep keep;
    EntryHead head = entryHead_make(kind);
    head.device = static_cast<uint8_t>(device);
    head.argument = static_cast<uint32_t>(flags);
    const Turn turn(*unit);
    if (!turn_beginTold(*unit, turn, entry_size(0, 0))) {
        keep.fail(errno);
        return -1;
    }
    head.time = machine_time();
    entry_append(*unit, head, {}, {});
    return 0;
}

// A request that the driver does not know is noted, too. The error.
int unknown_note(Unit* unit, EntryHead head)
{
    head.result = -1;
    head.error = ENOTTY;
    const Turn turn(*unit);
    if (!turn_beginTold(*unit, turn, entry_size(0, 0))) {
        return errno;
    }
    head.time = machine_time();
    entry_append(*unit, head, {}, {});
    return ENOTTY;
}

bool unitLine_good(const Unit& unit, std::string& error)
{
    std::string line;
    if (!file_read(unit.folder + "/unit", line)) {
        error = unit.shown + (errno == ENOENT ? std::string(": no simulated unit; `new` makes one")
                                              : std::string("/unit: ") + strerror(errno));
        return false;
    }
    if (line != kUnitLine) {
        error = line.starts_with("maintsim unit ")
                    ? unit.shown + ": a unit of another version: " +
                          text_shown(std::string_view(line).substr(0, line.find('\n')))
                    : unit.shown + ": not a simulated unit";
        return false;
    }
    return true;
}

} // namespace

Unit* unit_open(const std::string& folder, std::string& error)
{
    auto unit = std::make_unique<Unit>();
    unit->folder = folder;
    unit->shown = path_shown(folder);
    if (!folder.starts_with('/')) {
        char here[PATH_MAX] = "";
        syscall(SYS_getcwd, here, sizeof here);
        unit->folder = here + ("/" + folder);
    }
    if (!unitLine_good(*unit, error)) {
        return nullptr;
    }
    if (!journal_open(unit->folder + "/journal", unit->journal, error)) {
        error.insert(0, unit->shown + "/journal: ");
        return nullptr;
    }
    const bool loaded = state_load(*unit, error) && unit_catchUp(*unit, error);
    if (loaded) {
        clock_publish(*unit);
    }
    journal_unlock(unit->journal);
    if (!loaded) {
        journal_close(unit->journal);
        return nullptr;
    }
    unit_enlist(unit.get());
    return unit.release();
}

void unit_close(Unit* unit)
{
    unit_delist(unit);
    journal_close(unit->journal);
    delete unit;
}

int unit_opened(Unit* unit, UnitDevice device, int flags)
{
    return openOrClose_note(unit, EntryKind::kOpen, device, flags);
}

void unit_closed(Unit* unit, UnitDevice device)
{
    openOrClose_note(unit, EntryKind::kClose, device, 0);
}

int unit_request(Unit* unit, UnitDevice device, unsigned long request, unsigned long argument)
{
    ErrnoKeep keep;
    EntryHead head = entryHead_make(EntryKind::kRequest);
    head.device = static_cast<uint8_t>(device);
    head.request = static_cast<uint32_t>(request);
    head.argument = argument;
    const RequestForm* form = form_find(head.device, head.request);
    if (form == nullptr) {
        keep.fail(unknown_note(unit, head));
        return -1;
    }
    const size_t size = record_size(*form);
    char before[kRecordMost] = {};
    char after[kRecordMost] = {};
    auto* caller = reinterpret_cast<char*>(argument); // NOLINT(performance-no-int-to-ptr)
    if (size > 0) {
        if (argument < kFirstPage) {
            keep.fail(EFAULT);
            return -1;
        }
        memcpy(before, caller, size);
        memcpy(after, before, size);
    }
    size_t filled = size;
    UnitAnswer answer;
    {
        const Turn turn(*unit);
        if (!turn_beginTold(*unit, turn, entry_size(size, kRecordMost))) {
            keep.fail(errno);
            return -1;
        }
        const auto longer = unit->state.fpga.filled.find(head.request);
        if (longer != unit->state.fpga.filled.end()) {
            filled = std::max(filled, longer->second);
        }
        head.time = machine_time();
        answer = request_serve(unit->state, head.device, *form, after, argument, head.time);
        head.result = answer.result;
        head.error = answer.error;
        const bool changed = memcmp(before, after, sizeof after) != 0;
        entry_append(*unit, head, {before, size}, {after, changed ? filled : 0});
    }
    for (size_t i = 0; i < filled; ++i) {
        if (after[i] != before[i]) {
            caller[i] = after[i]; // a record that was only read may be a constant
        }
    }
    if (answer.result < 0) {
        keep.fail(answer.error);
    }
    return answer.result;
}

int64_t unit_clockDifference(Unit* unit)
{
    return journal_clock(unit->journal).load(std::memory_order_relaxed);
}

void unit_setClock(Unit* unit, int64_t difference)
{
    const ErrnoKeep keep;
    std::string error;
    if (!unit_put(unit, {"clock.difference=" + std::to_string(difference)}, error)) {
        error_tell(*unit, error);
    }
}

bool unit_create(const std::string& folder, const UnitState& state, std::string& error)
{
    constexpr uint32_t kGeneration = 1;
    const auto make = [&](const char* name, bool made) {
        if (!made) {
            error = path_shown(folder + "/" + name) + ": " + strerror(errno);
        }
        return made;
    };
    return make("state", file_replace(state_path(folder), stateFile_text(state, kGeneration, 1))) &&
           make("journal", journal_create(folder + "/journal", kGeneration)) &&
           make("unit", file_replace(folder + "/unit", kUnitLine));
}

bool unit_text(Unit* unit, std::string& text, std::string& error)
{
    const Turn turn(*unit);
    if (!turn_begin(*unit, turn, 0, error)) {
        return false;
    }
    text = stateText_make(unit->state, machine_time());
    return true;
}

bool unit_put(Unit* unit, const std::vector<std::string>& items, std::string& error)
{
    std::string text;
    for (const std::string& item : items) {
        text += item + "\n";
    }
    EntryHead head = entryHead_make(EntryKind::kSet);
    const Turn turn(*unit);
    if (!turn_begin(*unit, turn, entry_size(text.size(), 0), error)) {
        return false;
    }
    head.time = machine_time();
    UnitState changed = unit->state;
    for (const std::string& item : items) {
        if (!stateText_put(changed, item, head.time, error)) {
            return false;
        }
    }
    entry_append(*unit, head, text, {});
    unit->state = std::move(changed);
    clock_publish(*unit);
    return true;
}

bool unit_change(
    Unit* unit, std::string_view mark,
    const std::function<bool(UnitState& state, int64_t now, std::string& error)>& change,
    std::string& error)
{
    EntryHead head = entryHead_make(EntryKind::kMark);
    const Turn turn(*unit);
    if (!turn_begin(*unit, turn, entry_size(mark.size(), 0), error)) {
        return false;
    }
    head.time = machine_time();
    UnitState changed = unit->state;
    if (!change(changed, head.time, error)) {
        return false;
    }
    std::swap(unit->state, changed);
    if (!journal_renew(*unit)) {
        error = unit->shown + ": " + strerror(errno);
        unit->state = std::move(changed);
        return false;
    }
    clock_publish(*unit);
    entry_append(*unit, head, mark, {});
    return true;
}

bool unit_calls(Unit* unit, uint64_t from, std::vector<UnitCall>& calls, std::string& error)
{
    std::string earlier;
    std::string now;
    {
        const Turn turn(*unit);
        if (!turn_begin(*unit, turn, 0, error)) {
            return false;
        }
        if (from < unit->sequence - unit->entries) {
            file_read(calls_path(unit->folder), earlier);
        }
        now = entries_of(*unit, unit->position.length);
    }
    for (const std::string_view entries : {std::string_view(earlier), std::string_view(now)}) {
        Entry entry;
        for (size_t at = 0; entry_read(entries, at, entry); at += entry.head.size) {
            if (entry.head.sequence >= from) {
                calls.push_back({entry.head, std::string(entry.before), std::string(entry.after)});
                from = entry.head.sequence + 1;
            }
        }
    }
    return true;
}
