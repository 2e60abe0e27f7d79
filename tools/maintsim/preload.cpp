#include "tools/maintsim/preload.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <sys/uio.h>
#include <unistd.h>

#include "tools/maintsim/preload_variables.h"

thread_local bool sim_inside = false;

namespace
{

// Constructors of other libraries may call before ours has run: whoever comes first makes the names.
// Two threads make the same ones.
struct Names {
    char folder[PATH_MAX];
    char object[PATH_MAX];
};
Names names;
std::atomic<bool> names_made{false};

const Names& names_get()
{
    if (!names_made.load(std::memory_order_acquire)) {
        const char* unit = getenv(kUnitVariable);
        if (unit != nullptr && strlen(unit) < sizeof names.folder) {
            memcpy(names.folder, unit, strlen(unit) + 1);
        }
        Dl_info info;
        if (dladdr(&names, &info) != 0 && strlen(info.dli_fname) < sizeof names.object) {
            memcpy(names.object, info.dli_fname, strlen(info.dli_fname) + 1);
        }
        names_made.store(true, std::memory_order_release);
    }
    return names;
}

// A program may clear its environment before it asks for anything.
[[gnu::constructor]] void start()
{
    names_get();
}

} // namespace

ErrnoKept::ErrnoKept() : errno_(errno) {}

ErrnoKept::~ErrnoKept()
{
    errno = errno_;
}

const char* sim_folder()
{
    return names_get().folder;
}

const char* sim_object()
{
    return names_get().object;
}

void sim_say(const char* first, const char* second, const char* third)
{
    const ErrnoKept kept;
    const Inside inside;
    static constexpr char kName[] = "maintsim: ";
    static constexpr char kEnd[] = "\n";
    // In one call, so that lines of several programs do not mix.
    iovec parts[] = {{const_cast<char*>(kName), strlen(kName)},
                     {const_cast<char*>(first), strlen(first)},
                     {const_cast<char*>(second), strlen(second)},
                     {const_cast<char*>(third), strlen(third)},
                     {const_cast<char*>(kEnd), strlen(kEnd)}};
    [[maybe_unused]] const ssize_t written = writev(STDERR_FILENO, parts, 5);
}

int failed(int error)
{
    errno = error;
    return -1;
}
