// The system clock. Programs read the unit's clock and set it; the machine's is never set.
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <sys/time.h>
#include <sys/timeb.h>
#include <sys/timex.h>

#include "tools/maintsim/preload.h"
#include "tools/maintsim/preload_device.h"

namespace
{

constexpr int64_t kSecond = 1'000'000'000;

int64_t nanoseconds_of(const timespec& time)
{
    return static_cast<int64_t>(time.tv_sec) * kSecond + time.tv_nsec;
}

timespec timespec_of(int64_t nanoseconds)
{
    int64_t seconds = nanoseconds / kSecond;
    int64_t rest = nanoseconds % kSecond;
    if (rest < 0) {
        seconds--;
        rest += kSecond;
    }
    return {seconds, rest};
}

int64_t machine_now()
{
    timespec now{};
    NEXT(clock_gettime)(CLOCK_REALTIME, &now);
    return nanoseconds_of(now);
}

timespec unit_now()
{
    return timespec_of(machine_now() + clock_difference());
}

bool of_unit(clockid_t clock)
{
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE || clock == CLOCK_TAI ||
           clock == CLOCK_REALTIME_ALARM;
}

// The kernel refuses what is later: its nanoseconds would not last for another 30 years.
constexpr int64_t kSecondsLimit = INT64_MAX / kSecond - int64_t{30} * 365 * 24 * 3600;

int clock_set(int64_t seconds, int64_t nanoseconds)
{
    if (seconds < 0 || seconds >= kSecondsLimit || nanoseconds < 0 || nanoseconds >= kSecond) {
        return failed(EINVAL);
    }
    if (sim_folder()[0] == '\0') {
        return failed(EPERM);
    }
    clock_setDifference(seconds * kSecond + nanoseconds - machine_now());
    return 0;
}

// The coarse clock stands still for some milliseconds: a unit's clock that was just set would be
// behind its own time. So the unit's is the exact one for both.
int clock_read(clockid_t clock, timespec* time)
{
    const bool coarse = clock == CLOCK_REALTIME_COARSE && !sim_inside;
    const int result = NEXT(clock_gettime)(coarse ? CLOCK_REALTIME : clock, time);
    if (result == 0 && of_unit(clock) && !sim_inside) {
        *time = timespec_of(nanoseconds_of(*time) + clock_difference());
    }
    return result;
}

int timeval_read(timeval* time, void* zone)
{
    const int result = NEXT(gettimeofday)(time, zone);
    if (result == 0 && time != nullptr && !sim_inside) {
        const timespec now = unit_now();
        *time = {now.tv_sec, now.tv_nsec / 1000};
    }
    return result;
}

// Reads the machine's state of the clock's adjustment, or moves the unit's clock at once.
int adjustment(clockid_t clock, timex* state)
{
    constexpr unsigned kRead = 0;
    if (state == nullptr) {
        return failed(EFAULT);
    }
    const unsigned modes = state->modes;
    if (modes == kRead || modes == ADJ_OFFSET_SS_READ) {
        const int result = NEXT(clock_adjtime)(clock, state);
        if (result >= 0 && of_unit(clock)) {
            const timespec now = unit_now();
            const bool nano = (state->status & STA_NANO) != 0;
            state->time = {now.tv_sec, nano ? now.tv_nsec : now.tv_nsec / 1000};
        }
        return result;
    }
    if (!of_unit(clock) || (modes & ~static_cast<unsigned>(ADJ_NANO)) != ADJ_SETOFFSET) {
        return failed(EPERM);
    }
    const int64_t unit = (modes & ADJ_NANO) != 0 ? 1 : 1000;
    if (state->time.tv_usec < 0 || state->time.tv_usec * unit >= kSecond) {
        return failed(EINVAL);
    }
    const timespec now = unit_now();
    const int64_t nanoseconds = now.tv_nsec + state->time.tv_usec * unit;
    if (state->time.tv_sec >= kSecondsLimit) {
        return failed(EINVAL);
    }
    const int64_t seconds = now.tv_sec + state->time.tv_sec + nanoseconds / kSecond;
    return clock_set(seconds, nanoseconds % kSecond) == 0 ? TIME_OK : -1;
}

} // namespace

// Reading

TAKES_OVER(int, clock_gettime, clockid_t clock, timespec* time)
{
    return clock_read(clock, time);
}

TAKES_OVER(int, __clock_gettime, clockid_t clock, timespec* time)
{
    return clock_read(clock, time);
}

TAKES_OVER(int, gettimeofday, timeval* time, void* zone)
{
    return timeval_read(time, zone);
}

TAKES_OVER(int, __gettimeofday, timeval* time, void* zone)
{
    return timeval_read(time, zone);
}

TAKES_OVER(time_t, time, time_t* stored)
{
    if (sim_inside) {
        return NEXT(time)(stored);
    }
    const time_t now = unit_now().tv_sec;
    if (stored != nullptr) {
        *stored = now;
    }
    return now;
}

TAKES_OVER(int, timespec_get, timespec* time, int base)
{
    const int result = NEXT(timespec_get)(time, base);
    if (result == TIME_UTC && !sim_inside) {
        *time = unit_now();
    }
    return result;
}

TAKES_OVER(int, ftime, timeb* time)
{
    const timespec now = unit_now();
    *time = {};
    time->time = now.tv_sec;
    time->millitm = static_cast<unsigned short>(now.tv_nsec / 1'000'000);
    return 0;
}

// Setting

TAKES_OVER(int, clock_settime, clockid_t clock, const timespec* time)
{
    if (time == nullptr) {
        return failed(EFAULT);
    }
    return clock == CLOCK_REALTIME ? clock_set(time->tv_sec, time->tv_nsec) : failed(EINVAL);
}

TAKES_OVER(int, settimeofday, const timeval* time, const struct timezone*)
{
    return time == nullptr ? 0 : clock_set(time->tv_sec, time->tv_usec * 1000);
}

TAKES_OVER(int, stime, const time_t* time)
{
    return clock_set(*time, 0);
}

TAKES_OVER(int, adjtime, const timeval* delta, timeval* left)
{
    if (left != nullptr) {
        *left = {}; // what was asked for before is done at once
    }
    if (delta != nullptr) {
        if (sim_folder()[0] == '\0') {
            return failed(EPERM);
        }
        clock_setDifference(clock_difference() + delta->tv_sec * kSecond + delta->tv_usec * 1000);
    }
    return 0;
}

TAKES_OVER(int, clock_adjtime, clockid_t clock, timex* state)
{
    return adjustment(clock, state);
}

TAKES_OVER(int, adjtimex, timex* state)
{
    return adjustment(CLOCK_REALTIME, state);
}

TAKES_OVER(int, __adjtimex, timex* state)
{
    return adjustment(CLOCK_REALTIME, state);
}

TAKES_OVER(int, ntp_adjtime, timex* state)
{
    return adjustment(CLOCK_REALTIME, state);
}
