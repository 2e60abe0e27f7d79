// What maintctl says where no device is touched: wrong calls, lists, descriptions, completion.
#include <gtest/gtest.h>

#include <fstream>

#include "catalogue/catalogue.h"
#include "device/command_facts.h"
#include "tools/maintctl/describe.h"
#include "tools/maintctl/exit_status.h"
#include "tools/maintctl/invocation.h"
#include "tools/maintctl_call.h"

namespace
{

// A wrong call: one line, and nothing on the standard output.
std::string refused(const Said& said)
{
    EXPECT_EQ(said.status, 64);
    EXPECT_EQ(said.out, "");
    EXPECT_EQ(said.err.substr(0, 10), "maintctl: ");
    EXPECT_EQ(said.err.find('\n'), said.err.size() - 1) << said.err;
    for (const char character : said.err.substr(0, said.err.size() - 1)) {
        EXPECT_TRUE(character >= ' ' && character <= '~') << said.err;
    }
    return said.err.size() < 11 ? said.err : said.err.substr(10, said.err.size() - 11);
}

std::string refused(const std::string& line)
{
    return refused(maintctl(line));
}

std::string refused(const Arguments& arguments)
{
    return refused(maintctl(arguments));
}

// A script in a file of its own.
class Script : public testing::Test
{
  protected:
    Script() : path(testing::TempDir() + "maintctl_test." + std::to_string(getpid())) {}
    ~Script() override { unlink(path.c_str()); }

    // What is wrong with it, without the file's name.
    std::string refused_line(const std::string& text)
    {
        std::ofstream(path, std::ios::binary) << text;
        const std::string said = refused(Arguments{"run", path});
        const std::string begin = path.size() > 60 ? path.substr(0, 60) + "..." : path;
        EXPECT_EQ(said.substr(0, begin.size()), begin);
        return said.size() < begin.size() ? said : said.substr(begin.size());
    }

    const std::string path;
};

size_t lines_count(const std::string& text)
{
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

void expect_narrow(const std::string& text)
{
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        EXPECT_LE(line.size(), 80U) << line;
        EXPECT_TRUE(line.empty() || line.back() != ' ') << line;
    }
}

TEST(Call, WithoutWordsIsToldHowToCall)
{
    const Said said = maintctl(Arguments{});
    EXPECT_EQ(said.status, 64);
    EXPECT_EQ(said.out, "");
    EXPECT_EQ(said.err, "usage: maintctl [-jtnx] [-w S] COMMAND [FIELD=VALUE...]\n"
                        "       maintctl [OPTION...] list [TEXT] | describe COMMAND | status | "
                        "panel |\n"
                        "                            snapshot | run [FILE]\n"
                        "maintctl -h says more.\n");
    EXPECT_EQ(maintctl("-j").err, said.err);
    EXPECT_EQ(maintctl("--").status, 64);
}

TEST(Call, ShowsHelpAndVersion)
{
    for (const char* call : {"-h", "--help", "help", "-jh", "-V --help", "nonsense -h"}) {
        const Said said = maintctl(call);
        EXPECT_EQ(said.status, 0) << call;
        EXPECT_EQ(said.err, "") << call;
        EXPECT_EQ(said.out.substr(0, 11), "maintctl - ") << call;
        expect_narrow(said.out);
        for (const char* named : {"--json", "--trace", "--dry-run", "--hex", "--watch", "--help",
                                  "--version", "list", "describe", "status", "panel", "snapshot",
                                  "run", "EXIT STATUS", "NO_COLOR", "TZ", "/dev/fpga"}) {
            EXPECT_NE(said.out.find(named), std::string::npos) << named;
        }
    }
    for (const char* call : {"-V", "--version", "-jV nonsense"}) {
        const Said said = maintctl(call);
        EXPECT_EQ(said.status, 0) << call;
        EXPECT_EQ(said.out, "maintctl " MAINT_VERSION "\n") << call;
        EXPECT_EQ(said.err, "") << call;
    }
}

TEST(WrongCall, Options)
{
    EXPECT_EQ(refused("-q list"), "unknown option -q; maintctl -h shows all");
    EXPECT_EQ(refused("-jq list"), "unknown option -q; maintctl -h shows all");
    EXPECT_EQ(refused("list -\x01"), "unknown option -\\x01; maintctl -h shows all");
    EXPECT_EQ(refused("--jsn list"), "unknown option --jsn; nearest: --json");
    EXPECT_EQ(refused("list --jsonx=1"), "unknown option --jsonx; nearest: --json");
    EXPECT_EQ(refused("--quiet list"), "unknown option --quiet; maintctl -h shows all");
    EXPECT_EQ(refused("--json=1 list"), "--json takes no value");
    EXPECT_EQ(refused("--dry-run= list"), "--dry-run takes no value");
    EXPECT_EQ(refused("RD_RTC_TIME -w"), "--watch needs seconds from 0.1 to 86400");
    EXPECT_EQ(refused("RD_RTC_TIME --watch"), "--watch needs seconds from 0.1 to 86400");
    for (const char* seconds : {"0", "0.09", "86400.1", "-1", "x", "1s", "1e1", ".", "1.2.3", "+1",
                                "99999999999999999999999999", "nan", "0x10"}) {
        EXPECT_EQ(refused(Arguments{"RD_RTC_TIME", "-w", seconds}),
                  std::string("--watch needs seconds from 0.1 to 86400, not '") + seconds + "'");
        EXPECT_EQ(refused("RD_RTC_TIME --watch=" + std::string(seconds)),
                  std::string("--watch needs seconds from 0.1 to 86400, not '") + seconds + "'");
    }
    EXPECT_EQ(refused("RD_RTC_TIME -w0"), "--watch needs seconds from 0.1 to 86400, not '0'");
    EXPECT_EQ(refused("-jw 0 RD_RTC_TIME"), "--watch needs seconds from 0.1 to 86400, not '0'");
    EXPECT_EQ(refused(Arguments{"-w", ""}), "--watch needs seconds from 0.1 to 86400, not ''");
    EXPECT_EQ(refused("-- -j"), "unknown command '-j'; maintctl list shows all");
    EXPECT_EQ(refused("-"), "unknown command '-'; maintctl list shows all");
}

// Options are taken in every form: what is told is what this option makes wrong.
TEST(WrongCall, OptionsInEveryForm)
{
    for (const char* call :
         {"-w2 list", "-w 2 list", "-w0.1 list", "--watch=2 list", "--watch 86400 list",
          "list -jw2", "list -jw .5", "list -w 2.", "-w 1 list -w 2"}) {
        EXPECT_EQ(refused(call), "--watch is not for list") << call;
    }
    EXPECT_EQ(refused("list -jt"), "--trace is not for list");
    EXPECT_EQ(refused("-jn list"), "--dry-run is not for list");
    EXPECT_EQ(refused("--json list -x"), "--hex is not for list");
    EXPECT_EQ(refused("-x describe RD_RTC_TIME"), "--hex is not for describe");
    EXPECT_EQ(refused("-x status"), "--hex is not for status");
    EXPECT_EQ(refused("--hex panel"), "--hex is not for panel");
    EXPECT_EQ(refused("-w 2 snapshot"), "--watch is not for snapshot");
    EXPECT_EQ(refused("-w 2 run x"), "--watch is not for run");
}

TEST(WrongCall, Verbs)
{
    EXPECT_EQ(refused("list a b"), "list takes at most one TEXT");
    EXPECT_EQ(refused("describe"), "describe takes one COMMAND");
    EXPECT_EQ(refused("describe RD_RTC_TIME RD_BANDWIDTH"), "describe takes one COMMAND");
    EXPECT_EQ(refused("describe RD_RTC_TIM"),
              "unknown command 'RD_RTC_TIM'; nearest: RD_RTC_TIME, WR_RTC_TIME");
    EXPECT_EQ(refused("status x"), "status takes no argument");
    EXPECT_EQ(refused("panel x"), "panel takes no argument");
    EXPECT_EQ(refused("snapshot x"), "snapshot takes no argument");
    EXPECT_EQ(refused("run a b"), "run takes at most one FILE");
    EXPECT_EQ(refused("help x"), "help takes no argument");
}

TEST(WrongCall, Commands)
{
    EXPECT_EQ(refused("rd_bandwith"),
              "unknown command 'rd_bandwith'; nearest: RD_BANDWIDTH, WR_BANDWIDTH");
    EXPECT_EQ(refused("bandwidth"),
              "unknown command 'bandwidth'; nearest: RD_BANDWIDTH, WR_BANDWIDTH");
    EXPECT_EQ(refused("lst"), "unknown command 'lst'; nearest: list");
    EXPECT_EQ(refused("RD_RTC_TIMEx"),
              "unknown command 'RD_RTC_TIMEx'; nearest: RD_RTC_TIME, WR_RTC_TIME");
    EXPECT_EQ(refused("nonsense"), "unknown command 'nonsense'; maintctl list shows all");
    EXPECT_EQ(refused(Arguments{""}), "unknown command ''; maintctl list shows all");
    EXPECT_EQ(refused(Arguments{"\x1b[1m\n\xff"}),
              "unknown command '\\x1b[1m\\x0a\\xff'; maintctl list shows all");
    EXPECT_EQ(refused(Arguments{std::string(100000, 'x')}),
              "unknown command '" + std::string(60, 'x') + "...'; maintctl list shows all");
    EXPECT_EQ(refused("0x1"), "no command has the number 0x1");
    EXPECT_EQ(refused("4294967306"), "no command has the number 4294967306");
    EXPECT_EQ(refused("18446744073709551626"), "no command has the number 18446744073709551626");
    EXPECT_EQ(refused("010"), "unknown command '010'; maintctl list shows all");
    EXPECT_EQ(refused(Arguments(257, "x")), "more than 256 words");
}

TEST(WrongCall, FindsTheCommandByNameAndNumber)
{
    for (const char* command :
         {"WR_RTC_TIME", "wr_rtc_time", "Wr_Rtc_Time", "0x0201", "0X201", "513"}) {
        EXPECT_EQ(refused(std::string(command) + " month=13"),
                  "WR_RTC_TIME: month=13 is not within 1 to 12");
    }
}

TEST(WrongCall, Fields)
{
    EXPECT_EQ(refused("RD_PHY_STATUS prt=1"),
              "RD_PHY_STATUS has no field prt; its fields: port, speed100, full_duplex");
    EXPECT_EQ(refused("RD_PHY_STATUS link=1"),
              "link is not read by RD_PHY_STATUS; its fields: port, speed100, full_duplex");
    EXPECT_EQ(refused("WR_RTC_TIME WeekDay=1"),
              "WeekDay is not read by WR_RTC_TIME; its fields: year, month, day, hour, minute, "
              "second");
    EXPECT_EQ(refused("RD_BANDWIDTH value=1"),
              "value is not read by RD_BANDWIDTH; RD_BANDWIDTH takes no fields");
    EXPECT_EQ(refused("RD_LED_STATE element=1,0,1"),
              "element is not read by RD_LED_STATE; its fields: ownId, targetId");
    EXPECT_EQ(refused("RD_PHY_STATUS 3"),
              "RD_PHY_STATUS: 3 is not FIELD=VALUE; its fields: port, speed100, full_duplex");
    EXPECT_EQ(refused("RD_PHY_STATUS =3"),
              "RD_PHY_STATUS: =3 is not FIELD=VALUE; its fields: port, speed100, full_duplex");
    EXPECT_EQ(refused("RD_PHY_STATUS port=7"), "RD_PHY_STATUS: port=7 is not within 0 to 6");
    EXPECT_EQ(refused("RD_PHY_STATUS PORT=x"),
              "RD_PHY_STATUS: PORT=x is not a number (decimal, or hexadecimal with 0x)");
    EXPECT_EQ(refused("RD_PHY_STATUS port="), "RD_PHY_STATUS: port= is empty");
    EXPECT_EQ(refused("WR_RTC_TIME day=1 month=2 DAY=1"), "WR_RTC_TIME: day is given twice");
    EXPECT_EQ(refused("RD_PHY_STATUS port[0]=1"),
              "RD_PHY_STATUS: port has no elements: write port=VALUE");
    EXPECT_EQ(refused("WR_LED_A ledA=bright"),
              "WR_LED_A: ledA=bright is none of off (0), on (1), calm (2), alert (3)");
    EXPECT_EQ(refused(Arguments{"RD_PHY_STATUS", "p\n=1"}),
              "RD_PHY_STATUS has no field p\\x0a; its fields: port, speed100, full_duplex");
    EXPECT_EQ(refused(Arguments{"RD_PHY_STATUS", "port=" + std::string(100000, '9')}),
              "RD_PHY_STATUS: port=" + std::string(55, '9') + "... is not within 0 to 6");
}

TEST(WrongCall, Elements)
{
    EXPECT_EQ(refused("WR_LINE_FLAGS element=1,2,0"),
              "WR_LINE_FLAGS: element=1,2,0 is wrong at [1]: 2 is not 0 or 1 (off or on)");
    EXPECT_EQ(refused("WR_LINE_FLAGS group2.element=1"),
              "WR_LINE_FLAGS: group2.element=1 has 1 element, not 3");
    EXPECT_EQ(refused("WR_LINE_FLAGS element[3]=1"),
              "WR_LINE_FLAGS: group2.element has the elements 0 to 2, and no [3]");
    EXPECT_EQ(refused("WR_LINE_FLAGS element[99999999999]=1"),
              "WR_LINE_FLAGS: [99999999999] is not the number of an element, such as [0]; its "
              "fields: group2.valid, group2.element");
    for (const char* wrong : {"[]", "[x]", "[1", "[-1]", "[1]x", "[1][1]", "[ 1]"}) {
        EXPECT_EQ(refused(Arguments{"WR_LINE_FLAGS", std::string("element") + wrong + "=1"}),
                  std::string("WR_LINE_FLAGS: ") + wrong +
                      " is not the number of an element, such as [0]; its fields: group2.valid, "
                      "group2.element");
    }
    EXPECT_EQ(refused("WR_LINE_FLAGS element[1]=1 element=0,0,0"),
              "WR_LINE_FLAGS: group2.element is given twice");
    EXPECT_EQ(refused("WR_LINE_FLAGS element=0,0,0 element[2]=1"),
              "WR_LINE_FLAGS: group2.element[2] is given twice");
    EXPECT_EQ(refused("WR_LINE_FLAGS element[1]=1 element[0]=1 GROUP2.ELEMENT[1]=1"),
              "WR_LINE_FLAGS: group2.element[1] is given twice");
    EXPECT_EQ(refused("WR_LINE_FLAGS element[1]=7"),
              "WR_LINE_FLAGS: element[1]=7 is not 0 or 1 (off or on)");
}

TEST(WrongCall, Records)
{
    EXPECT_EQ(refused("RD_PHY_STATUS record=00"),
              "RD_PHY_STATUS has no field record (record= needs --hex); its fields: port, "
              "speed100, full_duplex");
    EXPECT_EQ(refused("-x RD_PHY_STATUS port=1"),
              "RD_PHY_STATUS: with --hex only record=BYTES or record=@FILE is taken, not port=1");
    EXPECT_EQ(refused("-x RD_BANDWIDTH record=000102"),
              "RD_BANDWIDTH: record=000102 has 3 bytes, not up to 2");
    EXPECT_EQ(refused("-x RD_BANDWIDTH record=0"),
              "RD_BANDWIDTH: record=0 is not made of pairs of hexadecimal digits");
    EXPECT_EQ(refused("-x RD_BANDWIDTH record=00 record=01"),
              "RD_BANDWIDTH: record is given twice");
    EXPECT_EQ(refused("-x RD_BANDWIDTH record=@/nowhere/x"),
              "RD_BANDWIDTH: record=@/nowhere/x cannot be read: No such file or directory");
    EXPECT_EQ(refused("-x RD_BANDWIDTH record=@/"),
              "RD_BANDWIDTH: record=@/ cannot be read: Is a directory");
    EXPECT_EQ(refused("-x WR_LED_PATTERN_1 record="), "WR_LED_PATTERN_1: it has no record");
}

TEST(WrongCall, OptionsThatAreNotForTheCommand)
{
    EXPECT_EQ(refused("-w 2 WR_RTC_TIME"), "--watch is for reports, and WR_RTC_TIME is none");
    EXPECT_EQ(refused("-n WR_LED_A ledA=on"),
              "WR_LED_A changes /tmp/led_rewrite_inh, which --dry-run cannot hold back");
    EXPECT_EQ(refused("-n WR_STATISTICS_CLEAR"),
              "WR_STATISTICS_CLEAR changes /conf/statistics, which --dry-run cannot hold back");
}

TEST_F(Script, IsCheckedBeforeItsFirstCommand)
{
    EXPECT_EQ(refused_line("RD_RTC_TIME\n\n# x\nRD_PHY_STATUS port=7\nx\n"),
              ":4: RD_PHY_STATUS: port=7 is not within 0 to 6");
    EXPECT_EQ(refused_line("RD_PHY_STATUS port=1 speed100=1 full_duplex=1\nRD_PHY_STATUS port=7"),
              ":2: RD_PHY_STATUS: port=7 is not within 0 to 6");
    EXPECT_EQ(refused_line("\r\n \t \r\nRD_PHY_STATUS   port=1\tlink=1\r\n"),
              ":3: link is not read by RD_PHY_STATUS; its fields: port, speed100, full_duplex");
    EXPECT_EQ(refused_line("RD_RTC_TIME # x\nRD_RTC_TIME x#y\n"),
              ":2: RD_RTC_TIME: x#y is not FIELD=VALUE; RD_RTC_TIME takes no fields");
    EXPECT_EQ(refused_line("list\n"), ":1: a script has device commands only, not list");
    EXPECT_EQ(refused_line("-j RD_RTC_TIME\n"),
              ":1: unknown command '-j'; maintctl list shows all");
    EXPECT_EQ(refused_line("\"RD_PHY_STATUS\" 'po'rt=\"7\"\n"),
              ":1: RD_PHY_STATUS: port=7 is not within 0 to 6");
    EXPECT_EQ(refused_line("RD_PHY_STATUS port=\" 1\"\n"),
              ":1: RD_PHY_STATUS: port= 1 is not a number (decimal, or hexadecimal with 0x)");
    EXPECT_EQ(refused_line("''\n"), ":1: unknown command ''; maintctl list shows all");
    EXPECT_EQ(refused_line("\nRD_RTC_TIME \"x\n"), ":2: quotes that do not end");
    EXPECT_EQ(refused_line("RD_RTC_TIME 'x\"\n"), ":1: quotes that do not end");
    EXPECT_EQ(refused_line(std::string("RD_RTC_TIME\0\n", 13)), ":1: the line has a zero byte");
    EXPECT_EQ(refused_line(std::string(4096, ' ') + "\n"),
              ":1: the line has 4096 characters; 4095 is the most");
    EXPECT_EQ(refused_line("\n" + std::string(4095, 'x')),
              ":2: unknown command '" + std::string(60, 'x') + "...'; maintctl list shows all");
    std::string many;
    for (int i = 0; i < 257; ++i) {
        many += "x ";
    }
    EXPECT_EQ(refused_line(many), ":1: more than 256 words");
    EXPECT_EQ(refused_line(std::string(65537, '\n')), " has more than 65536 bytes");
    EXPECT_EQ(refused_line(std::string(65535, '\n') + "x"),
              ":65536: unknown command 'x'; maintctl list shows all");
}

TEST_F(Script, MayHaveNoCommands)
{
    std::ofstream(path) << "# nothing\n\n   # x\n#\r\n";
    const Said said = maintctl(Arguments{"run", path});
    EXPECT_EQ(said.status, 0);
    EXPECT_EQ(said.out + said.err, "");
    EXPECT_EQ(refused("run /nowhere/x"), "/nowhere/x cannot be read: No such file or directory");
    EXPECT_EQ(refused("run /"), "/ cannot be read: Is a directory");
}

TEST(List, HasEveryCommandOnALine)
{
    const Said all = maintctl("list");
    EXPECT_EQ(all.status, 0);
    EXPECT_EQ(all.err, "");
    expect_narrow(all.out);
    // Commands, titles, blank lines between.
    EXPECT_EQ(lines_count(all.out), commandFacts_get().size() + 25 + 24);
    for (const CommandGroup* group : catalogue_get()) {
        EXPECT_NE(all.out.find(std::string(group->title) + " (" + group->name + ")\n"),
                  std::string::npos);
        for (const CommandDescription& command : group->commands) {
            EXPECT_NE(all.out.find(std::string(" ") + command.name + " "), std::string::npos);
        }
    }
}

TEST(List, FindsByNameNumberGroupAndSummary)
{
    constexpr const char* kClock =
        "Real-time clock (rtc)\n"
        "0x0200 RD_RTC_TIME   date and time of the clock\n"
        "0x0201 WR_RTC_TIME   sets the clock, and the system clock after it\n"
        "0x0202 RD_RTC_STATUS a status value of the clock's driver\n"
        "0x0203 WR_RTC_STATUS sets the status value of the clock's driver\n";
    EXPECT_EQ(maintctl("list rtc").out, kClock);
    EXPECT_EQ(maintctl(Arguments{"list", "REAL-TIME"}).out, kClock);
    EXPECT_EQ(maintctl("list wr_rtc_t").out,
              "Real-time clock (rtc)\n"
              "0x0201 WR_RTC_TIME   sets the clock, and the system clock after it\n");
    EXPECT_EQ(maintctl(Arguments{"list", "SYSTEM CLOCK"}).out, maintctl("list wr_rtc_t").out);
    EXPECT_EQ(maintctl("list 513").out, maintctl("list wr_rtc_t").out);
    EXPECT_EQ(maintctl("list 0x0201").out, maintctl("list wr_rtc_t").out);
    EXPECT_EQ(maintctl("-j list 0x201").out,
              R"({"command":"WR_RTC_TIME","code":513,"group":"rtc",)"
              R"("summary":"sets the clock, and the system clock after it",)"
              R"("changes":true,"clears":false})"
              "\n");
    EXPECT_EQ(lines_count(maintctl("-j list").out), commandFacts_get().size());
    EXPECT_EQ(maintctl(Arguments{"list", ""}).out, maintctl("list").out);
    for (const char* option : {"", "-j "}) {
        const Said none = maintctl(option + std::string("list no\x01thing"));
        EXPECT_EQ(none.status, 1);
        EXPECT_EQ(none.out, "");
        EXPECT_EQ(none.err, "maintctl: no command has 'no\\x01thing' in its name, number, group "
                            "or summary\n");
    }
}

TEST(Describe, SaysAllOfACommand)
{
    EXPECT_EQ(maintctl("describe wr_rtc_status").out,
              "WR_RTC_STATUS  0x0203  sets the status value of the clock's driver\n"
              "Stays set: The value stays as the driver keeps it.\n"
              "\n"
              "Reads    nothing\n"
              "Changes  /dev/rtc\n"
              "Fields\n"
              "  value              in     hex 0x00000000 to 0xffffffff; what it means is the\n"
              "                            driver's\n"
              "Results\n"
              "     0   done\n"
              "    -1   the device cannot be opened\n"
              "    -4   the device refuses the write\n"
              "In C     maint_wr_rtc_status() of maint/commands/rtc.h\n"
              "Example  maintctl WR_RTC_STATUS value=0x00000001\n");
    EXPECT_EQ(maintctl("-j describe 0x0203").out,
              R"({"command":"WR_RTC_STATUS","code":515,"group":"rtc",)"
              R"("summary":"sets the status value of the clock's driver",)"
              R"("stays":"The value stays as the driver keeps it.","note":null,"reads":[],)"
              R"("changes":["/dev/rtc"],"clears":false,"record":4,"fields":[{"name":"value",)"
              R"("direction":"in","kind":"hex","offset":0,"width":4,"count":1,"least":0,)"
              R"("most":4294967295,"unit":"","note":"what it means is the driver's"}],)"
              R"("results":[{"result":0,"meaning":"done"},)"
              R"({"result":-1,"meaning":"the device cannot be opened"},)"
              R"({"result":-4,"meaning":"the device refuses the write"}]})"
              "\n");
    const std::string led = maintctl("describe RD_LED_STATE").out;
    EXPECT_NE(led.find("\nNothing stays set.\n"), std::string::npos);
    EXPECT_NE(led.find("\n  ledF               out    code; the line mode: off (0), on (1), "
                       "pattern (2)\n"),
              std::string::npos)
        << led;
    EXPECT_NE(led.find("\n  group7.element     out    flag, 3 elements\n"), std::string::npos);
    EXPECT_NE(maintctl("describe RD_PHY_STATUS").out.find("  speed100           in+out flag; "),
              std::string::npos);
    EXPECT_NE(maintctl("describe RD_COUNTER")
                  .out.find("\nClears   what it reads: the next reading begins anew\n"),
              std::string::npos);
}

TEST(Describe, SaysOfEveryCommandWhatStaysSetAndHasAnExampleThatIsTaken)
{
    size_t examples = 0;
    for (const CommandGroup* group : catalogue_get()) {
        for (const CommandDescription& command : group->commands) {
            const Said said = maintctl(Arguments{"describe", command.name});
            EXPECT_EQ(said.status, 0);
            EXPECT_EQ(said.err, "");
            expect_narrow(said.out);
            EXPECT_NE(said.out.find(command.stays != nullptr ? "\nStays set: "
                                                             : "\nNothing stays set.\n"),
                      std::string::npos)
                << said.out;
            char text[kWrongMax];
            Text example = text_in(text);
            example_add(example, command);
            ASSERT_LT(example.length, kWrongMax - 1) << text;
            Arguments words = words_of(text);
            Session session{.out = stdout, .err = stderr};
            if (words[0] == "-x") {
                session.hex = true;
                words.erase(words.begin());
            }
            EXPECT_EQ(words[0], command.name);
            std::vector<const char*> pointers;
            for (const std::string& word : words) {
                pointers.push_back(word.c_str());
            }
            Invocation invocation;
            char wrong[kWrongMax];
            Text why = text_in(wrong);
            EXPECT_TRUE(invocation_read(pointers, session, invocation, why)) << text << wrong;
            EXPECT_EQ(invocation.command, &command);
            ++examples;
        }
    }
    EXPECT_EQ(examples, commandFacts_get().size());
}

// As no command has them yet: two fields with one last part.
TEST(Invocation, TakesALastPartThatIsTheOnlyOne)
{
    Field fields[4] = {};
    fields[0].name = "group1.element";
    fields[1].name = "group2.element";
    fields[2].name = "group3.mask";
    fields[3].name = "group4.mask";
    CommandDescription command = {};
    command.name = "WR_BOTH";
    command.first_field = fields;
    command.field_count = std::size(fields);
    command.in = 0x7;
    char wrong[kWrongMax];
    Text why = text_in(wrong);
    EXPECT_EQ(field_named(command, "GROUP2.element", 14, why), &fields[1]);
    EXPECT_EQ(field_named(command, "mask", 4, why), &fields[2]);
    EXPECT_STREQ(wrong, "");
    EXPECT_EQ(field_named(command, "element", 7, why), nullptr);
    EXPECT_STREQ(wrong, "element can be group1.element or group2.element");
    text_cut(why, 0);
    EXPECT_EQ(field_named(command, "group4.mask", 11, why), nullptr);
    EXPECT_STREQ(wrong, "group4.mask is not read by WR_BOTH; its fields: group1.element, "
                        "group2.element, group3.mask");
}

TEST(Invocation, FillsTheRecord)
{
    const auto record = [](const std::string& line, bool hex, size_t size) {
        const Arguments words = words_of(line);
        std::vector<const char*> pointers;
        for (const std::string& word : words) {
            pointers.push_back(word.c_str());
        }
        Session session{.out = stdout, .err = stderr};
        session.hex = hex;
        Invocation invocation;
        memset(invocation.record, 0xAA, sizeof invocation.record);
        char wrong[kWrongMax];
        Text why = text_in(wrong);
        EXPECT_TRUE(invocation_read(pointers, session, invocation, why)) << wrong;
        EXPECT_STREQ(wrong, "");
        std::string pairs;
        for (size_t i = 0; i < sizeof invocation.record; ++i) {
            char pair[3];
            snprintf(pair, sizeof pair, "%02x", invocation.record[i]);
            if (i < size) {
                pairs += pair;
            } else {
                EXPECT_EQ(invocation.record[i], 0) << i;
            }
        }
        return pairs;
    };
    EXPECT_EQ(record("WR_PHY_REGISTER number=0x1f port=3 value=0xabcd", false, 8),
              "030000001f00cdab");
    EXPECT_EQ(record("0x601", false, 8), "0000000000000000");
    EXPECT_EQ(record("WR_PHY_REGISTER record=030000001f00", true, 8), "030000001f000000");
    EXPECT_EQ(record("WR_PHY_REGISTER RECORD=", true, 8), "0000000000000000");
    EXPECT_EQ(record("WR_LINE_FLAGS element[2]=1 group2.element[0]=on", false, 22),
              std::string(19 * 2, '0') + "010001");

    const std::string path = testing::TempDir() + "maintctl_record." + std::to_string(getpid());
    std::ofstream(path, std::ios::binary) << std::string("\3\0\0\0\x1f", 5);
    EXPECT_EQ(record("WR_PHY_REGISTER record=@" + path, true, 8), "030000001f000000");
    std::ofstream(path, std::ios::binary) << std::string(8, '\xff');
    EXPECT_EQ(record("WR_PHY_REGISTER record=@" + path, true, 8), "ffffffffffffffff");
    std::ofstream(path, std::ios::binary) << std::string(9, '\xff');
    const std::string shown = path.size() > 60 ? path.substr(0, 60) + "..." : path;
    EXPECT_EQ(refused("-x WR_PHY_REGISTER record=@" + path),
              "WR_PHY_REGISTER: record=@" + shown + " has more than the 8 bytes of the record");
    unlink(path.c_str());
}

TEST(Complete, SaysWhatMayStandNext)
{
    const auto complete = [](Arguments words) {
        words.insert(words.begin(), "complete");
        const Said said = maintctl(words);
        EXPECT_EQ(said.status, 0);
        EXPECT_EQ(said.err, "");
        return said.out;
    };
    EXPECT_EQ(lines_count(complete({""})), 7U + commandFacts_get().size());
    EXPECT_EQ(complete({"st"}), "status\n");
    EXPECT_EQ(complete({"rd_rtc"}), "rd_rtc_time\nrd_rtc_status\n");
    EXPECT_EQ(complete({"RD_RTC"}), "RD_RTC_TIME\nRD_RTC_STATUS\n");
    EXPECT_EQ(complete({"nothing"}), "");
    EXPECT_EQ(complete({"--w"}), "--watch\n");
    EXPECT_EQ(lines_count(complete({"-"})), 7U);
    EXPECT_EQ(complete({"-w", ""}), "");
    EXPECT_EQ(complete({"-jw", ""}), "");
    EXPECT_EQ(complete({"-w", "2", "RD_RTC_S"}), "RD_RTC_STATUS\n");
    EXPECT_EQ(complete({"describe", "wr_rtc"}), "wr_rtc_time\nwr_rtc_status\n");
    EXPECT_EQ(complete({"describe", "wr_rtc_time", ""}), "");
    EXPECT_EQ(complete({"RD_PHY_STATUS", ""}), "port=\nspeed100=\nfull_duplex=\n");
    EXPECT_EQ(complete({"-j", "rd_phy_status", "-t", "port=1", "f"}), "full_duplex=\n");
    EXPECT_EQ(complete({"RD_PHY_STATUS", "PORT=1", ""}), "speed100=\nfull_duplex=\n");
    EXPECT_EQ(complete({"WR_LED_A", "ledA="}), "ledA=off\nledA=on\nledA=calm\nledA=alert\n");
    EXPECT_EQ(complete({"WR_LED_A", "ledA=c"}), "ledA=calm\n");
    EXPECT_EQ(complete({"WR_PHY_CONFIG", "autoneg="}), "autoneg=0\nautoneg=1\n");
    EXPECT_EQ(complete({"WR_LINE_FLAGS", "element=1,0,1", ""}), "group2.valid=\n");
    EXPECT_EQ(complete({"-x", "WR_LED_A", ""}), "record=\n");
    EXPECT_EQ(complete({"list", ""}), "");
    EXPECT_EQ(complete({"run", ""}), "");
    EXPECT_EQ(complete({"nonsense", ""}), "");
}

TEST(Output, ThatCannotBeWrittenIsTold)
{
    for (const char* verb : {"list", "-h", "-V", "describe RD_RTC_TIME"}) {
        Arguments words = words_of(verb);
        words.insert(words.begin(), "maintctl");
        std::vector<char*> argv;
        for (std::string& word : words) {
            argv.push_back(word.data());
        }
        char said[200] = "";
        FILE* full = fopen("/dev/full", "w");
        FILE* err = fmemopen(said, sizeof said, "w");
        ASSERT_NE(full, nullptr);
        EXPECT_EQ(maintctl_run(static_cast<int>(argv.size()), argv.data(), full, err), 74) << verb;
        fclose(err);
        fclose(full);
        EXPECT_STREQ(said, "maintctl: the output cannot be written: No space left on device\n")
            << verb;
    }
}

// A disk that is full for a moment: what was lost then stays lost.
TEST(Output, OfWhichAPartIsLostIsTold)
{
    unsigned writes = 0;
    const auto write = [](void* count, const char*, size_t size) -> ssize_t {
        return ++*static_cast<unsigned*>(count) == 1 ? 0 : static_cast<ssize_t>(size);
    };
    char said[200] = "";
    FILE* out = fopencookie(&writes, "w", {nullptr, write, nullptr, nullptr});
    setvbuf(out, nullptr, _IOFBF, 1024);
    FILE* err = fmemopen(said, sizeof said, "w");
    std::string words[] = {"maintctl", "list"};
    char* argv[] = {words[0].data(), words[1].data()};
    EXPECT_EQ(maintctl_run(2, argv, out, err), 74);
    fclose(err);
    fclose(out);
    EXPECT_GT(writes, 1U);
    EXPECT_EQ(std::string(said).substr(0, 41), "maintctl: the output cannot be written\n");
}

TEST(ExitStatus, IsThatOfTheResult)
{
    EXPECT_EQ(exitStatus_of(0), 0);
    EXPECT_EQ(exitStatus_of(1), 0);
    EXPECT_EQ(exitStatus_of(INT32_MAX), 0);
    EXPECT_EQ(exitStatus_of(-1), 1);
    EXPECT_EQ(exitStatus_of(-5), 5);
    EXPECT_EQ(exitStatus_of(-6), 1);
    EXPECT_EQ(exitStatus_of(INT32_MIN), 1);
}

} // namespace
