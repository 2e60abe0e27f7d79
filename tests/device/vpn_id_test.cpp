// The VPN identity: which key holds it, what its text means, what each failure returns.
#include "maint/vpn_id.h"

#include <ostream>

#include "device/command_test.h"
#include "device/device_word_03.h"
#include "device/library_calls.h"

namespace
{

using Messages = std::vector<std::string>;

constexpr const char* kNotRead =
    "Get_Conf_VpnId 000 : Fpga_Register_Set(RD_VLANT_MAP_ENABLE) didn't read";

const Trace kFlagCalls{"open /dev/fpga O_RDONLY|O_NONBLOCK", "ioctl 6B03 00 00", "close /dev/fpga"};

class VpnId : public CommandTest
{
  protected:
    void SetUp() override { log_clear(board); }

    void word_put(uint32_t word) { board.fpga.words[kDeviceWord03] = word; }
    void config_put(const Bytes& text) { board.file_put(kConfig, text); }

    int32_t identity_read(int32_t index)
    {
        return Get_Conf_VpnId(index, static_cast<uint32_t*>(put(untouched(4))));
    }

    void expect_id(uint32_t id, int32_t index = 0)
    {
        EXPECT_EQ(identity_read(index), 0) << "index " << index;
        EXPECT_EQ(record(), le32(id)) << "index " << index;
    }

    // A lookup that fails leaves what the caller had.
    void expect_none(int32_t result, int32_t index = 0)
    {
        EXPECT_EQ(identity_read(index), result) << "index " << index;
        EXPECT_EQ(record(), untouched(4)) << "index " << index;
    }
};

TEST_F(VpnId, IsReadFromTheIndexedKeyWhileTheMapIsEnabled)
{
    word_put(kMapEnabled);
    config_put("OWN_VPN_ID='1'\nPPPOEOFF_VPN_ID06='249'\nPPPOEOFF_VPN_ID07='250'\n");
    expect_id(250, 7);
    EXPECT_EQ(board.calls, kFlagCalls + lookup_calls(kConfig, 3));
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(log_messages(board), Messages{});
}

TEST_F(VpnId, IsReadFromTheOwnKeyWhileTheMapIsDisabled)
{
    config_put("PPPOEOFF_VPN_ID07='250'\nOWN_VPN_ID='12'\n");
    expect_id(12, 7);
    EXPECT_EQ(board.calls, kFlagCalls + lookup_calls(kConfig, 2));
}

TEST_F(VpnId, FollowsBit12OfTheWordAlone)
{
    config_put("PPPOEOFF_VPN_ID00='1'\nOWN_VPN_ID='2'\n");
    for (unsigned bit = 0; bit < 16; ++bit) {
        word_put(1U << bit);
        expect_id(bit == 12 ? 1U : 2U);
        word_put(0xFFFFU & ~(1U << bit));
        expect_id(bit == 12 ? 2U : 1U);
    }
}

TEST_F(VpnId, FollowsTheFlagThatTheCommandSets)
{
    config_put("PPPOEOFF_VPN_ID00='1'\nOWN_VPN_ID='2'\n");
    for (const auto& [flag, id] : {std::pair{1U, 1U}, {0U, 2U}, {2U, 2U}, {0xFFFFU, 2U}}) {
        EXPECT_EQ(run(WR_VLANT_MAP_ENABLE, le16(flag)), 0);
        expect_id(id);
    }
}

TEST_F(VpnId, IndexesByAtLeastTwoDigits)
{
    word_put(kMapEnabled);
    const std::pair<int32_t, const char*> rows[] = {{0, "00"},
                                                    {3, "03"},
                                                    {10, "10"},
                                                    {99, "99"},
                                                    {100, "100"},
                                                    {12345, "12345"},
                                                    {-1, "-1"},
                                                    {-10, "-10"},
                                                    {INT32_MAX, "2147483647"},
                                                    {INT32_MIN, "-2147483648"}};
    for (const auto& [index, digits] : rows) {
        const Bytes line = std::string("PPPOEOFF_VPN_ID") + digits + "='77'\n";
        config_put(line);
        expect_id(77, index);
        // The last character counts.
        config_put(line.substr(0, line.find('=') - 1) + "x='77'\n");
        expect_none(-2, index);
    }
}

TEST_F(VpnId, IgnoresTheIndexWhileTheMapIsDisabled)
{
    config_put("OWN_VPN_ID='12'\n");
    for (const int32_t index : {INT32_MIN, -1, 0, 1, 100, INT32_MAX}) {
        expect_id(12, index);
    }
}

// Results ------------------------------------------------------------------------------------

struct Lookup {
    const char* name;
    uint32_t word;
    Bytes config;
    int32_t result;
    uint32_t id = 0; // with result 0
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
    if (lookup.result == 0) {
        expect_id(lookup.id, 7);
    } else {
        expect_none(lookup.result, 7);
    }
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
    testing::Values(Lookup{"Found", kMapEnabled, "PPPOEOFF_VPN_ID07='250'\n", 0, 250},
                    Lookup{"Missing", kMapEnabled, "OWN_VPN_ID='12'\n", -2},
                    Lookup{"OtherIndex", kMapEnabled, "PPPOEOFF_VPN_ID08='12'\n", -2},
                    Lookup{"OneDigit", kMapEnabled, "PPPOEOFF_VPN_ID7='12'\n", -2},
                    Lookup{"EmptyFile", kMapEnabled, "", -2},
                    Lookup{"Unquoted", kMapEnabled, "PPPOEOFF_VPN_ID07=250\n", -2},
                    Lookup{"NoClosingQuote", kMapEnabled, "PPPOEOFF_VPN_ID07='250\n", -2},
                    Lookup{"InASiteSection", kMapEnabled, kSite + "PPPOEOFF_VPN_ID07='250'\n", -2},
                    Lookup{"Empty", kMapEnabled, "PPPOEOFF_VPN_ID07=''\n", -3},
                    Lookup{"FirstOfTwo", kMapEnabled,
                           "PPPOEOFF_VPN_ID07=''\nPPPOEOFF_VPN_ID07='1'\n", -3},
                    Lookup{"LongerKey", kMapEnabled, "PPPOEOFF_VPN_ID070='5'\n", 0, 5}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Disabled, VpnIdLookup,
    testing::Values(Lookup{"Found", 0, "OWN_VPN_ID='12'\n", 0, 12},
                    Lookup{"Missing", 0, "PPPOEOFF_VPN_ID07='250'\n", -4},
                    Lookup{"EmptyFile", 0, "", -4}, Lookup{"Unquoted", 0, "OWN_VPN_ID=12\n", -4},
                    Lookup{"InASiteSection", 0, kSite + "OWN_VPN_ID='12'\n", -4},
                    Lookup{"Empty", 0, "OWN_VPN_ID=''\n", -5},
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
    expect_none(-1);
    const Trace open{"open /dev/fpga O_RDONLY|O_NONBLOCK", "usleep 1"};
    EXPECT_EQ(board.calls, open + open + append_calls(0));
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(log_messages(board), Messages{kNotRead});
}

TEST_F(VpnId, WithAFlagThatCannotBeReadLogsOneLineAndPrintsNothing)
{
    config_put("OWN_VPN_ID='12'\n");
    board.fpga.results[kDeviceWord03] = -1;
    expect_none(-1);
    const Trace run = kFlagCalls + Trace{"usleep 1"};
    EXPECT_EQ(board.calls, run + run + append_calls(0));
    EXPECT_EQ(board.console, "");
    EXPECT_EQ(log_messages(board), Messages{kNotRead});
}

TEST_F(VpnId, IsReadWhenTheDeviceAnswersTheSecondTime)
{
    config_put("OWN_VPN_ID='12'\n");
    board.fail_call(2);
    expect_id(12);
    EXPECT_EQ(log_messages(board), Messages{});
}

TEST_F(VpnId, WithoutConfigurationIsMissing)
{
    expect_none(-4);
    word_put(kMapEnabled);
    expect_none(-2);
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
    EXPECT_EQ(identity_read(0), 0);
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
            },
            [this] { return identity_read(3); },
            [&](size_t, const std::string& call, int32_t result) {
                // The device is tried again; a configuration that was read has been read.
                const bool harmless = call.find("/dev/fpga") != std::string::npos ||
                                      call.find("ioctl") == 0 || call == "fclose /conf/config";
                const int32_t missing = enabled ? -2 : -4;
                EXPECT_EQ(result, harmless ? 0 : missing);
                EXPECT_EQ(record(), harmless ? le32(enabled ? 34 : 12) : untouched(4));
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
        expect_none(-1);
        EXPECT_EQ(log_messages(board), Messages{kNotRead});
        EXPECT_EQ(board.console, "");
    }
}

} // namespace
