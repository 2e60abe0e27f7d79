// A dry run: nothing that changes a device or a file is done, and all of it is shown.
#include "maint/system_log.h"
#include "tools/library_calls_fixture.h"

namespace
{

// The requests that change a device, from the driver's description; the last two are the clock's.
const Requests kChanging = {
    0x6B04, 0x6B08, 0x6B0A, 0x6B0C, 0x6B10, 0x6B12,     0x6B22,    0x6B24, 0x6B28, 0x6B2A, 0x6B2E,
    0x6B36, 0x6B3A, 0x6B41, 0x6B43, 0x6B49, 0x6B4B,     0x6B50,    0x6B52, 0x6B5D, 0x6B5F, 0x6B61,
    0x6B62, 0x6B63, 0x6B68, 0x6B69, 0x6B6B, 0x6B6F,     0x6B70,    0x6B71, 0x6B73, 0x6B74, 0x6B77,
    0x6B78, 0x6B79, 0x6B7A, 0x6B84, 0x6B86, 0x6B88,     0x6B8E,    0x6B99, 0x6B9A, 0x6B9B, 0x6B9C,
    0x6B9F, 0x6BA0, 0x6BA1, 0x6BA4, 0x6BA6, 0x40047014, 0x4024700A};

class LibraryCallsDry : public LibraryCallsTest
{
  protected:
    void SetUp() override { board.file_put("/dev/null", ""); }

    // The requests that the board has seen, the clock's as well.
    [[nodiscard]] Requests requests_sent() const
    {
        Requests requests;
        for (const std::string& call : board.calls) {
            const size_t number = call.rfind("ioctl /dev/rtc ", 0) == 0   ? 15
                                  : call.rfind("ioctl (closed) ", 0) == 0 ? 15
                                                                          : 6;
            if (starts(call, "ioctl ")) {
                requests.insert(
                    static_cast<uint32_t>(std::stoul(call.substr(number), nullptr, 16)));
            }
        }
        return requests;
    }

    // Makes a trial as a dry run. What was not sent and not done is added to the sets.
    void check(const CommandFacts& facts, const Trial& trial, Requests& requests,
               std::set<std::string>& calls)
    {
        std::string devices;
        std::map<std::string, Bytes> files;
        const Outcome outcome = make(trial, [&](uint32_t number, void* record) {
            devices = devices_text(board);
            files = files_of(board);
            return command({.dry_run = true}, number, record);
        });
        EXPECT_EQ(facts.results.count(outcome.result), 1U) << outcome.result;
        EXPECT_EQ(devices_text(board), devices);
        EXPECT_EQ(files_of(board), files);
        for (const uint32_t sent : requests_sent()) {
            EXPECT_EQ(kChanging.count(sent), 0U) << hex_number(sent);
        }
        for (const std::string& call : board.calls) {
            for (const char* never : {"unlink ", "write ", "fwrite ", "fprintf ", "stime ",
                                      "sleep ", "usleep ", "puts ", "printf "}) {
                EXPECT_FALSE(starts(call, never)) << call;
            }
        }
        for (const std::string& line : shown()) {
            if (starts(line, "not sent: ioctl(/dev/")) {
                const auto number = static_cast<uint32_t>(
                    std::stoul(line.substr(line.find(", 0x") + 2), nullptr, 16));
                EXPECT_EQ(kChanging.count(number), 1U) << line;
                requests.insert(number);
            } else {
                EXPECT_TRUE(starts(line, "not done: ")) << line;
                const std::string call = line.substr(10, line.find('(') - 10);
                calls.insert(call == "stime" ? "clock_settime" : call); // as the C library has it
            }
        }
        EXPECT_EQ(held, shown().size());
    }

    // What was held back, as it was shown; other lines are the library's own.
    [[nodiscard]] Trace shown() const
    {
        Trace lines = lines_of(console);
        std::erase_if(lines, [](const std::string& line) {
            return !starts(line, "not sent: ") && !starts(line, "not done: ");
        });
        return lines;
    }
};

// As many records and states as it takes to reach all that each command would change.
TEST_F(LibraryCallsDry, ChangesNoDeviceAndNoFileWhateverTheCommand)
{
    constexpr uint32_t kDraws = 4000;
    Requests all_held;
    std::set<std::string> calls_held;
    for (const CommandFacts& facts : commandFacts_get()) {
        SCOPED_TRACE(command_name(facts.number));
        Requests changing;
        std::set_intersection(facts.requests.begin(), facts.requests.end(), kChanging.begin(),
                              kChanging.end(), std::inserter(changing, changing.end()));
        Requests reached;
        for (uint32_t draw = 0; draw < 2 + share_of(18) || (draw < kDraws && reached != changing);
             ++draw) {
            check(facts, trial_draw(facts.number, facts.record), reached, calls_held);
            ASSERT_FALSE(HasFailure());
            all_held.insert(reached.begin(), reached.end());
            std::erase_if(reached, [](uint32_t request) { return request > UINT16_MAX; });
        }
        EXPECT_EQ(difference_of(changing, reached), "");
    }
    EXPECT_EQ(difference_of(kChanging, all_held), "");
    if (kLoopShare.roundsPerRound != 1) {
        return; // too few draws for all the files
    }
    EXPECT_EQ(calls_held, (std::set<std::string>{"clock_settime", "fopen", "fwrite", "open",
                                                 "unlink", "write"}));
}

TEST_F(LibraryCallsDry, ShowsWhatItDoesNotSend)
{
    board.fpga.registers[0x158] = 0x0001;
    uint8_t flag = 1;
    EXPECT_EQ(command({.dry_run = true}, WR_REG158_BIT10, &flag), 0);
    EXPECT_EQ(console,
              "not sent: ioctl(/dev/fpga, 0x6B43 register write, address=0x0158 value=0x0401)\n");
    EXPECT_EQ(held, 1U);
    EXPECT_EQ(trace, Trace{});
    EXPECT_EQ(board.fpga.registers[0x158], 0x0001);

    uint16_t word = 0x1234;
    EXPECT_EQ(command({.trace = true, .dry_run = true}, WR_DEVICE_WORD_04, &word), 0);
    EXPECT_EQ(console, "not sent: ioctl(/dev/fpga, 0x6B04 word 03 write, 0x1234)\n");
    EXPECT_EQ(timeless(trace), (Trace{"open(\"/dev/fpga\", O_RDWR|O_NONBLOCK) = 1000000",
                                      "ioctl(/dev/fpga, 0x6B04 word 03 write, 0x1234) = 0 not sent",
                                      "close(/dev/fpga) = 0"}));
}

TEST_F(LibraryCallsDry, TellsTheListenerOnlyOfWhatIsSent)
{
    board.fpga.registers[0x158] = 0x0001;
    uint8_t flag = 1;
    EXPECT_EQ(command({.dry_run = true, .listener = true}, WR_REG158_BIT10, &flag), 0);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].request, 0x6B42U);
}

TEST_F(LibraryCallsDry, KeepsFilesAndClock)
{
    board.file_put("/tmp/mtu_datasize", "as it was");
    alignas(8) char sizes[20] = {};
    EXPECT_EQ(command({.trace = true, .dry_run = true}, WR_MTU_DATASIZE, sizes), 0);
    EXPECT_EQ(console, "not done: fopen(\"/tmp/mtu_datasize\", \"w+\")\n"
                       "not done: fwrite(/tmp/mtu_datasize, 1 x 20 bytes)\n");
    EXPECT_EQ(held, 2U);
    EXPECT_EQ(board.file_get("/tmp/mtu_datasize"), "as it was");
    const Trace lines = timeless(trace);
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_TRUE(starts(lines[3], "fopen(\"/tmp/mtu_datasize\", \"w+\") = ")) << lines[3];
    EXPECT_EQ(lines[3].substr(lines[3].size() - 9), " not done");
    EXPECT_EQ(lines[4], "fwrite(/tmp/mtu_datasize, 1 x 20 bytes) = 1 not done");
    EXPECT_EQ(lines[5], "fclose(/tmp/mtu_datasize) = 0");

    const Bytes log = hex("00 00 00 00 00 00 00 00 01 00 00 00");
    board.file_put("/conf/system.log", log);
    EXPECT_EQ(watched({.trace = true, .dry_run = true}, [] { return systemLog_put("text"); }), 0);
    EXPECT_EQ(console, "not done: fprintf(/conf/system.log, \"2006/03/01 09:05:07 text" +
                           std::string(75, ' ') +
                           "\\n\")\nnot done: fwrite(/conf/system.log, 1 x 12 bytes)\n");
    EXPECT_EQ(trace.at(5).substr(trace[5].find(" = ")).substr(0, 16), " = 100 not done ");
    EXPECT_EQ(board.file_get("/conf/system.log"), log);

    const time_t now = board.now;
    uint16_t rtc[7] = {2007, 2, 3, 4, 5, 6, 0};
    EXPECT_EQ(command({.dry_run = true}, WR_RTC_TIME, rtc), 0);
    EXPECT_EQ(board.now, now);
    const Trace held_lines = shown();
    ASSERT_EQ(held_lines.size(), 2U);
    EXPECT_EQ(held_lines[0],
              "not sent: ioctl(/dev/rtc, 0x4024700A clock time write, second=6 minute=5 "
              "hour=4 day=3 month=1 year=107)");
    EXPECT_EQ(held_lines[1].substr(held_lines[1].find('(')), "(1170475506)");
}

// The file of the save lock is made all the same: it is only there to be locked.
TEST_F(LibraryCallsDry, TakesTheSaveLock)
{
    board.file_put("/conf/config", "WAN_TYPE='5'\n");
    alignas(8) char record[6] = {};
    command({.trace = true, .dry_run = true}, RD_MTU_LIMIT, record);
    EXPECT_TRUE(board.file_exists("/tmp/Saveing"));
    EXPECT_NE(std::find(board.calls.begin(), board.calls.end(), "flock /tmp/Saveing LOCK_EX"),
              board.calls.end());
    EXPECT_EQ(console, "");
    EXPECT_EQ(held, 0U);
}

TEST_F(LibraryCallsDry, DoesNotWait)
{
    board.fpga.results[0x6B88] = 0;
    alignas(8) char record[12] = {5, 0, 0, 0, 1};
    command({.trace = true, .dry_run = true}, WR_PHY_CONFIG, record);
    const Trace lines = timeless(trace);
    EXPECT_NE(std::find(lines.begin(), lines.end(), "sleep(1) = 0 not done"), lines.end());
    for (const std::string& call : board.calls) {
        EXPECT_EQ(call.find("sleep"), std::string::npos) << call;
    }
}

} // namespace
