// Several processes and threads on one unit, and those that are killed.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <atomic>
#include <csetjmp>
#include <csignal>
#include <thread>

#include "board/share.h"
#include "sim/unit_fixture.h"
#include "tools/maintsim/files.h"

namespace
{

// What a process tells the others: memory that a fork shares.
template <class Type> Type* shared_make(size_t count)
{
    void* memory = mmap(nullptr, count * sizeof(Type), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return static_cast<Type*>(memory);
}

// A process that holds the unit's lock for some microseconds, and has it when this returns. `released`
// is shared and 0: 1 while it holds the lock, then the time at which it gave it back.
pid_t lock_hold(const std::string& folder, useconds_t time, std::atomic<int64_t>* released)
{
    *released = 0;
    const pid_t process = fork();
    if (process == 0) {
        Journal journal;
        std::string fault;
        if (!journal_open(folder + "/journal", journal, fault)) {
            *released = -1;
            _exit(1);
        }
        *released = 1;
        usleep(time);
        *released = machine_time();
        journal_unlock(journal);
        _exit(0);
    }
    while (*released == 0) {
        usleep(100);
    }
    return process;
}

// The preloaded object opens its unit under a lock that it holds for a fork, too. This test is the
// first one: its process has opened no unit yet.
TEST_F(UnitTest, IsOpenedUnderALockThatAForkTakes)
{
    const pid_t process = start([&] {
        static pthread_mutex_t opening = PTHREAD_MUTEX_INITIALIZER;
        alarm(120); // two locks that wait for each other
        pthread_atfork([] { pthread_mutex_lock(&opening); }, [] { pthread_mutex_unlock(&opening); },
                       [] { pthread_mutex_unlock(&opening); });
        std::atomic<bool> ended{false};
        std::thread opener([&] {
            while (!ended) {
                pthread_mutex_lock(&opening);
                Unit* unit = open(folder);
                pthread_mutex_unlock(&opening);
                unit_close(unit);
            }
        });
        int wrong = 0;
        for (int i = 0; i < 200; ++i) {
            wrong += end(start([] { return 0; }));
        }
        ended = true;
        opener.join();
        return wrong == 0 ? 0 : 1;
    });
    EXPECT_EQ(end(process), 0);
}

TEST_F(UnitTest, OfEightProcessesKeepsEachOnesOrder)
{
    constexpr uint32_t kProcesses = 8;
    const uint32_t kRequests = share_of(10000);
    auto* seen = shared_make<std::atomic<uint64_t>>(1); // calls that were looked at
    Unit* unit = open(folder);
    std::vector<pid_t> processes;
    for (uint32_t p = 0; p < kProcesses; ++p) {
        processes.push_back(start([&] {
            Unit* own = p % 2 == 0 ? unit : open(folder); // inherited, or its own
            for (uint32_t i = 0; i < kRequests / 4; ++i) {
                while (4 * i > *seen / kProcesses + 1500) {
                    usleep(100); // a unit keeps so many calls and no more
                }
                if (number_write(own, 100 + p, i) != 0 || number_read(own, 100 + p) != i) {
                    return 1;
                }
                char same[16];
                memset(same, static_cast<int>(p + i), sizeof same);
                if (request(own, 0x6B5D, same) != 0 || request(own, 0x6B5C, same) != 0 ||
                    std::string(same, 16) != std::string(16, same[0])) {
                    return 2;
                }
            }
            return 0;
        }));
    }
    // Meanwhile all calls are looked at: none is missing, none twice, each one's in its order.
    std::map<int, uint32_t> numbers;
    uint64_t next = 1;
    for (int looks = 0; next <= uint64_t{kProcesses} * kRequests && looks < 30000; ++looks) {
        for (const UnitCall& call : calls(unit, next)) {
            ASSERT_EQ(call.head.sequence, next);
            ++next;
            if (call.head.request == 0x6B84) {
                uint32_t record[2];
                memcpy(record, call.before.data(), sizeof record);
                ASSERT_EQ(numbers[call.head.process]++, record[1]);
            }
        }
        *seen = next;
        usleep(2000);
    }
    for (const pid_t process : processes) {
        EXPECT_EQ(end(process), 0);
        EXPECT_EQ(numbers[process], kRequests / 4);
    }
    EXPECT_EQ(next, uint64_t{kProcesses} * kRequests + 1);
    for (uint32_t p = 0; p < kProcesses; ++p) {
        EXPECT_EQ(number_read(unit, 100 + p), kRequests / 4 - 1);
    }
    Unit* again = open(folder);
    EXPECT_EQ(text(again), text(unit));
    unit_close(again);
    unit_close(unit);
}

TEST_F(UnitTest, OfThreadsKeepsEachOnesOrder)
{
    Unit* unit = open(folder);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (uint32_t t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (uint32_t i = 0; i < 4000; ++i) {
                wrong += number_write(unit, t, i) != 0 || number_read(unit, t) != i ? 1 : 0;
            }
        });
    }
    // While they do, the process forks, and its child goes on.
    for (int i = 0; i < 50; ++i) {
        const pid_t child = start([&] {
            alarm(120);
            const uint32_t key = 1000 + static_cast<uint32_t>(getpid());
            return number_write(unit, key, 77) == 0 && number_read(unit, key) == 77 ? 0 : 1;
        });
        EXPECT_EQ(end(child), 0);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    Unit* again = open(folder);
    EXPECT_EQ(text(again), text(unit));
    unit_close(again);
    unit_close(unit);
}

// A call that has waited for another one has the later time.
TEST_F(UnitTest, TellsTimesInTheOrderOfItsCalls)
{
    auto* released = shared_make<std::atomic<int64_t>>(1); // 1: held
    Unit* unit = open(folder);
    std::string error;
    const std::function<void()> asks[] = {[&] { unit_opened(unit, UnitDevice::kFpga, O_RDWR); },
                                          [&] { number_write(unit, 1, 1); },
                                          [&] { unit_request(unit, UnitDevice::kFpga, 0x1234, 0); },
                                          [&] { unit_put(unit, {"word.0x6B29=1"}, error); },
                                          [&] {
                                              unit_change(
                                                  unit, "x",
                                                  [&](UnitState&, int64_t now, std::string&) {
                                                      EXPECT_GE(now, *released);
                                                      return true;
                                                  },
                                                  error);
                                          },
                                          [&] { unit_closed(unit, UnitDevice::kFpga); }};
    for (const auto& ask : asks) {
        const pid_t holder = lock_hold(folder, 20000, released);
        ask();
        EXPECT_EQ(end(holder), 0);
        EXPECT_GE(calls(unit).back().head.time, *released);
        EXPECT_GT(*released, 1);
    }
    EXPECT_EQ(calls(unit).size(), std::size(asks));
    unit_close(unit);
}

TEST_F(UnitTest, LosesNothingThatWasAnsweredByAKill)
{
    const uint32_t kKills = share_of(500);
    auto* answered = shared_make<std::atomic<uint32_t>>(2);
    RequestDraw draw(1);
    Unit* watcher = open(folder); // lives all along
    uint32_t value = 0;
    for (uint32_t kill_number = 0; kill_number < kKills; ++kill_number) {
        answered[0] = value;
        const pid_t victims[2] = {start([&] {
                                      Unit* unit = open(folder);
                                      for (uint32_t i = value + 1;; ++i) {
                                          if (number_write(unit, 1, i) != 0) {
                                              return 1;
                                          }
                                          answered[0] = i;
                                      }
                                  }),
                                  start([&] {
                                      Unit* unit = open(folder);
                                      for (;;) {
                                          number_read(unit, 2);
                                      }
                                      return 1;
                                  })};
        // At any moment; each other time when something is answered, however slow the machine is.
        const uint32_t wanted = value + (kill_number % 2 == 0 ? 0 : 1 + draw.below(200));
        for (int tries = 0; tries < 100000 && answered[0] < wanted; ++tries) {
            usleep(100);
        }
        usleep(draw.below(12000));
        // Not both at once, so that the other one finds what the first left.
        EXPECT_EQ(kill(victims[kill_number % 2], SIGKILL), 0);
        EXPECT_EQ(end(victims[kill_number % 2]), SIGKILL);
        if (kill_number % 3 != 0) {
            number_read(watcher, 3);
        }
        EXPECT_EQ(kill(victims[1 - kill_number % 2], SIGKILL), 0);
        EXPECT_EQ(end(victims[1 - kill_number % 2]), SIGKILL);
        Unit* next = open(folder);
        ASSERT_NE(next, nullptr) << kill_number;
        value = number_read(next, 1);
        // The last one may have been served, and the answer not have come.
        ASSERT_GE(value, answered[0]);
        ASSERT_LE(value, answered[0] + 1);
        ASSERT_EQ(number_read(watcher, 1), value);
        ASSERT_EQ(text(next), text(watcher));
        unit_close(next);
    }
    // The journal was started anew again and again.
    EXPECT_EQ(content(folder + "/state").find("generation 1 "), std::string::npos);
    EXPECT_GT(value, 20000U);
    unit_close(watcher);
}

// Killed between the new state and the new journal: the calls that the journal holds are in the
// state already. Whoever comes next sees it: one that opens the unit, or one that has it open.
TEST_F(UnitTest, KilledBetweenStateAndJournalIsWhole)
{
    for (const bool watched : {false, true}) {
        const std::string path = make(watched ? "watched" : "alone");
        const std::string name = path + "/journal";
        Unit* watcher = open(path);
        Unit* unit = open(path);
        uint32_t counter[3] = {1, 17, 32};
        request(unit, 0x6B9F, counter);
        number_write(unit, 1, 5);
        number_read(watcher, 1);
        const std::string journal = content(name);
        std::string error;
        ASSERT_TRUE(unit_change(
            unit, "x", [](UnitState&, int64_t, std::string&) { return true; }, error));
        unit_close(unit);
        // The journal as it was before, with the lock of one who is dead.
        const int file = ::open(name.c_str(), O_WRONLY);
        ASSERT_EQ(pwrite(file, journal.data(), journal.size(), 0),
                  static_cast<ssize_t>(journal.size()));
        close(file);
        EXPECT_EQ(end(start([&] {
                      Journal held;
                      std::string fault;
                      return journal_open(name, held, fault) ? 0 : 1;
                  })),
                  0);
        Unit* next = watched ? watcher : open(path);
        EXPECT_EQ(number_read(next, 1), 5U);
        counter[1] = 0;
        EXPECT_EQ(request(next, 0x6B9A, counter), 0);
        EXPECT_EQ(counter[1], 17U);
        Unit* other = watched ? open(path) : watcher;
        counter[1] = 99;
        EXPECT_EQ(request(other, 0x6B9A, counter), 0);
        EXPECT_EQ(counter[1], 0U); // it restarted when it was read
        unit_close(next);
        unit_close(other);
    }
}

TEST_F(UnitTest, OfAHundredDoNotMeet)
{
    const uint32_t kUnits = share_of(100);
    std::vector<pid_t> processes;
    for (uint32_t u = 0; u < kUnits; ++u) {
        const std::string path = make("unit_" + std::to_string(u));
        processes.push_back(start([=] {
            Unit* unit = open(path);
            for (uint32_t i = 0; i < 500; ++i) {
                if (number_write(unit, 1, 1000 * u + i) != 0 ||
                    number_read(unit, 1) != 1000 * u + i) {
                    return 1;
                }
            }
            return calls(unit).size() == 1000 ? 0 : 2;
        }));
    }
    for (const pid_t process : processes) {
        EXPECT_EQ(end(process), 0);
    }
    // And in one process.
    std::vector<Unit*> units;
    for (uint32_t u = 0; u < kUnits; ++u) {
        units.push_back(open(top + "/unit_" + std::to_string(u)));
    }
    for (uint32_t u = 0; u < kUnits; ++u) {
        EXPECT_EQ(number_read(units[u], 1), 1000 * u + 499);
        unit_close(units[u]);
    }
}

// A disk that is full, as far as a process can have one for itself: no file may grow.
TEST_F(UnitTest, OnAFullDiskLosesNothing)
{
    const pid_t process = start([&] {
        Unit* unit = open(folder);
        const rlimit none{0, 0};
        setrlimit(RLIMIT_FSIZE, &none);
        const std::string before = text(unit);
        std::string error;
        const auto change = [](UnitState& state, int64_t, std::string&) {
            state.fpga.words[0x6B29] = 9;
            return true;
        };
        if (unit_change(unit, "x", change, error) || text(unit) != before) {
            return 4;
        }
        uint32_t done = 0;
        // What goes to standard error is not the disk's.
        while (number_write(unit, 1, done + 1) == 0) {
            ++done;
        }
        if (errno != EFBIG || done < 40000) {
            return 1;
        }
        // Requests fail; and as soon as there is room, they do not.
        for (int i = 0; i < 3; ++i) {
            if (number_write(unit, 1, 0) != -1 || errno != EFBIG) {
                return 2;
            }
        }
        _exit(number_read(unit, 1) == 0xDEADBEEF ? 0 : 3);
    });
    EXPECT_EQ(end(process), 0);
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        EXPECT_NE(entry.path().extension(), ".new");
    }
    Unit* unit = open(folder);
    const uint32_t kept = number_read(unit, 1);
    EXPECT_GT(kept, 40000U);
    EXPECT_EQ(number_write(unit, 1, kept + 1), 0);
    EXPECT_EQ(number_read(unit, 1), kept + 1);
    EXPECT_NE(content(folder + "/state").find("generation 2 "), std::string::npos);
    unit_close(unit);
}

// The lock of a folder that was copied while somebody held it is nobody's; a stopped process is
// named.
TEST_F(UnitTest, IsNotHeldByTheDeadOfAnotherFolder)
{
    auto* held = shared_make<std::atomic<int>>(1);
    const pid_t holder = start([&] {
        Journal journal;
        std::string fault;
        if (journal_open(folder + "/journal", journal, fault)) { // which takes the lock
            *held = 1;
            pause();
        }
        return 1;
    });
    while (*held == 0) {
        usleep(1000);
    }
    const std::string copy = top + "/copy";
    std::filesystem::copy(folder, copy, std::filesystem::copy_options::recursive);
    Unit* unit = open(copy);
    EXPECT_EQ(number_write(unit, 1, 5), 0);
    unit_close(unit);
    // From then on it is the copy's own: who opens it waits.
    auto* released = shared_make<std::atomic<int64_t>>(1);
    const pid_t other = lock_hold(copy, 300000, released);
    unit = open(copy);
    EXPECT_GT(*released, 1);
    unit_close(unit);
    EXPECT_EQ(end(other), 0);
    EXPECT_EQ(refusal(folder), folder + "/journal: process " + std::to_string(holder) +
                                   " has held the unit for five seconds; it may be stopped");
    kill(holder, SIGKILL);
    end(holder);
    EXPECT_EQ(refusal(folder), "opened");
}

// A signal's handler that never comes back leaves no lock behind.
TEST_F(UnitTest, IsFreeAfterAJumpOutOfAHandler)
{
    const pid_t process = start([&] {
        Unit* unit = open(folder);
        static sigjmp_buf place;
        signal(SIGALRM, [](int) { siglongjmp(place, 1); });
        static volatile uint32_t i;
        i = 0;
        volatile int jumps = 0;
        if (sigsetjmp(place, 1) != 0) {
            jumps = jumps + 1;
        }
        if (jumps < 200) {
            ualarm(500, 0);
            for (;;) {
                i = i + 1;
                number_write(unit, 1, i);
            }
        }
        return number_write(unit, 2, 9) == 0 ? 0 : 1;
    });
    siginfo_t state{};
    for (int i = 0; i < 4000 && state.si_pid != process; ++i) {
        usleep(5000);
        waitid(P_PID, static_cast<id_t>(process), &state, WEXITED | WNOHANG | WNOWAIT);
    }
    kill(process, SIGKILL);
    EXPECT_EQ(end(process), 0);
}

} // namespace
