// Commands of register fields whose values stand for states.
#include "device/register_test.h"

namespace
{

class RegisterState : public RegisterTest
{
};

constexpr uint16_t kSomeWords[] = {0x0000, 0xFFFF, 0xA5C3, 0x3000, 0xCFFF};

// Eight flags of 0xF4 -----------------------------------------------------------------------

TEST_F(RegisterState, TheFlagsOfF4StartWithBit7)
{
    read_every_value(0x0068, 0xF4, Bytes(8, '\xA5'), [](uint16_t word) {
        return byte(word >> 7 & 1) + byte(word >> 6 & 1) + byte(word >> 5 & 1) +
               byte(word >> 4 & 1) + byte(word >> 3 & 1) + byte(word >> 2 & 1) +
               byte(word >> 1 & 1) + byte(word & 1);
    });
}

// A select bit of 0x168 ---------------------------------------------------------------------

constexpr uint16_t kSelects[] = {0x0100, 0x0200, 0x0400, 0x0800};

TEST_F(RegisterState, TheIndexSelectsOneOfBits8To11)
{
    for (uint32_t index = 0; index < 4; ++index) {
        const uint16_t bit = kSelects[index];
        read_every_value(0x006C, 0x168, le16(index) + le16(0xA5A5), [=](uint16_t word) {
            return le16(index) + le16((word & bit) != 0 ? 1 : 0);
        });
        for (const uint32_t value : {0U, 1U, 2U, 255U, 0x0101U}) {
            write_over_every_value(0x006D, 0x168, le16(index) + le16(value), [=](uint16_t word) {
                return static_cast<uint16_t>(value == 1 ? word | bit : word & ~bit);
            });
        }
    }
}

TEST_F(RegisterState, AnIndexAbove3IsRefused)
{
    for (const DeviceCommandCode command : {0x006CU, 0x006DU}) {
        refuse_all_but(
            command, [](uint16_t index) { return le16(index) + le16(1); },
            [](uint16_t index) { return index <= 3; });
        expect_refused(command, put(le16(4) + le16(1)));
        expect_refused(command, put(le16(0x0100) + le16(1)));
        expect_refused(command, put(le16(0xFFFF) + le16(1)));
    }
}

TEST_F(RegisterState, ASelectBitReadsBackAsWritten)
{
    for (uint32_t index = 0; index < 4; ++index) {
        for (const uint32_t value : {1U, 0U, 1U, 0xFFFFU}) {
            put(le16(index) + le16(value));
            EXPECT_EQ(run(0x006D), 0);
            put(le16(index) + le16(0xA5A5));
            EXPECT_EQ(run(0x006C), 0);
            EXPECT_EQ(get(), le16(index) + le16(value == 1 ? 1 : 0));
        }
    }
}

// The states of 0x158, 0xFE and 0x16C ----------------------------------------------------------

struct StateRow {
    DeviceCommandCode get;
    DeviceCommandCode set;
    uint32_t address;
    size_t size; // of the caller's state
    uint16_t field;
    uint16_t bits[3]; // written for 0 and what is not named, for 1, for 2
};

constexpr StateRow kStates[] = {
    {0x007A, 0x007B, 0x158, 1, 0x3000, {0x0000, 0x1000, 0x2000}},
    {0x0098, 0x0099, 0x0FE, 2, 0x000F, {0x000F, 0x0008, 0x0000}},
    {0x00AC, 0x00AD, 0x16C, 1, 0x0003, {0x0003, 0x0000, 0x0003}},
};

uint16_t with_state(const StateRow& row, uint16_t word, uint32_t state)
{
    return static_cast<uint16_t>((word & ~row.field) |
                                 row.bits[state == 1 || state == 2 ? state : 0]);
}

Bytes state_bytes(const StateRow& row, uint32_t state)
{
    return le32(state).substr(0, row.size);
}

TEST_F(RegisterState, AStateReplacesItsBitsAndKeepsTheOthers)
{
    for (const StateRow& row : kStates) {
        for (const uint32_t state : {0U, 1U, 2U, 3U, 255U}) {
            write_over_every_value(row.set, row.address, state_bytes(row, state),
                                   [&](uint16_t word) { return with_state(row, word, state); });
        }
    }
}

TEST_F(RegisterState, EveryStateOtherThanTheNamedIsWrittenAsZeroIs)
{
    for (const StateRow& row : kStates) {
        for (const uint16_t word : kSomeWords) {
            const uint32_t last = row.size == 1 ? UINT8_MAX : UINT16_MAX;
            const uint32_t step = row.size == 1 ? 1 : kWordStep;
            for (uint32_t state = 0; state <= last; state += step) {
                at(row.address) = word;
                put(state_bytes(row, state));
                board.recording = false;
                ASSERT_EQ(run(row.set), 0);
                ASSERT_EQ(at(row.address), with_state(row, word, state)) << row.set << " " << state;
            }
        }
    }
}

TEST_F(RegisterState, TheStateOf158IsTwoForBit13AndElseBit12)
{
    read_every_value(0x007A, 0x158, byte(0xA5), [](uint16_t word) {
        constexpr unsigned kStateOfField[] = {0, 1, 2, 2};
        return byte(kStateOfField[word >> 12 & 3]);
    });
}

TEST_F(RegisterState, TheModeOfFEIsMappedFromItsNibble)
{
    read_every_value(0x0098, 0xFE, le16(0xA5A5), [](uint16_t word) {
        constexpr uint32_t kModeOfNibble[] = {2, 2, 2, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0};
        return le16(kModeOfNibble[word & 0xF]);
    });
}

TEST_F(RegisterState, TheEnableOf16CIsOneWhenBothBitsAreClear)
{
    read_every_value(0x00AC, 0x16C, byte(0xA5), [](uint16_t word) {
        constexpr unsigned kEnableOfField[] = {1, 0, 0, 0};
        return byte(kEnableOfField[word & 3]);
    });
}

TEST_F(RegisterState, AStateReadsBackAsWritten)
{
    for (const StateRow& row : kStates) {
        for (const uint32_t state : {0U, 1U, 2U, 3U, 0U, 255U}) {
            const bool kept = state < 2 || (state == 2 && row.address != 0x16C);
            put(state_bytes(row, state));
            EXPECT_EQ(run(row.set), 0);
            put(state_bytes(row, 0xA5A5));
            EXPECT_EQ(run(row.get), 0);
            EXPECT_EQ(get(), state_bytes(row, kept ? state : 0));
        }
    }
}

TEST_F(RegisterState, EachCommandTakesItsCourse)
{
    prove_all(state_proofs());
}

} // namespace

CommandProofs state_proofs()
{
    return {
        {0x0068,
         Bytes(8, '\xA5'),
         {{0xF4, 0x5A81}},
         reads_register(0xF4),
         hex("01 00 00 00 00 00 00 01")},
        {0x006C, le16(2) + le16(7), {{0x168, 0x0400}}, reads_register(0x168), le16(2) + le16(1)},
        {0x006C, le16(3) + le16(7), {{0x168, 0xF7FF}}, reads_register(0x168), le16(3) + le16(0)},
        {0x006D,
         le16(1) + le16(1),
         {{0x168, 0x0000}},
         changes_register(0x168, 0x0200),
         le16(1) + le16(1)},
        {0x006D,
         le16(0) + le16(2),
         {{0x168, 0xFFFF}},
         changes_register(0x168, 0xFEFF),
         le16(0) + le16(2)},
        {0x007A, byte(0xA5), {{0x158, 0x2000}}, reads_register(0x158), byte(2)},
        {0x007B, byte(2), {{0x158, 0x1081}}, changes_register(0x158, 0x2081), byte(2)},
        {0x007B, byte(1), {{0x158, 0xFFFF}}, changes_register(0x158, 0xDFFF), byte(1)},
        {0x007B, byte(9), {{0x158, 0xFFFF}}, changes_register(0x158, 0xCFFF), byte(9)},
        {0x0098, le16(0xA5A5), {{0xFE, 0xFFF8}}, reads_register(0xFE), le16(1)},
        {0x0099, le16(1), {{0xFE, 0x1234}}, changes_register(0xFE, 0x1238), le16(1)},
        {0x0099, le16(2), {{0xFE, 0x1234}}, changes_register(0xFE, 0x1230), le16(2)},
        {0x0099, le16(3), {{0xFE, 0x1234}}, changes_register(0xFE, 0x123F), le16(3)},
        {0x00AC, byte(0xA5), {{0x16C, 0xFFFC}}, reads_register(0x16C), byte(1)},
        {0x00AD, byte(1), {{0x16C, 0xFFFF}}, changes_register(0x16C, 0xFFFC), byte(1)},
        {0x00AD, byte(0), {{0x16C, 0x8000}}, changes_register(0x16C, 0x8003), byte(0)},
    };
}
