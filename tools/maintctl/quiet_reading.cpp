#include "tools/maintctl/quiet_reading.h"

void quietReading_begin(QuietReading& reading, const Session& session)
{
    reading.nowhere = fopen("/dev/null", "w");
    reading.calls.console = reading.nowhere != nullptr ? reading.nowhere : session.err;
    reading.calls.trace = session.trace ? session.err : nullptr;
    reading.calls.dry_run = true;
    reading.calls_before = libraryCalls_get();
    libraryCalls_set(&reading.calls);
}

void quietReading_end(const QuietReading& reading)
{
    libraryCalls_set(reading.calls_before);
    if (reading.nowhere != nullptr) {
        fclose(reading.nowhere);
    }
}
