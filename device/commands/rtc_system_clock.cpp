#include "device/commands/rtc_system_clock.h"

void systemClock_set(time_t now)
{
#ifdef MAINT_HAVE_STIME
    stime(&now);
#else
    // C libraries of today declare no stime; this is what it did.
    const timespec clock{now, 0};
    clock_settime(CLOCK_REALTIME, &clock);
#endif
}
