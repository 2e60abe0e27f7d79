// Reading the panel, the own and another unit's, and the status of units.
#include "device/led/panel_read.h"

#include "device/caller_record.h"
#include "device/led/panel.h"
#include "device/led/panel_words.h"
#include "device/library_calls.h"

namespace
{

constexpr uint32_t kUnitMapD = 0x6B3D;
constexpr uint32_t kUnitMapE = 0x6B3B;
constexpr uint32_t kUnitMapR = 0x6B8D;
constexpr uint32_t kMapEnabled = 0x1000; // device word 03: each unit has a key of its own
constexpr uint16_t kIdentity = 100;      // of unit n: 100 + n

// The record of one byte each 0xA5, as a command leaves what it does not own.
Bytes untouched(size_t size)
{
    return Bytes(size, static_cast<char>(kUntouched));
}

// The question for one unit's identity, with so many lines read of the configuration.
Trace match_calls(uint32_t unit, size_t lines)
{
    Bytes text;
    for (const char byte : le32(unit)) {
        char pair[8];
        snprintf(pair, sizeof pair, " %02X", static_cast<unsigned char>(byte));
        text += pair;
    }
    return Trace{"open /dev/fpga O_RDONLY|O_NONBLOCK",
                 "ioctl 6B4C" + text + " 00 00 00 00 00 00 01 00 00 00 00 00",
                 "open /dev/fpga O_RDONLY|O_NONBLOCK", "ioctl 6B03 00 00", "close /dev/fpga"} +
           lookup_calls(kConfig, lines) + Trace{"close /dev/fpga"};
}

class PanelRead : public LedTest
{
  protected:
    void SetUp() override
    {
        log_clear(board);
        board.fpga.words[kDeviceWord03] = kMapEnabled;
        Bytes keys;
        for (uint32_t unit = 0; unit <= 34; ++unit) {
            char key[48];
            snprintf(key, sizeof key, "PPPOEOFF_VPN_ID%02u='%u'\n", unit, kIdentity + unit);
            keys += key;
            identity_put(unit, static_cast<uint16_t>(kIdentity + unit));
        }
        board.file_put(kConfig, keys);
    }

    // What the hardware holds for a unit; the configured identity is 100 + unit.
    void identity_put(uint32_t unit, uint16_t value) { board.fpga.id_values[unit] = value; }
    void identity_put_other(uint32_t unit) { identity_put(unit, 1); }

    // Another unit's panel, with words beside it that are not the panel's.
    void unit_put(uint32_t unit, const PanelWords& words)
    {
        board.fpga.unit_words[{unit, 0}] = {words.b, words.a};
        board.fpga.unit_words[{unit, 1}] = {static_cast<uint16_t>(~words.c), words.c};
    }

    static Bytes identifiers(uint32_t own, uint32_t target)
    {
        return le32(own) + le32(target) + untouched(36);
    }
    // What is read over a record that held `before`: masks and reserved bytes stay.
    static Bytes read_over(Bytes before, const PanelWords& words)
    {
        panel_decode(words, before);
        return before;
    }
};

// Decoders ----------------------------------------------------------------------------------

TEST_F(PanelRead, DecodersFillTheirOwnBytesFromEveryWord)
{
    struct Decoder {
        void (*decode)(uint16_t, LedStateRecord&);
        uint16_t PanelWords::*word;
        std::vector<size_t> bytes;
    };
    const Decoder decoders[] = {
        {ledRegA_decode, &PanelWords::a, {25, 26, 27, 29, 30, 31, 33, 34, 35, 37, 38, 39}},
        {ledRegB_decode, &PanelWords::b, {8, 9, 10, 15, 16, 17, 41, 42, 43}},
        {ledRegC_decode, &PanelWords::c, {11, 12, 13, 19, 20, 21}}};
    for (const Decoder& decoder : decoders) {
        for_every_word([&](uint16_t word) {
            PanelWords words;
            words.*decoder.word = word;
            const Bytes all = snapshot_of(1, words);
            Bytes expected = untouched(44);
            for (const size_t byte : decoder.bytes) {
                expected[byte] = all[byte];
            }
            LedStateRecord record;
            memset(&record, kUntouched, sizeof record);
            decoder.decode(word, record);
            ASSERT_EQ(bytes_of(record), expected) << word;
        });
    }
}

// The own panel -----------------------------------------------------------------------------

const Course kLocal{opens_to_read(),   word_read(0x6B0F), word_read(0x6B11),
                    word_read(0x6B4F), word_read(0x6B51), closes()};

TEST_F(PanelRead, ReadsTheOwnPanelFromItsRegisters)
{
    const PanelWords words{0x4125, 0xB9D2, 0x0275, 0};
    CallerRecord record;
    const auto prepare = [&] {
        panel_put(board, words);
        board.fpga.words[kChannel] = 0xFFFF; // read, and of no account
        record = CallerRecord(identifiers(30, 30));
        return record.pointer();
    };
    prove(RD_LED_STATE, prepare, kLocal);
    EXPECT_EQ(record.bytes(), untouched_after(read_over(identifiers(30, 30), words)));
}

TEST_F(PanelRead, KeepsWhatItReadBeforeAFailure)
{
    const PanelWords words{0xFFFF, 0xFFFF, 0xFFFF, 0};
    panel_put(board, words);
    const Bytes all = read_over(identifiers(1, 1), words);
    const std::vector<size_t> bytes[] = {{25, 26, 27, 29, 30, 31, 33, 34, 35, 37, 38, 39},
                                         {8, 9, 10, 15, 16, 17, 41, 42, 43},
                                         {11, 12, 13, 19, 20, 21}};
    Bytes expected = identifiers(1, 1);
    for (size_t failing = 1; failing <= 5; ++failing) {
        CallerRecord record(identifiers(1, 1));
        board.restart();
        board.fail_call(failing);
        EXPECT_EQ(ledState_readLocal(static_cast<LedStateRecord*>(record.pointer())),
                  failing == 1 ? -1 : -2);
        for (const size_t byte : failing >= 3 ? bytes[failing - 3] : std::vector<size_t>{}) {
            expected[byte] = all[byte];
        }
        EXPECT_EQ(record.bytes(), untouched_after(expected)) << failing;
    }
}

TEST_F(PanelRead, RefusesIdentifiersOutsideTheirRange)
{
    for (const uint32_t bad :
         {0U, 31U, 32U, 255U, 256U + 1U, 65536U + 1U, 0x80000001U, UINT32_MAX}) {
        for (const auto& [own, target] :
             {std::pair{bad, 1U}, std::pair{1U, bad}, std::pair{bad, bad}}) {
            CallerRecord record(identifiers(own, target));
            expect_refused(RD_LED_STATE, record.pointer());
            EXPECT_EQ(record.bytes(), untouched_after(identifiers(own, target)));
        }
    }
    for (const auto& [own, target] :
         {std::pair{1U, 1U}, std::pair{30U, 30U}, std::pair{1U, 30U}, std::pair{30U, 1U}}) {
        CallerRecord record(identifiers(own, target));
        EXPECT_EQ(Fpga_Register_Set(RD_LED_STATE, record.pointer()), 0);
    }
}

// Another unit's panel ----------------------------------------------------------------------

Bytes unit_record(uint32_t unit, uint16_t page)
{
    return le32(unit) + le32(0) + le16(page) + Bytes(6, '\0');
}

Course remote_course(uint32_t unit, const Trace& match)
{
    return Course{opens_to_read(), map_read(0x6B3D)} + course_of(match) +
           Course{record_read(0x6B3E, unit_record(unit, 0)),
                  record_read(0x6B3E, unit_record(unit, 1)), closes()};
}

const PanelWords kShown{0xFFFF, 0xFFFF, 0xFFFF, 0};
const PanelWords kDark{0, 0x3C00, 0, 0};

TEST_F(PanelRead, ReadsAnotherUnitInTwoPages)
{
    for (const uint32_t unit : {1U, 2U, 29U, 30U}) {
        const uint32_t own = unit == 7 ? 8 : 7;
        CallerRecord record;
        const PanelWords words{0x4125, 0xB9D2, 0x0275, 0};
        unit_put(unit, words);
        board.fpga.words[kUnitMapD] = ~(1U << unit);
        prove(
            RD_LED_STATE,
            [&] {
                record = CallerRecord(identifiers(own, unit));
                return record.pointer();
            },
            remote_course(unit, match_calls(unit, unit + 1)));
        EXPECT_EQ(record.bytes(), untouched_after(read_over(identifiers(own, unit), words)));
    }
}

TEST_F(PanelRead, ShowsAUnitDarkThatTheHardwareMarksAndAsksNoIdentity)
{
    for (uint32_t unit = 2; unit <= 30; ++unit) {
        CallerRecord record;
        unit_put(unit, kShown);
        board.fpga.words[kUnitMapD] = 1U << unit;
        prove(
            RD_LED_STATE,
            [&] {
                record = CallerRecord(identifiers(1, unit));
                return record.pointer();
            },
            remote_course(unit, {}));
        EXPECT_EQ(record.bytes(), untouched_after(read_over(identifiers(1, unit), kDark)));
    }
}

TEST_F(PanelRead, ShowsAUnitDarkWhoseIdentityIsNotTheConfiguredOne)
{
    CallerRecord record;
    unit_put(9, kShown);
    identity_put_other(9);
    prove(
        RD_LED_STATE,
        [&] {
            record = CallerRecord(identifiers(1, 9));
            return record.pointer();
        },
        remote_course(9, match_calls(9, 10)));
    EXPECT_EQ(record.bytes(), untouched_after(read_over(identifiers(1, 9), kDark)));
    EXPECT_EQ(board.fpga.words[kUnitMapD], 0U);
}

TEST_F(PanelRead, ADarkUnitKeepsLedAAndLedBOfEveryWord)
{
    board.fpga.words[kUnitMapD] = 1U << 9;
    for_every_word([this](uint16_t word) {
        CallerRecord record(identifiers(1, 9));
        unit_put(9, {word, word, word, 0});
        EXPECT_EQ(Fpga_Register_Set(RD_LED_STATE, record.pointer()), 0);
        const PanelWords kept{0, static_cast<uint16_t>(word & 0x3C00), 0, 0};
        EXPECT_EQ(record.bytes(), untouched_after(read_over(identifiers(1, 9), kept)));
    });
}

TEST_F(PanelRead, DecodesEveryWordOfAnotherUnit)
{
    // The identity cannot be asked, which does not darken the unit; it costs no file here.
    board.fpga.results[0x6B4C] = -1;
    for_every_word([this](uint16_t word) {
        CallerRecord record(identifiers(1, 9));
        const PanelWords words{word, static_cast<uint16_t>(word ^ 0x3C3C),
                               static_cast<uint16_t>(~word), 0};
        unit_put(9, words);
        EXPECT_EQ(Fpga_Register_Set(RD_LED_STATE, record.pointer()), 0);
        EXPECT_EQ(record.bytes(), untouched_after(read_over(identifiers(1, 9), words)));
    });
}

TEST_F(PanelRead, AnIdentityThatCannotBeAskedDarkensNothing)
{
    const PanelWords mismatched = kDark;
    unit_put(9, kShown);
    identity_put_other(9);
    const Trace match = match_calls(9, 10);
    const size_t count = 2 + match.size() + 3;
    CallerRecord record;
    failure_sweep(
        board, [&] { record = CallerRecord(identifiers(1, 9)); },
        [&] { return ledState_readRemote(static_cast<LedStateRecord*>(record.pointer())); },
        [&](size_t failing, const std::string& call, int32_t result) {
            const size_t firstPage = 2 + match.size();
            const int32_t results[] = {-1, -2};
            const bool pageFails = failing == firstPage || failing == firstPage + 1;
            ASSERT_LT(failing, count);
            EXPECT_EQ(result, failing < 2 ? results[failing] : pageFails ? -2 : 0);
            // The identity's own open and request end the question, and so does all that concerns
            // the configuration; the flag's read behind them is tried again.
            const bool unasked =
                failing == 2 || failing == 3 || call.find("/tmp/Saveing") != std::string::npos ||
                (call.find(kConfig) != std::string::npos && call.rfind("fclose", 0) != 0);
            Bytes expected = identifiers(1, 9);
            if (failing > firstPage || (failing >= 2 && failing < firstPage)) {
                expected = read_over(expected, unasked ? kShown : mismatched);
            }
            if (failing == firstPage + 1) { // registers A and B alone
                for (const size_t byte : {11, 12, 13, 19, 20, 21}) {
                    expected[byte] = static_cast<char>(kUntouched);
                }
            }
            EXPECT_EQ(record.bytes(), untouched_after(expected));
        });
}

// Identity ----------------------------------------------------------------------------------

TEST_F(PanelRead, ComparesTheIdentityOfTheHardwareWithTheConfiguredOne)
{
    for (uint32_t unit = 0; unit <= 34; ++unit) {
        board.restart();
        EXPECT_EQ(vpnId_match(unit), 1);
        EXPECT_EQ(board.calls, match_calls(unit, unit + 1));
        identity_put(unit, static_cast<uint16_t>(kIdentity + unit + 1));
        EXPECT_EQ(vpnId_match(unit), 0);
    }
}

TEST_F(PanelRead, ComparesTheWholeConfiguredNumber)
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

TEST_F(PanelRead, AnIdentityThatIsNotConfiguredCannotBeCompared)
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

TEST_F(PanelRead, ComparingReportsEachFailure)
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

Course flag_course(uint32_t unit, size_t lines)
{
    return Course{opens_to_read(), map_read(0x6B3D), closes()} +
           course_of(match_calls(unit, lines));
}

TEST_F(PanelRead, ReportsAUnitsBitOrItsMismatch)
{
    for (const uint32_t unit : {0U, 1U, 15U, 30U, 31U}) {
        for (const bool bit : {false, true}) {
            for (const bool mismatch : {false, true}) {
                CallerRecord record;
                identity_put(unit, static_cast<uint16_t>(mismatch ? 1 : kIdentity + unit));
                // The neighbours' bits are the opposite.
                board.fpga.words[kUnitMapD] = bit ? 1U << unit : ~(1U << unit);
                prove(
                    RD_UNIT_STATUS_FLAG,
                    [&] {
                        record = CallerRecord(untouched(4) + le16(unit));
                        return record.pointer();
                    },
                    flag_course(unit, unit + 1));
                EXPECT_EQ(record.bytes(),
                          untouched_after(le32(bit || mismatch ? 1 : 0) + le16(unit)));
            }
        }
    }
}

TEST_F(PanelRead, AUnitBeyondTheMapHasItsMismatchAlone)
{
    board.fpga.words[kUnitMapD] = UINT32_MAX;
    for (const uint32_t unit : {32U, 33U, 64U, 65535U}) {
        char line[48];
        snprintf(line, sizeof line, "PPPOEOFF_VPN_ID%02u='77'\n", unit);
        board.file_put(kConfig, line);
        for (const uint16_t identity : {uint16_t{77}, uint16_t{78}}) {
            identity_put(unit, identity);
            CallerRecord record(untouched(4) + le16(unit));
            Trace calls;
            for (const Step& step : flag_course(unit, 1)) {
                calls.push_back(step.call);
            }
            board.restart();
            EXPECT_EQ(Fpga_Register_Set(RD_UNIT_STATUS_FLAG, record.pointer()), 0);
            EXPECT_EQ(board.calls, calls);
            EXPECT_EQ(record.bytes(), untouched_after(le32(identity == 77 ? 0 : 1) + le16(unit)));
        }
    }
}

TEST_F(PanelRead, AStatusWhoseIdentityCannotBeAskedIsTheBit)
{
    for (const uint32_t bit : {0U, 1U}) {
        board.fpga.words[kUnitMapD] = bit << 5;
        identity_put_other(5);
        board.fpga.results[0x6B4C] = -1;
        CallerRecord record(untouched(4) + le16(5));
        EXPECT_EQ(Fpga_Register_Set(RD_UNIT_STATUS_FLAG, record.pointer()), 0);
        EXPECT_EQ(record.bytes(), untouched_after(le32(bit) + le16(5)));
        board.fpga.results.clear();
    }
}

TEST_F(PanelRead, AStatusThatCannotBeReadLeavesTheRecord)
{
    for (const size_t failing : {1U, 2U}) {
        board.restart();
        fail_in_both_runs(failing, failing - 1);
        CallerRecord record(untouched(4) + le16(5));
        EXPECT_EQ(Fpga_Register_Set(RD_UNIT_STATUS_FLAG, record.pointer()), failing == 1 ? -1 : -2);
        EXPECT_EQ(record.bytes(), untouched_after(untouched(4) + le16(5)));
    }
}

// Status of all units -----------------------------------------------------------------------

TEST_F(PanelRead, TheMapAsksForEachPresentUnmarkedUnit)
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
    CallerRecord record;
    prove(
        RD_UNIT_STATUS_MAP,
        [&] {
            record = CallerRecord(marked);
            return record.pointer();
        },
        course(marked));
    EXPECT_EQ(record.bytes(), untouched_after(le32(1U << 1 | 1U << 2 | 1U << 30)));
    record = CallerRecord();
    expect_course(RD_UNIT_STATUS_MAP, record.pointer(), course(untouched(4)));
    EXPECT_EQ(record.bytes(), untouched_after(le32(1U << 1 | 1U << 2 | 1U << 30)));
}

TEST_F(PanelRead, TheMapNeverReportsTheOwnUnit)
{
    for (uint32_t unit = 0; unit <= 31; ++unit) {
        identity_put_other(unit);
    }
    for (uint32_t own = 0; own <= 32; ++own) {
        for (const uint32_t marked : {0U, UINT32_MAX}) {
            board.fpga.words[kOwnIdentifier] = own;
            board.fpga.words[kUnitMapE] = UINT32_MAX;
            board.fpga.words[kUnitMapR] = marked;
            uint32_t map = 0;
            EXPECT_EQ(Fpga_Register_Set(RD_UNIT_STATUS_MAP, &map), 0);
            // Numbers 0 and 31 are no units: never asked for, and as the hardware has them.
            const uint32_t all = marked == 0 ? 0x7FFFFFFEU : UINT32_MAX;
            EXPECT_EQ(map, own < 32 ? all & ~(1U << own) : all) << own;
        }
    }
}

TEST_F(PanelRead, TheMapLeavesOutAUnitWhoseIdentityCannotBeAsked)
{
    for (uint32_t unit = 1; unit <= 30; ++unit) {
        identity_put_other(unit);
    }
    board.fpga.words[kOwnIdentifier] = 1;
    board.fpga.words[kUnitMapE] = UINT32_MAX;
    board.fpga.words[kUnitMapR] = 1U << 9;
    board.fpga.results[0x6B4C] = -1;
    uint32_t map = 0;
    EXPECT_EQ(Fpga_Register_Set(RD_UNIT_STATUS_MAP, &map), 0);
    EXPECT_EQ(map, 1U << 9);
}

TEST_F(PanelRead, TheMapAnswersRandomUnits)
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
        uint32_t map = static_cast<uint32_t>(random());
        ASSERT_EQ(Fpga_Register_Set(RD_UNIT_STATUS_MAP, &map), 0);
        ASSERT_EQ(map, expected) << round;
    }
}

TEST_F(PanelRead, AMapThatFailedHoldsNoMoreThanTheHardwaresOwn)
{
    board.fpga.words[kUnitMapR] = 0x12345678;
    for (const size_t failing : {1U, 2U, 3U, 4U}) {
        uint32_t map = 0xA5A5A5A5;
        board.restart();
        fail_in_both_runs(failing, failing == 1 ? 0 : 1);
        EXPECT_EQ(Fpga_Register_Set(RD_UNIT_STATUS_MAP, &map), failing == 1 ? -1 : -2);
        EXPECT_EQ(map, failing <= 2 ? 0xA5A5A5A5 : 0x12345678) << failing;
    }
}

} // namespace
