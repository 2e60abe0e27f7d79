#include "tools/maintsim/journal.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <pthread.h>
#include <signal.h> // NOLINT(modernize-deprecated-headers): kill is POSIX's
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "tools/maintsim/files.h"

namespace
{

constexpr char kMagic[16] = "maintsim-journ";
constexpr uint32_t kVersion = 1;
constexpr size_t kHeadSize = 4096;
constexpr size_t kCapacity = size_t{4} << 20;

// Which file on which machine, since which start of it: a lock that another one left is nobody's.
struct Origin {
    char boot[40];
    uint64_t inode;
    int64_t birth_seconds;
    uint32_t birth_nanoseconds;
    uint32_t device;

    bool operator==(const Origin& other) const { return memcmp(this, &other, sizeof other) == 0; }
};

} // namespace

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): processors do not share a line by chance
struct JournalHead {
    char magic[16];
    uint32_t version;
    uint32_t capacity;
    Origin origin;
    alignas(64) std::atomic<uint64_t> position; // generation and length, in one store
    alignas(64) pthread_mutex_t lock;
    alignas(64) std::atomic<int64_t> clock;
};
static_assert(sizeof(JournalHead) <= kHeadSize);
static_assert(std::atomic<uint64_t>::is_always_lock_free);

namespace
{

uint64_t position_word(JournalPosition position)
{
    return uint64_t{position.generation} << 32 | position.length;
}

void lock_make(pthread_mutex_t& lock)
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    memset(&lock, 0, sizeof lock);
    pthread_mutex_init(&lock, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

// Whether it is of the kind that is made here: any other kind waits in other ways.
bool lock_good(const pthread_mutex_t& lock)
{
    pthread_mutex_t made;
    lock_make(made);
    return lock.__data.__kind == made.__data.__kind;
}

Origin origin_of(int file)
{
    Origin origin{};
    std::string boot;
    if (file_read("/proc/sys/kernel/random/boot_id", boot)) {
        boot.copy(origin.boot, sizeof origin.boot - 1);
    }
    struct statx about {
    };
    if (syscall(SYS_statx, file, "", AT_EMPTY_PATH, STATX_INO | STATX_BTIME, &about) == 0) {
        origin.inode = about.stx_ino;
        origin.device = about.stx_dev_major << 20 | about.stx_dev_minor;
        if ((about.stx_mask & STATX_BTIME) != 0) {
            origin.birth_seconds = about.stx_btime.tv_sec;
            origin.birth_nanoseconds = about.stx_btime.tv_nsec;
        }
    }
    return origin;
}

void milliseconds_wait(long count)
{
    const timespec time{0, count * 1000000};
    syscall(SYS_nanosleep, &time, nullptr);
}

// Those who open the unit look at its lock one after the other.
bool file_lock(int file)
{
    for (int tries = 0; syscall(SYS_flock, file, LOCK_EX | LOCK_NB) != 0; ++tries) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || tries > 5000) {
            return false;
        }
        milliseconds_wait(1);
    }
    return true;
}

// What came of the lock of a process that may have died with it.
LockResult lock_settled(pthread_mutex_t& lock, int result)
{
    if (result == EOWNERDEAD) {
        pthread_mutex_consistent(&lock);
        return LockResult::kHeldAfterDeath;
    }
    errno = result;
    return result == 0 ? LockResult::kHeld : LockResult::kLost;
}

enum class Holder { kNone, kDead, kAlive };

Holder holder_of(const pthread_mutex_t& lock, int& thread)
{
    thread = lock.__data.__lock & FUTEX_TID_MASK;
    if (thread == 0) {
        return Holder::kNone;
    }
    return syscall(SYS_kill, thread, 0) != 0 && errno == ESRCH ? Holder::kDead : Holder::kAlive;
}

// A lock from another machine, another start of this one or another file is nobody's.
void lock_claim(JournalHead& head, int file)
{
    Origin origin = origin_of(file);
    if (origin.boot[0] == '\0') {
        memcpy(origin.boot, head.origin.boot, sizeof origin.boot); // no /proc here
    }
    if (!(head.origin == origin) || !lock_good(head.lock)) {
        lock_make(head.lock);
        head.origin = origin;
    }
}

int lock_wait(pthread_mutex_t& lock, long milliseconds)
{
    timespec until{};
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &until);
    until.tv_nsec += milliseconds * 1000000;
    until.tv_sec += until.tv_nsec / 1000000000;
    until.tv_nsec %= 1000000000;
    return pthread_mutex_clocklock(&lock, CLOCK_MONOTONIC, &until);
}

// Takes the lock of a file that was just opened. The kernel frees the lock of a process that dies;
// one that nobody alive holds all the same is damaged, and is made anew.
bool first_lock(int file, JournalHead& head, std::string& fault)
{
    int thread = 0;
    for (int tries = 0; tries < 25; ++tries) {
        if (!file_lock(file)) {
            fault = "another process keeps the unit from being opened";
            return false;
        }
        lock_claim(head, file);
        const int result = lock_wait(head.lock, 200);
        const bool held = lock_settled(head.lock, result) != LockResult::kLost;
        if (!held && (result != ETIMEDOUT || holder_of(head.lock, thread) != Holder::kAlive)) {
            lock_make(head.lock);
        }
        syscall(SYS_flock, file, LOCK_UN);
        if (held) {
            return true;
        }
    }
    fault = "process " + std::to_string(thread) +
            " has held the unit for five seconds; it may be stopped";
    return false;
}

uint32_t checksum_of(const char* bytes, size_t size)
{
    uint64_t sum = 0x9E3779B97F4A7C15 ^ size;
    for (size_t i = 0; i < size; i += sizeof sum) {
        uint64_t part = 0;
        memcpy(&part, bytes + i, sizeof part);
        sum = (sum ^ part) * 0xFF51AFD7ED558CCD;
        sum ^= sum >> 32;
    }
    return static_cast<uint32_t>(sum);
}

constexpr size_t kSummedFrom = offsetof(EntryHead, sequence);
static_assert(kSummedFrom == 8);

bool head_good(const JournalHead& head, uint64_t size, std::string& fault)
{
    if (memcmp(head.magic, kMagic, sizeof kMagic) != 0) {
        fault = "not the journal of a simulated unit";
    } else if (head.version != kVersion) {
        fault = "of version " + std::to_string(head.version) + ", not " + std::to_string(kVersion);
    } else if (head.capacity != kCapacity || size != kHeadSize + kCapacity) {
        fault = "damaged: " + std::to_string(size) + " bytes long";
    } else {
        return true;
    }
    return false;
}

} // namespace

bool journal_create(const std::string& path, uint32_t generation)
{
    const int file = file_open(path.c_str(), O_RDWR | O_CREAT | O_EXCL, 0666);
    if (file < 0) {
        return false;
    }
    errno = posix_fallocate(file, 0, kHeadSize + kCapacity);
    JournalHead head{};
    memcpy(head.magic, kMagic, sizeof kMagic);
    head.version = kVersion;
    head.capacity = kCapacity;
    head.position = position_word({generation, 0});
    lock_make(head.lock);
    head.origin = origin_of(file);
    const bool made =
        errno == 0 && syscall(SYS_pwrite64, file, &head, sizeof head, 0L) == sizeof head;
    file_close(file);
    return made;
}

bool journal_open(const std::string& path, Journal& journal, std::string& fault)
{
    const int file = file_open(path.c_str(), O_RDWR | O_NONBLOCK);
    if (file < 0) {
        fault = strerror(errno);
        return false;
    }
    struct statx about {
    };
    void* map = MAP_FAILED;
    if (syscall(SYS_statx, file, "", AT_EMPTY_PATH, STATX_SIZE | STATX_TYPE, &about) != 0) {
        fault = strerror(errno);
    } else if (!S_ISREG(about.stx_mode) || about.stx_size != kHeadSize + kCapacity) {
        fault = "damaged: not a file of " + std::to_string(kHeadSize + kCapacity) + " bytes";
    } else {
        map = mmap(nullptr, kHeadSize + kCapacity, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        if (map == MAP_FAILED) {
            fault = strerror(errno);
        }
    }
    if (map != MAP_FAILED) {
        journal.head = static_cast<JournalHead*>(map);
        journal.entries = static_cast<char*>(map) + kHeadSize;
        journal.capacity = kCapacity;
        if (!head_good(*journal.head, about.stx_size, fault) ||
            !first_lock(file, *journal.head, fault)) {
            journal_close(journal);
        }
    }
    file_close(file);
    return journal.head != nullptr;
}

void journal_close(Journal& journal)
{
    munmap(journal.head, kHeadSize + kCapacity);
    journal = Journal();
}

LockResult journal_lock(Journal& journal)
{
    return lock_settled(journal.head->lock, pthread_mutex_lock(&journal.head->lock));
}

void journal_unlock(Journal& journal)
{
    pthread_mutex_unlock(&journal.head->lock);
}

JournalPosition journal_position(const Journal& journal)
{
    const uint64_t word = journal.head->position.load(std::memory_order_acquire);
    return {static_cast<uint32_t>(word >> 32), static_cast<uint32_t>(word)};
}

void journal_setPosition(Journal& journal, JournalPosition position)
{
    journal.head->position.store(position_word(position), std::memory_order_release);
}

std::atomic<int64_t>& journal_clock(Journal& journal)
{
    return journal.head->clock;
}

const std::atomic<int64_t>* journal_clockMap(const char* path)
{
    const int file = file_open(path, O_RDONLY | O_NONBLOCK);
    if (file < 0) {
        return nullptr;
    }
    struct statx about {
    };
    void* map = MAP_FAILED;
    if (syscall(SYS_statx, file, "", AT_EMPTY_PATH, STATX_SIZE | STATX_TYPE, &about) == 0 &&
        S_ISREG(about.stx_mode) && about.stx_size == kHeadSize + kCapacity) {
        map = mmap(nullptr, kHeadSize, PROT_READ, MAP_SHARED, file, 0);
    }
    file_close(file);
    if (map == MAP_FAILED) {
        return nullptr;
    }
    const auto* head = static_cast<const JournalHead*>(map);
    if (memcmp(head->magic, kMagic, sizeof kMagic) != 0 || head->version != kVersion) {
        munmap(map, kHeadSize);
        return nullptr;
    }
    return &head->clock;
}

size_t entry_size(size_t before, size_t after)
{
    return (sizeof(EntryHead) + before + after + 7) / 8 * 8;
}

bool entry_read(std::string_view entries, size_t offset, Entry& entry)
{
    if (offset > entries.size() || entries.size() - offset < sizeof(EntryHead)) {
        return false;
    }
    const char* place = entries.data() + offset;
    EntryHead& head = entry.head;
    memcpy(&head, place, sizeof head);
    if (head.size > entries.size() - offset || head.before > head.size || head.after > head.size ||
        head.size != entry_size(head.before, head.after) ||
        head.checksum != checksum_of(place + kSummedFrom, head.size - kSummedFrom)) {
        return false;
    }
    entry.before = {place + sizeof head, head.before};
    entry.after = {place + sizeof head + head.before, head.after};
    return true;
}

void entry_write(char* place, EntryHead head, std::string_view before, std::string_view after)
{
    const size_t size = entry_size(before.size(), after.size());
    head.size = static_cast<uint32_t>(size);
    head.before = static_cast<uint32_t>(before.size());
    head.after = static_cast<uint32_t>(after.size());
    memcpy(place, &head, sizeof head);
    char* end = place + sizeof head;
    end += before.copy(end, before.size());
    end += after.copy(end, after.size());
    memset(end, 0, static_cast<size_t>(place + size - end));
    const uint32_t checksum = checksum_of(place + kSummedFrom, size - kSummedFrom);
    memcpy(place + offsetof(EntryHead, checksum), &checksum, sizeof checksum);
}
