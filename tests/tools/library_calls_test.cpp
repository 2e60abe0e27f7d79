// The lines of maintctl's trace, letter for letter, and what its layer below the library does with
// texts, paths, errno and whatever it does not know.
#include <fcntl.h>
#include <sys/file.h>

#include <fstream>

#include "maint/save_lock.h"
#include "maint/system_log.h"
#include "tools/library_calls_fixture.h"

// The calls as the library reaches them.
extern "C" {
int watched_open(const char* path, int flags, ...);
int watched_close(int descriptor);
int watched_ioctl(int descriptor, unsigned long number, ...);
int watched_flock(int descriptor, int operation);
off_t watched_lseek(int descriptor, off_t offset, int whence);
FILE* watched_fopen(const char* path, const char* mode);
int watched_fclose(FILE* stream);
__attribute__((format(printf, 2, 3))) int watched_fprintf(FILE* stream, const char* format, ...);
__attribute__((format(printf, 1, 2))) int watched_printf(const char* format, ...);
int watched_puts(const char* text);
time_t watched_time(time_t* now);
}

namespace
{

constexpr Watch kTrace = {.trace = true};

class LibraryCallsLines : public LibraryCallsTest
{
  protected:
    // The trace of a command; its result comes first.
    Trace lines(DeviceCommandCode number, Bytes record)
    {
        record.resize(kRecordMax);
        alignas(8) char memory[kRecordMax];
        record.copy(memory, kRecordMax);
        const int32_t result = command(kTrace, number, memory);
        Trace all = timeless(trace);
        all.insert(all.begin(), std::to_string(result));
        return all;
    }

    // The lines of requests alone.
    Trace requests(DeviceCommandCode number, const Bytes& record)
    {
        Trace all = lines(number, record);
        std::erase_if(all, [](const std::string& line) { return !starts(line, "ioctl("); });
        return all;
    }

    // What one call is shown as.
    template <class Work> std::string line(const Work& work)
    {
        watched(kTrace, [&] {
            work();
            return 0;
        });
        return timeless(trace).at(0);
    }
};

TEST_F(LibraryCallsLines, OfACommand)
{
    board.fpga.registers[0x158] = 0x0A00;
    EXPECT_EQ(lines(RD_REG158_BIT10, {}),
              (Trace{"0", "open(\"/dev/fpga\", O_RDONLY|O_NONBLOCK) = 1000000",
                     "ioctl(/dev/fpga, 0x6B42 register read, address=0x0158) = 0, value=0x0a00",
                     "close(/dev/fpga) = 0"}));
    EXPECT_EQ(requests(WR_REG158_BIT10, byte(1)).at(1),
              "ioctl(/dev/fpga, 0x6B43 register write, address=0x0158 value=0x0e00) = 0");
}

TEST_F(LibraryCallsLines, OfRequestsOfEveryForm)
{
    EXPECT_EQ(requests(WR_DEVICE_WORD_04, le16(0x12)),
              (Trace{"ioctl(/dev/fpga, 0x6B04 word 03 write, 0x0012) = 0"}));
    EXPECT_EQ(requests(WR_BYTE_ACTION, byte(7)),
              (Trace{"ioctl(/dev/fpga, 0x6B74 byte action, 0x07) = 0"}));
    board.fpga.results[0x6BA2] = 5;
    EXPECT_EQ(requests(RD_DRIVER_STATE, {}),
              (Trace{"ioctl(/dev/fpga, 0x6BA2 driver state read) = 5"}));
    board.fpga.words[0x6B29] = 12;
    EXPECT_EQ(requests(RD_DEVICE_WORD_29, {}),
              (Trace{"ioctl(/dev/fpga, 0x6B29 own identifier read) = 0, id=12"}));
    board.fpga.words[0x6B8D] = 0x10;
    EXPECT_EQ(requests(WR_PORT_MASK_BIT, le16(31)), Trace{});
    EXPECT_EQ(requests(WR_PORT_MASK_BIT, le16(29) + le16(1)),
              (Trace{"ioctl(/dev/fpga, 0x6B8D port mask read) = 0, bits=0x0010",
                     "ioctl(/dev/fpga, 0x6B8E port mask write, 0x20000010) = 0"}));
    EXPECT_EQ(requests(WR_PHY_REGISTER, le32(6) + le16(4) + le16(0x1E1)),
              (Trace{"ioctl(/dev/fpga, 0x6B88 PHY write, address=8 number=4 value=0x01e1) = 0"}));
    EXPECT_EQ(requests(WR_PAIR_WORDS, le32(1) + le32(0x12345678)),
              (Trace{"ioctl(/dev/fpga, 0x6B77 pair words write, words=0x0001,0x12345678) = 0"}));
    board.fpga.address_pairs[3] = le32(3) + zeros(4) + hex("0A 00 00 01 00 11 22 33 44 55 00 01");
    EXPECT_EQ(requests(RD_ADDR_PAIR, le32(3)),
              (Trace{"ioctl(/dev/fpga, 0x6B67 address pair read, index=3) = 0, address=0a000001 "
                     "address_6=001122334455 spare=0001"}));
    EXPECT_EQ(requests(WR_COUNTER_BLOCK_SMALL, Bytes(68, '\x07')),
              (Trace{"ioctl(/dev/fpga, 0x6B9B small counter block write, "
                     "bytes=07070707070707070707070707070707..) = 0"}));
    board.fpga.counters[{2, 33}] = 4000000000;
    EXPECT_EQ(requests(RD_COUNTER, le32(2) + le32(0) + le32(33)),
              (Trace{"ioctl(/dev/fpga, 0x6B9A counter read, index=2 selector=33) = 0, "
                     "value=4000000000"}));
    EXPECT_EQ(requests(WR_RULE_DELETE, byte(0)),
              (Trace{"ioctl(/dev/fpga, 0x6B6B rule write, index=0) = 0"}));
    board.rtc.time = {7, 5, 9, 1, 2, 106, 3, 0, 0};
    EXPECT_EQ(requests(RD_RTC_TIME, {}),
              (Trace{"ioctl(/dev/rtc, 0x80247009 clock time read) = 0, second=7 minute=5 hour=9 "
                     "day=1 month=2 year=106 weekday=3"}));
}

// A rule with all its parts, and bytes where there should be none, is shown to its end.
TEST_F(LibraryCallsLines, OfTheLongestRecord)
{
    const std::string rule =
        "present=0xffff value=0xffff spare=ffff address_a=0xffffffff prefix_a=255 spare=ffffff "
        "address_b=0xffffffff prefix_b=255 spare=0xff word_c=0xffff word_d=0xffff byte_e=0xff "
        "spare=ffffffffffff class_bits=0xff spare=ffff switches=ffffffff spare=ffffffffffffffff "
        "address_6_a=ffffffffffff address_6_b=ffffffffffff spare=ffff companion_c=0xff "
        "companion_d=0xff spare=ffff address_6_a_present=255 address_6_b_present=255 "
        "spare=ffffffffffffffff enabled=255 spare=ffffff";
    board.fpga.rules[127] = Bytes(80, '\xFF');
    EXPECT_EQ(requests(RD_RULE_ENTRY, byte(127)),
              (Trace{"ioctl(/dev/fpga, 0x6B6A rule read, index=127) = 0, " + rule}));
    Bytes record = board.fpga.rules[127];
    const int descriptor = watched_open("/dev/fpga", O_RDWR);
    EXPECT_EQ(line([&] { watched_ioctl(descriptor, 0x6B6BUL, record.data()); }),
              "ioctl(/dev/fpga, 0x6B6B rule write, index=65535 " + rule + ") = 0");
    watched({.dry_run = true}, [&] { return watched_ioctl(descriptor, 0x6B6BUL, record.data()); });
    EXPECT_EQ(console, "not sent: ioctl(/dev/fpga, 0x6B6B rule write, index=65535 " + rule + ")\n");
    watched_close(descriptor);
}

TEST_F(LibraryCallsLines, OfFailures)
{
    board.fpga_present = false;
    uint16_t word = 0;
    EXPECT_EQ(command(kTrace, RD_DEVICE_WORD_03, &word), -1);
    const std::string failed = "open(\"/dev/fpga\", O_RDONLY|O_NONBLOCK) = -1 ENOENT";
    EXPECT_EQ(timeless(trace), (Trace{failed, "usleep(1) = 0", failed, "usleep(1) = 0"}));

    board.fpga_present = true;
    board.restart();
    board.fail_calls({2});
    EXPECT_EQ(lines(RD_DEVICE_WORD_03, {}).at(2), "ioctl(/dev/fpga, 0x6B03 word 03 read) = -1 EIO");
    board.restart();
    EXPECT_EQ(lines(RD_SERIAL_NUMBER, {}).at(1), "open(\"/tmp/serialno\", O_RDONLY) = -1 ENOENT");
}

TEST_F(LibraryCallsLines, OfFiles)
{
    board.file_put("/conf/system.log", hex("00 00 00 00 00 00 00 00 01 00 00 00"));
    watched(kTrace, [] { return systemLog_put("a \"quoted\" \x1B[7m \\ \xA4"); });
    Trace lines = timeless(trace);
    ASSERT_EQ(lines.size(), 9U);
    const size_t stream = lines[1].find(" = ");
    EXPECT_GT(std::stoi(lines[1].substr(stream + 3)), 2); // its descriptor
    lines[1].resize(stream);
    EXPECT_EQ(
        lines,
        (Trace{"time() = 1141203907", "fopen(\"/conf/system.log\", \"r+\")",
               "flock(/conf/system.log, LOCK_EX) = 0", "fread(/conf/system.log, 1 x 12 bytes) = 1",
               "fseek(/conf/system.log, 12, SEEK_SET) = 0",
               "fprintf(/conf/system.log, \"2006/03/01 09:05:07 a \\\"quoted\\\" "
               "\\x1b[7m \\\\ \\xa4" +
                   std::string(60, ' ') + "\\n\") = 100",
               "fseek(/conf/system.log, 0, SEEK_SET) = 0",
               "fwrite(/conf/system.log, 1 x 12 bytes) = 1", "fclose(/conf/system.log) = 0"}));
    EXPECT_EQ(console, "");

    watched(kTrace, [] {
        FILE* handle = nullptr;
        fileAccess_lock(&handle, SAVE_LOCK_TRY);
        return fileAccess_unlock(handle);
    });
    EXPECT_EQ(timeless(trace).at(1), "flock(/tmp/Saveing, LOCK_EX|LOCK_NB) = 0");

    board.fpga_present = true;
    const Trace config = this->lines(RD_MTU_LIMIT, {});
    EXPECT_NE(
        std::find(config.begin(), config.end(), "fopen(\"/conf/config\", \"r\") = null ENOENT"),
        config.end());
    board.file_put("/conf/config", "WAN_TYPE='5'\n");
    const Trace found = this->lines(RD_MTU_LIMIT, {});
    EXPECT_NE(std::find(found.begin(), found.end(), "fgets(/conf/config, 1024 bytes) = 13"),
              found.end());
    EXPECT_NE(std::find(found.begin(), found.end(), "fgets(/conf/config, 1024 bytes) = null"),
              found.end());
}

TEST_F(LibraryCallsLines, OfWhatIsPrinted)
{
    EXPECT_EQ(line([] { EXPECT_EQ(watched_puts("it is so"), 9); }), "puts(\"it is so\") = 9");
    EXPECT_EQ(console, "it is so\n");
    EXPECT_EQ(line([] { EXPECT_EQ(watched_printf("%d\n%s", 12, "x"), 4); }),
              "printf(\"12\\nx\") = 4");
    EXPECT_EQ(console, "12\nx");
    EXPECT_EQ(board.calls, Trace{});

    // As the library does it, when nothing is set.
    EXPECT_EQ(watched_printf("%d\n", 12), 3);
    EXPECT_EQ(watched_puts("it is so"), 9);
    EXPECT_EQ(board.console, "12\nit is so\n");
}

TEST_F(LibraryCallsLines, OfLongTextsAreCutAndTheTextsAreNot)
{
    const std::string text(3000, 'a');
    EXPECT_EQ(line([&] { EXPECT_EQ(watched_printf("%s", text.c_str()), 3000); }),
              "printf(\"" + text.substr(0, 128) + "\"..) = 3000");
    EXPECT_EQ(console, text);
    EXPECT_EQ(line([&] { EXPECT_EQ(watched_puts(std::string(200, '\x01').c_str()), 201); }).size(),
              std::string("puts(\"\"..) = 201").size() + 4 * 128);

    FILE* stream = watched_fopen("/tmp/long", "w");
    EXPECT_EQ(watched_fprintf(stream, "%s", text.c_str()), 3000);
    EXPECT_EQ(watched_fprintf(stream, "%s", "b"), 1);
    watched_fclose(stream);
    EXPECT_EQ(board.file_get("/tmp/long"), text + "b");
}

TEST_F(LibraryCallsLines, NameTheFilesThatAreOpen)
{
    constexpr int kMany = 20;
    std::vector<int> descriptors;
    for (int i = 0; i < kMany; ++i) {
        const std::string path = "/tmp/file" + std::to_string(i);
        descriptors.push_back(watched_open(path.c_str(), O_RDWR | O_CREAT, 0666));
    }
    // The last ones opened are known; closing shows them once more by name, and then not again.
    for (int i = 0; i < kMany; ++i) {
        const int descriptor = descriptors[static_cast<size_t>(i)];
        const std::string name =
            i < 4 ? std::to_string(descriptor) : "/tmp/file" + std::to_string(i);
        EXPECT_EQ(line([=] { watched_close(descriptor); }), "close(" + name + ") = 0");
        EXPECT_EQ(line([=] { watched_flock(descriptor, LOCK_UN); }),
                  "flock(" + std::to_string(descriptor) + ", LOCK_UN) = -1 EBADF");
    }
    const std::string longest = "/tmp/" + std::string(42, 'q');
    const int known = watched_open(longest.c_str(), O_RDWR | O_CREAT, 0666);
    EXPECT_EQ(line([=] { watched_close(known); }), "close(" + longest + ") = 0");
    const std::string path = "/tmp/" + std::string(43, 'p');
    int descriptor = -1;
    const std::string opened =
        line([&] { descriptor = watched_open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0640); });
    EXPECT_EQ(opened, "open(\"" + path +
                          "\", O_RDWR|O_CREAT|O_TRUNC, 0640) = " + std::to_string(descriptor));
    EXPECT_EQ(line([=] { watched_lseek(descriptor, 4, SEEK_END); }),
              "lseek(" + std::to_string(descriptor) + ", 4, SEEK_END) = 4");
    watched_close(descriptor);
}

TEST_F(LibraryCallsLines, LeaveErrnoToTheLibrary)
{
    for (const bool trace_on : {false, true}) {
        watched({.trace = trace_on, .dry_run = !trace_on}, [] {
            errno = EDOM;
            const int descriptor = watched_open("/dev/fpga", O_RDONLY);
            EXPECT_EQ(errno, EDOM);
            EXPECT_EQ(watched_close(descriptor), 0);
            EXPECT_EQ(errno, EDOM);
            EXPECT_EQ(watched_open("/tmp/none", O_RDONLY), -1);
            EXPECT_EQ(errno, ENOENT);
            errno = EDOM;
            EXPECT_EQ(watched_puts("text"), 5);
            EXPECT_EQ(errno, EDOM);
            return 0;
        });
    }
}

// A request that nobody has described may change anything: a dry run does not send it.
TEST_F(LibraryCallsLines, OfARequestThatIsNotKnown)
{
    const int descriptor = watched_open("/dev/fpga", O_RDWR);
    board.restart();
    EXPECT_EQ(watched({.trace = true, .dry_run = true},
                      [=] { return watched_ioctl(descriptor, 0x6BFF, 0x1234UL); }),
              0);
    EXPECT_EQ(console, "not sent: ioctl(/dev/fpga, 0x6BFF, 0x00001234)\n");
    EXPECT_EQ(timeless(trace), (Trace{"ioctl(/dev/fpga, 0x6BFF, 0x00001234) = 0 not sent"}));
    EXPECT_EQ(board.calls, Trace{});
    watched_close(descriptor);
}

// Whole seconds count as well: the call returns in another second than it began in.
TEST_F(LibraryCallsLines, HaveTheirMicroseconds)
{
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_MONOTONIC, &time);
        return time;
    };
    board.before_call = [&](const std::string&) {
        for (const time_t begin = now().tv_sec; now().tv_sec == begin;) {
            usleep(1000);
        }
        usleep(3000);
    };
    const timespec begin = now();
    time_t time = 0;
    watched(kTrace, [&] { return watched_time(&time); });
    const timespec end = now();
    board.before_call = nullptr;
    const long all = (end.tv_sec - begin.tv_sec) * 1000000 + (end.tv_nsec - begin.tv_nsec) / 1000;
    ASSERT_EQ(trace.size(), 1U);
    const long shown = std::stol(trace[0].substr(trace[0].rfind("  ") + 2));
    EXPECT_LE(shown, all);
    EXPECT_GE(shown, std::max(all - 500000, 3000L)); // however busy the machine is
}

// errno means nothing where a call succeeds.
TEST_F(LibraryCallsLines, NameNoErrorOfACallThatSucceeds)
{
    board.file_put("/tmp/serialno", "123456789");
    board.file_put("/tmp/mtu_datasize", Bytes(20, '\x02'));
    board.before_call = [](const std::string&) { errno = ENOMEM; };
    for (const DeviceCommandCode number : {RD_DEVICE_WORD_03, RD_SERIAL_NUMBER, RD_MTU_DATASIZE}) {
        alignas(8) char record[kRecordMax] = {};
        EXPECT_EQ(command({.trace = true, .listener = true}, number, record), 0);
        for (const std::string& text : timeless(trace)) {
            EXPECT_EQ(text.find("ENOMEM"), std::string::npos) << text;
        }
        for (const Told& answer : told) {
            EXPECT_EQ(answer.error, 0);
        }
        EXPECT_EQ(told.size(), number == RD_DEVICE_WORD_03 ? 1U : 0U);
    }
    board.before_call = nullptr;
}

// The names on the left of a list of renamed calls.
std::set<std::string> calls_in(const std::string& path, const std::string& prefix)
{
    std::ifstream file(std::string(MAINT_SOURCE_DIR) + "/" + path);
    std::set<std::string> calls;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const std::string call = line.substr(0, line.find(' '));
        EXPECT_TRUE(call == "main" || line == call + " " + prefix + call) << line;
        calls.insert(call);
    }
    return calls;
}

TEST(LibraryCallsNames, AreThoseThatTheBoardAnswers)
{
    std::set<std::string> board = calls_in("tests/board/calls.syms", "board_");
    EXPECT_EQ(board.erase("main"), 1U);
    EXPECT_EQ(calls_in("tools/maintctl/library_calls.syms", "watched_"), board);
}

} // namespace
