// Setting the system clock with a C library that has stime, here one of the test's own.
#include <gtest/gtest.h>

#include <ctime>

namespace
{

time_t set_to = 0;

int own_stime(const time_t* now)
{
    set_to = *now;
    return -1; // which nobody asks for
}

} // namespace

#define MAINT_HAVE_STIME
#define stime own_stime
#define systemClock_set systemClock_setByStime
#include "device/commands/rtc_system_clock.cpp" // NOLINT(bugprone-suspicious-include)

namespace
{

TEST(SystemClock, IsSetWithStimeWhereThereIsOne)
{
    systemClock_setByStime(1078058096);
    EXPECT_EQ(set_to, 1078058096);
}

} // namespace
