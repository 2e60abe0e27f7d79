// The limit of the data size: its calls, their failures, and the configuration behind it.
#include <optional>
#include <ostream>

#include "device/command_test.h"
#include "device/library_calls.h"
#include "maint/commands/mtu.h"

namespace
{

constexpr const char* kMru = "/tmp/vornapppoe.mtu";
constexpr uint32_t kLimit = 0x0056;
constexpr uint32_t kTwin = 0x0054;

const Bytes kHeldRecord = untouched(6);

class MtuLimitTest : public CommandTest
{
  protected:
    void SetUp() override { log_clear(board); }

    void config_put(const Bytes& text) { board.file_put(kConfig, text); }

    // Runs the setter; its cap stays.
    void expect_write(uint32_t cap, int32_t result = 0)
    {
        expect_run(WR_MTU_LIMIT, le16(cap), result, le16(cap));
    }

    void expect_limits(uint32_t limit)
    {
        EXPECT_EQ(twin, limit);
        EXPECT_EQ(present, limit);
    }

    // The report, of which the first two bytes are not touched.
    void expect_report(uint32_t frame, uint32_t limit)
    {
        expect_run(RD_MTU_LIMIT, kHeldRecord, 0, untouched(2) + le16(frame) + le16(limit));
    }

    uint16_t& present = board.fpga.registers[kLimit];
    uint16_t& twin = board.fpga.registers[kTwin];
};

// Reporting ---------------------------------------------------------------------------------

using MtuReport = MtuLimitTest;

TEST_F(MtuReport, ReadsTheRegisterAndTheConfigurationBeforeItCloses)
{
    config_put("A='1'\nIPSEC_ENABLE='3'\n");
    present = 1340;
    // 1340 + 26 is 6 above a multiple of 16: 10 bytes of padding.
    prove_record(RD_MTU_LIMIT, kHeldRecord,
                 Course{opens_to_read(), register_read(kLimit)} +
                     course_of(lookup_calls(kConfig, 2)) + Course{closes()},
                 untouched(2) + le16(1432) + le16(1340));
    expect_kept(RD_MTU_LIMIT, kHeldRecord);
}

TEST_F(MtuReport, FillsTheFieldsOfTheRecord)
{
    present = 1340;
    config_put("");
    MtuLimit record{7, 8, 9};
    EXPECT_EQ(Fpga_Register_Set(RD_MTU_LIMIT, &record), 0);
    EXPECT_EQ(record.unused, 7);
    EXPECT_EQ(record.frame_size, 1364);
    EXPECT_EQ(record.limit, 1340);
}

TEST_F(MtuReport, WithoutConfigurationCountsIpsecAsOff)
{
    present = 1340;
    expect_report(1364, 1340);
    EXPECT_EQ(board.console, "GetIniFileString : 001 : /conf/config file open error\n");
}

TEST_F(MtuReport, TakesTheLowHalfOfTheRegister)
{
    config_put("");
    present = 1340;
    board.fpga.register_high = 0xFFFF;
    expect_report(1364, 1340);
}

TEST_F(MtuReport, GivesTheFrameOfEveryRegisterValue)
{
    for (const bool ipsec : {false, true}) {
        config_put(ipsec ? "IPSEC_ENABLE='3'\n" : "IPSEC_ENABLE='0'\n");
        for_every_word([&](uint16_t value) {
            present = value;
            uint32_t pad = 0;
            while ((value + 26U + pad) % 16 != 0) {
                ++pad;
            }
            expect_report(ipsec ? value + pad + 82U : value + 24U, value);
        });
    }
}

// Writing: the calls ------------------------------------------------------------------------

// IPsec on PPPoE, an MRU below the MTU. Each key's line gives the lines read to find it.
constexpr const char* kFullConfig = "SELECT_MTU='MTU_B'\n"
                                    "MTU_A='1400'\n"
                                    "MTU_B='1500'\n"
                                    "WAN_TYPE='5'\n"
                                    "IPSEC_ENABLE='3'\n";

constexpr const char* kMruStat = "stat /tmp/vornapppoe.mtu";

class MtuWrite : public MtuLimitTest
{
  protected:
    static Trace lookup(size_t lines) { return lookup_calls(kConfig, lines); }

    // The lookups while the device is open, then the limit of them.
    static Course write_course(const Trace& lookups, uint32_t limit)
    {
        return Course{opens_to_write()} + course_of(lookups) +
               Course{register_read(kLimit, kIgnored), register_write(kTwin, limit),
                      register_write(kLimit, limit), closes()};
    }

    // The limit for each lookup that a failing call spoils. The close of a file that was read, and
    // the read of the present limit, spoil nothing; a failure on the device is made good by the
    // retry.
    void expect_defaults(const Bytes& config, uint32_t limit,
                         const std::vector<uint32_t>& limit_without_lookup)
    {
        size_t lookups = 0;
        failure_sweep(
            board,
            [&] {
                log_clear(board);
                config_put(config);
                board.file_put(kMru, "VORNAMRU=1400\n");
                present = 0;
                twin = 0;
            },
            [&] { return run(WR_MTU_LIMIT, le16(0)); },
            [&](size_t, const std::string& call, int32_t result) {
                const bool spoils = call.find("/tmp/Saveing") != std::string::npos ||
                                    call.find("fopen") == 0 || call.find("fgets") == 0 ||
                                    call.find("stat") == 0;
                EXPECT_EQ(result, 0);
                expect_limits(spoils ? limit_without_lookup.at(lookups) : limit);
                lookups += call == "fclose /tmp/Saveing" ? 1 : 0;
            });
        EXPECT_EQ(lookups, limit_without_lookup.size());
    }
};

TEST_F(MtuWrite, ReadsTheConfigurationWhileTheDeviceIsOpen)
{
    config_put(kFullConfig);
    board.file_put(kMru, "VORNAMRU=1400\n");
    device_put = [this] { present = 1000; };
    board.fpga.register_high = 0x5A5A;
    prove_record(WR_MTU_LIMIT, le16(0),
                 write_course(lookup(1) + lookup(3) + lookup(4) + Trace{kMruStat} +
                                  lookup_calls(kMru, 1) + lookup(5),
                              1308),
                 le16(0));
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(log_messages(board), std::vector<std::string>{});
}

TEST_F(MtuWrite, DoesNotReadAnMruFileThatIsMissing)
{
    config_put("");
    expect_course(WR_MTU_LIMIT, put(le16(0)),
                  write_course(lookup(1) + lookup(1) + Trace{kMruStat} + lookup(1), 1340));
}

TEST_F(MtuWrite, DoesNotAskForTheMruOffPppoe)
{
    config_put("WAN_TYPE='1'\n");
    board.file_put(kMru, "VORNAMRU=1300\n");
    expect_course(WR_MTU_LIMIT, put(le16(0)),
                  write_course(lookup(2) + lookup(1) + lookup(2), 1340));
}

TEST_F(MtuWrite, TakesADefaultForEachLookupThatFails)
{
    // MTU 1390 twice, PPPoE, no MRU, no IPsec
    expect_defaults(kFullConfig, 1308, {1260, 1260, 1308, 1372, 1372});
}

TEST_F(MtuWrite, TakesPppoeForAWanTypeThatCannotBeRead)
{
    expect_defaults("SELECT_MTU='MTU_A'\nMTU_A='1500'\nWAN_TYPE='1'\nIPSEC_ENABLE='3'\n", 1372,
                    {1260, 1260, 1308, 1436});
}

TEST_F(MtuWrite, CountsAnyAnswerButZeroToAWriteAsAFailure)
{
    config_put("");
    for (const int answer : {1, 0x7FFFFFFF, -1}) {
        board.restart();
        board.fpga.results[0x6B43] = answer;
        expect_write(0, -4);
        const Trace run =
            Trace{"open /dev/fpga O_RDWR|O_NONBLOCK"} + lookup(1) + lookup(1) + Trace{kMruStat} +
            lookup(1) +
            Trace{"ioctl 6B42 56 00 00 00 00 00 00 00", "ioctl 6B43 54 00 00 00 3C 05 00 00",
                  "close /dev/fpga", "usleep 1"};
        EXPECT_EQ(board.calls, run + run);
    }
}

TEST_F(MtuWrite, LeavesTheTwinWrittenWhenTheSecondWriteFails)
{
    config_put("");
    present = 77;
    const size_t second = 1 + 3 * 6 + 1 + 3; // open, lookups, stat; read, twin, limit
    board.fail_calls({second, second + 2 + second});
    expect_write(0, -4);
    EXPECT_EQ(twin, 1340);
    EXPECT_EQ(present, 77);
}

// Writing: the limit ------------------------------------------------------------------------

TEST_F(MtuWrite, WithoutConfigurationSetsALimitThatReportsAFrameOf1364)
{
    expect_write(0);
    expect_limits(1340);
    expect_report(1364, 1340);
}

struct Setting {
    const char* name;
    Bytes config;
    uint32_t limit;             // what both registers get
    std::optional<Bytes> mru{}; // contents of the MRU file
    uint16_t present = 0;       // register 0x0056 before
    uint16_t cap = 0;
};

void PrintTo(const Setting& setting, std::ostream* out)
{
    *out << setting.name;
}

class MtuSetting : public MtuLimitTest, public testing::WithParamInterface<Setting>
{
};

TEST_P(MtuSetting, GivesTheLimit)
{
    const Setting& setting = GetParam();
    config_put(setting.config);
    if (setting.mru) {
        board.file_put(kMru, *setting.mru);
    }
    present = setting.present;
    expect_write(setting.cap);
    expect_limits(setting.limit);
    EXPECT_EQ(board.console, "");
}

Bytes mtu(const std::string& value)
{
    return "SELECT_MTU='MTU'\nMTU='" + value + "'\n";
}

std::string name_of(const testing::TestParamInfo<Setting>& setting)
{
    return setting.param.name;
}

constexpr auto kNone = std::nullopt;

INSTANTIATE_TEST_SUITE_P(
    Sizes, MtuSetting,
    testing::Values(
        Setting{"Nothing", "", 1340},                            //
        Setting{"NothingWithIpsec", "IPSEC_ENABLE='3'\n", 1260}, //
        Setting{"Mtu20", mtu("20"), 1340},                       //
        Setting{"Mtu26", mtu("26"), 1340},                       //
        Setting{"Mtu27", mtu("27"), 1164},                       //
        Setting{"Mtu1213", mtu("1213"), 1164},                   //
        Setting{"Mtu1229", mtu("1229"), 1164},                   //
        Setting{"Mtu1230", mtu("1230"), 1180},
        Setting{"Mtu1214WithIpsec", mtu("1214") + "IPSEC_ENABLE='3'\n", 1084},
        Setting{"Mtu1500", mtu("1500"), 1436}, //
        Setting{"Mtu1500WithIpsec", mtu("1500") + "IPSEC_ENABLE='3'\n", 1372},
        Setting{"Mtu65535", mtu("65535"), 65484},
        // Compared in more than 16 bits, frames would not wrap, and this would be 65404.
        Setting{"Mtu65535WithIpsec", mtu("65535") + "IPSEC_ENABLE='3'\n", 65420}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Mru, MtuSetting,
    testing::Values(Setting{"Below", mtu("1500"), 1372, "VORNAMRU=1400\n"},
                    Setting{"FarBelow", mtu("1500"), 1164, "VORNAMRU=576\n"},
                    Setting{"Equal", mtu("1500"), 1436, "VORNAMRU=1474\n"}, //
                    Setting{"Above", mtu("1500"), 1436, "VORNAMRU=1492\n"},
                    Setting{"Zero", mtu("1500"), 1436, "VORNAMRU=0\n"}, //
                    Setting{"Empty", mtu("1500"), 1436, "VORNAMRU=\n"},
                    Setting{"NoNumber", mtu("1500"), 1436, "VORNAMRU=abc\n"},
                    Setting{"Quoted", mtu("1500"), 1436, "VORNAMRU='1400'\n"},
                    Setting{"NoKey", mtu("1500"), 1436, "MRU=1400\n"}, //
                    Setting{"EmptyFile", mtu("1500"), 1436, ""},
                    Setting{"NoNewline", mtu("1500"), 1436, "VORNAMRU=1400"},
                    Setting{"LaterLine", mtu("1500"), 1372, "A=1\nVORNAMRU=1400\n"},
                    Setting{"LongerKey", mtu("1500"), 1372, "VORNAMRU2=1400\nVORNAMRU=1300\n"},
                    Setting{"Blank", mtu("1500"), 1372, "VORNAMRU = 1400\n"},
                    Setting{"Negative", mtu("1500"), 1436, "VORNAMRU=-1\n"},
                    Setting{"WrapsToZero", mtu("1500"), 1436, "VORNAMRU=65536\n"},
                    Setting{"WrapsTo1400", mtu("1500"), 1372, "VORNAMRU=66936\n"},
                    Setting{"NotOnPppoe", mtu("1500") + "WAN_TYPE='1'\n", 1436, "VORNAMRU=1400\n"},
                    Setting{"OnPppoe", mtu("1500") + "WAN_TYPE='5'\n", 1372, "VORNAMRU=1400\n"}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Cap, MtuSetting,
    testing::Values(Setting{"KeepsALowerLimit", "", 1339, kNone, 1339, 1},
                    Setting{"KeepsTheSameLimit", "", 1340, kNone, 1340, 1}, //
                    Setting{"LowersAHigherLimit", "", 1340, kNone, 1341, 1},
                    Setting{"KeepsALimitOf1", "", 1, kNone, 1, 1}, //
                    Setting{"SetsALimitWhereNoneIs", "", 1340, kNone, 0, 1},
                    Setting{"OffRaisesALowerLimit", "", 1340, kNone, 1339, 0},
                    Setting{"IsAnyValueButZero", "", 1339, kNone, 1339, 2}, //
                    Setting{"IsAnyValueInTheHighByteToo", "", 1339, kNone, 1339, 0x0100},
                    Setting{"HoldsUnderIpsec", "IPSEC_ENABLE='3'\n", 1244, kNone, 1244, 1},
                    Setting{"HoldsForWanType5", "WAN_TYPE='5'\n", 1000, kNone, 1000, 1},
                    Setting{"IsForPppoeOnly", "WAN_TYPE='1'\n", 1340, kNone, 1000, 1}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    MtuValue, MtuSetting,
    testing::Values(Setting{"Empty", mtu(""), 1340},                     //
                    Setting{"NoNumber", mtu("abc"), 1340},               //
                    Setting{"Negative", mtu("-1"), 65484},               //
                    Setting{"NegativeBelow16Bits", mtu("-64036"), 1436}, //
                    Setting{"Plus", mtu("+1500"), 1436},                 //
                    Setting{"Blanks", mtu(" \t1500"), 1436},             //
                    Setting{"BlankBehindSign", mtu("- 1500"), 1340},     //
                    Setting{"TextBehind", mtu("1500x"), 1436},           //
                    Setting{"LeadingZeros", mtu("0001500"), 1436},       //
                    Setting{"Hexadecimal", mtu("0x5DC"), 1340},          //
                    Setting{"WrapsToZero", mtu("65536"), 1340},          //
                    Setting{"WrapsTo1500", mtu("67036"), 1436},          //
                    Setting{"LargestNumber", mtu("2147483647"), 65484},
                    Setting{"BeyondTheLargest", mtu("2147483648"), 65484}, //
                    Setting{"BeyondTheSmallest", mtu("-2147483649"), 1340},
                    Setting{"WrapsAt32BitsElsewhere", mtu("4294968796"), 65484},
                    Setting{"Huge", mtu("99999999999999999999999999"), 65484},
                    Setting{"HugeNegative", mtu("-99999999999999999999999999"), 1340},
                    Setting{"Unquoted", "SELECT_MTU='MTU'\nMTU=1500\n", 1340},
                    Setting{"NoClosingQuote", "SELECT_MTU='MTU'\nMTU='1500\nMTU='1500'\n", 1340}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    SelectMtu, MtuSetting,
    testing::Values(
        Setting{"Missing", "MTU='1500'\n", 1340}, //
        Setting{"Unquoted", "SELECT_MTU=MTU\nMTU='1500'\n", 1340},
        Setting{"NamesAMissingKey", "SELECT_MTU='MTU2'\nMTU='1500'\n", 1340},
        Setting{"NamesAKeyBeforeIt", "MTU='1500'\nSELECT_MTU='MTU'\n", 1436},
        Setting{"NamesTheBeginningOfAKey", "SELECT_MTU='MTU'\nMTU_PPP='1500'\nMTU='1400'\n", 1436},
        Setting{"ItselfMatchesALongerKey", "SELECT_MTU_OLD='A'\nSELECT_MTU='B'\nB='1'\nA='1500'\n",
                1436},
        Setting{"NamesItself", "SELECT_MTU='SELECT_MTU'\n", 1340},
        Setting{"EmptyNamesTheFirstLine", "MTU='1500'\nSELECT_MTU=''\n", 1436},
        Setting{"EmptyInTheFirstLine", "SELECT_MTU=''\nMTU='1500'\n", 1340},
        Setting{"NamesAnUnquotedFirstLine", "MTU=1500\nSELECT_MTU=''\nMTU='1500'\n", 1340},
        Setting{"InASiteSection",
                hex("5B B5 F2 C5 C0 49 44 23") + "01]\nSELECT_MTU='MTU'\nMTU='1500'\n", 1340},
        Setting{"NamesAKeyInASiteSection",
                "SELECT_MTU='MTU'\n" + hex("5B B5 F2 C5 C0 49 44 23") + "01]\nMTU='1500'\n", 1340}),
    name_of);

// PPPoE shows by the MRU.
Setting wan(const char* name, const char* line, bool pppoe)
{
    return {name, line, pppoe ? 1276U : 1340U, "VORNAMRU=1300\n"};
}

INSTANTIATE_TEST_SUITE_P(WanType, MtuSetting,
                         testing::Values(wan("Missing", "", true),                              //
                                         wan("5", "WAN_TYPE='5'\n", true),                      //
                                         wan("Plus5", "WAN_TYPE=' +05 '\n", true),              //
                                         wan("5WithText", "WAN_TYPE='5x'\n", true),             //
                                         wan("Unquoted", "WAN_TYPE=1\n", true),                 //
                                         wan("Empty", "WAN_TYPE=''\n", false),                  //
                                         wan("NoNumber", "WAN_TYPE='abc'\n", false),            //
                                         wan("0", "WAN_TYPE='0'\n", false),                     //
                                         wan("1", "WAN_TYPE='1'\n", false),                     //
                                         wan("4", "WAN_TYPE='4'\n", false),                     //
                                         wan("6", "WAN_TYPE='6'\n", false),                     //
                                         wan("Minus5", "WAN_TYPE='-5'\n", false),               //
                                         wan("55", "WAN_TYPE='55'\n", false),                   //
                                         wan("5Above16Bits", "WAN_TYPE='65541'\n", false),      //
                                         wan("5Above32Bits", "WAN_TYPE='4294967301'\n", false), //
                                         wan("LongerKeyFirst", "WAN_TYPE2='1'\nWAN_TYPE='5'\n",
                                             false)),
                         name_of);

Setting ipsec(const char* name, const char* line, bool on)
{
    return {name, line, on ? 1260U : 1340U};
}

INSTANTIATE_TEST_SUITE_P(
    Ipsec, MtuSetting,
    testing::Values(ipsec("3", "IPSEC_ENABLE='3'\n", true),                            //
                    ipsec("03", "IPSEC_ENABLE=' 03'\n", true),                         //
                    ipsec("3WithText", "IPSEC_ENABLE='3,1'\n", true),                  //
                    ipsec("LongerKey", "IPSEC_ENABLED='3'\nIPSEC_ENABLE='0'\n", true), //
                    ipsec("Unquoted", "IPSEC_ENABLE=3\n", false),                      //
                    ipsec("Empty", "IPSEC_ENABLE=''\n", false),                        //
                    ipsec("NoNumber", "IPSEC_ENABLE='on'\n", false),                   //
                    ipsec("0", "IPSEC_ENABLE='0'\n", false),                           //
                    ipsec("1", "IPSEC_ENABLE='1'\n", false),                           //
                    ipsec("2", "IPSEC_ENABLE='2'\n", false),                           //
                    ipsec("4", "IPSEC_ENABLE='4'\n", false),                           //
                    ipsec("Minus3", "IPSEC_ENABLE='-3'\n", false),                     //
                    ipsec("33", "IPSEC_ENABLE='33'\n", false),                         //
                    ipsec("3Above16Bits", "IPSEC_ENABLE='65539'\n", false),            //
                    ipsec("3Above32Bits", "IPSEC_ENABLE='4294967299'\n", false)),
    name_of);

TEST_F(MtuWrite, IgnoresTheHighHalfOfThePresentLimit)
{
    config_put("");
    board.fpga.register_high = 0x0001;
    expect_write(1);
    expect_limits(1340);
}

// Also where the driver fills the record and fails.
TEST_F(MtuWrite, TakesAPresentLimitThatCannotBeReadAsNone)
{
    config_put("");
    board.fpga.results[0x6B42] = -1;
    for (const bool fills : {false, true}) {
        board.fpga.fills_when_failing = fills;
        present = 1000;
        expect_write(1);
        expect_limits(1340);
    }
}

TEST_F(MtuWrite, TakesAPositiveAnswerToTheReadForSuccess)
{
    config_put("");
    for (const int answer : {1, 0x7FFFFFFF}) {
        board.fpga.results[0x6B42] = answer;
        present = 1000;
        expect_write(1);
        expect_limits(1000);
    }
}

} // namespace
