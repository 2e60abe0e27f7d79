// Devices and clocks of the unit, for programs in C.
#include "sim/preload_fixture.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <mqueue.h>
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/time.h>
#include <sys/timeb.h>
#include <sys/timex.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <thread>
#include <threads.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr unsigned long kRegisterRead = 0x6B42;
constexpr unsigned long kRegisterWrite = 0x6B43;
constexpr unsigned long kWordWrite = 0x6B04; // takes a value
constexpr unsigned long kRtcStatusRead = 0x80047013;

struct Register {
    uint32_t address;
    uint32_t value;
};

template <typename Type> Type entry(const char* name)
{
    return reinterpret_cast<Type>(dlsym(RTLD_DEFAULT, name));
}

int fpga_open()
{
    return open("/dev/fpga", O_RDWR | O_NONBLOCK);
}

uint32_t register_get(int device, uint32_t address)
{
    Register record = {address, 0};
    return ioctl(device, kRegisterRead, &record) == 0 ? record.value : 0xFFFFFFFF;
}

bool register_set(int device, uint32_t address, uint32_t value)
{
    Register record = {address, value};
    return ioctl(device, kRegisterWrite, &record) == 0;
}

TEST(PreloadDevices, AnswerRequests)
{
    const int device = fpga_open();
    ASSERT_GE(device, 0);
    ASSERT_TRUE(register_set(device, 0x12, 0x3456));
    EXPECT_EQ(register_get(device, 0x12), 0x3456U);
    EXPECT_EQ(ioctl(device, 0x6B99999, nullptr), -1);
    EXPECT_EQ(errno, ENOTTY);
    EXPECT_EQ(ioctl(device, kRegisterRead, nullptr), -1);
    EXPECT_EQ(errno, EFAULT);
    // It is not there for writing: the driver says so, and the process goes on.
    void* const page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(page, MAP_FAILED);
    EXPECT_EQ(ioctl(device, kRegisterRead, page), -1);
    EXPECT_EQ(errno, EFAULT);
    ASSERT_EQ(mprotect(page, 4096, PROT_READ), 0);
    ASSERT_TRUE(register_set(device, 0, 7));
    EXPECT_EQ(ioctl(device, kRegisterRead, page), -1);
    EXPECT_EQ(errno, EFAULT);
    EXPECT_EQ(munmap(page, 4096), 0);
    // A record that is only written is not written back.
    static const Register kConstant = {0x12, 0x11};
    EXPECT_EQ(ioctl(device, kRegisterWrite, &kConstant), 0);
    EXPECT_EQ(ioctl(device, kWordWrite, 0x1234UL), 0);
    EXPECT_EQ(syscall(SYS_ioctl, device, kWordWrite, 0x1234UL), 0);
    EXPECT_EQ(close(device), 0);
    EXPECT_EQ(ioctl(device, kRegisterRead, nullptr), -1);
    EXPECT_EQ(errno, EBADF);
    const int clock = open("/dev/rtc", O_RDONLY);
    uint32_t status = 0;
    EXPECT_EQ(ioctl(clock, kRtcStatusRead, &status), 0);
    EXPECT_EQ(close(clock), 0);
}

TEST(PreloadDevices, OtherDescriptorsAreNoDevices)
{
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    Register record = {0x12, 0};
    EXPECT_EQ(ioctl(pipes[0], kRegisterRead, &record), -1);
    EXPECT_EQ(errno, ENOTTY);
    int waiting = -1;
    EXPECT_EQ(ioctl(pipes[0], FIONREAD, &waiting), 0);
    EXPECT_EQ(waiting, 0);
    EXPECT_EQ(close(pipes[0]), 0);
    EXPECT_EQ(close(pipes[1]), 0);
    // A number that was a device's is another file's afterwards.
    const int device = fpga_open();
    ASSERT_EQ(close(device), 0);
    const int null = open("/dev/null", O_RDWR);
    ASSERT_EQ(null, device);
    EXPECT_EQ(ioctl(null, kRegisterRead, &record), -1);
    EXPECT_EQ(errno, ENOTTY);
    EXPECT_EQ(close(null), 0);
}

TEST(PreloadDevices, ShowThemselvesAsCharacterDevices)
{
    const int device = fpga_open();
    struct Case {
        const char* name;
        mode_t mode;
        dev_t number;
    };
    std::vector<Case> cases;
    struct stat status;
    struct stat64 status64;
    struct statx statx_status;
    const auto add = [&](const char* name, int result, const auto& shown) {
        EXPECT_EQ(result, 0) << name;
        cases.push_back({name, shown.st_mode, shown.st_rdev});
    };
    add("stat", stat("/dev/fpga", &status), status);
    add("lstat", lstat("/dev/fpga", &status), status);
    add("fstat", fstat(device, &status), status);
    add("fstat64", fstat64(device, &status64), status64);
    add("stat64", stat64("/dev/fpga", &status64), status64);
    add("fstatat", fstatat(device, "", &status, AT_EMPTY_PATH), status);
    add("__fxstat", entry<int (*)(int, int, struct stat*)>("__fxstat")(1, device, &status), status);
    add("__fxstat64", entry<int (*)(int, int, struct stat64*)>("__fxstat64")(1, device, &status64),
        status64);
    add("syscall", static_cast<int>(syscall(SYS_fstat, device, &status)), status);
    for (const Case& shown : cases) {
        EXPECT_TRUE(S_ISCHR(shown.mode)) << shown.name;
        EXPECT_EQ(shown.number, makedev(240, 0)) << shown.name;
    }
    ASSERT_EQ(statx(AT_FDCWD, "/dev/rtc", 0, STATX_BASIC_STATS, &statx_status), 0);
    EXPECT_TRUE(S_ISCHR(statx_status.stx_mode));
    EXPECT_EQ(statx_status.stx_rdev_minor, 1U);
    ASSERT_EQ(stat("/dev/mtd_systemlog", &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(close(device), 0);
}

TEST(PreloadDevices, AreOpenedAsDevicesAre)
{
    EXPECT_EQ(open("/dev/fpga", O_RDWR | O_CREAT | O_EXCL, 0600), -1);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(open("/dev/fpga/x", O_RDWR), -1);
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_EQ(open("/dev/fpga", O_RDONLY | O_DIRECTORY), -1);
    EXPECT_EQ(errno, ENOTDIR);
    for (const char* name : {"/dev/fpga", "//dev/./fpga", "/tmp/../dev/fpga"}) {
        for (const int flags : {O_RDONLY, O_WRONLY, O_RDWR, O_RDWR | O_CREAT, O_WRONLY | O_TRUNC,
                                O_RDWR | O_CLOEXEC}) {
            const int device = open(name, flags, 0600);
            EXPECT_EQ(ioctl(device, kWordWrite, 1UL), 0) << name << " " << flags;
            EXPECT_EQ((fcntl(device, F_GETFD) & FD_CLOEXEC) != 0, (flags & O_CLOEXEC) != 0);
            EXPECT_EQ(fcntl(device, F_GETFL) & O_ACCMODE, O_RDWR);
            EXPECT_EQ(close(device), 0);
        }
    }
    const int device = fpga_open();
    EXPECT_NE(fcntl(device, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(close(device), 0);
    FILE* stream = fopen("/dev/fpga", "r+");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(ioctl(fileno(stream), kWordWrite, 1UL), 0);
    EXPECT_EQ(fgetc(stream), EOF);
    EXPECT_TRUE(ferror(stream) != 0);
    stream = freopen("/dev/rtc", "r", stream);
    ASSERT_NE(stream, nullptr);
    uint32_t status = 0;
    EXPECT_EQ(ioctl(fileno(stream), kRtcStatusRead, &status), 0);
    EXPECT_EQ(fclose(stream), 0);
}

TEST(PreloadDevices, AreNotChanged)
{
    const timeval times[2] = {};
    EXPECT_EQ(unlink("/dev/fpga"), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(rename("/dev/fpga", "/conf/x"), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(rename("/conf/config", "/dev/rtc"), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(link("/dev/fpga", "/conf/x"), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(chmod("/dev/fpga", 0), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(utimes("/dev/rtc", times), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(truncate("/dev/fpga", 5), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(syscall(SYS_unlinkat, AT_FDCWD, "/dev/fpga", 0), -1);
    EXPECT_EQ(errno, EPERM);
    const int device = fpga_open();
    EXPECT_EQ(fchmod(device, 0), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(fchown(device, getuid(), getgid()), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(close(device), 0);
    EXPECT_EQ(access("/dev/fpga", R_OK | W_OK), 0);
}

// As a driver's that has no such operations.
TEST(PreloadDevices, NeitherReadNorWrite)
{
    const int device = fpga_open();
    char bytes[8] = "";
    iovec part = {bytes, sizeof bytes};
    using Read = ssize_t (*)(int, void*, size_t);
    using Write = ssize_t (*)(int, const void*, size_t);
    struct Case {
        const char* name;
        ssize_t result;
        int error;
    };
    std::vector<Case> cases;
    errno = 0;
    const auto add = [&](const char* name, ssize_t result) {
        cases.push_back({name, result, errno});
        errno = 0;
    };
    add("read", read(device, bytes, 1));
    add("__read", entry<Read>("__read")(device, bytes, 1));
    add("__read_chk",
        entry<ssize_t (*)(int, void*, size_t, size_t)>("__read_chk")(device, bytes, 1, 8));
    add("pread", pread(device, bytes, 1, 0));
    add("pread64", pread64(device, bytes, 1, 0));
    add("__pread64",
        entry<ssize_t (*)(int, void*, size_t, off64_t)>("__pread64")(device, bytes, 1, 0));
    add("__pread_chk", entry<ssize_t (*)(int, void*, size_t, off_t, size_t)>("__pread_chk")(
                           device, bytes, 1, 0, 8));
    add("__pread64_chk", entry<ssize_t (*)(int, void*, size_t, off64_t, size_t)>("__pread64_chk")(
                             device, bytes, 1, 0, 8));
    add("readv", readv(device, &part, 1));
    add("preadv", preadv(device, &part, 1, 0));
    add("preadv64", preadv64(device, &part, 1, 0));
    add("preadv2", preadv2(device, &part, 1, 0, 0));
    add("preadv64v2", preadv64v2(device, &part, 1, 0, 0));
    add("write", write(device, bytes, 1));
    add("__write", entry<Write>("__write")(device, bytes, 1));
    add("pwrite", pwrite(device, bytes, 1, 0));
    add("pwrite64", pwrite64(device, bytes, 1, 0));
    add("__pwrite64",
        entry<ssize_t (*)(int, const void*, size_t, off64_t)>("__pwrite64")(device, bytes, 1, 0));
    add("writev", writev(device, &part, 1));
    add("pwritev", pwritev(device, &part, 1, 0));
    add("pwritev64", pwritev64(device, &part, 1, 0));
    add("pwritev2", pwritev2(device, &part, 1, 0, 0));
    add("pwritev64v2", pwritev64v2(device, &part, 1, 0, 0));
    add("syscall read", syscall(SYS_read, device, bytes, 1));
    add("syscall write", syscall(SYS_write, device, bytes, 1));
    for (const Case& done : cases) {
        EXPECT_EQ(done.result, -1) << done.name;
        EXPECT_EQ(done.error, EINVAL) << done.name;
        EXPECT_TRUE(
            taken_over(std::string(done.name).substr(0, std::string(done.name).find(' ')).c_str()))
            << done.name;
    }
    EXPECT_EQ(read(-1, bytes, 1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(close(device), 0);
}

// Whatever becomes of a descriptor, it is the device's.
TEST(PreloadDevices, DescriptorsGoWhereTheKernelTakesThem)
{
    const int device = fpga_open();
    ASSERT_TRUE(register_set(device, 0x12, 5));
    const int copies[] = {
        dup(device),
        dup2(device, 300),
        dup3(device, 301, O_CLOEXEC),
        entry<int (*)(int, int)>("__dup2")(device, 302),
        fcntl(device, F_DUPFD, 310),
        fcntl64(device, F_DUPFD, 310),
        entry<int (*)(int, int, ...)>("__fcntl")(device, F_DUPFD_CLOEXEC, 310),
        static_cast<int>(syscall(SYS_fcntl, device, F_DUPFD, 310)),
    };
    ASSERT_EQ(close(device), 0);
    for (const int copy : copies) {
        EXPECT_EQ(register_get(copy, 0x12), 5U) << copy;
    }
    pollfd waiting = {copies[0], POLLIN | POLLOUT, 0};
    EXPECT_EQ(poll(&waiting, 1, 0), 1);
    const pid_t child = fork();
    if (child == 0) {
        _exit(register_get(copies[0], 0x12) == 5 && register_set(copies[0], 0x12, 6) ? 9 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 9);
    EXPECT_EQ(register_get(copies[0], 0x12), 6U);
    ASSERT_EQ(dup2(STDERR_FILENO, copies[1]), copies[1]);
    EXPECT_EQ(register_get(copies[1], 0x12), 0xFFFFFFFFU);
    ASSERT_EQ(close_range(300, 400, 0), 0);
    EXPECT_EQ(register_get(copies[2], 0x12), 0xFFFFFFFFU);
    EXPECT_EQ(entry<int (*)(int)>("__close")(copies[0]), 0);
    EXPECT_EQ(syscall(SYS_close, copies[0]), -1);
}

// A record may lie at a page's very end, and the driver takes no byte behind it.
TEST(PreloadDevices, ARecordEndsWithItsPage)
{
    auto* const pages = static_cast<char*>(
        mmap(nullptr, 8192, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_EQ(mprotect(pages + 4096, 4096, PROT_NONE), 0);
    const int device = fpga_open();
    ASSERT_TRUE(register_set(device, 0x12, 0x77));
    const uint32_t asked[2] = {0x12, 0};
    char* const record = pages + 4096 - sizeof asked;
    memcpy(record, asked, sizeof asked);
    EXPECT_EQ(ioctl(device, 0x6B42, record), 0);
    EXPECT_EQ(record[4], 0x77);
    errno = 0;
    EXPECT_EQ(ioctl(device, 0x6B42, record + 1), -1);
    EXPECT_EQ(errno, EFAULT);
    EXPECT_EQ(close(device), 0);
    munmap(pages, 8192);
}

TEST(PreloadDevices, ThreadsAndForksAskAtOnce)
{
    constexpr int kThreads = 4;
    constexpr uint32_t kRounds = 500;
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (uint32_t thread = 0; thread < kThreads; thread++) {
        threads.emplace_back([thread, &wrong] {
            const int device = fpga_open();
            for (uint32_t round = 0; round < kRounds; round++) {
                wrong += !register_set(device, 0x200 + thread, round);
                wrong += register_get(device, 0x200 + thread) != round;
                wrong += time(nullptr) < 1;
            }
            close(device);
        });
    }
    for (int i = 0; i < 20; i++) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(60); // a lock that nobody gives back
            const int device = fpga_open();
            _exit(register_set(device, 0x300, 1) && register_get(device, 0x300) == 1 ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

volatile sig_atomic_t handled = 0;
int handler_device = -1;

TEST(PreloadDevices, ASignalHandlerMayAsk)
{
    handler_device = fpga_open();
    struct sigaction action {
    };
    action.sa_handler = [](int) {
        const int kept = errno;
        handled = handled + (register_get(handler_device, 0x12) != 0xFFFFFFFF);
        errno = kept;
    };
    ASSERT_EQ(sigaction(SIGALRM, &action, nullptr), 0);
    const itimerval often = {{0, 200}, {0, 200}};
    ASSERT_EQ(setitimer(ITIMER_REAL, &often, nullptr), 0);
    for (int i = 0; i < 20000 && handled < 50; i++) {
        ASSERT_NE(register_get(handler_device, 0x12), 0xFFFFFFFFU);
    }
    const itimerval never = {};
    ASSERT_EQ(setitimer(ITIMER_REAL, &never, nullptr), 0);
    EXPECT_GT(handled, 0);
    EXPECT_EQ(close(handler_device), 0);
}

// A thread that waits in a call can be cancelled, through the call that stands before it.
TEST(PreloadDevices, AWaitingThreadCanBeCancelled)
{
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    pthread_t thread{};
    ASSERT_EQ(pthread_create(
                  &thread, nullptr,
                  [](void* pipe_end) -> void* {
                      char byte = 0;
                      return read(*static_cast<int*>(pipe_end), &byte, 1) == 0 ? nullptr : pipe_end;
                  },
                  pipes),
              0);
    ASSERT_EQ(pthread_cancel(thread), 0);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    EXPECT_EQ(close(pipes[0]), 0);
    EXPECT_EQ(close(pipes[1]), 0);
}

// The clock. Nothing here can set the machine's: the program ends before, if a call were its own.

constexpr long kFar = 1'000'000'000; // in 2001, years from any machine's clock

// A queue that is empty, or full; ETIMEDOUT where there are no queues.
int mq_waited(const timespec* until, bool send)
{
    mq_attr attributes{};
    attributes.mq_maxmsg = 1;
    attributes.mq_msgsize = 8;
    const std::string name = "/preload." + std::to_string(getpid());
    const mqd_t queue = mq_open(name.c_str(), O_RDWR | O_CREAT, 0600, &attributes);
    char text[8] = "";
    if (queue == -1) {
        clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, until, nullptr);
        return ETIMEDOUT;
    }
    int result = send ? mq_send(queue, text, 1, 0) : 0;
    result = static_cast<int>(send ? mq_timedsend(queue, text, 1, 0, until)
                                   : mq_timedreceive(queue, text, 8, nullptr, until));
    result = result == -1 ? errno : 0;
    mq_close(queue);
    mq_unlink(name.c_str());
    return result;
}

class PreloadClock : public testing::Test
{
  protected:
    void SetUp() override
    {
        for (const char* name : {"clock_settime", "settimeofday", "stime", "adjtime", "adjtimex",
                                 "__adjtimex", "ntp_adjtime", "clock_adjtime", "syscall"}) {
            ASSERT_TRUE(taken_over(name)) << name;
        }
        machine_ = machine_seconds();
        const timespec now = {machine_, 0};
        ASSERT_EQ(clock_settime(CLOCK_REALTIME, &now), 0);
    }
    void TearDown() override { EXPECT_LE(machine_seconds() - machine_, 60); }

    // All of them tell the same time.
    static void expect_time(long seconds)
    {
        timespec now{};
        timeval short_now{};
        timeb old{};
        time_t stored = 0;
        struct Case {
            const char* name;
            long seconds;
        };
        std::vector<Case> cases;
        const auto add = [&](const char* name, long told) { cases.push_back({name, told}); };
        for (const clockid_t clock : {CLOCK_REALTIME, CLOCK_REALTIME_COARSE}) {
            EXPECT_EQ(clock_gettime(clock, &now), 0);
            add("clock_gettime", now.tv_sec);
        }
        EXPECT_EQ(entry<int (*)(clockid_t, timespec*)>("__clock_gettime")(CLOCK_REALTIME, &now), 0);
        add("__clock_gettime", now.tv_sec);
        EXPECT_EQ(gettimeofday(&short_now, nullptr), 0);
        add("gettimeofday", short_now.tv_sec);
        EXPECT_EQ(entry<int (*)(timeval*, void*)>("__gettimeofday")(&short_now, nullptr), 0);
        add("__gettimeofday", short_now.tv_sec);
        add("time", time(nullptr));
        time(&stored);
        add("time", stored);
        EXPECT_EQ(timespec_get(&now, TIME_UTC), TIME_UTC);
        add("timespec_get", now.tv_sec);
        EXPECT_EQ(entry<int (*)(timeb*)>("ftime")(&old), 0);
        add("ftime", old.time);
        EXPECT_EQ(syscall(SYS_clock_gettime, CLOCK_REALTIME, &now), 0);
        add("syscall", now.tv_sec);
        EXPECT_EQ(syscall(SYS_gettimeofday, &short_now, nullptr), 0);
        add("syscall", short_now.tv_sec);
        timex state{};
        EXPECT_GE(adjtimex(&state), 0);
        add("adjtimex", state.time.tv_sec);
        for (const Case& told : cases) {
            EXPECT_GE(told.seconds, seconds) << told.name;
            EXPECT_LE(told.seconds, seconds + 30) << told.name;
        }
    }

  private:
    long machine_ = 0;
};

TEST_F(PreloadClock, BeginsAsTheMachines)
{
    expect_time(machine_seconds() - 1);
}

TEST_F(PreloadClock, EverySetterSetsTheUnits)
{
    const timespec exact = {kFar, 500};
    ASSERT_EQ(clock_settime(CLOCK_REALTIME, &exact), 0);
    expect_time(kFar);
    timespec atomic{}; // a clock that knows the leap seconds
    ASSERT_EQ(clock_gettime(CLOCK_TAI, &atomic), 0);
    EXPECT_GE(atomic.tv_sec, kFar);
    EXPECT_LE(atomic.tv_sec, kFar + 120);
    const timeval coarse = {2 * kFar, 0};
    ASSERT_EQ(settimeofday(&coarse, nullptr), 0);
    expect_time(2 * kFar);
    const time_t seconds = kFar + 1000;
    ASSERT_EQ(entry<int (*)(const time_t*)>("stime")(&seconds), 0);
    expect_time(kFar + 1000);
    const timeval delta = {-500, 0};
    timeval left{};
    ASSERT_EQ(adjtime(&delta, &left), 0);
    expect_time(kFar + 500);
    timex state{};
    state.modes = ADJ_SETOFFSET;
    state.time = {1000, 0};
    ASSERT_GE(adjtimex(&state), 0);
    expect_time(kFar + 1500);
    ASSERT_GE(entry<int (*)(timex*)>("__adjtimex")(&state), 0);
    expect_time(kFar + 2500);
    ASSERT_GE(ntp_adjtime(&state), 0);
    expect_time(kFar + 3500);
    ASSERT_GE(clock_adjtime(CLOCK_REALTIME, &state), 0);
    expect_time(kFar + 4500);
    const timespec again = {kFar, 0};
    ASSERT_EQ(syscall(SYS_clock_settime, CLOCK_REALTIME, &again), 0);
    expect_time(kFar);
    ASSERT_EQ(syscall(SYS_settimeofday, &coarse, nullptr), 0);
    expect_time(2 * kFar);
    const pid_t child = fork();
    if (child == 0) {
        _exit(time(nullptr) / kFar == 2 ? 9 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 9);
}

TEST_F(PreloadClock, AnAdjustmentIsExactAndDoneAtOnce)
{
    const timespec exact = {kFar, 0};
    ASSERT_EQ(clock_settime(CLOCK_REALTIME, &exact), 0);
    const timeval most_of_a_second = {0, 900'000};
    timeval left = {5, 5};
    ASSERT_EQ(adjtime(&most_of_a_second, &left), 0);
    EXPECT_EQ(left.tv_sec, 0);
    EXPECT_EQ(left.tv_usec, 0);
    timespec now{};
    ASSERT_EQ(clock_gettime(CLOCK_REALTIME, &now), 0);
    EXPECT_GE((now.tv_sec - kFar) * 1'000'000'000 + now.tv_nsec, 900'000'000);
    EXPECT_LE(now.tv_sec - kFar, 30);
    ASSERT_EQ(adjtime(nullptr, &left), 0);
    // Before 1970, too, a second's parts count upwards.
    const timeval back = {-kFar - 100, 0};
    ASSERT_EQ(adjtime(&back, nullptr), 0);
    ASSERT_EQ(clock_gettime(CLOCK_REALTIME, &now), 0);
    EXPECT_LT(now.tv_sec, -60);
    EXPECT_GE(now.tv_nsec, 0);
    EXPECT_LT(now.tv_nsec, 1'000'000'000);
}

TEST_F(PreloadClock, NothingElseIsSet)
{
    const timespec wrong = {kFar, 2'000'000'000};
    EXPECT_EQ(clock_settime(CLOCK_REALTIME, &wrong), -1);
    EXPECT_EQ(errno, EINVAL);
    const timespec negative = {-1, 0};
    EXPECT_EQ(clock_settime(CLOCK_REALTIME, &negative), -1);
    EXPECT_EQ(errno, EINVAL);
    constexpr time_t kLast = 8277292035; // no kernel takes a later one
    const timespec late = {kLast + 1, 0};
    EXPECT_EQ(clock_settime(CLOCK_REALTIME, &late), -1);
    EXPECT_EQ(errno, EINVAL);
    const timespec exact = {kFar, 0};
    EXPECT_EQ(clock_settime(CLOCK_MONOTONIC, &exact), -1);
    EXPECT_EQ(errno, EINVAL);
    const timeval coarse = {kFar, 1'000'000};
    EXPECT_EQ(settimeofday(&coarse, nullptr), -1);
    EXPECT_EQ(errno, EINVAL);
    timex state{};
    state.modes = ADJ_FREQUENCY;
    EXPECT_EQ(adjtimex(&state), -1);
    EXPECT_EQ(errno, EPERM);
    state.modes = ADJ_SETOFFSET | ADJ_TICK;
    EXPECT_EQ(clock_adjtime(CLOCK_REALTIME, &state), -1);
    EXPECT_EQ(errno, EPERM);
    state.modes = ADJ_SETOFFSET;
    state.time = {0, 1'000'000};
    EXPECT_EQ(clock_adjtime(CLOCK_REALTIME, &state), -1);
    EXPECT_EQ(errno, EINVAL);
    state.modes = ADJ_SETOFFSET | ADJ_NANO;
    state.time = {0, 1'000'000'000};
    EXPECT_EQ(clock_adjtime(CLOCK_REALTIME, &state), -1);
    EXPECT_EQ(errno, EINVAL);
    expect_time(machine_seconds() - 1);
    const timespec last = {kLast, 0};
    EXPECT_EQ(clock_settime(CLOCK_REALTIME, &last), 0);
    timespec before{};
    timespec after{};
    clock_gettime(CLOCK_MONOTONIC, &before);
    const timespec far = {kFar, 0};
    ASSERT_EQ(clock_settime(CLOCK_REALTIME, &far), 0);
    clock_gettime(CLOCK_MONOTONIC, &after);
    EXPECT_LE(after.tv_sec - before.tv_sec, 30);
}

// A time whose parts of a second make a whole one as the machine has it is a time all the same.
TEST_F(PreloadClock, AWaitsPartsOfASecondAreCarried)
{
    std::string object = getenv("LD_PRELOAD"); // maintsim lies beside it
    object.resize(std::min(object.find(':'), object.size()));
    const std::string set = object.substr(0, object.rfind('/')) + "/maintsim -u " + unit_folder() +
                            " set clock.difference=";
    sem_t semaphore;
    ASSERT_EQ(sem_init(&semaphore, 0, 0), 0);
    for (const char* difference : {"-600000000", "600000000", "-1600000000", "1400000000"}) {
        ASSERT_EQ(system((set + difference).c_str()), 0);
        for (const long nanoseconds :
             {0L, 399'999'999L, 400'000'000L, 600'000'000L, 999'999'999L}) {
            const timespec past = {1000, nanoseconds};
            errno = 0;
            EXPECT_EQ(sem_timedwait(&semaphore, &past), -1);
            EXPECT_EQ(errno, ETIMEDOUT) << difference << " " << nanoseconds;
        }
    }
}

volatile sig_atomic_t times_read = 0;

// A signal handler may ask for the time while the program allocates memory, and while others use the
// unit.
TEST_F(PreloadClock, IsReadInASignalHandler)
{
    constexpr int kReads = 2000;
    const pid_t other = fork();
    if (other == 0) {
        alarm(120); // if nobody ends it
        const int device = fpga_open();
        for (uint32_t i = 0;; i++) {
            register_set(device, i % 5000, i);
        }
    }
    const pid_t reader = fork();
    if (reader == 0) {
        signal(SIGALRM, [](int) {
            time(nullptr);
            times_read = times_read + 1;
        });
        const itimerval often = {{0, 200}, {0, 200}};
        setitimer(ITIMER_REAL, &often, nullptr);
        std::vector<std::string> texts(256);
        for (size_t i = 0; times_read < kReads; i++) {
            std::string(1 + i * 37 % 3000, 'x').swap(texts[i % texts.size()]);
        }
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(reader, &status, 0), reader);
    EXPECT_EQ(status, 0);
    ASSERT_EQ(kill(other, SIGKILL), 0);
    ASSERT_EQ(waitpid(other, &status, 0), other);
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
}

// A wait of a tenth of a second by the unit's clock is one, wherever that clock stands.
TEST_F(PreloadClock, WaitsEndByTheUnitsClock)
{
    static sem_t semaphore;
    static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    static pthread_mutex_t held = PTHREAD_MUTEX_INITIALIZER;
    static pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;
    static pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
    static pthread_cond_t monotonic;
    static mtx_t c_mutex;
    static cnd_t c_condition;
    pthread_condattr_t attributes;
    ASSERT_EQ(pthread_condattr_init(&attributes), 0);
    ASSERT_EQ(pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC), 0);
    ASSERT_EQ(pthread_cond_init(&monotonic, &attributes), 0);
    ASSERT_EQ(sem_init(&semaphore, 0, 0), 0);
    ASSERT_EQ(mtx_init(&c_mutex, mtx_timed), thrd_success);
    ASSERT_EQ(cnd_init(&c_condition), thrd_success);
    ASSERT_EQ(pthread_mutex_lock(&held), 0);
    ASSERT_EQ(pthread_mutex_lock(&mutex), 0);
    ASSERT_EQ(mtx_lock(&c_mutex), thrd_success);
    // A thread that sleeps while the others wait for it, and holds the lock.
    static std::atomic<bool> ready{false};
    ready = false;
    std::thread holder([] {
        pthread_rwlock_wrlock(&lock);
        ready = true;
        pthread_mutex_lock(&held);
        pthread_mutex_unlock(&held);
        pthread_rwlock_unlock(&lock);
    });
    while (!ready) {
        std::this_thread::yield();
    }
    static pthread_t joined;
    joined = holder.native_handle();
    struct Wait {
        const char* name;
        clockid_t clock;
        int (*wait)(const timespec* until);
    };
    static const Wait kWaits[] = {
        {"clock_nanosleep", CLOCK_REALTIME,
         [](const timespec* until) {
             return clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, until, nullptr) == 0 ? ETIMEDOUT
                                                                                        : 0;
         }},
        {"sem_timedwait", CLOCK_REALTIME,
         [](const timespec* until) { return sem_timedwait(&semaphore, until) == -1 ? errno : 0; }},
        {"sem_clockwait", CLOCK_REALTIME,
         [](const timespec* until) {
             return sem_clockwait(&semaphore, CLOCK_REALTIME, until) == -1 ? errno : 0;
         }},
        {"sem_clockwait", CLOCK_MONOTONIC,
         [](const timespec* until) {
             return sem_clockwait(&semaphore, CLOCK_MONOTONIC, until) == -1 ? errno : 0;
         }},
        {"pthread_mutex_timedlock", CLOCK_REALTIME,
         [](const timespec* until) { return pthread_mutex_timedlock(&held, until); }},
        {"pthread_mutex_clocklock", CLOCK_REALTIME,
         [](const timespec* until) {
             return pthread_mutex_clocklock(&held, CLOCK_REALTIME, until);
         }},
        {"pthread_rwlock_timedrdlock", CLOCK_REALTIME,
         [](const timespec* until) { return pthread_rwlock_timedrdlock(&lock, until); }},
        {"pthread_rwlock_timedwrlock", CLOCK_REALTIME,
         [](const timespec* until) { return pthread_rwlock_timedwrlock(&lock, until); }},
        {"pthread_rwlock_clockrdlock", CLOCK_REALTIME,
         [](const timespec* until) {
             return pthread_rwlock_clockrdlock(&lock, CLOCK_REALTIME, until);
         }},
        {"pthread_rwlock_clockwrlock", CLOCK_REALTIME,
         [](const timespec* until) {
             return pthread_rwlock_clockwrlock(&lock, CLOCK_REALTIME, until);
         }},
        {"pthread_cond_timedwait", CLOCK_REALTIME,
         [](const timespec* until) { return pthread_cond_timedwait(&condition, &mutex, until); }},
        {"pthread_cond_timedwait", CLOCK_MONOTONIC,
         [](const timespec* until) { return pthread_cond_timedwait(&monotonic, &mutex, until); }},
        {"pthread_cond_clockwait", CLOCK_REALTIME,
         [](const timespec* until) {
             return pthread_cond_clockwait(&condition, &mutex, CLOCK_REALTIME, until);
         }},
        {"pthread_timedjoin_np", CLOCK_REALTIME,
         [](const timespec* until) { return pthread_timedjoin_np(joined, nullptr, until); }},
        {"pthread_clockjoin_np", CLOCK_REALTIME,
         [](const timespec* until) {
             return pthread_clockjoin_np(joined, nullptr, CLOCK_REALTIME, until);
         }},
        {"mtx_timedlock", CLOCK_REALTIME,
         [](const timespec* until) {
             return mtx_timedlock(&c_mutex, until) == thrd_timedout ? ETIMEDOUT : 0;
         }},
        {"cnd_timedwait", CLOCK_REALTIME,
         [](const timespec* until) {
             return cnd_timedwait(&c_condition, &c_mutex, until) == thrd_timedout ? ETIMEDOUT : 0;
         }},
        {"mq_timedreceive", CLOCK_REALTIME,
         [](const timespec* until) { return mq_waited(until, false); }},
        {"mq_timedsend", CLOCK_REALTIME,
         [](const timespec* until) { return mq_waited(until, true); }},
    };
    for (const long far : {machine_seconds() - 1000, machine_seconds() + 1000}) {
        const timespec set = {far, 999'000'000};
        ASSERT_EQ(clock_settime(CLOCK_REALTIME, &set), 0);
        for (const Wait& wait : kWaits) {
            ASSERT_TRUE(taken_over(wait.name)) << wait.name;
            timespec until{};
            timespec before{};
            timespec after{};
            clock_gettime(wait.clock, &until);
            clock_gettime(CLOCK_MONOTONIC, &before);
            until.tv_nsec += 20'000'000;
            if (until.tv_nsec >= 1'000'000'000) {
                until.tv_nsec -= 1'000'000'000;
                until.tv_sec++;
            }
            alarm(60); // a wait for a thousand seconds
            EXPECT_EQ(wait.wait(&until), ETIMEDOUT) << wait.name;
            alarm(0);
            clock_gettime(CLOCK_MONOTONIC, &after);
            const long waited =
                (after.tv_sec - before.tv_sec) * 1'000'000'000 + after.tv_nsec - before.tv_nsec;
            EXPECT_GE(waited, 19'000'000) << wait.name;
            EXPECT_LE(waited, 50'000'000'000) << wait.name;
        }
    }
    ASSERT_EQ(pthread_mutex_unlock(&held), 0);
    holder.join();
}

} // namespace
