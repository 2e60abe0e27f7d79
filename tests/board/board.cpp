#include "board/board.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace
{

Board* the_board = nullptr;

// Memory rather than a disk, where the machine has such a place: some tests rewrite their files
// many thousand times.
fs::path temporary_place()
{
    const char* memory = "/dev/shm";
    return getenv("TMPDIR") == nullptr && access(memory, W_OK) == 0 ? fs::path(memory)
                                                                    : fs::temp_directory_path();
}

} // namespace

Board::Board() : owner_(getpid())
{
    if (the_board != nullptr) {
        throw std::logic_error("a second simulated board");
    }
    std::string name = (temporary_place() / "maint-board-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no private directory: " + name);
    }
    root_ = fs::canonical(name); // as the kernel names it
    for (const char* folder : {"conf", "tmp", "dev"}) {
        fs::create_directory(root_ / folder);
    }
    setenv("TZ", "UTC0", 1);
    tzset();
    the_board = this;
}

Board::~Board()
{
    the_board = nullptr;
    if (getpid() == owner_) {
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }
}

Board& Board::current()
{
    if (the_board == nullptr) {
        throw std::logic_error("the product was called without a simulated board");
    }
    return *the_board;
}

fs::path Board::host(const std::string& path) const
{
    for (const char* folder : {"/conf/", "/tmp/", "/dev/"}) {
        if (path.rfind(folder, 0) == 0 && path.find("..") == std::string::npos) {
            return root_ / path.substr(1);
        }
    }
    ADD_FAILURE() << "the product reached for a path outside the board: " << path;
    return root_ / "outside";
}

std::string Board::board_path(const fs::path& host) const
{
    const std::string root = root_.string() + "/";
    const std::string path = host.string();
    return path.rfind(root, 0) == 0 ? path.substr(root.size() - 1) : "";
}

void Board::file_put(const std::string& path, const Bytes& content) const
{
    std::ofstream file(host(path), std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
}

Bytes Board::file_get(const std::string& path) const
{
    const std::ifstream file(host(path), std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

bool Board::file_exists(const std::string& path) const
{
    return fs::exists(host(path));
}

void Board::file_remove(const std::string& path) const
{
    fs::remove(host(path));
}

void Board::restart()
{
    calls.clear();
    console.clear();
    call_count_ = 0;
    fail_.clear();
    fail_from_ = SIZE_MAX;
}

void Board::fail_call(size_t n)
{
    fail_calls({n});
}

void Board::fail_calls(const std::set<size_t>& calls_from_now)
{
    fail_.clear();
    for (const size_t n : calls_from_now) {
        fail_.insert(call_count_ + n);
    }
}

void Board::fail_from(size_t n)
{
    fail_from_ = call_count_ + n;
}

bool Board::begin(const std::string& call)
{
    if (before_call) {
        before_call(call);
    }
    ++call_count_;
    const bool fails = call_count_ >= fail_from_ || fail_.count(call_count_) != 0;
    if (recording) {
        calls.push_back(fails ? call + " -> failed" : call);
    }
    return !fails;
}

int Board::device_open(const std::string& path)
{
    int descriptor = next_device;
    next_device = kFirstDevice;
    zero_given_ = zero_given_ || descriptor == 0;
    while (open_.count(descriptor) != 0) {
        ++descriptor;
    }
    opened(descriptor, path);
    return descriptor;
}

bool Board::is_device(int descriptor) const
{
    return descriptor >= kFirstDevice || (descriptor == 0 && zero_given_);
}

void Board::opened(int descriptor, const std::string& path)
{
    open_[descriptor] = path;
}

void Board::closing(int descriptor)
{
    if (open_.erase(descriptor) == 0) {
        ADD_FAILURE() << "close of descriptor " << descriptor << ", which is not open";
    }
    locked_.erase(descriptor);
}

void Board::locked(int descriptor)
{
    locked_[descriptor] = getpid();
}

void Board::unlocked(int descriptor)
{
    locked_.erase(descriptor);
}

bool Board::waits_for_itself(int descriptor) const
{
    return std::any_of(locked_.begin(), locked_.end(), [&](const auto& lock) {
        return lock.first != descriptor && lock.second == getpid() &&
               path_of(lock.first) == path_of(descriptor);
    });
}

const std::string& Board::path_of(int descriptor) const
{
    static const std::string kClosed = "(closed)";
    const auto entry = open_.find(descriptor);
    return entry == open_.end() ? kClosed : entry->second;
}
