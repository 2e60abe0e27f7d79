// What a request of a program on a simulated unit costs beside a round trip of the same bytes over a
// local socket, to a process that sends them back: the least that a simulation by a server would
// take. And what the start of a program costs on a unit that is there, beside its start without.
// Prints a table, and fails when one of them costs more than its limit.
//
// It starts itself on a unit of its own. Both sides are measured in turn; of requests in short blocks,
// and what counts is the median of neighbouring blocks' ratios (see command_cost.cpp).
#include <fcntl.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace
{

constexpr unsigned long kRegisterRead = 0x6B42;
constexpr unsigned long kRegisterWrite = 0x6B43;
constexpr double kRequestLimit = 1.3; // of the ratio
constexpr double kStartLimit = 20;    // milliseconds more

struct RegisterRequest {
    uint32_t address;
    uint32_t value;
};

// As it goes to a server: which request, and its record.
struct Message {
    uint64_t request;
    RegisterRequest record;
};

void work_require(bool good, const char* what)
{
    if (!good) {
        perror(what);
        exit(1);
    }
}

double nanoseconds_now()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

template <size_t Size> double median(std::array<double, Size>& values)
{
    auto* const middle = values.begin() + Size / 2;
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Requests ----------------------------------------------------------------------------------------

struct Sides {
    int device;
    int socket;
};

void request_make(const Sides& sides, uint32_t number)
{
    RegisterRequest record{0x100, number};
    const unsigned long request = number % 2 == 0 ? kRegisterWrite : kRegisterRead;
    work_require(ioctl(sides.device, request, &record) == 0, "request");
    work_require(record.value == (number & ~1U), "answer");
}

// By calls that the simulation does not take over.
void roundTrip_make(const Sides& sides, uint32_t number)
{
    Message message{number % 2 == 0 ? kRegisterWrite : kRegisterRead, {0x100, number}};
    work_require(send(sides.socket, &message, sizeof message, 0) == sizeof message, "socket");
    work_require(recv(sides.socket, &message, sizeof message, 0) == sizeof message, "socket");
    work_require(message.record.value == number, "answer");
}

using Make = void (*)(const Sides& sides, uint32_t number);

// What one takes, of a block of them.
double block_measure(Make make, const Sides& sides)
{
    constexpr uint32_t kBlock = 50;
    const double begin = nanoseconds_now();
    for (uint32_t number = 0; number < kBlock; ++number) {
        make(sides, number + 2);
    }
    return (nanoseconds_now() - begin) / kBlock;
}

bool requests_measure()
{
    int sockets[2];
    work_require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) == 0, "socketpair");
    const pid_t echo = fork();
    if (echo == 0) {
        close(sockets[0]);
        Message message{};
        while (recv(sockets[1], &message, sizeof message, 0) == sizeof message &&
               send(sockets[1], &message, sizeof message, 0) == sizeof message) {
        }
        _exit(0);
    }
    close(sockets[1]);
    const Sides sides{open("/dev/fpga", O_RDWR | O_CLOEXEC), sockets[0]};
    work_require(sides.device >= 0, "/dev/fpga");
    // As many requests as make the journal start anew some ten times.
    constexpr size_t kRounds = 3000;
    static std::array<double, kRounds> request;
    static std::array<double, kRounds> round_trip;
    static std::array<double, kRounds> ratio;
    double requests_total = 0;
    double round_trips_total = 0;
    for (size_t i = 0; i < kRounds; ++i) {
        // Neither side is always the first.
        if (i % 2 == 0) {
            request[i] = block_measure(request_make, sides);
            round_trip[i] = block_measure(roundTrip_make, sides);
        } else {
            round_trip[i] = block_measure(roundTrip_make, sides);
            request[i] = block_measure(request_make, sides);
        }
        ratio[i] = request[i] / round_trip[i];
        requests_total += request[i];
        round_trips_total += round_trip[i];
    }
    close(sides.device);
    close(sockets[0]);
    waitpid(echo, nullptr, 0);
    const double middle = median(ratio);
    // The journal's new beginnings are in the mean alone.
    const double mean = requests_total / round_trips_total;
    const bool good = middle <= kRequestLimit && mean <= kRequestLimit;
    printf("%-34s %14s %14s %8s %8s\n", "", "round trip", "request", "ratio", "limit");
    printf("%-34s %11.0f ns %11.0f ns %8.3f %8.3f%s\n", "request, median", median(round_trip),
           median(request), middle, kRequestLimit, middle <= kRequestLimit ? "" : "  TOO MUCH");
    printf("%-34s %11.0f ns %11.0f ns %8.3f %8.3f%s\n", "request, mean",
           round_trips_total / kRounds, requests_total / kRounds, mean, kRequestLimit,
           mean <= kRequestLimit ? "" : "  TOO MUCH");
    return good;
}

// Starts ------------------------------------------------------------------------------------------

double start_measure(const std::vector<std::string>& words)
{
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    const double begin = nanoseconds_now();
    pid_t process = -1;
    int status = -1;
    work_require(posix_spawn(&process, arguments[0], nullptr, nullptr, arguments.data(), environ) ==
                     0,
                 arguments[0]);
    waitpid(process, &status, 0);
    work_require(status == 0, arguments[0]);
    return (nanoseconds_now() - begin) / 1e6;
}

bool starts_measure(const std::string& folder, const std::string& own)
{
    // A program that asks for one register; without a unit it opens nothing.
    const std::vector<std::string> without{own, "one", "/dev/null"};
    const std::vector<std::string> with{MAINTSIM, "-u", folder, own, "one", "/dev/fpga"};
    constexpr size_t kRounds = 200;
    static std::array<double, kRounds> plain;
    static std::array<double, kRounds> on_unit;
    for (size_t i = 0; i < kRounds; ++i) {
        plain[i] = start_measure(without);
        on_unit[i] = start_measure(with);
    }
    // The wait for a processor is not the simulation's: the fastest of each side.
    const double without_one = *std::min_element(plain.begin(), plain.end());
    const double with_one = *std::min_element(on_unit.begin(), on_unit.end());
    const double more = with_one - without_one;
    const bool good = more <= kStartLimit;
    printf("%-34s %14s %14s %8s %8s\n", "", "without", "on a unit", "more", "limit");
    printf("%-34s %11.2f ms %11.2f ms %8.2f %8.2f%s\n", "start of a program", without_one, with_one,
           more, kStartLimit, good ? "" : "  TOO MUCH");
    return good;
}

int one_run(const char* path)
{
    const int device = open(path, O_RDWR | O_CLOEXEC);
    RegisterRequest record{0x12, 0};
    if (strcmp(path, "/dev/fpga") == 0) {
        work_require(ioctl(device, kRegisterRead, &record) == 0, path);
    }
    return device >= 0 ? 0 : 1;
}

int all_run(const char* own)
{
    char top[] = "/tmp/maintsim_cost_XXXXXX";
    work_require(mkdtemp(top) != nullptr, top);
    const std::string folder = std::string(top) + "/unit";
    start_measure({MAINTSIM, "-u", folder, "new"});
    int status = 0;
    const pid_t requests = fork();
    if (requests == 0) {
        execl(MAINTSIM, MAINTSIM, "-u", folder.c_str(), own, "requests", nullptr);
        _exit(127);
    }
    waitpid(requests, &status, 0);
    const bool good = starts_measure(folder, own);
    start_measure({"/bin/rm", "-r", top});
    return status == 0 && good ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    setvbuf(stdout, nullptr, _IOLBF, 0);
    if (argc == 3 && strcmp(argv[1], "one") == 0) {
        return one_run(argv[2]);
    }
    if (argc == 2 && strcmp(argv[1], "requests") == 0) {
        return requests_measure() ? 0 : 1;
    }
    char own[4096] = "";
    work_require(readlink("/proc/self/exe", own, sizeof own - 1) > 0, "/proc/self/exe");
    return all_run(own);
}
