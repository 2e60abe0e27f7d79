#include "tools/maintsim/preload_device.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <pthread.h>
#include <string>
#include <sys/uio.h>
#include <unistd.h>

#include "sim/fpga_model.h"
#include "sim/rtc_model.h"
#include "tools/maintsim/journal.h"
#include "tools/maintsim/preload.h"

namespace
{

// Held while the unit is opened: by one thread, with no signal handler in between, and not while the
// process forks. What is asked of an open unit is safe from all this by itself.
pthread_mutex_t opening = PTHREAD_MUTEX_INITIALIZER;

Unit* unit_openOnce()
{
    std::string error = "MAINTSIM_UNIT names no unit";
    Unit* const unit = sim_folder()[0] == '\0' ? nullptr : unit_open(sim_folder(), error);
    if (unit == nullptr) {
        sim_say(error.c_str());
    }
    return unit;
}

// The unit, opened when something is asked of it for the first time; null: it cannot be, which is
// said once.
Unit* unit_ready()
{
    static std::atomic<Unit*> unit{nullptr};
    static std::atomic<bool> tried{false};
    if (!tried.load(std::memory_order_acquire)) {
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        pthread_mutex_lock(&opening);
        if (!tried.load(std::memory_order_acquire)) {
            unit.store(unit_openOnce());
            tried.store(true, std::memory_order_release);
        }
        pthread_mutex_unlock(&opening);
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    return unit.load(std::memory_order_acquire);
}

// The files that stand for the devices. Known as soon as they are there.
struct DeviceFile {
    const char* name;
    UnitDevice device;
    std::atomic<uint64_t> holder{0}; // the file system; 0: not known
    std::atomic<uint64_t> number{0};
};
std::array<DeviceFile, 2> device_files{
    {{"/files/dev/fpga", UnitDevice::kFpga}, {"/files/dev/rtc", UnitDevice::kRtc}}};

void deviceFile_know(DeviceFile& file, const struct stat& status)
{
    file.number.store(status.st_ino, std::memory_order_relaxed);
    file.holder.store(status.st_dev, std::memory_order_release);
}

bool devices_known()
{
    static std::atomic<bool> looked{false};
    if (!looked.load(std::memory_order_acquire)) {
        const ErrnoKept kept;
        const Inside inside;
        for (DeviceFile& file : device_files) {
            char path[PATH_MAX];
            struct stat status {
            };
            const int size = snprintf(path, sizeof path, "%s%s", sim_folder(), file.name);
            if (size > 0 && static_cast<size_t>(size) < sizeof path &&
                NEXT(stat)(path, &status) == 0) {
                deviceFile_know(file, status);
            }
        }
        looked.store(true, std::memory_order_release);
    }
    return std::any_of(device_files.begin(), device_files.end(),
                       [](const DeviceFile& file) { return file.holder.load() != 0; });
}

// The bytes behind an address that a program gave, copied as a driver copies them: a wrong address is
// an error, not the program's end while it holds the unit's lock. Where the kernel does not allow the
// call, they are copied as they are.
bool caller_copied(ssize_t copied, void* to, const void* from, size_t size)
{
    if (copied < 0 && errno != EFAULT) {
        memcpy(to, from, size);
        return true;
    }
    return copied == static_cast<ssize_t>(size);
}

bool caller_read(void* record, void* caller, size_t size)
{
    const iovec here = {record, size};
    const iovec there = {caller, size};
    return caller_copied(process_vm_readv(getpid(), &here, 1, &there, 1, 0), record, caller, size);
}

bool caller_write(void* caller, void* record, size_t size)
{
    const iovec here = {record, size};
    const iovec there = {caller, size};
    return caller_copied(process_vm_writev(getpid(), &here, 1, &there, 1, 0), caller, record, size);
}

constexpr size_t kRecordMost = 512; // the longest record of a driver has 260 bytes

void fork_prepare()
{
    pthread_mutex_lock(&opening);
}

void fork_done()
{
    pthread_mutex_unlock(&opening);
}

[[gnu::constructor]] void start()
{
    pthread_atfork(fork_prepare, fork_done, fork_done);
}

} // namespace

int device_open(const Way& way, int flags)
{
    const UnitDevice device = way.leads == Leads::kFpga ? UnitDevice::kFpga : UnitDevice::kRtc;
    const int kept_flags = flags & (O_CREAT | O_EXCL | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC |
                                    O_NONBLOCK | O_APPEND | O_PATH);
    // The file is made if it is not there: the kernel refuses O_EXCL alone as it would for a device.
    int descriptor = NEXT(open)(way.path, (kept_flags & ~O_CREAT) | kNoAccess);
    if (descriptor < 0 && errno == ENOENT) {
        descriptor = NEXT(open)(way.path, (kept_flags & ~O_EXCL) | O_CREAT | kNoAccess, 0600);
    } else if (descriptor >= 0 && (flags & O_CREAT) != 0 && (flags & O_EXCL) != 0) {
        NEXT(close)(descriptor);
        return failed(EEXIST);
    }
    if (descriptor < 0 || (flags & O_PATH) != 0) {
        return descriptor;
    }
    struct stat status {
    };
    if (NEXT(fstat)(descriptor, &status) == 0) {
        devices_known(); // or a later look would find the file of before
        deviceFile_know(device_files[device == UnitDevice::kFpga ? 0 : 1], status);
    }
    const Inside inside;
    Unit* unit = unit_ready();
    if (unit == nullptr) {
        errno = ENXIO;
    }
    if (unit == nullptr || unit_opened(unit, device, flags) < 0) {
        const ErrnoKept kept;
        NEXT(close)(descriptor);
        return -1;
    }
    return descriptor;
}

std::optional<UnitDevice> device_ofFile(dev_t device, ino_t file)
{
    if (sim_inside || sim_folder()[0] == '\0' || !devices_known()) {
        return {};
    }
    for (const DeviceFile& known : device_files) {
        if (known.holder.load(std::memory_order_acquire) == device &&
            known.number.load(std::memory_order_relaxed) == file) {
            return known.device;
        }
    }
    return {};
}

std::optional<UnitDevice> device_ofDescriptor(int descriptor)
{
    if (sim_inside || sim_folder()[0] == '\0' || !devices_known()) {
        return {};
    }
    const ErrnoKept kept;
    struct stat status {
    };
    if (NEXT(fstat)(descriptor, &status) != 0) {
        return {};
    }
    const auto device = device_ofFile(status.st_dev, status.st_ino);
    // O_PATH names the device, and does not open it.
    return device && (NEXT(fcntl)(descriptor, F_GETFL) & O_PATH) != 0 ? std::nullopt : device;
}

void device_closing(int descriptor)
{
    if (const auto device = device_ofDescriptor(descriptor)) {
        const ErrnoKept kept;
        const Inside inside;
        if (Unit* unit = unit_ready()) {
            unit_closed(unit, *device);
        }
    }
}

int device_request(UnitDevice device, unsigned long request, unsigned long argument)
{
    const auto number = static_cast<uint32_t>(request);
    const RequestForm* form =
        device == UnitDevice::kFpga ? requestForm_find(number) : rtcRequestForm_find(number);
    const bool by_address = form != nullptr && form->argument != Argument::kValue &&
                            form->argument != Argument::kNothing;
    // Zero behind the record: the driver's own may be longer.
    char record[kRecordMost] = {};
    char before[kRecordMost];
    // An address comes as a number, as through any ioctl().
    auto* const caller = reinterpret_cast<char*>(argument); // NOLINT(performance-no-int-to-ptr)
    const Inside inside;
    if (by_address) {
        if (!caller_read(record, caller, std::min(form->size, kRecordMost))) {
            return failed(EFAULT);
        }
        memcpy(before, record, sizeof record);
        argument = reinterpret_cast<unsigned long>(record);
    }
    Unit* const unit = unit_ready();
    if (unit == nullptr) {
        return failed(ENXIO);
    }
    const int result = unit_request(unit, device, request, argument);
    const int error = errno;
    for (size_t i = 0; by_address && i < kRecordMost; i++) {
        size_t end = i;
        while (end < kRecordMost && record[end] != before[end]) {
            end++;
        }
        if (end > i && !caller_write(caller + i, record + i, end - i)) {
            return failed(EFAULT);
        }
        i = end;
    }
    errno = error;
    return result;
}

unsigned device_minor(UnitDevice device)
{
    return device == UnitDevice::kFpga ? 0 : 1;
}

// Every look at the system's time asks this, in signal handlers, too: it takes no lock, and does not open
// the unit.
int64_t clock_difference()
{
    static std::atomic<const std::atomic<int64_t>*> clock{nullptr};
    if (sim_inside || sim_folder()[0] == '\0') {
        return 0;
    }
    const std::atomic<int64_t>* place = clock.load(std::memory_order_acquire);
    if (place == nullptr) {
        const ErrnoKept kept;
        const Inside inside;
        char path[PATH_MAX];
        const int size = snprintf(path, sizeof path, "%s/journal", sim_folder());
        if (size > 0 && static_cast<size_t>(size) < sizeof path) {
            place = journal_clockMap(path);
            clock.store(place, std::memory_order_release);
        }
    }
    return place == nullptr ? 0 : place->load(std::memory_order_relaxed);
}

void clock_setDifference(int64_t nanoseconds)
{
    const Inside inside;
    if (Unit* unit = unit_ready()) {
        unit_setClock(unit, nanoseconds);
    }
}
