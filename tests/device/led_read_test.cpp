// Reading the panel, the own and another unit's.
#include "device/commands/led_read.h"

#include "device/commands/led_panel.h"
#include "device/led_unit_fixture.h"

namespace
{

class PanelRead : public UnitTest
{
  protected:
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
    // What is read over these: masks and reserved bytes stay.
    static Bytes read_over(Bytes before, const PanelWords& words)
    {
        panel_decode(words, before);
        return before;
    }

    int32_t record_read_by(int32_t (*read)(LedStateRecord*), const Bytes& before)
    {
        return read(static_cast<LedStateRecord*>(put(before)));
    }
};

// The record's bytes that each register's decoder fills.
struct Decoder {
    void (*decode)(uint16_t, LedStateRecord&);
    uint16_t PanelWords::*word;
    std::vector<size_t> bytes;
};
const Decoder kDecoders[] = {
    {ledRegA_decode, &PanelWords::a, {25, 26, 27, 29, 30, 31, 33, 34, 35, 37, 38, 39}},
    {ledRegB_decode, &PanelWords::b, {8, 9, 10, 15, 16, 17, 41, 42, 43}},
    {ledRegC_decode, &PanelWords::c, {11, 12, 13, 19, 20, 21}}};

// Decoders ----------------------------------------------------------------------------------

TEST_F(PanelRead, DecodersFillTheirOwnBytesFromEveryWord)
{
    for (const Decoder& decoder : kDecoders) {
        for_every_word([&](uint16_t word) {
            PanelWords words;
            words.*decoder.word = word;
            const Bytes all = snapshot_of(1, words);
            Bytes expected = untouched(44);
            for (const size_t byte : decoder.bytes) {
                expected[byte] = all[byte];
            }
            decoder.decode(word, *static_cast<LedStateRecord*>(put(untouched(44))));
            ASSERT_EQ(record(), expected) << hex_number(word);
        });
    }
}

// The own panel -----------------------------------------------------------------------------

const Course kLocal{opens_to_read(),   word_read(0x6B0F), word_read(0x6B11),
                    word_read(0x6B4F), word_read(0x6B51), closes()};

TEST_F(PanelRead, ReadsTheOwnPanelFromItsRegisters)
{
    const PanelWords words{0x4125, 0xB9D2, 0x0275, 0};
    panel_put(board, words);
    board.fpga.words[kChannel] = 0xFFFF; // read, and of no account
    prove_record(RD_LED_STATE, identifiers(30, 30), kLocal, read_over(identifiers(30, 30), words));
}

TEST_F(PanelRead, KeepsWhatItReadBeforeAFailure)
{
    const PanelWords words{0xFFFF, 0xFFFF, 0xFFFF, 0};
    panel_put(board, words);
    const Bytes all = read_over(identifiers(1, 1), words);
    Bytes expected = identifiers(1, 1);
    for (size_t failing = 1; failing <= 5; ++failing) {
        board.restart();
        board.fail_call(failing);
        EXPECT_EQ(record_read_by(ledState_readLocal, identifiers(1, 1)), failing == 1 ? -1 : -2);
        for (const size_t byte :
             failing >= 3 ? kDecoders[failing - 3].bytes : std::vector<size_t>{}) {
            expected[byte] = all[byte];
        }
        EXPECT_EQ(record(), expected) << failing;
    }
}

TEST_F(PanelRead, RefusesIdentifiersOutsideTheirRange)
{
    for (const uint32_t bad :
         {0U, 31U, 32U, 255U, 256U + 1U, 65536U + 1U, 0x80000001U, UINT32_MAX}) {
        for (const auto& [own, target] :
             {std::pair{bad, 1U}, std::pair{1U, bad}, std::pair{bad, bad}}) {
            expect_refused(RD_LED_STATE, identifiers(own, target));
        }
    }
    for (const auto& [own, target] :
         {std::pair{1U, 1U}, std::pair{30U, 30U}, std::pair{1U, 30U}, std::pair{30U, 1U}}) {
        EXPECT_EQ(run(RD_LED_STATE, identifiers(own, target)), 0);
    }
}

// Another unit's panel ----------------------------------------------------------------------

Bytes unit_record(uint32_t unit, uint16_t page)
{
    return le32(unit) + le32(0) + le16(page) + zeros(6);
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
        const PanelWords words{0x4125, 0xB9D2, 0x0275, 0};
        unit_put(unit, words);
        board.fpga.words[kUnitMapD] = ~(1U << unit);
        prove_record(RD_LED_STATE, identifiers(own, unit),
                     remote_course(unit, match_calls(unit, unit + 1)),
                     read_over(identifiers(own, unit), words));
    }
}

TEST_F(PanelRead, ShowsAUnitDarkThatTheHardwareMarksAndAsksNoIdentity)
{
    for (uint32_t unit = 2; unit <= 30; ++unit) {
        unit_put(unit, kShown);
        board.fpga.words[kUnitMapD] = 1U << unit;
        prove_record(RD_LED_STATE, identifiers(1, unit), remote_course(unit, {}),
                     read_over(identifiers(1, unit), kDark));
    }
}

TEST_F(PanelRead, ShowsAUnitDarkWhoseIdentityIsNotTheConfiguredOne)
{
    unit_put(9, kShown);
    identity_put_other(9);
    prove_record(RD_LED_STATE, identifiers(1, 9), remote_course(9, match_calls(9, 10)),
                 read_over(identifiers(1, 9), kDark));
    EXPECT_EQ(board.fpga.words[kUnitMapD], 0U);
}

TEST_F(PanelRead, ADarkUnitKeepsLedAAndLedBOfEveryWord)
{
    board.fpga.words[kUnitMapD] = 1U << 9;
    for_every_word([this](uint16_t word) {
        unit_put(9, {word, word, word, 0});
        const PanelWords kept{0, static_cast<uint16_t>(word & 0x3C00), 0, 0};
        expect_run(RD_LED_STATE, identifiers(1, 9), 0, read_over(identifiers(1, 9), kept));
    });
}

TEST_F(PanelRead, DecodesEveryWordOfAnotherUnit)
{
    // The identity cannot be asked, which does not darken the unit; it costs no file here.
    board.fpga.results[0x6B4C] = -1;
    for_every_word([this](uint16_t word) {
        const PanelWords words{word, static_cast<uint16_t>(word ^ 0x3C3C),
                               static_cast<uint16_t>(~word), 0};
        unit_put(9, words);
        expect_run(RD_LED_STATE, identifiers(1, 9), 0, read_over(identifiers(1, 9), words));
    });
}

TEST_F(PanelRead, AnIdentityThatCannotBeAskedDarkensNothing)
{
    const PanelWords mismatched = kDark;
    unit_put(9, kShown);
    identity_put_other(9);
    const Trace match = match_calls(9, 10);
    const size_t count = 2 + match.size() + 3;
    failure_sweep(
        board, [] {}, [this] { return record_read_by(ledState_readRemote, identifiers(1, 9)); },
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
                for (const size_t byte : kDecoders[2].bytes) {
                    expected[byte] = static_cast<char>(kUntouched);
                }
            }
            EXPECT_EQ(record(), expected);
        });
}

} // namespace
