// Each call is a real one of the system, on /dev/null in place of the device.
#include "benchmark/calls.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace
{

CallRecord* recorded = nullptr;

void call_note(const char* name, unsigned long detail)
{
    if (recorded != nullptr && recorded->count < std::size(recorded->calls)) {
        recorded->calls[recorded->count++] = {name, detail};
    }
}

} // namespace

void calls_recordInto(CallRecord* record)
{
    recorded = record;
}

extern "C" {

int board_open(const char* /*path*/, int flags, ...)
{
    call_note("open", static_cast<unsigned long>(flags));
    return open("/dev/null", flags);
}

int board_ioctl(int descriptor, unsigned long request, ...)
{
    call_note("ioctl", request);
    va_list arguments;
    va_start(arguments, request);
    const auto argument = va_arg(arguments, unsigned long);
    va_end(arguments);
    ioctl(descriptor, request, argument); // which /dev/null refuses
    return 0;
}

int board_close(int descriptor)
{
    call_note("close", 0);
    return close(descriptor);
}

// What the commands measured have no business with; CMakeLists.txt gives it the names of all others.
[[noreturn]] void call_unexpected()
{
    fputs("a call of the C library other than open, ioctl and close\n", stderr);
    abort();
}
}
