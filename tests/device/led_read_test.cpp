// Reading the panel, the own and another unit's.
#include "device/commands/led_read.h"

#include "device/commands/led_panel.h"
#include "device/led_unit_test.h"

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
                for (const size_t byte : {11U, 12U, 13U, 19U, 20U, 21U}) {
                    expected[byte] = static_cast<char>(kUntouched);
                }
            }
            EXPECT_EQ(record.bytes(), untouched_after(expected));
        });
}

} // namespace
