// The simulated board.
//
// The product's calls of the C library end here. Paths under /conf, /tmp and /dev lead into a
// private directory, but for /dev/fpga and /dev/rtc, behind which stand models; any other path
// fails the test, and so does a request that the driver does not know. Every call is recorded in
// order, can be made to fail, and is checked for descriptors and locks that it leaves behind.
// Nothing sleeps. One board exists at a time; a forked child has its own copy of it over the same
// private directory.
#pragma once

#include <ctime>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "sim/fpga_model.h"
#include "sim/rtc_model.h"

using Bytes = std::string;
using Trace = std::vector<std::string>;

class Board
{
  public:
    Board();
    ~Board();
    Board(const Board&) = delete;
    Board& operator=(const Board&) = delete;

    // Where a path of the board lies on this machine.
    [[nodiscard]] std::filesystem::path host(const std::string& path) const;
    // The other way round; empty: no path of the board lies there.
    [[nodiscard]] std::string board_path(const std::filesystem::path& host) const;
    void file_put(const std::string& path, const Bytes& content) const;
    [[nodiscard]] Bytes file_get(const std::string& path) const;
    [[nodiscard]] bool file_exists(const std::string& path) const;
    void file_remove(const std::string& path) const;

    // The board's clock, what time() answers. The time zone is UTC unless a test sets TZ.
    time_t now = 1141203907; // 2006-03-01 09:05:07

    // The device behind /dev/fpga, which can be opened while it is present.
    FpgaModel fpga;
    bool fpga_present = true;

    // Devices' descriptors are the board's own, without a file of this machine behind them. The
    // next one may be made 0, which a program without a standard input gets.
    static constexpr int kFirstDevice = 1000000;
    int next_device = kFirstDevice;

    // The clock behind /dev/rtc, likewise.
    RtcModel rtc;
    bool rtc_present = true;

    // Everything printed so far.
    std::string console;

    // Every call so far, in order, as text: the call's name, the path it concerns, what it was
    // given; " -> failed" behind a call that the board made fail.
    //   fopen /conf/system.log r+      open /dev/mtd_systemlog O_RDONLY
    //   flock /conf/system.log LOCK_EX fread /conf/system.log 12
    //   fseek /conf/system.log 12      fprintf /conf/system.log 100
    //   fwrite /tmp/flashsave 1        puts maintlogfile --> FROM Read End!!
    //   open /dev/fpga O_RDWR|O_NONBLOCK
    //   ioctl 6B42 12 00 00 00 00 00 00 00   the record's bytes before the driver fills it
    //   ioctl 6B04 =1234                     a value
    //   ioctl (closed) 6B87 ...              on a descriptor that is not open
    //   sleep 2                        usleep 1
    Trace calls;
    // Without a recording the calls are only counted: for loops over every value of a word.
    bool recording = true;

    // Forgets calls, console and planned failures; files and clock stay.
    void restart();

    // Makes the nth call from now fail (1: the next), or that one and all after it. A close that
    // fails has closed all the same, as on the real system. A fread or fwrite that fails has moved
    // nothing, but answers as if it had got half way: one item of 12 bytes is 0 items, 12 items of
    // one byte are 6. Sleeping cannot fail.
    void fail_call(size_t n);
    void fail_from(size_t n);
    void fail_calls(const std::set<size_t>& calls_from_now);
    [[nodiscard]] size_t call_count() const { return call_count_; }

    [[nodiscard]] size_t open_descriptors() const { return open_.size(); }
    [[nodiscard]] const std::map<int, std::string>& descriptors() const { return open_; }
    [[nodiscard]] size_t held_locks() const { return locked_.size(); }

    // A process that waits for a lock of its own fails the test instead of hanging it; a test of
    // that very wait says false.
    bool own_wait_fails = true;

    // For the calls themselves.
    bool begin(const std::string& call); // records the call; false: it has to fail
    // Whether anybody reads the texts of calls: they are empty otherwise.
    [[nodiscard]] bool calls_read() const { return recording || before_call; }
    int device_open(const std::string& path);
    [[nodiscard]] bool is_device(int descriptor) const;
    void opened(int descriptor, const std::string& path);
    void closing(int descriptor);
    void locked(int descriptor);
    void unlocked(int descriptor);
    // Whether this very process holds a lock on the descriptor's file through another one: to wait
    // for it would be for ever. A lock taken before a fork is the other process's.
    [[nodiscard]] bool waits_for_itself(int descriptor) const;
    [[nodiscard]] const std::string& path_of(int descriptor) const;
    // Runs before each call is answered, with its text; for tests that step in between calls.
    std::function<void(const std::string&)> before_call;
    // Runs after each close of a descriptor; for tests that play another thread of the process.
    std::function<void()> after_close;

    static Board& current();

  private:
    std::filesystem::path root_;
    int owner_;               // process that made the private directory
    bool zero_given_ = false; // as a device's descriptor
    size_t call_count_ = 0;
    std::set<size_t> fail_; // numbers of the calls that fail, the first call being 1
    size_t fail_from_ = SIZE_MAX;
    std::map<int, std::string> open_;
    std::map<int, int> locked_; // descriptor, process that took the lock
};

// The program's main, as linked into the tests.
extern "C" int maintlogfile_main();
