// The preloaded object: it stands between a program and the C library, and leads what is the unit's
// into the unit. What its parts share.
//
// Its functions run in programs of any kind, also before main, in signal handlers, and between vfork
// and exec: no memory is allocated on the way of a path, and errno is only changed by a failure.
#pragma once

#include <dlfcn.h>

#include <atomic>
#include <cstddef>

// Takes the place of a function of the C library. The label is its name for the linker; C++ knows it
// by another one, so that it does not meet the header's own declaration.
#define TAKES_OVER(result, name, ...)                                                              \
    extern "C" [[gnu::visibility("default")]] result sim_##name(__VA_ARGS__) __asm__(#name);       \
    result sim_##name(__VA_ARGS__)

// The C library's own function of that name and type; null where this C library has none.
template <typename Function> Function next_function(std::atomic<void*>& found, const char* name)
{
    void* address = found.load(std::memory_order_relaxed);
    if (address == nullptr) {
        address = dlsym(RTLD_NEXT, name);
        found.store(address, std::memory_order_relaxed);
    }
    return reinterpret_cast<Function>(address); // NOLINT: POSIX says that it can be called
}
#define NEXT_AS(type, name)                                                                        \
    ([] {                                                                                          \
        static constinit std::atomic<void*> found{nullptr};                                        \
        return next_function<type>(found, #name);                                                  \
    }())
#define NEXT(name) NEXT_AS(decltype(&::name), name)

// Set while this thread works for the simulation itself: its calls go straight to the C library.
extern thread_local bool sim_inside;

class Inside
{
  public:
    Inside() : before_(sim_inside) { sim_inside = true; }
    ~Inside() { sim_inside = before_; }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

  private:
    bool before_;
};

// Keeps errno as it is.
class ErrnoKept
{
  public:
    ErrnoKept();
    ~ErrnoKept();
    ErrnoKept(const ErrnoKept&) = delete;
    ErrnoKept& operator=(const ErrnoKept&) = delete;

  private:
    int errno_;
};

// The unit's folder, as the environment names it, and this object's own file; empty if there is none.
const char* sim_folder();
const char* sim_object();

// One line on standard error, of the parts in a row.
void sim_say(const char* first, const char* second = "", const char* third = "");

// Sets errno; -1.
int failed(int error);
