#include "board/lock_holder.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <stdexcept>

#include "board/board_test.h"

namespace
{

constexpr char kHeld = 'h';
constexpr char kAwaited = 'a';
constexpr char kReleased = 'r';

void send(int pipe, char word)
{
    if (write(pipe, &word, 1) != 1) {
        throw std::runtime_error("the other process is gone");
    }
}

// The next word; 0 once the other side has closed.
char receive(int pipe)
{
    char word = 0;
    return read(pipe, &word, 1) == 1 ? word : '\0';
}

bool has_word(int pipe, int milliseconds)
{
    pollfd waiting{pipe, POLLIN, 0};
    return poll(&waiting, 1, milliseconds) == 1;
}

// The letter of the process's state: S asleep, Z ended; 0 when there is no such process.
char process_state(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    const size_t name_end = line.rfind(") ");
    return name_end == std::string::npos ? '\0' : line.at(name_end + 2);
}

int helper_run(const std::string& path, pid_t watched, int in, int out)
{
    const int file = open(path.c_str(), O_RDWR | O_CREAT, 0600);
    if (file < 0 || flock(file, LOCK_EX) != 0) {
        return 1;
    }
    send(out, kHeld);
    if (receive(in) == kAwaited) {
        // A process that does not wait is never asleep here, and ends this by closing its side.
        while (process_state(watched) != 'S' && !has_word(in, 1)) {
        }
        send(out, kReleased);
    }
    return close(file);
}

} // namespace

LockHolder::LockHolder(Board& on, const std::string& file) : board_(on), path_(file)
{
    std::array<int, 2> down{};
    std::array<int, 2> up{};
    if (pipe(down.data()) != 0 || pipe(up.data()) != 0) {
        throw std::runtime_error("no pipe");
    }
    const std::string host = board_.host(path_).string();
    const pid_t watched = getpid();
    helper_ = child_start([&] {
        close(down[1]);
        close(up[0]);
        return helper_run(host, watched, down[0], up[1]);
    });
    close(down[0]);
    close(up[1]);
    to_helper_ = down[1];
    from_helper_ = up[0];
    if (receive(from_helper_) != kHeld) {
        throw std::runtime_error("the helper has no lock on " + path_);
    }
}

LockHolder::~LockHolder()
{
    close(to_helper_);
    EXPECT_EQ(child_wait(helper_), 0) << "the helper that held " << path_;
    close(from_helper_);
    board_.before_call = nullptr;
}

void LockHolder::release_when_awaited(std::function<void()> meanwhile)
{
    board_.before_call = [this, meanwhile = std::move(meanwhile),
                          sent = false](const std::string& call) mutable {
        if (sent || call.rfind("flock " + path_ + " ", 0) != 0 ||
            call.find("LOCK_NB") != std::string::npos) {
            return;
        }
        sent = true;
        if (meanwhile) {
            meanwhile();
        }
        send(to_helper_, kAwaited);
    };
}

bool LockHolder::released()
{
    if (!released_ && has_word(from_helper_, 0)) {
        released_ = receive(from_helper_) == kReleased;
    }
    return released_;
}

bool child_sleeps(pid_t child)
{
    for (char state = process_state(child); state != 'S'; state = process_state(child)) {
        if (state == 'Z' || state == '\0') {
            return false;
        }
        poll(nullptr, 0, 1);
    }
    return true;
}

bool lock_is_free(const Board& board, const std::string& path)
{
    const int file = open(board.host(path).c_str(), O_RDONLY);
    if (file < 0) {
        throw std::runtime_error("no lock to look at: " + path);
    }
    const bool free = flock(file, LOCK_EX | LOCK_NB) == 0;
    close(file);
    return free;
}
