// The identity and the status of units.
#include "device/commands/unit.h"

#include "device/led_unit_fixture.h"

namespace
{

class UnitStatus : public UnitTest
{
};

// Identity ----------------------------------------------------------------------------------

TEST_F(UnitStatus, ComparesTheIdentityOfTheHardwareWithTheConfiguredOne)
{
    for (uint32_t unit = 0; unit <= 34; ++unit) {
        board.restart();
        EXPECT_EQ(vpnId_match(unit), 1);
        EXPECT_EQ(board.calls, match_calls(unit, unit + 1));
        identity_put(unit, static_cast<uint16_t>(kIdentity + unit + 1));
        EXPECT_EQ(vpnId_match(unit), 0);
    }
}

TEST_F(UnitStatus, ComparesTheWholeConfiguredNumber)
{
    struct Case {
        uint16_t hardware;
        const char* configured;
        int32_t match;
    };
    const Case cases[] = {{5, "5", 1},         {5, "65541", 0},      {0, "65536", 0},
                          {65535, "65535", 1}, {65535, "-1", 0},     {65535, "131071", 0},
                          {0, "abc", 1},       {0, "0", 1},          {5, " +5x", 1},
                          {32768, "32768", 1}, {32768, "-32768", 0}, {5, "6", 0}};
    for (const uint32_t word : {0U, kMapEnabled}) {
        board.fpga.words[kDeviceWord03] = word;
        for (const Case& c : cases) {
            const char* key = word == 0 ? "OWN_VPN_ID" : "PPPOEOFF_VPN_ID07";
            board.file_put(kConfig, std::string(key) + "='" + c.configured + "'\n");
            identity_put(7, c.hardware);
            EXPECT_EQ(vpnId_match(7), c.match) << c.hardware << " and " << c.configured;
        }
    }
}

TEST_F(UnitStatus, AnIdentityThatIsNotConfiguredCannotBeCompared)
{
    identity_put(7, 0);
    for (const char* config :
         {"", "PPPOEOFF_VPN_ID07=''\n", "PPPOEOFF_VPN_ID07=5\n", "OWN_VPN_ID='0'\n"}) {
        board.file_put(kConfig, config);
        EXPECT_EQ(vpnId_match(7), -1) << config;
    }
    board.file_remove(kConfig);
    EXPECT_EQ(vpnId_match(7), -1);
    board.fpga.words[kDeviceWord03] = 0;
    for (const char* config : {"", "OWN_VPN_ID=''\n", "PPPOEOFF_VPN_ID07='0'\n"}) {
        board.file_put(kConfig, config);
        EXPECT_EQ(vpnId_match(7), -1) << config;
    }
}

TEST_F(UnitStatus, ComparingReportsEachFailure)
{
    const Trace complete = match_calls(0, 1);
    //                         open 6B4C open 6B03 close fopen flock fopen fgets fclose fclose close
    const int32_t results[] = {-1, -1, 1, 1, 1, -1, -1, -1, -1, 1, -1, 1};
    failure_sweep(
        board, [] {}, [] { return vpnId_match(0); },
        [&](size_t failing, const std::string& call, int32_t result) {
            ASSERT_LT(failing, std::size(results));
            EXPECT_EQ(call, complete[failing]);
            EXPECT_EQ(result, results[failing]);
            EXPECT_EQ(board.calls.back(), failing == 0
                                              ? "open /dev/fpga O_RDONLY|O_NONBLOCK -> failed"
                                          : failing == 11 ? "close /dev/fpga -> failed"
                                                          : "close /dev/fpga");
        });
    // The flag's read, twice.
    log_clear(board);
    board.restart();
    board.fpga.results[kDeviceWord03] = -1;
    EXPECT_EQ(vpnId_match(0), -1);
    EXPECT_EQ(log_messages(board),
              (std::vector<std::string>{
                  "Get_Conf_VpnId 000 : Fpga_Register_Set(RD_VLANT_MAP_ENABLE) didn't read"}));
}

// Status of one unit ------------------------------------------------------------------------

Bytes flag_record(const Bytes& status, uint32_t unit)
{
    return status + le16(unit) + untouched(2);
}

Course flag_course(uint32_t unit, size_t lines)
{
    return Course{opens_to_read(), map_read(0x6B3D), closes()} +
           course_of(match_calls(unit, lines));
}

TEST_F(UnitStatus, ReportsAUnitsBitOrItsMismatch)
{
    for (const uint32_t unit : {0U, 1U, 15U, 30U, 31U}) {
        for (const bool bit : {false, true}) {
            for (const bool mismatch : {false, true}) {
                identity_put(unit, static_cast<uint16_t>(mismatch ? 1 : kIdentity + unit));
                // The neighbours' bits are the opposite.
                board.fpga.words[kUnitMapD] = bit ? 1U << unit : ~(1U << unit);
                prove_record(RD_UNIT_STATUS_FLAG, flag_record(untouched(4), unit),
                             flag_course(unit, unit + 1),
                             flag_record(le32(bit || mismatch ? 1 : 0), unit));
            }
        }
    }
}

TEST_F(UnitStatus, AUnitBeyondTheMapHasItsMismatchAlone)
{
    board.fpga.words[kUnitMapD] = UINT32_MAX;
    for (const uint32_t unit : {32U, 33U, 64U, 65535U}) {
        char line[48];
        snprintf(line, sizeof line, "PPPOEOFF_VPN_ID%02u='77'\n", unit);
        board.file_put(kConfig, line);
        for (const uint16_t identity : {uint16_t{77}, uint16_t{78}}) {
            identity_put(unit, identity);
            board.restart();
            expect_run(RD_UNIT_STATUS_FLAG, flag_record(untouched(4), unit), 0,
                       flag_record(le32(identity == 77 ? 0 : 1), unit));
            EXPECT_EQ(board.calls, calls_of(flag_course(unit, 1)));
        }
    }
}

TEST_F(UnitStatus, AStatusWhoseIdentityCannotBeAskedIsTheBit)
{
    for (const uint32_t bit : {0U, 1U}) {
        board.fpga.words[kUnitMapD] = bit << 5;
        identity_put_other(5);
        board.fpga.results[0x6B4C] = -1;
        expect_run(RD_UNIT_STATUS_FLAG, flag_record(untouched(4), 5), 0, flag_record(le32(bit), 5));
        board.fpga.results.clear();
    }
}

TEST_F(UnitStatus, AStatusThatCannotBeReadLeavesTheRecord)
{
    for (const size_t failing : {1U, 2U}) {
        board.restart();
        fail_in_both_runs(failing, failing - 1);
        expect_run(RD_UNIT_STATUS_FLAG, flag_record(untouched(4), 5), failing == 1 ? -1 : -2,
                   flag_record(untouched(4), 5));
    }
}

// Status of all units -----------------------------------------------------------------------

TEST_F(UnitStatus, TheMapAsksForEachPresentUnmarkedUnit)
{
    constexpr uint32_t kOwn = 4;
    board.fpga.words[kUnitMapR] = 1U << 2 | 1U << 6 | 1U << 4; // marked; 6 is not present
    board.fpga.words[kUnitMapE] = 1U << 1 | 1U << 2 | 1U << 3 | 1U << 4 | 1U << 30 | 1U << 31 | 1U;
    board.fpga.words[kOwnIdentifier] = kOwn;
    for (const uint32_t unit : {0U, 1U, 2U, 4U, 5U, 30U, 31U}) {
        identity_put_other(unit);
    }
    const auto course = [](const Bytes& caller) {
        return Course{opens_to_read(), record_read(0x6B8D, caller), word_read(0x6B29),
                      map_read(0x6B3B), closes()} +
               course_of(match_calls(1, 2) + match_calls(3, 4) + match_calls(30, 31));
    };
    // What the caller brings is of no account; here it is the hardware's, which a first run leaves.
    const Bytes marked = le32(board.fpga.words[kUnitMapR]);
    const Bytes shown = le32(1U << 1 | 1U << 2 | 1U << 30);
    prove_record(RD_UNIT_STATUS_MAP, marked, course(marked), shown);
    expect_course(RD_UNIT_STATUS_MAP, put(untouched(4)), course(untouched(4)));
    EXPECT_EQ(record(), shown);
}

TEST_F(UnitStatus, TheMapNeverReportsTheOwnUnit)
{
    for (uint32_t unit = 0; unit <= 31; ++unit) {
        identity_put_other(unit);
    }
    for (uint32_t own = 0; own <= 32; ++own) {
        for (const uint32_t marked : {0U, UINT32_MAX}) {
            board.fpga.words[kOwnIdentifier] = own;
            board.fpga.words[kUnitMapE] = UINT32_MAX;
            board.fpga.words[kUnitMapR] = marked;
            // Numbers 0 and 31 are no units: never asked for, and as the hardware has them.
            const uint32_t all = marked == 0 ? 0x7FFFFFFEU : UINT32_MAX;
            SCOPED_TRACE(own);
            expect_run(RD_UNIT_STATUS_MAP, zeros(4), 0, le32(own < 32 ? all & ~(1U << own) : all));
        }
    }
}

TEST_F(UnitStatus, TheMapLeavesOutAUnitWhoseIdentityCannotBeAsked)
{
    for (uint32_t unit = 1; unit <= 30; ++unit) {
        identity_put_other(unit);
    }
    board.fpga.words[kOwnIdentifier] = 1;
    board.fpga.words[kUnitMapE] = UINT32_MAX;
    board.fpga.words[kUnitMapR] = 1U << 9;
    board.fpga.results[0x6B4C] = -1;
    expect_run(RD_UNIT_STATUS_MAP, zeros(4), 0, le32(1U << 9));
}

TEST_F(UnitStatus, TheMapAnswersRandomUnits)
{
    std::mt19937 random(61);
    for (int round = 0; round < 200; ++round) {
        const uint32_t marked = static_cast<uint32_t>(random());
        const uint32_t present = static_cast<uint32_t>(random());
        const uint32_t own = static_cast<uint32_t>(random() % 34);
        uint32_t mismatched = 0;
        for (uint32_t unit = 0; unit <= 31; ++unit) {
            const bool other = random() % 2 != 0;
            identity_put(unit, static_cast<uint16_t>(kIdentity + unit + (other ? 1 : 0)));
            mismatched |= (other ? 1U : 0U) << unit;
        }
        board.fpga.words[kUnitMapR] = marked;
        board.fpga.words[kUnitMapE] = present;
        board.fpga.words[kOwnIdentifier] = own;
        uint32_t expected = 0;
        for (uint32_t unit = 0; unit <= 31; ++unit) {
            const uint32_t bit = 1U << unit;
            const bool shown =
                (marked & bit) != 0 || (unit >= 1 && unit <= 30 && (mismatched & bit) != 0);
            expected |= unit != own && (present & bit) != 0 && shown ? bit : 0;
        }
        SCOPED_TRACE(round);
        expect_run(RD_UNIT_STATUS_MAP, le32(static_cast<uint32_t>(random())), 0, le32(expected));
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(UnitStatus, AMapThatFailedHoldsNoMoreThanTheHardwaresOwn)
{
    board.fpga.words[kUnitMapR] = 0x12345678;
    for (const size_t failing : {1U, 2U, 3U, 4U}) {
        SCOPED_TRACE(failing);
        board.restart();
        fail_in_both_runs(failing, failing == 1 ? 0 : 1);
        expect_run(RD_UNIT_STATUS_MAP, untouched(4), failing == 1 ? -1 : -2,
                   failing <= 2 ? untouched(4) : le32(0x12345678));
    }
}

} // namespace
