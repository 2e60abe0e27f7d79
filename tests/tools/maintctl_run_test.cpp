// Device commands by maintctl: what is shown of them, scripts, and --watch.
#include <algorithm>
#include <csignal>
#include <fstream>

#include "board/share.h"
#include "catalogue/catalogue.h"
#include "tools/json_value.h"
#include "tools/maintctl_call.h"
#include "tools/maintctl_unit_fixture.h"

namespace
{

class Run : public MaintctlUnit
{
  protected:
    Run() : path(testing::TempDir() + "maintctl_run." + std::to_string(getpid())) {}
    ~Run() override { unlink(path.c_str()); }

    Said script(const std::string& options, const std::string& text) const
    {
        std::ofstream(path, std::ios::binary) << text;
        return maintctl(options + " run " + path);
    }

    // Runs until this round of the clock's time, at whose beginning Ctrl-C comes.
    Said watched(const std::string& call, unsigned last_round)
    {
        unsigned round = 0;
        board.before_call = [&](const std::string& text) {
            if (text.starts_with("open /dev/rtc")) {
                board.rtc.time[0] = static_cast<int32_t>(7 + round / 2);
                if (++round == last_round) {
                    raise(SIGINT);
                }
            }
        };
        Said said = maintctl(call);
        board.before_call = nullptr;
        EXPECT_EQ(round, last_round);
        return said;
    }

    const std::string path;
};

constexpr const char* kTime = "year=2006\nmonth=3\nday=1\nhour=9\nminute=5\nsecond=7\nweekday=3\n";

TEST_F(Run, AReportIsALineForEachField)
{
    Said said = maintctl("RD_RTC_TIME");
    EXPECT_EQ(said.out, kTime);
    EXPECT_EQ(said.err, "");
    EXPECT_EQ(said.status, 0);
    EXPECT_EQ(libraryCalls_get(), nullptr); // `out` and `err` may be closed now
    said = maintctl("-x rd_rtc_time");
    EXPECT_EQ(said.out, "record=d60703000100090005000700"
                        "0300\n");
    EXPECT_EQ(said.status, 0);
    said = maintctl("RD_PHY_REGISTER port=5 number=1");
    EXPECT_EQ(said.out, "value=0x0004\n");
    said = maintctl("RD_PHY_REGISTER -x record=050000000100");
    EXPECT_EQ(said.out, "record=0500000001000400\n");
}

TEST_F(Run, AReportInJsonIsAnObject)
{
    const Said said = maintctl("-j 0x600 port=5 number=1");
    EXPECT_EQ(said.out, R"({"command":"RD_PHY_REGISTER","code":1536,"result":0,)"
                        R"("record":"0500000001000400",)"
                        R"("fields":{"port":5,"number":1,"value":4}})"
                        "\n");
    EXPECT_EQ(said.err, "");
    EXPECT_EQ(said.status, 0);
}

// Values that a field does not take, as text; of an array one element.
std::vector<std::string> values_beside(const Field& field)
{
    // Of a number; the width of others is that of all their bytes.
    const uint64_t widest = (uint64_t{1} << 8 * std::min<unsigned>(field.width, 4)) - 1;
    std::vector<std::string> values{std::to_string(widest + 1), "-1"};
    switch (field.kind) {
    case Kind::kIpv4:
        return {"256.0.0.1", "1.2.3", "1.2.3.4.5"};
    case Kind::kAddress6:
        return {"02:00:00:00:00", "02:00:00:00:00:00:00", "100:00:00:00:00:00"};
    case Kind::kText:
        return {std::string(size_t{field.width} + 1, 'a')};
    case Kind::kBytes:
        return {std::string(2 * (size_t{field.width} + 1), 'a')};
    case Kind::kCode:
        for (uint32_t value = 0; value < 16; ++value) {
            const auto codes = field.codes();
            if (std::none_of(codes.begin(), codes.end(),
                             [=](const CodeName& code) { return code.code == value; })) {
                values.push_back(std::to_string(value));
            }
        }
        return values;
    default:
        if (field.least > 0) {
            values.push_back(std::to_string(field.least - 1));
        }
        values.push_back(std::to_string(uint64_t{field.most} + 1));
        return values;
    }
}

TEST_F(Run, AValueThatAFieldDoesNotTakeIsRefusedWithoutACall)
{
    size_t refused = 0;
    size_t number = 0;
    for (const CommandGroup* group : catalogue_get()) {
        for (const CommandDescription& command : group->commands) {
            for (size_t i = 0; i < command.fields().size(); ++i) {
                const Field& field = command.fields()[i];
                if (!field_in(command.in, i)) {
                    continue;
                }
                for (const std::string& value : values_beside(field)) {
                    if (number++ % kLoopShare.roundsPerRound != 0) {
                        continue;
                    }
                    const std::string name =
                        std::string(field.name) + (field.count > 1 ? "[0]" : "");
                    const std::string word = name + "=" + value;
                    const Said said = maintctl(Arguments{command.name, word});
                    EXPECT_EQ(said.status, 64) << command.name << ' ' << word;
                    EXPECT_EQ(said.out, "") << command.name << ' ' << word;
                    EXPECT_EQ(lines_of(said.err).size(), 1U) << said.err;
                    ++refused;
                }
            }
        }
    }
    EXPECT_EQ(board.calls, Trace{});
    EXPECT_GT(refused, 700U / kLoopShare.roundsPerRound);
}

TEST_F(Run, WhatIsReportedCanBeGivenToTheSetter)
{
    Said said = maintctl("RD_PHY_REGISTER port=5 number=1");
    board.fpga.phys[5][1] = 0;
    said = maintctl("WR_PHY_REGISTER port=5 number=1 " + said.out);
    EXPECT_EQ(said.out + said.err, "");
    EXPECT_EQ(said.status, 0);
    EXPECT_EQ(board.fpga.phys[5][1], 4);
}

TEST_F(Run, AFailureIsALineOnTheErrorOutput)
{
    board.rtc_present = false;
    Said said = maintctl("RD_RTC_TIME");
    EXPECT_EQ(said.out, "");
    EXPECT_EQ(said.err, "maintctl: RD_RTC_TIME: -1: the device cannot be opened\n");
    EXPECT_EQ(said.status, 1);
    said = maintctl("-j RD_RTC_STATUS");
    EXPECT_EQ(said.out, R"({"command":"RD_RTC_STATUS","code":514,"result":-1,)"
                        R"("record":"00000000","fields":{"value":0},)"
                        R"("error":"the device cannot be opened"})"
                        "\n");
    EXPECT_EQ(said.err, "");
    EXPECT_EQ(said.status, 1);
    board.rtc_present = true;
    board.rtc.result = -1;
    EXPECT_EQ(maintctl("WR_RTC_STATUS value=1").status, 4);
}

TEST_F(Run, AResultAboveZeroStandsFirst)
{
    Said said = maintctl("WR_LED_PATTERN_1");
    EXPECT_EQ(said.out + said.err, "");
    EXPECT_EQ(said.status, 0);
    said = maintctl("WR_LED_A ledA=on");
    EXPECT_EQ(said.out, "result=1\n");
    EXPECT_EQ(said.err,
              "maintctl: WR_LED_A: 1: recorded in the LED state file only, for WR_LED_RESTORE\n");
    EXPECT_EQ(said.status, 0);
    EXPECT_EQ(script("", "WR_LED_A ledA=on\n").out, "# WR_LED_A ledA=on\nresult=1\n");
    said = maintctl("-j WR_LED_A ledA=on");
    EXPECT_EQ(json_parse(lines_of(said.out).at(0))["result"].number, 1);
    EXPECT_EQ(said.out.find("\"error\""), std::string::npos);
    EXPECT_EQ(said.err, "");
}

TEST_F(Run, AWrongCallOpensNothing)
{
    for (const char* call :
         {"RD_RTC_TIME x", "WR_RTC_TIME month=13", "WR_LED_A ledA=7", "-w 2 WR_RTC_STATUS value=1",
          "-n WR_LED_A", "-t -x RD_PHY_STATUS port=1", "status x", "snapshot x"}) {
        EXPECT_EQ(maintctl(call).status, 64) << call;
    }
    EXPECT_EQ(script("", "WR_RTC_STATUS value=1\nWR_RTC_STATUS value=x\n").status, 64);
    EXPECT_EQ(board.calls, Trace{});
}

TEST_F(Run, ADryRunSaysWhatWasHeldBack)
{
    Said said = maintctl("-n WR_RTC_STATUS value=5");
    EXPECT_EQ(said.out, "");
    EXPECT_TRUE(said.err.ends_with("\nmaintctl: WR_RTC_STATUS: dry run: 1 call was held back\n"))
        << said.err;
    EXPECT_EQ(said.status, 0);
    EXPECT_EQ(board.rtc.status, 0x89ABCDEFU);
    said = maintctl("-n RD_RTC_STATUS");
    EXPECT_EQ(said.out, "value=0x89abcdef\n");
    EXPECT_EQ(said.err, "");
    board.rtc_present = false;
    said = maintctl("--dry-run WR_RTC_STATUS value=5");
    EXPECT_EQ(said.err, "maintctl: WR_RTC_STATUS: -1: the device cannot be opened\n"
                        "maintctl: WR_RTC_STATUS: dry run: nothing was to be changed\n");
    EXPECT_EQ(said.status, 1);
}

TEST_F(Run, AScriptRunsInOrder)
{
    const Said said = script("", "# sets the status\r\n"
                                 "\r\n"
                                 "WR_RTC_STATUS value=5 # five\r\n"
                                 "  rd_rtc_status\r\n"
                                 "RD_PHY_REGISTER 'port'=\"5\" number=1");
    EXPECT_EQ(said.out, "# rd_rtc_status\n"
                        "value=0x00000005\n"
                        "# RD_PHY_REGISTER port=5 number=1\n"
                        "value=0x0004\n");
    EXPECT_EQ(said.err, "");
    EXPECT_EQ(said.status, 0);
    EXPECT_EQ(board.rtc.status, 5U);
    // What a script reports is a script again
    EXPECT_EQ(script("-x", "RD_RTC_STATUS\n").out, "# RD_RTC_STATUS\nrecord=05000000\n");
}

TEST_F(Run, AScriptEndsAtItsFirstFailure)
{
    const std::string shown = path.size() > 60 ? path.substr(0, 60) + "..." : path;
    const std::string text = "RD_PHY_REGISTER\n\nRD_RTC_TIME\nWR_PHY_REGISTER value=1\n";
    board.rtc_present = false;
    Said said = script("", text);
    EXPECT_EQ(said.out, "# RD_PHY_REGISTER\nvalue=0x2100\n");
    EXPECT_EQ(said.err,
              "maintctl: " + shown + ":3: RD_RTC_TIME: -1: the device cannot be opened\n");
    EXPECT_EQ(said.status, 1);
    EXPECT_EQ(board.fpga.phys[9][0], 0x2100);
    said = script("-j", text);
    EXPECT_EQ(lines_of(said.out).size(), 2U);
    EXPECT_EQ(json_parse(lines_of(said.out).at(1))["error"].text, "the device cannot be opened");
    EXPECT_EQ(said.err,
              "maintctl: " + shown + ":3: RD_RTC_TIME: -1: the device cannot be opened\n");
}

TEST_F(Run, OutputThatCannotBeWrittenEndsAScript)
{
    std::ofstream(path) << "RD_RTC_STATUS\nWR_RTC_STATUS value=5\n";
    std::string words[] = {"maintctl", "run", path};
    char* argv[] = {words[0].data(), words[1].data(), words[2].data()};
    FILE* full = fopen("/dev/full", "w");
    FILE* err = tmpfile();
    EXPECT_EQ(maintctl_run(3, argv, full, err), 74);
    fclose(full);
    fclose(err);
    EXPECT_EQ(board.rtc.status, 0x89ABCDEFU);
}

TEST_F(Run, AWatchMarksWhatChangedAndEndsWithTheLastStatus)
{
    const Said said = watched("-w 0.1 RD_RTC_TIME", 3);
    EXPECT_EQ(said.err, "");
    EXPECT_EQ(said.status, 0);
    std::string expected;
    for (const char* second : {"  second=7", "  second=7", "* second=8"}) {
        expected += "# TIME RD_RTC_TIME\n"
                    "  year=2006\n  month=3\n  day=1\n  hour=9\n  minute=5\n" +
                    std::string(second) + "\n  weekday=3\n";
    }
    std::string out = said.out;
    for (size_t at = 0; (at = out.find("# ", at)) != std::string::npos; ++at) {
        EXPECT_EQ(out.at(at + 4), ':');
        EXPECT_EQ(out.at(at + 7), ':');
        out.replace(at + 2, 8, "TIME");
    }
    EXPECT_EQ(out, expected);
}

TEST_F(Run, AWatchInJsonNamesWhatChanged)
{
    const Said said = watched("-jw .1 RD_RTC_TIME", 4);
    const std::vector<std::string> lines = lines_of(said.out);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(json_parse(lines[0])["fields"]["second"].number, 7);
    for (size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].substr(lines[i].find("},\"changed\":")),
                  i == 2 ? "},\"changed\":[\"second\"]}" : "},\"changed\":[]}");
    }
}

// What fails is tried twice: first one round fails and one is good, then one is good and one fails.
TEST_F(Run, AWatchGoesOnAfterAFailureAndEndsWithTheLastStatus)
{
    unsigned opens = 0;
    bool first_fails = true;
    board.before_call = [&](const std::string& text) {
        if (text.starts_with("open /dev/rtc")) {
            ++opens;
            board.rtc_present = first_fails ? opens > 2 : opens == 1;
            if (opens == 3) {
                raise(SIGINT);
            }
        }
    };
    Said said = maintctl("-w 0.1 RD_RTC_STATUS");
    EXPECT_EQ(said.err, "maintctl: RD_RTC_STATUS: -1: the device cannot be opened\n");
    EXPECT_TRUE(said.out.ends_with(" RD_RTC_STATUS\n* value=0x89abcdef\n")) << said.out;
    EXPECT_EQ(said.status, 0);
    EXPECT_EQ(opens, 3U);
    opens = 0;
    first_fails = false;
    said = maintctl("-w 0.1 RD_RTC_STATUS");
    board.before_call = nullptr;
    EXPECT_EQ(said.err, "maintctl: RD_RTC_STATUS: -1: the device cannot be opened\n");
    EXPECT_EQ(lines_of(said.out).size(), 3U); // two titles, one value
    EXPECT_EQ(said.status, 1);
    EXPECT_EQ(opens, 3U);
}

TEST_F(Run, TheOldWayOfCtrlCIsBackAfterAWatch)
{
    struct sigaction before = {};
    struct sigaction after = {};
    ASSERT_EQ(sigaction(SIGINT, nullptr, &before), 0);
    watched("-w 0.1 RD_RTC_TIME", 1);
    ASSERT_EQ(sigaction(SIGINT, nullptr, &after), 0);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
}

// A round that hangs can be ended.
TEST_F(Run, ASecondCtrlCEndsTheProgram)
{
    board.before_call = [&](const std::string& text) {
        if (text.starts_with("open /dev/rtc")) {
            raise(SIGINT);
            raise(SIGINT);
        }
    };
    EXPECT_EXIT(maintctl("-w 0.1 RD_RTC_TIME"), testing::KilledBySignal(SIGINT), "");
}

// As a shell starts what runs in the background.
TEST_F(Run, AWatchLeavesCtrlCAloneWhereItIsIgnored)
{
    const auto before = signal(SIGINT, SIG_IGN);
    unsigned round = 0;
    bool ignored = true;
    board.before_call = [&](const std::string& text) {
        if (text.starts_with("open /dev/rtc")) {
            struct sigaction action = {};
            sigaction(SIGINT, nullptr, &action);
            ignored = ignored && action.sa_handler == SIG_IGN;
            raise(SIGINT);
            if (++round == 3) {
                board.before_call = nullptr;
            }
        }
    };
    // The output can be written three times: that ends it.
    unsigned writes = 0;
    const auto write = [](void* count, const char*, size_t size) -> ssize_t {
        return ++*static_cast<unsigned*>(count) > 3 ? -1 : static_cast<ssize_t>(size);
    };
    FILE* out = fopencookie(&writes, "w", {nullptr, write, nullptr, nullptr});
    FILE* err = tmpfile();
    std::string words[] = {"maintctl", "-jw.1", "RD_RTC_TIME"};
    char* argv[] = {words[0].data(), words[1].data(), words[2].data()};
    EXPECT_EQ(maintctl_run(3, argv, out, err), 74);
    fclose(out);
    fclose(err);
    signal(SIGINT, before);
    EXPECT_TRUE(ignored);
    EXPECT_EQ(round, 3U);
}

TEST_F(Run, AVerbIsWatchedToo)
{
    const Said said = watched("-w 0.1 status", 6); // three rounds: the time, and the status
    const std::vector<std::string> lines = lines_of(said.out);
    size_t titles = 0;
    std::vector<std::string> marked;
    for (const std::string& line : lines) {
        titles += line.starts_with("# ") && line.ends_with(" status") ? 1 : 0;
        if (line.starts_with("* ")) {
            marked.push_back(line);
        }
    }
    EXPECT_EQ(titles, 3U);
    EXPECT_EQ(lines.size(), 3U * 24);
    EXPECT_EQ(marked, (std::vector<std::string>{"* clock       2006-03-01 Wed 09:05:08",
                                                "* clock       2006-03-01 Wed 09:05:09"}));
}

} // namespace
