// Setting the system clock.
#pragma once

#include <ctime>

// Whether the clock could be set is not told: the caller has no use for it.
void systemClock_set(time_t now);
