// Waiting until a time of the system clock. The kernel waits by the machine's clock, the program has
// read the unit's: the time is the machine's when it is handed on.
#include <ctime>
#include <mqueue.h>
#include <pthread.h>
#include <semaphore.h>
#include <threads.h>

#include "tools/maintsim/preload.h"
#include "tools/maintsim/preload_device.h"

namespace
{

constexpr int64_t kSecond = 1'000'000'000;

// A deadline as the machine's clock has it. A wrong one stays wrong.
class Deadline
{
  public:
    explicit Deadline(const timespec* given, bool of_clock = true) : pointer_(given)
    {
        const int64_t difference = of_clock && given != nullptr ? clock_difference() : 0;
        if (difference != 0 && given->tv_nsec >= 0 && given->tv_nsec < kSecond) {
            const int64_t rest = given->tv_nsec - difference % kSecond;
            const int64_t carry = rest < 0 ? -1 : (rest >= kSecond ? 1 : 0);
            own_ = {given->tv_sec - difference / kSecond + carry, rest - carry * kSecond};
            if (own_.tv_sec < 0) {
                own_ = {};
            }
            pointer_ = &own_;
        }
    }
    [[nodiscard]] const timespec* get() const { return pointer_; }

  private:
    const timespec* pointer_;
    timespec own_{};
};

bool of_system(clockid_t clock)
{
    return clock == CLOCK_REALTIME;
}

// Which clock a condition waits by, it alone knows.
bool of_system(const pthread_cond_t* condition)
{
    constexpr unsigned kMonotonic = 2;
    return (condition->__data.__wrefs & kMonotonic) == 0;
}

} // namespace

TAKES_OVER(int, clock_nanosleep, clockid_t clock, int flags, const timespec* time, timespec* left)
{
    const bool until = (flags & TIMER_ABSTIME) != 0;
    return NEXT(clock_nanosleep)(clock, flags, Deadline(time, until && of_system(clock)).get(),
                                 left);
}

TAKES_OVER(int, sem_timedwait, sem_t* semaphore, const timespec* time)
{
    return NEXT(sem_timedwait)(semaphore, Deadline(time).get());
}

TAKES_OVER(int, sem_clockwait, sem_t* semaphore, clockid_t clock, const timespec* time)
{
    return NEXT(sem_clockwait)(semaphore, clock, Deadline(time, of_system(clock)).get());
}

TAKES_OVER(int, pthread_mutex_timedlock, pthread_mutex_t* mutex, const timespec* time)
{
    return NEXT(pthread_mutex_timedlock)(mutex, Deadline(time).get());
}

TAKES_OVER(int, pthread_mutex_clocklock, pthread_mutex_t* mutex, clockid_t clock,
           const timespec* time)
{
    return NEXT(pthread_mutex_clocklock)(mutex, clock, Deadline(time, of_system(clock)).get());
}

TAKES_OVER(int, pthread_rwlock_timedrdlock, pthread_rwlock_t* lock, const timespec* time)
{
    return NEXT(pthread_rwlock_timedrdlock)(lock, Deadline(time).get());
}

TAKES_OVER(int, pthread_rwlock_timedwrlock, pthread_rwlock_t* lock, const timespec* time)
{
    return NEXT(pthread_rwlock_timedwrlock)(lock, Deadline(time).get());
}

TAKES_OVER(int, pthread_rwlock_clockrdlock, pthread_rwlock_t* lock, clockid_t clock,
           const timespec* time)
{
    return NEXT(pthread_rwlock_clockrdlock)(lock, clock, Deadline(time, of_system(clock)).get());
}

TAKES_OVER(int, pthread_rwlock_clockwrlock, pthread_rwlock_t* lock, clockid_t clock,
           const timespec* time)
{
    return NEXT(pthread_rwlock_clockwrlock)(lock, clock, Deadline(time, of_system(clock)).get());
}

TAKES_OVER(int, pthread_cond_timedwait, pthread_cond_t* condition, pthread_mutex_t* mutex,
           const timespec* time)
{
    return NEXT(pthread_cond_timedwait)(condition, mutex,
                                        Deadline(time, of_system(condition)).get());
}

TAKES_OVER(int, pthread_cond_clockwait, pthread_cond_t* condition, pthread_mutex_t* mutex,
           clockid_t clock, const timespec* time)
{
    return NEXT(pthread_cond_clockwait)(condition, mutex, clock,
                                        Deadline(time, of_system(clock)).get());
}

TAKES_OVER(int, pthread_timedjoin_np, pthread_t thread, void** result, const timespec* time)
{
    return NEXT(pthread_timedjoin_np)(thread, result, Deadline(time).get());
}

TAKES_OVER(int, pthread_clockjoin_np, pthread_t thread, void** result, clockid_t clock,
           const timespec* time)
{
    return NEXT(pthread_clockjoin_np)(thread, result, clock,
                                      Deadline(time, of_system(clock)).get());
}

TAKES_OVER(int, mtx_timedlock, mtx_t* mutex, const timespec* time)
{
    return NEXT(mtx_timedlock)(mutex, Deadline(time).get());
}

TAKES_OVER(int, cnd_timedwait, cnd_t* condition, mtx_t* mutex, const timespec* time)
{
    return NEXT(cnd_timedwait)(condition, mutex, Deadline(time).get());
}

TAKES_OVER(ssize_t, mq_timedreceive, mqd_t queue, char* text, size_t size, unsigned* priority,
           const timespec* time)
{
    return NEXT(mq_timedreceive)(queue, text, size, priority, Deadline(time).get());
}

TAKES_OVER(int, mq_timedsend, mqd_t queue, const char* text, size_t size, unsigned priority,
           const timespec* time)
{
    return NEXT(mq_timedsend)(queue, text, size, priority, Deadline(time).get());
}
