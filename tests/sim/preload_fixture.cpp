#include "sim/preload_fixture.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace
{

// A call of the kernel that no library can stand in the way of.
long kernel(long number, long a, long b, long c, long d)
{
#if defined(__x86_64__)
    long result = 0;
    register long fourth __asm__("r10") = d;
    __asm__ volatile("syscall"
                     : "=a"(result)
                     : "a"(number), "D"(a), "S"(b), "d"(c), "r"(fourth)
                     : "rcx", "r11", "memory");
    return result;
#elif defined(__aarch64__)
    register long call __asm__("x8") = number;
    register long first __asm__("x0") = a;
    register long second __asm__("x1") = b;
    register long third __asm__("x2") = c;
    register long fourth __asm__("x3") = d;
    __asm__ volatile("svc 0"
                     : "+r"(first)
                     : "r"(call), "r"(second), "r"(third), "r"(fourth)
                     : "memory");
    return first;
#endif
}

long address(const void* pointer)
{
    return reinterpret_cast<long>(pointer);
}

} // namespace

const std::string& unit_folder()
{
    static const std::string folder = getenv("MAINTSIM_UNIT");
    return folder;
}

std::string unit_place(const std::string& path)
{
    return unit_folder() + "/files" + path;
}

bool machine_has(const std::string& path)
{
    return kernel(SYS_faccessat, AT_FDCWD, address(path.c_str()), F_OK, 0) == 0;
}

long machine_seconds()
{
    timespec now{};
    kernel(SYS_clock_gettime, CLOCK_REALTIME, address(&now), 0, 0);
    return now.tv_sec;
}

bool same_file(const std::string& one, const std::string& other)
{
    struct stat first {
    };
    struct stat second {
    };
    return kernel(SYS_newfstatat, AT_FDCWD, address(one.c_str()), address(&first), 0) == 0 &&
           kernel(SYS_newfstatat, AT_FDCWD, address(other.c_str()), address(&second), 0) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

std::string file_text(const std::string& path)
{
    const long file = kernel(SYS_openat, AT_FDCWD, address(path.c_str()), O_RDONLY, 0);
    char bytes[4096];
    const long size = kernel(SYS_read, file, address(bytes), sizeof bytes, 0);
    kernel(SYS_close, file, 0, 0, 0);
    return file < 0 || size < 0 ? "(none)" : std::string(bytes, static_cast<size_t>(size));
}

void file_make(const std::string& path, const std::string& text)
{
    const long file =
        kernel(SYS_openat, AT_FDCWD, address(path.c_str()), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(file, 0) << path;
    ASSERT_EQ(kernel(SYS_write, file, address(text.data()), static_cast<long>(text.size()), 0),
              static_cast<long>(text.size()));
    kernel(SYS_close, file, 0, 0, 0);
}

bool taken_over(const char* name)
{
    Dl_info info;
    void* entry = dlsym(RTLD_DEFAULT, name);
    return entry != nullptr && dladdr(entry, &info) != 0 &&
           strstr(info.dli_fname, "libmaintsim_preload.so") != nullptr;
}

// Runs itself on a unit of its own. Without the preloaded object no test begins: they set the clock
// and change files in /conf.
int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        if (strstr(argv[i], "--gtest_list_tests") != nullptr) {
            testing::InitGoogleTest(&argc, argv);
            return RUN_ALL_TESTS();
        }
    }
    if (getenv("MAINTSIM_UNIT") == nullptr) {
        std::vector<char*> words = {const_cast<char*>(MAINTSIM)};
        words.insert(words.end(), argv, argv + argc + 1);
        execv(MAINTSIM, words.data());
        perror(MAINTSIM);
        return 1;
    }
    for (const char* name : {"clock_settime", "settimeofday", "adjtime", "open", "unlink", "rename",
                             "execve", "syscall", "ioctl"}) {
        if (!taken_over(name)) {
            fprintf(stderr, "%s is the machine's own: no test runs\n", name);
            return 1;
        }
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
