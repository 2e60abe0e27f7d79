// The VPN identity: which key holds it, what its text means, what each failure returns.
#include "maint/vpn_id.h"

#include <ostream>

#include "device/library_calls.h"

namespace
{

using Messages = std::vector<std::string>;

constexpr uint32_t kWord03 = 0x6B03;
constexpr uint32_t kMapEnabled = 0x1000;
constexpr uint32_t kUntouched = 0xDEADBEEF;

constexpr const char* kNotRead =
    "Get_Conf_VpnId 000 : Fpga_Register_Set(RD_VLANT_MAP_ENABLE) didn't read";

const Trace kFlagCalls{"open /dev/fpga O_RDONLY|O_NONBLOCK", "ioctl 6B03 00 00", "close /dev/fpga"};

class VpnId : public DeviceTest
{
  protected:
    struct Guarded {
        uint32_t before = 0xAAAAAAAA;
        uint32_t id = kUntouched;
        uint32_t after = 0xBBBBBBBB;
    } answer;

    void SetUp() override { log_clear(board); }

    void TearDown() override
    {
        EXPECT_EQ(answer.before, 0xAAAAAAAA);
        EXPECT_EQ(answer.after, 0xBBBBBBBB);
        DeviceTest::TearDown();
    }

    void word_put(uint32_t word) { board.fpga.words[kWord03] = word; }
    void config_put(const Bytes& text) { board.file_put(kConfig, text); }
    int32_t identity_read(int32_t index = 0) { return Get_Conf_VpnId(index, &answer.id); }
};

TEST_F(VpnId, IsReadFromTheIndexedKeyWhileTheMapIsEnabled)
{
    word_put(kMapEnabled);
    config_put("OWN_VPN_ID='1'\nPPPOEOFF_VPN_ID06='249'\nPPPOEOFF_VPN_ID07='250'\n");
    EXPECT_EQ(identity_read(7), 0);
    EXPECT_EQ(answer.id, 250U);
    EXPECT_EQ(board.calls, kFlagCalls + lookup_calls(kConfig, 3));
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(log_messages(board), Messages{});
}

TEST_F(VpnId, IsReadFromTheOwnKeyWhileTheMapIsDisabled)
{
    config_put("PPPOEOFF_VPN_ID07='250'\nOWN_VPN_ID='12'\n");
    EXPECT_EQ(identity_read(7), 0);
    EXPECT_EQ(answer.id, 12U);
    EXPECT_EQ(board.calls, kFlagCalls + lookup_calls(kConfig, 2));
}

TEST_F(VpnId, FollowsBit12OfTheWordAlone)
{
    config_put("PPPOEOFF_VPN_ID00='1'\nOWN_VPN_ID='2'\n");
    for (unsigned bit = 0; bit < 16; ++bit) {
        word_put(1U << bit);
        EXPECT_EQ(identity_read(), 0);
        EXPECT_EQ(answer.id, bit == 12 ? 1U : 2U) << bit;
        word_put(0xFFFFU & ~(1U << bit));
        EXPECT_EQ(identity_read(), 0);
        EXPECT_EQ(answer.id, bit == 12 ? 2U : 1U) << bit;
    }
}

TEST_F(VpnId, FollowsTheFlagThatTheCommandSets)
{
    config_put("PPPOEOFF_VPN_ID00='1'\nOWN_VPN_ID='2'\n");
    for (const auto& [flag, id] : {std::pair{uint16_t{1}, 1U}, std::pair{uint16_t{0}, 2U},
                                   std::pair{uint16_t{2}, 2U}, std::pair{uint16_t{0xFFFF}, 2U}}) {
        uint16_t argument = flag;
        EXPECT_EQ(Fpga_Register_Set(WR_VLANT_MAP_ENABLE, &argument), 0);
        EXPECT_EQ(identity_read(), 0);
        EXPECT_EQ(answer.id, id) << flag;
    }
}

TEST_F(VpnId, IndexesByAtLeastTwoDigits)
{
    word_put(kMapEnabled);
    for (const auto& [index, key] : std::initializer_list<std::pair<int32_t, const char*>>{
             {0, "PPPOEOFF_VPN_ID00"},
             {3, "PPPOEOFF_VPN_ID03"},
             {10, "PPPOEOFF_VPN_ID10"},
             {99, "PPPOEOFF_VPN_ID99"},
             {100, "PPPOEOFF_VPN_ID100"},
             {12345, "PPPOEOFF_VPN_ID12345"},
             {-1, "PPPOEOFF_VPN_ID-1"},
             {-10, "PPPOEOFF_VPN_ID-10"},
             {2147483647, "PPPOEOFF_VPN_ID2147483647"},
             {INT32_MIN, "PPPOEOFF_VPN_ID-2147483648"}}) {
        const Bytes line = std::string(key) + "='77'\n";
        config_put(line);
        answer.id = kUntouched;
        EXPECT_EQ(identity_read(index), 0) << key;
        EXPECT_EQ(answer.id, 77U) << key;
        // The last character counts.
        config_put(line.substr(0, line.find('=') - 1) + "x='77'\n");
        EXPECT_EQ(identity_read(index), -2) << key;
    }
}

TEST_F(VpnId, IgnoresTheIndexWhileTheMapIsDisabled)
{
    config_put("OWN_VPN_ID='12'\n");
    for (const int32_t index : {INT32_MIN, -1, 0, 1, 100, INT32_MAX}) {
        answer.id = kUntouched;
        EXPECT_EQ(identity_read(index), 0);
        EXPECT_EQ(answer.id, 12U);
    }
}

// Results ------------------------------------------------------------------------------------

struct Lookup {
    const char* name;
    uint32_t word;
    Bytes config;
    int32_t result;
    uint32_t id;
};

void PrintTo(const Lookup& lookup, std::ostream* out)
{
    *out << lookup.name;
}

class VpnIdLookup : public VpnId, public testing::WithParamInterface<Lookup>
{
};

TEST_P(VpnIdLookup, Gives)
{
    const Lookup& lookup = GetParam();
    word_put(lookup.word);
    config_put(lookup.config);
    EXPECT_EQ(identity_read(7), lookup.result);
    EXPECT_EQ(answer.id, lookup.id);
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(log_messages(board), Messages{});
    EXPECT_EQ(board.file_get(kConfig), lookup.config);
}

std::string name_of(const testing::TestParamInfo<Lookup>& lookup)
{
    return lookup.param.name;
}

const Bytes kSite = hex("5B B5 F2 C5 C0 49 44 23") + "01]\n";

INSTANTIATE_TEST_SUITE_P(
    Enabled, VpnIdLookup,
    testing::Values(
        Lookup{"Found", kMapEnabled, "PPPOEOFF_VPN_ID07='250'\n", 0, 250},
        Lookup{"Missing", kMapEnabled, "OWN_VPN_ID='12'\n", -2, kUntouched},
        Lookup{"OtherIndex", kMapEnabled, "PPPOEOFF_VPN_ID08='12'\n", -2, kUntouched},
        Lookup{"OneDigit", kMapEnabled, "PPPOEOFF_VPN_ID7='12'\n", -2, kUntouched},
        Lookup{"EmptyFile", kMapEnabled, "", -2, kUntouched},
        Lookup{"Unquoted", kMapEnabled, "PPPOEOFF_VPN_ID07=250\n", -2, kUntouched},
        Lookup{"NoClosingQuote", kMapEnabled, "PPPOEOFF_VPN_ID07='250\n", -2, kUntouched},
        Lookup{"InASiteSection", kMapEnabled, kSite + "PPPOEOFF_VPN_ID07='250'\n", -2, kUntouched},
        Lookup{"Empty", kMapEnabled, "PPPOEOFF_VPN_ID07=''\n", -3, kUntouched},
        Lookup{"FirstOfTwo", kMapEnabled, "PPPOEOFF_VPN_ID07=''\nPPPOEOFF_VPN_ID07='1'\n", -3,
               kUntouched},
        Lookup{"LongerKey", kMapEnabled, "PPPOEOFF_VPN_ID070='5'\n", 0, 5}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Disabled, VpnIdLookup,
    testing::Values(Lookup{"Found", 0, "OWN_VPN_ID='12'\n", 0, 12},
                    Lookup{"Missing", 0, "PPPOEOFF_VPN_ID07='250'\n", -4, kUntouched},
                    Lookup{"EmptyFile", 0, "", -4, kUntouched},
                    Lookup{"Unquoted", 0, "OWN_VPN_ID=12\n", -4, kUntouched},
                    Lookup{"InASiteSection", 0, kSite + "OWN_VPN_ID='12'\n", -4, kUntouched},
                    Lookup{"Empty", 0, "OWN_VPN_ID=''\n", -5, kUntouched},
                    Lookup{"LongerKey", 0, "OWN_VPN_ID2='5'\nOWN_VPN_ID='12'\n", 0, 5}),
    name_of);

Lookup number(const char* name, const std::string& text, uint32_t id)
{
    return {name, 0, "OWN_VPN_ID='" + text + "'\n", 0, id};
}

INSTANTIATE_TEST_SUITE_P(Number, VpnIdLookup,
                         testing::Values(number("Zero", "0", 0),                              //
                                         number("Letters", "abc", 0),                         //
                                         number("LeadingBlank", " 12", 12),                   //
                                         number("LeadingTabAndBlanks", "\t  12", 12),         //
                                         number("BlankAlone", " ", 0),                        //
                                         number("Plus", "+5", 5),                             //
                                         number("Minus", "-5", 0xFFFFFFFB),                   //
                                         number("SignAlone", "-", 0),                         //
                                         number("TwoSigns", "+-5", 0),                        //
                                         number("SignAndBlank", "- 5", 0),                    //
                                         number("LettersBehind", "12x", 12),                  //
                                         number("BlankWithin", "1 2", 1),                     //
                                         number("Fraction", "1.9", 1),                        //
                                         number("LeadingZero", "010", 10),                    //
                                         number("Hexadecimal", "0x10", 0),                    //
                                         number("Binary", "0b11", 0),                         //
                                         number("Largest", "2147483647", 2147483647),         //
                                         number("BeyondLargest", "2147483648", 2147483647),   //
                                         number("LargestUnsigned", "4294967295", 2147483647), //
                                         number("Beyond32Bits", "4294967301", 2147483647),    //
                                         number("Huge", std::string(900, '9'), 2147483647),   //
                                         number("Smallest", "-2147483648", 0x80000000),       //
                                         number("BeyondSmallest", "-2147483649", 0x80000000), //
                                         number("HugeNegative", "-" + std::string(900, '9'),
                                                0x80000000)),
                         name_of);

// Failures -----------------------------------------------------------------------------------

TEST_F(VpnId, WithoutAFlagLogsOneLineAndPrintsNothing)
{
    config_put("OWN_VPN_ID='12'\n");
    board.fpga_present = false;
    EXPECT_EQ(identity_read(), -1);
    const Trace open{"open /dev/fpga O_RDONLY|O_NONBLOCK", "usleep 1"};
    EXPECT_EQ(board.calls, open + open + append_calls(0));
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(log_messages(board), Messages{kNotRead});
    EXPECT_EQ(answer.id, kUntouched);
}

TEST_F(VpnId, WithAFlagThatCannotBeReadLogsOneLineAndPrintsNothing)
{
    config_put("OWN_VPN_ID='12'\n");
    board.fpga.results[kWord03] = -1;
    EXPECT_EQ(identity_read(), -1);
    const Trace run = kFlagCalls + Trace{"usleep 1"};
    EXPECT_EQ(board.calls, run + run + append_calls(0));
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(log_messages(board), Messages{kNotRead});
    EXPECT_EQ(answer.id, kUntouched);
}

TEST_F(VpnId, IsReadWhenTheDeviceAnswersTheSecondTime)
{
    config_put("OWN_VPN_ID='12'\n");
    board.fail_call(2);
    EXPECT_EQ(identity_read(), 0);
    EXPECT_EQ(answer.id, 12U);
    EXPECT_EQ(log_messages(board), Messages{});
}

TEST_F(VpnId, WithoutConfigurationIsMissing)
{
    EXPECT_EQ(identity_read(), -4);
    word_put(kMapEnabled);
    EXPECT_EQ(identity_read(), -2);
    EXPECT_EQ(answer.id, kUntouched);
    const std::string message = "GetIniFileString : 001 : /conf/config file open error";
    EXPECT_EQ(board.console, message + "\n" + message + "\n");
    EXPECT_EQ(log_messages(board), (Messages{message, message}));
}

TEST_F(VpnId, HoldsTheSaveLockForTheLookupOnly)
{
    config_put("OWN_VPN_ID='12'\n");
    std::vector<std::pair<std::string, size_t>> locks;
    board.before_call = [&](const std::string& call) {
        locks.emplace_back(call.substr(0, call.find(' ')), board.held_locks());
    };
    EXPECT_EQ(identity_read(), 0);
    board.before_call = {};
    const std::vector<std::pair<std::string, size_t>> expected{
        {"open", 0},  {"ioctl", 0}, {"close", 0},  {"fopen", 0}, {"flock", 0},
        {"fopen", 1}, {"fgets", 1}, {"fclose", 1}, {"fclose", 1}};
    EXPECT_EQ(locks, expected);
    EXPECT_EQ(board.held_locks(), 0U);
}

TEST_F(VpnId, ReturnsTheLookupsCodeForEveryCallThatFails)
{
    for (const bool enabled : {false, true}) {
        failure_sweep(
            board,
            [&] {
                log_clear(board);
                word_put(enabled ? kMapEnabled : 0);
                config_put("A='1'\nOWN_VPN_ID='12'\nPPPOEOFF_VPN_ID03='34'\n");
                answer.id = kUntouched;
            },
            [this] { return identity_read(3); },
            [&](size_t, const std::string& call, int32_t result) {
                // The device is tried again; a configuration that was read has been read.
                const bool harmless = call.find("/dev/fpga") != std::string::npos ||
                                      call.find("ioctl") == 0 || call == "fclose /conf/config";
                const int32_t missing = enabled ? -2 : -4;
                const uint32_t id = enabled ? 34 : 12;
                EXPECT_EQ(result, harmless ? 0 : missing);
                EXPECT_EQ(answer.id, harmless ? id : kUntouched);
            });
    }
}

TEST_F(VpnId, IsMinus1WheneverBothRunsOfTheCommandFail)
{
    for (const auto& calls : {std::set<size_t>{1, 3}, {1, 4}, {2, 5}, {2, 6}}) {
        board.restart();
        log_clear(board);
        config_put("OWN_VPN_ID='12'\n");
        board.fail_calls(calls);
        EXPECT_EQ(identity_read(), -1);
        EXPECT_EQ(answer.id, kUntouched);
        EXPECT_EQ(log_messages(board), Messages{kNotRead});
        EXPECT_EQ(board.console, "");
    }
}

} // namespace
