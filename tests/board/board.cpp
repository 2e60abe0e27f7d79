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

} // namespace

Board::Board() : owner_(getpid())
{
    if (the_board != nullptr) {
        throw std::logic_error("a second simulated board");
    }
    std::string name = (fs::temp_directory_path() / "maint-board-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no private directory: " + name);
    }
    root_ = name;
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
    fail_first_ = fail_last_ = 0;
}

void Board::fail_call(size_t n)
{
    fail_first_ = fail_last_ = calls.size() + n;
}

void Board::fail_from(size_t n)
{
    fail_first_ = calls.size() + n;
    fail_last_ = SIZE_MAX;
}

bool Board::begin(const std::string& call)
{
    if (before_call) {
        before_call(call);
    }
    calls.push_back(call);
    if (calls.size() < fail_first_ || calls.size() > fail_last_) {
        return true;
    }
    calls.back() += " -> failed";
    return false;
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

bool Board::waits_for_itself(int descriptor) const
{
    return std::any_of(locked_.begin(), locked_.end(), [&](const auto& lock) {
        return lock.first != descriptor && lock.second == getpid() &&
               path_of(lock.first) == path_of(descriptor);
    });
}

std::string Board::path_of(int descriptor) const
{
    const auto entry = open_.find(descriptor);
    return entry == open_.end() ? "(closed)" : entry->second;
}
