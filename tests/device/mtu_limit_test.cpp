// The limit of the data size: its calls, their failures, and the configuration behind it.
#include <optional>
#include <ostream>

#include "device/library_calls.h"
#include "maint/commands/mtu.h"

namespace
{

constexpr const char* kMru = "/tmp/vornapppoe.mtu";
constexpr uint32_t kLimit = 0x0056;
constexpr uint32_t kTwin = 0x0054;

class MtuLimitTest : public DeviceTest
{
  protected:
    struct Guarded {
        uint32_t before = 0xDEADBEEF;
        std::array<uint16_t, 3> record = {0x1111, 0x2222, 0x3333};
        uint32_t after = 0xCAFEF00D;
    } report;
    uint16_t cap = 0;

    void SetUp() override { log_clear(board); }

    void TearDown() override
    {
        EXPECT_EQ(report.before, 0xDEADBEEF);
        EXPECT_EQ(report.after, 0xCAFEF00D);
        DeviceTest::TearDown();
    }

    void config_put(const Bytes& text) { board.file_put(kConfig, text); }

    int32_t limit_write() { return Fpga_Register_Set(WR_MTU_LIMIT, &cap); }
    int32_t limit_report() { return Fpga_Register_Set(RD_MTU_LIMIT, report.record.data()); }

    void expect_limit(uint32_t limit)
    {
        EXPECT_EQ(board.fpga.registers[kTwin], limit);
        EXPECT_EQ(board.fpga.registers[kLimit], limit);
    }
};

// Reporting ---------------------------------------------------------------------------------

using MtuReport = MtuLimitTest;

TEST_F(MtuReport, ReadsTheRegisterAndTheConfigurationBeforeItCloses)
{
    config_put("A='1'\nIPSEC_ENABLE='3'\n");
    prove(
        RD_MTU_LIMIT,
        [this] {
            board.fpga.registers[kLimit] = 1340;
            return report.record.data();
        },
        Course{opens_to_read(), register_read(kLimit)} + course_of(lookup_calls(kConfig, 2)) +
            Course{closes()});
    // 1340 + 26 is 6 above a multiple of 16: 10 bytes of padding.
    EXPECT_EQ(report.record, (std::array<uint16_t, 3>{0x1111, 1432, 1340}));
}

TEST_F(MtuReport, FillsTheFieldsOfTheRecord)
{
    board.fpga.registers[kLimit] = 1340;
    config_put("");
    MtuLimit record{7, 8, 9};
    EXPECT_EQ(Fpga_Register_Set(RD_MTU_LIMIT, &record), 0);
    EXPECT_EQ(record.unused, 7);
    EXPECT_EQ(record.frame_size, 1364);
    EXPECT_EQ(record.limit, 1340);
}

TEST_F(MtuReport, LeavesTheRecordWhenItFails)
{
    for (const auto& [calls, result] :
         {std::pair{std::set<size_t>{1, 3}, -1}, std::pair{std::set<size_t>{2, 6}, -2}}) {
        board.restart();
        board.fail_calls(calls);
        EXPECT_EQ(limit_report(), result);
        EXPECT_EQ(report.record, (std::array<uint16_t, 3>{0x1111, 0x2222, 0x3333}));
    }
}

TEST_F(MtuReport, WithoutConfigurationCountsIpsecAsOff)
{
    board.fpga.registers[kLimit] = 1340;
    EXPECT_EQ(limit_report(), 0);
    EXPECT_EQ(report.record, (std::array<uint16_t, 3>{0x1111, 1364, 1340}));
    EXPECT_EQ(board.console, "GetIniFileString : 001 : /conf/config file open error\n");
}

TEST_F(MtuReport, TakesTheLowHalfOfTheRegister)
{
    config_put("");
    board.fpga.registers[kLimit] = 1340;
    board.fpga.register_high = 0xFFFF;
    EXPECT_EQ(limit_report(), 0);
    EXPECT_EQ(report.record[2], 1340);
}

TEST_F(MtuReport, CountsAPositiveAnswerAsRead)
{
    config_put("");
    board.fpga.registers[kLimit] = 1340;
    board.fpga.results[0x6B42] = 1;
    EXPECT_EQ(limit_report(), 0);
    EXPECT_EQ(report.record[1], 1364);
}

TEST_F(MtuReport, GivesTheFrameOfEveryRegisterValue)
{
    config_put("IPSEC_ENABLE='0'\n");
    for_every_word([this](uint16_t value) {
        board.fpga.registers[kLimit] = value;
        ASSERT_EQ(limit_report(), 0);
        const auto frame = static_cast<uint16_t>(value + 24U);
        ASSERT_EQ(report.record, (std::array<uint16_t, 3>{0x1111, frame, value}));
    });
}

TEST_F(MtuReport, GivesTheFrameOfEveryRegisterValueUnderIpsec)
{
    config_put("IPSEC_ENABLE='3'\n");
    for_every_word([this](uint16_t value) {
        board.fpga.registers[kLimit] = value;
        ASSERT_EQ(limit_report(), 0);
        uint32_t pad = 0;
        while ((value + 26U + pad) % 16 != 0) {
            ++pad;
        }
        const auto frame = static_cast<uint16_t>(value + pad + 82U);
        ASSERT_EQ(report.record, (std::array<uint16_t, 3>{0x1111, frame, value}));
    });
}

// Writing: the calls ------------------------------------------------------------------------

// IPsec on PPPoE, an MRU below the MTU. Each key's line gives the lines read to find it.
constexpr const char* kFullConfig = "SELECT_MTU='MTU_B'\n"
                                    "MTU_A='1400'\n"
                                    "MTU_B='1500'\n"
                                    "WAN_TYPE='5'\n"
                                    "IPSEC_ENABLE='3'\n";

using MtuWrite = MtuLimitTest;

TEST_F(MtuWrite, ReadsTheConfigurationWhileTheDeviceIsOpen)
{
    config_put(kFullConfig);
    board.file_put(kMru, "VORNAMRU=1400\n");
    prove(
        WR_MTU_LIMIT,
        [this] {
            board.fpga.registers[kLimit] = 1000;
            board.fpga.register_high = 0x5A5A;
            return &cap;
        },
        Course{opens_to_write()} + course_of(lookup_calls(kConfig, 1)) +
            course_of(lookup_calls(kConfig, 3)) + course_of(lookup_calls(kConfig, 4)) +
            course_of({"stat /tmp/vornapppoe.mtu"}) + course_of(lookup_calls(kMru, 1)) +
            course_of(lookup_calls(kConfig, 5)) +
            Course{register_read(kLimit, kIgnored), register_write(kTwin, 1308),
                   register_write(kLimit, 1308), closes()});
    EXPECT_EQ(cap, 0);
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(log_messages(board), std::vector<std::string>{});
}

TEST_F(MtuWrite, DoesNotReadAnMruFileThatIsMissing)
{
    config_put("");
    expect_course(WR_MTU_LIMIT, &cap,
                  Course{opens_to_write()} + course_of(lookup_calls(kConfig, 1)) +
                      course_of(lookup_calls(kConfig, 1)) +
                      course_of({"stat /tmp/vornapppoe.mtu"}) +
                      course_of(lookup_calls(kConfig, 1)) +
                      Course{register_read(kLimit), register_write(kTwin, 1340),
                             register_write(kLimit, 1340), closes()});
}

TEST_F(MtuWrite, DoesNotAskForTheMruOffPppoe)
{
    config_put("WAN_TYPE='1'\n");
    board.file_put(kMru, "VORNAMRU=1300\n");
    expect_course(WR_MTU_LIMIT, &cap,
                  Course{opens_to_write()} + course_of(lookup_calls(kConfig, 2)) +
                      course_of(lookup_calls(kConfig, 1)) + course_of(lookup_calls(kConfig, 2)) +
                      Course{register_read(kLimit), register_write(kTwin, 1340),
                             register_write(kLimit, 1340), closes()});
}

// The limit for each lookup that a failing call spoils. The close of a file that was read, and the
// read of the present limit, spoil nothing; a failure on the device is made good by the retry.
void expect_defaults(Board& board, const std::function<void()>& prepare,
                     const std::function<int32_t()>& write, uint32_t limit,
                     const std::vector<uint32_t>& limitWithoutLookup)
{
    size_t lookup = 0;
    failure_sweep(board, prepare, write, [&](size_t, const std::string& call, int32_t result) {
        const bool spoils = call.find("/tmp/Saveing") != std::string::npos ||
                            call.find("fopen") == 0 || call.find("fgets") == 0 ||
                            call.find("stat") == 0;
        EXPECT_EQ(result, 0);
        EXPECT_EQ(board.fpga.registers[kLimit], spoils ? limitWithoutLookup.at(lookup) : limit);
        EXPECT_EQ(board.fpga.registers[kTwin], board.fpga.registers[kLimit]);
        if (call == "fclose /tmp/Saveing") {
            ++lookup;
        }
    });
    EXPECT_EQ(lookup, limitWithoutLookup.size());
}

TEST_F(MtuWrite, TakesADefaultForEachLookupThatFails)
{
    expect_defaults(
        board,
        [this] {
            log_clear(board);
            config_put(kFullConfig);
            board.file_put(kMru, "VORNAMRU=1400\n");
            board.fpga.registers = {};
        },
        [this] { return limit_write(); }, 1308,
        {1260, 1260, 1308, 1372, 1372}); // MTU 1390 twice, PPPoE, no MRU, no IPsec
}

TEST_F(MtuWrite, TakesPppoeForAWanTypeThatCannotBeRead)
{
    expect_defaults(
        board,
        [this] {
            log_clear(board);
            config_put("SELECT_MTU='MTU_A'\nMTU_A='1500'\nWAN_TYPE='1'\n"
                       "IPSEC_ENABLE='3'\n");
            board.file_put(kMru, "VORNAMRU=1400\n");
            board.fpga.registers = {};
        },
        [this] { return limit_write(); }, 1372, {1260, 1260, 1308, 1436});
}

TEST_F(MtuWrite, CountsAnyAnswerButZeroToAWriteAsAFailure)
{
    config_put("");
    for (const int answer : {1, 0x7FFFFFFF, -1}) {
        board.restart();
        board.fpga.results[0x6B43] = answer;
        EXPECT_EQ(limit_write(), -4);
        const Trace lookups = lookup_calls(kConfig, 1);
        const Trace run =
            Trace{"open /dev/fpga O_RDWR|O_NONBLOCK"} + lookups + lookups +
            Trace{"stat /tmp/vornapppoe.mtu"} + lookups +
            Trace{"ioctl 6B42 56 00 00 00 00 00 00 00", "ioctl 6B43 54 00 00 00 3C 05 00 00",
                  "close /dev/fpga", "usleep 1"};
        EXPECT_EQ(board.calls, run + run);
    }
}

TEST_F(MtuWrite, LeavesTheTwinWrittenWhenTheSecondWriteFails)
{
    config_put("");
    board.fpga.registers[kLimit] = 77;
    const size_t second = 1 + 3 * 6 + 1 + 3; // open, lookups, stat; read, twin, limit
    board.fail_calls({second, second + 2 + second});
    EXPECT_EQ(limit_write(), -4);
    EXPECT_EQ(board.fpga.registers[kTwin], 1340);
    EXPECT_EQ(board.fpga.registers[kLimit], 77);
}

// Writing: the limit ------------------------------------------------------------------------

TEST_F(MtuWrite, WithoutConfigurationSetsALimitThatReportsAFrameOf1364)
{
    EXPECT_EQ(limit_write(), 0);
    expect_limit(1340);
    EXPECT_EQ(limit_report(), 0);
    EXPECT_EQ(report.record, (std::array<uint16_t, 3>{0x1111, 1364, 1340}));
}

struct Setting {
    const char* name;
    Bytes config;
    std::optional<Bytes> mru; // contents of the MRU file
    uint16_t present;         // register 0x0056 before
    uint16_t cap;
    uint16_t limit; // what both registers get
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
    board.fpga.registers[kLimit] = setting.present;
    cap = setting.cap;
    EXPECT_EQ(limit_write(), 0);
    expect_limit(setting.limit);
    EXPECT_EQ(cap, setting.cap);
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
        Setting{"Nothing", "", kNone, 0, 0, 1340}, //
        Setting{"NothingWithIpsec", "IPSEC_ENABLE='3'\n", kNone, 0, 0, 1260},
        Setting{"Mtu20", mtu("20"), kNone, 0, 0, 1340},
        Setting{"Mtu26", mtu("26"), kNone, 0, 0, 1340},
        Setting{"Mtu27", mtu("27"), kNone, 0, 0, 1164},
        Setting{"Mtu1213", mtu("1213"), kNone, 0, 0, 1164},
        Setting{"Mtu1229", mtu("1229"), kNone, 0, 0, 1164},
        Setting{"Mtu1230", mtu("1230"), kNone, 0, 0, 1180},
        Setting{"Mtu1214WithIpsec", mtu("1214") + "IPSEC_ENABLE='3'\n", kNone, 0, 0, 1084},
        Setting{"Mtu1500", mtu("1500"), kNone, 0, 0, 1436},
        Setting{"Mtu1500WithIpsec", mtu("1500") + "IPSEC_ENABLE='3'\n", kNone, 0, 0, 1372},
        Setting{"Mtu65535", mtu("65535"), kNone, 0, 0, 65484},
        // Compared in more than 16 bits, frames would not wrap, and this would be 65404.
        Setting{"Mtu65535WithIpsec", mtu("65535") + "IPSEC_ENABLE='3'\n", kNone, 0, 0, 65420}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Mru, MtuSetting,
    testing::Values(
        Setting{"Below", mtu("1500"), "VORNAMRU=1400\n", 0, 0, 1372},
        Setting{"FarBelow", mtu("1500"), "VORNAMRU=576\n", 0, 0, 1164},
        Setting{"Equal", mtu("1500"), "VORNAMRU=1474\n", 0, 0, 1436},
        Setting{"Above", mtu("1500"), "VORNAMRU=1492\n", 0, 0, 1436},
        Setting{"Zero", mtu("1500"), "VORNAMRU=0\n", 0, 0, 1436},
        Setting{"Empty", mtu("1500"), "VORNAMRU=\n", 0, 0, 1436},
        Setting{"NoNumber", mtu("1500"), "VORNAMRU=abc\n", 0, 0, 1436},
        Setting{"Quoted", mtu("1500"), "VORNAMRU='1400'\n", 0, 0, 1436},
        Setting{"NoKey", mtu("1500"), "MRU=1400\n", 0, 0, 1436},
        Setting{"EmptyFile", mtu("1500"), "", 0, 0, 1436},
        Setting{"NoNewline", mtu("1500"), "VORNAMRU=1400", 0, 0, 1436},
        Setting{"LaterLine", mtu("1500"), "A=1\nVORNAMRU=1400\n", 0, 0, 1372},
        Setting{"LongerKey", mtu("1500"), "VORNAMRU2=1400\nVORNAMRU=1300\n", 0, 0, 1372},
        Setting{"Blank", mtu("1500"), "VORNAMRU = 1400\n", 0, 0, 1372},
        Setting{"Negative", mtu("1500"), "VORNAMRU=-1\n", 0, 0, 1436},
        Setting{"WrapsToZero", mtu("1500"), "VORNAMRU=65536\n", 0, 0, 1436},
        Setting{"WrapsTo1400", mtu("1500"), "VORNAMRU=66936\n", 0, 0, 1372},
        Setting{"NotOnPppoe", mtu("1500") + "WAN_TYPE='1'\n", "VORNAMRU=1400\n", 0, 0, 1436},
        Setting{"OnPppoe", mtu("1500") + "WAN_TYPE='5'\n", "VORNAMRU=1400\n", 0, 0, 1372}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Cap, MtuSetting,
    testing::Values(Setting{"KeepsALowerLimit", "", kNone, 1339, 1, 1339},
                    Setting{"KeepsTheSameLimit", "", kNone, 1340, 1, 1340},
                    Setting{"LowersAHigherLimit", "", kNone, 1341, 1, 1340},
                    Setting{"KeepsALimitOf1", "", kNone, 1, 1, 1},
                    Setting{"SetsALimitWhereNoneIs", "", kNone, 0, 1, 1340},
                    Setting{"OffRaisesALowerLimit", "", kNone, 1339, 0, 1340},
                    Setting{"IsAnyValueButZero", "", kNone, 1339, 2, 1339},
                    Setting{"IsAnyValueInTheHighByteToo", "", kNone, 1339, 0x0100, 1339},
                    Setting{"HoldsUnderIpsec", "IPSEC_ENABLE='3'\n", kNone, 1244, 1, 1244},
                    Setting{"HoldsForWanType5", "WAN_TYPE='5'\n", kNone, 1000, 1, 1000},
                    Setting{"IsForPppoeOnly", "WAN_TYPE='1'\n", kNone, 1000, 1, 1340}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    MtuValue, MtuSetting,
    testing::Values(Setting{"Empty", mtu(""), kNone, 0, 0, 1340},
                    Setting{"NoNumber", mtu("abc"), kNone, 0, 0, 1340},
                    Setting{"Negative", mtu("-1"), kNone, 0, 0, 65484},
                    Setting{"NegativeBelow16Bits", mtu("-64036"), kNone, 0, 0, 1436},
                    Setting{"Plus", mtu("+1500"), kNone, 0, 0, 1436},
                    Setting{"Blanks", mtu(" \t1500"), kNone, 0, 0, 1436},
                    Setting{"BlankBehindSign", mtu("- 1500"), kNone, 0, 0, 1340},
                    Setting{"TextBehind", mtu("1500x"), kNone, 0, 0, 1436},
                    Setting{"LeadingZeros", mtu("0001500"), kNone, 0, 0, 1436},
                    Setting{"Hexadecimal", mtu("0x5DC"), kNone, 0, 0, 1340},
                    Setting{"WrapsToZero", mtu("65536"), kNone, 0, 0, 1340},
                    Setting{"WrapsTo1500", mtu("67036"), kNone, 0, 0, 1436},
                    Setting{"LargestNumber", mtu("2147483647"), kNone, 0, 0, 65484},
                    Setting{"BeyondTheLargest", mtu("2147483648"), kNone, 0, 0, 65484},
                    Setting{"BeyondTheSmallest", mtu("-2147483649"), kNone, 0, 0, 1340},
                    Setting{"WrapsAt32BitsElsewhere", mtu("4294968796"), kNone, 0, 0, 65484},
                    Setting{"Huge", mtu("99999999999999999999999999"), kNone, 0, 0, 65484},
                    Setting{"HugeNegative", mtu("-99999999999999999999999999"), kNone, 0, 0, 1340},
                    Setting{"Unquoted", "SELECT_MTU='MTU'\nMTU=1500\n", kNone, 0, 0, 1340},
                    Setting{"NoClosingQuote", "SELECT_MTU='MTU'\nMTU='1500\nMTU='1500'\n", kNone, 0,
                            0, 1340}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    SelectMtu, MtuSetting,
    testing::Values(
        Setting{"Missing", "MTU='1500'\n", kNone, 0, 0, 1340},
        Setting{"Unquoted", "SELECT_MTU=MTU\nMTU='1500'\n", kNone, 0, 0, 1340},
        Setting{"NamesAMissingKey", "SELECT_MTU='MTU2'\nMTU='1500'\n", kNone, 0, 0, 1340},
        Setting{"NamesAKeyBeforeIt", "MTU='1500'\nSELECT_MTU='MTU'\n", kNone, 0, 0, 1436},
        Setting{"NamesTheBeginningOfAKey", "SELECT_MTU='MTU'\nMTU_PPP='1500'\nMTU='1400'\n", kNone,
                0, 0, 1436},
        Setting{"ItselfMatchesALongerKey", "SELECT_MTU_OLD='A'\nSELECT_MTU='B'\nB='1'\nA='1500'\n",
                kNone, 0, 0, 1436},
        Setting{"NamesItself", "SELECT_MTU='SELECT_MTU'\n", kNone, 0, 0, 1340},
        Setting{"EmptyNamesTheFirstLine", "MTU='1500'\nSELECT_MTU=''\n", kNone, 0, 0, 1436},
        Setting{"EmptyInTheFirstLine", "SELECT_MTU=''\nMTU='1500'\n", kNone, 0, 0, 1340},
        Setting{"NamesAnUnquotedFirstLine", "MTU=1500\nSELECT_MTU=''\nMTU='1500'\n", kNone, 0, 0,
                1340},
        Setting{"InASiteSection",
                hex("5B B5 F2 C5 C0 49 44 23") + "01]\nSELECT_MTU='MTU'\nMTU='1500'\n", kNone, 0, 0,
                1340},
        Setting{"NamesAKeyInASiteSection",
                "SELECT_MTU='MTU'\n" + hex("5B B5 F2 C5 C0 49 44 23") + "01]\nMTU='1500'\n", kNone,
                0, 0, 1340}),
    name_of);

// PPPoE shows by the MRU.
Setting wan(const char* name, const char* line, bool pppoe)
{
    return {name, line, "VORNAMRU=1300\n", 0, 0, static_cast<uint16_t>(pppoe ? 1276 : 1340)};
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
    return {name, line, kNone, 0, 0, static_cast<uint16_t>(on ? 1260 : 1340)};
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
    cap = 1;
    board.fpga.register_high = 0x0001;
    EXPECT_EQ(limit_write(), 0);
    expect_limit(1340);
}

TEST_F(MtuWrite, TakesAPresentLimitThatCannotBeReadAsNone)
{
    config_put("");
    cap = 1;
    board.fpga.registers[kLimit] = 1000;
    board.fpga.results[0x6B42] = -1;
    EXPECT_EQ(limit_write(), 0);
    expect_limit(1340);
}

} // namespace
