// What maintsim's verbs say, do and refuse.
#include "tools/maintsim/verbs.h"

#include <fcntl.h>

#include <csignal>

#include "sim/unit_fixture.h"

namespace
{

class Verbs : public UnitTest
{
  protected:
    // Runs a verb on a unit; what it said is in `out` and `err`.
    int run(const char* name, std::vector<std::string> words, const std::string& path)
    {
        std::vector<char*> pointers;
        pointers.reserve(words.size());
        for (std::string& word : words) {
            pointers.push_back(word.data());
        }
        const Verb* verb = verb_find(name);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = verb == nullptr ? -1 : verb->run(path, pointers);
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
        return status;
    }
    int run(const char* name, const std::vector<std::string>& words = {})
    {
        return run(name, words, folder);
    }

    void expect_refused(const char* name, const std::vector<std::string>& words,
                        const std::string& line, int status = kWrongCall)
    {
        EXPECT_EQ(run(name, words), status) << line;
        EXPECT_EQ(err, "maintsim: " + line + "\n");
        EXPECT_EQ(out, "");
    }

    // The paths in a folder, one behind the other.
    static std::string tree(const std::string& path)
    {
        std::set<std::string> paths;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
            if (!entry.is_directory()) {
                paths.insert(entry.path().string().substr(path.size() + 1));
            }
        }
        std::string text;
        for (const std::string& name : paths) {
            text += name + " ";
        }
        return text;
    }

    std::string out;
    std::string err;
};

TEST_F(Verbs, AreThese)
{
    for (const char* name :
         {"new", "show", "set", "fail", "calls", "power-cycle", "warm-restart"}) {
        const Verb* verb = verb_find(name);
        ASSERT_NE(verb, nullptr) << name;
        const std::string help = verb->help;
        EXPECT_TRUE(help.starts_with("NAME\n    maintsim " + std::string(name) + " - ")) << help;
        EXPECT_NE(help.find("\nEXAMPLE\n    maintsim -u unit " + std::string(name)),
                  std::string::npos);
        for (size_t begin = 0, end = 0; (end = help.find('\n', begin)) != std::string::npos;
             begin = end + 1) {
            EXPECT_LE(end - begin, 80U);
        }
    }
    EXPECT_EQ(verb_find("news"), nullptr);
    EXPECT_EQ(verb_find(""), nullptr);
}

TEST_F(Verbs, NewMakesAUnitBeforeItsFirstStart)
{
    const std::string path = top + "/made";
    EXPECT_EQ(run("new", {}, path + "/"), 0) << err;
    EXPECT_EQ(out + err, "");
    EXPECT_EQ(tree(path), "files/conf/config files/conf/statistics files/conf/user.log "
                          "files/dev/mtd_systemlog files/tmp/ks8995_nor.dat "
                          "files/tmp/ks8995_pri.dat files/tmp/mtu_datasize files/tmp/serialno "
                          "files/tmp/vornapppoe.mtu journal made state unit ");
    EXPECT_EQ(content(path + "/files/dev/mtd_systemlog").size(), 12U + 640 * 100);
    EXPECT_EQ(content(path + "/files/tmp/serialno"), "A00000001");
    EXPECT_TRUE(
        content(path + "/files/conf/config").starts_with("OWN_VPN_ID='12'\nWAN_TYPE='5'\n"));
    EXPECT_EQ(run("show", {"word.0x6B29"}, path), 0);
    EXPECT_EQ(out, "word.0x6B29=0x0001\n");
    EXPECT_EQ(run("show", {"rtc.runs"}, path), 0);
    EXPECT_EQ(out, "rtc.runs=1\n");
    // Its clock shows the local time.
    EXPECT_EQ(run("show", {"rtc.time"}, path), 0);
    const time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    char day[32];
    strftime(day, sizeof day, "rtc.time=%Y-%m-%dT%H:", &local);
    EXPECT_TRUE(out.starts_with(day)) << out;
}

TEST_F(Verbs, NewMakesABlankUnit)
{
    const std::string path = top + "/made";
    EXPECT_EQ(run("new", {"--blank"}, path), 0) << err;
    EXPECT_EQ(tree(path), "files/dev/mtd_systemlog journal made state unit ");
    EXPECT_EQ(content(path + "/files/dev/mtd_systemlog"), std::string(100012, '\xFF'));
    EXPECT_EQ(run("show", {"0x6B29"}, path), kFailed);
    EXPECT_EQ(err, "maintsim: no item has \"0x6B29\" in it\n");
    EXPECT_EQ(run("show", {}, path), 0);
    EXPECT_TRUE(out.starts_with("device_info=0000000000000000\nown_address=00000000\n"));
}

TEST_F(Verbs, NewTakesFiles)
{
    content_put(top + "/image", "an image");
    content_put(top + "/config", "OWN_VPN_ID='7'\n");
    const std::string path = top + "/made";
    EXPECT_EQ(run("new", {"--image", top + "/image", "--config=" + top + "/config"}, path), 0)
        << err;
    EXPECT_EQ(content(path + "/files/dev/mtd_systemlog"), "an image");
    EXPECT_EQ(content(path + "/files/conf/config"), "OWN_VPN_ID='7'\n");
    // A file that is named counts more than what a snapshot tells of it.
    content_put(top + "/snapshot", "{\"snapshot\":1}\n{\"config\":{\"OWN_VPN_ID\":\"3\"}}\n");
    EXPECT_EQ(run("new", {"--snapshot", top + "/snapshot"}, top + "/third"), 0) << err;
    EXPECT_EQ(content(top + "/third/files/conf/config"), "OWN_VPN_ID='3'\n");
    EXPECT_EQ(
        run("new", {"--config", top + "/config", "--snapshot", top + "/snapshot"}, top + "/fourth"),
        0)
        << err;
    EXPECT_EQ(content(top + "/fourth/files/conf/config"), "OWN_VPN_ID='7'\n");
}

TEST_F(Verbs, NewRefuses)
{
    expect_refused("new", {}, folder + ": exists already", kFailed);
    expect_refused("new", {"word"}, "a word too many: word");
    expect_refused("new", {"--blank", "--blank"}, "--blank is given twice");
    expect_refused("new", {"--blank=1"}, "--blank takes no value");
    expect_refused("new", {"--image"}, "--image needs a value");
    expect_refused("new", {"--image="}, "--image needs a value");
    expect_refused("new", {"--imag=x"}, "no such option: --imag=x");
    const std::string path = top + "/made";
    EXPECT_EQ(run("new", {"--image", top + "/nowhere"}, path), kFailed);
    EXPECT_EQ(err, "maintsim: " + top + "/nowhere: No such file or directory\n");
    EXPECT_EQ(run("new", {"--config", top}, path), kFailed);
    EXPECT_EQ(err, "maintsim: " + top + ": Is a directory\n");
    EXPECT_EQ(run("new", {"--snapshot", "/dev/null"}, path), kFailed);
    EXPECT_EQ(err, "maintsim: /dev/null: not a snapshot\n");
    EXPECT_EQ(run("new", {}, top + "/nowhere/unit"), kFailed);
    EXPECT_EQ(err, "maintsim: " + top + "/nowhere/unit: No such file or directory\n");
    // Nothing is left of any of them.
    for (const auto& entry : std::filesystem::directory_iterator(top)) {
        EXPECT_EQ(entry.path(), folder);
    }
    std::filesystem::create_directory(path);
    EXPECT_EQ(run("new", {}, path), 0) << err; // it is empty
}

TEST_F(Verbs, SetChangesWhatShowShows)
{
    EXPECT_EQ(run("set", {"register.0x0158=0x0020", "phy.3.1=0x782D", "counter.3.32=17"}), 0);
    EXPECT_EQ(out + err, "");
    EXPECT_EQ(run("show", {"0x0158"}), 0);
    EXPECT_EQ(out, "register.0x0158=0x0020\n");
    EXPECT_EQ(run("show", {"phy.3.1="}), 0);
    EXPECT_EQ(out, "phy.3.1=0x782D\n");
    EXPECT_EQ(run("show"), 0);
    EXPECT_NE(out.find("\ncounter.3.32=17\n"), std::string::npos);
}

TEST_F(Verbs, SetRefuses)
{
    expect_refused("set", {}, "ITEM=VALUE is missing");
    expect_refused("set", {"word.0x6B29=1", "word.0x6B29=x"}, "word.0x6B29=x: not a number: x");
    expect_refused("set", {"--force"}, "no such option: --force");
    EXPECT_EQ(run("set", {"word.0x6B29=1"}, top + "/nowhere"), kFailed);
    EXPECT_EQ(err, "maintsim: " + top + "/nowhere: no simulated unit; `new` makes one\n");
    EXPECT_EQ(run("show", {"word"}), kFailed); // and nothing was set
}

TEST_F(Verbs, FailLetsRequestsFail)
{
    EXPECT_EQ(run("fail", {"0x6B84"}), 0) << err;
    EXPECT_EQ(run("show", {"fail."}), 0);
    EXPECT_EQ(out, "fail.0x6B84=1,1,EIO\n");
    Unit* unit = open(folder);
    errno = 0;
    EXPECT_EQ(number_write(unit, 1, 1), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(number_write(unit, 1, 1), 0);
    EXPECT_EQ(run("fail", {"--nth=2", "0x6B84", "--for", "0", "--errno", "EBUSY"}), 0) << err;
    EXPECT_EQ(number_write(unit, 1, 77), 0);
    errno = 0;
    EXPECT_EQ(number_write(unit, 1, 1), -1);
    EXPECT_EQ(errno, EBUSY);
    EXPECT_EQ(number_write(unit, 1, 1), -1);
    EXPECT_EQ(number_read(unit, 1), 77U); // the first one has reached the device, and no other
    EXPECT_EQ(run("set", {"fail.0x6B84=0"}), 0) << err;
    EXPECT_EQ(number_write(unit, 1, 1), 0);
    unit_close(unit);
}

TEST_F(Verbs, FailTakesTheNameOfARequest)
{
    EXPECT_EQ(run("fail", {"register-read"}), 0) << err;
    EXPECT_EQ(run("fail", {"clock-time-write"}), 0) << err;
    EXPECT_EQ(run("fail", {"LED register A read"}), 0) << err;
    EXPECT_EQ(run("show", {"fail."}), 0);
    EXPECT_EQ(out, "fail.0x6B0F=1,1,EIO\nfail.0x6B42=1,1,EIO\nfail.0x4024700A=1,1,EIO\n");
    expect_refused("fail", {"register"}, "no such request: register");
    expect_refused("fail", {""}, "no such request: ");
}

TEST_F(Verbs, FailRefuses)
{
    expect_refused("fail", {}, "REQUEST is missing");
    expect_refused("fail", {"0x6B42", "0x6B43"}, "a word too many: 0x6B43");
    expect_refused("fail", {"0x6B00"}, "no such request: 0x6B00");
    expect_refused("fail", {"0x6B42", "--nth", "0"}, "--nth 0: the first that fails is 1 or above");
    expect_refused("fail", {"0x6B42", "--nth", "x"}, "--nth x: not a number: x");
    expect_refused("fail", {"0x6B42", "--for", "-1"}, "--for -1: not a number: -1");
    expect_refused("fail", {"0x6B42", "--errno", "EFOO"}, "--errno EFOO: no such error: EFOO");
    expect_refused("fail", {"0x6B42", "--nth=2", "--for=3", "--errno=E\n"},
                   "--errno E?: no such error: E?");
    EXPECT_EQ(run("show", {"fail."}), kFailed) << out; // none of them did anything
}

// A line of `calls` without the time and the process.
std::string call_of(const std::string& line)
{
    const size_t number = line.find(' ');
    const size_t time = line.find(' ', number + 1);
    const size_t process = line.find(' ', time + 1);
    return line.substr(0, number) + line.substr(process);
}

TEST_F(Verbs, CallsAreTold)
{
    Unit* unit = open(folder);
    unit_opened(unit, UnitDevice::kFpga, O_RDWR | O_NONBLOCK);
    uint32_t record[2] = {0x158, 0x20};
    request(unit, 0x6B43, record);
    record[1] = 0;
    request(unit, 0x6B42, record);
    unit_request(unit, UnitDevice::kFpga, 0x6B04, 0x1234);
    unit_request(unit, UnitDevice::kRtc, 0x1234, 5);
    unit_closed(unit, UnitDevice::kFpga);
    unit_close(unit);
    EXPECT_EQ(run("set", {"word.0x6B29=1", "fail.0x6BA2=1,1,EBUSY"}), 0);
    unit = open(folder);
    unit_request(unit, UnitDevice::kFpga, 0x6BA2, 0);
    unit_close(unit);
    EXPECT_EQ(run("calls"), 0);
    EXPECT_EQ(err, "");
    std::string told;
    std::string first = out.substr(0, out.find('\n'));
    for (size_t begin = 0, end = 0; (end = out.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        told += call_of(out.substr(begin, end - begin)) + "\n";
    }
    EXPECT_EQ(
        told,
        "1 simulated_unit_: open /dev/fpga O_RDWR|O_NONBLOCK\n"
        "2 simulated_unit_: ioctl /dev/fpga 6B43 (register write) 58 01 00 00 20 00 00 00 -> 0\n"
        "3 simulated_unit_: ioctl /dev/fpga 6B42 (register read) 58 01 00 00 00 00 00 00 -> 0 58 "
        "01 "
        "00 00 20 "
        "00 00 00\n"
        "4 simulated_unit_: ioctl /dev/fpga 6B04 (word 03 write) =1234 -> 0\n"
        "5 simulated_unit_: ioctl /dev/rtc 1234 unknown -> -1 ENOTTY\n"
        "6 simulated_unit_: close /dev/fpga\n"
        "7 simulated_unit_: set word.0x6B29=1 fail.0x6BA2=1,1,EBUSY\n"
        "8 simulated_unit_: ioctl /dev/fpga 6BA2 (driver state read) -> -1 EBUSY\n");
    // "1 2026-11-21T10:20:30.123456 4711 simulated_unit_: ..."
    EXPECT_EQ(first.find('T'), 12U) << first;
    EXPECT_EQ(first.substr(29, first.find(" simulated") - 29), std::to_string(getpid())) << first;
}

TEST_F(Verbs, CallsNameTheFlagsOfAnOpening)
{
    Unit* unit = open(folder);
    const int flags[] = {O_RDONLY, O_WRONLY | O_CREAT | O_EXCL | O_TRUNC,
                         O_RDWR | O_APPEND | O_SYNC | O_CLOEXEC, O_RDONLY | O_DSYNC | O_NOFOLLOW,
                         O_RDONLY | O_NOCTTY | O_NONBLOCK};
    for (const int of_one : flags) {
        unit_opened(unit, UnitDevice::kFpga, of_one);
    }
    unit_close(unit);
    EXPECT_EQ(run("calls"), 0);
    const std::string unnamed = std::to_string(O_DSYNC);
    for (const std::string& named :
         {std::string("O_RDONLY"), std::string("O_WRONLY|O_CREAT|O_EXCL|O_TRUNC"),
          std::string("O_RDWR|O_APPEND|O_SYNC|O_CLOEXEC"), "O_RDONLY|O_NOFOLLOW|" + unnamed,
          std::string("O_RDONLY|O_NONBLOCK|O_NOCTTY")}) {
        EXPECT_NE(out.find(": open /dev/fpga " + named + "\n"), std::string::npos) << named << out;
    }
}

TEST_F(Verbs, CallsAreToldAsJson)
{
    Unit* unit = open(folder);
    unit_opened(unit, UnitDevice::kRtc, O_RDONLY);
    uint32_t record[2] = {0x158, 0};
    request(unit, 0x6B42, record);
    unit_request(unit, UnitDevice::kFpga, 0x6B04, 0x1234);
    std::string error;
    unit_put(unit, {"fail.0x6BA2=1,1,EBUSY", "register.0x0158=1"}, error);
    request(unit, 0x6B42, record);
    unit_request(unit, UnitDevice::kFpga, 0x6BA2, 0);
    unit_closed(unit, UnitDevice::kRtc);
    unit_close(unit);
    EXPECT_EQ(run("calls", {"--json"}), 0);
    std::string told;
    for (size_t begin = 0, end = 0; (end = out.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        const std::string line = out.substr(begin, end - begin);
        EXPECT_TRUE(line.starts_with("{\"sequence\":")) << line;
        const std::string caller = ",\"process\":" + std::to_string(getpid()) +
                                   ",\"program\":\"simulated_unit_\",\"call\":";
        EXPECT_NE(line.find(caller), std::string::npos) << line;
        told += line.substr(line.find("\"call\"")) + "\n";
    }
    EXPECT_EQ(told, "\"call\":\"open\",\"device\":\"/dev/rtc\",\"flags\":\"O_RDONLY\"}\n"
                    "\"call\":\"ioctl\",\"device\":\"/dev/"
                    "fpga\",\"request\":\"0x6B42\",\"name\":\"register read\","
                    "\"record\":\"5801000000000000\",\"result\":0}\n"
                    "\"call\":\"ioctl\",\"device\":\"/dev/"
                    "fpga\",\"request\":\"0x6B04\",\"name\":\"word 03 write\",\"value\":4660,"
                    "\"result\":0}\n"
                    "\"call\":\"set\",\"items\":\"fail.0x6BA2=1,1,EBUSY register.0x0158=1\"}\n"
                    "\"call\":\"ioctl\",\"device\":\"/dev/"
                    "fpga\",\"request\":\"0x6B42\",\"name\":\"register read\","
                    "\"record\":\"5801000000000000\",\"result\":0,\"after\":\"5801000001000000\"}\n"
                    "\"call\":\"ioctl\",\"device\":\"/dev/"
                    "fpga\",\"request\":\"0x6BA2\",\"name\":\"driver state read\",\"result\":-1,"
                    "\"errno\":\"EBUSY\"}\n"
                    "\"call\":\"close\",\"device\":\"/dev/rtc\"}\n");
}

// The name of a program is its own; what is told of it is one line, and JSON.
TEST_F(Verbs, CallsTellAnyNameOfAProgram)
{
    char* const before = program_invocation_short_name;
    char name[] = "a\"\\\xE4\x01\nb";
    program_invocation_short_name = name;
    Unit* unit = open(folder);
    unit_opened(unit, UnitDevice::kFpga, O_RDONLY);
    unit_close(unit);
    program_invocation_short_name = before;
    EXPECT_EQ(run("calls", {"--json"}), 0);
    EXPECT_NE(out.find(",\"program\":\"a\\\"\\\\\\u00e4\\u0001\\u000ab\","), std::string::npos)
        << out;
    EXPECT_EQ(run("calls"), 0);
    EXPECT_NE(out.find(" a\"\\???b: open /dev/fpga"), std::string::npos) << out;
}

TEST_F(Verbs, CallsAreFollowed)
{
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    const pid_t process = start([&] {
        dup2(pipes[1], STDOUT_FILENO);
        dup2(pipes[1], STDERR_FILENO); // nothing is noted in between
        close(pipes[0]);
        char word[] = "--follow";
        char* words[] = {word};
        return verb_find("calls")->run(folder, Words(words, 1));
    });
    close(pipes[1]);
    Unit* unit = open(folder);
    FILE* told = fdopen(pipes[0], "r");
    char line[256];
    for (uint32_t i = 1; i <= 5; ++i) {
        number_write(unit, 1, i);
        ASSERT_NE(fgets(line, sizeof line, told), nullptr);
        EXPECT_TRUE(std::string(line).starts_with(std::to_string(i) + " ")) << line;
    }
    fclose(told); // and it ends, since nobody reads: without a further call, too
    const int status = end(process);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGPIPE) << status;
    unit_close(unit);
}

TEST_F(Verbs, PowerCycleLosesAndKeeps)
{
    const std::string path = top + "/made";
    ASSERT_EQ(run("new", {}, path), 0) << err;
    const std::string files = path + "/files";
    content_put(files + "/conf/system.log", "log");
    content_put(files + "/tmp/flashsave", "1");
    content_put(files + "/tmp/led_rewrite_inh", "x");
    std::filesystem::create_directories(files + "/tmp/Saveing/folder");
    content_put(files + "/tmp/Saveing/folder/file", "x");
    content_put(files + "/conf/user.log", "kept");
    ASSERT_EQ(run("set",
                  {"word.0x6B29=9", "register.0x0999=1", "answer.0x6B02=-2", "filled.0x6B03=4",
                   "fail.0x6B07=9,1,EIO", "rtc.time=2001-02-03T04:05:06", "rtc.runs=0",
                   "clock.difference=5", "fills_when_failing=1"},
                  path),
              0)
        << err;
    EXPECT_EQ(run("power-cycle", {}, path), 0) << err;
    EXPECT_EQ(tree(files), "conf/config conf/statistics conf/user.log dev/mtd_systemlog "
                           "tmp/ks8995_nor.dat tmp/ks8995_pri.dat tmp/serialno ");
    EXPECT_EQ(content(files + "/conf/user.log"), "kept");
    EXPECT_EQ(run("show", {}, path), 0);
    EXPECT_FALSE(std::filesystem::exists(files + "/tmp/Saveing"));
    for (const char* item :
         {"word.0x6B29=0x0001", "answer.0x6B02=-2", "filled.0x6B03=4", "fills_when_failing=1",
          "fail.0x6B07=9,1,EIO", "rtc.time=2001-02-03T04:05:06"}) {
        EXPECT_NE(out.find("\n" + std::string(item) + "\n"), std::string::npos) << item;
    }
    EXPECT_EQ(out.find("register.0x0999"), std::string::npos);
    // The system clock starts with the clock's time.
    Unit* unit = open(path);
    tm local{};
    local.tm_year = 101;
    local.tm_mon = 1;
    local.tm_mday = 3;
    local.tm_hour = 4;
    local.tm_min = 5;
    local.tm_sec = 6;
    local.tm_isdst = -1;
    const int64_t difference = int64_t{mktime(&local)} - time(nullptr);
    EXPECT_LE(std::abs(unit_clockDifference(unit) / 1000000000 - difference), 1);
    EXPECT_EQ(calls(unit).back().before, "power-cycle");
    unit_close(unit);
}

// The unit's clock holds the local time, in summer the summer's.
TEST_F(Verbs, RestartsSetTheSystemClockByTheLocalTime)
{
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    const struct {
        const char* item;
        int64_t seconds; // since 1970; 0: the machine's clock
    } times[] = {{"rtc.time=2001-01-03T04:05:06", 978491106},
                 {"rtc.time=2001-07-03T04:05:06", 994125906},
                 {"rtc.time=1960-01-01T00:00:00", 0}};
    for (const auto& [item, seconds] : times) {
        ASSERT_EQ(run("set", {"rtc.runs=0", item, "clock.difference=5"}), 0) << err;
        EXPECT_EQ(run("warm-restart"), 0) << err;
        Unit* unit = open(folder);
        const int64_t difference = seconds == 0 ? 0 : seconds - time(nullptr);
        EXPECT_LE(std::abs(unit_clockDifference(unit) / 1000000000 - difference), 1) << item;
        unit_close(unit);
    }
    unsetenv("TZ");
    tzset();
}

TEST_F(Verbs, WarmRestartLosesNothing)
{
    const std::string path = top + "/made";
    ASSERT_EQ(run("new", {}, path), 0) << err;
    content_put(path + "/files/conf/system.log", "log");
    content_put(path + "/files/tmp/flashsave", "1");
    ASSERT_EQ(run("set",
                  {"word.0x6B29=9", "clock.difference=99", "rtc.runs=0",
                   "rtc.time=1,2,3,4,5,600000,7,8,9"},
                  path),
              0)
        << err;
    EXPECT_EQ(run("show", {}, path), 0);
    std::string before = out;
    const std::string files = tree(path + "/files");
    EXPECT_EQ(run("warm-restart", {}, path), 0) << err;
    EXPECT_EQ(tree(path + "/files"), files);
    EXPECT_EQ(run("show", {}, path), 0);
    // A clock without a time leaves the machine's.
    before.replace(before.find("difference=99"), 13, "difference=0");
    EXPECT_EQ(out, before);
    expect_refused("warm-restart", {"now"}, "a word too many: now");
}

} // namespace
